#include "vorund/rooms/find_rooms.h"

#include <gmock/gmock.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "flow_run.h"
#include "support/drawn_plans.h"
#include "support/mat_matchers.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

TEST_F(FindRooms, FindsTwoRoomsAndTheDoorBetweenThem) {
    const test::DrawnPlan plan = test::twoRooms();
    const Rooms rooms = find(mapOf(plan.map));
    ASSERT_THAT(rooms.rooms, SizeIs(2));
    for (std::size_t i = 0; i < plan.inside.size(); ++i) {
        EXPECT_EQ(rooms.roomAt(plan.inside[i]), plan.room_of[i] + 1);
    }
    EXPECT_THAT(rooms.labels != 0, MatEq(plan.map == 0.0)) << "all floor is in a room";
    EXPECT_THAT(rooms.islands, IsEmpty());
    EXPECT_EQ(rooms.unreached_pixels, 0);
    ASSERT_THAT(rooms.borders, SizeIs(1));
    ASSERT_TRUE(rooms.borders[0].door.has_value());
    const Door& door = *rooms.borders[0].door;
    // The doorway has 18 pixels, so that a straight line across it has 17 steps.
    EXPECT_DOUBLE_EQ(door.angle, 90.0);
    EXPECT_NEAR(door.length_m, 0.85, 1e-6);
    const int left_end = plan.rooms[0].x + plan.rooms[0].width;
    EXPECT_GE(door.center.pixel.x, left_end - 2);
    EXPECT_LE(door.center.pixel.x, plan.rooms[1].x + 1);
    // Halves of pixels count upwards, so that the cut's ends lie on the doorway's outermost floor.
    const auto rowOf = [](const Place& end) { return static_cast<int>(std::lround(end.pixel.y)); };
    const std::set<int> rows{rowOf(door.start), rowOf(door.end)};
    const int door_top = plan.rooms[0].y + (plan.rooms[0].height - 18) / 2;
    EXPECT_THAT(rows, ElementsAre(door_top, door_top + 17));
}

TEST_F(FindRooms, TellsAllSteps) {
    Told told;
    FlowObserver observer = observerOf(told);
    std::vector<std::string> progress;
    observer.progress = [&](const std::string& step, int, int) {
        if (progress.empty() || progress.back() != step) progress.push_back(step);
        return true;
    };
    const GridMap map = mapOf(test::twoRooms().map);
    const Rooms heard = find(map, {}, observer);
    EXPECT_THAT(progress, ElementsAre(kStageDenoise, kStageDilate, kStageRidges, kStageScales,
                                      kStageOverSegment, kStageFill, kStageRestore, kStageFinished,
                                      kStepSeparate, kStepIslands, kStepMergePassages, kStepCuts));
    EXPECT_THAT(told.steps, ElementsAre("separate", "islands", "merge-passages"));
    ASSERT_THAT(told.pictures, SizeIs(3));
    for (const std::string name : {"borders", "graph", "cuts"}) {
        ASSERT_EQ(told.pictures.count(name), 1U) << name;
        EXPECT_EQ(told.pictures[name].type(), CV_8UC3);
        EXPECT_EQ(told.pictures[name].size(), map.values.size());
    }
    EXPECT_THAT(find(map).labels, MatEq(heard.labels)) << "hearing changes nothing";
}

TEST_F(FindRooms, TellsBothPasses) {
    Told told;
    find(mapOf(test::twoRooms().map), byPasses(), observerOf(told));
    EXPECT_THAT(told.steps, ElementsAre("separate", "islands", "merge-nodes", "merge-edges"));
}

TEST_F(FindRooms, CancelsAtEveryCall) {
    const GridMap map = mapOf(test::twoRooms().map);
    int calls = 0;
    FlowObserver observer;
    observer.progress = [&](const std::string&, int, int) { return ++calls > 0; };
    const Rooms expected = find(map, {}, observer);
    const int all = calls;
    ASSERT_GT(all, 12);
    for (int last = 1; last <= all; ++last) {
        calls = 0;
        observer.progress = [&](const std::string&, int, int) { return ++calls < last; };
        EXPECT_THROW(find(map, {}, observer), Cancelled) << last;
        EXPECT_EQ(calls, last);
    }
    EXPECT_THAT(find(map).labels, MatEq(expected.labels));
    EXPECT_THAT(dir_.names(), IsEmpty());
}

TEST_F(FindRooms, TellsAnIslandThatItRemoved) {
    // A room of 2 m by 2 m that no door joins to the hall, and a threshold of 5 m^2.
    cv::Mat walls(160, 260, CV_32FC1, cv::Scalar(1.0));
    walls(cv::Rect(30, 30, 100, 100)) = 0.0;
    walls(cv::Rect(180, 40, 40, 40)) = 0.0;
    Settings settings;
    settings.rooms.least_area = 5.0;
    settings.rooms.closed_floor = 1.0;
    const Rooms rooms = find(mapOf(walls), settings);
    ASSERT_THAT(rooms.rooms, SizeIs(1));
    EXPECT_EQ(rooms.rooms[0].box, cv::Rect(30, 30, 100, 100));
    EXPECT_EQ(rooms.rooms[0].pixel_count, 10000);
    ASSERT_THAT(rooms.islands, SizeIs(1));
    EXPECT_NEAR(rooms.islands[0].area_m2, 4.0, 1e-9);
    EXPECT_EQ(rooms.islands[0].position.pixel, cv::Point2d(180, 40));
    EXPECT_EQ(rooms.roomAt(cv::Point(200, 60)), 0);

    settings.rooms.least_area = 4.0 - 1e-6;
    EXPECT_THAT(find(mapOf(walls), settings).rooms, SizeIs(2));

    settings = byPasses();
    settings.core.merge_nodes_in_place.area_threshold = 5.0;
    EXPECT_THAT(find(mapOf(walls), settings).islands, SizeIs(1));
    settings.core.merge_nodes_in_place.area_threshold = 4.0 - 1e-6;
    EXPECT_THAT(find(mapOf(walls), settings).islands, SizeIs(0));
}

TEST_F(FindRooms, KeepsOneOfRoomsThatAreAllTooSmall) {
    Settings settings;
    settings.rooms.least_area = 1000.0;
    const Rooms rooms = find(mapOf(test::twoRooms().map), settings);
    EXPECT_THAT(rooms.rooms, SizeIs(1)) << "the smaller joins the larger";
    EXPECT_THAT(rooms.islands, IsEmpty());
}

TEST_F(FindRooms, MayRemoveAllRoomsBeforeItsPasses) {
    Settings settings = byPasses();
    settings.core.merge_nodes_in_place.area_threshold = 1000.0;
    const test::DrawnPlan plan = test::twoRooms();
    const Rooms rooms = find(mapOf(plan.map), settings);
    EXPECT_THAT(rooms.rooms, IsEmpty());
    EXPECT_THAT(rooms.borders, IsEmpty());
    EXPECT_THAT(rooms.islands, SizeIs(1));
    EXPECT_EQ(cv::countNonZero(rooms.labels), 0);
    EXPECT_EQ(cv::countNonZero(rooms.lines), 0);
    EXPECT_EQ(rooms.unreached_pixels, 0);
}

TEST_F(FindRooms, GivesAMapThatIsAllFloorOneRoom) {
    const GridMap map = mapOf(cv::Mat(40, 60, CV_32FC1, cv::Scalar(0.0)));
    const Rooms rooms = find(map);
    ASSERT_THAT(rooms.rooms, SizeIs(1));
    EXPECT_EQ(rooms.rooms[0].pixel_count, 2400);
    EXPECT_EQ(rooms.rooms[0].box, cv::Rect(0, 0, 60, 40));
    EXPECT_THAT(rooms.borders, IsEmpty());
}

/// Square rooms of 1.5 m in rows and columns, 0.2 m of wall between them, and doors of 0.7 m.
cv::Mat gridOfRooms(int side, bool doors) {
    constexpr int kPitch = 34;
    cv::Mat walls(side * kPitch + 30, side * kPitch + 30, CV_32FC1, cv::Scalar(1.0));
    for (int row = 0; row < side; ++row) {
        for (int col = 0; col < side; ++col) {
            const cv::Point corner(15 + col * kPitch, 15 + row * kPitch);
            walls(cv::Rect(corner, cv::Size(30, 30))) = 0.0;
            if (!doors) continue;
            if (col + 1 < side) walls(cv::Rect(corner.x + 30, corner.y + 8, 4, 14)) = 0.0;
            if (row + 1 < side) walls(cv::Rect(corner.x + 8, corner.y + 30, 14, 4)) = 0.0;
        }
    }
    return walls;
}

/// Nothing joins the pieces of wall between four doors to the rest: they are no clutter here.
Settings withAllWalls() {
    Settings settings;
    settings.rooms.clear_clutter = false;
    return settings;
}

TEST_F(FindRooms, FindsNeighboursInAGridOfRooms) {
    const Rooms rooms = find(mapOf(gridOfRooms(4, true)), withAllWalls());
    ASSERT_THAT(rooms.rooms, SizeIs(16));
    EXPECT_THAT(rooms.borders, SizeIs(24));
    // Numbered row by row, though doorways stand out of the rooms.
    EXPECT_EQ(rooms.rooms[0].neighbours, (std::vector<int>{2, 5}));
    EXPECT_EQ(rooms.rooms[5].neighbours, (std::vector<int>{2, 5, 7, 10}));
}

TEST_F(FindRooms, FindsMoreRoomsThanOneImageOf8BitsTellsApart) {
    const Rooms rooms = find(mapOf(gridOfRooms(16, true)), withAllWalls());
    EXPECT_THAT(rooms.rooms, SizeIs(16 * 16));
    EXPECT_EQ(rooms.blocks, 1) << "the map is small";
}

TEST_F(FindRooms, FindsMoreBordersThanOneImageOf8BitsTellsApart) {
    const Rooms rooms = find(mapOf(gridOfRooms(12, true)), withAllWalls());
    EXPECT_THAT(rooms.rooms, SizeIs(12 * 12));
    EXPECT_THAT(rooms.borders, SizeIs(2 * 12 * 11));
    for (const Border& border : rooms.borders) EXPECT_TRUE(border.door.has_value());
    EXPECT_EQ(rooms.blocks, 1) << "its rooms can be told apart";
}

TEST_F(FindRooms, RefusesAMapWithoutFloor) {
    const GridMap map = mapOf(cv::Mat(40, 60, CV_32FC1, cv::Scalar(1.0)));
    EXPECT_THAT([&] { find(map); }, ThrowsMessage<MapError>("no free floor found"));
}

}  // namespace
}  // namespace vorund::rooms
