#include "reference/graph_processor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

namespace vorund::reference {
namespace {

constexpr double kResolution = 0.05;

/// Any label image as 32-bit numbers.
cv::Mat_<int> numbers(const cv::Mat& image) {
    cv::Mat_<int> result;
    image.convertTo(result, CV_32S);
    return result;
}

std::vector<cv::Point> pixelsOf(const cv::Mat& image, int value) {
    std::vector<cv::Point> pixels;
    const cv::Mat_<int> values = numbers(image);
    for (int y = 0; y < values.rows; ++y) {
        for (int x = 0; x < values.cols; ++x) {
            if (values(y, x) == value) pixels.emplace_back(x, y);
        }
    }
    return pixels;
}

std::set<int> distinctValues(const cv::Mat& image) {
    std::set<int> distinct;
    for (const int value : numbers(image)) distinct.insert(value);
    return distinct;
}

cv::Vec3b colourOfIndex(int index, int value) {
    const float turns = static_cast<float>(index) * 137.5F / 360.0F;
    const float hue = turns * 180.0F;
    const cv::Mat hsv(1, 1, CV_8UC3, cv::Scalar(static_cast<double>(hue), 255, value));
    cv::Mat bgr;
    cv::cvtColor(hsv, bgr, cv::COLOR_HSV2BGR);
    return bgr.at<cv::Vec3b>(0, 0);
}

int clamp(int value, int smallest, int largest) {
    return std::max(smallest, std::min(value, largest));
}

cv::Point clampInto(const cv::Size& size, const cv::Point& point) {
    return cv::Point(clamp(point.x, 0, size.width - 1), clamp(point.y, 0, size.height - 1));
}

void drawNode(cv::Mat& picture, int label, const NodeData& data) {
    const cv::Scalar white(255, 255, 255);
    const cv::Point at = clampInto(picture.size(), data.position);
    const int radius = clamp(static_cast<int>(2.0 * std::sqrt(data.area)), 3, 20);
    cv::circle(picture, at, radius, cv::Scalar(0, 0, 255), -1, 8);
    cv::circle(picture, at, radius, white, 2, 8);

    const std::string text = std::to_string(label);
    int baseline = 0;
    const cv::Size extent = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 0.5, 1, &baseline);
    const cv::Point origin(at.x - extent.width / 2, at.y + extent.height / 2);
    cv::putText(picture, text, origin, cv::FONT_HERSHEY_SIMPLEX, 0.5, white, 1, 8);
}

}  // namespace

RegionGraph regionGraph(const Graph& graph) {
    return {graph.nodes(), graph.adjacency(), graph.edges()};
}

bool operator==(const RegionGraph& a, const RegionGraph& b) {
    const auto same_node = [](const auto& x, const auto& y) {
        return x.first == y.first && x.second.area == y.second.area &&
               x.second.position == y.second.position;
    };
    const auto same_edge = [](const auto& x, const auto& y) {
        return x.first == y.first && x.second.length == y.second.length;
    };
    return std::equal(a.nodes.begin(), a.nodes.end(), b.nodes.begin(), b.nodes.end(), same_node) &&
           a.adjacency == b.adjacency &&
           std::equal(a.edges.begin(), a.edges.end(), b.edges.begin(), b.edges.end(), same_edge);
}

std::ostream& operator<<(std::ostream& stream, const RegionGraph& graph) {
    // Enough digits that two numbers which differ look different.
    stream << std::setprecision(std::numeric_limits<double>::max_digits10);
    for (const auto& [label, data] : graph.nodes) {
        stream << "\n  node " << label << ": area " << data.area << ", at " << data.position;
    }
    for (const auto& [label, neighbors] : graph.adjacency) {
        stream << "\n  neighbours of " << label << ":";
        for (const int neighbor : neighbors) stream << " " << neighbor;
    }
    for (const auto& [edge, data] : graph.edges) {
        stream << "\n  edge {" << edge.first << ", " << edge.second << "}: " << data.length;
    }
    return stream;
}

cv::Mat cellAround(const cv::Mat& map, const cv::Point& point) {
    cv::Mat padded;
    // Isolated: what lies around a view is outside, too.
    cv::copyMakeBorder(map, padded, 1, 1, 1, 1, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
                       cv::Scalar::all(0));
    return padded(cv::Rect(point.x, point.y, 3, 3)).clone();
}

std::set<int> neighborsInCell(const cv::Mat& cell, int connectivity) {
    const cv::Mat_<int> values = numbers(cell);
    std::set<int> neighbors;
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 3; ++x) {
            const bool diagonal = x != 1 && y != 1;
            if (diagonal && connectivity == 4) continue;
            if (values(y, x) != 0 && values(y, x) != values(1, 1)) neighbors.insert(values(y, x));
        }
    }
    return neighbors;
}

cv::Mat endPoints(const cv::Mat& map, bool keep_them) {
    cv::Mat result = map.clone();
    for (int y = 0; y < map.rows; ++y) {
        for (int x = 0; x < map.cols; ++x) {
            const cv::Mat cell = cellAround(map, cv::Point(x, y));
            int count = 0;
            if (cell.at<std::uint8_t>(0, 1) != 0) ++count;
            if (cell.at<std::uint8_t>(1, 0) != 0) ++count;
            if (cell.at<std::uint8_t>(1, 2) != 0) ++count;
            if (cell.at<std::uint8_t>(2, 1) != 0) ++count;
            const bool is_end = count == 1;
            if (is_end != keep_them) result.at<std::uint8_t>(y, x) = 0;
        }
    }
    return result;
}

cv::Mat regionBorders(const cv::Mat& map, int u, int v) {
    cv::Mat result = cv::Mat::zeros(map.size(), CV_8UC1);
    for (const cv::Point& pixel : pixelsOf(map, v)) {
        if (neighborsInCell(cellAround(map, pixel), 8).count(u) > 0) {
            result.at<std::uint8_t>(pixel) = 255;
        }
    }
    return result;
}

GraphProcessor::CommonBordersResult commonBorders(const cv::Mat& map, int border_value) {
    GraphProcessor::CommonBordersResult result{cv::Mat::zeros(map.size(), CV_8UC1), {}};
    int count = 0;
    for (const cv::Point& pixel : pixelsOf(map, border_value)) {
        const std::set<int> around = neighborsInCell(cellAround(map, pixel), 8);
        if (around.size() != 2) continue;
        const Edge edge(*around.begin(), *around.rbegin());
        if (result.border_ids.count(edge) == 0) result.border_ids[edge] = ++count;
        const int id = result.border_ids[edge];
        result.borders_map.at<std::uint8_t>(pixel) = static_cast<std::uint8_t>(id % 256);
    }
    return result;
}

double area(const cv::Mat& segments, int label, double resolution) {
    const auto count = static_cast<double>(pixelsOf(segments, label).size());
    return count * resolution * resolution;
}

double length(const cv::Mat& borders_map, int id, double resolution) {
    return static_cast<double>(pixelsOf(borders_map, id).size()) * resolution;
}

cv::Point position(const cv::Mat& segments, int label) {
    const std::vector<cv::Point> pixels = pixelsOf(segments, label);
    if (pixels.empty()) return cv::Point(-1, -1);
    std::int64_t sum_x = 0;
    std::int64_t sum_y = 0;
    for (const cv::Point& pixel : pixels) {
        sum_x += pixel.x;
        sum_y += pixel.y;
    }
    const auto count = static_cast<double>(pixels.size());
    return cv::Point(static_cast<int>(std::round(static_cast<double>(sum_x) / count)),
                     static_cast<int>(std::round(static_cast<double>(sum_y) / count)));
}

RegionGraph createGraph(const cv::Mat& segments, const cv::Mat& borders_map,
                        const BorderIds& border_ids, int border_value) {
    RegionGraph graph;
    for (const int label : distinctValues(segments)) {
        if (label == 0 || label == border_value) continue;
        graph.nodes[label] = {area(segments, label, kResolution), position(segments, label)};
        graph.adjacency[label] = {};
    }
    for (const auto& [edge, id] : border_ids) {
        if (graph.nodes.count(edge.first) == 0 || graph.nodes.count(edge.second) == 0) continue;
        graph.edges[edge] = {length(borders_map, id, kResolution)};
        graph.adjacency[edge.first].insert(edge.second);
        graph.adjacency[edge.second].insert(edge.first);
    }
    return graph;
}

cv::Mat segmentsPicture(const cv::Mat& segments, int border_value) {
    const std::set<int> values = distinctValues(segments);
    const int line = border_value == -1 ? *values.rbegin() : border_value;
    cv::Mat picture = cv::Mat::zeros(segments.size(), CV_8UC3);
    int index = 0;
    for (const int value : values) {
        cv::Vec3b colour(0, 0, 0);
        if (value == 0) {
            colour = cv::Vec3b(255, 255, 255);
        } else if (value != line) {
            colour = colourOfIndex(index++, 200);
        }
        for (const cv::Point& pixel : pixelsOf(segments, value)) {
            picture.at<cv::Vec3b>(pixel) = colour;
        }
    }
    return picture;
}

cv::Mat bordersPicture(const cv::Mat& borders_map, const cv::Mat& segments) {
    cv::Mat picture = cv::Mat::zeros(borders_map.size(), CV_8UC3);
    if (!segments.empty()) picture = segmentsPicture(segments, -1) * 0.3;
    int index = 0;
    for (const int id : distinctValues(borders_map)) {
        if (id == 0) continue;
        const cv::Vec3b colour = colourOfIndex(index++, 255);
        for (const cv::Point& pixel : pixelsOf(borders_map, id)) {
            picture.at<cv::Vec3b>(pixel) = colour;
        }
    }
    return picture;
}

cv::Mat graphPicture(const RegionGraph& graph, const cv::Size& size, const cv::Mat& background) {
    cv::Mat picture = cv::Mat::zeros(size, CV_8UC3);
    if (!background.empty()) {
        cv::Mat resized;
        cv::resize(segmentsPicture(background, -1), resized, size, 0, 0, cv::INTER_LINEAR);
        picture = resized * 0.5;
    }
    for (const auto& [edge, data] : graph.edges) {
        cv::line(picture, clampInto(size, graph.nodes.at(edge.first).position),
                 clampInto(size, graph.nodes.at(edge.second).position), cv::Scalar(0, 255, 255),
                 clamp(static_cast<int>(2.0 * data.length), 1, 5), 8);
    }
    for (const auto& [label, data] : graph.nodes) drawNode(picture, label, data);
    return picture;
}

}  // namespace vorund::reference

void vorund::PrintTo(const Edge& edge, std::ostream* stream) {
    *stream << "{" << edge.first << ", " << edge.second << "}";
}
