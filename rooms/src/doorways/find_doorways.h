#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "vorund/graph.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// A gap in a wall that leads from one space to another, at the working resolution.
struct FoundDoorway {
    cv::Point first_jamb;  ///< The pixels of wall at its ends.
    cv::Point second_jamb;
    int width;  ///< [pixels]
    int wall;   ///< Wall in line with it within 3 m of both ends. [pixels]

    /// Its pixels of floor, which part the floor on both sides of it.
    std::vector<cv::Point> pixels(const cv::Mat& floor) const;
};

/// Doorways by what they are made of: a gap between walls that go on beside it, with floor on both
/// sides that is clearly wider than the gap, however wide the passage beyond. Unlike a narrow place
/// of the free space, which is judged by the rooms around it, a doorway is seen from its walls
/// alone: so it is found between a corridor and a cubicle of the same width, too.
///
/// With `corridors`, gaps of any width in the walls of corridors are found as well: a wall that goes
/// on along a corridor is one, whatever part of it is missing. Where one opens into a space no wider
/// than itself, as into a hall or a lobby, there is no wall, and nothing is found.
/// @param floor  `CV_8UC1`: 255 = floor, 0 = wall.
/// @return From the narrowest to the widest, of several in the same place the narrowest; then what
///         corridors add.
std::vector<FoundDoorway> findDoorways(const cv::Mat& floor, const RoomsConfig& config);

/// A doorway that leads from one room to another.
struct LinkingDoorway {
    FoundDoorway doorway;
    Edge rooms;
};

/// Those of the doorways that have two rooms on their sides, and which; of more than two rooms those
/// with most pixels beside it. Wider openings of corridors than `widest_doorway` are left out.
/// @param labels  `CV_32SC1`: 0 = no room.
std::vector<LinkingDoorway> linkingDoorways(const cv::Mat& labels, const cv::Mat& floor,
                                            const std::vector<FoundDoorway>& doorways,
                                            const RoomsConfig& config);

/// Parts regions that reach through a doorway with 1 m^2 or more on both sides, at all doorways in
/// them. A region's largest piece keeps its label, others get labels of their own; pieces below 1 m^2
/// stay with the neighbouring piece of their region.
/// @param labels  `CV_32SC1`: 0 = no region, 255 = unreached; changed.
void splitAtDoorways(cv::Mat& labels, const cv::Mat& floor,
                     const std::vector<FoundDoorway>& doorways);

}  // namespace vorund::rooms
