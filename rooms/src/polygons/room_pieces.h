#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// The 4-connected pieces of the rooms.
struct RoomPieces {
    /// One pixel wider than the image on all four sides, so that every corner of
    /// the image's lattice has four pixels around it: 0 = no room, 1, 2, ... =
    /// pieces by raster order of their first pixels.
    cv::Mat_<int> ids;

    std::vector<int> labels;  ///< By id; that of id 0 is 0.
};

/// @param labels  `CV_32SC1`, not empty, not negative.
RoomPieces findPieces(const cv::Mat& labels);

}  // namespace vorund::rooms
