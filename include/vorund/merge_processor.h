#pragma once

#include <opencv2/core.hpp>

#include "vorund/config.h"
#include "vorund/export.h"
#include "vorund/graph.h"

namespace vorund {

/// Queue entry of `mergeNodesInPlace`.
struct NodePriorityElement {
    double area;
    int label;
    int degree;  ///< Number of neighbours.
};

/// For `std::priority_queue`: the top has the smallest degree, then the smallest area, then the
/// smallest label.
VORUND_EXPORT bool operator<(const NodePriorityElement& a, const NodePriorityElement& b);

/// Queue entry of `mergeEdgesInPlace`.
struct EdgePriorityElement {
    double key;  ///< The negated length of the border.
    Edge edge;
};

/// For `std::priority_queue`: the top has the greatest key, that is the shortest border; of equal
/// ones that of the smallest edge.
VORUND_EXPORT bool operator<(const EdgePriorityElement& a, const EdgePriorityElement& b);

/// Merging of rooms that are too small, or joined by borders too long for a doorway. Graph, label
/// image, border image and border ids are kept consistent. In every merge the first label survives.
///
/// Label and border images are `CV_32SC1`, unless said otherwise. What the graph and the callees
/// throw passes through; merges completed before stay.
namespace MergeProcessor {

/// The neighbour with the longest common border; the smallest label among equal ones.
/// @throws std::runtime_error  if `u` has no neighbours.
VORUND_EXPORT int findBestEdgeToMerge(const Graph& graph, int u);

/// The graph with `v` merged into `u`: areas added, position weighted by area, lengths of borders
/// to common neighbours added.
/// @throws std::invalid_argument  if either is no node, or they are no neighbours.
VORUND_EXPORT Graph mergeNodes(const Graph& graph, int u, int v);

/// The images and ids to match: `v` and the line between the two become `u`; the borders of `v`
/// become borders of `u`.
/// @throws std::invalid_argument  if the ids have no border between them, or the images are not
///         `CV_32SC1` of the same size; nothing is changed.
VORUND_EXPORT void mergeSegmentsMapInPlace(const Graph& graph, cv::Mat& segments, cv::Mat& borders,
                                           BorderIds& border_ids, int u, int v, int border_value);

/// Merges every room below `area_threshold` into the neighbour with the longest common border, one
/// at a time, rooms with few neighbours first. Before each step isolated small rooms are cleaned
/// away, which fails on a 32-bit label image: a caller removes them beforehand.
/// @throws std::runtime_error  on an isolated room below 1 % of all rooms or `area_threshold`, if
///         the label image is not `CV_8UC1`.
VORUND_EXPORT void mergeNodesInPlace(Graph& graph, cv::Mat& segments, cv::Mat& borders,
                                     BorderIds& border_ids, int border_value,
                                     const Config::MergeNodesInPlaceConfig& config);

/// Merges rooms across every border longer than `length_threshold`, one at a time, shortest such
/// border first; the larger room survives.
VORUND_EXPORT void mergeEdgesInPlace(Graph& graph, cv::Mat& segments, cv::Mat& borders,
                                     BorderIds& border_ids, int border_value,
                                     const Config::MergeEdgesInPlaceConfig& config);

/// Deletes rooms without neighbours that are smaller than `area_threshold` or than 1 % of all rooms
/// together. [m^2]
/// @param segments  `CV_8UC1` if there is anything to delete.
/// @throws std::runtime_error  otherwise.
VORUND_EXPORT void cleanSmallDisconnectedSegmentsInPlace(Graph& graph, cv::Mat& segments,
                                                         int border_value, double area_threshold);

/// Erases one isolated room and the lines around it from the label image; the graph stays.
/// @param segments  `CV_8UC1`.
/// @throws std::invalid_argument  if `u` has neighbours.
/// @throws std::runtime_error     if `segments` is not `CV_8UC1`.
VORUND_EXPORT void deleteZeroDegreeNodeFromSegmentsMapInPlace(const Graph& graph, cv::Mat& segments,
                                                              int u, int border_value);

}  // namespace MergeProcessor
}  // namespace vorund
