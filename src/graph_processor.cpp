#include "vorund/graph_processor.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "internal/pixel_sums.h"
#include "internal/require.h"

namespace vorund::GraphProcessor {
namespace {

using internal::ByteSums;
using internal::PixelSums;
using internal::require;

constexpr double kMetresPerPixel = 0.05;

cv::Point centroid(const PixelSums& sum) {
    const cv::Point2d mean = sum.mean();
    // Not cvRound, which rounds halves to even: a centroid at x = 0.5 must land on 1.
    return {static_cast<int>(std::round(mean.x)), static_cast<int>(std::round(mean.y))};
}

std::map<int, PixelSums> sumSegments(const cv::Mat& segments) {
    std::map<int, PixelSums> sums;
    if (segments.type() == CV_32SC1) {
        internal::addLabels<std::int32_t>(segments, sums);
        return sums;
    }
    if (segments.type() != CV_8UC1) {
        throw std::runtime_error("Unsupported segments mat type: " +
                                 std::to_string(segments.type()));
    }
    const ByteSums of_bytes(segments);
    for (int label = 0; label < ByteSums::kValues; ++label) {
        const PixelSums sum = of_bytes.of(label);
        if (sum.count > 0) sums.emplace(label, sum);
    }
    return sums;
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
        sum = ByteSums(mask).of(255);
    }
    return sum.count == 0 ? cv::Point(-1, -1) : centroid(sum);
}

Graph createGraph(const cv::Mat& segments, const cv::Mat& borders_map, const BorderIds& border_ids,
                  int border_value) {
    Graph graph;
    if (segments.empty()) return graph;
    for (const auto& [label, sum] : sumSegments(segments)) {
        if (label == 0 || label == border_value) continue;
        const double area = static_cast<double>(sum.count) * kMetresPerPixel * kMetresPerPixel;
        graph.addNode(label, {area, centroid(sum)});
    }
    require(borders_map.empty() || borders_map.type() == CV_8UC1,
            "createGraph: The borders map must be of type CV_8UC1.");
    const ByteSums borders(borders_map);
    for (const auto& [edge, id] : border_ids) {
        if (graph.nodes().count(edge.first) == 0 || graph.nodes().count(edge.second) == 0) continue;
        const auto pixels = static_cast<double>(borders.of(id).count);
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
