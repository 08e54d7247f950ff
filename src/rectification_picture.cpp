#include <opencv2/imgproc.hpp>
#include <utility>

#include "internal/rectification_report.h"
#include "vorund/graph_processor.h"

namespace vorund::GraphProcessor {
namespace {

cv::Scalar colourOf(const OptimalLine& line) {
    if (line.direction_weight >= internal::kLeastAlignedWeight) return {0, 255, 0};
    if (line.direction_weight >= internal::kLeastNearlyAlignedWeight) return {0, 255, 255};
    return {0, 165, 255};
}

void drawLegend(cv::Mat& picture) {
    const std::pair<const char*, cv::Scalar> entries[] = {
        {"Red: Original borders", {0, 0, 255}},
        {"Green: H/V aligned (weight>=0.9)", {0, 255, 0}},
        {"Yellow: Near H/V (weight>=0.7)", {0, 255, 255}},
        {"Orange: Other angles", {0, 165, 255}},
        {"White dots: Center points", {255, 255, 255}}};
    int baseline = 20;
    for (const auto& [text, colour] : entries) {
        cv::putText(picture, text, cv::Point(10, baseline), cv::FONT_HERSHEY_SIMPLEX, 0.5, colour,
                    1, cv::LINE_8);
        baseline += 20;
    }
}

}  // namespace

cv::Mat OptimalBorderRectifier::visualizeOptimalResults(
    const std::map<int, OptimalLine>& lines) const {
    cv::Mat picture = visualizeSegments(segments_, -1);
    picture.setTo(cv::Scalar(0, 0, 255), borders_map_ != 0);
    for (const auto& [id, line] : lines) {
        cv::line(picture, line.start, line.end, colourOf(line), 2, cv::LINE_8);
    }
    for (const auto& [id, line] : lines) {
        cv::circle(picture, line.center, 2, cv::Scalar(255, 255, 255), cv::FILLED, cv::LINE_8);
    }
    drawLegend(picture);
    return picture;
}

}  // namespace vorund::GraphProcessor
