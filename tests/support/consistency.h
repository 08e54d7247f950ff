#pragma once

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "vorund/graph.h"

namespace vorund::test {

/// What the merging keeps together. Both images are `CV_32SC1`.
struct RegionMap {
    Graph graph;
    cv::Mat segments;
    cv::Mat borders;
    BorderIds border_ids;
};

/// The graph of a `CV_8UC1` label image, and the images in the form in which they are merged.
RegionMap regionMap(const cv::Mat& labels, int border_value);

/// What no merge changes.
struct RegionTotals {
    double area;            ///< Sum of the rooms' areas. Absorbed lines add nothing to it. [m^2]
    int rooms_and_borders;  ///< Pixels of rooms and of borders between rooms.
    int other_lines;        ///< Line pixels that belong to no border: junctions, outer lines.
};

RegionTotals regionTotals(const RegionMap& map, int border_value);

/// Whether graph, images and ids tell the same, and have the totals with which they began.
///
/// - The values of the label image other than 0 and the border value are exactly the nodes.
/// - Neighbours are mutual, nobody is its own, and each pair of neighbours has an edge.
/// - Ids and edges name the same pairs; no id is given twice.
/// - The border image holds no other ids. A border has length * 20 pixels, all of them of the
///   border value in the label image and with both rooms among their eight neighbours.
/// - A room has at least area * 400 pixels; what it has in addition are lines that it absorbed.
/// - The totals are those given. Hence a merge turns pixels of a border into pixels of a room and
///   touches nothing else.
///
/// It holds for maps made by `regionMap` with at most 255 borders, after any merges of neighbours.
::testing::AssertionResult isConsistent(const RegionMap& map, int border_value,
                                        const RegionTotals& totals);

}  // namespace vorund::test
