#include "vorund/graph_processor.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "internal/require.h"
#include "internal/runs.h"

namespace vorund::GraphProcessor {
namespace {

using internal::require;

constexpr double kMetresPerPixel = 0.05;
constexpr int kByteValues = 256;

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
/// @tparam Sums  `sums[label]` is the label's sum.
template <class T, class Sums>
void addLabels(const cv::Mat& segments, Sums& sums) {
    for (int row = 0; row < segments.rows; ++row) {
        internal::forEachRun(segments.ptr<T>(row), segments.cols, [&](int begin, int end, T label) {
            const std::int64_t count = end - begin;
            PixelSums& sum = sums[label];
            sum.count += count;
            sum.x += count * (begin + end - 1) / 2;
            sum.y += count * row;
        });
    }
}

/// By label; a value that does not occur has a count of 0.
using ByteSums = std::array<PixelSums, kByteValues>;

ByteSums sumBytes(const cv::Mat& image) {
    ByteSums sums{};
    addLabels<std::uint8_t>(image, sums);
    return sums;
}

std::map<int, PixelSums> sumSegments(const cv::Mat& segments) {
    std::map<int, PixelSums> sums;
    if (segments.type() == CV_32SC1) {
        addLabels<std::int32_t>(segments, sums);
        return sums;
    }
    if (segments.type() != CV_8UC1) {
        throw std::runtime_error("Unsupported segments mat type: " +
                                 std::to_string(segments.type()));
    }
    const ByteSums of_bytes = sumBytes(segments);
    for (std::size_t label = 0; label < of_bytes.size(); ++label) {
        if (of_bytes[label].count > 0) sums.emplace(static_cast<int>(label), of_bytes[label]);
    }
    return sums;
}

/// Pixels of the border with that id, which wider ids than bytes never have.
std::int64_t countOf(const ByteSums& borders, int id) {
    return id >= 0 && id < kByteValues ? borders[static_cast<std::size_t>(id)].count : 0;
}

}  // namespace

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
        sum = sumBytes(mask)[255];
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
    const ByteSums borders = sumBytes(borders_map);
    for (const auto& [edge, id] : border_ids) {
        if (graph.nodes().count(edge.first) == 0 || graph.nodes().count(edge.second) == 0) continue;
        const auto pixels = static_cast<double>(countOf(borders, id));
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
