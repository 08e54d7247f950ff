#include "cleaning/wall_continuation.h"

#include <algorithm>
#include <cmath>

#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

constexpr double kWallReach = 4.0;  // [m]

constexpr double kThickestPartition = 0.3;  // [m]
constexpr double kDoorwayWidth = 1.2;       // [m]
constexpr double kStraightPart = 0.6;

/// Blobs have no axis to speak of.
constexpr double kLeastElongation = 2.0;

/// Of a row of pixels, as wide as one: 1/12 [pixels^2].
constexpr double kSpreadOfOneRow = 1.0 / 12.0;

/// A short part tells its direction only about so well. [degrees]
constexpr int kDegreesOff = 6;

constexpr double kRadians = 3.14159265358979323846 / 180.0;

/// A straight line through a part.
class Line {
 public:
    Line(const cv::Point2d& centre, double angle)
        : centre_(centre), along_(std::cos(angle), std::sin(angle)) {}

    /// Whether there is wall at a point of the line, or a pixel beside it.
    bool meetsWall(const cv::Mat& walls, double step) const {
        const cv::Point2d across(-along_.y, along_.x);
        for (const int side : {0, -1, 1}) {
            const cv::Point2d point = centre_ + step * along_ + side * across;
            const auto col = static_cast<int>(std::lround(point.x));
            const auto row = static_cast<int>(std::lround(point.y));
            const bool is_inside = col >= 0 && col < walls.cols && row >= 0 && row < walls.rows;
            if (is_inside && walls.ptr<std::uint8_t>(row)[col] != 0) return true;
        }
        return false;
    }

 private:
    cv::Point2d centre_;
    cv::Point2d along_;
};

int countWallAlong(const cv::Mat& walls, const Line& line, int reach) {
    int count = 0;
    for (int step = -reach; step <= reach; ++step) count += line.meetsWall(walls, step) ? 1 : 0;
    return count;
}

bool meetsWallBeyond(const cv::Mat& walls, const Line& line, double half_length, int direction) {
    const double last = half_length + kDoorwayWidth / kWorkingResolution;
    bool is_beyond = false;
    // The line may leave a bent part before its end.
    for (double step = kStraightPart * half_length; step <= last; step += 1.0) {
        const bool is_wall = line.meetsWall(walls, direction * step);
        if (is_wall && is_beyond) return true;
        is_beyond = is_beyond || !is_wall;
    }
    return false;
}

bool liesBetweenDoorways(const cv::Mat& walls, const Line& line, double length) {
    return meetsWallBeyond(walls, line, length / 2.0, 1) &&
           meetsWallBeyond(walls, line, length / 2.0, -1);
}

/// The sum of the squares of 0, 1, ..., end - 1.
std::int64_t squaresBelow(std::int64_t end) {
    return (end - 1) * end * (2 * end - 1) / 6;
}

}  // namespace

void PartShape::add(int row, const internal::PixelRun& run) {
    const std::int64_t count = run.end - run.begin;
    const std::int64_t x = count * (run.begin + run.end - 1) / 2;
    count_ += count;
    x_ += x;
    y_ += count * row;
    xx_ += squaresBelow(run.end) - squaresBelow(run.begin);
    xy_ += x * row;
    yy_ += count * row * row;
}

PartShape::Spread PartShape::spread() const {
    const auto mean = [this](std::int64_t sum) {
        return static_cast<double>(sum) / static_cast<double>(count_);
    };
    const cv::Point2d middle = centre();
    return {mean(xx_) - middle.x * middle.x, mean(xy_) - middle.x * middle.y,
            mean(yy_) - middle.y * middle.y};
}

/// Of the pixels along the axis (1) or across it (-1).
double PartShape::variance(int sign) const {
    const Spread of = spread();
    const double half = (of.xx + of.yy) / 2.0;
    const double root = std::sqrt(std::max(0.0, half * half - (of.xx * of.yy - of.xy * of.xy)));
    return std::max(half + sign * root, kSpreadOfOneRow);
}

double PartShape::elongation() const {
    return std::sqrt(variance(1) / variance(-1));
}

double PartShape::length() const {
    return std::sqrt(12.0 * variance(1));
}

double PartShape::thickness() const {
    return std::sqrt(12.0 * variance(-1));
}

cv::Point2d PartShape::centre() const {
    return {static_cast<double>(x_) / static_cast<double>(count_),
            static_cast<double>(y_) / static_cast<double>(count_)};
}

double PartShape::angle() const {
    const Spread of = spread();
    return 0.5 * std::atan2(2.0 * of.xy, of.xx - of.yy);
}

bool continuesWall(const cv::Mat& walls, const PartShape& part, double least_wall) {
    if (part.elongation() < kLeastElongation) return false;
    const auto reach = static_cast<int>(std::lround(kWallReach / kWorkingResolution));
    const double least = least_wall * (2 * reach + 1);
    const bool is_thin = part.thickness() * kWorkingResolution <= kThickestPartition;
    for (int degrees = -kDegreesOff; degrees <= kDegreesOff; ++degrees) {
        const Line line(part.centre(), part.angle() + degrees * kRadians);
        if (countWallAlong(walls, line, reach) >= least) return true;
        if (is_thin && liesBetweenDoorways(walls, line, part.length())) return true;
    }
    return false;
}

}  // namespace vorund::rooms
