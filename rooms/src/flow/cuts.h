#pragma once

#include <map>
#include <opencv2/core.hpp>

#include "vorund/graph_processor.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

using Cuts = std::map<Edge, GraphProcessor::OptimalLine>;

/// The straight cut of every border that has one, as `processOptimalBorderRectification` finds
/// them, for any number of rooms and borders and without what it prints and draws.
/// @param rooms  With images of the map.
Cuts findCuts(const RoomGraph& rooms);

/// Redraws the borders between rooms along their cuts: where a cut divides what the two rooms
/// cover together so that each keeps most of itself on a side of its own, the sides become the
/// rooms.
/// @param labels  `CV_32SC1`: the rooms without lines.
void straightenBorders(cv::Mat& labels, const Cuts& cuts);

}  // namespace vorund::rooms
