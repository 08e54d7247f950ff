#include "map_conversion.h"

#include <gmock/gmock.h>

#include <limits>

#include "drawn_maps.h"
#include "vorund/rooms/map_reader.h"

namespace vorund_ros {
namespace {

using test::mapOf;
using ::testing::Ne;
using ::testing::ThrowsMessage;
using vorund::rooms::MapError;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<float> valuesOf(const nav_msgs::OccupancyGrid& map, int threshold = 50) {
    const cv::Mat values = toGridMap(map, threshold).values;
    return {values.begin<float>(), values.end<float>()};
}

TEST(ToGridMap, PutsTheUpperRowFirst) {
    EXPECT_EQ(valuesOf(mapOf(3, 2,
                             {0, 0, 100,       //
                              100, 100, 0})),  // The upper row.
              (std::vector<float>{1, 1, 0, 0, 0, 1}));
}

TEST(ToGridMap, TakesTheUnknownAndWhatIsNoProbabilityForOutside) {
    EXPECT_EQ(valuesOf(mapOf(5, 1, {-1, 0, 101, -128, 127})), (std::vector<float>{1, 0, 1, 1, 1}));
}

TEST(ToGridMap, PartsProbabilitiesAtTheThreshold) {
    const auto map = mapOf(4, 1, {0, 49, 50, 100});
    EXPECT_EQ(valuesOf(map, 50), (std::vector<float>{0, 0, 1, 1}));
    EXPECT_EQ(valuesOf(map, 49), (std::vector<float>{0, 1, 1, 1}));
    EXPECT_EQ(valuesOf(map, 100), (std::vector<float>{0, 0, 0, 1}));
}

TEST(ToGridMap, GivesTheDecimalNumberThatTheResolutionWasWrittenAs) {
    for (const double resolution : {0.05, 0.02, 0.1, 0.025, 0.0373, 1.0, 12.5}) {
        const auto map = mapOf(1, 1, {0}, static_cast<float>(resolution));
        EXPECT_DOUBLE_EQ(toGridMap(map, 50).resolution, resolution);
    }
}

TEST(ToGridMap, TakesTheOriginWithItsYaw) {
    auto map = mapOf(1, 1, {0});
    test::turn(map, -3.5, 7.25, -2.5);
    const vorund::rooms::Origin origin = toGridMap(map, 50).origin;
    EXPECT_DOUBLE_EQ(origin.x, -3.5);
    EXPECT_DOUBLE_EQ(origin.y, 7.25);
    EXPECT_NEAR(origin.yaw, -2.5, 1e-12);
}

TEST(ToGridMap, TakesAQuaternionAndItsNegativeForTheSameTurn) {
    auto map = mapOf(1, 1, {0});
    test::turn(map, 0, 0, 1.0);
    map.info.origin.orientation.z *= -3.0;  // Nor need it be of length one.
    map.info.origin.orientation.w *= -3.0;
    EXPECT_NEAR(toGridMap(map, 50).origin.yaw, 1.0, 1e-12);
}

TEST(ToGridMap, TakesAQuaternionOfZerosForNoTurn) {
    auto map = mapOf(1, 1, {0});
    map.info.origin.orientation.w = 0.0;
    EXPECT_EQ(toGridMap(map, 50).origin.yaw, 0.0);
}

TEST(ToGridMap, RefusesMapsWithoutCells) {
    EXPECT_THAT([] { toGridMap(mapOf(0, 0, {}), 50); },
                ThrowsMessage<MapError>("the map is empty (0 x 0 cells)"));
    EXPECT_THAT([] { toGridMap(mapOf(7, 0, {}), 50); },
                ThrowsMessage<MapError>("the map is empty (7 x 0 cells)"));
}

TEST(ToGridMap, RefusesCellsThatDoNotFitTheSize) {
    EXPECT_THAT(
        [] {
            toGridMap(mapOf(2, 2, {0, 0, 0}), 50);
        },
        ThrowsMessage<MapError>("the map says 2 x 2 cells, but holds 3"));
    EXPECT_THAT(
        [] {
            toGridMap(mapOf(2, 1, {0, 0, 0}), 50);
        },
        ThrowsMessage<MapError>("the map says 2 x 1 cells, but holds 3"));
    // 2^32 cells, which is 0 in 32 bits.
    EXPECT_THAT([] { toGridMap(mapOf(65536, 65536, {}), 50); },
                ThrowsMessage<MapError>("the map says 65536 x 65536 cells, but holds 0"));
}

TEST(ToGridMap, RefusesOriginsThatCannotBe) {
    const auto refusal = [](auto change, const std::string& cause) {
        auto map = mapOf(1, 1, {0});
        change(map.info.origin);
        EXPECT_THAT([&] { toGridMap(map, 50); }, ThrowsMessage<MapError>(cause));
    };
    refusal([](auto& origin) { origin.position.x = kNan; }, "the map's origin is not finite");
    refusal([](auto& origin) { origin.position.y = -std::numeric_limits<double>::infinity(); },
            "the map's origin is not finite");
    refusal([](auto& origin) { origin.orientation.z = kNan; }, "the map's origin is not finite");
    refusal([](auto& origin) { origin.position.x = 2e8; },
            "the map's origin is more than 1e8 m away");
    refusal([](auto& origin) { origin.orientation.x = 0.1; },
            "the map's origin is tilted: it may be turned about the z axis only");
}

TEST(ToGridMap, LeavesTheResolutionToTheLibrary) {
    EXPECT_TRUE(std::isnan(toGridMap(mapOf(1, 1, {0}, static_cast<float>(kNan)), 50).resolution));
}

TEST(MapHash, IsEqualForEqualMapsWheneverTheyWereMade) {
    auto map = test::twoRooms();
    const std::string hash = mapHash(map);
    EXPECT_EQ(hash.size(), 16U);
    map.header.stamp = ros::Time(12, 34);
    map.header.seq = 5;
    map.info.map_load_time = ros::Time(56, 78);
    EXPECT_EQ(mapHash(map), hash);
}

TEST(MapHash, DiffersForEverythingThatChangesTheRooms) {
    const auto map = test::twoRooms();
    const std::string hash = mapHash(map);
    const auto differs = [&](auto change) {
        auto other = map;
        change(other);
        EXPECT_THAT(mapHash(other), Ne(hash));
    };
    differs([](auto& other) { other.data[5] = 0; });
    differs([](auto& other) { std::swap(other.info.width, other.info.height); });
    differs([](auto& other) { other.info.resolution = 0.1F; });
    differs([](auto& other) { other.info.origin.position.x = 1e-9; });
    differs([](auto& other) { other.info.origin.orientation.z = 1e-9; });
    differs([](auto& other) { other.header.frame_id = "odom"; });
}

}  // namespace
}  // namespace vorund_ros
