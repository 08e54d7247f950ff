#pragma once

#include <opencv2/core.hpp>

namespace vorund::rooms {

/// As `assignLinePixels`.
/// @param regions    `CV_32SC1`: 0 = background, 255 = unreached, other values = regions.
/// @param separated  `CV_32SC1`: the same with lines, as from `drawWideSeparators`.
/// @param merged     `CV_32SC1`: the same after islands and merging, with its lines.
cv::Mat assignWideLinePixels(const cv::Mat& regions, const cv::Mat& separated,
                             const cv::Mat& merged);

}  // namespace vorund::rooms
