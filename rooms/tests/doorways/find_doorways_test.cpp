#include "doorways/find_doorways.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "drawn_walls.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Two rooms of 4 m by 3 m beside each other, and wall of that thickness between them, which begins
/// at column 90.
DrawnWalls roomsBesideEachOther(int thickness) {
    DrawnWalls drawn(cv::Size(180 + thickness, 80));
    return drawn.floor({10, 10, 80, 60}).floor({90 + thickness, 10, 80, 60});
}

/// Whether both ends of a doorway are wall, and what lies between them is floor.
bool isFromWallToWall(const FoundDoorway& doorway, const cv::Mat& floor) {
    const std::vector<cv::Point> pixels = doorway.pixels(floor);
    const auto isWall = [&](const cv::Point& pixel) { return floor.at<std::uint8_t>(pixel) == 0; };
    return isWall(doorway.first_jamb) && isWall(doorway.second_jamb) && !pixels.empty() &&
           std::none_of(pixels.begin(), pixels.end(), isWall);
}

TEST(FindDoorways, FindsADoorInAThinWall) {
    const cv::Mat floor = roomsBesideEachOther(2).floor({90, 30, 2, 18}).floor();
    const auto doorways = findDoorways(floor, {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_EQ(doorways[0].first_jamb, cv::Point(90, 29));
    EXPECT_EQ(doorways[0].second_jamb, cv::Point(90, 48));
    EXPECT_EQ(doorways[0].width, 18);
    EXPECT_EQ(doorways[0].wall, 20 + 22) << "to the ends of the rooms";
    EXPECT_THAT(doorways[0].pixels(floor), SizeIs(18));
    EXPECT_TRUE(isFromWallToWall(doorways[0], floor));
}

TEST(FindDoorways, FindsADoorInTheMiddleOfAThickWall) {
    const cv::Mat floor = roomsBesideEachOther(8).floor({90, 30, 8, 18}).floor();
    const auto doorways = findDoorways(floor, {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_THAT(doorways[0].first_jamb.x, ::testing::AllOf(::testing::Ge(93), ::testing::Le(94)));
    EXPECT_EQ(doorways[0].width, 18);
}

TEST(FindDoorways, FindsADoorInAHorizontalWallOfASquareMap) {
    DrawnWalls drawn(cv::Size(142, 142));
    drawn.floor({10, 10, 122, 60}).floor({10, 72, 122, 60}).floor({30, 70, 18, 2});
    const cv::Mat before = drawn.floor().clone();
    const auto doorways = findDoorways(drawn.floor(), {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_EQ(doorways[0].first_jamb, cv::Point(29, 70));
    EXPECT_EQ(doorways[0].second_jamb, cv::Point(48, 70));
    EXPECT_THAT(drawn.floor(), MatEq(before));
}

TEST(FindDoorways, TakesANarrowestFromHalfAMetre) {
    EXPECT_THAT(findDoorways(roomsBesideEachOther(2).floor({90, 30, 2, 9}).floor(), {}), IsEmpty());
    EXPECT_THAT(findDoorways(roomsBesideEachOther(2).floor({90, 30, 2, 10}).floor(), {}),
                SizeIs(1));
}

TEST(FindDoorways, TakesNoneThatIsTooWide) {
    RoomsConfig config;
    config.widest_doorway = 1.5;
    EXPECT_THAT(findDoorways(roomsBesideEachOther(2).floor({90, 20, 2, 30}).floor(), config),
                SizeIs(1));
    EXPECT_THAT(findDoorways(roomsBesideEachOther(2).floor({90, 20, 2, 31}).floor(), config),
                IsEmpty());
}

TEST(FindDoorways, TakesNoneInAWallThickerThanHalfAMetre) {
    EXPECT_THAT(findDoorways(roomsBesideEachOther(10).floor({90, 30, 10, 18}).floor(), {}),
                SizeIs(1));
    EXPECT_THAT(findDoorways(roomsBesideEachOther(11).floor({90, 30, 11, 18}).floor(), {}),
                IsEmpty());
}

TEST(FindDoorways, TakesNoOpeningAsWideAsTheRoom) {
    RoomsConfig config;
    config.widest_doorway = 5.0;
    config.jamb = 0.15;
    EXPECT_THAT(findDoorways(roomsBesideEachOther(2).floor({90, 10, 2, 60}).floor(), config),
                IsEmpty());
    EXPECT_THAT(findDoorways(roomsBesideEachOther(2).floor({90, 14, 2, 52}).floor(), config),
                IsEmpty())
        << "52 of 60 are more than 85 %";
}

/// A door at the end of a wall between a room and a space below it of that length: only to its
/// right does the wall go on.
cv::Mat cornerDoor(int length) {
    DrawnWalls drawn(cv::Size(length + 20, 130));
    drawn.floor({10, 10, 80, 60}).floor({10, 72, length, 40}).floor({10, 70, 18, 2});
    return drawn.floor();
}

TEST(FindDoorways, FindsADoorInACornerThatOpensIntoACorridor) {
    const auto doorways = findDoorways(cornerDoor(300), {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_EQ(doorways[0].first_jamb, cv::Point(9, 70));
    EXPECT_EQ(doorways[0].second_jamb, cv::Point(28, 70));
}

TEST(FindDoorways, TakesNoneInACornerBetweenSmallRooms) {
    EXPECT_THAT(findDoorways(cornerDoor(80), {}), IsEmpty());
}

TEST(FindDoorways, TakesNoGapBetweenAWallAndFurniture) {
    // A cupboard, 0.6 m deep, stands 0.8 m from the wall: what it leaves is no gap in a wall.
    DrawnWalls drawn(cv::Size(320, 140));
    drawn.floor({10, 10, 300, 120}).wall({100, 26, 40, 104});
    EXPECT_THAT(findDoorways(drawn.floor(), {}), IsEmpty());
}

TEST(FindDoorways, TakesNoGapBetweenStubsShorterThanAJamb) {
    // Stubs of ten pixels from both sides of a room leave half of it open.
    DrawnWalls drawn(cv::Size(160, 60));
    drawn.floor({10, 10, 140, 40}).wall({80, 10, 2, 10}).wall({80, 40, 2, 10});
    RoomsConfig config;
    config.jamb = 0.5;
    EXPECT_THAT(findDoorways(drawn.floor(), config), SizeIs(1));
    config.jamb = 0.55;
    EXPECT_THAT(findDoorways(drawn.floor(), config), IsEmpty());
}

TEST(FindDoorways, FindsTheOpeningOfACubicleAsWideAsTheAisle) {
    // Three cubicles of 2.5 m beside an aisle of 1 m; their openings are as wide.
    DrawnWalls drawn(cv::Size(190, 100));
    drawn.floor({10, 70, 170, 20});
    for (int left : {10, 67, 124}) {
        drawn.floor({left, 10, 56, 58}).floor({left + 18, 68, 20, 2});
    }
    const auto doorways = findDoorways(drawn.floor(), {});
    ASSERT_THAT(doorways, SizeIs(3));
    for (const FoundDoorway& doorway : doorways) {
        EXPECT_EQ(doorway.width, 20);
        EXPECT_EQ(doorway.first_jamb.y, doorway.second_jamb.y);
    }
}

/// A corridor of 15 m by 2 m, and above it a room of 5 m by 3 m with an opening of that width in
/// the middle of the wall between them, which is 0.1 m thick.
DrawnWalls roomBesideACorridor(int opening) {
    DrawnWalls drawn(cv::Size(320, 140));
    drawn.floor({10, 80, 300, 40}).floor({110, 18, 100, 60});
    return drawn.floor({160 - opening / 2, 78, opening, 2});
}

TEST(FindDoorways, FindsAWideGapInTheWallOfACorridor) {
    const cv::Mat floor = roomBesideACorridor(80).floor();
    const auto doorways = findDoorways(floor, {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_EQ(doorways[0].first_jamb, cv::Point(119, 79));
    EXPECT_EQ(doorways[0].second_jamb, cv::Point(200, 79));
    EXPECT_EQ(doorways[0].width, 80);
    EXPECT_EQ(doorways[0].wall, 60 + 60);
    EXPECT_TRUE(isFromWallToWall(doorways[0], floor));
    RoomsConfig config;
    config.corridors = false;
    EXPECT_THAT(findDoorways(floor, config), IsEmpty());
}

TEST(FindDoorways, FindsTheGapInTheWallOfAnUprightCorridor) {
    const cv::Mat floor = roomBesideACorridor(80).floor().t();
    const auto doorways = findDoorways(floor, {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_EQ(doorways[0].first_jamb, cv::Point(79, 119));
    EXPECT_EQ(doorways[0].second_jamb, cv::Point(79, 200));
}

TEST(FindDoorways, TakesADoorInTheWallOfACorridorOnce) {
    const auto doorways = findDoorways(roomBesideACorridor(20).floor(), {});
    ASSERT_THAT(doorways, SizeIs(1));
    EXPECT_EQ(doorways[0].width, 20);
}

TEST(FindDoorways, TakesNoOpeningOfACorridorIntoAHall) {
    EXPECT_THAT(findDoorways(roomBesideACorridor(100).floor(), {}), IsEmpty());
    EXPECT_THAT(findDoorways(roomBesideACorridor(96).floor(), {}), IsEmpty())
        << "96 of 100 are more than 95 %";
    EXPECT_THAT(findDoorways(roomBesideACorridor(94).floor(), {}), SizeIs(1));
}

TEST(FindDoorways, DoesNotDivideACorridorBetweenTwoNiches) {
    // Niches of 1 m by 1 m opposite each other: with what lies between they are 4 m by 1 m.
    const auto drawn = roomBesideACorridor(80).floor({40, 60, 20, 80});
    EXPECT_THAT(findDoorways(drawn.floor(), {}), SizeIs(1));
}

TEST(FindDoorways, FindsTwoDoorsBetweenTheSameRooms) {
    const auto doorways = findDoorways(
        roomsBesideEachOther(2).floor({90, 16, 2, 14}).floor({90, 45, 2, 18}).floor(), {});
    ASSERT_THAT(doorways, SizeIs(2));
    EXPECT_EQ(doorways[0].width, 14) << "narrowest first";
    EXPECT_EQ(doorways[0].first_jamb, cv::Point(90, 15));
    EXPECT_EQ(doorways[1].width, 18);
    EXPECT_EQ(doorways[1].first_jamb, cv::Point(90, 44));
}

TEST(FindDoorways, KeepsDoorsApartThatAreAKilometreFromEachOther) {
    // Two pairs of rooms, 25,000 pixels from the one to the other.
    DrawnWalls drawn(cv::Size(25'200, 80));
    for (const int left : {10, 25'010}) {
        drawn.floor({left, 10, 80, 60}).floor({left + 82, 10, 80, 60});
        drawn.floor({left + 80, 30, 2, 18});
    }
    EXPECT_THAT(findDoorways(drawn.floor(), {}), SizeIs(2));
}

/// Three rooms above a corridor, with doors of 0.9 m.
DrawnWalls roomsAboveACorridor() {
    DrawnWalls drawn(cv::Size(300, 140));
    drawn.floor({10, 90, 280, 36});
    for (const int left : {10, 106, 202}) {
        drawn.floor({left, 10, 88, 76}).floor({left + 36, 86, 18, 4});
    }
    return drawn;
}

class FindDoorwaysTurned : public ::testing::TestWithParam<int> {};

TEST_P(FindDoorwaysTurned, FindsTheSameDoors) {
    const DrawnWalls drawn = roomsAboveACorridor();
    const cv::Mat floor = drawn.turnedBy(GetParam());
    const auto doorways = findDoorways(floor, {});
    ASSERT_THAT(doorways, SizeIs(3));
    for (const int left : {10, 106, 202}) {
        // Pixels left + 36 to left + 53 of rows 86 to 89.
        const cv::Point2d middle = drawn.turnedPoint({left + 44.5, 87.5}, GetParam());
        const auto is_there = [&](const FoundDoorway& doorway) {
            const cv::Point2d found = (doorway.first_jamb + doorway.second_jamb) / 2.0;
            return cv::norm(found - middle) <= 3.0;  // 0.15 m.
        };
        EXPECT_EQ(std::count_if(doorways.begin(), doorways.end(), is_there), 1) << "from " << left;
    }
    for (const FoundDoorway& doorway : doorways) {
        EXPECT_NEAR(doorway.width, 18, 2);
        EXPECT_TRUE(isFromWallToWall(doorway, floor));
    }
}

INSTANTIATE_TEST_SUITE_P(Degrees, FindDoorwaysTurned, ::testing::Values(0, 10, 30, 45, 77));

TEST(FindDoorways, FindsNoneWhereNothingIsToBeFound) {
    for (const cv::Size& size : {cv::Size(0, 0), cv::Size(1, 1), cv::Size(40, 1), cv::Size(1, 40),
                                 cv::Size(2, 3), cv::Size(60, 60)}) {
        for (const int value : {0, 255}) {
            const cv::Mat floor(size, CV_8UC1, cv::Scalar(value));
            EXPECT_THAT(findDoorways(floor, {}), IsEmpty()) << size << " of " << value;
        }
    }
}

}  // namespace
}  // namespace vorund::rooms
