#pragma once

#include <map>
#include <opencv2/core.hpp>

namespace vorund::rooms {

/// The pixel of each room with most space around it, the first in raster order among equals.
///
/// Distances are chamfer distances (weights 3 and 4; G. Borgefors, "Distance transformations in
/// digital images", 1986) to the nearest pixel of another label or outside the image: integers, so
/// that every machine gives the same.
/// @param labels  `CV_32SC1`, 0 = no room.
std::map<int, cv::Point> widestPixels(const cv::Mat& labels);

}  // namespace vorund::rooms
