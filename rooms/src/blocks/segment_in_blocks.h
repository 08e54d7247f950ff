#pragma once

#include <memory>
#include <opencv2/core.hpp>

#include "vorund/config.h"
#include "vorund/debugger.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund::rooms {

/// The regions of a map.
struct Segmented {
    /// `CV_8UC1` from `doSegment`, `CV_32SC1` from blocks: 0 = background, 255 = unreached, other
    /// values = regions.
    cv::Mat labels;
    int blocks = 1;
};

/// `doSegment` for any number of regions and maps of any size.
///
/// The seeds are found on the whole map, which the core does without an image for each scale, so
/// that a region has one number wherever it lies. The ridges and the floods, which are slow where
/// the map outgrows the processor's caches, go block by block, each with what lies around it.
/// @param values       `CV_32FC1` as for `doSegment`.
/// @param most_pixels  Of a block with its surroundings.
/// @param observer     Hears the stages of `doSegment`, and `kStageBlocks` instead of those of the
///                     flooding.
/// @throws MapError    if no region is found, with the cause.
/// @throws Cancelled   when the observer asks to stop.
Segmented segmentInBlocks(const cv::Mat& values, const Config& config,
                          const std::shared_ptr<Debugger>& debugger, int most_pixels,
                          const StageObserver& observer);

}  // namespace vorund::rooms
