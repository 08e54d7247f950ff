#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <unordered_map>

#include "internal/room_merger.h"
#include "internal/small_part.h"
#include "vorund/merge_processor.h"

namespace vorund::MergeProcessor {
namespace {

/// As a priority queue has it, but with elements that can be taken out anywhere.
struct TopFirst {
    template <class Element>
    bool operator()(const Element& a, const Element& b) const {
        return b < a;
    }
};

/// The rooms to be merged, kept up to date while rooms are.
class SmallRooms {
 public:
    SmallRooms(const Graph& graph, double area_threshold)
        : graph_(graph), area_threshold_(area_threshold) {
        for (const auto& node : graph.nodes()) update(node.first);
    }

    bool empty() const { return queue_.empty(); }
    int next() const { return queue_.begin()->label; }

    /// To be called when the room has changed, or is gone.
    void update(int room) {
        // By their places: areas that are no numbers have no order to be found by.
        const auto place = places_.find(room);
        if (place != places_.end()) {
            queue_.erase(place->second);
            places_.erase(place);
        }
        const auto node = graph_.nodes().find(room);
        if (node == graph_.nodes().end() || node->second.area >= area_threshold_) return;
        const std::size_t degree = graph_.getNeighbors(room).size();
        if (degree == 0) return;
        places_[room] = queue_.insert({node->second.area, room, static_cast<int>(degree)}).first;
    }

 private:
    using Queue = std::set<NodePriorityElement, TopFirst>;

    const Graph& graph_;
    double area_threshold_;
    Queue queue_;
    std::unordered_map<int, Queue::iterator> places_;
};

/// Whether a cleaning may find anything. To ask is much cheaper than to clean, which adds up all
/// rooms.
class IsolatedRooms {
 public:
    IsolatedRooms(const Graph& graph, double area_threshold) {
        double total = 0.0;
        bool all_usual = true;
        for (const auto& [label, data] : graph.nodes()) {
            total += data.area;
            all_usual &= data.area >= 0.0;
            addIfIsolated(graph, label);
        }
        // Merging adds the same areas in another order, which changes their sum by its last bits.
        constexpr double kRounding = 1.0 + 1e-6;
        limit_ = all_usual ? std::max(total * internal::kSmallPartOfMap * kRounding, area_threshold)
                           : std::numeric_limits<double>::infinity();
    }

    void addIfIsolated(const Graph& graph, int room) {
        const auto node = graph.nodes().find(room);
        if (node == graph.nodes().end() || !graph.getNeighbors(room).empty()) return;
        smallest_ = std::min(smallest_, node->second.area);
    }

    bool mayBeSmall() const { return smallest_ < limit_; }

 private:
    double smallest_ = std::numeric_limits<double>::infinity();
    double limit_;
};

/// The borders to be merged across, kept up to date while rooms are merged.
class LongBorders {
 public:
    LongBorders(const Graph& graph, double length_threshold)
        : graph_(graph), length_threshold_(length_threshold) {
        for (const auto& border : graph.edges()) add(border.first);
    }

    bool empty() const { return queue_.empty(); }
    Edge next() const { return queue_.begin()->edge; }

    /// To be called before the graph is changed.
    void remove(const Edge& edge) {
        const auto border = graph_.edges().find(edge);
        if (border != graph_.edges().end()) queue_.erase({-border->second.length, edge});
    }

    /// To be called after the graph was changed.
    void add(const Edge& edge) {
        const auto border = graph_.edges().find(edge);
        if (border == graph_.edges().end() || !(border->second.length > length_threshold_)) return;
        queue_.insert({-border->second.length, edge});
    }

 private:
    const Graph& graph_;
    double length_threshold_;
    std::set<EdgePriorityElement, TopFirst> queue_;
};

/// One merge of a small room. False if there is none left.
bool mergeOneNode(Graph& graph, internal::MapMerger& map, SmallRooms& small,
                  IsolatedRooms& isolated) {
    if (small.empty()) return false;
    const int u = small.next();
    const int v = findBestEdgeToMerge(graph, u);
    if (v == -1 || u == -1) return false;
    const std::set<int> neighbours = graph.getNeighbors(u);
    map.merge(v, u);
    internal::mergeInGraph(graph, v, u);
    small.update(u);
    for (const int neighbour : neighbours) {
        small.update(neighbour);
        isolated.addIfIsolated(graph, neighbour);
    }
    return true;
}

/// One merge across a long border. False if there is none left.
bool mergeOneEdge(Graph& graph, internal::MapMerger& map, LongBorders& borders) {
    if (borders.empty()) return false;
    const Edge edge = borders.next();
    const double area_of_first = graph.getNodeData(edge.first).area;
    const double area_of_second = graph.getNodeData(edge.second).area;
    const bool second_survives = area_of_second > area_of_first;
    const int survivor = second_survives ? edge.second : edge.first;
    const int removed = second_survives ? edge.first : edge.second;
    if (survivor == -1 || removed == -1) return false;
    map.merge(survivor, removed);

    const std::set<int> neighbours = graph.getNeighbors(removed);
    for (const int neighbour : neighbours) {
        borders.remove(Edge(removed, neighbour));
        borders.remove(Edge(survivor, neighbour));
    }
    internal::mergeInGraph(graph, survivor, removed);
    for (const int neighbour : neighbours) borders.add(Edge(survivor, neighbour));
    return true;
}

/// Merges until `mergeOne` finds nothing more. What was merged before a failure is written, too.
template <class MergeOne>
void mergeAll(internal::MapMerger& map, const MergeOne& mergeOne) {
    try {
        while (mergeOne()) {
        }
    } catch (...) {
        map.writeImages();
        throw;
    }
    map.writeImages();
}

}  // namespace

void mergeNodesInPlace(Graph& graph, cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids,
                       int border_value, const Config::MergeNodesInPlaceConfig& config) {
    internal::MapMerger map(segments, borders, border_ids);
    SmallRooms small(graph, config.area_threshold);
    IsolatedRooms isolated(graph, config.area_threshold);
    mergeAll(map, [&] {
        if (isolated.mayBeSmall()) {
            cleanSmallDisconnectedSegmentsInPlace(graph, segments, border_value,
                                                  config.area_threshold);
            isolated = IsolatedRooms(graph, config.area_threshold);
        }
        return mergeOneNode(graph, map, small, isolated);
    });
}

void mergeEdgesInPlace(Graph& graph, cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids,
                       int /*border_value*/, const Config::MergeEdgesInPlaceConfig& config) {
    internal::MapMerger map(segments, borders, border_ids);
    LongBorders long_borders(graph, config.length_threshold);
    mergeAll(map, [&] { return mergeOneEdge(graph, map, long_borders); });
}

}  // namespace vorund::MergeProcessor
