#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// The pixel of each room with most space around it, the first in raster order among equals.
///
/// Distances are chamfer distances (weights 3 and 4; G. Borgefors, "Distance transformations in
/// digital images", 1986) to the nearest pixel of another label or outside the image: integers, so
/// that every machine gives the same.
/// @param labels  `CV_32SC1`: 0 = no room.
/// @param count   Of labels, 0 among them: greater than each.
/// @return By label; (-1, -1) for labels that do not occur.
std::vector<cv::Point> widestPixels(const cv::Mat& labels, int count);

/// The same in twice the time, for images of more than 20,000 pixels either way.
std::vector<cv::Point> widestPixelsOfHuge(const cv::Mat& labels, int count);

}  // namespace vorund::rooms
