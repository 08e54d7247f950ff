#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <vector>

#include "reference/merge_processor.h"
#include "vorund/graph_processor.h"

namespace vorund::reference {

using PlainCuts = std::map<Edge, GraphProcessor::OptimalLine>;

/// As `optimalLines`, by rooms, with labels and ids of any size.
PlainCuts cutsOf(const MergeState& rooms);

/// The pixels of a straight line, in steps to one of four neighbours.
std::vector<cv::Point> pixelsBetween(const cv::Point& from, const cv::Point& to);

/// Redraws the borders between rooms along their cuts, where both rooms keep most of themselves.
/// @param labels  `CV_32SC1`, the rooms without lines.
void straightenBorders(cv::Mat& labels, const PlainCuts& cuts);

}  // namespace vorund::reference
