#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <string>

#include "vorund/graph_processor.h"

/// A plain version of the search for straight cuts: it asks for the largest pixel value at every
/// step of every walk. Independent of the library.
namespace vorund::reference {

/// The best cut of each border that has one, by border id.
std::map<int, GraphProcessor::OptimalLine> optimalLines(const cv::Mat& segments,
                                                        const cv::Mat& borders_map,
                                                        const BorderIds& border_ids);

/// What the whole rectification prints.
std::string rectificationReport(const cv::Mat& segments, const cv::Mat& borders_map,
                                const BorderIds& border_ids);

}  // namespace vorund::reference
