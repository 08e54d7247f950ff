// Properties of whole runs, on generated floor plans.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "flow/separators.h"
#include "flow_run.h"
#include "support/consistency.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::Contains;
using ::testing::SizeIs;

GridMap planOf(int seed, int resolution_um = 50000, int noise_percent = 0) {
    test::PlanOptions options;
    options.seed = static_cast<std::uint64_t>(seed);
    options.width_mm = 12000 + 500 * (seed % 5);
    options.height_mm = 9000 + 500 * (seed % 3);
    options.resolution_um = resolution_um;
    options.furniture_percent = seed % 2 == 0 ? 60 : 0;
    options.fans_percent = seed % 3 == 0 ? 30 : 0;
    options.glass_percent = seed % 4 == 0 ? 30 : 0;
    options.rotation_tenths_deg = seed % 5 == 0 ? 170 : 0;
    options.noise_percent = noise_percent;
    const cv::Mat walls = test::makePlan(options).map != test::kMapFree;
    return mapOf(walls, resolution_um * 1e-6);
}

std::set<int> nodesOf(const RoomGraph& rooms) {
    std::set<int> nodes;
    for (const auto& node : rooms.graph.nodes()) nodes.insert(node.first);
    return nodes;
}

void expectRecordsOfTheLabels(const Rooms& rooms) {
    ASSERT_EQ(rooms.labels.type(), CV_32SC1);
    int last = 0;
    std::vector<std::int64_t> pixels(rooms.rooms.size() + 1, 0);
    for (const int label : cv::Mat_<std::int32_t>(rooms.labels)) {
        ASSERT_GE(label, 0);
        ASSERT_LE(label, last + 1) << "numbered in reading order, without gaps";
        last = std::max(last, label);
        ASSERT_LE(last, static_cast<int>(rooms.rooms.size()));
        ++pixels[static_cast<std::size_t>(label)];
    }
    ASSERT_THAT(rooms.rooms, SizeIs(static_cast<std::size_t>(last)));
    for (std::size_t i = 0; i < rooms.rooms.size(); ++i) {
        const Room& room = rooms.rooms[i];
        EXPECT_EQ(room.label, static_cast<int>(i) + 1);
        EXPECT_EQ(room.pixel_count, pixels[i + 1]);
        EXPECT_NEAR(room.area_m2,
                    static_cast<double>(room.pixel_count) * rooms.resolution * rooms.resolution,
                    1e-9);
        EXPECT_EQ(rooms.roomAt(cv::Point(room.position.pixel)), room.label);
        EXPECT_EQ(rooms.roomAt(room.position.metres), room.label);
        const cv::Mat inside = rooms.labels(room.box) == room.label;
        EXPECT_EQ(cv::countNonZero(inside), room.pixel_count);
        for (const cv::Mat& side : {inside.row(0), inside.row(inside.rows - 1), inside.col(0),
                                    inside.col(inside.cols - 1)}) {
            EXPECT_GT(cv::countNonZero(side), 0) << "the box is the smallest";
        }
    }
}

void expectGraphOfTheRecords(const Rooms& rooms) {
    ASSERT_EQ(rooms.graph.nodes().size(), rooms.rooms.size());
    for (const Room& room : rooms.rooms) {
        const NodeData& node = rooms.graph.getNodeData(room.label);
        EXPECT_DOUBLE_EQ(node.area, room.area_m2);
        EXPECT_EQ(cv::Point2d(node.position), room.position.pixel);
        const std::set<int>& neighbours = rooms.graph.getNeighbors(room.label);
        EXPECT_EQ(room.neighbours, std::vector<int>(neighbours.begin(), neighbours.end()));
        for (const int other : room.neighbours) {
            EXPECT_NE(other, room.label);
            EXPECT_THAT(rooms.rooms.at(static_cast<std::size_t>(other - 1)).neighbours,
                        Contains(room.label));
        }
    }
    ASSERT_EQ(rooms.graph.edges().size(), rooms.borders.size());
    auto border = rooms.borders.begin();
    for (const auto& [edge, data] : rooms.graph.edges()) {
        EXPECT_EQ(Edge(border->first, border->second), edge);
        EXPECT_LT(border->first, border->second);
        EXPECT_DOUBLE_EQ(border->length_m, data.length);
        ++border;
    }
}

void expectDoorsNearTheirRooms(const Rooms& rooms) {
    for (const Border& border : rooms.borders) {
        if (!border.door.has_value()) continue;
        const Door& door = *border.door;
        EXPECT_NEAR(cv::norm(door.start.metres - door.end.metres), door.length_m, 1e-4);
        EXPECT_NEAR(cv::norm(door.start.pixel - door.end.pixel) * rooms.resolution, door.length_m,
                    1e-4);
        EXPECT_NEAR(door.score_m * door.weight, door.length_m, 1e-9);
        EXPECT_GE(door.angle, 0.0);
        EXPECT_LE(door.angle, 170.0);
    }
}

/// Also of a map at another resolution than the working one.
void expectMasksThatTell(const Rooms& rooms, const GridMap& map) {
    ASSERT_EQ(rooms.lines.type(), CV_8UC1);
    ASSERT_EQ(rooms.unreached.type(), CV_8UC1);
    ASSERT_EQ(rooms.lines.size(), map.values.size());
    ASSERT_EQ(rooms.unreached.size(), map.values.size());
    EXPECT_EQ(cv::countNonZero(rooms.lines & rooms.unreached), 0);
    EXPECT_EQ(cv::countNonZero(rooms.lines & (rooms.labels == 0)), 0)
        << "the pixels of lines belong to rooms";
    EXPECT_EQ(cv::countNonZero(rooms.unreached & (rooms.labels != 0)), 0);
    EXPECT_EQ(rooms.unreached_pixels, cv::countNonZero(rooms.unreached));
    EXPECT_EQ(cv::countNonZero((rooms.lines != 0) & (rooms.lines != 255)), 0);
}

test::RegionMap regionMap(const RoomGraph& rooms) {
    return {rooms.graph, rooms.labels, rooms.borders, rooms.border_ids};
}

void expectConsistentSteps(const Told& told) {
    ASSERT_GE(told.steps.size(), 3U);
    const std::vector<RoomGraph>& steps = told.intermediate;
    const test::RegionTotals separated = test::regionTotals(regionMap(steps[0]), kLine);
    EXPECT_TRUE(test::isConsistent(regionMap(steps[0]), kLine, separated));
    const test::RegionTotals kept = test::regionTotals(regionMap(steps[1]), kLine);
    for (std::size_t step = 1; step < steps.size(); ++step) {
        EXPECT_TRUE(test::isConsistent(regionMap(steps[step]), kLine, kept)) << told.steps[step];
    }
}

/// What `doSegment` labelled and no island took is in rooms, one room for each label.
void expectARoomForEveryLabel(const Told& told, const Rooms& rooms) {
    const std::set<int> before = nodesOf(told.intermediate.at(0));
    const std::set<int> kept = nodesOf(told.intermediate.at(1));
    std::map<int, int> room_of;
    for (int row = 0; row < told.segmented.rows; ++row) {
        for (int col = 0; col < told.segmented.cols; ++col) {
            const int label = told.segmented.at<std::uint8_t>(row, col);
            const int room = rooms.labels.at<std::int32_t>(row, col);
            EXPECT_EQ(label == 255, rooms.unreached.at<std::uint8_t>(row, col) == 255);
            if (label == 0 || label == 255) {
                EXPECT_EQ(room, 0);
                continue;
            }
            EXPECT_EQ(room_of.emplace(label, room).first->second, room) << "label " << label;
            if (kept.count(label) > 0) {
                EXPECT_NE(room, 0) << "label " << label;
            } else if (before.count(label) > 0) {
                EXPECT_EQ(room, 0) << "label " << label;
            }
        }
    }
    double removed = 0.0;
    for (const auto& [label, data] : told.intermediate[0].graph.nodes()) {
        if (kept.count(label) == 0) removed += data.area;
    }
    double listed = 0.0;
    for (const Island& island : rooms.islands) listed += island.area_m2;
    EXPECT_NEAR(listed, removed, 1e-9);
    EXPECT_EQ(rooms.rooms.size(), told.intermediate.back().graph.nodes().size());
}

/// Whether another room lies around each pixel of the lines.
void expectLinesWhereRoomsTouch(const Rooms& rooms) {
    const cv::Rect whole({0, 0}, rooms.labels.size());
    int elsewhere = 0;
    for (int row = 0; row < rooms.labels.rows; ++row) {
        for (int col = 0; col < rooms.labels.cols; ++col) {
            if (rooms.lines.at<std::uint8_t>(row, col) == 0) continue;
            const int own = rooms.labels.at<std::int32_t>(row, col);
            const cv::Mat around = rooms.labels(cv::Rect(col - 1, row - 1, 3, 3) & whole);
            if (cv::countNonZero((around != 0) & (around != own)) == 0) ++elsewhere;
        }
    }
    EXPECT_EQ(elsewhere, 0) << "of " << cv::countNonZero(rooms.lines);
}

class FindRoomsOfPlans : public FindRooms, public ::testing::WithParamInterface<int> {};

TEST_P(FindRoomsOfPlans, GivesLabelsGraphAndRecordsThatAgree) {
    const GridMap map = planOf(GetParam());
    Told told;
    const Rooms rooms = find(map, {}, observerOf(told));
    EXPECT_FALSE(rooms.rooms.empty());
    expectRecordsOfTheLabels(rooms);
    expectGraphOfTheRecords(rooms);
    expectDoorsNearTheirRooms(rooms);
    expectMasksThatTell(rooms, map);
    expectConsistentSteps(told);
    expectARoomForEveryLabel(told, rooms);
    expectLinesWhereRoomsTouch(rooms);
}

TEST_P(FindRoomsOfPlans, AgreesAlsoWhenItsThresholdsMergeAndRemoveALot) {
    const GridMap map = planOf(GetParam());
    Settings settings = byPasses();
    settings.core.merge_nodes_in_place.area_threshold = 8.0;
    settings.core.merge_edges_in_place.length_threshold = 0.85;
    Told told;
    const Rooms rooms = find(map, settings, observerOf(told));
    expectRecordsOfTheLabels(rooms);
    expectGraphOfTheRecords(rooms);
    expectMasksThatTell(rooms, map);
    expectConsistentSteps(told);
    expectARoomForEveryLabel(told, rooms);
    expectLinesWhereRoomsTouch(rooms);
}

TEST_P(FindRoomsOfPlans, GivesTheSameOnASecondRun) {
    const GridMap map = planOf(GetParam());
    const cv::Mat values = map.values.clone();
    Told told;
    const Rooms first = find(map);
    const Rooms second = find(map, {}, observerOf(told));
    EXPECT_THAT(map.values, MatEq(values)) << "the map is left as it was";
    EXPECT_THAT(second.labels, MatEq(first.labels));
    EXPECT_THAT(second.lines, MatEq(first.lines));
    EXPECT_THAT(second.unreached, MatEq(first.unreached));
    ASSERT_EQ(second.borders.size(), first.borders.size());
    for (std::size_t i = 0; i < first.borders.size(); ++i) {
        ASSERT_EQ(second.borders[i].door.has_value(), first.borders[i].door.has_value());
        if (!first.borders[i].door.has_value()) continue;
        EXPECT_EQ(second.borders[i].door->start.metres, first.borders[i].door->start.metres);
        EXPECT_EQ(second.borders[i].door->end.metres, first.borders[i].door->end.metres);
    }
}

TEST_P(FindRoomsOfPlans, StraightensBordersWithoutLosingARoomOrAPixel) {
    const GridMap map = planOf(GetParam());
    Settings settings;
    settings.rooms.straight_borders = true;
    const Rooms plain = find(map);
    const Rooms straight = find(map, settings);
    expectRecordsOfTheLabels(straight);
    expectGraphOfTheRecords(straight);
    expectMasksThatTell(straight, map);
    EXPECT_EQ(straight.rooms.size(), plain.rooms.size());
    EXPECT_EQ(straight.borders.size(), plain.borders.size());
    EXPECT_THAT(straight.labels != 0, MatEq(plain.labels != 0));
    EXPECT_THAT(straight.unreached, MatEq(plain.unreached));
    expectLinesWhereRoomsTouch(straight);
}

TEST_P(FindRoomsOfPlans, AgreesAtEveryResolutionAndOrigin) {
    for (const int resolution_um : {25000, 50000, 100000}) {
        SCOPED_TRACE(resolution_um);
        GridMap map = planOf(GetParam(), resolution_um, 20);
        map.origin = {-3.2, 41.7, 0.7 + GetParam()};
        const Rooms rooms = find(map);
        EXPECT_FALSE(rooms.rooms.empty());
        EXPECT_EQ(rooms.resolution, map.resolution);
        EXPECT_EQ(rooms.origin.yaw, map.origin.yaw);
        expectRecordsOfTheLabels(rooms);
        expectGraphOfTheRecords(rooms);
        expectDoorsNearTheirRooms(rooms);
        expectMasksThatTell(rooms, map);
        const cv::Mat walls = map.values > 0.5;
        if (resolution_um == 50000) continue;
        EXPECT_EQ(cv::countNonZero(rooms.unreached & walls), 0) << "unreached is floor";
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FindRoomsOfPlans, ::testing::Range(1, 21));

}  // namespace
}  // namespace vorund::rooms
