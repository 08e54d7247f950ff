#pragma once

#include <opencv2/core.hpp>

#include "vorund/config.h"

/// Plain versions of the first and the last stage. What OpenCV has is OpenCV's; the rest is loops
/// over the pixels.
namespace vorund::reference {

/// The content of a map, cleaned of specks.
struct CleanMap {
    cv::Mat map;     ///< `CV_32FC1`: 1 = wall or outside, 0 = floor.
    cv::Rect place;  ///< Where it lies in the raw map.
};

/// @throws std::runtime_error  with the library's messages where there is nothing to be found.
CleanMap denoised(const cv::Mat& raw, const Config::GenerateDenoisedAloneConfig& config);

cv::Mat dilated(const cv::Mat& map, const Config::DilateBinaryConfig& config);

/// Labels at their place in an image of 0 of the raw map's size; the label `unreached` becomes 255.
cv::Mat restored(const cv::Mat& labels, const cv::Rect& place, const cv::Size& size, int unreached);

}  // namespace vorund::reference
