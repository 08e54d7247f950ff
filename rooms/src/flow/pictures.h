#pragma once

#include <opencv2/core.hpp>

#include "flow/cuts.h"

namespace vorund::rooms {

/// The pictures that `findRooms` gives; labels and ids that 8 bits do not hold share colours.
struct FlowPictures {
    cv::Mat borders;
    cv::Mat graph;
    cv::Mat cuts;
};

/// @param rooms  With images of the map.
FlowPictures drawPictures(const RoomGraph& rooms, const Cuts& cuts);

}  // namespace vorund::rooms
