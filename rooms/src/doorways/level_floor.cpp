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

/// Directions are taken from every second pixel of every second row, which is a quarter of the work.
/// Edges are smoothed twice over 0.5 m: walls of a mapped building are ragged, and the edge of a
/// turned one is a stair, which leads up and across before it leads along. [pixels of that]
constexpr int kStep = 2;
constexpr int kSmoothing = 5;

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

std::array<Direction, kBins> binEdges() {
    std::array<Direction, kBins> edges;
    for (int i = 0; i < kBins; ++i) edges[static_cast<std::size_t>(i)] = Direction::at(i);
    return edges;
}

/// The bin of a direction that is not 0, modulo 90 degrees.
int binOf(int x, int y) {
    static const std::array<Direction, kBins> edges = binEdges();
    while (x <= 0 || y < 0) {  // To the quadrant between the axes.
        const int former = x;
        x = y;
        y = -former;
    }
    const auto beyond = std::partition_point(
        edges.begin(), edges.end(), [&](const Direction& e) { return e.cos * y - e.sin * x >= 0; });
    return static_cast<int>(beyond - edges.begin()) - 1;
}

/// 1 = floor.
cv::Mat sampled(const cv::Mat& floor) {
    cv::Mat samples((floor.rows + kStep - 1) / kStep, (floor.cols + kStep - 1) / kStep, CV_8UC1);
    for (int row = 0; row < samples.rows; ++row) {
        const std::uint8_t* const pixels = floor.ptr<std::uint8_t>(kStep * row);
        std::uint8_t* const sample = samples.ptr<std::uint8_t>(row);
        for (int col = 0; col < samples.cols; ++col) sample[col] = pixels[kStep * col] & 1;
    }
    return samples;
}

/// Weighted by the squared gradient.
Histogram edgeDirections(const cv::Mat& floor) {
    const cv::Size square(kSmoothing, kSmoothing);
    cv::Mat smooth;
    cv::Mat dx;
    cv::Mat dy;
    cv::boxFilter(sampled(floor), smooth, CV_16S, square, {-1, -1}, false);
    cv::boxFilter(smooth, smooth, CV_16S, square, {-1, -1}, false);
    cv::Sobel(smooth, dx, CV_16S, 1, 0);
    cv::Sobel(smooth, dy, CV_16S, 0, 1);
    Histogram histogram{};
    for (int row = 0; row < smooth.rows; ++row) {
        const auto* const x = dx.ptr<std::int16_t>(row);
        const auto* const y = dy.ptr<std::int16_t>(row);
        for (int col = 0; col < smooth.cols; ++col) {
            if (x[col] == 0 && y[col] == 0) continue;
            histogram[static_cast<std::size_t>(binOf(x[col], y[col]))] +=
                x[col] * x[col] + y[col] * y[col];
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

Direction Direction::at(int half_degrees) {
    const double angle = half_degrees * CV_PI / (2 * kBins);
    const double one = static_cast<double>(std::int64_t{1} << kBits);
    return {std::llround(std::cos(angle) * one), std::llround(std::sin(angle) * one)};
}

std::vector<Direction> wallDirections(const cv::Mat& floor) {
    Histogram histogram = smoothed(edgeDirections(floor));
    std::vector<Direction> directions;
    double most = 0.0;
    for (int count = 0; count < 2; ++count) {
        const auto peak = std::max_element(histogram.begin(), histogram.end());
        const auto walls = static_cast<double>(*peak);
        if (count == 0) most = walls;
        if (count > 0 && walls <= kLeastShare * most) break;
        const int bin = static_cast<int>(peak - histogram.begin());
        const int turn = bin > kBins / 2 ? bin - kBins : bin;
        directions.push_back(std::abs(turn) < kLevel ? Direction{} : Direction::at(turn));
        for (int off = -kFarOff; off <= kFarOff; ++off) histogram[wrapped(bin + off)] = 0;
    }
    return directions;
}

LevelFloor::LevelFloor(const cv::Mat& floor, const Direction& direction)
    : direction_(direction),
      map_center_(floor.cols / 2, floor.rows / 2),
      level_center_(map_center_),
      level_(floor) {
    if (direction.isLevel()) return;
    const auto extent = [&](std::int64_t along, std::int64_t across) {
        const std::int64_t scaled = along * direction.cos + across * std::abs(direction.sin);
        return static_cast<int>(scaled >> Direction::kBits) + 4;
    };
    level_ = cv::Mat::zeros(extent(floor.rows, floor.cols), extent(floor.cols, floor.rows), CV_8UC1);
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
