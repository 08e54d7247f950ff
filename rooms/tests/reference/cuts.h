#pragma once

#include <map>
#include <opencv2/core.hpp>

#include "reference/merge_processor.h"
#include "vorund/graph_processor.h"

namespace vorund::reference {

using PlainCuts = std::map<Edge, GraphProcessor::OptimalLine>;

/// As `optimalLines`, by rooms; the largest value is looked up once.
PlainCuts cutsOf(const MergeState& rooms);

/// Redraws the borders between rooms along their cuts, where both rooms keep most of themselves.
/// @param labels  `CV_32SC1`, the rooms without lines.
void straightenBorders(cv::Mat& labels, const PlainCuts& cuts);

}  // namespace vorund::reference
