#pragma once

#include <opencv2/core.hpp>

#include "reference/graph_processor.h"

/// Plain versions of the merging: no queue, each step looks at the whole graph and all pixels.
/// Independent of the library.
namespace vorund::reference {

/// What the merging keeps together. Both images are `CV_32SC1`.
struct MergeState {
    RegionGraph graph;
    cv::Mat segments;
    cv::Mat borders;
    BorderIds border_ids;
};

/// Made from a `CV_8UC1` label image.
MergeState mergeState(const cv::Mat& labels, int border_value);

/// The neighbour behind the longest border, the smallest of equals; -1 if there is none.
int longestNeighbor(const RegionGraph& graph, int u);

RegionGraph mergedNodes(const RegionGraph& graph, int u, int v);

/// Merges `v` into `u` in graph, images and ids.
void merge(MergeState& state, int u, int v);

/// @throws std::runtime_error  if there is an isolated small room, because the image is not 8-bit.
void mergeSmallRooms(MergeState& state, double area_threshold);

void mergeAcrossLongBorders(MergeState& state, double length_threshold);

/// Deletes small isolated rooms from the graph and from the `CV_8UC1` label image.
void cleanSmallRooms(RegionGraph& graph, cv::Mat& labels, int border_value, double area_threshold);

}  // namespace vorund::reference
