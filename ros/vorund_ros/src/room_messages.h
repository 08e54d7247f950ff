// What is known of a map's rooms, as messages: what goes out, and what a file keeps.
#pragma once

#include <nav_msgs/OccupancyGrid.h>
#include <sensor_msgs/Image.h>
#include <vorund_msgs/RoomGraph.h>

#include <cstdint>
#include <string>

#include "vorund/rooms/rooms.h"

namespace vorund_ros {

/// Rooms as messages. The grid of cells and the markers are made from these two.
struct FoundRooms {
    vorund_msgs::RoomGraph graph;
    /// `mono16`, upright: the first row is the map's upper edge, the last row of its cells. 0 is no
    /// room, other values are labels.
    sensor_msgs::Image labels;
};

/// Most rooms whose numbers a cell holds.
constexpr int kMostCellLabels = 100;

/// @param map  That the rooms were found in; its cells do not matter.
/// @throws vorund::rooms::MapError  for more rooms than 16 bits number.
FoundRooms toMessages(const vorund::rooms::Rooms& rooms, const nav_msgs::OccupancyGrid& map,
                      const std::string& map_hash);

/// A grid of the map's geometry: -1 is no room, 1 to 100 is a room. The cell of room n is n for up
/// to 100 rooms, else (n - 1) % 100 + 1, as `RoomGraph::cells_are_labels` tells.
nav_msgs::OccupancyGrid toCells(const FoundRooms& found);

/// The label of a pixel of the upright image; in constant time.
int labelAt(const sensor_msgs::Image& labels, int row, int col);

/// The label of the room that holds a point of the map frame [m]; 0 outside of all rooms.
int roomAt(const FoundRooms& found, const geometry_msgs::Point& point);

/// Whether the parts fit together, as they may not after reading a file: the image's size and
/// encoding, labels without gaps, none in the image that is no room, borders between rooms.
bool isConsistent(const FoundRooms& found);

}  // namespace vorund_ros
