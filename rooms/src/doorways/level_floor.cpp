#include "doorways/level_floor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

namespace vorund::rooms {
namespace {

/// Half degrees to a right angle.
constexpr int kBins = 180;

/// Outlines of the floor become polygons that leave out what is smaller: ragged walls, and the
/// stair that the edge of a turned wall is. [pixels; 0.15 m]
constexpr double kTolerance = 3.0;

/// Only sides as long as this tell a direction; shorter ones are furniture and jambs. [pixels; 1 m]
constexpr int kShortest = 20;

/// Half width of the triangle that the histogram is smoothed with. [half degrees]
constexpr int kSpread = 4;

/// Nearer to level than this, a map is taken as it is: over the length of a doorway it does not
/// matter, and nothing has to be resampled. [half degrees]
constexpr int kLevel = 3;

/// A wing has a direction of its own if it has this part of the walls, and lies so far off the
/// first direction. [half degrees]
constexpr double kLeastShare = 0.3;
constexpr int kFarOff = 16;

using Histogram = std::array<std::int64_t, kBins>;

/// Where the bin of a direction begins: a quarter of a degree before it.
std::array<Direction, kBins> binEdges() {
    std::array<Direction, kBins> edges;
    for (int i = 0; i < kBins; ++i)
        edges[static_cast<std::size_t>(i)] = Direction::at(i / 2.0 - 0.25);
    return edges;
}

/// The bin of a direction that is not 0, modulo 90 degrees.
std::size_t binOf(cv::Point d) {
    static const std::array<Direction, kBins> edges = binEdges();
    while (d.x <= 0 || d.y < 0) d = {d.y, -d.x};  // To the quadrant between the axes.
    const auto beyond = std::partition_point(
        edges.begin(), edges.end(),
        [&](const Direction& edge) { return edge.cos * d.y - edge.sin * d.x >= 0; });
    return static_cast<std::size_t>(beyond - edges.begin()) - 1;
}

/// The sides of the polygons around the floor, weighted by their squared lengths: the longer one
/// is, the more exactly it knows its direction.
Histogram sideDirections(const cv::Mat& floor) {
    std::vector<std::vector<cv::Point>> outlines;
    cv::findContours(floor, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    Histogram histogram{};
    std::vector<cv::Point> polygon;
    for (const auto& outline : outlines) {
        if (outline.size() < kShortest) continue;
        cv::approxPolyDP(outline, polygon, kTolerance, true);
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const cv::Point side = polygon[(i + 1) % polygon.size()] - polygon[i];
            const auto length2 = std::int64_t{side.x} * side.x + std::int64_t{side.y} * side.y;
            if (length2 >= kShortest * kShortest) histogram[binOf(side)] += length2;
        }
    }
    return histogram;
}

std::size_t wrapped(int bin) {
    return static_cast<std::size_t>((bin + kBins) % kBins);
}

Histogram smoothed(const Histogram& histogram) {
    Histogram smooth{};
    for (int bin = 0; bin < kBins; ++bin) {
        for (int off = 1 - kSpread; off < kSpread; ++off) {
            smooth[wrapped(bin)] += histogram[wrapped(bin + off)] * (kSpread - std::abs(off));
        }
    }
    return smooth;
}

}  // namespace

Direction Direction::at(double degrees) {
    const double angle = degrees * CV_PI / 180.0;
    const double one = static_cast<double>(std::int64_t{1} << kBits);
    return {std::llround(std::cos(angle) * one), std::llround(std::sin(angle) * one)};
}

std::vector<Direction> wallDirections(const cv::Mat& floor) {
    Histogram histogram = smoothed(sideDirections(floor));
    std::vector<Direction> directions;
    double most = 0.0;
    for (int count = 0; count < 2; ++count) {
        const auto peak = std::max_element(histogram.begin(), histogram.end());
        const auto walls = static_cast<double>(*peak);
        if (count == 0) most = walls;
        if (count > 0 && walls <= kLeastShare * most) break;
        const int bin = static_cast<int>(peak - histogram.begin());
        const int turn = bin > kBins / 2 ? bin - kBins : bin;
        directions.push_back(std::abs(turn) < kLevel ? Direction{} : Direction::at(turn / 2.0));
        for (int off = -kFarOff; off <= kFarOff; ++off) histogram[wrapped(bin + off)] = 0;
    }
    return directions;
}

LevelFloor::LevelFloor(const cv::Mat& floor, const Direction& direction)
    : direction_(direction),
      map_center_(floor.cols / 2, floor.rows / 2),
      level_center_(map_center_),
      level_(floor) {
    if (!direction.isLevel()) turn(floor);
    cv::transpose(level_, columns_);
}

void LevelFloor::turn(const cv::Mat& floor) {
    const auto extent = [&](std::int64_t along, std::int64_t across) {
        const std::int64_t scaled = along * direction_.cos + across * std::abs(direction_.sin);
        return static_cast<int>(scaled >> Direction::kBits) + 4;
    };
    level_ =
        cv::Mat::zeros(extent(floor.rows, floor.cols), extent(floor.cols, floor.rows), CV_8UC1);
    level_center_ = {level_.cols / 2, level_.rows / 2};
    const cv::Rect whole({0, 0}, floor.size());
    for (int row = 0; row < level_.rows; ++row) {
        std::uint8_t* const out = level_.ptr(row);
        for (int col = 0; col < level_.cols; ++col) {
            const cv::Point pixel = toMap({col, row});
            if (whole.contains(pixel)) out[col] = floor.at<std::uint8_t>(pixel);
        }
    }
}

cv::Point LevelFloor::toMap(const cv::Point& pixel) const {
    if (direction_.isLevel()) return pixel;
    const cv::Point off = pixel - level_center_;
    constexpr std::int64_t kHalf = std::int64_t{1} << (Direction::kBits - 1);
    const std::int64_t x = off.x * direction_.cos - off.y * direction_.sin + kHalf;
    const std::int64_t y = off.x * direction_.sin + off.y * direction_.cos + kHalf;
    return map_center_ + cv::Point(static_cast<int>(x >> Direction::kBits),
                                   static_cast<int>(y >> Direction::kBits));
}

}  // namespace vorund::rooms
