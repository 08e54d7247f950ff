#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// The smallest rectangle around each room, by label.
/// @param labels  `CV_32SC1`.
std::vector<cv::Rect> boxesOf(const cv::Mat& labels);

}  // namespace vorund::rooms
