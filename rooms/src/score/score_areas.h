#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// The 8-connected areas of a mask.
struct Areas {
    cv::Mat numbers;         ///< `CV_32SC1`: 0 = off the mask, then 1, 2, 3, ... as areas begin.
    std::vector<int> sizes;  ///< Pixels by number; those off the mask are not counted.
};

/// Finds the areas of the pixels that are not 0 and numbers them in raster order of their first
/// pixels.
/// @param mask  `CV_8UC1`.
Areas findAreas(const cv::Mat& mask);

/// The largest area as a mask of 0 and 255; of several, the one that begins first. Empty of pixels
/// if the mask is.
cv::Mat largestArea(const cv::Mat& mask);

}  // namespace vorund::rooms
