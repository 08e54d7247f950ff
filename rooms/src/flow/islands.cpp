#include "flow/islands.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>

#include "flow/separators.h"

namespace vorund::rooms {
namespace {

constexpr double kSmallPartOfMap = 0.01;  // As in the library's own cleaning of isolated rooms.
constexpr double kMargin = 1e-9;          // [m^2]

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

bool touchesAny(const cv::Mat& labels, int row, int col, const std::set<int>& rooms) {
    for (int r = std::max(row - 1, 0); r <= std::min(row + 1, labels.rows - 1); ++r) {
        for (int c = std::max(col - 1, 0); c <= std::min(col + 1, labels.cols - 1); ++c) {
            if (rooms.count(labels.at<std::int32_t>(r, c)) > 0) return true;
        }
    }
    return false;
}

/// First pixels in raster order of the given labels.
std::map<int, cv::Point> firstPixels(const cv::Mat& labels, const std::set<int>& rooms) {
    std::map<int, cv::Point> first;
    for (int row = 0; row < labels.rows && first.size() < rooms.size(); ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const int label = labels.at<std::int32_t>(row, col);
            if (rooms.count(label) > 0) first.emplace(label, cv::Point(col, row));
        }
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

/// Erases rooms and the lines that touch them from the label image, and what lies on those lines
/// from the border image.
void erasePixels(RoomGraph& rooms, const std::set<int>& removed) {
    const cv::Mat before = rooms.labels.clone();
    for (int row = 0; row < before.rows; ++row) {
        for (int col = 0; col < before.cols; ++col) {
            const int label = before.at<std::int32_t>(row, col);
            const bool gone = removed.count(label) > 0 ||
                              (label == kLine && touchesAny(before, row, col, removed));
            if (!gone) continue;
            rooms.labels.at<std::int32_t>(row, col) = 0;
            rooms.borders.at<std::int32_t>(row, col) = 0;
        }
    }
}

}  // namespace

std::vector<RemovedIsland> removeIslands(RoomGraph& rooms, double area_threshold) {
    std::set<int> unvisited;
    for (const auto& [label, data] : rooms.graph.nodes()) unvisited.insert(label);
    // Merging adds the areas in another order, which may round the total up, or a part down.
    const double of_map = areaOf(rooms.graph, unvisited) * kSmallPartOfMap + kMargin;

    std::vector<std::set<int>> islands;
    std::set<int> removed;
    while (!unvisited.empty()) {
        const std::set<int> part = partOf(rooms.graph, *unvisited.begin());
        for (const int label : part) unvisited.erase(label);
        const double limit =
            std::max(of_map, part.size() > 1 ? area_threshold + kMargin : area_threshold);
        if (!(areaOf(rooms.graph, part) < limit)) continue;
        islands.push_back(part);
        removed.insert(part.begin(), part.end());
    }
    if (islands.empty()) return {};

    const std::map<int, cv::Point> first_pixels = firstPixels(rooms.labels, removed);
    std::vector<RemovedIsland> result;
    for (const std::set<int>& part : islands) {
        result.push_back({areaOf(rooms.graph, part), firstOf(part, first_pixels)});
    }
    erasePixels(rooms, removed);
    for (const int label : removed) rooms.graph.removeNode(label);
    for (auto entry = rooms.border_ids.begin(); entry != rooms.border_ids.end();) {
        entry = removed.count(entry->first.first) > 0 ? rooms.border_ids.erase(entry)
                                                      : std::next(entry);
    }
    return result;
}

}  // namespace vorund::rooms
