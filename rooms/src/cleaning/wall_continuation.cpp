#include "cleaning/wall_continuation.h"

#include <algorithm>
#include <cmath>

#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

constexpr double kWallReach = 4.0;  // [m]

/// Blobs have no axis to speak of.
constexpr double kLeastElongation = 2.0;

/// Of a row of pixels, as wide as one: 1/12 [pixels^2].
constexpr double kSpreadOfOneRow = 1.0 / 12.0;

/// A short part tells its direction only about so well. [degrees]
constexpr int kDegreesOff = 6;

constexpr double kRadians = 3.14159265358979323846 / 180.0;

bool isWallNear(const cv::Mat& walls, double x, double y, const cv::Point2d& across) {
    for (const int side : {0, -1, 1}) {
        const auto col = static_cast<int>(std::lround(x + side * across.x));
        const auto row = static_cast<int>(std::lround(y + side * across.y));
        const bool is_inside = col >= 0 && col < walls.cols && row >= 0 && row < walls.rows;
        if (is_inside && walls.ptr<std::uint8_t>(row)[col] != 0) return true;
    }
    return false;
}

int countWallAlong(const cv::Mat& walls, const cv::Point2d& centre, double angle, int reach) {
    const cv::Point2d along(std::cos(angle), std::sin(angle));
    const cv::Point2d across(-along.y, along.x);
    int count = 0;
    for (int step = -reach; step <= reach; ++step) {
        const bool is_wall =
            isWallNear(walls, centre.x + step * along.x, centre.y + step * along.y, across);
        count += is_wall ? 1 : 0;
    }
    return count;
}

}  // namespace

void PartShape::add(int row, const internal::PixelRun& run) {
    for (std::int64_t col = run.begin; col < run.end; ++col) {
        ++count_;
        x_ += col;
        y_ += row;
        xx_ += col * col;
        xy_ += col * row;
        yy_ += std::int64_t{row} * row;
    }
}

PartShape::Spread PartShape::spread() const {
    const auto mean = [this](std::int64_t sum) {
        return static_cast<double>(sum) / static_cast<double>(count_);
    };
    const cv::Point2d middle = centre();
    return {mean(xx_) - middle.x * middle.x, mean(xy_) - middle.x * middle.y,
            mean(yy_) - middle.y * middle.y};
}

double PartShape::elongation() const {
    const Spread of = spread();
    const double half = (of.xx + of.yy) / 2.0;
    const double root = std::sqrt(std::max(0.0, half * half - (of.xx * of.yy - of.xy * of.xy)));
    return std::sqrt((half + root) / std::max(half - root, kSpreadOfOneRow));
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
    for (int degrees = -kDegreesOff; degrees <= kDegreesOff; ++degrees) {
        const double angle = part.angle() + degrees * kRadians;
        if (countWallAlong(walls, part.centre(), angle, reach) >= least) return true;
    }
    return false;
}

}  // namespace vorund::rooms
