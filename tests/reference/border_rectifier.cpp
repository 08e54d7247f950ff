#include "reference/border_rectifier.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <sstream>
#include <vector>

namespace vorund::reference {
namespace {

using GraphProcessor::OptimalLine;

struct Cut {
    cv::Point2f start;
    cv::Point2f end;
    float length;
};

/// The outcome for one border.
struct Search {
    std::vector<cv::Point> pixels;
    cv::Point2f center;
    std::vector<OptimalLine> kept;  ///< By ascending angle.
    std::optional<OptimalLine> best;
};

cv::Point rounded(const cv::Point2f& point) {
    return cv::Point(static_cast<int>(std::round(point.x)), static_cast<int>(std::round(point.y)));
}

bool isInside(const cv::Mat& image, const cv::Point& pixel) {
    return pixel.x >= 0 && pixel.y >= 0 && pixel.x < image.cols && pixel.y < image.rows;
}

int largestValue(const cv::Mat& image) {
    double largest = 0.0;
    cv::minMaxLoc(image, nullptr, &largest);
    return static_cast<int>(largest);
}

bool isRoomOrLine(const cv::Mat& segments, const cv::Point& pixel, const Edge& rooms) {
    const int value = segments.at<std::uint8_t>(pixel);
    return value != 0 &&
           (value == rooms.first || value == rooms.second || value == largestValue(segments));
}

bool isEnd(const cv::Mat& segments, const cv::Point2f& point, const Edge& rooms) {
    const cv::Point pixel = rounded(point);
    if (!isInside(segments, pixel)) return false;
    return segments.at<std::uint8_t>(pixel) == 0 || isRoomOrLine(segments, pixel, rooms);
}

cv::Point2f walk(const cv::Mat& segments, const cv::Point2f& start, const cv::Point2f& direction,
                 const Edge& rooms) {
    const auto norm = static_cast<float>(cv::norm(direction));
    if (norm < 1e-6F) return start;
    const cv::Point2f step(direction.x / norm, direction.y / norm);
    cv::Point2f last = start;
    for (int i = 0; i < 200; ++i) {
        const cv::Point2f next = last + step;
        const cv::Point pixel = rounded(next);
        if (!isInside(segments, pixel) || !isRoomOrLine(segments, pixel, rooms)) break;
        last = next;
    }
    return last;
}

Cut cutAt(const cv::Mat& segments, const cv::Point2f& center, int angle, const Edge& rooms) {
    const double radians = static_cast<double>(angle) * CV_PI / 180.0;
    const cv::Point2f direction(static_cast<float>(std::cos(radians)),
                                static_cast<float>(std::sin(radians)));
    const cv::Point2f p1 = walk(segments, center, direction, rooms);
    const cv::Point2f p2 = walk(segments, center, -direction, rooms);
    const bool valid = isEnd(segments, p1, rooms) && isEnd(segments, p2, rooms);
    return {p1, p2, valid ? static_cast<float>(cv::norm(p1 - p2)) : 0.0F};
}

std::vector<cv::Point> pixelsOf(const cv::Mat& borders_map, int id) {
    std::vector<cv::Point> pixels;
    for (int y = 0; y < borders_map.rows; ++y) {
        for (int x = 0; x < borders_map.cols; ++x) {
            if (borders_map.at<std::uint8_t>(y, x) == id) pixels.emplace_back(x, y);
        }
    }
    return pixels;
}

cv::Point2f mean(const std::vector<cv::Point>& pixels) {
    cv::Point2f sum(0.0F, 0.0F);
    for (const cv::Point& pixel : pixels) {
        sum += cv::Point2f(static_cast<float>(pixel.x), static_cast<float>(pixel.y));
    }
    const auto count = static_cast<float>(pixels.size());
    return cv::Point2f(sum.x / count, sum.y / count);
}

std::map<int, Edge> regionsById(const BorderIds& border_ids) {
    std::map<int, Edge> regions;
    for (const auto& [edge, id] : border_ids) {
        regions.erase(id);
        regions.emplace(id, edge);
    }
    return regions;
}

Search searchCut(const cv::Mat& segments, const cv::Mat& borders_map, int id, const Edge& rooms) {
    Search search;
    search.pixels = pixelsOf(borders_map, id);
    if (search.pixels.size() < 3) return search;
    search.center = mean(search.pixels);
    for (int angle = 0; angle < 180; angle += 10) {
        const Cut cut = cutAt(segments, search.center, angle, rooms);
        if (cut.length < 5.0F) continue;
        const float weight = angle == 0 || angle == 90 ? 1.5F : 1.0F;
        search.kept.push_back({search.center, cut.start, cut.end, static_cast<float>(angle),
                               cut.length, weight, cut.length / weight});
    }
    for (const OptimalLine& line : search.kept) {
        if (!search.best || line.score < search.best->score) search.best = line;
    }
    return search;
}

void reportSearch(const Search& search, std::ostream& out) {
    if (search.pixels.size() < 3) {
        out << "  跳过：边界像素点不足(" << search.pixels.size() << ")\n";
        return;
    }
    out << "  中心点: (" << search.center.x << ", " << search.center.y << ")\n"
        << "  搜索最优角度...\n";
    if (!search.best) {
        out << "  ✗ 未找到有效的重整方案\n";
        return;
    }
    out << "  ✓ 最优角度: " << search.best->angle << "°\n"
        << "    有效长度: " << search.best->effective_length << " 像素\n"
        << "    方向权重: " << search.best->direction_weight << "\n"
        << "    总得分: " << search.best->score << "\n"
        << "  详细得分信息（每10度）:\n";
    for (const OptimalLine& line : search.kept) {
        out << "    角度 " << line.angle << "°: 原长=" << line.effective_length
            << ", 惩罚=" << line.direction_weight << ", 调整长度=" << line.score << "\n";
    }
}

void reportStatistics(const std::map<int, OptimalLine>& lines, std::ostream& out) {
    out << "\n优化边界重整统计:\n";
    float lengths = 0.0F;
    float weights = 0.0F;
    for (const auto& [id, line] : lines) {
        out << "边界 " << id << ": 角度 " << line.angle << ", 长度 " << line.effective_length
            << ", 权重 " << line.direction_weight << ", 得分 " << line.score << "\n";
        lengths += line.effective_length;
        weights += line.direction_weight;
    }
    // Both weights that there are belong to the first category.
    out << "\n方向分布:\n"
        << "水平/垂直对齐: " << lines.size() << " 条\n"
        << "接近水平/垂直: 0 条\n"
        << "其他角度: 0 条\n";
    const float count = lines.empty() ? 1.0F : static_cast<float>(lines.size());
    out << "\n平均统计:\n"
        << "  平均有效长度: " << lengths / count << "\n"
        << "  平均方向权重: " << weights / count << "\n"
        << "优化边界重整处理完成！\n";
}

}  // namespace

std::map<int, OptimalLine> optimalLines(const cv::Mat& segments, const cv::Mat& borders_map,
                                        const BorderIds& border_ids) {
    std::map<int, OptimalLine> lines;
    for (const auto& [id, rooms] : regionsById(border_ids)) {
        const Search search = searchCut(segments, borders_map, id, rooms);
        if (search.best) lines[id] = *search.best;
    }
    return lines;
}

std::string rectificationReport(const cv::Mat& segments, const cv::Mat& borders_map,
                                const BorderIds& border_ids) {
    std::ostringstream out;
    out << "开始优化边界重整处理...\n\n=== 开始优化边界重整分析 ===\n";
    std::map<int, OptimalLine> lines;
    for (const auto& [id, rooms] : regionsById(border_ids)) {
        out << "\n处理边界 " << id << "\n";
        const Search search = searchCut(segments, borders_map, id, rooms);
        reportSearch(search, out);
        if (search.best) lines[id] = *search.best;
    }
    out << "成功重整 " << lines.size() << " 条边界\n\n=== 优化边界重整完成 ===\n";
    reportStatistics(lines, out);
    return out.str();
}

}  // namespace vorund::reference
