#pragma once

#include <opencv2/core.hpp>

#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// The map without what stands in its rooms, for finding the rooms: furniture and specks divide a
/// room as walls do, but unlike walls they stand free.
///
/// Floor that walls enclose and that is too small for a room, as behind the outline of a desk,
/// counts as wall first, unless there is no other. Then 8-connected parts of the wall are taken out
/// that nothing joins to the rest: those whose larger side is at most `loose_part`, or
/// `loose_block` if they are as thick as furniture is and partitions are not. Pieces of a broken
/// wall stay (see `continuesWall`), but for specks, and so does what reaches from edge to edge: the
/// wall around a small map.
/// @param values     `CV_32FC1`, 0 to 1, at the working resolution.
/// @param threshold  Values above it are wall.
/// @return The same with 0 where something was taken out, and 1 where small floor was closed.
cv::Mat withoutClutter(const cv::Mat& values, double threshold, const RoomsConfig& config);

}  // namespace vorund::rooms
