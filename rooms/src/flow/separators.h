#pragma once

#include <opencv2/core.hpp>

namespace vorund::rooms {

/// Value of the lines between rooms, and of unreached floor, in label images before the rooms are
/// numbered.
inline constexpr int kLine = 255;

/// The lines, one pixel wide, along which rooms touch: room pixels of which one of the four
/// neighbours belongs to a room of a smaller label.
/// @param labels  `CV_32SC1`, 0 = no room, other values = rooms.
/// @return `CV_8UC1`, 255 on the lines.
cv::Mat linesBetween(const cv::Mat& labels);

/// The label image with those lines drawn into it: the segmentation leaves no gap between rooms,
/// and borders are looked for on lines.
/// @param labels  `CV_32SC1`, 0 = no room, 255 = unreached, other values = rooms.
cv::Mat drawSeparators(const cv::Mat& labels);

}  // namespace vorund::rooms
