#pragma once

#include <map>
#include <opencv2/core.hpp>

/// Plain versions of what is found out about finished rooms. Independent of the libraries.
namespace vorund::reference {

/// Numbers the rooms of a `CV_32SC1` image from 1 in reading order.
/// @return The former label -> its number; 0 -> 0.
std::map<int, int> numberInPlace(cv::Mat& labels);

/// The pixel of each room with most space around it, the first in raster order among equals, by
/// chamfer distances that pass from pixel to pixel.
/// @param labels  `CV_32SC1`, 0 = no room.
std::map<int, cv::Point> widestPixels(const cv::Mat& labels);

}  // namespace vorund::reference
