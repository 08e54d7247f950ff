#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "internal/plain_output.h"
#include "internal/require.h"
#include "internal/text.h"
#include "vorund/graph_processor.h"

namespace vorund::GraphProcessor {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kLargestByte = 255;
constexpr int kMostSteps = 200;
constexpr int kAngleStep = 10;             // [degrees]
constexpr std::size_t kFewestPixels = 3;   // Of a border that is cut.
constexpr float kShortestCut = 5.0F;       // [pixels]
constexpr float kAlignedWeight = 1.5F;     // Horizontal and vertical cuts count as shorter.
constexpr float kAngleTolerance = 0.001F;  // [degrees]

/// Directions by weight; every weight that occurs is at least 1, so all are aligned.
constexpr float kLeastAlignedWeight = 0.9F;
constexpr float kLeastNearlyAlignedWeight = 0.7F;

/// In double precision: the single-precision functions differ between machines.
cv::Point2f directionOf(float angle) {
    const double radians = static_cast<double>(angle) * kPi / 180.0;
    return {static_cast<float>(std::cos(radians)), static_cast<float>(std::sin(radians))};
}

/// One angle that was tried, as it is printed.
struct Candidate {
    float angle;
    float length;
    float weight;
    float score;
};

void printCandidates(std::ostream& out, const std::vector<Candidate>& candidates) {
    out << "  详细得分信息（每10度）:\n";
    for (const Candidate& candidate : candidates) {
        out << "    角度 " << candidate.angle << "°: 原长=" << candidate.length
            << ", 惩罚=" << candidate.weight << ", 调整长度=" << candidate.score << '\n';
    }
}

void printBest(std::ostream& out, const OptimalLine& line) {
    out << "  ✓ 最优角度: " << line.angle << "°\n"
        << "    有效长度: " << line.effective_length << " 像素\n"
        << "    方向权重: " << line.direction_weight << '\n'
        << "    总得分: " << line.score << '\n';
}

cv::Scalar colourOf(const OptimalLine& line) {
    if (line.direction_weight >= kLeastAlignedWeight) return {0, 255, 0};
    if (line.direction_weight >= kLeastNearlyAlignedWeight) return {0, 255, 255};
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

void printStatistics(std::ostream& out, const std::map<int, OptimalLine>& lines) {
    out << "\n优化边界重整统计:\n";
    int aligned = 0;
    int nearly_aligned = 0;
    int other = 0;
    float length = 0.0F;
    float weight = 0.0F;
    for (const auto& [id, line] : lines) {
        out << "边界 " << id << ": 角度 " << line.angle << ", 长度 " << line.effective_length
            << ", 权重 " << line.direction_weight << ", 得分 " << line.score << '\n';
        if (line.direction_weight >= kLeastAlignedWeight) {
            ++aligned;
        } else if (line.direction_weight >= kLeastNearlyAlignedWeight) {
            ++nearly_aligned;
        } else {
            ++other;
        }
        length += line.effective_length;
        weight += line.direction_weight;
    }
    const float count = lines.empty() ? 1.0F : static_cast<float>(lines.size());
    out << "\n方向分布:\n"
        << "水平/垂直对齐: " << aligned << " 条\n"
        << "接近水平/垂直: " << nearly_aligned << " 条\n"
        << "其他角度: " << other << " 条\n"
        << "\n平均统计:\n"
        << "  平均有效长度: " << length / count << '\n'
        << "  平均方向权重: " << weight / count << '\n';
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
    // Called for every pixel of every walk. While the pixel where the largest possible value was
    // last seen still holds it, it is the maximum.
    if (inside(last_line_pixel_) && labelAt(last_line_pixel_) == kLargestByte) return kLargestByte;
    double largest = 0.0;
    cv::minMaxLoc(segments_, nullptr, &largest, nullptr, &last_line_pixel_);
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
    const float x = std::round(point.x);
    const float y = std::round(point.y);
    // Before the conversion: what no int can hold, or is no number, is outside.
    const bool in_image = x >= 0.0F && x < static_cast<float>(segments_.cols) && y >= 0.0F &&
                          y < static_cast<float>(segments_.rows);
    if (in_image) pixel = cv::Point(static_cast<int>(x), static_cast<int>(y));
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
    const double length = cv::norm(direction);
    if (length < 1e-6) return start;
    const cv::Point2f step(static_cast<float>(static_cast<double>(direction.x) / length),
                           static_cast<float>(static_cast<double>(direction.y) / length));
    cv::Point2f reached = start;
    for (int i = 0; i < kMostSteps; ++i) {
        const cv::Point2f next = reached + step;
        cv::Point pixel;
        if (!roundInto(next, pixel)) break;
        const int label = labelAt(pixel);
        if (label != findBorderLabelInSegments() && label != a && label != b) break;
        reached = next;
    }
    return reached;
}

std::vector<cv::Point> OptimalBorderRectifier::extractBorderPixels(int border_id) const {
    std::vector<cv::Point> pixels;
    for (int row = 0; row < borders_map_.rows; ++row) {
        const std::uint8_t* const ids = borders_map_.ptr<std::uint8_t>(row);
        for (int col = 0; col < borders_map_.cols; ++col) {
            if (ids[col] == border_id) pixels.emplace_back(col, row);
        }
    }
    return pixels;
}

cv::Point2f OptimalBorderRectifier::getBorderCenterPoint(
    const std::vector<cv::Point>& pixels) const {
    if (pixels.empty()) return {-1.0F, -1.0F};
    std::int64_t x = 0;
    std::int64_t y = 0;
    for (const cv::Point& pixel : pixels) {
        x += pixel.x;
        y += pixel.y;
    }
    const auto count = static_cast<double>(pixels.size());
    return {static_cast<float>(static_cast<double>(x) / count),
            static_cast<float>(static_cast<double>(y) / count)};
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
    for (const auto& [id, rooms] : border_regions_) {
        internal::TextStream out;
        OptimalLine line;
        if (findOptimalLine(id, rooms, line, out)) lines.emplace(id, line);
        internal::printPlain(out.str());
    }
    internal::printPlain("成功重整 " + std::to_string(lines.size()) + " 条边界\n");
    internal::printPlain("\n=== 优化边界重整完成 ===\n");
    return lines;
}

bool OptimalBorderRectifier::findOptimalLine(int id, const Edge& rooms, OptimalLine& best,
                                             std::ostream& out) const {
    out << "\n处理边界 " << id << '\n';
    const std::vector<cv::Point> pixels = extractBorderPixels(id);
    if (pixels.size() < kFewestPixels) {
        out << "  跳过：边界像素点不足(" << pixels.size() << ")\n";
        return false;
    }
    const cv::Point2f center = getBorderCenterPoint(pixels);
    if (center.x < 0.0F) {
        out << "  跳过：无法计算中心点\n";
        return false;
    }
    out << "  中心点: (" << center.x << ", " << center.y << ")\n  搜索最优角度...\n";

    best.score = std::numeric_limits<float>::max();
    std::vector<Candidate> candidates;
    for (int degrees = 0; degrees < 180; degrees += kAngleStep) {
        const auto angle = static_cast<float>(degrees);
        const float length = calculateEffectiveLength(center, angle, id);
        if (length < kShortestCut) continue;
        const float weight = getDirectionWeight(angle);
        const float score = length / weight;
        candidates.push_back({angle, length, weight, score});
        // Strictly: among equal scores the smallest angle wins.
        if (score < best.score) {
            const auto [start, end] = cutAt(center, angle, rooms);
            best = {center, start, end, angle, length, weight, score};
        }
    }
    if (candidates.empty()) {
        out << "  ✗ 未找到有效的重整方案\n";
        return false;
    }
    printBest(out, best);
    printCandidates(out, candidates);
    return true;
}

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

std::pair<cv::Mat, std::map<int, OptimalLine>> processOptimalBorderRectification(
    const cv::Mat& borders_map, const BorderIds& border_ids, const cv::Mat& segments,
    const std::string& /*name*/) {
    internal::printPlain("开始优化边界重整处理...\n");
    OptimalBorderRectifier rectifier(segments, borders_map, border_ids);
    const std::map<int, OptimalLine> lines = rectifier.processOptimalRectification();
    const cv::Mat picture = rectifier.visualizeOptimalResults(lines);

    internal::TextStream out;
    printStatistics(out, lines);
    out << "优化边界重整处理完成！\n";
    internal::printPlain(out.str());
    return {picture, lines};
}

}  // namespace vorund::GraphProcessor
