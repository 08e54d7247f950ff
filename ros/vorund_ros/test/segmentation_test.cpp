#include "segmentation.h"

#include <gmock/gmock.h>

#include <limits>

#include "drawn_maps.h"

namespace vorund_ros {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

const std::atomic<bool> kGoOn{false};

std::string causeOf(const nav_msgs::OccupancyGrid& map) {
    const Outcome outcome = segment(map, {}, "", kGoOn);
    EXPECT_EQ(outcome.found, nullptr);
    EXPECT_FALSE(outcome.cancelled);
    EXPECT_EQ(outcome.cause.find('\n'), std::string::npos);
    return outcome.cause;
}

TEST(Segment, FindsTwoRoomsAndTheDoor) {
    const Outcome outcome = segment(test::twoRooms(), {}, "", kGoOn);
    ASSERT_NE(outcome.found, nullptr);
    const auto& graph = outcome.found->graph;
    ASSERT_THAT(graph.rooms, SizeIs(2));
    EXPECT_THAT(graph.rooms[0].neighbours, ::testing::ElementsAre(2));
    ASSERT_THAT(graph.borders, SizeIs(1));
    ASSERT_TRUE(graph.borders[0].has_door);
    // The door is in the wall from 3.5 m to 3.7 m, from 1.55 m to 2.45 m up.
    EXPECT_NEAR(graph.borders[0].door_center.x, 3.6, 0.3);
    EXPECT_NEAR(graph.borders[0].door_center.y, 2.0, 0.3);
    // 2 x 3 m x 3 m, and the doorway of 0.2 m x 0.9 m.
    EXPECT_NEAR(graph.rooms[0].area + graph.rooms[1].area + graph.unreached_area, 18.18, 1e-9);
    EXPECT_TRUE(isConsistent(*outcome.found));
}

TEST(Segment, TellsEveryStageOnceAndInOrder) {
    std::vector<int> numbers;
    segment(test::twoRooms(), {}, "", kGoOn, [&](const Progress& progress) {
        EXPECT_EQ(progress.stages, stageCount());
        EXPECT_GT(progress.number, 0) << progress.stage;
        if (numbers.empty() || numbers.back() != progress.number) {
            numbers.push_back(progress.number);
        }
    });
    std::vector<int> all;
    for (int number = 1; number <= stageCount(); ++number) all.push_back(number);
    EXPECT_EQ(numbers, all);
    EXPECT_EQ(stageNumber("no stage"), 0);
}

TEST(Segment, StopsAtTheNextStageOnceTheFlagIsSet) {
    std::atomic<bool> cancelled{false};
    std::string last;
    const Outcome outcome =
        segment(test::twoRooms(), {}, "", cancelled, [&](const Progress& progress) {
            last = progress.stage;
            if (progress.stage == "ridges") cancelled = true;
        });
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_EQ(outcome.found, nullptr);
    EXPECT_EQ(last, "ridges");
}

TEST(Segment, TellsWhyAMapCannotBeUsed) {
    EXPECT_EQ(causeOf(test::mapOf(0, 0, {})), "the map is empty (0 x 0 cells)");
    auto map = test::twoRooms();
    map.data.pop_back();
    EXPECT_EQ(causeOf(map), "the map says 144 x 80 cells, but holds 11519");
    for (const float resolution : {std::numeric_limits<float>::quiet_NaN(), 0.0F, -0.05F,
                                   std::numeric_limits<float>::infinity()}) {
        map = test::twoRooms();
        map.info.resolution = resolution;
        EXPECT_THAT(causeOf(map), HasSubstr("resolution"));
    }
    map.info.resolution = 1e-9F;
    EXPECT_THAT(causeOf(map), HasSubstr("1 m^2"));
    map.info.resolution = 1e9F;
    EXPECT_THAT(causeOf(map), HasSubstr("too large to be worked on"));
    EXPECT_EQ(causeOf(test::mapOf(40, 40, std::vector<std::int8_t>(1600, -1))),
              "no free floor found");
}

}  // namespace
}  // namespace vorund_ros
