// Finding doorways, and parting regions there, give the same as their plain versions.

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

#include "doorways/find_doorways.h"
#include "doorways/level_floor.h"
#include "drawn_walls.h"
#include "families/plan_families.h"
#include "reference/doorways.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/varied_plans.h"

namespace vorund::rooms {
namespace {

using reference::PlainDoorway;
using test::MatEq;
using test::RandomImages;

void expectSameDirections(const cv::Mat& floor) {
    std::vector<std::int64_t> sines;
    for (const Direction& direction : wallDirections(floor)) sines.push_back(direction.sin);
    std::vector<std::int64_t> plain;
    for (const int angle : reference::wallDirections(floor)) {
        plain.push_back(Direction::at(angle / 2.0).sin);
    }
    EXPECT_EQ(sines, plain);
}

void expectSameDoorways(const std::vector<FoundDoorway>& doorways,
                        const std::vector<PlainDoorway>& plain, const cv::Mat& floor) {
    ASSERT_EQ(doorways.size(), plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        EXPECT_EQ(doorways[i].first_jamb, plain[i].first_jamb);
        EXPECT_EQ(doorways[i].second_jamb, plain[i].second_jamb);
        EXPECT_EQ(doorways[i].width, plain[i].width);
        EXPECT_EQ(doorways[i].wall, plain[i].wall);
        EXPECT_EQ(doorways[i].pixels(floor), reference::floorIn(plain[i], floor));
    }
}

/// Regions in patches, with labels on both sides of that for what is unreached, which is one of the
/// patches; with a third of the wall, too.
cv::Mat someRegions(RandomImages& random, const cv::Mat& floor) {
    const cv::Mat patches = random.patches(floor.size(), 3, 1);
    cv::Mat labels = cv::Mat::zeros(floor.size(), CV_32SC1);
    for (int row = 0; row < floor.rows; ++row) {
        for (int col = 0; col < floor.cols; ++col) {
            if (floor.at<std::uint8_t>(row, col) == 0 && random.below(3) > 0) continue;
            labels.at<std::int32_t>(row, col) = 252 + patches.at<std::uint8_t>(row, col);
        }
    }
    return labels;
}

/// @return How many doorways there are.
int expectSame(const cv::Mat& floor, const RoomsConfig& config, const cv::Mat& labels) {
    expectSameDirections(floor);
    const std::vector<FoundDoorway> doorways = findDoorways(floor, config);
    const std::vector<PlainDoorway> plain = reference::findDoorways(floor, config);
    expectSameDoorways(doorways, plain, floor);
    cv::Mat parted = labels.clone();
    splitAtDoorways(parted, floor, doorways);
    cv::Mat plainly_parted = labels.clone();
    reference::splitAtDoorways(plainly_parted, floor, plain);
    EXPECT_THAT(parted, MatEq(plainly_parted));
    return static_cast<int>(doorways.size());
}

class DoorwaysOfFamilies : public ::testing::TestWithParam<test::FamilyInfo> {};

TEST_P(DoorwaysOfFamilies, AreThoseOfThePlainVersion) {
    for (const std::uint32_t seed : {3U, 4U}) {
        SCOPED_TRACE(seed);
        const cv::Mat floor = test::makeFamilyPlan(GetParam().name, seed).map == test::kMapFree;
        RandomImages random(seed);
        expectSame(floor, {}, someRegions(random, floor));
    }
}

INSTANTIATE_TEST_SUITE_P(AllFamilies, DoorwaysOfFamilies, ::testing::ValuesIn(test::planFamilies()),
                         [](const auto& test) { return test.param.name; });

TEST(DoorwaysOfDrawnPlans, AreThoseOfThePlainVersion) {
    int found = 0;
    for (const test::VariedPlan& plan : test::variedPlans()) {
        SCOPED_TRACE(plan.family);
        const cv::Mat floor = test::workingMap(test::makePlan(plan.options)) <= 0.5;
        RandomImages random(7);
        found += expectSame(floor, {}, someRegions(random, floor));
    }
    EXPECT_GE(found, 10);
}

/// A room, in which walls cross with gaps here and there; turned now and then.
cv::Mat someWalls(RandomImages& random) {
    const cv::Size size(40 + random.below(100), 40 + random.below(100));
    DrawnWalls drawn(size);
    drawn.floor({random.below(8), random.below(8), size.width - 10, size.height - 10});
    for (int wall = 1 + random.below(4); wall > 0; --wall) {
        const bool upright = random.below(2) == 0;
        const int thickness = 1 + random.below(9);
        const int at = random.below(upright ? size.width : size.height);
        const int gap = random.below(upright ? size.height : size.width);
        const int width = 8 + random.below(30);
        drawn.wall(upright ? cv::Rect(at, 0, thickness, size.height)
                           : cv::Rect(0, at, size.width, thickness));
        drawn.floor(upright ? cv::Rect(at, gap, thickness, width)
                            : cv::Rect(gap, at, width, thickness));
    }
    cv::Mat floor = drawn.turnedBy(random.below(2) == 0 ? 0 : random.below(90));
    if (random.below(4) == 0) floor.setTo(0, random.bytes(floor.size(), 200) == 0);
    return floor;
}

TEST(DoorwaysInNoise, AreThoseOfThePlainVersion) {
    int with_doorways = 0;
    int with_corridors = 0;
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        const cv::Mat floor = someWalls(random);
        RoomsConfig config;
        config.widest_doorway = 0.05 * (10 + random.below(60));
        config.jamb = 0.05 * random.below(8);
        const int found = expectSame(floor, config, someRegions(random, floor));
        if (found > 0) ++with_doorways;
        config.corridors = false;
        if (found > expectSame(floor, config, someRegions(random, floor))) ++with_corridors;
    }
    EXPECT_GE(with_doorways, 50);
    EXPECT_GE(with_corridors, 5);
}

TEST(DoorwaysOfSmallImages, AreThoseOfThePlainVersion) {
    RoomsConfig config;
    config.jamb = 0.0;
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        const cv::Mat floor = (random.patches(random.size(40), 12, 0) & 1) == 1;
        expectSame(floor, config, someRegions(random, floor));
    }
}

}  // namespace
}  // namespace vorund::rooms
