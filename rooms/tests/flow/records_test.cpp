#include "flow/records.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "reference/records.h"
#include "reference/room_graph.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::labels32;
using test::MatEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr double kTiny = 1e-12;

void expectNear(const cv::Point2d& actual, const cv::Point2d& expected) {
    EXPECT_NEAR(actual.x, expected.x, kTiny);
    EXPECT_NEAR(actual.y, expected.y, kTiny);
}

/// Rooms with the core's labels, and a graph that has them as nodes.
FoundRooms found(const std::string& grid, const std::vector<Edge>& edges = {}) {
    FoundRooms rooms{labels32(grid), {}, {}, {}, {}, 1.0};
    for (const int label : cv::Mat_<std::int32_t>(rooms.labels)) {
        if (label != 0) rooms.graph.addNode(label, {1.0, {0, 0}});
    }
    double length = 0.05;
    for (const Edge& edge : edges) {
        rooms.graph.addEdge(edge.first, edge.second, {length});
        length += 0.05;
    }
    return rooms;
}

Rooms filled(const FoundRooms& found_rooms, double resolution = 0.05, const Origin& origin = {}) {
    Rooms rooms;
    rooms.resolution = resolution;
    rooms.origin = origin;
    fillRecords(found_rooms, rooms);
    return rooms;
}

TEST(FillRecords, NumbersRoomsInReadingOrderOfTheirFirstPixels) {
    const Rooms rooms =
        filled(found(". . 200 . 7\n"
                     "3 3 200 . 7\n"
                     "3 . .   90 7"));
    EXPECT_THAT(rooms.labels, MatEq(labels32(". . 1 . 2\n"
                                             "3 3 1 . 2\n"
                                             "3 . . 4 2")));
    ASSERT_THAT(rooms.rooms, SizeIs(4));
    for (int n = 1; n <= 4; ++n) {
        EXPECT_EQ(rooms.rooms[static_cast<std::size_t>(n - 1)].label, n);
    }
}

TEST(FillRecords, MeasuresRooms) {
    const Rooms rooms = filled(found("5 5 5 .\n"
                                     "5 5 5 .\n"
                                     "5 5 5 9"),
                               0.1);
    ASSERT_THAT(rooms.rooms, SizeIs(2));
    EXPECT_EQ(rooms.rooms[0].pixel_count, 9);
    EXPECT_NEAR(rooms.rooms[0].area_m2, 0.09, kTiny);
    EXPECT_EQ(rooms.rooms[0].box, cv::Rect(0, 0, 3, 3));
    EXPECT_EQ(rooms.rooms[0].position.pixel, cv::Point2d(1, 1));
    EXPECT_EQ(rooms.rooms[1].pixel_count, 1);
    EXPECT_EQ(rooms.rooms[1].box, cv::Rect(3, 2, 1, 1));
}

TEST(FillRecords, ListsDoorwaysByTheirRoomsInMetres) {
    FoundRooms rooms = found("9 9 2 2\n"
                             "9 4 4 2",
                             {Edge(9, 2), Edge(9, 4), Edge(2, 4)});
    const FoundDoorway narrow{{0, 0}, {2, 0}, 2, 6};
    const FoundDoorway wide{{1, 0}, {1, 1}, 4, 2};
    rooms.doorways = {{narrow, Edge(2, 4)}, {narrow, Edge(9, 2)}, {wide, Edge(9, 2)}};
    const Rooms result = filled(rooms, 0.05, {10.0, 20.0, 0.0});
    ASSERT_THAT(result.doorways, SizeIs(3));
    // 9, 2 and 4 become 1, 2 and 3.
    EXPECT_EQ(std::make_pair(result.doorways[0].first, result.doorways[0].second),
              std::make_pair(1, 2));
    EXPECT_NEAR(result.doorways[0].width_m, 0.1, kTiny);
    EXPECT_NEAR(result.doorways[0].certainty, 0.75, kTiny) << "6 of 8 are wall";
    EXPECT_EQ(result.doorways[0].start.pixel, cv::Point2d(0, 0));
    EXPECT_EQ(result.doorways[0].end.pixel, cv::Point2d(2, 0));
    expectNear(result.doorways[0].center.metres, {10.0 + 1.5 * 0.05, 20.0 + 1.5 * 0.05});
    EXPECT_NEAR(result.doorways[1].width_m, 0.2, kTiny) << "the wider one between the same rooms";
    EXPECT_EQ(std::make_pair(result.doorways[2].first, result.doorways[2].second),
              std::make_pair(2, 3));
}

TEST(FillRecords, DrawsTheLinesOfTheNewNumbers) {
    // 9, 2 and 4 become 1, 2 and 3: the line is the greater number's.
    EXPECT_THAT(filled(found("9 9 2 2\n"
                             "9 4 4 2"))
                    .lines,
                MatEq(labels(". . 255 .\n"
                             ". 255 255 .")));
}

cv::Rect boxOf(const cv::Mat& mask) {
    std::vector<cv::Point> pixels;
    cv::findNonZero(mask, pixels);
    cv::Rect box;
    for (const cv::Point& pixel : pixels) box |= cv::Rect(pixel.x, pixel.y, 1, 1);
    return box;
}

TEST(FillRecords, AgreesWithThePlainVersions) {
    test::RandomImages random(11);
    for (int run = 0; run < 40; ++run) {
        const cv::Size size(1 + random.below(120), 1 + random.below(60));
        cv::Mat labels;
        random.patches(size, 1 + random.below(20), 0).convertTo(labels, CV_32S, 1000.0);
        cv::Mat numbered = labels.clone();
        reference::numberInPlace(numbered);
        const Rooms rooms = filled({labels, {}, {}, {}, {}, 1.0});
        ASSERT_THAT(rooms.labels, MatEq(numbered));
        EXPECT_THAT(rooms.lines, MatEq(reference::linesBetween(rooms.labels)));
        const auto widest = reference::widestPixels(rooms.labels);
        ASSERT_EQ(rooms.rooms.size(), widest.size());
        for (const Room& room : rooms.rooms) {
            const cv::Mat mask = rooms.labels == room.label;
            EXPECT_EQ(room.pixel_count, cv::countNonZero(mask));
            EXPECT_EQ(room.box, boxOf(mask));
            EXPECT_EQ(cv::Point(room.position.pixel), widest.at(room.label));
        }
    }
}

TEST(FillRecords, BoxesHoldAllPiecesOfARoom) {
    const Rooms rooms =
        filled(found(". 5 . . .\n"
                     "5 . . . 5\n"
                     ". . 5 . ."));
    EXPECT_EQ(rooms.rooms.at(0).box, cv::Rect(0, 0, 5, 3));
}

TEST(FillRecords, TellsPlacesInMetresWithYUp) {
    // The middle of the bottom row's second pixel: 1.5 pixels right and half a pixel up.
    const Rooms rooms = filled(found(". . .\n"
                                     ". 4 ."),
                               0.2, {10.0, -3.0, 0.0});
    EXPECT_EQ(rooms.rooms.at(0).position.pixel, cv::Point2d(1, 1));
    expectNear(rooms.rooms.at(0).position.metres, {10.3, -2.9});
}

TEST(FillRecords, TurnsPlacesAboutTheOrigin) {
    // A quarter turn counterclockwise: right becomes up, up becomes left.
    const Rooms rooms = filled(found(". . .\n"
                                     ". 4 ."),
                               0.2, {10.0, -3.0, std::acos(0.0)});
    expectNear(rooms.rooms.at(0).position.metres, {9.9, -2.7});
}

TEST(FillRecords, RenamesBordersAndSortsThem) {
    // 9, 4 and 2 become 1, 2 and 3.
    FoundRooms rooms_found = found("9 9 4 4 2 2", {Edge(2, 4), Edge(4, 9)});
    GraphProcessor::OptimalLine line{};
    line.center = {3.5F, 0.0F};
    line.start = {3.5F, -4.0F};
    line.end = {3.5F, 5.0F};
    line.angle = 90.0F;
    line.effective_length = 9.0F;
    line.direction_weight = 1.5F;
    line.score = 6.0F;
    rooms_found.cuts.emplace(Edge(2, 4), line);
    const Rooms rooms = filled(rooms_found);

    ASSERT_THAT(rooms.borders, SizeIs(2));
    EXPECT_EQ(rooms.borders[0].first, 1);
    EXPECT_EQ(rooms.borders[0].second, 2);
    EXPECT_DOUBLE_EQ(rooms.borders[0].length_m, 0.1);
    EXPECT_FALSE(rooms.borders[0].door.has_value());
    EXPECT_EQ(rooms.borders[1].first, 2);
    EXPECT_EQ(rooms.borders[1].second, 3);
    ASSERT_TRUE(rooms.borders[1].door.has_value());
    const Door& door = *rooms.borders[1].door;
    EXPECT_EQ(door.center.pixel, cv::Point2d(3.5, 0.0));
    EXPECT_EQ(door.start.pixel, cv::Point2d(3.5, -4.0));
    EXPECT_EQ(door.end.pixel, cv::Point2d(3.5, 5.0));
    // One row of pixels: the image's middle row is half a pixel up.
    expectNear(door.start.metres, {4 * 0.05, 4.5 * 0.05});
    expectNear(door.end.metres, {4 * 0.05, -4.5 * 0.05});
    EXPECT_DOUBLE_EQ(door.angle, 90.0);
    EXPECT_DOUBLE_EQ(door.length_m, 9.0 * 0.05);
    EXPECT_DOUBLE_EQ(door.weight, 1.5);
    EXPECT_DOUBLE_EQ(door.score_m, 6.0 * 0.05);

    EXPECT_THAT(rooms.rooms[0].neighbours, ElementsAre(2));
    EXPECT_THAT(rooms.rooms[1].neighbours, ElementsAre(1, 3));
    EXPECT_THAT(rooms.rooms[2].neighbours, ElementsAre(2));
    EXPECT_THAT(rooms.graph.nodes(), SizeIs(3));
    EXPECT_DOUBLE_EQ(rooms.graph.getEdgeData(2, 3).length, 0.05);
    EXPECT_EQ(rooms.graph.getNodeData(3).position, cv::Point(4, 0));
    EXPECT_DOUBLE_EQ(rooms.graph.getNodeData(3).area, 2 * 0.05 * 0.05);
}

TEST(FillRecords, BringsPlacesFromTheWorkingResolutionToTheMap) {
    // Two pixels of the map per working pixel: the working pixel 1 is the map's 2 and 3.
    FoundRooms finer = found("8 8 8 8\n8 8 8 8");
    finer.scale = 2.0;
    finer.islands.push_back({0.5, cv::Point(1, 0)});
    const Rooms rooms = filled(finer, 0.025);
    ASSERT_THAT(rooms.islands, SizeIs(1));
    EXPECT_DOUBLE_EQ(rooms.islands[0].area_m2, 0.5);
    EXPECT_EQ(rooms.islands[0].position.pixel, cv::Point2d(2.5, 0.5));
    expectNear(rooms.islands[0].position.metres, {1.5 * 0.05, 0.5 * 0.05});

    // The working pixel 3 is the right half of the map's pixel 1.
    FoundRooms coarser = found("8 8");
    coarser.scale = 0.5;
    coarser.islands.push_back({0.5, cv::Point(3, 0)});
    EXPECT_EQ(filled(coarser, 0.1).islands.at(0).position.pixel, cv::Point2d(1.25, -0.25));
}

TEST(FillRecords, LeavesOutBordersOfRoomsThatLostAllTheirPixels) {
    FoundRooms rooms_found = found("3 3 . 6", {Edge(3, 6)});
    rooms_found.graph.addNode(5, {1.0, {0, 0}});
    rooms_found.graph.addEdge(3, 5, {0.05});
    const Rooms rooms = filled(rooms_found);
    EXPECT_THAT(rooms.rooms, SizeIs(2));
    ASSERT_THAT(rooms.borders, SizeIs(1));
    EXPECT_EQ(rooms.borders[0].second, 2);
}

TEST(FillRecords, TakesMapsWithoutRooms) {
    const Rooms rooms = filled(found(". .\n. ."));
    EXPECT_THAT(rooms.rooms, IsEmpty());
    EXPECT_THAT(rooms.borders, IsEmpty());
    EXPECT_THAT(rooms.graph.nodes(), IsEmpty());
    EXPECT_THAT(rooms.labels, MatEq(labels32(". .\n. .")));
}

TEST(RoomAt, KnowsTheRoomOfAPixel) {
    const Rooms rooms =
        filled(found("6 6 .\n"
                     ". 2 2"));
    EXPECT_EQ(rooms.roomAt(cv::Point(0, 0)), 1);
    EXPECT_EQ(rooms.roomAt(cv::Point(2, 0)), 0);
    EXPECT_EQ(rooms.roomAt(cv::Point(2, 1)), 2);
    for (const cv::Point& outside : {cv::Point(-1, 0), {0, -1}, {3, 1}, {0, 2}}) {
        EXPECT_EQ(rooms.roomAt(outside), 0) << outside;
    }
}

TEST(RoomAt, KnowsTheRoomOfAPointInMetres) {
    const Rooms rooms = filled(found("6 6 .\n"
                                     ". 2 2"),
                               0.5, {100.0, 200.0, 0.0});
    EXPECT_EQ(rooms.roomAt(cv::Point2d(100.25, 200.75)), 1);
    EXPECT_EQ(rooms.roomAt(cv::Point2d(100.25, 200.25)), 0);
    EXPECT_EQ(rooms.roomAt(cv::Point2d(101.25, 200.25)), 2);
    EXPECT_EQ(rooms.roomAt(cv::Point2d(101.75, 200.25)), 0);
    EXPECT_EQ(rooms.roomAt(cv::Point2d(99.75, 200.75)), 0);
}

TEST(RoomAt, KnowsNoRoomHoweverFarFromTheMap) {
    const Rooms rooms = filled(found("6 6"));
    const double nowhere = std::numeric_limits<double>::quiet_NaN();
    for (const cv::Point2d& far : {cv::Point2d(1e12, 0.0), {0.0, -1e300}, {nowhere, nowhere}}) {
        EXPECT_NO_THROW(EXPECT_EQ(rooms.roomAt(far), 0)) << far;
    }
}

TEST(RoomAt, KnowsNoRoomWithoutAMap) {
    EXPECT_EQ(Rooms().roomAt(cv::Point(0, 0)), 0);
    EXPECT_EQ(Rooms().roomAt(cv::Point2d(0.01, 0.01)), 0);
}

}  // namespace
}  // namespace vorund::rooms
