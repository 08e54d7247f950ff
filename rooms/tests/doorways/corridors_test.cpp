#include "doorways/corridors.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <vector>

#include "drawn_walls.h"

namespace vorund::rooms {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

std::vector<Corridor> corridorsOf(const cv::Mat& floor) {
    return corridorsInRows(floor, floor.t());
}

/// 15 m long.
DrawnWalls corridorOfWidth(int width) {
    return DrawnWalls(cv::Size(320, 140)).floor({10, 40, 300, width});
}

TEST(CorridorsInRows, AreFloorBetweenTwoWalls) {
    const auto corridors = corridorsOf(corridorOfWidth(40).floor());
    ASSERT_THAT(corridors, SizeIs(1));
    EXPECT_EQ(corridors[0].begin, 10);
    EXPECT_EQ(corridors[0].end(), 310);
    for (const cv::Range& rows : corridors[0].rows) EXPECT_EQ(rows, cv::Range(40, 80));
}

TEST(CorridorsInRows, AreOneToFourMetresWide) {
    EXPECT_THAT(corridorsOf(corridorOfWidth(19).floor()), IsEmpty());
    EXPECT_THAT(corridorsOf(corridorOfWidth(20).floor()), SizeIs(1));
    EXPECT_THAT(corridorsOf(corridorOfWidth(80).floor()), SizeIs(1));
    EXPECT_THAT(corridorsOf(corridorOfWidth(81).floor()), IsEmpty());
}

TEST(CorridorsInRows, AreThreeTimesAsLongAsWide) {
    const auto room = [](int length) {
        return DrawnWalls(cv::Size(320, 140)).floor({10, 40, length, 40}).floor();
    };
    EXPECT_THAT(corridorsOf(room(119)), IsEmpty());
    EXPECT_THAT(corridorsOf(room(120)), SizeIs(1));
}

TEST(CorridorsInRows, DoNotRunAlongColumns) {
    EXPECT_THAT(corridorsOf(corridorOfWidth(40).floor().t()), IsEmpty());
}

TEST(CorridorsInRows, GoOnPastAHallBesideThem) {
    // 6 m of the upper wall are missing.
    const auto corridors = corridorsOf(corridorOfWidth(40).floor({100, 5, 120, 35}).floor());
    ASSERT_THAT(corridors, SizeIs(1));
    EXPECT_EQ(corridors[0].begin, 10);
    EXPECT_EQ(corridors[0].end(), 310);
    EXPECT_EQ(corridors[0].at(160), cv::Range(40, 80));
}

TEST(CorridorsInRows, EndInAHallOfMoreThanFifteenMetres) {
    const auto hall = [](int length) {
        return DrawnWalls(cv::Size(820, 140))
            .floor({10, 40, 800, 40})
            .floor({200, 5, length, 35})
            .floor();
    };
    EXPECT_EQ(corridorsOf(hall(300)).front().length(), 800);
    EXPECT_EQ(corridorsOf(hall(301)).front().length(), 309) << "that behind the hall";
}

TEST(CorridorsInRows, EndWhereTheWayAheadIsShut) {
    // A wall across, with a door of 1 m at one side of it, which leaves a third of the middle open.
    const auto corridors =
        corridorsOf(corridorOfWidth(40).wall({180, 40, 2, 40}).floor({180, 40, 2, 16}).floor());
    ASSERT_THAT(corridors, SizeIs(2));
    EXPECT_EQ(corridors[0].begin, 10);
    EXPECT_EQ(corridors[0].end(), 180);
    EXPECT_EQ(corridors[1].begin, 182);
}

TEST(CorridorsInRows, GoOnThroughADoorAhead) {
    const auto corridors =
        corridorsOf(corridorOfWidth(40).wall({180, 40, 2, 40}).floor({180, 50, 2, 20}).floor());
    ASSERT_THAT(corridors, SizeIs(1));
    EXPECT_EQ(corridors[0].length(), 300);
}

TEST(CorridorsInRows, HaveWallAlongTwoFifthsOnEachSide) {
    const auto without = [](int columns) {
        return corridorOfWidth(40).floor({50, 5, columns, 35}).floor();
    };
    EXPECT_THAT(corridorsOf(without(180)), SizeIs(1));
    EXPECT_THAT(corridorsOf(without(181)), IsEmpty());
}

TEST(CorridorsInRows, FollowWallsThatAreNotQuiteLevel) {
    DrawnWalls drawn(cv::Size(320, 140));
    for (int i = 0; i < 10; ++i) drawn.floor({10 + 30 * i, 40 + i, 30, 40});
    const auto corridors = corridorsOf(drawn.floor());
    ASSERT_THAT(corridors, SizeIs(1));
    EXPECT_EQ(corridors[0].length(), 300);
    EXPECT_EQ(corridors[0].rows.front(), cv::Range(40, 80));
    EXPECT_NEAR(corridors[0].rows.back().start, 49, 1);
    EXPECT_NEAR(corridors[0].rows.back().end, 89, 1);
}

TEST(CorridorsInRows, DoNotOverlap) {
    // Niches 0.5 m deep at both ends make another corridor, 6.5 m long, of what lies between.
    const auto corridors =
        corridorsOf(corridorOfWidth(40).floor({10, 30, 80, 10}).floor({220, 30, 90, 10}).floor());
    ASSERT_THAT(corridors, SizeIs(1));
    EXPECT_EQ(corridors[0].length(), 300);
    EXPECT_EQ(corridors[0].at(150), cv::Range(30, 80));
}

TEST(GapsBeside, AreFromWallToWall) {
    const cv::Mat floor =
        corridorOfWidth(40).floor({60, 20, 50, 20}).floor({200, 80, 20, 30}).floor();
    const auto corridors = corridorsOf(floor);
    ASSERT_THAT(corridors, SizeIs(1));
    const auto gaps = gapsBeside(corridors[0], floor);
    ASSERT_THAT(gaps, SizeIs(2));
    EXPECT_EQ(gaps[0].left(), cv::Point(59, 39));
    EXPECT_EQ(gaps[0].right(), cv::Point(110, 39));
    EXPECT_EQ(gaps[0].outward, -1);
    EXPECT_EQ(gaps[0].gap.width(), 50);
    EXPECT_EQ(gaps[0].gap.wall_left, 50) << "to the corridor's end";
    EXPECT_EQ(gaps[0].gap.wall_right, 60);
    EXPECT_EQ(gaps[1].left(), cv::Point(199, 80));
    EXPECT_EQ(gaps[1].right(), cv::Point(220, 80));
    EXPECT_EQ(gaps[1].outward, 1);
}

TEST(GapsBeside, AreNoNichesOfClosedDoors) {
    for (const int depth : {5, 6}) {
        const cv::Mat floor = corridorOfWidth(40).floor({60, 40 - depth, 20, depth}).floor();
        const auto corridors = corridorsOf(floor);
        ASSERT_THAT(corridors, SizeIs(1));
        EXPECT_THAT(gapsBeside(corridors[0], floor), SizeIs(depth - 5)) << depth;
    }
}

TEST(GapsBeside, AreHalfAMetreAndWider) {
    for (const int width : {9, 10}) {
        const cv::Mat floor = corridorOfWidth(40).floor({60, 20, width, 20}).floor();
        EXPECT_THAT(gapsBeside(corridorsOf(floor)[0], floor), SizeIs(width - 9)) << width;
    }
}

TEST(GapsBeside, FindJambsWhereTheWallIsRagged) {
    // The wall's edge is two pixels further in on one side of the gap, and one out on the other.
    cv::Mat floor = corridorOfWidth(40)
                        .floor({60, 20, 50, 20})
                        .wall({50, 38, 10, 4})
                        .floor({110, 39, 10, 1})
                        .floor();
    const auto gaps = gapsBeside(corridorsOf(floor)[0], floor);
    ASSERT_THAT(gaps, SizeIs(1));
    EXPECT_EQ(gaps[0].left().x, 59);
    EXPECT_EQ(floor.at<std::uint8_t>(gaps[0].left()), 0);
    EXPECT_EQ(gaps[0].right(), cv::Point(110, 38));
    EXPECT_EQ(gaps[0].gap.row, 38) << "the outer one";
}

}  // namespace
}  // namespace vorund::rooms
