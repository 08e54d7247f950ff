#include "passages/region_table.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "flow/separators.h"
#include "internal/runs.h"
#include "passages/clearance.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

/// The floor with shut doorways.
cv::Mat withoutDoorways(const cv::Mat& floor, const std::vector<FoundDoorway>& doorways) {
    cv::Mat shut = floor.clone();
    for (const FoundDoorway& doorway : doorways) {
        for (const cv::Point& pixel : doorway.pixels(floor)) shut.at<std::uint8_t>(pixel) = 0;
    }
    return shut;
}

void addPassage(Region& region, int other, const Passage& passage) {
    Passage& known = region.passages[other];
    known.clearance = std::max(known.clearance, passage.clearance);
    known.doorway = std::max(known.doorway, passage.doorway);
    known.length += passage.length;
}

NodeData together(const NodeData& a, const NodeData& b) {
    const double area = a.area + b.area;
    const auto weigh = [&](int of_a, int of_b) {
        return static_cast<int>(std::lround((of_a * a.area + of_b * b.area) / area));
    };
    return {area, {weigh(a.position.x, b.position.x), weigh(a.position.y, b.position.y)}};
}

}  // namespace

double Region::area() const {
    return static_cast<double>(pixels) * kWorkingResolution * kWorkingResolution;
}

double Region::width() const {
    return 2.0 * std::sqrt(static_cast<double>(clearance)) * kWorkingResolution;
}

/// By a border's id, of the doorways that it lies on or beside: half the widest one's width, squared.
RegionTable::ByIndex RegionTable::widestDoorways(const Regions& regions, const cv::Mat& floor,
                                                 const std::vector<FoundDoorway>& doorways) {
    ByIndex widest(static_cast<std::size_t>(regions.table.labels.cols - regions.label_count), 0);
    const cv::Rect whole({0, 0}, regions.borders.size());
    for (const FoundDoorway& doorway : doorways) {
        const std::int64_t squared = std::int64_t{doorway.width} * doorway.width / 4;
        for (const cv::Point& pixel : doorway.pixels(floor)) {
            for (const cv::Point& step : {cv::Point(0, 0), {0, -1}, {-1, 0}, {1, 0}, {0, 1}}) {
                if (!whole.contains(pixel + step)) continue;
                const int id = regions.borders.at<std::int32_t>(pixel + step);
                std::int64_t& known = widest[static_cast<std::size_t>(id)];
                known = std::max(known, squared);
            }
        }
    }
    return widest;
}

RegionTable::RegionTable(const Regions& regions, const cv::Mat& floor,
                         const std::vector<FoundDoorway>& doorways) {
    const RoomGraph& rooms = regions.table;
    for (const auto& [label, data] : rooms.graph.nodes()) {
        regions_[label].pixels =
            std::llround(data.area / (kWorkingResolution * kWorkingResolution));
    }
    std::vector<std::int64_t> of_label(static_cast<std::size_t>(regions.label_count), 0);
    std::vector<std::int64_t> of_id(
        static_cast<std::size_t>(rooms.labels.cols - regions.label_count), 0);
    const Clearance clearance(regions.labels, withoutDoorways(floor, doorways));
    for (int row = 0; row < regions.labels.rows; ++row) {
        const std::int32_t* const label = regions.labels.ptr<std::int32_t>(row);
        const std::int32_t* const id = regions.borders.ptr<std::int32_t>(row);
        const auto raise = [&](std::int64_t& largest, int begin, int end) {
            largest = clearance.largest(row, begin, end, largest);
        };
        internal::forEachRun(
            label, regions.labels.cols, [&](int begin, int end, std::int32_t value) {
                if (value == kLine) {
                    for (int col = begin; col < end; ++col) {
                        raise(of_id[static_cast<std::size_t>(id[col])], col, col + 1);
                    }
                } else if (value != 0) {
                    raise(of_label[static_cast<std::size_t>(value)], begin, end);
                }
            });
    }
    for (auto& [label, region] : regions_) {
        region.clearance = of_label[static_cast<std::size_t>(label)];
    }
    const ByIndex doorway_of_id = widestDoorways(regions, floor, doorways);
    for (const auto& [edge, data] : rooms.graph.edges()) {
        const int id = rooms.border_ids.at(edge);
        const auto index = static_cast<std::size_t>(id);
        const Passage passage{of_id[index], doorway_of_id[index], data.length};
        addPassage(regions_[edge.first], edge.second, passage);
        addPassage(regions_[edge.second], edge.first, passage);
    }
}

void RegionTable::merge(int a, int b) {
    const bool a_survives =
        std::make_pair(-regions_.at(a).pixels, a) < std::make_pair(-regions_.at(b).pixels, b);
    const int kept = a_survives ? a : b;
    const int gone = a_survives ? b : a;
    Region& region = regions_.at(kept);
    const Region absorbed = std::move(regions_.at(gone));
    regions_.erase(gone);
    region.pixels += absorbed.pixels;
    // The line between them becomes theirs, and may be the widest place of both.
    region.clearance =
        std::max({region.clearance, absorbed.clearance, absorbed.passages.at(kept).clearance});
    region.passages.erase(gone);
    for (const auto& [other, passage] : absorbed.passages) {
        if (other == kept) continue;
        Region& neighbour = regions_.at(other);
        neighbour.passages.erase(gone);
        addPassage(region, other, passage);
        addPassage(neighbour, kept, passage);
    }
    merged_into_[gone] = kept;
}

int RegionTable::survivor(int label) const {
    for (auto found = merged_into_.find(label); found != merged_into_.end();
         found = merged_into_.find(label)) {
        label = found->second;
    }
    return label;
}

void RegionTable::apply(Regions& regions) const {
    RoomGraph& rooms = regions.table;
    renameLabels(regions);
    mergeBorders(regions);

    std::map<int, NodeData> nodes;
    for (const auto& [label, data] : rooms.graph.nodes()) {
        const auto [node, is_new] = nodes.emplace(survivor(label), data);
        if (!is_new) node->second = together(node->second, data);
    }
    Graph graph;
    for (const auto& [label, data] : nodes) graph.addNode(label, data);
    for (const auto& [label, region] : regions_) {
        for (const auto& [other, passage] : region.passages) {
            if (label < other) graph.addEdge(label, other, {passage.length});
        }
    }
    rooms.graph = std::move(graph);
}

void RegionTable::renameLabels(Regions& regions) const {
    std::int32_t* const label = regions.table.labels.ptr<std::int32_t>(0);
    for (int i = 0; i < regions.label_count; ++i) label[i] = survivor(label[i]);
}

void RegionTable::mergeBorders(Regions& regions) const {
    std::int32_t* const label = regions.table.labels.ptr<std::int32_t>(0) + regions.label_count;
    std::int32_t* const border = regions.table.borders.ptr<std::int32_t>(0) + regions.label_count;
    // That of the smallest id stands for all between the same two.
    BorderIds ids;
    for (const auto& [edge, id] : regions.table.border_ids) {
        const Edge now(survivor(edge.first), survivor(edge.second));
        if (now.first == now.second) {
            label[id] = now.first;
            border[id] = 0;
        } else {
            int& kept = ids.emplace(now, id).first->second;
            kept = std::min(kept, id);
        }
    }
    for (const auto& [edge, id] : regions.table.border_ids) {
        const auto now = ids.find(Edge(survivor(edge.first), survivor(edge.second)));
        if (now != ids.end()) border[id] = now->second;
    }
    regions.table.border_ids = std::move(ids);
}

}  // namespace vorund::rooms
