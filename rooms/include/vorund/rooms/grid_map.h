#pragma once

#include <opencv2/core.hpp>

#include "vorund/export.h"

namespace vorund::rooms {

/// Resolution at which the core works; its lengths and areas assume it. [m per pixel]
inline constexpr double kWorkingResolution = 0.05;

/// Map values above it are wall (or unknown), the others floor, wherever this library has to tell
/// them apart. The core has thresholds of its own, in its settings.
inline constexpr float kWallThreshold = 0.5F;

/// Pose of the lower left corner of a map's lower left pixel in the map frame, as in map_server's
/// `origin` and in `nav_msgs/MapMetaData`.
struct Origin {
    double x = 0.0;    ///< [m]
    double y = 0.0;    ///< [m]
    double yaw = 0.0;  ///< Counterclockwise. [rad]
};

/// A robot's map, as the core wants it: walls high.
struct GridMap {
    /// `CV_32FC1`, image rows from the top: 0 = floor, 1 = occupied or unknown; in a `raw` map
    /// anything from 0 to 1.
    cv::Mat values;

    /// `CV_8UC1`, the same size: the map as it is painted, floor light, for pictures.
    cv::Mat picture;

    double resolution = kWorkingResolution;  ///< [m per pixel]
    Origin origin;

    /// The values are the caller's own and go to the core as they are, without a rim of wall.
    bool raw = false;
};

/// A point of the image (x = column, y = row; whole numbers are the centres of pixels) in the map
/// frame. [m], y up
VORUND_EXPORT cv::Point2d pixelToMetres(const GridMap& map, const cv::Point2d& pixel);

/// The pixel that holds a point of the map frame; it may lie outside the map. A pixel holds its
/// left and its lower edge (seen along the map's own axes), not its right and its upper one.
/// @throws std::invalid_argument  for a point that is not finite or further away than an int can
///         count pixels.
VORUND_EXPORT cv::Point metresToPixel(const GridMap& map, const cv::Point2d& point);

}  // namespace vorund::rooms
