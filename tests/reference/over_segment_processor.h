#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "vorund/config.h"

namespace vorund::reference {

/// Per seed map, local label -> global label.
/// @throws std::runtime_error  with the library's messages where labels cannot be linked.
std::vector<std::map<int, int>> globalLabels(const std::vector<cv::Mat>& seed_maps);

/// Global label -> first and last index at which it occurs; 255 left out.
std::map<int, std::pair<int, int>> lifespans(const std::vector<std::map<int, int>>& mappers);

/// Global label -> mask of its seed.
std::map<int, cv::Mat> initialSeeds(const std::map<int, std::pair<int, int>>& lifespans,
                                    const std::vector<std::map<int, int>>& mappers,
                                    const std::vector<cv::Mat>& seed_maps,
                                    const Config::GenerateMapInitialSeedsConfig& config);

/// One marker image of all seeds, `CV_32SC1`.
cv::Mat superposedSeeds(const std::map<int, cv::Mat>& seeds, const cv::Mat& first_seed_map);

}  // namespace vorund::reference
