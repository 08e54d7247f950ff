#include "map_message.h"

#include <gmock/gmock.h>

#include "map_conversion.h"
#include "vorund/rooms/map_reader.h"

namespace vorund_ros {
namespace {

TEST(ToMessage, ComesBackAsTheSameMap) {
    for (const char* const name : {"office", "lidar", "furnished"}) {
        const auto map = vorund::rooms::readMap(std::string(VORUND_ROS_MAPS "/") + name + ".yaml");
        const auto back = toGridMap(toMessage(map), kOccupiedThreshold);
        EXPECT_EQ(cv::countNonZero(back.values != map.values), 0) << name;
        EXPECT_DOUBLE_EQ(back.resolution, map.resolution);
        EXPECT_DOUBLE_EQ(back.origin.x, map.origin.x);
        EXPECT_DOUBLE_EQ(back.origin.y, map.origin.y);
        EXPECT_NEAR(back.origin.yaw, map.origin.yaw, 1e-12);
    }
}

TEST(ToMessage, TellsWallsFromTheUnknownByTheirShade) {
    vorund::rooms::GridMap map;
    map.values = (cv::Mat_<float>(2, 2) << 0.0F, 1.0F, 1.0F, 0.0F);
    map.picture = (cv::Mat_<std::uint8_t>(2, 2) << 254, 205, 0, 254);
    map.origin.yaw = 2.0;
    const nav_msgs::OccupancyGrid message = toMessage(map);
    // The lower row comes first.
    EXPECT_THAT(message.data, ::testing::ElementsAre(100, 0, 0, -1));
    EXPECT_NEAR(toGridMap(message, 50).origin.yaw, 2.0, 1e-12);
}

}  // namespace
}  // namespace vorund_ros
