#pragma once

#include <algorithm>
#include <map>
#include <opencv2/core.hpp>
#include <set>

#include "vorund/export.h"

namespace vorund {

/// Key of a border: the labels of two rooms, the smaller first, so that (u, v) and (v, u) are one.
struct VORUND_EXPORT Edge {
    int first;
    int second;

    Edge(int u, int v) : first(std::min(u, v)), second(std::max(u, v)) {}
};

/// By the smaller label, then by the larger.
VORUND_EXPORT bool operator<(const Edge& a, const Edge& b);
VORUND_EXPORT bool operator==(const Edge& a, const Edge& b);

/// Border ids: pair of room labels -> id in a borders map.
using BorderIds = std::map<Edge, int>;

/// What is known of a room.
struct NodeData {
    double area;         ///< [m^2]
    cv::Point position;  ///< Centroid, x = column, y = row; may lie outside the room. [pixels]
};

/// What is known of a border.
struct EdgeData {
    double length;  ///< Number of border pixels times the resolution. [m]
};

/// Region adjacency graph: a node per room, an edge per pair of rooms with a common border. A plain
/// value; all walks are in ascending order of labels, which decides ties in merging.
///
/// Every node has a neighbour set, perhaps an empty one; neighbours are mutual; both labels of an
/// edge are nodes and neighbours.
class VORUND_EXPORT Graph {
 public:
    /// Inserts a node or overwrites its data; its neighbours stay.
    void addNode(int u, const NodeData& data);

    /// Inserts an edge or overwrites its data.
    /// @throws std::invalid_argument  "Node not found", with nothing changed.
    void addEdge(int u, int v, const EdgeData& data);

    /// Removes an edge; does nothing where there is none.
    void removeEdge(int u, int v);

    /// Removes a node and its edges; does nothing where there is none.
    void removeNode(int u);

    /// @throws std::invalid_argument  "Node not found".
    const NodeData& getNodeData(int u) const;

    /// @throws std::invalid_argument  "Node not found".
    const std::set<int>& getNeighbors(int u) const;

    /// @throws std::invalid_argument  "Edge not found".
    const EdgeData& getEdgeData(int u, int v) const;

    const std::map<int, NodeData>& nodes() const { return nodes_; }
    const std::map<int, std::set<int>>& adjacency() const { return adjacency_; }
    const std::map<Edge, EdgeData>& edges() const { return edges_; }

 private:
    std::map<int, NodeData> nodes_;
    std::map<int, std::set<int>> adjacency_;
    std::map<Edge, EdgeData> edges_;
};

}  // namespace vorund
