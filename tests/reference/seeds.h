#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "vorund/config.h"

/// Plain versions of the stages from the dilated map to the markers of the flood.
namespace vorund::reference {

/// Seeds of all Gaussian scales, one entry per scale.
struct ScaleSeeds {
    std::vector<cv::Mat> labels;  ///< `CV_8UC1`: 0 = none, 1 to 254 = seed, 255 = background.
    std::vector<int> counts;
};

/// Blurs the map anew for every scale, with OpenCV's filter.
ScaleSeeds seedsOfScales(const cv::Mat& dilated, const cv::Mat& denoised,
                         const Config::ComputeLabelsListConfig& config);

/// The seed maps as they are followed: the background becomes 0, and what is no seed gets a label
/// above those of the seeds.
std::vector<cv::Mat> numberedSeeds(const ScaleSeeds& seeds);

/// Follows numbered seeds over the scales and puts the chosen ones into one image, `CV_32SC1`.
/// @throws std::runtime_error  with the library's messages where regions cannot be followed.
cv::Mat markersOf(const std::vector<cv::Mat>& seed_maps,
                  const Config::GenerateMapInitialSeedsConfig& config);

}  // namespace vorund::reference
