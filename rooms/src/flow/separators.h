#pragma once

#include <opencv2/core.hpp>

namespace vorund::rooms {

/// Value of the lines between rooms, and of unreached floor, in the core's label images.
inline constexpr int kLine = 255;

/// The label image with a line one pixel wide between rooms that touch: `doSegment` leaves no gap,
/// and borders are looked for on lines. A room pixel becomes a line where one of its four
/// neighbours belongs to a room of a smaller label.
/// @param labels  `CV_8UC1`.
cv::Mat drawSeparators(const cv::Mat& labels);

}  // namespace vorund::rooms
