#include "support/consistency.h"

#include <cmath>
#include <map>
#include <set>

#include "vorund/graph_processor.h"

namespace vorund::test {
namespace {

using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

constexpr double kPixelsPerMetre = 20.0;
constexpr double kTolerance = 1e-6;

std::map<int, int> countValues(const cv::Mat& image) {
    std::map<int, int> counts;
    for (const int value : cv::Mat_<int>(image)) ++counts[value];
    return counts;
}

/// The number of pixels that is so many metres or square metres; -1 if it is no whole number.
int wholePixels(double pixels) {
    const double rounded = std::round(pixels);
    return std::abs(pixels - rounded) < kTolerance ? static_cast<int>(rounded) : -1;
}

bool seesLabel(const cv::Mat& segments, const cv::Point& pixel, int label) {
    const cv::Rect cell(pixel.x - 1, pixel.y - 1, 3, 3);
    const cv::Mat_<int> around = segments(cell & cv::Rect(cv::Point(), segments.size()));
    for (const int value : around) {
        if (value == label) return true;
    }
    return false;
}

AssertionResult nodesAreTheLabels(const RegionMap& map, int border_value) {
    std::map<int, int> counts = countValues(map.segments);
    counts.erase(0);
    counts.erase(border_value);
    for (const auto& [label, data] : map.graph.nodes()) {
        const auto found = counts.find(label);
        if (found == counts.end()) {
            return AssertionFailure() << "room " << label << " has no pixel";
        }
        const int built = wholePixels(data.area * kPixelsPerMetre * kPixelsPerMetre);
        if (built < 1 || built > found->second) {
            return AssertionFailure() << "room " << label << " has " << found->second
                                      << " pixels, but an area of " << data.area;
        }
        counts.erase(found);
    }
    if (counts.empty()) return AssertionSuccess();
    return AssertionFailure() << "label " << counts.begin()->first << " is no room";
}

AssertionResult neighborsAreTheEdges(const Graph& graph) {
    std::set<int> labels;
    for (const auto& node : graph.nodes()) labels.insert(node.first);
    std::set<Edge> pairs;
    for (const auto& [label, neighbors] : graph.adjacency()) {
        if (labels.erase(label) == 0) return AssertionFailure() << label << " is no node";
        for (const int neighbor : neighbors) {
            if (neighbor == label) return AssertionFailure() << label << " neighbours itself";
            const auto back = graph.adjacency().find(neighbor);
            if (back == graph.adjacency().end() || back->second.count(label) == 0) {
                return AssertionFailure() << neighbor << " does not know its neighbour " << label;
            }
            pairs.insert(Edge(label, neighbor));
        }
    }
    if (!labels.empty()) {
        return AssertionFailure() << "node " << *labels.begin() << " has no set of neighbours";
    }
    for (const auto& edge : graph.edges()) {
        if (pairs.erase(edge.first) == 0) {
            return AssertionFailure() << "edge {" << edge.first.first << ", " << edge.first.second
                                      << "} joins no neighbours";
        }
    }
    if (pairs.empty()) return AssertionSuccess();
    return AssertionFailure() << "neighbours {" << pairs.begin()->first << ", "
                              << pairs.begin()->second << "} have no edge";
}

AssertionResult idsAreTheEdges(const RegionMap& map) {
    std::set<int> ids;
    for (const auto& [edge, id] : map.border_ids) {
        if (map.graph.edges().count(edge) == 0) {
            return AssertionFailure() << "id " << id << " is of {" << edge.first << ", "
                                      << edge.second << "}, which is no edge";
        }
        if (!ids.insert(id).second) return AssertionFailure() << "id " << id << " is given twice";
    }
    for (const auto& edge : map.graph.edges()) {
        if (map.border_ids.count(edge.first) == 0) {
            return AssertionFailure()
                   << "edge {" << edge.first.first << ", " << edge.first.second << "} has no id";
        }
    }
    return AssertionSuccess();
}

AssertionResult bordersHaveTheirLengths(const RegionMap& map) {
    std::map<int, int> counts = countValues(map.borders);
    counts.erase(0);
    for (const auto& [edge, id] : map.border_ids) {
        const double length = map.graph.getEdgeData(edge.first, edge.second).length;
        if (counts[id] != wholePixels(length * kPixelsPerMetre)) {
            return AssertionFailure() << "border " << id << " has " << counts[id]
                                      << " pixels, but a length of " << length;
        }
        counts.erase(id);
    }
    if (counts.empty()) return AssertionSuccess();
    return AssertionFailure() << "border " << counts.begin()->first << " has pixels, but no rooms";
}

AssertionResult bordersSeparateTheirRooms(const RegionMap& map, int border_value) {
    std::map<int, Edge> rooms;
    for (const auto& [edge, id] : map.border_ids) rooms.emplace(id, edge);
    for (int row = 0; row < map.borders.rows; ++row) {
        for (int col = 0; col < map.borders.cols; ++col) {
            const int id = map.borders.at<int>(row, col);
            if (id == 0) continue;
            const Edge& edge = rooms.at(id);
            const cv::Point pixel(col, row);
            if (map.segments.at<int>(pixel) != border_value ||
                !seesLabel(map.segments, pixel, edge.first) ||
                !seesLabel(map.segments, pixel, edge.second)) {
                return AssertionFailure() << "the pixel at row " << row << ", column " << col
                                          << " does not separate the rooms of border " << id;
            }
        }
    }
    return AssertionSuccess();
}

AssertionResult hasTotals(const RegionMap& map, int border_value, const RegionTotals& totals) {
    const RegionTotals now = regionTotals(map, border_value);
    if (std::abs(now.area - totals.area) > kTolerance) {
        return AssertionFailure() << "the total area was " << totals.area << ", is " << now.area;
    }
    if (now.rooms_and_borders != totals.rooms_and_borders) {
        return AssertionFailure() << "rooms and borders had " << totals.rooms_and_borders
                                  << " pixels, have " << now.rooms_and_borders;
    }
    if (now.other_lines != totals.other_lines) {
        return AssertionFailure() << "there were " << totals.other_lines
                                  << " other line pixels, are " << now.other_lines;
    }
    return AssertionSuccess();
}

}  // namespace

RegionMap regionMap(const cv::Mat& labels, int border_value) {
    const auto found = GraphProcessor::findGraphRepresentation(labels, border_value);
    RegionMap map{found.graph, {}, {}, found.border_ids};
    labels.convertTo(map.segments, CV_32S);
    found.borders_map.convertTo(map.borders, CV_32S);
    return map;
}

RegionTotals regionTotals(const RegionMap& map, int border_value) {
    RegionTotals totals{0.0, 0, 0};
    for (const auto& node : map.graph.nodes()) totals.area += node.second.area;
    for (int row = 0; row < map.segments.rows; ++row) {
        for (int col = 0; col < map.segments.cols; ++col) {
            const int label = map.segments.at<int>(row, col);
            const bool is_line = label == border_value;
            const bool is_border = map.borders.at<int>(row, col) != 0;
            if (is_border || (label != 0 && !is_line)) ++totals.rooms_and_borders;
            if (is_line && !is_border) ++totals.other_lines;
        }
    }
    return totals;
}

AssertionResult isConsistent(const RegionMap& map, int border_value, const RegionTotals& totals) {
    if (map.segments.type() != CV_32SC1 || map.borders.type() != CV_32SC1 ||
        map.segments.size() != map.borders.size()) {
        return AssertionFailure() << "the images are of other types or sizes";
    }
    AssertionResult result = nodesAreTheLabels(map, border_value);
    if (result) result = neighborsAreTheEdges(map.graph);
    if (result) result = idsAreTheEdges(map);
    if (result) result = bordersHaveTheirLengths(map);
    if (result) result = bordersSeparateTheirRooms(map, border_value);
    if (result) result = hasTotals(map, border_value, totals);
    return result;
}

}  // namespace vorund::test
