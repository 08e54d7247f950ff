#include "map_message.h"

#include <cmath>
#include <cstdint>

namespace vorund_ros {

nav_msgs::OccupancyGrid toMessage(const vorund::rooms::GridMap& map) {
    constexpr std::int8_t kFree = 0;
    constexpr std::int8_t kOccupied = 100;
    constexpr std::int8_t kUnknown = -1;
    constexpr double kLightestWall = 0.35 * 255;

    nav_msgs::OccupancyGrid message;
    message.info.width = static_cast<std::uint32_t>(map.values.cols);
    message.info.height = static_cast<std::uint32_t>(map.values.rows);
    message.info.resolution = static_cast<float>(map.resolution);
    message.info.origin.position.x = map.origin.x;
    message.info.origin.position.y = map.origin.y;
    message.info.origin.orientation.z = std::sin(map.origin.yaw / 2.0);
    message.info.origin.orientation.w = std::cos(map.origin.yaw / 2.0);
    message.data.reserve(map.values.total());
    for (int row = map.values.rows - 1; row >= 0; --row) {
        for (int col = 0; col < map.values.cols; ++col) {
            const bool is_floor = map.values.at<float>(row, col) <= vorund::rooms::kWallThreshold;
            const bool is_dark = map.picture.at<std::uint8_t>(row, col) < kLightestWall;
            message.data.push_back(is_floor ? kFree : is_dark ? kOccupied : kUnknown);
        }
    }
    return message;
}

}  // namespace vorund_ros
