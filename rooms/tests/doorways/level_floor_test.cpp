#include "doorways/level_floor.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "drawn_walls.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::DoubleNear;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

double degreesOf(const Direction& direction) {
    return std::atan2(static_cast<double>(direction.sin), static_cast<double>(direction.cos)) *
           180.0 / CV_PI;
}

/// A room of 8 m by 6 m.
DrawnWalls room() {
    DrawnWalls drawn(cv::Size(180, 140));
    return drawn.floor({10, 10, 160, 120});
}

TEST(DirectionAt, IsACosineAndASineInWholeNumbers) {
    constexpr std::int64_t kOne = std::int64_t{1} << Direction::kBits;
    EXPECT_TRUE(Direction::at(0).isLevel());
    EXPECT_EQ(Direction::at(0).cos, kOne);
    EXPECT_EQ(Direction::at(30).sin, kOne / 2);
    EXPECT_EQ(Direction::at(-30).sin, -kOne / 2);
    EXPECT_EQ(Direction::at(45).sin, Direction::at(45).cos);
    EXPECT_FALSE(Direction::at(0.5).isLevel());
}

TEST(WallDirections, IsLevelForWallsAlongTheImage) {
    const auto directions = wallDirections(room().floor());
    ASSERT_THAT(directions, SizeIs(1));
    EXPECT_TRUE(directions[0].isLevel());
}

TEST(WallDirections, IsLevelWithoutWalls) {
    for (const cv::Size& size : {cv::Size(1, 1), cv::Size(1, 30), cv::Size(40, 40)}) {
        for (const int value : {0, 255}) {
            const auto directions = wallDirections({size, CV_8UC1, cv::Scalar(value)});
            ASSERT_THAT(directions, SizeIs(1));
            EXPECT_TRUE(directions[0].isLevel());
        }
    }
}

TEST(WallDirections, FollowsTheDrawingAsItIsTurned) {
    for (const int degrees : {2, 3, 4, 5, 10, 20, 30, 40, 50, 60, 70, 80, 87}) {
        const auto directions = wallDirections(room().turnedBy(degrees));
        ASSERT_THAT(directions, SizeIs(1)) << degrees;
        const int within = degrees > 45 ? degrees - 90 : degrees;
        EXPECT_NEAR(degreesOf(directions[0]), within, 0.5) << degrees;
    }
}

TEST(WallDirections, LooksPastRaggedWalls) {
    cv::Mat floor = room().turnedBy(10);
    cv::RNG random(7);
    const cv::Mat straight = floor.clone();
    for (int row = 1; row + 1 < floor.rows; ++row) {
        for (int col = 1; col + 1 < floor.cols; ++col) {
            const cv::Rect around(col - 1, row - 1, 3, 3);
            if (cv::countNonZero(straight(around)) % 9 == 0) continue;
            if (random.uniform(0, 2) == 0) floor.at<std::uint8_t>(row, col) ^= 255;
        }
    }
    const auto directions = wallDirections(floor);
    ASSERT_THAT(directions, SizeIs(1));
    EXPECT_NEAR(degreesOf(directions[0]), 10.0, 1.0);
}

TEST(WallDirections, DoesNotFollowFurniture) {
    cv::Mat floor = room().turnedBy(20);
    for (int i = 0; i < 16; ++i) {
        const cv::Point corner(105 + 18 * (i % 4), 100 + 18 * (i / 4));
        floor(cv::Rect(corner, cv::Size(10, 10))) = 0;
    }
    const auto directions = wallDirections(floor);
    ASSERT_THAT(directions, SizeIs(1));
    EXPECT_NEAR(degreesOf(directions[0]), 20.0, 0.5);
}

TEST(WallDirections, TakesAMapForLevelThatNearlyIs) {
    const auto directions = wallDirections(room().turnedBy(0.7));
    ASSERT_THAT(directions, SizeIs(1));
    EXPECT_TRUE(directions[0].isLevel());
}

TEST(WallDirections, GivesThatOfAWingAsASecond) {
    const cv::Mat building = room().floor();
    const cv::Mat wing = room().turnedBy(30);
    cv::Mat both(building.rows + wing.rows, wing.cols, CV_8UC1, cv::Scalar(0));
    building.copyTo(both(cv::Rect({0, 0}, building.size())));
    wing.copyTo(both(cv::Rect({0, building.rows}, wing.size())));
    std::vector<double> degrees;
    for (const Direction& direction : wallDirections(both)) degrees.push_back(degreesOf(direction));
    EXPECT_THAT(degrees, UnorderedElementsAre(0.0, DoubleNear(30.0, 1.0)));
}

TEST(LevelFloor, IsTheMapItselfInALevelDirection) {
    const cv::Mat floor = room().floor();
    const LevelFloor level(floor, Direction{});
    EXPECT_THAT(level.floor(), MatEq(floor));
    EXPECT_EQ(level.toMap({17, 5}), cv::Point(17, 5));
}

TEST(LevelFloor, ShowsThePixelsThatItNames) {
    const cv::Mat floor = room().turnedBy(30);
    const LevelFloor level(floor, Direction::at(30));
    const cv::Rect whole({0, 0}, floor.size());
    for (int row = 0; row < level.floor().rows; ++row) {
        for (int col = 0; col < level.floor().cols; ++col) {
            const cv::Point pixel = level.toMap({col, row});
            const int expected = whole.contains(pixel) ? floor.at<std::uint8_t>(pixel) : 0;
            ASSERT_EQ(level.floor().at<std::uint8_t>(row, col), expected) << pixel;
        }
    }
}

TEST(LevelFloor, MakesWallsRunAlongRowsAndColumns) {
    for (const int degrees : {10, 30, -40}) {
        const LevelFloor level(room().turnedBy(degrees), Direction::at(degrees));
        const cv::Rect box = cv::boundingRect(level.floor());
        EXPECT_NEAR(box.width, 160, 3) << degrees;
        EXPECT_NEAR(box.height, 120, 3) << degrees;
        EXPECT_GE(cv::countNonZero(level.floor()), box.area() * 97 / 100) << "it fills its box";
    }
}

}  // namespace
}  // namespace vorund::rooms
