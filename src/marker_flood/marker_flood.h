#pragma once

#include <opencv2/core.hpp>

namespace vorund::internal {

/// See `WatershedSegmenter::executeSkimageWatershed`.
cv::Mat floodFromMarkers(const cv::Mat& image, const cv::Mat& markers, int connectivity,
                         bool watershed_line);

}  // namespace vorund::internal
