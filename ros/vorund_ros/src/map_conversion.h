// A map as ROS has it, as the library wants it.
#pragma once

#include <nav_msgs/OccupancyGrid.h>

#include <string>

#include "vorund/rooms/grid_map.h"

namespace vorund_ros {

/// Cells from this probability on are walls, if nobody says otherwise. [percent]
constexpr int kOccupiedThreshold = 50;

/// The map's values: 0 for cells from 0 up to below the threshold, else 1; so the unknown (-1) and
/// what is no probability at all count as outside. The upper row of the result is the last one of
/// the message. The picture stays empty.
///
/// The resolution is the shortest decimal number that the message's 32 bits stand for, so that a
/// map gives the same rooms by way of ROS and from its file. An origin turned by a quaternion of
/// all zeros, which many publishers leave so, is not turned.
/// @param occupied_threshold  [percent], 1 to 100.
/// @throws vorund::rooms::MapError  naming the cause: no cells, a number of cells that does not
///         fit the size, an origin that is not finite, is tilted, or lies more than 1e8 m away.
///         The resolution is left to the library.
vorund::rooms::GridMap toGridMap(const nav_msgs::OccupancyGrid& map, int occupied_threshold);

/// Height, resolution and origin of a map: what it takes to turn pixels into metres and back. The
/// values are a single column.
/// @throws vorund::rooms::MapError  as above, for the origin.
vorund::rooms::GridMap frameOf(const nav_msgs::MapMetaData& info);

/// 16 digits that are equal for maps of equal cells, geometry and frame, whenever they were made.
std::string mapHash(const nav_msgs::OccupancyGrid& map);

}  // namespace vorund_ros
