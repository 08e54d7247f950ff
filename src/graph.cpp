#include "vorund/graph.h"

#include <stdexcept>
#include <tuple>

namespace vorund {

bool operator<(const Edge& a, const Edge& b) {
    return std::tie(a.first, a.second) < std::tie(b.first, b.second);
}

bool operator==(const Edge& a, const Edge& b) {
    return a.first == b.first && a.second == b.second;
}

void Graph::addNode(int u, const NodeData& data) {
    nodes_[u] = data;
    adjacency_.emplace(u, std::set<int>());
}

void Graph::addEdge(int u, int v, const EdgeData& data) {
    if (nodes_.count(u) == 0 || nodes_.count(v) == 0) {
        throw std::invalid_argument("Node not found");
    }
    adjacency_[u].insert(v);
    adjacency_[v].insert(u);
    edges_[Edge(u, v)] = data;
}

void Graph::removeEdge(int u, int v) {
    const auto of_u = adjacency_.find(u);
    if (of_u != adjacency_.end()) of_u->second.erase(v);
    const auto of_v = adjacency_.find(v);
    if (of_v != adjacency_.end()) of_v->second.erase(u);
    edges_.erase(Edge(u, v));
}

void Graph::removeNode(int u) {
    if (nodes_.count(u) == 0) return;
    // A copy: every removed edge shrinks the set itself.
    const std::set<int> neighbours = adjacency_[u];
    for (const int neighbour : neighbours) removeEdge(u, neighbour);
    adjacency_.erase(u);
    nodes_.erase(u);
}

const NodeData& Graph::getNodeData(int u) const {
    const auto found = nodes_.find(u);
    if (found == nodes_.end()) throw std::invalid_argument("Node not found");
    return found->second;
}

const std::set<int>& Graph::getNeighbors(int u) const {
    const auto found = adjacency_.find(u);
    if (found == adjacency_.end()) throw std::invalid_argument("Node not found");
    return found->second;
}

const EdgeData& Graph::getEdgeData(int u, int v) const {
    const auto found = edges_.find(Edge(u, v));
    if (found == edges_.end()) throw std::invalid_argument("Edge not found");
    return found->second;
}

}  // namespace vorund
