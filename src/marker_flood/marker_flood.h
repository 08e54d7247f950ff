#pragma once

#include <opencv2/core.hpp>

#include "vorund/export.h"

namespace vorund::internal {

/// In which order seeds of equal cost leave the queue.
enum class Ties {
    kAsHeap,      ///< As the binary heap of `WatershedQueue` has it, on which `doSegment` depends.
    kPixelOrder,  ///< In the order of their pixels: several times as fast on maps with many ties.
};

/// See `WatershedSegmenter::executeSkimageWatershed`.
VORUND_EXPORT cv::Mat floodFromMarkers(const cv::Mat& image, const cv::Mat& markers,
                                       int connectivity, bool watershed_line,
                                       Ties ties = Ties::kAsHeap);

}  // namespace vorund::internal
