#pragma once

#include <vector>

#include "flow/regions.h"

namespace vorund::rooms {

/// A removed part of the graph.
struct RemovedIsland {
    double area;         ///< [m^2]
    cv::Point position;  ///< First of its pixels in raster order, at the working resolution.
};

/// The part of all rooms below which the core's merge passes take isolated rooms for small.
inline constexpr double kSmallPartOfMap = 0.01;

/// Removes every connected part of the room graph whose rooms together are smaller than
/// `part_of_map` of all rooms, or than `area_threshold` [m^2]: rooms, lines around them, border
/// pixels, ids and nodes. The core's merge passes then never meet an isolated small room, which
/// they could not erase from a 32-bit label image.
/// @param keep_one  Where all parts would go the largest stays: a map with floor has a room.
std::vector<RemovedIsland> removeIslands(Regions& regions, double area_threshold,
                                         double part_of_map = kSmallPartOfMap,
                                         bool keep_one = false);

}  // namespace vorund::rooms
