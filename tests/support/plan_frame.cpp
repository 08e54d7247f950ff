#include "plan_frame.h"

#include <algorithm>
#include <cstdlib>

namespace vorund::test {
namespace {

constexpr std::int64_t kPi = 3373259426;  // Times Turn::kOne.

// first * (1 - x^2/(k(k+1)) + x^4/(k(k+1)(k+2)(k+3)) - ...): cosine from k = 1, sine from k = 2.
// With |x| <= pi/4 every product stays below 2^60.
std::int64_t taylor(std::int64_t first, std::int64_t x, std::int64_t k) {
    const std::int64_t square = x * x / Turn::kOne;
    std::int64_t sum = 0;
    for (std::int64_t term = first; term != 0; k += 2) {
        sum += term;
        term = -(term * square / Turn::kOne) / (k * (k + 1));
    }
    return sum;
}

// From 0 to 90 degrees.
Turn turnInQuadrant(int tenths_deg) {
    if (tenths_deg > 450) {
        const Turn other = turnInQuadrant(900 - tenths_deg);
        return {other.cosine, other.sine};
    }
    const std::int64_t x = tenths_deg * kPi / 1800;
    return {taylor(x, x, 2), taylor(Turn::kOne, x, 1)};
}

std::int64_t floorDivided(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

std::int64_t ceilDivided(std::int64_t value, std::int64_t by) {
    return -floorDivided(-value, by);
}

}  // namespace

Turn turnOf(int tenths_deg) {
    const int positive = (tenths_deg % 3600 + 3600) % 3600;
    Turn turn = turnInQuadrant(positive % 900);
    for (int quadrant = positive / 900; quadrant > 0; --quadrant) {
        turn = {turn.cosine, -turn.sine};
    }
    return turn;
}

PlanFrame::PlanFrame(const PlanOptions& options)
    : width_mm_(options.width_mm),
      height_mm_(options.height_mm),
      resolution_(options.resolution_um),
      turn_(turnOf(options.rotation_tenths_deg)) {
    const std::int64_t sine = std::abs(turn_.sine), cosine = std::abs(turn_.cosine);
    const std::int64_t per_pixel = Turn::kOne * resolution_;
    const std::int64_t across = 1000 * (width_mm_ * cosine + height_mm_ * sine);
    const std::int64_t upright = 1000 * (width_mm_ * sine + height_mm_ * cosine);
    const std::int64_t margin = ceilDivided(std::int64_t{1000} * options.margin_mm, resolution_);
    columns_ = ceilDivided(across, per_pixel) + 2 * margin;
    rows_ = ceilDivided(upright, per_pixel) + 2 * margin;
    closed_line_ = ceilDivided(resolution_ * (sine + cosine), Turn::kOne);
}

FineBox PlanFrame::fine(const Box& box) const {
    const auto x = [&](int mm) { return std::int64_t{1000} * mm - 500 * width_mm_; };
    const auto y = [&](int mm) { return std::int64_t{1000} * mm - 500 * height_mm_; };
    return {x(box.x0), y(box.y0), x(box.x1), y(box.y1)};
}

cv::Point PlanFrame::pixelOf(int x, int y) const {
    const FineBox point = fine({x, y, x, y});
    return pixelOfFine(point.x0, point.y0);
}

cv::Point PlanFrame::pixelOfFine(std::int64_t x, std::int64_t y) const {
    const std::int64_t right = turn_.cosine * x + turn_.sine * y;
    const std::int64_t down = turn_.cosine * y - turn_.sine * x;
    const std::int64_t pixel = 2 * Turn::kOne * resolution_;
    return {static_cast<int>(floorDivided(2 * right + columns_ * pixel / 2, pixel)),
            static_cast<int>(floorDivided(2 * down + rows_ * pixel / 2, pixel))};
}

cv::Rect PlanFrame::pixelsAround(const FineBox& box) const {
    const cv::Point corners[] = {pixelOfFine(box.x0, box.y0), pixelOfFine(box.x1, box.y0),
                                 pixelOfFine(box.x0, box.y1), pixelOfFine(box.x1, box.y1)};
    int left = corners[0].x, right = left, top = corners[0].y, bottom = top;
    for (const cv::Point& corner : corners) {
        left = std::min(left, corner.x);
        right = std::max(right, corner.x);
        top = std::min(top, corner.y);
        bottom = std::max(bottom, corner.y);
    }
    const cv::Rect picture(0, 0, static_cast<int>(columns_), static_cast<int>(rows_));
    // One pixel more all round, for what the rounding of corners may lose.
    return cv::Rect(cv::Point(left - 1, top - 1), cv::Point(right + 2, bottom + 2)) & picture;
}

}  // namespace vorund::test
