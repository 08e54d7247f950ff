#include "flow/islands.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>

#include "flow/separators.h"
#include "internal/runs.h"

namespace vorund::rooms {
namespace {

constexpr double kMargin = 1e-9;  // [m^2]

/// A connected part of the graph, its labels ascending.
std::set<int> partOf(const Graph& graph, int start) {
    std::set<int> part{start};
    std::vector<int> open{start};
    while (!open.empty()) {
        const int label = open.back();
        open.pop_back();
        for (const int neighbour : graph.getNeighbors(label)) {
            if (part.insert(neighbour).second) open.push_back(neighbour);
        }
    }
    return part;
}

double areaOf(const Graph& graph, const std::set<int>& labels) {
    double area = 0.0;
    for (const int label : labels) area += graph.getNodeData(label).area;
    return area;
}

std::set<int> allOf(const std::vector<std::set<int>>& parts) {
    std::set<int> labels;
    for (const std::set<int>& part : parts) labels.insert(part.begin(), part.end());
    return labels;
}

/// The first of the largest.
std::vector<std::set<int>>::const_iterator largestOf(const std::vector<std::set<int>>& parts,
                                                     const Graph& graph) {
    return std::max_element(parts.begin(), parts.end(),
                            [&](const std::set<int>& a, const std::set<int>& b) {
                                return areaOf(graph, a) < areaOf(graph, b);
                            });
}

/// Erases what was a line beside a run of pixels.
void eraseLinesBeside(Regions& regions, int row, int begin, int end) {
    const int left = std::max(begin - 1, 0);
    const int right = std::min(end + 1, regions.labels.cols);
    const int bottom = std::min(row + 1, regions.labels.rows - 1);
    for (int r = std::max(row - 1, 0); r <= bottom; ++r) {
        std::int32_t* const label = regions.labels.ptr<std::int32_t>(r);
        std::int32_t* const border = regions.borders.ptr<std::int32_t>(r);
        for (int col = left; col < right; ++col) {
            if (label[col] != kLine) continue;
            label[col] = 0;
            border[col] = 0;
        }
    }
}

/// Erases rooms and the lines that touch them from the images.
/// @return The first pixels of the rooms in raster order.
std::map<int, cv::Point> erasePixels(Regions& regions, const std::set<int>& removed) {
    std::map<int, cv::Point> first;
    std::vector<bool> is_removed(static_cast<std::size_t>(regions.label_count));
    for (const int label : removed) is_removed[static_cast<std::size_t>(label)] = true;
    for (int row = 0; row < regions.labels.rows; ++row) {
        std::int32_t* const labels = regions.labels.ptr<std::int32_t>(row);
        internal::forEachRun(labels, regions.labels.cols,
                             [&](int begin, int end, std::int32_t label) {
                                 if (!is_removed[static_cast<std::size_t>(label)]) return;
                                 first.emplace(label, cv::Point(begin, row));
                                 eraseLinesBeside(regions, row, begin, end);
                                 std::fill(labels + begin, labels + end, 0);
                             });
    }
    return first;
}

cv::Point firstOf(const std::set<int>& part, const std::map<int, cv::Point>& first_pixels) {
    cv::Point first = first_pixels.at(*part.begin());
    for (const int label : part) {
        const cv::Point& pixel = first_pixels.at(label);
        if (pixel.y < first.y || (pixel.y == first.y && pixel.x < first.x)) first = pixel;
    }
    return first;
}

/// Erases rooms from graph and ids, and says so in the table.
void eraseFromTable(RoomGraph& table, const std::set<int>& removed) {
    for (const int label : removed) {
        table.labels.ptr<std::int32_t>(0)[label] = 0;
        table.graph.removeNode(label);
    }
    for (auto entry = table.border_ids.begin(); entry != table.border_ids.end();) {
        entry = removed.count(entry->first.first) > 0 ? table.border_ids.erase(entry)
                                                      : std::next(entry);
    }
}

}  // namespace

std::vector<RemovedIsland> removeIslands(Regions& regions, double area_threshold,
                                         double part_of_map, bool keep_one) {
    const Graph& graph = regions.table.graph;
    std::set<int> unvisited;
    for (const auto& [label, data] : graph.nodes()) unvisited.insert(label);
    // Merging adds the areas in another order, which may round the total up, or a part down.
    const double of_map = areaOf(graph, unvisited) * part_of_map + kMargin;

    std::vector<std::set<int>> islands;
    while (!unvisited.empty()) {
        const std::set<int> part = partOf(graph, *unvisited.begin());
        for (const int label : part) unvisited.erase(label);
        const double limit =
            std::max(of_map, part.size() > 1 ? area_threshold + kMargin : area_threshold);
        if (!(areaOf(graph, part) < limit)) continue;
        islands.push_back(part);
    }
    std::set<int> removed = allOf(islands);
    if (keep_one && !islands.empty() && removed.size() == graph.nodes().size()) {
        islands.erase(largestOf(islands, graph));
        removed = allOf(islands);
    }
    if (islands.empty()) return {};

    const std::map<int, cv::Point> first_pixels = erasePixels(regions, removed);
    std::vector<RemovedIsland> result;
    for (const std::set<int>& part : islands) {
        result.push_back({areaOf(graph, part), firstOf(part, first_pixels)});
    }
    eraseFromTable(regions.table, removed);
    return result;
}

}  // namespace vorund::rooms
