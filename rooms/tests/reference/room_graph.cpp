#include "reference/room_graph.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>

namespace vorund::reference {
namespace {

constexpr double kResolution = 0.05;
constexpr double kMargin = 1e-9;  // For sums of areas in another order.

/// The value at a pixel, 0 outside.
int valueAt(const cv::Mat& image, int row, int col) {
    const bool inside = row >= 0 && row < image.rows && col >= 0 && col < image.cols;
    return inside ? image.at<int>(row, col) : 0;
}

/// The values of the eight neighbours that are neither 0 nor the pixel's own.
std::set<int> valuesAround(const cv::Mat& image, int row, int col) {
    const int own = image.at<int>(row, col);
    std::set<int> values;
    for (int r = row - 1; r <= row + 1; ++r) {
        for (int c = col - 1; c <= col + 1; ++c) {
            const int value = valueAt(image, r, c);
            if (value != 0 && value != own) values.insert(value);
        }
    }
    return values;
}

struct Sums {
    std::int64_t count = 0;
    std::int64_t x = 0;
    std::int64_t y = 0;
};

std::map<int, Sums> sumsOf(const cv::Mat& image) {
    double largest = 0.0;
    cv::minMaxLoc(image, nullptr, &largest);
    std::vector<Sums> sums(static_cast<std::size_t>(largest) + 1);
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            Sums& sum = sums[static_cast<std::size_t>(image.at<int>(row, col))];
            ++sum.count;
            sum.x += col;
            sum.y += row;
        }
    }
    std::map<int, Sums> found;
    for (std::size_t value = 0; value < sums.size(); ++value) {
        if (sums[value].count > 0) found.emplace(static_cast<int>(value), sums[value]);
    }
    return found;
}

NodeData nodeOf(const Sums& sums) {
    const auto count = static_cast<double>(sums.count);
    return {count * kResolution * kResolution,
            cv::Point(static_cast<int>(std::round(static_cast<double>(sums.x) / count)),
                      static_cast<int>(std::round(static_cast<double>(sums.y) / count)))};
}

/// The rooms that can be reached from one, with it.
std::set<int> partOf(const RegionGraph& graph, int start) {
    std::set<int> part{start};
    for (std::size_t before = 0; before != part.size();) {
        before = part.size();
        const std::set<int> so_far = part;
        for (const int label : so_far) {
            part.insert(graph.adjacency.at(label).begin(), graph.adjacency.at(label).end());
        }
    }
    return part;
}

double areaOf(const RegionGraph& graph, const std::set<int>& labels) {
    double area = 0.0;
    for (const int label : labels) area += graph.nodes.at(label).area;
    return area;
}

cv::Point firstPixelOf(const cv::Mat& segments, const std::set<int>& labels) {
    for (int row = 0; row < segments.rows; ++row) {
        for (int col = 0; col < segments.cols; ++col) {
            if (labels.count(segments.at<int>(row, col)) > 0) return {col, row};
        }
    }
    return {-1, -1};
}

bool touchesAny(const cv::Mat& segments, int row, int col, const std::set<int>& labels) {
    const std::set<int> around = valuesAround(segments, row, col);
    return std::any_of(around.begin(), around.end(),
                       [&](int value) { return labels.count(value) > 0; });
}

/// Rooms, the lines that touch them, and what lies on those lines.
void erase(MergeState& rooms, const std::set<int>& labels) {
    const cv::Mat before = rooms.segments.clone();
    for (int row = 0; row < before.rows; ++row) {
        for (int col = 0; col < before.cols; ++col) {
            const int label = before.at<int>(row, col);
            if (labels.count(label) == 0 &&
                (label != kLine || !touchesAny(before, row, col, labels))) {
                continue;
            }
            rooms.segments.at<int>(row, col) = 0;
            rooms.borders.at<int>(row, col) = 0;
        }
    }
    // All neighbours of an island's room are of the island, too.
    for (const int label : labels) {
        for (const int neighbor : rooms.graph.adjacency.at(label)) {
            rooms.graph.edges.erase(Edge(label, neighbor));
            rooms.border_ids.erase(Edge(label, neighbor));
        }
        rooms.graph.nodes.erase(label);
        rooms.graph.adjacency.erase(label);
    }
}

/// The smallest room among the four neighbours, or 255.
int smallestBeside(const cv::Mat& segmented, int row, int col) {
    std::set<int> beside;
    for (const cv::Point& step : {cv::Point(0, -1), {-1, 0}, {1, 0}, {0, 1}}) {
        const int label = valueAt(segmented, row + step.y, col + step.x);
        if (label != 0 && label != kLine) beside.insert(label);
    }
    return beside.empty() ? kLine : *beside.begin();
}

}  // namespace

cv::Mat linesBetween(const cv::Mat& labels) {
    cv::Mat lines = cv::Mat::zeros(labels.size(), CV_8UC1);
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            for (const cv::Point& step : {cv::Point(0, -1), {-1, 0}, {1, 0}, {0, 1}}) {
                const int beside = valueAt(labels, row + step.y, col + step.x);
                if (beside == 0 || beside >= labels.at<int>(row, col)) continue;
                lines.at<std::uint8_t>(row, col) = kLine;
            }
        }
    }
    return lines;
}

cv::Mat separated(const cv::Mat& segmented) {
    cv::Mat rooms;
    segmented.convertTo(rooms, CV_32S);
    rooms.setTo(0, segmented == kLine);
    cv::Mat result = segmented.clone();
    result.setTo(kLine, linesBetween(rooms));
    return result;
}

MergeState roomGraph(const cv::Mat& separated) {
    MergeState rooms;
    separated.convertTo(rooms.segments, CV_32S);
    rooms.borders = cv::Mat::zeros(separated.size(), CV_32SC1);
    for (int row = 0; row < separated.rows; ++row) {
        for (int col = 0; col < separated.cols; ++col) {
            if (rooms.segments.at<int>(row, col) != kLine) continue;
            const std::set<int> around = valuesAround(rooms.segments, row, col);
            if (around.size() != 2) continue;
            const Edge edge(*around.begin(), *around.rbegin());
            const int next = static_cast<int>(rooms.border_ids.size()) + 1;
            rooms.borders.at<int>(row, col) = rooms.border_ids.emplace(edge, next).first->second;
        }
    }
    for (const auto& [label, sums] : sumsOf(rooms.segments)) {
        if (label == 0 || label == kLine) continue;
        rooms.graph.nodes[label] = nodeOf(sums);
        rooms.graph.adjacency[label] = {};
    }
    const std::map<int, Sums> pixels = sumsOf(rooms.borders);
    for (const auto& [edge, id] : rooms.border_ids) {
        const auto found = pixels.find(id);
        const auto count = found == pixels.end() ? 0 : found->second.count;
        rooms.graph.edges[edge] = {static_cast<double>(count) * kResolution};
        rooms.graph.adjacency[edge.first].insert(edge.second);
        rooms.graph.adjacency[edge.second].insert(edge.first);
    }
    return rooms;
}

std::vector<PlainIsland> removeIslands(MergeState& rooms, double area_threshold, double part_of_map,
                                       bool keep_one) {
    std::set<int> unvisited;
    for (const auto& node : rooms.graph.nodes) unvisited.insert(node.first);
    const double of_map = areaOf(rooms.graph, unvisited) * part_of_map + kMargin;
    std::vector<PlainIsland> islands;
    std::vector<std::set<int>> parts;
    while (!unvisited.empty()) {
        const std::set<int> part = partOf(rooms.graph, *unvisited.begin());
        for (const int label : part) unvisited.erase(label);
        const double least = part.size() > 1 ? area_threshold + kMargin : area_threshold;
        const double area = areaOf(rooms.graph, part);
        if (area >= std::max(of_map, least)) continue;
        islands.push_back({area, firstPixelOf(rooms.segments, part)});
        parts.push_back(part);
    }
    std::set<int> removed;
    for (const std::set<int>& part : parts) removed.insert(part.begin(), part.end());
    if (keep_one && !parts.empty() && removed.size() == rooms.graph.nodes.size()) {
        std::size_t largest = 0;
        for (std::size_t i = 1; i < islands.size(); ++i) {
            if (islands[i].area > islands[largest].area) largest = i;
        }
        for (const int label : parts[largest]) removed.erase(label);
        islands.erase(islands.begin() + static_cast<std::ptrdiff_t>(largest));
    }
    if (!removed.empty()) erase(rooms, removed);
    return islands;
}

cv::Mat withLinePixels(const cv::Mat& segmented, const cv::Mat& merged) {
    constexpr int kUnknown = -1;
    cv::Mat own;
    segmented.convertTo(own, CV_32S);
    const cv::Mat lines = separated(own);
    int largest = kLine;
    for (const int label : cv::Mat_<int>(own)) largest = std::max(largest, label);
    std::vector<int> successors(static_cast<std::size_t>(largest) + 1, kUnknown);
    std::vector<int> beside(successors.size(), kUnknown);
    for (int row = 0; row < own.rows; ++row) {
        for (int col = 0; col < own.cols; ++col) {
            const auto label = static_cast<std::size_t>(own.at<int>(row, col));
            if (lines.at<int>(row, col) != kLine) successors[label] = merged.at<int>(row, col);
            if (beside[label] == kUnknown) beside[label] = smallestBeside(own, row, col);
        }
    }
    successors[0] = 0;
    successors[kLine] = 0;
    // A room that is nothing but line goes with the neighbour that made it one.
    for (std::size_t label = 1; label < successors.size(); ++label) {
        if (successors[label] != kUnknown || beside[label] == kUnknown) continue;
        successors[label] = successors[static_cast<std::size_t>(beside[label])];
    }
    cv::Mat labels(merged.size(), CV_32SC1);
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const int label = successors[static_cast<std::size_t>(own.at<int>(row, col))];
            labels.at<int>(row, col) = std::max(label, 0);
        }
    }
    return labels;
}

}  // namespace vorund::reference
