#pragma once

#include <cmath>
#include <opencv2/core.hpp>

namespace vorund::rooms {

/// One room of 10 m by 8 m in the middle of wall 5 m thick, to be furnished.
class DrawnFloor {
 public:
    DrawnFloor() : values_(360, 400, CV_32FC1, cv::Scalar(1.0)) { values_(room()).setTo(0.0); }

    static cv::Rect room() { return {100, 100, 200, 160}; }
    static cv::Point middle() { return {200, 180}; }

    DrawnFloor& wall(const cv::Rect& where) {
        values_(where).setTo(1.0);
        return *this;
    }
    DrawnFloor& floor(const cv::Rect& where) {
        values_(where).setTo(0.0);
        return *this;
    }
    /// Walls two pixels thick with this floor in them.
    DrawnFloor& outline(const cv::Rect& inner) {
        wall({inner.x - 2, inner.y - 2, inner.width + 4, inner.height + 4});
        return floor(inner);
    }

    const cv::Mat& values() const { return values_; }

 private:
    cv::Mat values_;
};

/// Pieces of a wall along a line through the middle of the room, that goes on in the walls.
/// @param degrees    Clockwise from the x axis.
/// @param thickness  Of the pieces. [pixels]
/// @param piece      Their length; one of them lies in the middle. [pixels]
/// @param gap        Between them. [pixels]
inline cv::Mat brokenWall(double degrees, double thickness, double piece, double gap) {
    const DrawnFloor drawn;
    cv::Mat values = drawn.values().clone();
    const cv::Point2d along(std::cos(degrees * CV_PI / 180.0), std::sin(degrees * CV_PI / 180.0));
    for (int row = 0; row < values.rows; ++row) {
        for (int col = 0; col < values.cols; ++col) {
            const cv::Point2d off = cv::Point(col, row) - DrawnFloor::middle();
            const double at = off.dot(along);
            const double aside = off.dot(cv::Point2d(-along.y, along.x));
            const double in_period = at - std::round(at / (piece + gap)) * (piece + gap);
            if (std::abs(aside) > thickness / 2.0 || std::abs(in_period) > piece / 2.0) continue;
            values.at<float>(row, col) = 1.0F;
        }
    }
    return values;
}

}  // namespace vorund::rooms
