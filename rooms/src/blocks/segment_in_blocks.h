#pragma once

#include <memory>
#include <opencv2/core.hpp>

#include "vorund/config.h"
#include "vorund/debugger.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund::rooms {

/// The regions of a map.
struct Regions {
    /// `CV_8UC1` from one piece, `CV_32SC1` from blocks: 0 = background, 255 = unreached, other
    /// values = regions.
    cv::Mat labels;
    int blocks = 1;
};

/// `doSegment` for maps of any size.
///
/// What does not fit a large map are the scales, an image for each, and their 8-bit labels. So the
/// seeds are found in blocks that overlap, each with what is seen around it, and joined by their
/// overlap. The rest is done once on the whole map, with 32-bit labels: the cleaning before, which
/// then does not depend on where blocks end, and the flooding after. A block's view holds all that
/// decides on its seeds, but not all that decides on its regions: the line between two regions of a
/// corridor lies midway between their seeds, and these may be 20 m apart.
///
/// Time grows as the pixels, whatever the regions; memory is that of some images of the map and of
/// one block. A block that has too many seeds is cut in two.
/// @param values       `CV_32FC1` as for `doSegment`.
/// @param most_pixels  Of a block.
/// @param observer     Hears the stages of `doSegment`, but `kStageBlocks` instead of
///                     `kStageDilate` and `kStageScales`: with the number of blocks done and that
///                     of all, which grows by one where a block is cut in two. It is repeated every
///                     few scales of a block.
/// @throws MapError    if no region is found, with the cause, or too many in the smallest block.
/// @throws Cancelled   when the observer asks to stop.
Regions segmentInBlocks(const cv::Mat& values, const Config& config,
                        const std::shared_ptr<Debugger>& debugger, int most_pixels,
                        const StageObserver& observer);

}  // namespace vorund::rooms
