#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vorund::rooms {

/// A map that is wall, until floor is drawn, and wall into the floor.
class DrawnWalls {
 public:
    explicit DrawnWalls(const cv::Size& size) : floor_(size, CV_8UC1, cv::Scalar(0)) {}

    DrawnWalls& floor(const cv::Rect& where) { return paint(where, 255); }
    DrawnWalls& wall(const cv::Rect& where) { return paint(where, 0); }

    const cv::Mat& floor() const { return floor_; }

    /// The map turned about its middle, clockwise, in an image that holds all of it.
    cv::Mat turnedBy(double degrees) const {
        const int side = std::max(floor_.rows, floor_.cols) * 3 / 2;
        const cv::Size size = degrees == 0.0 ? floor_.size() : cv::Size(side, side);
        cv::Mat turned(size, CV_8UC1, cv::Scalar(0));
        const cv::Rect whole({0, 0}, floor_.size());
        for (int row = 0; row < turned.rows; ++row) {
            for (int col = 0; col < turned.cols; ++col) {
                const cv::Point pixel = turn(cv::Point(col, row), size, floor_.size(), -degrees);
                if (whole.contains(pixel)) {
                    turned.at<std::uint8_t>(row, col) = floor_.at<std::uint8_t>(pixel);
                }
            }
        }
        return turned;
    }

    /// Where a point of the map is in the turned one.
    cv::Point2d turnedPoint(const cv::Point2d& point, double degrees) const {
        return turn(point, floor_.size(), turnedBy(degrees).size(), degrees);
    }

 private:
    static cv::Point2d turn(const cv::Point2d& point, const cv::Size& from, const cv::Size& to,
                            double degrees) {
        const double angle = degrees * CV_PI / 180.0;
        const cv::Point2d off = point - cv::Point2d(from.width / 2, from.height / 2);
        return cv::Point2d(to.width / 2, to.height / 2) +
               cv::Point2d(off.x * std::cos(angle) - off.y * std::sin(angle),
                           off.x * std::sin(angle) + off.y * std::cos(angle));
    }

    DrawnWalls& paint(const cv::Rect& where, int value) {
        floor_(where & cv::Rect({0, 0}, floor_.size())) = value;
        return *this;
    }

    cv::Mat floor_;
};

}  // namespace vorund::rooms
