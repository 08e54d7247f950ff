#include "internal/room_merger.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace vorund::internal {
namespace {

constexpr double kNoArea = 1e-9;  // [m^2]

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

}  // namespace

void mergeInGraph(Graph& graph, int u, int v) {
    checkThat(graph.nodes().count(u) > 0 && graph.nodes().count(v) > 0,
              "mergeNodes: Node u or v not found in graph.");
    checkThat(graph.edges().count(Edge(u, v)) > 0,
              "mergeNodes: Nodes u and v are not direct neighbors in the graph for merging.");

    graph.addNode(u, mergedData(graph.getNodeData(u), graph.getNodeData(v)));
    // A copy: every removed edge shrinks the set itself.
    const std::set<int> neighbours = graph.getNeighbors(v);
    for (const int neighbour : neighbours) {
        if (neighbour == u) continue;
        double length = graph.getEdgeData(v, neighbour).length;
        graph.removeEdge(v, neighbour);
        const auto shared = graph.edges().find(Edge(u, neighbour));
        if (shared != graph.edges().end()) length += shared->second.length;
        graph.addEdge(u, neighbour, {length});
    }
    graph.removeNode(v);
}

void MapMerger::merge(int u, int v) {
    const auto shared = border_ids_.find(Edge(u, v));
    checkThat(shared != border_ids_.end(),
              "mergeSegmentsMapInPlace: Edge between u and v not found in borders map.");
    checkThat(segments_.type() == CV_32SC1 && borders_.type() == CV_32SC1 &&
                  segments_.size() == borders_.size(),
              "mergeSegmentsMapInPlace: segments and borders must be CV_32S of the same size.");
    indexIds();
    merges_.renameRoom(v, u);
    merges_.giveToRoom(shared->second, u);
    removeId(Edge(u, v));
    handOn(u, v);
}

/// The borders of `v` become borders of `u`.
void MapMerger::handOn(int u, int v) {
    const std::set<int> neighbours = neighbours_[v];
    for (const int neighbour : neighbours) {
        if (neighbour == u) continue;
        const int id = border_ids_.at(Edge(v, neighbour));
        removeId(Edge(v, neighbour));
        const auto kept = border_ids_.find(Edge(u, neighbour));
        if (kept == border_ids_.end()) {
            addId(Edge(u, neighbour), id);
        } else {
            // Both rooms had a border with the neighbour: the two become one.
            merges_.renameBorder(id, kept->second);
        }
    }
}

void MapMerger::indexIds() {
    if (is_indexed_) return;
    for (const auto& [edge, id] : border_ids_) {
        neighbours_[edge.first].insert(edge.second);
        neighbours_[edge.second].insert(edge.first);
    }
    is_indexed_ = true;
}

void MapMerger::addId(const Edge& edge, int id) {
    border_ids_.emplace(edge, id);
    neighbours_[edge.first].insert(edge.second);
    neighbours_[edge.second].insert(edge.first);
}

void MapMerger::removeId(const Edge& edge) {
    border_ids_.erase(edge);
    neighbours_[edge.first].erase(edge.second);
    neighbours_[edge.second].erase(edge.first);
}

}  // namespace vorund::internal
