#pragma once

#include <functional>
#include <map>
#include <opencv2/core.hpp>

#include "vorund/config.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund::rooms {

/// Where the region of a seed was first seen, coming from wide blurs. The core numbers regions in
/// this order: by scale, the widest first, then as their first pixels follow in the image.
struct Birth {
    int scale;        ///< Index in the series of scales.
    cv::Point first;  ///< First of its pixels there, in raster order.
};

/// Whether `a` comes first. [in the same image]
bool isBefore(const Birth& a, const Birth& b);

/// The seeds of a part of a map.
struct Seeds {
    cv::Mat labels;  ///< `CV_8UC1`: 0 = floor without a seed, 255 = wall, other values = seeds.
    std::map<int, Birth> births;  ///< By label.
};

/// Finds them with the core's own stages: Gaussian scales, tracking over them, one seed for each
/// region.
/// @param floor     `CV_8UC1` of the map: 1 = floor, 0 = wall.
/// @param view      The part of it that is seen; the rest counts as wall.
/// @param segmenter With the same configuration.
/// @param alive     Called every few scales; it may throw.
/// @throws LabelOverflow  if there are more than 8 bits tell apart.
/// @throws MapError       if the scales end before the seeds do.
Seeds findSeeds(const cv::Mat& floor, const cv::Rect& view, const Config& config,
                FloorplanSegmenter& segmenter, const std::function<void()>& alive);

}  // namespace vorund::rooms
