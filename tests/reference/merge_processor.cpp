#include "reference/merge_processor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <tuple>
#include <vector>

namespace vorund::reference {
namespace {

void replaceAll(cv::Mat& image, int former, int now) {
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            if (image.at<int>(y, x) == former) image.at<int>(y, x) = now;
        }
    }
}

void disconnect(RegionGraph& graph, int u, int v) {
    graph.edges.erase(Edge(u, v));
    graph.adjacency[u].erase(v);
    graph.adjacency[v].erase(u);
}

void connect(RegionGraph& graph, int u, int v, double length) {
    graph.edges[Edge(u, v)] = {length};
    graph.adjacency[u].insert(v);
    graph.adjacency[v].insert(u);
}

int weightedMean(int a, double weight_a, int b, double weight_b) {
    const double sum = static_cast<double>(a) * weight_a + static_cast<double>(b) * weight_b;
    return static_cast<int>(std::round(sum / (weight_a + weight_b)));
}

bool isSmallAndIsolated(const RegionGraph& graph, int u, double threshold) {
    return graph.adjacency.at(u).empty() && graph.nodes.at(u).area < threshold;
}

double smallRoomThreshold(const RegionGraph& graph, double area_threshold) {
    double total = 0.0;
    for (const auto& node : graph.nodes) total += node.second.area;
    return std::max(total * 0.01, area_threshold);
}

std::vector<int> smallIsolatedRooms(const RegionGraph& graph, double area_threshold) {
    const double threshold = smallRoomThreshold(graph, area_threshold);
    std::vector<int> rooms;
    for (const auto& node : graph.nodes) {
        if (isSmallAndIsolated(graph, node.first, threshold)) rooms.push_back(node.first);
    }
    return rooms;
}

/// The room to be absorbed next, or -1.
int nextSmallRoom(const RegionGraph& graph, double area_threshold) {
    int next = -1;
    const auto rank = [&graph](int u) {
        return std::make_tuple(graph.adjacency.at(u).size(), graph.nodes.at(u).area, u);
    };
    for (const auto& [label, data] : graph.nodes) {
        if (graph.adjacency.at(label).empty() || data.area >= area_threshold) continue;
        if (next == -1 || rank(label) < rank(next)) next = label;
    }
    return next;
}

}  // namespace

MergeState mergeState(const cv::Mat& labels, int border_value) {
    const GraphProcessor::CommonBordersResult common = commonBorders(labels, border_value);
    MergeState state;
    state.graph = createGraph(labels, common.borders_map, common.border_ids, border_value);
    labels.convertTo(state.segments, CV_32S);
    common.borders_map.convertTo(state.borders, CV_32S);
    state.border_ids = common.border_ids;
    return state;
}

int longestNeighbor(const RegionGraph& graph, int u) {
    int best = -1;
    for (const int neighbor : graph.adjacency.at(u)) {
        if (best == -1 ||
            graph.edges.at(Edge(u, neighbor)).length > graph.edges.at(Edge(u, best)).length) {
            best = neighbor;
        }
    }
    return best;
}

RegionGraph mergedNodes(const RegionGraph& graph, int u, int v) {
    RegionGraph result = graph;
    const NodeData& kept = graph.nodes.at(u);
    const NodeData& gone = graph.nodes.at(v);
    NodeData data{kept.area + gone.area, kept.position};
    if (data.area > 1e-9) {
        data.position.x = weightedMean(kept.position.x, kept.area, gone.position.x, gone.area);
        data.position.y = weightedMean(kept.position.y, kept.area, gone.position.y, gone.area);
    }
    result.nodes[u] = data;
    for (const int neighbor : graph.adjacency.at(v)) {
        disconnect(result, v, neighbor);
        if (neighbor == u) continue;
        const auto common = graph.edges.find(Edge(u, neighbor));
        const double former = common == graph.edges.end() ? 0.0 : common->second.length;
        connect(result, u, neighbor, former + graph.edges.at(Edge(v, neighbor)).length);
    }
    result.nodes.erase(v);
    result.adjacency.erase(v);
    return result;
}

void merge(MergeState& state, int u, int v) {
    const int line = state.border_ids.at(Edge(u, v));
    state.border_ids.erase(Edge(u, v));
    replaceAll(state.segments, v, u);
    for (int y = 0; y < state.borders.rows; ++y) {
        for (int x = 0; x < state.borders.cols; ++x) {
            if (state.borders.at<int>(y, x) == line) state.segments.at<int>(y, x) = u;
        }
    }
    replaceAll(state.borders, line, 0);

    BorderIds merged;
    for (const auto& [edge, id] : state.border_ids) {
        if (edge.first != v && edge.second != v) merged[edge] = id;
    }
    for (const auto& [edge, id] : state.border_ids) {
        if (edge.first != v && edge.second != v) continue;
        const Edge now(u, edge.first == v ? edge.second : edge.first);
        if (merged.count(now) > 0) {
            replaceAll(state.borders, id, merged.at(now));
        } else {
            merged[now] = id;
        }
    }
    state.border_ids = merged;
    state.graph = mergedNodes(state.graph, u, v);
}

void mergeSmallRooms(MergeState& state, double area_threshold) {
    while (true) {
        if (!smallIsolatedRooms(state.graph, area_threshold).empty()) {
            throw std::runtime_error("extractRegionBorders: Input map must be of type CV_8UC1.");
        }
        const int u = nextSmallRoom(state.graph, area_threshold);
        if (u == -1) return;
        merge(state, longestNeighbor(state.graph, u), u);
    }
}

void mergeAcrossLongBorders(MergeState& state, double length_threshold) {
    while (true) {
        const std::pair<const Edge, EdgeData>* shortest = nullptr;
        for (const auto& edge : state.graph.edges) {
            if (edge.second.length <= length_threshold) continue;
            if (shortest == nullptr || edge.second.length < shortest->second.length) {
                shortest = &edge;
            }
        }
        if (shortest == nullptr) return;
        const Edge edge = shortest->first;
        const double first = state.graph.nodes.at(edge.first).area;
        const double second = state.graph.nodes.at(edge.second).area;
        if (second > first) {
            merge(state, edge.second, edge.first);
        } else {
            merge(state, edge.first, edge.second);
        }
    }
}

void cleanSmallRooms(RegionGraph& graph, cv::Mat& labels, int border_value, double area_threshold) {
    for (const int room : smallIsolatedRooms(graph, area_threshold)) {
        const cv::Mat line = regionBorders(labels, room, border_value);
        for (int y = 0; y < labels.rows; ++y) {
            for (int x = 0; x < labels.cols; ++x) {
                std::uint8_t& pixel = labels.at<std::uint8_t>(y, x);
                if (pixel == room || line.at<std::uint8_t>(y, x) != 0) pixel = 0;
            }
        }
        graph.nodes.erase(room);
        graph.adjacency.erase(room);
    }
}

}  // namespace vorund::reference
