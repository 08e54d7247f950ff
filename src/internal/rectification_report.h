#pragma once

#include <map>
#include <ostream>
#include <vector>

#include "vorund/graph_processor.h"

namespace vorund::internal {

/// What a border's best cut is told with, followed by all cuts that were tried.
void printCuts(std::ostream& out, const GraphProcessor::OptimalLine& best,
               const std::vector<GraphProcessor::OptimalLine>& tried);

/// How many cuts there are by direction, and their means.
void printStatistics(std::ostream& out, const std::map<int, GraphProcessor::OptimalLine>& lines);

/// Directions by weight; every weight that occurs is at least 1, so all are aligned.
inline constexpr float kLeastAlignedWeight = 0.9F;
inline constexpr float kLeastNearlyAlignedWeight = 0.7F;

}  // namespace vorund::internal
