#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <utility>

namespace vorund::internal {

/// The pictures with which a person follows the tracking of seeds. All are `CV_8UC3`.

/// A seed map with "local->global" written at the first pixel of each local label.
cv::Mat drawLocalAndGlobalLabels(const cv::Mat& seed_map, const std::map<int, int>& mapper);

/// A table of the scales at which each global label lives.
cv::Mat drawLifespans(const std::map<int, std::pair<int, int>>& lifespans, int scale_count);

/// Thumbnails of the chosen seeds, each a `CV_8UC1` mask of the map's size.
cv::Mat drawSeedOverview(const std::map<int, cv::Mat>& seeds, const cv::Size& map_size);

/// Puts a thumbnail into its cell of the overview. A cell that crosses the right or lower edge is
/// left out, caption and all: false. Either way that a cell does not fit is told on standard error.
bool placeThumbnail(cv::Mat& canvas, const cv::Rect& cell, const cv::Mat& thumbnail, int global);

/// A `CV_32SC1` marker image in colours.
cv::Mat drawMarkers(const cv::Mat& markers);

/// A table of the pixels of each value in a `CV_32SC1` marker image.
cv::Mat drawMarkerCounts(const cv::Mat& markers);

}  // namespace vorund::internal
