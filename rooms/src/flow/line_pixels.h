#pragma once

#include <opencv2/core.hpp>

namespace vorund::rooms {

/// Gives every pixel of the separators to the room that its own room has become.
/// @param segmented  `CV_8UC1`: the label image of `doSegment`.
/// @param merged     `CV_32SC1`: the same after islands and merging, with its lines.
/// @return `CV_32SC1`: rooms with the merged labels, 0 elsewhere.
cv::Mat assignLinePixels(const cv::Mat& segmented, const cv::Mat& merged);

}  // namespace vorund::rooms
