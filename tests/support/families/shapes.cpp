#include "families/shapes.h"

#include <cstdlib>

namespace vorund::test::families {
namespace {

// Whether a line across one of a's axes separates the two.
bool separatedAlongAxesOf(const Shape& a, const Shape& b) {
    const Turn own = turnOf(a.tenths_deg), between = turnOf(b.tenths_deg - a.tenths_deg);
    const std::int64_t right = b.middle.x - a.middle.x, down = b.middle.y - a.middle.y;
    const std::int64_t along_x = std::abs(own.cosine * right - own.sine * down) / Turn::kOne;
    const std::int64_t along_y = std::abs(own.sine * right + own.cosine * down) / Turn::kOne;
    const std::int64_t cosine = std::abs(between.cosine), sine = std::abs(between.sine);
    const std::int64_t reach_x = (b.half_x * cosine + b.half_y * sine) / Turn::kOne;
    const std::int64_t reach_y = (b.half_x * sine + b.half_y * cosine) / Turn::kOne;
    return along_x + 10 >= a.half_x + reach_x || along_y + 10 >= a.half_y + reach_y;
}

}  // namespace

std::int64_t floorDivided(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

SitePoint turned(const SitePoint& point, const Turn& turn) {
    return {floorDivided(turn.cosine * point.x + turn.sine * point.y, Turn::kOne),
            floorDivided(turn.cosine * point.y - turn.sine * point.x, Turn::kOne)};
}

SitePoint onSite(const Pose& pose, int x, int y) {
    const SitePoint own{std::int64_t{1000} * x, std::int64_t{1000} * y};
    const SitePoint there = turned(own, turnOf(pose.tenths_deg));
    return {there.x + std::int64_t{1000} * pose.x_mm, there.y + std::int64_t{1000} * pose.y_mm};
}

Shape shapeOf(const Pose& pose, const Box& box, bool round, int more_tenths) {
    const SitePoint twice_middle =
        turned({std::int64_t{1000} * (box.x0 + box.x1), std::int64_t{1000} * (box.y0 + box.y1)},
               turnOf(pose.tenths_deg));
    return {{twice_middle.x / 2 + std::int64_t{1000} * pose.x_mm,
             twice_middle.y / 2 + std::int64_t{1000} * pose.y_mm},
            std::int64_t{500} * box.width(),
            std::int64_t{500} * box.height(),
            pose.tenths_deg + more_tenths,
            round};
}

Shape discAt(const Pose& pose, int x, int y, int radius_mm) {
    return shapeOf(pose, Box{x, y, x, y}.grown(radius_mm), true);
}

Shape grown(Shape shape, int by_mm) {
    shape.half_x += std::int64_t{1000} * by_mm;
    shape.half_y += std::int64_t{1000} * by_mm;
    return shape;
}

bool overlap(const Shape& a, const Shape& b) {
    return !separatedAlongAxesOf(a, b) && !separatedAlongAxesOf(b, a);
}

}  // namespace vorund::test::families
