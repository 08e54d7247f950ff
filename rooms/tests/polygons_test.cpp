#include "vorund/rooms/polygons.h"

#include <gmock/gmock.h>

#include <limits>
#include <stdexcept>

#include "polygon_probe.h"
#include "support/label_grid.h"

namespace vorund::rooms {
namespace {

using test::areaOf;
using test::asView;
using test::labels32;
using test::labelsAt;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

Ring ring(Ring corners) {
    corners.push_back(cv::Point(corners.front()));
    return corners;
}

/// The polygon of an image with one room in one piece.
Polygon onlyPolygon(const cv::Mat& labels, double simplify = 0.0) {
    const std::vector<RoomPolygons> rooms = roomPolygons(labels, simplify);
    if (rooms.size() != 1 || rooms[0].pieces.size() != 1) {
        throw std::logic_error("not one room in one piece");
    }
    return rooms[0].pieces[0];
}

TEST(RoomPolygons, GivesASinglePixelItsFourCorners) {
    const std::vector<RoomPolygons> rooms =
        roomPolygons(labels32(". . .\n"
                              ". . 5"));
    ASSERT_THAT(rooms, SizeIs(1));
    EXPECT_EQ(rooms[0].label, 5);
    ASSERT_THAT(rooms[0].pieces, SizeIs(1));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{2, 1}, {2, 2}, {3, 2}, {3, 1}}));
    EXPECT_THAT(rooms[0].pieces[0].holes, IsEmpty());
}

TEST(RoomPolygons, GoesRoundALShape) {
    const Polygon polygon =
        onlyPolygon(labels32(". . . .\n"
                             ". 1 . .\n"
                             ". 1 1 .\n"
                             ". . . ."));
    EXPECT_EQ(polygon.outer, ring({{1, 1}, {1, 3}, {3, 3}, {3, 2}, {2, 2}, {2, 1}}));
}

TEST(RoomPolygons, StartsAtTheLeftmostOfTheUppermostCorners) {
    const Polygon polygon =
        onlyPolygon(labels32(". 1 .\n"
                             "1 1 1"));
    EXPECT_EQ(polygon.outer,
              ring({{1, 0}, {1, 1}, {0, 1}, {0, 2}, {3, 2}, {3, 1}, {2, 1}, {2, 0}}));
}

TEST(RoomPolygons, RunsClockwiseAroundAHole) {
    const Polygon polygon =
        onlyPolygon(labels32("1 1 1\n"
                             "1 . 1\n"
                             "1 1 1"));
    EXPECT_EQ(polygon.outer, ring({{0, 0}, {0, 3}, {3, 3}, {3, 0}}));
    EXPECT_THAT(polygon.holes, ElementsAre(ring({{1, 1}, {2, 1}, {2, 2}, {1, 2}})));
}

TEST(RoomPolygons, CutsARoomWithinARoomOut) {
    const std::vector<RoomPolygons> rooms =
        roomPolygons(labels32("1 1 1\n"
                              "1 2 1\n"
                              "1 1 1"));
    ASSERT_THAT(rooms, SizeIs(2));
    EXPECT_THAT(rooms[0].pieces[0].holes, ElementsAre(ring({{1, 1}, {2, 1}, {2, 2}, {1, 2}})));
    EXPECT_EQ(rooms[1].pieces[0].outer, ring({{1, 1}, {1, 2}, {2, 2}, {2, 1}}));
}

TEST(RoomPolygons, PutsHolesInRasterOrder) {
    const Polygon polygon =
        onlyPolygon(labels32("1 1 1 1 1\n"
                             "1 1 1 . 1\n"
                             "1 . 1 1 1\n"
                             "1 1 1 1 1"));
    EXPECT_THAT(polygon.holes, ElementsAre(ring({{3, 1}, {4, 1}, {4, 2}, {3, 2}}),
                                           ring({{1, 2}, {2, 2}, {2, 3}, {1, 3}})));
}

TEST(RoomPolygons, MakesPixelsThatMeetAtACornerTwoPieces) {
    const std::vector<RoomPolygons> falling =
        roomPolygons(labels32("1 .\n"
                              ". 1"));
    ASSERT_THAT(falling, SizeIs(1));
    ASSERT_THAT(falling[0].pieces, SizeIs(2));
    EXPECT_EQ(falling[0].pieces[0].outer, ring({{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    EXPECT_EQ(falling[0].pieces[1].outer, ring({{1, 1}, {1, 2}, {2, 2}, {2, 1}}));

    const std::vector<RoomPolygons> rising =
        roomPolygons(labels32(". 1\n"
                              "1 ."));
    ASSERT_THAT(rising, SizeIs(1));
    ASSERT_THAT(rising[0].pieces, SizeIs(2));
    EXPECT_EQ(rising[0].pieces[0].outer, ring({{1, 0}, {1, 1}, {2, 1}, {2, 0}}));
    EXPECT_EQ(rising[0].pieces[1].outer, ring({{0, 1}, {0, 2}, {1, 2}, {1, 1}}));
}

TEST(RoomPolygons, KeepsTwoRoomsApartThatCrossAtACorner) {
    const std::vector<RoomPolygons> rooms =
        roomPolygons(labels32("1 2\n"
                              "2 1"));
    ASSERT_THAT(rooms, SizeIs(2));
    ASSERT_THAT(rooms[0].pieces, SizeIs(2));
    ASSERT_THAT(rooms[1].pieces, SizeIs(2));
    EXPECT_EQ(rooms[0].pieces[1].outer, ring({{1, 1}, {1, 2}, {2, 2}, {2, 1}}));
    EXPECT_EQ(rooms[1].pieces[0].outer, ring({{1, 0}, {1, 1}, {2, 1}, {2, 0}}));
}

TEST(RoomPolygons, MakesALoopOfTheOuterRingAHole) {
    const Polygon falling =
        onlyPolygon(labels32("1 1 1\n"
                             "1 . 1\n"
                             "1 1 ."));
    EXPECT_EQ(falling.outer, ring({{0, 0}, {0, 3}, {2, 3}, {2, 2}, {3, 2}, {3, 0}}));
    EXPECT_THAT(falling.holes, ElementsAre(ring({{1, 1}, {2, 1}, {2, 2}, {1, 2}})));

    const Polygon rising =
        onlyPolygon(labels32("1 1 1\n"
                             "1 . 1\n"
                             ". 1 1"));
    EXPECT_EQ(rising.outer, ring({{0, 0}, {0, 2}, {1, 2}, {1, 3}, {3, 3}, {3, 0}}));
    EXPECT_THAT(rising.holes, ElementsAre(ring({{1, 1}, {2, 1}, {2, 2}, {1, 2}})));
}

TEST(RoomPolygons, MakesALoopOfAHoleASecondHole) {
    const Polygon polygon =
        onlyPolygon(labels32("1 1 1 1\n"
                             "1 . 1 1\n"
                             "1 1 . 1\n"
                             "1 1 1 1"));
    EXPECT_THAT(polygon.holes, ElementsAre(ring({{1, 1}, {2, 1}, {2, 2}, {1, 2}}),
                                           ring({{2, 2}, {3, 2}, {3, 3}, {2, 3}})));
}

TEST(RoomPolygons, GivesPiecesInRasterOrderAndRoomsByLabel) {
    const std::vector<RoomPolygons> rooms =
        roomPolygons(labels32("70000 . 3\n"
                              ".     . .\n"
                              "3     3 ."));
    ASSERT_THAT(rooms, SizeIs(2));
    EXPECT_EQ(rooms[0].label, 3);
    ASSERT_THAT(rooms[0].pieces, SizeIs(2));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{2, 0}, {2, 1}, {3, 1}, {3, 0}}));
    EXPECT_EQ(rooms[0].pieces[1].outer, ring({{0, 2}, {0, 3}, {2, 3}, {2, 2}}));
    EXPECT_EQ(rooms[1].label, 70000);
}

TEST(RoomPolygons, PutsACornerWhereANeighbourBegins) {
    const std::vector<RoomPolygons> rooms =
        roomPolygons(labels32("1 2\n"
                              "3 3"));
    ASSERT_THAT(rooms, SizeIs(3));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    EXPECT_EQ(rooms[1].pieces[0].outer, ring({{1, 0}, {1, 1}, {2, 1}, {2, 0}}));
    EXPECT_EQ(rooms[2].pieces[0].outer, ring({{0, 1}, {0, 2}, {2, 2}, {2, 1}, {1, 1}}));
}

TEST(RoomPolygons, MeetsAtAJunctionOfFour) {
    const std::vector<RoomPolygons> rooms =
        roomPolygons(labels32("1 2\n"
                              "3 4"));
    ASSERT_THAT(rooms, SizeIs(4));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    EXPECT_EQ(rooms[1].pieces[0].outer, ring({{1, 0}, {1, 1}, {2, 1}, {2, 0}}));
    EXPECT_EQ(rooms[2].pieces[0].outer, ring({{0, 1}, {0, 2}, {1, 2}, {1, 1}}));
    EXPECT_EQ(rooms[3].pieces[0].outer, ring({{1, 1}, {1, 2}, {2, 2}, {2, 1}}));
}

TEST(RoomPolygons, FollowsTheRimOfTheImage) {
    EXPECT_EQ(onlyPolygon(labels32("7")).outer, ring({{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    EXPECT_EQ(onlyPolygon(labels32("7 7\n7 7")).outer, ring({{0, 0}, {0, 2}, {2, 2}, {2, 0}}));

    const std::vector<RoomPolygons> row = roomPolygons(labels32("1 1 . 2 1"));
    ASSERT_THAT(row, SizeIs(2));
    EXPECT_EQ(row[0].pieces[0].outer, ring({{0, 0}, {0, 1}, {2, 1}, {2, 0}}));
    EXPECT_EQ(row[0].pieces[1].outer, ring({{4, 0}, {4, 1}, {5, 1}, {5, 0}}));
    EXPECT_EQ(row[1].pieces[0].outer, ring({{3, 0}, {3, 1}, {4, 1}, {4, 0}}));
}

TEST(RoomPolygons, GivesNothingWhereThereIsNoRoom) {
    EXPECT_THAT(roomPolygons(cv::Mat()), IsEmpty());
    EXPECT_THAT(roomPolygons(cv::Mat(0, 0, CV_32SC1)), IsEmpty());
    EXPECT_THAT(roomPolygons(labels32(". .\n. .")), IsEmpty());
}

TEST(RoomPolygons, LooksOnlyAtTheImageItself) {
    const cv::Mat labels = labels32(
        "1 1\n"
        ". 1");
    const cv::Mat view = asView(labels);
    const Ring expected = ring({{0, 0}, {0, 1}, {1, 1}, {1, 2}, {2, 2}, {2, 0}});
    EXPECT_EQ(onlyPolygon(view).outer, expected);
    EXPECT_EQ(cv::countNonZero(view != labels), 0);
}

TEST(RoomPolygons, RejectsImagesThatAreNotLabels) {
    EXPECT_THAT([] { roomPolygons(cv::Mat::zeros(2, 2, CV_8UC1)); },
                ThrowsMessage<std::invalid_argument>("roomPolygons: The labels must be CV_32SC1."));
    EXPECT_THAT([] { roomPolygons(labels32("1 -3 2")); },
                ThrowsMessage<std::invalid_argument>("roomPolygons: Label -3 is negative."));
}

TEST(RoomPolygons, RejectsTolerancesThatAreNone) {
    for (const double tolerance : {-0.5, std::numeric_limits<double>::quiet_NaN(),
                                   std::numeric_limits<double>::infinity()}) {
        EXPECT_THAT([&] { roomPolygons(labels32("1"), tolerance); },
                    ThrowsMessage<std::invalid_argument>(
                        "roomPolygons: The tolerance must be finite, at least 0."));
    }
}

TEST(SimplifiedRoomPolygons, StraightenAStaircaseForBothRooms) {
    // From (1, 0) to (3, 3) the line misses the step at (2, 2) by 1 / sqrt(13), that at (1, 1) by
    // twice as much.
    const std::vector<RoomPolygons> rooms = roomPolygons(labels32("1 2 2 2\n"
                                                                  "1 1 2 2\n"
                                                                  "1 1 1 2"),
                                                         1.0);
    ASSERT_THAT(rooms, SizeIs(2));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{0, 0}, {0, 3}, {3, 3}, {1, 0}}));
    EXPECT_EQ(rooms[1].pieces[0].outer, ring({{1, 0}, {3, 3}, {4, 3}, {4, 0}}));
}

TEST(SimplifiedRoomPolygons, KeepStepsLargerThanTheTolerance) {
    // The line from (2, 0) to (3, 4) would miss (2, 2) and (3, 2) by 2 / sqrt(17) = 0.485.
    const cv::Mat labels = labels32(
        "1 1 2 2\n"
        "1 1 2 2\n"
        "1 1 1 2\n"
        "1 1 1 2");
    EXPECT_EQ(roomPolygons(labels, 0.48)[0].pieces[0].outer,
              ring({{0, 0}, {0, 4}, {3, 4}, {3, 2}, {2, 2}, {2, 0}}));
    EXPECT_EQ(roomPolygons(labels, 0.49)[0].pieces[0].outer,
              ring({{0, 0}, {0, 4}, {3, 4}, {2, 0}}));
}

TEST(SimplifiedRoomPolygons, LeaveTheCornersOfTheImage) {
    const Ring whole = ring({{0, 0}, {0, 2}, {3, 2}, {3, 0}});
    EXPECT_EQ(onlyPolygon(labels32("1 1 1\n1 1 1"), 50.0).outer, whole);
}

TEST(SimplifiedRoomPolygons, NeverLoseARoom) {
    // All corners of the room are within 3 pixels of the line from its first to its furthest one.
    const cv::Mat labels = labels32(
        ". . . . .\n"
        ". 1 1 1 .\n"
        ". 1 1 1 .\n"
        ". 1 1 1 .\n"
        ". . . . .");
    const Ring square = ring({{1, 1}, {1, 4}, {4, 4}, {4, 1}});
    for (const double tolerance : {1.0, 3.0, 1e9, std::numeric_limits<double>::max()}) {
        EXPECT_EQ(onlyPolygon(labels, tolerance).outer, square) << tolerance;
    }
}

TEST(SimplifiedRoomPolygons, MakeATriangleOfARoomBetweenTwoLinesFromOneJunction) {
    // The line from (2, 2) to (3, 5) misses (3, 2) by 3 / sqrt(10) = 0.949, and at its top it is
    // less than a pixel from the border between rooms 1 and 2.
    const std::vector<RoomPolygons> rooms = roomPolygons(labels32("1 1 3 3\n"
                                                                  "1 1 3 3\n"
                                                                  "1 1 2 3\n"
                                                                  "1 1 2 3\n"
                                                                  "1 1 2 3"),
                                                         0.95);
    ASSERT_THAT(rooms, SizeIs(3));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{0, 0}, {0, 5}, {2, 5}, {2, 2}, {2, 0}}));
    EXPECT_EQ(rooms[1].pieces[0].outer, ring({{2, 2}, {2, 5}, {3, 5}}));
    EXPECT_EQ(rooms[2].pieces[0].outer, ring({{2, 0}, {2, 2}, {3, 5}, {4, 5}, {4, 0}}));
}

TEST(SimplifiedRoomPolygons, TakeALowerToleranceWhereRoomsWouldTouch) {
    // With 1.2 the niche of room 1 would be closed by a line along y = 2, and room 2 would be the
    // triangle (0, 4), (3, 2), (7, 4), which touches it. With half of that room 1 loses (5, 1) and
    // (5, 2) alone, 3 / sqrt(26) = 0.588 from the line, and room 2 nothing.
    const std::vector<RoomPolygons> rooms = roomPolygons(labels32("1 1 1 1 1 1 1\n"
                                                                  "1 1 . . . 1 1\n"
                                                                  ". . . 2 . . .\n"
                                                                  "2 2 2 2 2 2 2"),
                                                         1.2);
    ASSERT_THAT(rooms, SizeIs(2));
    EXPECT_EQ(rooms[0].pieces[0].outer, ring({{0, 0}, {0, 2}, {2, 2}, {2, 1}, {7, 2}, {7, 0}}));
    EXPECT_EQ(rooms[1].pieces[0].outer,
              ring({{3, 2}, {3, 3}, {0, 3}, {0, 4}, {7, 4}, {7, 3}, {4, 3}, {4, 2}}));
}

TEST(SimplifiedRoomPolygons, DoNotCloseANicheOverAnotherRoom) {
    const std::vector<RoomPolygons> rooms = roomPolygons(labels32("1 1 1 1 1 1 1\n"
                                                                  "1 1 . . . 1 1\n"
                                                                  "1 1 . 2 . 1 1\n"
                                                                  "1 1 . . . 1 1"),
                                                         50.0);
    ASSERT_THAT(rooms, SizeIs(2));
    EXPECT_THAT(labelsAt(rooms, {3.5, 2.5}), ElementsAre(2));
    EXPECT_EQ(areaOf(rooms[1]), 1.0);
}

TEST(SimplifiedRoomPolygons, KeepAHoleInTheBulgeItIsIn) {
    // Without the bulge on the right, which a tolerance of 3 allows, the hole would be outside.
    const Polygon polygon = onlyPolygon(labels32("1 1 1 1 1 . . .\n"
                                                 "1 1 1 1 1 . . .\n"
                                                 "1 1 1 1 1 1 1 1\n"
                                                 "1 1 1 1 1 1 . 1\n"
                                                 "1 1 1 1 1 1 1 1\n"
                                                 "1 1 1 1 1 . . .\n"
                                                 "1 1 1 1 1 . . ."),
                                        3.0);
    ASSERT_THAT(polygon.holes, ElementsAre(ring({{6, 3}, {7, 3}, {7, 4}, {6, 4}})));
    EXPECT_FALSE(test::isInside(polygon, {6.5, 3.5}));
    EXPECT_TRUE(test::isInside(polygon.outer, {6.5, 3.5}));
}

}  // namespace
}  // namespace vorund::rooms
