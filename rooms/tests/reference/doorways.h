#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "vorund/rooms/room_settings.h"

/// Plain versions of finding doorways and of parting regions there. Independent of the libraries.
namespace vorund::reference {

struct PlainDoorway {
    cv::Point first_jamb;
    cv::Point second_jamb;
    int width;  ///< [pixels]
    int wall;   ///< [pixels]
};

/// The directions of most walls, clockwise, one or two. [half degrees; 0 = level]
/// @param floor  `CV_8UC1`: 0 = wall.
std::vector<int> wallDirections(const cv::Mat& floor);

/// Looks at every row and column of the map, turned in each direction of its walls, pixel by pixel.
/// @param floor  `CV_8UC1`: 0 = wall.
std::vector<PlainDoorway> findDoorways(const cv::Mat& floor, const rooms::RoomsConfig& config);

/// The pixels of floor between the jambs, in steps to one of four neighbours.
std::vector<cv::Point> floorIn(const PlainDoorway& doorway, const cv::Mat& floor);

/// Looks at the whole map for every region.
/// @param labels  `CV_32SC1`: 0 = no region, 255 = unreached; changed.
void splitAtDoorways(cv::Mat& labels, const cv::Mat& floor,
                     const std::vector<PlainDoorway>& doorways);

}  // namespace vorund::reference
