#include "reference/clutter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <set>
#include <utility>
#include <vector>

namespace vorund::reference {
namespace {

constexpr double kResolution = 0.05;
constexpr double kMargin = 1e-9;
constexpr int kBlock = 10;      ///< 0.5 m. [pixels]
constexpr int kSpeck = 5;       ///< 0.25 m. [pixels]
constexpr int kReach = 80;      ///< 4 m. [pixels]
constexpr int kDoorway = 24;    ///< 1.2 m. [pixels]
constexpr int kDegreesOff = 6;  ///< Either way.

bool isInside(const cv::Mat& image, const cv::Point& pixel) {
    return cv::Rect({0, 0}, image.size()).contains(pixel);
}

/// The pixels of a mask's parts.
std::vector<std::vector<cv::Point>> partsOf(const cv::Mat& mask, bool diagonally) {
    cv::Mat open = mask.clone();
    std::vector<std::vector<cv::Point>> parts;
    for (int row = 0; row < open.rows; ++row) {
        for (int col = 0; col < open.cols; ++col) {
            if (open.at<std::uint8_t>(row, col) == 0) continue;
            std::vector<cv::Point> part{{col, row}};
            open.at<std::uint8_t>(row, col) = 0;
            for (std::size_t next = 0; next < part.size(); ++next) {
                for (int i = 0; i < 9; ++i) {
                    const cv::Point step(i % 3 - 1, i / 3 - 1);
                    if (!diagonally && step.x != 0 && step.y != 0) continue;
                    const cv::Point beside = part[next] + step;
                    if (!isInside(open, beside) || open.at<std::uint8_t>(beside) == 0) continue;
                    open.at<std::uint8_t>(beside) = 0;
                    part.push_back(beside);
                }
            }
            parts.push_back(part);
        }
    }
    return parts;
}

void paint(cv::Mat& values, const std::vector<cv::Point>& part, float value) {
    for (const cv::Point& pixel : part) values.at<float>(pixel) = value;
}

bool isAtMost(int pixels, double side) {
    return pixels * kResolution <= side + kMargin;
}

bool holdsSquare(const std::vector<cv::Point>& part, int side) {
    std::set<std::pair<int, int>> pixels;
    for (const cv::Point& pixel : part) pixels.emplace(pixel.x, pixel.y);
    return std::any_of(part.begin(), part.end(), [&](const cv::Point& corner) {
        for (int i = 0; i < side * side; ++i) {
            if (pixels.count({corner.x + i % side, corner.y + i / side}) == 0) return false;
        }
        return true;
    });
}

struct Axis {
    cv::Point2d centre;
    double angle;
    double elongation;
    double length;
    double thickness;
};

Axis axisOf(const std::vector<cv::Point>& part) {
    cv::Point2d sum;
    for (const cv::Point& pixel : part) sum += cv::Point2d(pixel);
    const auto count = static_cast<double>(part.size());
    const cv::Point2d centre = sum / count;
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (const cv::Point& pixel : part) {
        const cv::Point2d off = cv::Point2d(pixel) - centre;
        xx += off.x * off.x / count;
        xy += off.x * off.y / count;
        yy += off.y * off.y / count;
    }
    const double angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
    const double mean = (xx + yy) / 2.0;
    const double difference = std::hypot((xx - yy) / 2.0, xy);
    const double across = std::max(mean - difference, 1.0 / 12.0);
    const double along = std::max(mean + difference, 1.0 / 12.0);
    return {centre, angle, std::sqrt(along / across), std::sqrt(12.0 * along),
            std::sqrt(12.0 * across)};
}

/// Whether the line has wall there, or beside it.
bool isWallAt(const cv::Mat& walls, const cv::Point2d& centre, double angle, double step) {
    const cv::Point2d along(std::cos(angle), std::sin(angle));
    for (int side = -1; side <= 1; ++side) {
        const cv::Point2d at = centre + step * along + side * cv::Point2d(-along.y, along.x);
        const cv::Point pixel(static_cast<int>(std::lround(at.x)),
                              static_cast<int>(std::lround(at.y)));
        if (isInside(walls, pixel) && walls.at<std::uint8_t>(pixel) != 0) return true;
    }
    return false;
}

/// How much of the line is wall.
double wallAlong(const cv::Mat& walls, const cv::Point2d& centre, double angle) {
    int hits = 0;
    for (int step = -kReach; step <= kReach; ++step) {
        hits += isWallAt(walls, centre, angle, step) ? 1 : 0;
    }
    return static_cast<double>(hits) / (2 * kReach + 1);
}

/// Whether there is wall again behind a gap, at most 1.2 m beyond the end.
bool hasWallBeyond(const cv::Mat& walls, const Axis& axis, double angle, int direction) {
    bool left = false;
    for (double step = 0.3 * axis.length; step <= axis.length / 2.0 + kDoorway; step += 1.0) {
        const bool is_wall = isWallAt(walls, axis.centre, angle, direction * step);
        if (left && is_wall) return true;
        if (!is_wall) left = true;
    }
    return false;
}

bool continuesWall(const cv::Mat& walls, const std::vector<cv::Point>& part, double least_wall) {
    const Axis axis = axisOf(part);
    if (axis.elongation < 2.0) return false;
    for (int degrees = -kDegreesOff; degrees <= kDegreesOff; ++degrees) {
        const double angle = axis.angle + degrees * CV_PI / 180.0;
        if (wallAlong(walls, axis.centre, angle) >= least_wall - kMargin) return true;
        const bool is_board = axis.thickness * kResolution <= 0.3;
        if (is_board && hasWallBeyond(walls, axis, angle, 1) &&
            hasWallBeyond(walls, axis, angle, -1)) {
            return true;
        }
    }
    return false;
}

bool isClutter(const cv::Mat& walls, const std::vector<cv::Point>& part,
               const rooms::RoomsConfig& config) {
    const cv::Rect box = cv::boundingRect(part);
    if (box.size() == walls.size()) return false;
    const int side = std::max(box.width, box.height);
    const bool is_loose = isAtMost(side, config.loose_part) ||
                          (isAtMost(side, config.loose_block) && holdsSquare(part, kBlock));
    return is_loose && (side <= kSpeck || !continuesWall(walls, part, config.wall_line));
}

}  // namespace

cv::Mat withoutClutter(const cv::Mat& values, double threshold, const rooms::RoomsConfig& config) {
    cv::Mat cleaned = values.clone();
    const cv::Mat floor = values <= threshold;
    const auto floors = partsOf(floor, false);
    const auto isSmall = [&](const std::vector<cv::Point>& part) {
        const double area = static_cast<double>(part.size()) * kResolution * kResolution;
        return area < config.closed_floor - kMargin;
    };
    if (!std::all_of(floors.begin(), floors.end(), isSmall)) {
        for (const auto& part : floors) {
            if (isSmall(part)) paint(cleaned, part, 1.0F);
        }
    }
    const cv::Mat walls = cleaned > threshold;
    for (const auto& part : partsOf(walls, true)) {
        if (isClutter(walls, part, config)) paint(cleaned, part, 0.0F);
    }
    return cleaned;
}

}  // namespace vorund::reference
