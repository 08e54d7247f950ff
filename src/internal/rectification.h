#pragma once

#include <map>
#include <opencv2/core.hpp>

#include "vorund/export.h"
#include "vorund/graph_processor.h"

namespace vorund::internal {

/// `processOptimalBorderRectification` without its picture: the same lines, the same texts. For the
/// library above, which seldom needs the picture, and takes longer to draw it than for the rest.
VORUND_EXPORT std::map<int, GraphProcessor::OptimalLine> rectifyBorders(const cv::Mat& borders_map,
                                                                        const BorderIds& border_ids,
                                                                        const cv::Mat& segments);

}  // namespace vorund::internal
