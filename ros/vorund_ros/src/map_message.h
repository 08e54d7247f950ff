// A map file as a message.
#pragma once

#include <nav_msgs/OccupancyGrid.h>

#include "vorund/rooms/grid_map.h"

namespace vorund_ros {

/// Floor becomes 0. Of the rest, which is wall and the unknown alike, what is painted darker than
/// 65 % grey becomes 100, other cells -1. Header and time stay empty.
nav_msgs::OccupancyGrid toMessage(const vorund::rooms::GridMap& map);

}  // namespace vorund_ros
