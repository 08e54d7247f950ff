#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "runs/pixel_runs.h"

namespace vorund::rooms {

/// Sums over the pixels of a part of the wall, from which its axis follows.
class PartShape {
 public:
    void add(int row, const internal::PixelRun& run);

    /// The standard deviation along the part's axis in proportion to that across, and at least
    /// that of one row of pixels across.
    double elongation() const;
    double length() const;     ///< Of a bar that is as drawn out. [pixels]
    double thickness() const;  ///< Likewise. [pixels]
    cv::Point2d centre() const;
    double angle() const;  ///< Of the axis, clockwise from the x axis. [radians]

 private:
    struct Spread {
        double xx;
        double xy;
        double yy;
    };
    Spread spread() const;
    double variance(int sign) const;

    std::int64_t count_ = 0;
    std::int64_t x_ = 0;
    std::int64_t y_ = 0;
    std::int64_t xx_ = 0;
    std::int64_t xy_ = 0;
    std::int64_t yy_ = 0;
};

/// Whether a loose part is a piece of a broken wall rather than furniture. It is drawn out, and
/// - along its axis, 4 m either way, at least `least_wall` of the line is wall: lidar maps break
///   walls at windows, glass and thin boards; or
/// - it is as thin as a partition, and its axis meets wall again within a doorway's width beyond
///   both of its ends: what is left of a wall between two doors.
/// @param walls       `CV_8UC1`: not 0 = wall.
/// @param least_wall  Part of the line, 0 to 1.
bool continuesWall(const cv::Mat& walls, const PartShape& part, double least_wall);

}  // namespace vorund::rooms
