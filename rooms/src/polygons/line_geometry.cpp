#include "polygons/line_geometry.h"

#include <algorithm>

namespace vorund::rooms {
namespace {

/// -1, 0 or 1: the side of the line through two points on which a third one
/// lies.
int side(const cv::Point& start, const cv::Point& end, const cv::Point& point) {
    const std::int64_t one = (std::int64_t{end.x} - start.x) * (std::int64_t{point.y} - start.y);
    const std::int64_t other = (std::int64_t{end.y} - start.y) * (std::int64_t{point.x} - start.x);
    return one == other ? 0 : (one > other ? 1 : -1);
}

bool isInBox(const cv::Point& start, const cv::Point& end, const cv::Point& point) {
    const auto [left, right] = std::minmax(start.x, end.x);
    const auto [top, bottom] = std::minmax(start.y, end.y);
    return point.x >= left && point.x <= right && point.y >= top && point.y <= bottom;
}

/// Both from the same point.
bool runAlongEachOther(const cv::Point& start, const cv::Point& end, const cv::Point& other_end) {
    return side(start, end, other_end) == 0 &&
           (isInBox(start, end, other_end) || isInBox(start, other_end, end));
}

}  // namespace

bool operator<(const Passage& one, const Passage& other) {
    if (one.whole != other.whole) return one.whole < other.whole;
    return one.part * other.parts < other.part * one.parts;
}

Passage passageAt(const cv::Point& top, const cv::Point& bottom, int doubled_y) {
    const std::int64_t parts = 2 * (std::int64_t{bottom.y} - top.y);
    const std::int64_t below_top = doubled_y - 2 * std::int64_t{top.y};
    const std::int64_t shift = below_top * (std::int64_t{bottom.x} - top.x);
    // C++ rounds to zero, but the part must not be negative.
    const std::int64_t remainder = shift % parts;
    const std::int64_t part = remainder < 0 ? remainder + parts : remainder;
    return {top.x + (shift - part) / parts, part, parts};
}

bool touch(const cv::Point& start, const cv::Point& end, const cv::Point& other_start,
           const cv::Point& other_end) {
    if (start == other_start) return runAlongEachOther(start, end, other_end);
    if (start == other_end) return runAlongEachOther(start, end, other_start);
    if (end == other_start) return runAlongEachOther(end, start, other_end);
    if (end == other_end) return runAlongEachOther(end, start, other_start);
    const int side_of_other_start = side(start, end, other_start);
    const int side_of_other_end = side(start, end, other_end);
    const int side_of_start = side(other_start, other_end, start);
    const int side_of_end = side(other_start, other_end, end);
    if (side_of_other_start * side_of_other_end < 0 && side_of_start * side_of_end < 0) return true;
    return (side_of_other_start == 0 && isInBox(start, end, other_start)) ||
           (side_of_other_end == 0 && isInBox(start, end, other_end)) ||
           (side_of_start == 0 && isInBox(other_start, other_end, start)) ||
           (side_of_end == 0 && isInBox(other_start, other_end, end));
}

}  // namespace vorund::rooms
