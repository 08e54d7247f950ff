#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "internal/require.h"
#include "vorund/graph_processor.h"

namespace vorund::GraphProcessor {
namespace {

using internal::require;

constexpr float kGoldenAngle = 137.5F;  // [degrees] Keeps successive hues far apart.
constexpr int kRoomBrightness = 200;
constexpr int kBorderBrightness = 255;

/// The colour of the i-th item. Hues above 255 saturate, on the 0 to 180 scale of 8-bit images.
cv::Vec3b colourOf(int index, int brightness) {
    const float hue = static_cast<float>(index) * kGoldenAngle / 360.0F * 180.0F;
    const cv::Mat hsv(1, 1, CV_8UC3, cv::Scalar(static_cast<double>(hue), 255, brightness));
    cv::Mat bgr;
    cv::cvtColor(hsv, bgr, cv::COLOR_HSV2BGR);
    return bgr.at<cv::Vec3b>(0, 0);
}

int labelAt(const cv::Mat& segments, int row, int col) {
    return segments.type() == CV_32SC1 ? segments.at<std::int32_t>(row, col)
                                       : segments.at<std::uint8_t>(row, col);
}

std::set<int> labelsOf(const cv::Mat& segments) {
    std::set<int> labels;
    for (int row = 0; row < segments.rows; ++row) {
        for (int col = 0; col < segments.cols; ++col) labels.insert(labelAt(segments, row, col));
    }
    return labels;
}

std::map<int, cv::Vec3b> segmentColours(const cv::Mat& segments, int border_value) {
    std::map<int, cv::Vec3b> colours;
    int index = 0;
    for (const int label : labelsOf(segments)) {
        if (label == 0) {
            colours[label] = cv::Vec3b(255, 255, 255);
        } else if (label == border_value) {
            colours[label] = cv::Vec3b(0, 0, 0);
        } else {
            colours[label] = colourOf(index++, kRoomBrightness);
        }
    }
    return colours;
}

/// Truncated and brought into the range; what is no number is the least.
int sizeFrom(double value, int least, int most) {
    return value >= least ? static_cast<int>(std::min<double>(value, most)) : least;
}

cv::Point clampInto(const cv::Point& point, const cv::Size& size) {
    return {std::clamp(point.x, 0, std::max(size.width - 1, 0)),
            std::clamp(point.y, 0, std::max(size.height - 1, 0))};
}

void drawEdges(cv::Mat& picture, const Graph& graph) {
    for (const auto& [edge, data] : graph.edges()) {
        const cv::Point from = clampInto(graph.nodes().at(edge.first).position, picture.size());
        const cv::Point to = clampInto(graph.nodes().at(edge.second).position, picture.size());
        const int thickness = sizeFrom(2.0 * data.length, 1, 5);
        cv::line(picture, from, to, cv::Scalar(0, 255, 255), thickness, cv::LINE_8);
    }
}

void drawNode(cv::Mat& picture, int label, const NodeData& data) {
    const cv::Scalar white(255, 255, 255);
    const cv::Point centre = clampInto(data.position, picture.size());
    const int radius = sizeFrom(2.0 * std::sqrt(data.area), 3, 20);
    cv::circle(picture, centre, radius, cv::Scalar(0, 0, 255), cv::FILLED, cv::LINE_8);
    cv::circle(picture, centre, radius, white, 2, cv::LINE_8);

    const std::string text = std::to_string(label);
    int baseline = 0;
    const cv::Size size = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 0.5, 1, &baseline);
    cv::putText(picture, text, centre + cv::Point(-(size.width / 2), size.height / 2),
                cv::FONT_HERSHEY_SIMPLEX, 0.5, white, 1, cv::LINE_8);
}

}  // namespace

cv::Mat visualizeSegments(const cv::Mat& segments, int border_value) {
    require(!segments.empty() && (segments.type() == CV_8UC1 || segments.type() == CV_32SC1),
            "visualizeSegments: Input must be a non-empty CV_32S or CV_8UC1 image");
    if (border_value == -1) {
        double largest = 0.0;
        cv::minMaxLoc(segments, nullptr, &largest);
        border_value = static_cast<int>(largest);
    }
    const std::map<int, cv::Vec3b> colours = segmentColours(segments, border_value);
    cv::Mat picture(segments.size(), CV_8UC3);
    for (int row = 0; row < segments.rows; ++row) {
        for (int col = 0; col < segments.cols; ++col) {
            picture.at<cv::Vec3b>(row, col) = colours.at(labelAt(segments, row, col));
        }
    }
    return picture;
}

cv::Mat visualizeBorders(const cv::Mat& borders_map, const cv::Mat& segments) {
    require(!borders_map.empty() && borders_map.type() == CV_8UC1,
            "visualizeBorders: borders_map must be a non-empty CV_8UC1 image");
    cv::Mat picture = cv::Mat::zeros(borders_map.size(), CV_8UC3);
    if (!segments.empty()) picture = visualizeSegments(segments, -1) * 0.3;

    std::set<int> ids = labelsOf(borders_map);
    ids.erase(0);
    int index = 0;
    for (const int id : ids) {
        const cv::Vec3b colour = colourOf(index++, kBorderBrightness);
        picture.setTo(cv::Scalar(colour[0], colour[1], colour[2]), borders_map == id);
    }
    return picture;
}

cv::Mat visualizeGraph(const Graph& graph, const cv::Size& size, const cv::Mat& background) {
    cv::Mat picture = cv::Mat::zeros(size, CV_8UC3);
    if (!background.empty()) {
        cv::Mat resized;
        cv::resize(visualizeSegments(background, -1), resized, size, 0.0, 0.0, cv::INTER_LINEAR);
        picture = resized * 0.5;
    }
    drawEdges(picture, graph);
    for (const auto& [label, data] : graph.nodes()) drawNode(picture, label, data);
    return picture;
}

}  // namespace vorund::GraphProcessor
