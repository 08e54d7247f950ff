#pragma once

#include "flow/cuts.h"

namespace vorund::rooms {

/// The cuts that `findCuts` finds. Only the lines are walked along, whatever the size of the map;
/// nothing is printed.
Cuts findWideCuts(const RoomGraph& rooms);

/// As `straightenBorders`; each pair of rooms is cut in a window around the two.
void straightenWideBorders(cv::Mat& labels, const Cuts& cuts);

}  // namespace vorund::rooms
