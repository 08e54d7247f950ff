#include "vorund/merge_processor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <queue>
#include <stdexcept>
#include <tuple>
#include <vector>

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

constexpr double kNoArea = 1e-9;          // [m^2]
constexpr double kSameLength = 1e-9;      // [m]
constexpr double kSmallPartOfMap = 0.01;  // Of the area of all rooms.

void checkThat(bool condition, const char* message) {
    if (!condition) throw std::invalid_argument(message);
}

NodeData mergedData(const NodeData& u, const NodeData& v) {
    NodeData merged{u.area + v.area, u.position};
    if (merged.area > kNoArea) {
        const auto weigh = [&](int of_u, int of_v) {
            const double weighed = std::round((of_u * u.area + of_v * v.area) / merged.area);
            // Areas that a client has made up may give anything.
            const bool is_int = std::abs(weighed) <= std::numeric_limits<int>::max();
            return is_int ? static_cast<int>(weighed) : of_u;
        };
        merged.position = {weigh(u.position.x, v.position.x), weigh(u.position.y, v.position.y)};
    }
    return merged;
}

void replaceLabel(cv::Mat& image, std::int32_t from, std::int32_t to) {
    for (int row = 0; row < image.rows; ++row) {
        std::int32_t* const pixels = image.ptr<std::int32_t>(row);
        std::replace(pixels, pixels + image.cols, from, to);
    }
}

/// The line with that id becomes part of room `u`.
void giveLineToRoom(cv::Mat& segments, cv::Mat& borders, int id, int u) {
    for (int row = 0; row < borders.rows; ++row) {
        std::int32_t* const label = segments.ptr<std::int32_t>(row);
        std::int32_t* const border = borders.ptr<std::int32_t>(row);
        for (int col = 0; col < borders.cols; ++col) {
            if (border[col] != id) continue;
            label[col] = u;
            border[col] = 0;
        }
    }
}

BorderIds bordersOf(const BorderIds& border_ids, int room) {
    BorderIds found;
    for (const auto& [edge, id] : border_ids) {
        if (edge.first == room || edge.second == room) found.emplace(edge, id);
    }
    return found;
}

bool hasNeighbours(const Graph& graph, int u) {
    const auto found = graph.adjacency().find(u);
    return found != graph.adjacency().end() && !found->second.empty();
}

std::priority_queue<NodePriorityElement> queueNodes(const Graph& graph) {
    std::priority_queue<NodePriorityElement> queue;
    for (const auto& [label, data] : graph.nodes()) {
        if (!hasNeighbours(graph, label)) continue;
        queue.push({data.area, label, static_cast<int>(graph.getNeighbors(label).size())});
    }
    return queue;
}

std::priority_queue<EdgePriorityElement> queueEdges(const Graph& graph) {
    std::priority_queue<EdgePriorityElement> queue;
    for (const auto& [edge, data] : graph.edges()) queue.push({-data.length, edge});
    return queue;
}

/// One merge of a small room. False if there is none left.
bool mergeOneNode(Graph& graph, cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids,
                  int border_value, double area_threshold) {
    for (auto queue = queueNodes(graph); !queue.empty(); queue.pop()) {
        const auto [area, u, degree] = queue.top();
        if (graph.nodes().count(u) == 0) continue;
        if (static_cast<int>(graph.getNeighbors(u).size()) != degree) continue;
        if (area >= area_threshold) continue;
        const int v = findBestEdgeToMerge(graph, u);
        if (v == -1 || u == -1) return false;
        mergeSegmentsMapInPlace(graph, segments, borders, border_ids, v, u, border_value);
        graph = mergeNodes(graph, v, u);
        return true;
    }
    return false;
}

/// One merge across a long border. False if there is none left.
bool mergeOneEdge(Graph& graph, cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids,
                  int border_value, double length_threshold) {
    for (auto queue = queueEdges(graph); !queue.empty(); queue.pop()) {
        const auto [key, edge] = queue.top();
        const auto current = graph.edges().find(edge);
        if (current == graph.edges().end()) continue;
        if (std::abs(key + current->second.length) > kSameLength) continue;
        if (!(-key > length_threshold)) continue;
        const double area_of_first = graph.getNodeData(edge.first).area;
        const double area_of_second = graph.getNodeData(edge.second).area;
        const bool second_survives = area_of_second > area_of_first;
        const int survivor = second_survives ? edge.second : edge.first;
        const int removed = second_survives ? edge.first : edge.second;
        if (survivor == -1 || removed == -1) return false;
        mergeSegmentsMapInPlace(graph, segments, borders, border_ids, survivor, removed,
                                border_value);
        graph = mergeNodes(graph, survivor, removed);
        return true;
    }
    return false;
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
    checkThat(graph.nodes().count(u) > 0 && graph.nodes().count(v) > 0,
              "mergeNodes: Node u or v not found in graph.");
    checkThat(graph.edges().count(Edge(u, v)) > 0,
              "mergeNodes: Nodes u and v are not direct neighbors in the graph for merging.");

    Graph merged = graph;
    merged.addNode(u, mergedData(graph.getNodeData(u), graph.getNodeData(v)));
    for (const int neighbour : graph.getNeighbors(v)) {
        if (neighbour == u) continue;
        double length = graph.getEdgeData(v, neighbour).length;
        merged.removeEdge(v, neighbour);
        const auto shared = merged.edges().find(Edge(u, neighbour));
        if (shared != merged.edges().end()) length += shared->second.length;
        merged.addEdge(u, neighbour, {length});
    }
    merged.removeNode(v);
    return merged;
}

void mergeSegmentsMapInPlace(const Graph& /*graph*/, cv::Mat& segments, cv::Mat& borders,
                             BorderIds& border_ids, int u, int v, int /*border_value*/) {
    const auto shared = border_ids.find(Edge(u, v));
    checkThat(shared != border_ids.end(),
              "mergeSegmentsMapInPlace: Edge between u and v not found in borders map.");
    checkThat(segments.type() == CV_32SC1 && borders.type() == CV_32SC1 &&
                  segments.size() == borders.size(),
              "mergeSegmentsMapInPlace: segments and borders must be CV_32S of the same size.");

    replaceLabel(segments, v, u);
    giveLineToRoom(segments, borders, shared->second, u);
    border_ids.erase(shared);

    for (const auto& [edge, id] : bordersOf(border_ids, v)) {
        const int neighbour = edge.first == v ? edge.second : edge.first;
        if (neighbour == u) continue;
        border_ids.erase(edge);
        const auto [kept, is_new] = border_ids.emplace(Edge(u, neighbour), id);
        // Both rooms had a border with the neighbour: the two become one.
        if (!is_new) replaceLabel(borders, id, kept->second);
    }
}

void mergeNodesInPlace(Graph& graph, cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids,
                       int border_value, const Config::MergeNodesInPlaceConfig& config) {
    do {
        cleanSmallDisconnectedSegmentsInPlace(graph, segments, border_value, config.area_threshold);
    } while (
        mergeOneNode(graph, segments, borders, border_ids, border_value, config.area_threshold));
}

void mergeEdgesInPlace(Graph& graph, cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids,
                       int border_value, const Config::MergeEdgesInPlaceConfig& config) {
    while (
        mergeOneEdge(graph, segments, borders, border_ids, border_value, config.length_threshold)) {
    }
}

void cleanSmallDisconnectedSegmentsInPlace(Graph& graph, cv::Mat& segments, int border_value,
                                           double area_threshold) {
    double total = 0.0;
    std::vector<int> labels;
    for (const auto& [label, data] : graph.nodes()) {
        total += data.area;
        labels.push_back(label);
    }
    const double smallest = std::max(total * kSmallPartOfMap, area_threshold);
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
