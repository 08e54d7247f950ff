#include "blocks/wide_merging.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "vorund/merge_processor.h"

namespace vorund::rooms {
namespace {

/// What the pixels of removed rooms and borders have become.
class Successors {
 public:
    void replace(int from, int to) { of_[from] = to; }

    int find(int value) {
        auto entry = of_.find(value);
        if (entry == of_.end()) return value;
        const int last = find(entry->second);
        entry->second = last;
        return last;
    }

 private:
    std::map<int, int> of_;
};

/// Merges in the graph and in the ids; the images follow by `updateImages`.
class GraphMerging {
 public:
    explicit GraphMerging(RoomGraph& rooms) : rooms_(rooms) {}

    /// As `mergeNodes` and `mergeSegmentsMapInPlace`: room `v` becomes part of `u`.
    void merge(int u, int v) {
        const auto shared = rooms_.border_ids.find(Edge(u, v));
        room_of_border_[shared->second] = u;
        rooms_.border_ids.erase(shared);
        rooms_.graph.addNode(u, mergedData(u, v));
        const std::set<int> neighbours = rooms_.graph.getNeighbors(v);
        for (const int neighbour : neighbours) {
            if (neighbour != u) moveBorder(neighbour, u, v);
        }
        rooms_.graph.removeNode(v);
        rooms_of_.replace(v, u);
    }

    void updateImages() {
        for (int row = 0; row < rooms_.labels.rows; ++row) {
            std::int32_t* const label = rooms_.labels.ptr<std::int32_t>(row);
            std::int32_t* const border = rooms_.borders.ptr<std::int32_t>(row);
            for (int col = 0; col < rooms_.labels.cols; ++col) {
                if (border[col] != 0) {
                    updateBorder(label[col], border[col]);
                } else if (label[col] != 0) {
                    label[col] = latest(rooms_of_, last_label_, label[col]);
                }
            }
        }
    }

 private:
    /// The last answer: pixels of a room lie side by side.
    using Last = std::pair<int, int>;

    static int latest(Successors& successors, Last& last, int value) {
        if (last.first != value) last = {value, successors.find(value)};
        return last.second;
    }

    void updateBorder(std::int32_t& label, std::int32_t& border) {
        border = latest(borders_of_, last_border_, border);
        const auto room = room_of_border_.find(border);
        if (room == room_of_border_.end()) return;
        label = rooms_of_.find(room->second);
        border = 0;
    }

    /// By the core's own rule, on a graph of the two alone.
    NodeData mergedData(int u, int v) const {
        Graph pair;
        pair.addNode(u, rooms_.graph.getNodeData(u));
        pair.addNode(v, rooms_.graph.getNodeData(v));
        pair.addEdge(u, v, {0.0});
        return MergeProcessor::mergeNodes(pair, u, v).getNodeData(u);
    }

    void moveBorder(int neighbour, int u, int v) {
        double length = rooms_.graph.getEdgeData(v, neighbour).length;
        const auto shared = rooms_.graph.edges().find(Edge(u, neighbour));
        if (shared != rooms_.graph.edges().end()) length += shared->second.length;
        rooms_.graph.addEdge(u, neighbour, {length});

        const auto moved = rooms_.border_ids.find(Edge(v, neighbour));
        const int id = moved->second;
        rooms_.border_ids.erase(moved);
        const auto [kept, is_new] = rooms_.border_ids.emplace(Edge(u, neighbour), id);
        if (!is_new) borders_of_.replace(id, kept->second);
    }

    RoomGraph& rooms_;
    Successors rooms_of_;
    Successors borders_of_;
    std::map<int, int> room_of_border_;  ///< Of lines that have become floor of a room.
    Last last_label_{0, 0};
    Last last_border_{0, 0};
};

/// Small rooms in the order in which `mergeNodesInPlace` takes them.
class SmallRooms {
 public:
    SmallRooms(const Graph& graph, double area_threshold)
        : graph_(graph), area_threshold_(area_threshold) {
        for (const auto& node : graph.nodes()) add(node.first);
    }

    void add(int label) {
        const double area = graph_.getNodeData(label).area;
        const std::size_t degree = graph_.getNeighbors(label).size();
        if (degree > 0 && area < area_threshold_) queue_.emplace(degree, area, label);
    }

    /// Before the room changes.
    void remove(int label) {
        queue_.erase({graph_.getNeighbors(label).size(), graph_.getNodeData(label).area, label});
    }

    std::optional<int> first() const {
        if (queue_.empty()) return {};
        return std::get<int>(*queue_.begin());
    }

 private:
    const Graph& graph_;
    double area_threshold_;
    std::set<std::tuple<std::size_t, double, int>> queue_;  ///< Degree, area, label.
};

void mergeSmallRooms(RoomGraph& rooms, double area_threshold) {
    GraphMerging merging(rooms);
    SmallRooms small(rooms.graph, area_threshold);
    while (const std::optional<int> room = small.first()) {
        const int survivor = MergeProcessor::findBestEdgeToMerge(rooms.graph, *room);
        // Neighbours of both lose one of their own.
        const std::set<int> changed = rooms.graph.getNeighbors(*room);
        for (const int label : changed) small.remove(label);
        small.remove(*room);
        merging.merge(survivor, *room);
        for (const int label : changed) small.add(label);
    }
    merging.updateImages();
}

/// Long borders in the order in which `mergeEdgesInPlace` takes them.
class LongBorders {
 public:
    LongBorders(const Graph& graph, double length_threshold)
        : graph_(graph), length_threshold_(length_threshold) {
        for (const auto& border : graph.edges()) add(border.first);
    }

    void add(const Edge& edge) {
        const double length = graph_.edges().at(edge).length;
        if (length > length_threshold_) queue_.emplace(length, edge);
    }

    void addThoseOf(int room) {
        for (const int neighbour : graph_.getNeighbors(room)) add(Edge(room, neighbour));
    }

    /// Before the room changes.
    void removeThoseOf(int room) {
        for (const int neighbour : graph_.getNeighbors(room)) {
            const Edge edge(room, neighbour);
            queue_.erase({graph_.edges().at(edge).length, edge});
        }
    }

    std::optional<Edge> first() const {
        if (queue_.empty()) return {};
        return queue_.begin()->second;
    }

 private:
    const Graph& graph_;
    double length_threshold_;
    std::set<std::pair<double, Edge>> queue_;
};

void mergeAcrossLongBorders(RoomGraph& rooms, double length_threshold) {
    GraphMerging merging(rooms);
    LongBorders borders(rooms.graph, length_threshold);
    while (const std::optional<Edge> edge = borders.first()) {
        const bool second_survives =
            rooms.graph.getNodeData(edge->second).area > rooms.graph.getNodeData(edge->first).area;
        const int survivor = second_survives ? edge->second : edge->first;
        const int removed = second_survives ? edge->first : edge->second;
        borders.removeThoseOf(survivor);
        borders.removeThoseOf(removed);
        merging.merge(survivor, removed);
        borders.addThoseOf(survivor);
    }
    merging.updateImages();
}

}  // namespace

void mergeWide(RoomGraph& rooms, const Config& config, const PassObserver& after_pass) {
    mergeSmallRooms(rooms, config.merge_nodes_in_place.area_threshold);
    after_pass(kStepMergeNodes);
    mergeAcrossLongBorders(rooms, config.merge_edges_in_place.length_threshold);
    after_pass(kStepMergeEdges);
}

}  // namespace vorund::rooms
