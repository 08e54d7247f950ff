#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// A direction as whole numbers, so that every machine turns a map alike: cosine and sine, scaled.
struct Direction {
    static constexpr int kBits = 20;
    std::int64_t cos = std::int64_t{1} << kBits;
    std::int64_t sin = 0;

    /// @param degrees  Clockwise in the image.
    static Direction at(double degrees);
    bool isLevel() const { return sin == 0; }
};

/// The directions in which most walls of a map run, modulo 90 degrees: the peaks of a histogram of
/// the directions of the floor's outlines as polygons (Douglas and Peucker, 1973). The first is the
/// building's own, a second that of a wing.
/// @param floor  `CV_8UC1`: 255 = floor, 0 = wall.
/// @return One or two; level for a map without walls.
std::vector<Direction> wallDirections(const cv::Mat& floor);

/// A map turned so that walls of a direction run along its rows and columns.
class LevelFloor {
 public:
    LevelFloor(const cv::Mat& floor, const Direction& direction);

    /// `CV_8UC1`: 255 = floor, 0 = wall and outside. Values of the nearest pixel.
    const cv::Mat& floor() const { return level_; }

    /// The same flipped at its diagonal, so that its columns can be read as rows.
    const cv::Mat& columns() const { return columns_; }

    /// The pixel of the map that a pixel of the level floor shows; it may lie outside the map.
    cv::Point toMap(const cv::Point& pixel) const;

 private:
    void turn(const cv::Mat& floor);

    Direction direction_;
    cv::Point map_center_;
    cv::Point level_center_;
    cv::Mat level_;
    cv::Mat columns_;
};

}  // namespace vorund::rooms
