#pragma once

#include <opencv2/core.hpp>

#include "runs/pixel_runs.h"
#include "vorund/config.h"

namespace vorund::internal {

/// `ImageUtils::removeSmallConnectedComponents` on runs, with its errors and the line it prints.
/// @pre  The connectivity is 4 or 8.
PixelRuns withoutSmallComponents(const PixelRuns& pixels,
                                 const Config::RemoveSmallConnectedComponentsConfig& config);

/// Lets OpenCV refuse what it does not label: another connectivity, or several channels.
void requireConnectivity(const cv::Mat& bytes, int connectivity);

/// `CV_32FC1`: 1 on the pixels, 0 elsewhere.
cv::Mat drawn(const PixelRuns& pixels, const cv::Size& size);

}  // namespace vorund::internal
