#include "room_messages.h"

#include <gmock/gmock.h>

#include "drawn_maps.h"
#include "vorund/rooms/map_reader.h"

namespace vorund_ros {
namespace {

using test::foundOf;
using test::mapFor;
using test::roomsOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr double kPi = 3.14159265358979323846;

const cv::Mat kTwoRooms = (cv::Mat_<std::int32_t>(2, 3) << 1, 1, 0,  //
                           0, 2, 2);

geometry_msgs::Point pointAt(double x, double y) {
    geometry_msgs::Point point;
    point.x = x;
    point.y = y;
    return point;
}

/// Rooms 1 to `count` in a row, a pixel each.
cv::Mat rowOfRooms(int count) {
    cv::Mat labels(1, count, CV_32SC1);
    for (int i = 0; i < count; ++i) labels.at<std::int32_t>(0, i) = i + 1;
    return labels;
}

TEST(ToMessages, GivesTheLabelsAsAnUprightImageOfSixteenBits) {
    const FoundRooms found = foundOf(kTwoRooms);
    EXPECT_EQ(found.labels.encoding, "mono16");
    EXPECT_EQ(found.labels.width, 3U);
    EXPECT_EQ(found.labels.height, 2U);
    EXPECT_EQ(found.labels.step, 6U);
    EXPECT_THAT(found.labels.data, ElementsAre(1, 0, 1, 0, 0, 0, 0, 0, 2, 0, 2, 0));
    EXPECT_TRUE(isConsistent(found));
}

TEST(ToMessages, KeepsLabelsAbove255) {
    const FoundRooms found = foundOf(rowOfRooms(300));
    EXPECT_EQ(labelAt(found.labels, 0, 299), 300);
    EXPECT_EQ(labelAt(found.labels, 0, 255), 256);
}

TEST(ToMessages, RefusesMoreRoomsThanSixteenBitsNumber) {
    EXPECT_NO_THROW(foundOf(rowOfRooms(65535)));
    EXPECT_THAT([] { foundOf(rowOfRooms(65536)); },
                ::testing::ThrowsMessage<vorund::rooms::MapError>(
                    "too many rooms: 65536, at most 65535 can be numbered"));
}

TEST(ToMessages, GivesOutlinesInTheTurnedMapFrame) {
    auto rooms = roomsOf((cv::Mat_<std::int32_t>(1, 2) << 0, 1), 2.0);
    auto map = mapFor(rooms);
    test::turn(map, 10.0, 20.0, kPi / 2);
    rooms.origin = {10.0, 20.0, kPi / 2};
    const FoundRooms found = toMessages(rooms, map, "hash");
    ASSERT_THAT(found.graph.rooms, SizeIs(1));
    ASSERT_THAT(found.graph.rooms[0].pieces, SizeIs(1));
    EXPECT_THAT(found.graph.rooms[0].pieces[0].holes, IsEmpty());
    // Before the turn the room is [2, 4] x [0, 2]; a quarter to the left makes it [-2, 0] x [2, 4].
    double left = 1e9, right = -1e9, bottom = 1e9, top = -1e9;
    const auto& corners = found.graph.rooms[0].pieces[0].outer.corners;
    ASSERT_THAT(corners, SizeIs(4));
    for (const auto& corner : corners) {
        left = std::min(left, corner.x);
        right = std::max(right, corner.x);
        bottom = std::min(bottom, corner.y);
        top = std::max(top, corner.y);
    }
    EXPECT_NEAR(left, 8.0, 1e-9);
    EXPECT_NEAR(right, 10.0, 1e-9);
    EXPECT_NEAR(bottom, 22.0, 1e-9);
    EXPECT_NEAR(top, 24.0, 1e-9);
}

TEST(ToMessages, GivesAHoleToARoomAroundAPillar) {
    const FoundRooms found = foundOf((cv::Mat_<std::int32_t>(3, 3) << 1, 1, 1,  //
                                      1, 0, 1,                                  //
                                      1, 1, 1));
    ASSERT_THAT(found.graph.rooms[0].pieces, SizeIs(1));
    ASSERT_THAT(found.graph.rooms[0].pieces[0].holes, SizeIs(1));
    EXPECT_THAT(found.graph.rooms[0].pieces[0].holes[0].corners, SizeIs(4));
}

TEST(ToMessages, GivesBordersWithAndWithoutADoor) {
    auto rooms = roomsOf(kTwoRooms, 1.0);
    vorund::rooms::Door door{};
    door.start.metres = {1.0, 2.0};
    door.center.metres = {1.5, 2.0};
    door.end.metres = {2.0, 2.0};
    door.length_m = 1.0;
    rooms.borders = {{1, 2, 1.25, door}, {1, 2, 0.5, std::nullopt}};
    rooms.rooms[0].neighbours = {2};
    rooms.unreached_pixels = 3;
    const auto graph = toMessages(rooms, mapFor(rooms), "hash").graph;
    ASSERT_THAT(graph.borders, SizeIs(2));
    EXPECT_TRUE(graph.borders[0].has_door);
    EXPECT_DOUBLE_EQ(graph.borders[0].length, 1.25);
    EXPECT_DOUBLE_EQ(graph.borders[0].door_center.x, 1.5);
    EXPECT_DOUBLE_EQ(graph.borders[0].door_width, 1.0);
    EXPECT_FALSE(graph.borders[1].has_door);
    EXPECT_DOUBLE_EQ(graph.borders[1].door_width, 0.0);
    EXPECT_THAT(graph.rooms[0].neighbours, ElementsAre(2));
    EXPECT_DOUBLE_EQ(graph.rooms[0].area, 2.0);
    EXPECT_DOUBLE_EQ(graph.unreached_area, 3.0);
    EXPECT_EQ(graph.map_hash, "hash");
}

TEST(ToCells, PutsTheLowerRowFirstAndNoRoomAsUnknown) {
    const nav_msgs::OccupancyGrid cells = toCells(foundOf(kTwoRooms));
    EXPECT_EQ(cells.info.width, 3U);
    EXPECT_EQ(cells.info.height, 2U);
    EXPECT_THAT(cells.data, ElementsAre(-1, 2, 2, 1, 1, -1));
}

TEST(ToCells, NumbersUpToAHundredRooms) {
    const FoundRooms found = foundOf(rowOfRooms(100));
    EXPECT_TRUE(found.graph.cells_are_labels);
    const auto cells = toCells(found);
    for (std::size_t i = 0; i < 100; ++i) EXPECT_EQ(cells.data[i], static_cast<int>(i) + 1);
}

TEST(ToCells, BeginsAnewAfterAHundredAndSaysSo) {
    const FoundRooms found = foundOf(rowOfRooms(201));
    EXPECT_FALSE(found.graph.cells_are_labels);
    const auto cells = toCells(found);
    EXPECT_EQ(cells.data[99], 100);
    EXPECT_EQ(cells.data[100], 1);
    EXPECT_EQ(cells.data[199], 100);
    EXPECT_EQ(cells.data[200], 1);
}

TEST(RoomAt, FindsThePixelInATurnedMap) {
    auto rooms = roomsOf(kTwoRooms, 1.0);
    auto map = mapFor(rooms);
    test::turn(map, 10.0, 20.0, kPi / 2);  // Up in the picture is left in the frame.
    const FoundRooms found = toMessages(rooms, map, "hash");
    EXPECT_EQ(roomAt(found, pointAt(9.5, 20.5)), 0);  // Lower row, first column.
    EXPECT_EQ(roomAt(found, pointAt(9.5, 21.5)), 2);
    EXPECT_EQ(roomAt(found, pointAt(8.5, 20.5)), 1);  // Upper row.
    EXPECT_EQ(roomAt(found, pointAt(8.5, 22.5)), 0);
}

TEST(RoomAt, KnowsNoRoomOutsideOfTheMap) {
    const FoundRooms found = foundOf(cv::Mat_<std::int32_t>::ones(2, 2));
    EXPECT_EQ(roomAt(found, pointAt(1.0, 1.0)), 1);
    for (const auto& point : {pointAt(-0.1, 1), pointAt(2.1, 1), pointAt(1, -0.1), pointAt(1, 2.1),
                              pointAt(1e300, 0), pointAt(std::nan(""), 0)}) {
        EXPECT_EQ(roomAt(found, point), 0);
    }
}

TEST(IsConsistent, NoticesPartsThatDoNotFit) {
    const auto rejects = [](auto change) {
        FoundRooms found = foundOf(kTwoRooms);
        change(found);
        EXPECT_FALSE(isConsistent(found));
    };
    rejects([](FoundRooms& found) { found.labels.data.pop_back(); });
    rejects([](FoundRooms& found) { found.labels.encoding = "mono8"; });
    rejects([](FoundRooms& found) { found.labels.step = 3; });
    rejects([](FoundRooms& found) { found.graph.info.width = 2; });
    rejects([](FoundRooms& found) { found.labels.data[0] = 3; });
    rejects([](FoundRooms& found) { found.graph.rooms.pop_back(); });
    rejects([](FoundRooms& found) { found.graph.rooms[0].label = 2; });
    rejects([](FoundRooms& found) { found.graph.rooms[0].neighbours = {3}; });
    rejects([](FoundRooms& found) { found.graph.borders.resize(1); });
    rejects([](FoundRooms& found) {
        found.labels = {};
        found.graph.info.width = found.graph.info.height = 0;
    });
}

}  // namespace
}  // namespace vorund_ros
