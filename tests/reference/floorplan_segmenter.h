#pragma once

#include <opencv2/core.hpp>

#include "vorund/config.h"

/// The plain whole: every stage in its plainest form, one after the other, without a word and
/// without pictures. However the library comes by its label image, it is this one.
namespace vorund::reference {

/// The label image of a map, as `FloorplanSegmenter::doSegment`.
/// @throws std::runtime_error  with the library's messages where a stage finds nothing.
cv::Mat doSegment(const cv::Mat& raw, const Config& config);

/// The ridges by the settings of that stage, which name the border.
cv::Mat ridgeMap(const cv::Mat& denoised, const Config::GenerateRidgeMapMeijeringConfig& config);

/// The first flood. @throws std::runtime_error  where a marker does not fit into 8 bits.
cv::Mat overSegmented(const cv::Mat& ridges, const cv::Mat& markers, int connectivity);

/// The second flood: the lines between rooms go to the rooms beside them.
cv::Mat filled(const cv::Mat& over_segmented, const cv::Mat& denoised, const cv::Mat& boundary,
               int connectivity);

}  // namespace vorund::reference
