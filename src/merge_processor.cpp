#include "vorund/merge_processor.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>
#include <vector>

#include "internal/room_merger.h"
#include "internal/small_part.h"
#include "vorund/graph_processor.h"

namespace vorund {

bool operator<(const NodePriorityElement& a, const NodePriorityElement& b) {
    // The label last, so that the order is the same with every standard library.
    return std::tie(a.degree, a.area, a.label) > std::tie(b.degree, b.area, b.label);
}

bool operator<(const EdgePriorityElement& a, const EdgePriorityElement& b) {
    return a.key < b.key || (a.key == b.key && b.edge < a.edge);
}

namespace MergeProcessor {
namespace {

void checkThat(bool condition, const char* message) {
    if (!condition) throw std::invalid_argument(message);
}

bool hasNeighbours(const Graph& graph, int u) {
    const auto found = graph.adjacency().find(u);
    return found != graph.adjacency().end() && !found->second.empty();
}

}  // namespace

int findBestEdgeToMerge(const Graph& graph, int u) {
    if (!hasNeighbours(graph, u)) {
        throw std::runtime_error("findBestEdgeToMerge: Node u has no neighbors.");
    }
    double longest = -1.0;
    int best = -1;
    for (const int neighbour : graph.getNeighbors(u)) {
        const double length = graph.getEdgeData(u, neighbour).length;
        // Strictly: of equally long borders, the one to the smaller label wins.
        if (length > longest) {
            longest = length;
            best = neighbour;
        }
    }
    return best;
}

Graph mergeNodes(const Graph& graph, int u, int v) {
    Graph merged = graph;
    internal::mergeInGraph(merged, u, v);
    return merged;
}

void mergeSegmentsMapInPlace(const Graph& /*graph*/, cv::Mat& segments, cv::Mat& borders,
                             BorderIds& border_ids, int u, int v, int /*border_value*/) {
    internal::MapMerger map(segments, borders, border_ids);
    map.merge(u, v);
    map.writeImages();
}

void cleanSmallDisconnectedSegmentsInPlace(Graph& graph, cv::Mat& segments, int border_value,
                                           double area_threshold) {
    double total = 0.0;
    std::vector<int> labels;
    for (const auto& [label, data] : graph.nodes()) {
        total += data.area;
        labels.push_back(label);
    }
    const double smallest = std::max(total * internal::kSmallPartOfMap, area_threshold);
    for (const int label : labels) {
        if (hasNeighbours(graph, label) || !(graph.getNodeData(label).area < smallest)) continue;
        deleteZeroDegreeNodeFromSegmentsMapInPlace(graph, segments, label, border_value);
        graph.removeNode(label);
    }
}

void deleteZeroDegreeNodeFromSegmentsMapInPlace(const Graph& graph, cv::Mat& segments, int u,
                                                int border_value) {
    checkThat(!hasNeighbours(graph, u),
              "deleteZeroDegreeNodeFromSegmentsMapInPlace: Node degree is not zero.");
    const cv::Mat lines = GraphProcessor::extractRegionBorders(segments, u, border_value);
    segments.setTo(0, lines);
    segments.setTo(0, segments == u);
}

}  // namespace MergeProcessor
}  // namespace vorund
