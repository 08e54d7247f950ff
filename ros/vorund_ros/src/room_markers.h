// Rooms for people to look at, in rviz.
#pragma once

#include <visualization_msgs/MarkerArray.h>

#include "room_messages.h"

namespace vorund_ros {

/// Takes away what was shown before and shows these rooms, in metres of the map frame and without a
/// stamp, so that they stand still however old the map is. By namespace:
/// - "rooms"     id = label: the pixels of a room, filled. Rooms that share a border differ in
/// colour.
/// - "outlines"  the outlines of all rooms.
/// - "numbers"   id = label: number and area, at the place with most space.
/// - "doors"     the straight cuts of the borders.
visualization_msgs::MarkerArray toMarkers(const FoundRooms& found);

/// A rectangle of pixels of one room.
struct RoomBlock {
    int label;
    cv::Rect pixels;
};

/// Divides all rooms of the image into blocks: runs of pixels in a row, joined with equal runs
/// right below them. Every pixel of a room is in exactly one block.
std::vector<RoomBlock> toBlocks(const sensor_msgs::Image& labels);

}  // namespace vorund_ros
