#pragma once

#include <opencv2/core.hpp>

#include "vorund/graph.h"

namespace vorund::rooms {

/// Rooms, and the borders between them.
struct FoundGraph {
    cv::Mat borders;  ///< `CV_32SC1`: 0 = no border, else a border's id.
    BorderIds border_ids;
    Graph graph;
};

/// As `GraphProcessor::findGraphRepresentation`, for any number of rooms and borders.
/// @param separated    `CV_32SC1`: 0 = no room, 255 = line or unreached, other values = rooms.
/// @param label_count  Greater than all labels.
FoundGraph findGraph(const cv::Mat& separated, int label_count);

}  // namespace vorund::rooms
