#pragma once

#include <map>
#include <opencv2/core.hpp>

namespace vorund::rooms {

/// A colour for each room: blue, green, red.
using RoomColours = std::map<int, cv::Vec3b>;

/// Colours for rooms such that those within 10 pixels of each other differ.
/// @param rooms  `CV_32SC1`: 0 = no room.
RoomColours chooseColours(const cv::Mat& rooms);

}  // namespace vorund::rooms
