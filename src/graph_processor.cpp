#include "vorund/graph_processor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "internal/require.h"

namespace vorund::GraphProcessor {
namespace {

using internal::require;

constexpr double kMetresPerPixel = 0.05;
constexpr int kByteValues = 256;

/// Steps to the eight neighbours; the first four are the 4-neighbours.
constexpr std::array<std::array<int, 2>, 8> kNeighbourSteps{
    {{-1, 0}, {0, -1}, {0, 1}, {1, 0}, {-1, -1}, {-1, 1}, {1, -1}, {1, 1}}};

/// The pixel at row, col of an 8-bit image, 0 outside.
int valueAt(const cv::Mat& map, int row, int col) {
    const bool inside = row >= 0 && row < map.rows && col >= 0 && col < map.cols;
    return inside ? map.at<std::uint8_t>(row, col) : 0;
}

/// The distinct rooms around a pixel of an 8-bit image: values that are neither 0 nor the pixel's.
std::set<int> roomsAround(const cv::Mat& map, int row, int col) {
    const int centre = map.at<std::uint8_t>(row, col);
    std::set<int> rooms;
    for (const auto& [down, right] : kNeighbourSteps) {
        const int value = valueAt(map, row + down, col + right);
        if (value != 0 && value != centre) rooms.insert(value);
    }
    return rooms;
}

int countNonZeroBeside(const cv::Mat& map, int row, int col) {
    int count = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto [down, right] = kNeighbourSteps[i];
        if (valueAt(map, row + down, col + right) != 0) ++count;
    }
    return count;
}

void requireByteMap(const cv::Mat& map, const char* empty_message, const char* type_message) {
    require(!map.empty(), empty_message);
    require(map.type() == CV_8UC1, type_message);
}

/// Sums over the pixels of one label, in 64 bits: the x sum of a hall of 4000 x 4000 is 3.2e10.
struct PixelSums {
    std::int64_t count = 0;
    std::int64_t x = 0;
    std::int64_t y = 0;

    cv::Point centroid() const {
        const auto n = static_cast<double>(count);
        // Not cvRound, which rounds halves to even: a centroid at x = 0.5 must land on 1.
        return {static_cast<int>(std::round(static_cast<double>(x) / n)),
                static_cast<int>(std::round(static_cast<double>(y) / n))};
    }
};

/// The sums of all labels in one pass, run by run.
template <class T>
std::map<int, PixelSums> sumLabels(const cv::Mat& segments) {
    std::map<int, PixelSums> sums;
    for (int row = 0; row < segments.rows; ++row) {
        const T* const labels = segments.ptr<T>(row);
        for (int begin = 0, end = 0; begin < segments.cols; begin = end) {
            while (end < segments.cols && labels[end] == labels[begin]) ++end;
            const std::int64_t count = end - begin;
            PixelSums& sum = sums[labels[begin]];
            sum.count += count;
            sum.x += count * (begin + end - 1) / 2;
            sum.y += count * row;
        }
    }
    return sums;
}

std::map<int, PixelSums> sumSegments(const cv::Mat& segments) {
    if (segments.type() == CV_32SC1) return sumLabels<std::int32_t>(segments);
    if (segments.type() == CV_8UC1) return sumLabels<std::uint8_t>(segments);
    throw std::runtime_error("Unsupported segments mat type: " + std::to_string(segments.type()));
}

}  // namespace

cv::Mat extractCellAndPad(const cv::Mat& map, const cv::Point& point) {
    require(!map.empty(), "extractCellAndPad: Input map is empty.");
    const int left = std::max(point.x - 1, 0);
    const int right = std::min(point.x + 1, map.cols - 1);
    const int top = std::max(point.y - 1, 0);
    const int bottom = std::min(point.y + 1, map.rows - 1);
    const cv::Mat part = map(cv::Rect(cv::Point(left, top), cv::Point(right + 1, bottom + 1)));
    cv::Mat cell;
    // Isolated: the rest of the map is not taken for the padding.
    cv::copyMakeBorder(part, cell, point.y == 0 ? 1 : 0, point.y == map.rows - 1 ? 1 : 0,
                       point.x == 0 ? 1 : 0, point.x == map.cols - 1 ? 1 : 0,
                       cv::BORDER_CONSTANT | cv::BORDER_ISOLATED, cv::Scalar(0));
    return cell;
}

template <class T>
std::set<int> allCellNeighborsImpl(const cv::Mat& cell, int connectivity) {
    const T centre = cell.at<T>(1, 1);
    std::set<int> neighbours;
    for (std::size_t i = 0; i < static_cast<std::size_t>(connectivity); ++i) {
        const auto [down, right] = kNeighbourSteps[i];
        const T value = cell.at<T>(1 + down, 1 + right);
        if (value != 0 && value != centre) neighbours.insert(static_cast<int>(value));
    }
    return neighbours;
}

template VORUND_EXPORT std::set<int> allCellNeighborsImpl<int>(const cv::Mat&, int);
template VORUND_EXPORT std::set<int> allCellNeighborsImpl<short>(const cv::Mat&, int);
template VORUND_EXPORT std::set<int> allCellNeighborsImpl<unsigned short>(const cv::Mat&, int);

std::set<int> allCellNeighbors(const cv::Mat& cell, int connectivity) {
    require(cell.rows == 3 && cell.cols == 3, "allCellNeighbors: Input cell must be 3x3.");
    require(connectivity == 4 || connectivity == 8,
            "allCellNeighbors: Connectivity must be 4 or 8.");
    switch (cell.type()) {
        case CV_8UC1:
            return allCellNeighborsImpl<unsigned char>(cell, connectivity);
        case CV_8SC1:
            return allCellNeighborsImpl<signed char>(cell, connectivity);
        case CV_16UC1:
            return allCellNeighborsImpl<unsigned short>(cell, connectivity);
        case CV_16SC1:
            return allCellNeighborsImpl<short>(cell, connectivity);
        case CV_32SC1:
            return allCellNeighborsImpl<int>(cell, connectivity);
        default:
            throw std::runtime_error("allCellNeighbors: Unsupported cell data type.");
    }
}

cv::Mat excludeEndPoints(const cv::Mat& map, bool flag) {
    require(!map.empty() && map.type() == CV_8UC1,
            "excludeEndPoints: Input map must be a non-empty CV_8U image.");
    cv::Mat result = map.clone();
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            if (map.at<std::uint8_t>(row, col) == 0) continue;
            const bool is_end = countNonZeroBeside(map, row, col) == 1;
            if (is_end != flag) result.at<std::uint8_t>(row, col) = 0;
        }
    }
    return result;
}

cv::Mat extractRegionBorders(const cv::Mat& map, int u, int v) {
    requireByteMap(map, "extractRegionBorders: Input map is empty.",
                   "extractRegionBorders: Input map must be of type CV_8UC1.");
    cv::Mat borders = cv::Mat::zeros(map.size(), CV_8UC1);
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            if (map.at<std::uint8_t>(row, col) != v) continue;
            if (roomsAround(map, row, col).count(u) > 0) borders.at<std::uint8_t>(row, col) = 255;
        }
    }
    return borders;
}

CommonBordersResult extractCommonBorders(const cv::Mat& map, int border_value) {
    requireByteMap(map, "extractCommonBorders: Input map is empty.",
                   "extractCommonBorders: Input map must be of type CV_8UC1.");
    CommonBordersResult result{cv::Mat::zeros(map.size(), CV_8UC1), {}};
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            if (map.at<std::uint8_t>(row, col) != border_value) continue;
            const std::set<int> rooms = roomsAround(map, row, col);
            if (rooms.size() != 2) continue;  // A wall with one room beside it, or a junction.
            const Edge edge(*rooms.begin(), *rooms.rbegin());
            const int next_id = static_cast<int>(result.border_ids.size()) + 1;
            const int id = result.border_ids.emplace(edge, next_id).first->second;
            result.borders_map.at<std::uint8_t>(row, col) = static_cast<std::uint8_t>(id);
        }
    }
    return result;
}

double getArea(const cv::Mat& segments, int label, double resolution) {
    if (segments.empty()) return 0.0;
    return cv::countNonZero(segments == static_cast<double>(label)) * resolution * resolution;
}

double getLength(const cv::Mat& borders_map, int border_id, double resolution) {
    if (borders_map.empty()) return 0.0;
    return cv::countNonZero(borders_map == static_cast<double>(border_id)) * resolution;
}

cv::Point getPosition(const cv::Mat& segments, int label) {
    PixelSums sum;
    if (!segments.empty()) {
        const cv::Mat mask = segments == static_cast<double>(label);
        sum = sumLabels<std::uint8_t>(mask)[255];
    }
    return sum.count == 0 ? cv::Point(-1, -1) : sum.centroid();
}

Graph createGraph(const cv::Mat& segments, const cv::Mat& borders_map, const BorderIds& border_ids,
                  int border_value) {
    Graph graph;
    if (segments.empty()) return graph;
    for (const auto& [label, sum] : sumSegments(segments)) {
        if (label == 0 || label == border_value) continue;
        const double area = static_cast<double>(sum.count) * kMetresPerPixel * kMetresPerPixel;
        graph.addNode(label, {area, sum.centroid()});
    }
    require(borders_map.empty() || borders_map.type() == CV_8UC1,
            "createGraph: The borders map must be of type CV_8UC1.");
    std::map<int, PixelSums> borders = sumLabels<std::uint8_t>(borders_map);
    for (const auto& [edge, id] : border_ids) {
        if (graph.nodes().count(edge.first) == 0 || graph.nodes().count(edge.second) == 0) continue;
        const auto pixels = static_cast<double>(borders[id].count);
        graph.addEdge(edge.first, edge.second, {pixels * kMetresPerPixel});
    }
    return graph;
}

GraphRepresentation findGraphRepresentation(const cv::Mat& segments, int border_value) {
    CommonBordersResult borders = extractCommonBorders(segments, border_value);
    Graph graph = createGraph(segments, borders.borders_map, borders.border_ids, border_value);
    return {std::move(borders.border_ids), borders.borders_map, std::move(graph)};
}

}  // namespace vorund::GraphProcessor
