#pragma once

#include <vector>

#include "doorways/find_doorways.h"
#include "flow/regions.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// The value of `RoomsConfig::merging` that asks for this.
inline constexpr char kMergeByPassages[] = "passages";

/// Joins regions whose passage is no doorway, and small ones with the neighbour they are most open
/// to. A doorway is narrower than the rooms on both sides of it: what decides is the clearance of a
/// passage (half its width) in proportion to that of the roomier side, which depends on neither the
/// size of a building nor the number of openings between two rooms.
///
/// 1. Specks, which no seed of a room would have made, go to the neighbour with the widest passage.
/// 2. Regions are joined, the most open passage first, while there is one above `open_ratio`, or
///    above `narrow_ratio` where it is narrower than `narrow_passage`.
/// 3. Rooms below `least_area` go as the specks did.
/// @param floor     `CV_8UC1` of the labels' size: 255 = floor, 0 = wall, also within regions, since
///                  the segmentation takes no notice of specks.
/// @param doorways  Are no open passages; small regions leave through them all the same.
void mergeOpenPassages(Regions& regions, const cv::Mat& floor,
                       const std::vector<FoundDoorway>& doorways, const RoomsConfig& config);

}  // namespace vorund::rooms
