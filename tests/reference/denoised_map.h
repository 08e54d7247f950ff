#pragma once

#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "vorund/config.h"
#include "vorund/image_utils.h"

namespace vorund::reference {

/// Margins around the pixels that differ from the top left one as bytes; not widened. The image
/// must have some.
CropInfo contentMargins(const cv::Mat& image);

/// `CV_32FC1`: 1 on the regions of non-zero pixels that are large enough, by OpenCV's labels.
/// @param threshold  Set to the area that is large enough.
cv::Mat largeRegions(const cv::Mat& image,
                     const Config::RemoveSmallConnectedComponentsConfig& config, double& threshold);

/// `FloorplanSegmenter::generateDenoisedAlone` for a padding of 0.
struct DenoisedMap {
    cv::Mat map;
    CropInfo crop;
    std::vector<double> thresholds;
};
DenoisedMap denoisedMap(const cv::Mat& raw_image,
                        const Config::GenerateDenoisedAloneConfig& config);

}  // namespace vorund::reference
