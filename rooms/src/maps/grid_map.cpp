#include "vorund/rooms/grid_map.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace vorund::rooms {
namespace {

int toPixelIndex(double index) {
    // Negated, so that NaN fails too.
    if (!(std::abs(index) < static_cast<double>(std::numeric_limits<int>::max()))) {
        throw std::invalid_argument("metresToPixel: The point is too far from the map.");
    }
    return static_cast<int>(index);
}

}  // namespace

cv::Point2d pixelToMetres(const GridMap& map, const cv::Point2d& pixel) {
    const double along_x = (pixel.x + 0.5) * map.resolution;
    const double along_y = (map.values.rows - pixel.y - 0.5) * map.resolution;
    const double cos_yaw = std::cos(map.origin.yaw);
    const double sin_yaw = std::sin(map.origin.yaw);
    return {map.origin.x + cos_yaw * along_x - sin_yaw * along_y,
            map.origin.y + sin_yaw * along_x + cos_yaw * along_y};
}

cv::Point metresToPixel(const GridMap& map, const cv::Point2d& point) {
    const double from_x = point.x - map.origin.x;
    const double from_y = point.y - map.origin.y;
    const double cos_yaw = std::cos(map.origin.yaw);
    const double sin_yaw = std::sin(map.origin.yaw);
    const double along_x = cos_yaw * from_x + sin_yaw * from_y;
    const double along_y = cos_yaw * from_y - sin_yaw * from_x;
    const double rows_up = std::floor(along_y / map.resolution);
    return {toPixelIndex(std::floor(along_x / map.resolution)),
            toPixelIndex(map.values.rows - 1.0 - rows_up)};
}

}  // namespace vorund::rooms
