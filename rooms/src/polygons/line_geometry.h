#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vorund::rooms {

/// Where a line passes a height: whole + part / parts, with 0 <= part < parts.
struct Passage {
    std::int64_t whole = 0;
    std::int64_t part = 0;
    std::int64_t parts = 1;
};

bool operator<(const Passage& one, const Passage& other);

/// @param top           Upper end of the line.
/// @param bottom        Lower end, lower than `top`.
/// @param doubled_y     Twice the height, between the ends.
Passage passageAt(const cv::Point& top, const cv::Point& bottom, int doubled_y);

/// Whether two lines between different points have a point in common, other
/// than one end that both have.
bool touch(const cv::Point& start, const cv::Point& end, const cv::Point& other_start,
           const cv::Point& other_end);

}  // namespace vorund::rooms
