#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "internal/pixel_sums.h"
#include "internal/plain_output.h"
#include "internal/rectification_report.h"
#include "internal/require.h"
#include "internal/runs.h"
#include "internal/short_number.h"
#include "internal/straight_cut.h"
#include "internal/text.h"
#include "vorund/graph_processor.h"

namespace vorund::GraphProcessor {
namespace {

using internal::directionOf;
using internal::kAlignedWeight;
using internal::kFewestPixels;
using internal::rounded;
using internal::roundsInto;
using Floor = internal::Floor<std::uint8_t>;

constexpr std::uint8_t kLargestByte = 255;
constexpr float kAngleTolerance = 0.001F;  // [degrees]

/// The mean of a border's pixels; a negative x if there are none.
cv::Point2f centerOf(const internal::PixelSums& sum) {
    if (sum.count == 0) return {-1.0F, -1.0F};
    const cv::Point2d mean = sum.mean();
    return {static_cast<float>(mean.x), static_cast<float>(mean.y)};
}

}  // namespace

OptimalBorderRectifier::OptimalBorderRectifier(const cv::Mat& segments, const cv::Mat& borders_map,
                                               const BorderIds& border_ids)
    : segments_(segments), borders_map_(borders_map), border_ids_(border_ids) {
    internal::require(segments.type() == CV_8UC1 && borders_map.type() == CV_8UC1 &&
                          segments.size() == borders_map.size(),
                      "OptimalBorderRectifier: Images must be CV_8UC1 of the same size.");
    for (const auto& [edge, id] : border_ids_) border_regions_.insert_or_assign(id, edge);
}

int OptimalBorderRectifier::findBorderLabelInSegments() const {
    // While the pixel where the largest possible value was last seen still holds it, it is the
    // maximum.
    if (inside(last_line_pixel_) && labelAt(last_line_pixel_) == kLargestByte) return kLargestByte;
    for (int row = 0; row < segments_.rows; ++row) {
        const int col =
            internal::findByte(segments_.ptr<std::uint8_t>(row), 0, segments_.cols, kLargestByte);
        if (col == segments_.cols) continue;
        last_line_pixel_ = cv::Point(col, row);
        return kLargestByte;
    }
    double largest = 0.0;
    cv::minMaxLoc(segments_, nullptr, &largest);
    return static_cast<int>(largest);
}

float OptimalBorderRectifier::getDirectionWeight(float angle) const {
    float turned = std::fmod(angle, 180.0F);
    if (turned < 0.0F) turned += 180.0F;
    for (const float aligned : {0.0F, 90.0F, 180.0F}) {
        if (std::abs(turned - aligned) <= kAngleTolerance) return kAlignedWeight;
    }
    return 1.0F;
}

bool OptimalBorderRectifier::inside(const cv::Point& pixel) const {
    return cv::Rect(cv::Point(0, 0), segments_.size()).contains(pixel);
}

int OptimalBorderRectifier::labelAt(const cv::Point& pixel) const {
    return segments_.at<std::uint8_t>(pixel);
}

bool OptimalBorderRectifier::roundInto(const cv::Point2f& point, cv::Point& pixel) const {
    const bool in_image =
        roundsInto(point.x, segments_.cols) && roundsInto(point.y, segments_.rows);
    if (in_image) pixel = cv::Point(rounded(point.x), rounded(point.y));
    return in_image;
}

bool OptimalBorderRectifier::isValidSegmentationPoint(const cv::Point2f& point, int a,
                                                      int b) const {
    cv::Point pixel;
    if (!roundInto(point, pixel)) return false;
    const int label = labelAt(pixel);
    return label == 0 || label == a || label == b || label == findBorderLabelInSegments();
}

bool OptimalBorderRectifier::isValidSegmentation(const cv::Point2f& p1, const cv::Point2f& p2,
                                                 int a, int b) const {
    return isValidSegmentationPoint(p1, a, b) && isValidSegmentationPoint(p2, a, b);
}

cv::Point2f OptimalBorderRectifier::extendToValidBoundary(const cv::Point2f& start,
                                                          const cv::Point2f& direction, int a,
                                                          int b, int /*max_steps*/) const {
    if (segments_.empty()) return start;
    return Floor(segments_, findBorderLabelInSegments(), Edge(a, b)).walk(start, direction);
}

std::vector<cv::Point> OptimalBorderRectifier::extractBorderPixels(int border_id) const {
    std::vector<cv::Point> pixels;
    if (border_id < 0 || border_id > kLargestByte) return pixels;
    for (int row = 0; row < borders_map_.rows; ++row) {
        internal::forEachByte(borders_map_.ptr<std::uint8_t>(row), borders_map_.cols,
                              static_cast<std::uint8_t>(border_id),
                              [&](int col) { pixels.emplace_back(col, row); });
    }
    return pixels;
}

cv::Point2f OptimalBorderRectifier::getBorderCenterPoint(
    const std::vector<cv::Point>& pixels) const {
    internal::PixelSums sum;
    for (const cv::Point& pixel : pixels) {
        ++sum.count;
        sum.x += pixel.x;
        sum.y += pixel.y;
    }
    return centerOf(sum);
}

float OptimalBorderRectifier::calculateEffectiveLength(const cv::Point2f& center, float angle,
                                                       int border_id) const {
    const auto found = border_regions_.find(border_id);
    if (found == border_regions_.end()) return 0.0F;
    const auto [start, end] = cutAt(center, angle, found->second);
    if (!isValidSegmentation(start, end, found->second.first, found->second.second)) return 0.0F;
    return static_cast<float>(cv::norm(start - end));
}

std::pair<cv::Point2f, cv::Point2f> OptimalBorderRectifier::cutAt(const cv::Point2f& center,
                                                                  float angle,
                                                                  const Edge& rooms) const {
    const cv::Point2f direction = directionOf(angle);
    return {extendToValidBoundary(center, direction, rooms.first, rooms.second),
            extendToValidBoundary(center, -direction, rooms.first, rooms.second)};
}

std::map<int, OptimalLine> OptimalBorderRectifier::processOptimalRectification() {
    std::map<int, OptimalLine> lines;
    internal::printPlain("\n=== 开始优化边界重整分析 ===\n");
    const internal::ByteSums borders(borders_map_);
    for (const auto& [id, rooms] : border_regions_) {
        internal::TextStream out;
        out << "\n处理边界 " << id << '\n';
        const internal::PixelSums pixels = borders.of(id);
        OptimalLine line{};
        line.center = centerOf(pixels);
        if (pixels.count < kFewestPixels) {
            out << "  跳过：边界像素点不足(" << pixels.count << ")\n";
        } else if (line.center.x < 0.0F) {
            out << "  跳过：无法计算中心点\n";
        } else if (findOptimalLine(id, rooms, line, out)) {
            lines.emplace(id, line);
        }
        internal::printPlain(out.str());
    }
    internal::printPlain("成功重整 " + std::to_string(lines.size()) + " 条边界\n");
    internal::printPlain("\n=== 优化边界重整完成 ===\n");
    return lines;
}

/// @param best  Has the centre already.
bool OptimalBorderRectifier::findOptimalLine(int /*id*/, const Edge& rooms, OptimalLine& best,
                                             std::ostream& out) const {
    const cv::Point2f center = best.center;
    out << "  中心点: (" << internal::ShortNumber{center.x} << ", "
        << internal::ShortNumber{center.y} << ")\n  搜索最优角度...\n";

    const Floor floor(segments_, findBorderLabelInSegments(), rooms);
    const std::vector<OptimalLine> tried = internal::straightCuts(floor, center);
    const std::optional<OptimalLine> shortest = internal::bestOf(tried);
    if (!shortest) {
        out << "  ✗ 未找到有效的重整方案\n";
        return false;
    }
    best = *shortest;
    internal::printCuts(out, best, tried);
    return true;
}

std::pair<cv::Mat, std::map<int, OptimalLine>> processOptimalBorderRectification(
    const cv::Mat& borders_map, const BorderIds& border_ids, const cv::Mat& segments,
    const std::string& /*name*/) {
    internal::printPlain("开始优化边界重整处理...\n");
    OptimalBorderRectifier rectifier(segments, borders_map, border_ids);
    std::map<int, OptimalLine> lines = rectifier.processOptimalRectification();
    const cv::Mat picture = rectifier.visualizeOptimalResults(lines);

    internal::TextStream out;
    internal::printStatistics(out, lines);
    out << "优化边界重整处理完成！\n";
    internal::printPlain(out.str());
    return {picture, std::move(lines)};
}

}  // namespace vorund::GraphProcessor
