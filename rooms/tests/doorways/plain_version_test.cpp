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
        plain.push_back(Direction::at(angle).sin);
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

/// The 4-connected pieces of the floor as regions, from 254 on without 255, with some of the floor
/// unreached and some of the wall in regions.
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

/// @return How many doorways there are, and whether regions were parted there.
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

/// Rooms, and walls across them with gaps here and there; turned now and then.
cv::Mat someWalls(RandomImages& random) {
    const cv::Size size(30 + random.below(120), 30 + random.below(120));
    DrawnWalls drawn(size);
    for (int room = 1 + random.below(3); room > 0; --room) {
        const cv::Point corner(random.below(size.width), random.below(size.height));
        drawn.floor({corner, cv::Size(10 + random.below(120), 10 + random.below(120))});
    }
    for (int wall = random.below(6); wall > 0; --wall) {
        const bool upright = random.below(2) == 0;
        const int thickness = 1 + random.below(9);
        const int at = random.below(upright ? size.width : size.height);
        const int gap = random.below(upright ? size.height : size.width);
        const int width = 5 + random.below(50);
        drawn.wall(upright ? cv::Rect(at, 0, thickness, size.height)
                           : cv::Rect(0, at, size.width, thickness));
        drawn.floor(upright ? cv::Rect(at, gap, thickness, width)
                            : cv::Rect(gap, at, width, thickness));
    }
    const int degrees = random.below(2) == 0 ? 0 : random.below(90);
    cv::Mat floor = drawn.turnedBy(degrees);
    if (random.below(2) == 0) floor.setTo(0, random.bytes(floor.size(), 200) == 0);
    return floor;
}

TEST(DoorwaysInNoise, AreThoseOfThePlainVersion) {
    int with_doorways = 0;
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        const cv::Mat floor = someWalls(random);
        RoomsConfig config;
        config.widest_doorway = 0.05 * (10 + random.below(60));
        config.jamb = 0.05 * random.below(12);
        if (expectSame(floor, config, someRegions(random, floor)) > 0) ++with_doorways;
    }
    EXPECT_GE(with_doorways, 50);
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
