#pragma once

#include <opencv2/core.hpp>

#include "flow/regions.h"
#include "flow/separators.h"

namespace vorund::rooms {

/// Regions drawn as rectangles on wall, lines between them as well.
class DrawnRegions {
 public:
    explicit DrawnRegions(const cv::Size& size) : labels_(size, CV_32SC1, cv::Scalar(0)) {}

    DrawnRegions& region(int label, const cv::Rect& where) {
        labels_(where) = label;
        return *this;
    }
    DrawnRegions& line(const cv::Rect& where) { return region(kLine, where); }
    DrawnRegions& wall(const cv::Rect& where) { return region(0, where); }

    Regions regions() const { return regionsOf(labels_.clone()); }
    cv::Mat floor() const { return labels_ != 0; }

 private:
    cv::Mat labels_;
};

/// Two square rooms of one size in a row, and an opening in the middle of the wall between them, in
/// the middle of which is a line.
/// @param opening  Its width; odd, as `side`, so that both have a middle. [pixels]
inline DrawnRegions twoRooms(int side, int opening, int first = 1, int second = 2) {
    constexpr int kWall = 5;
    DrawnRegions drawn(cv::Size(2 * side + 3 * kWall, side + 2 * kWall));
    const int door_left = kWall + side;
    const int door_top = kWall + (side - opening) / 2;
    drawn.region(first, {kWall, kWall, side, side});
    drawn.region(second, {door_left + kWall, kWall, side, side});
    drawn.region(first, {door_left, door_top, 2, opening});
    drawn.line({door_left + 2, door_top, 1, opening});
    drawn.region(second, {door_left + 3, door_top, 2, opening});
    return drawn;
}

}  // namespace vorund::rooms
