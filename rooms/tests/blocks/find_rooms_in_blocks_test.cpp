// Whole runs in blocks that are far smaller than those of large maps.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "../flow/flow_run.h"
#include "support/drawn_plans.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/rooms/rooms_json.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

constexpr int kNoLimit = 64'000'000;
constexpr int kTiny = 40'000;  // 10 m x 10 m, of which a quarter is core.

Settings inBlocks(int block_pixels) {
    Settings settings;
    settings.rooms.blocks = "always";
    settings.rooms.block_pixels = block_pixels;
    return settings;
}

void expectSameRooms(const Rooms& actual, const Rooms& expected) {
    EXPECT_THAT(actual.labels, MatEq(expected.labels));
    EXPECT_THAT(actual.lines, MatEq(expected.lines));
    EXPECT_THAT(actual.unreached, MatEq(expected.unreached));
    ASSERT_EQ(actual.rooms.size(), expected.rooms.size());
    ASSERT_EQ(actual.borders.size(), expected.borders.size());
    for (std::size_t i = 0; i < expected.borders.size(); ++i) {
        EXPECT_EQ(actual.borders[i].length_m, expected.borders[i].length_m);
        ASSERT_EQ(actual.borders[i].door.has_value(), expected.borders[i].door.has_value());
        if (!expected.borders[i].door.has_value()) continue;
        EXPECT_EQ(actual.borders[i].door->start.pixel, expected.borders[i].door->start.pixel);
        EXPECT_EQ(actual.borders[i].door->end.pixel, expected.borders[i].door->end.pixel);
    }
}

/// The part of all pixels with a room in either whose room in one is mostly its room in the other,
/// and the other way round.
double agreement(const cv::Mat& a, const cv::Mat& b) {
    std::map<std::pair<int, int>, std::int64_t> common;
    std::int64_t all = 0;
    for (int row = 0; row < a.rows; ++row) {
        for (int col = 0; col < a.cols; ++col) {
            const int in_a = a.at<std::int32_t>(row, col);
            const int in_b = b.at<std::int32_t>(row, col);
            if (in_a == 0 && in_b == 0) continue;
            ++common[{in_a, in_b}];
            ++all;
        }
    }
    using Best = std::map<int, std::pair<std::int64_t, int>>;  // Pixels, partner.
    Best of_a;
    Best of_b;
    for (const auto& [pair, pixels] : common) {
        of_a[pair.first] = std::max(of_a[pair.first], {pixels, pair.second});
        of_b[pair.second] = std::max(of_b[pair.second], {pixels, pair.first});
    }
    std::int64_t same = 0;
    for (const auto& [label, best] : of_a) {
        if (of_b[best.second].second == label) same += best.first;
    }
    return static_cast<double>(same) / static_cast<double>(all);
}

GridMap planOf(int seed, int width_mm = 30000, int height_mm = 20000) {
    test::PlanOptions options;
    options.seed = static_cast<std::uint64_t>(seed);
    options.width_mm = width_mm;
    options.height_mm = height_mm;
    options.furniture_percent = seed % 2 == 0 ? 60 : 0;
    options.fans_percent = seed % 3 == 0 ? 30 : 0;
    options.rotation_tenths_deg = seed % 4 == 0 ? 170 : 0;
    const cv::Mat walls = test::makePlan(options).map != test::kMapFree;
    return mapOf(walls);
}

class FindRoomsInBlocks : public FindRooms {};

/// A turned plan: in one along the axes many seeds of several regions have equal costs, and which
/// of them comes first is another one in one piece.
TEST_F(FindRoomsInBlocks, GivesTheRoomsOfOnePieceFromASingleBlock) {
    const GridMap map = planOf(4);
    const Rooms rooms = find(map, inBlocks(kNoLimit));
    EXPECT_EQ(rooms.blocks, 1);
    expectSameRooms(rooms, find(map));
}

TEST_F(FindRoomsInBlocks, DoesSoForAMapWithFloorAtItsEdge) {
    // Half of the left room is cut off: by a rim of wall, and in a raw map by what goes on beyond.
    const cv::Mat walls = test::twoRooms().map;
    GridMap map = mapOf(walls.colRange(42, walls.cols).clone());
    for (const bool raw : {false, true}) {
        map.raw = raw;
        const Rooms rooms = find(map, inBlocks(kNoLimit));
        EXPECT_THAT(rooms.rooms, SizeIs(2));
        expectSameRooms(rooms, find(map));
    }
}

/// Two rooms of 12 m x 12 m and a door of 0.9 m in the wall of 0.2 m between them.
cv::Mat largeRooms() {
    cv::Mat walls(280, 524, CV_32FC1, cv::Scalar(1.0));
    walls(cv::Rect(20, 20, 240, 240)) = 0.0;
    walls(cv::Rect(264, 20, 240, 240)) = 0.0;
    walls(cv::Rect(260, 130, 4, 18)) = 0.0;
    return walls;
}

/// A point in each corner and the middle of the larger rooms' floor, `scale` pixels for one.
void expectLargeRooms(const Rooms& rooms, int scale) {
    ASSERT_THAT(rooms.rooms, SizeIs(2));
    for (const cv::Point& point : {cv::Point(0, 0), cv::Point(239, 0), cv::Point(0, 239),
                                   cv::Point(239, 239), cv::Point(120, 120)}) {
        EXPECT_EQ(rooms.roomAt(scale * (cv::Point(20, 20) + point)), 1) << point;
        EXPECT_EQ(rooms.roomAt(scale * (cv::Point(264, 20) + point)), 2) << point;
    }
}

TEST_F(FindRoomsInBlocks, MakesOneRoomOfWhatLiesInSeveralBlocks) {
    const cv::Mat walls = largeRooms();
    const Rooms rooms = find(mapOf(walls), inBlocks(kTiny));
    EXPECT_GE(rooms.blocks, 8) << "four of the 5 m that a block holds for each room";
    expectLargeRooms(rooms, 1);
    EXPECT_THAT(rooms.labels != 0, MatEq(walls == 0.0)) << "all floor is in a room";
    ASSERT_THAT(rooms.borders, SizeIs(1));
    EXPECT_TRUE(rooms.borders[0].door.has_value());
}

TEST_F(FindRoomsInBlocks, MakesOneRoomOfACorridorThroughAllBlocks) {
    cv::Mat walls(80, 2400, CV_32FC1, cv::Scalar(1.0));
    walls(cv::Rect(20, 20, 2360, 40)) = 0.0;
    const Rooms rooms = find(mapOf(walls), inBlocks(kTiny));
    EXPECT_GE(rooms.blocks, 5);
    ASSERT_THAT(rooms.rooms, SizeIs(1));
    EXPECT_EQ(rooms.rooms[0].pixel_count, 2360 * 40);
}

TEST_F(FindRoomsInBlocks, MakesOneRoomOfAHallThatNoBlockHolds) {
    // A hall of 20 m x 15 m, a door of 0.9 m, and a room of 3 m x 3 m.
    cv::Mat walls(340, 500, CV_32FC1, cv::Scalar(1.0));
    walls(cv::Rect(20, 20, 400, 300)) = 0.0;
    walls(cv::Rect(424, 150, 60, 60)) = 0.0;
    walls(cv::Rect(420, 170, 4, 18)) = 0.0;
    const Rooms rooms = find(mapOf(walls), inBlocks(kTiny));
    EXPECT_GE(rooms.blocks, 12);
    ASSERT_THAT(rooms.rooms, SizeIs(2));
    for (const cv::Point& corner : {cv::Point(20, 20), cv::Point(419, 20), cv::Point(20, 319),
                                    cv::Point(419, 319), cv::Point(220, 160)}) {
        EXPECT_EQ(rooms.roomAt(corner), 1) << corner;
    }
    EXPECT_EQ(rooms.roomAt(cv::Point(460, 180)), 2);
    ASSERT_THAT(rooms.borders, SizeIs(1));
    EXPECT_TRUE(rooms.borders[0].door.has_value());
}

class PlansInBlocks : public FindRooms, public ::testing::WithParamInterface<bool> {
 protected:
    /// The agreement of the rooms found in blocks with those of one piece.
    double agreementOn(const GridMap& map, int block_pixels) const {
        Settings settings = inBlocks(block_pixels);
        settings.rooms.straight_borders = GetParam();
        const Rooms rooms = find(map, settings);
        settings.rooms.blocks = "auto";
        const Rooms whole = find(map, settings);
        EXPECT_EQ(whole.blocks, 1);
        EXPECT_GE(rooms.blocks, 2);
        EXPECT_NEAR(static_cast<double>(rooms.rooms.size()),
                    static_cast<double>(whole.rooms.size()), 1.0);
        return agreement(rooms.labels, whole.labels);
    }
};

TEST_P(PlansInBlocks, HaveTheRoomsOfOnePiece) {
    const double first = agreementOn(planOf(1, 80000, 60000), 1'000'000);
    const double second = agreementOn(planOf(2, 80000, 60000), 1'000'000);
    // A cut that a block has moved redraws a border, or leaves it as it is.
    EXPECT_GE((first + second) / 2, GetParam() ? 0.98 : 0.995);
}

/// The floor of a region whose seed lies beyond what a block sees goes to another one. Blocks of
/// 20 m, their surroundings included, see no more than 5 m around them.
TEST_P(PlansInBlocks, HaveNearlyTheRoomsOfOnePieceIfTheBlocksAreSmall) {
    constexpr int kPlans = 5;
    double sum = 0.0;
    for (int seed = 1; seed <= kPlans; ++seed) sum += agreementOn(planOf(seed), 180'000);
    EXPECT_GE(sum / kPlans, 0.98);
}

INSTANTIATE_TEST_SUITE_P(StraightBorders, PlansInBlocks, ::testing::Bool());

TEST_F(FindRoomsInBlocks, GivesTheSameOnASecondRun) {
    const GridMap map = planOf(3);
    const cv::Mat values = map.values.clone();
    const Rooms first = find(map, inBlocks(80'000));
    EXPECT_GT(first.blocks, 4);
    const Rooms second = find(map, inBlocks(80'000));
    expectSameRooms(second, first);
    EXPECT_EQ(roomsAsJson(second), roomsAsJson(first));
    EXPECT_THAT(map.values, MatEq(values)) << "the map is left as it was";
}

TEST_F(FindRoomsInBlocks, WorksAtOtherResolutions) {
    cv::Mat fine;
    cv::resize(largeRooms(), fine, {}, 2.0, 2.0, cv::INTER_NEAREST);
    const Rooms rooms = find(mapOf(fine, 0.025), inBlocks(kTiny));
    EXPECT_GE(rooms.blocks, 8);
    expectLargeRooms(rooms, 2);
}

TEST_F(FindRoomsInBlocks, DividesMapsFrom4MillionPixelsOn) {
    Settings settings;
    settings.rooms.block_pixels = kTiny;
    for (const int width : {1999, 2000}) {
        cv::Mat walls(2000, width, CV_32FC1, cv::Scalar(1.0));
        largeRooms().copyTo(walls(cv::Rect(1000, 1000, 524, 280)));
        const Rooms rooms = find(mapOf(walls), settings);
        EXPECT_THAT(rooms.rooms, SizeIs(2));
        EXPECT_EQ(rooms.blocks > 1, width == 2000) << width;
    }
}

TEST_F(FindRoomsInBlocks, FindsAllOf324RoomsByItself) {
    Told told;
    Settings settings;
    settings.rooms.block_pixels = 200'000;
    const Rooms rooms = find(mapOf(test::gridOfRooms(18)), settings, observerOf(told));
    EXPECT_GT(rooms.blocks, 1);
    ASSERT_THAT(rooms.rooms, SizeIs(18 * 18));
    for (int row = 0; row < 18; ++row) {
        for (int col = 0; col < 18; ++col) {
            // The first row of a room may lie above the doorway's, not above the next room's.
            EXPECT_EQ(rooms.roomAt(cv::Point(30 + col * 44, 30 + row * 44)), 1 + row * 18 + col);
        }
    }
    EXPECT_THAT(rooms.borders, SizeIs(18 * 17 + 17));
    for (const Border& border : rooms.borders) {
        ASSERT_TRUE(border.door.has_value());
        EXPECT_NEAR(border.door->length_m, 0.65, 1e-6) << "13 steps over the 14 pixels of a door";
    }
    EXPECT_THAT(roomsAsJson(rooms), HasSubstr("\"blocks\": " + std::to_string(rooms.blocks) + ","));
    ASSERT_EQ(told.segmented.type(), CV_32SC1);
    double largest = 0.0;
    cv::minMaxLoc(told.segmented, nullptr, &largest);
    EXPECT_EQ(largest, 18 * 18 + 1) << "255 is no region's number";
    EXPECT_EQ(cv::countNonZero(told.segmented == 255), 0) << "all floor was reached";
    ASSERT_THAT(told.pictures, SizeIs(3));
    for (const auto& [name, picture] : told.pictures) {
        EXPECT_EQ(picture.type(), CV_8UC3) << name;
        EXPECT_EQ(picture.size(), rooms.labels.size()) << name;
    }
}

TEST_F(FindRoomsInBlocks, TellsHowManyBlocksAreDone) {
    const GridMap map = mapOf(largeRooms());
    std::vector<std::string> stages;
    std::vector<int> done;
    int total = 0;
    FlowObserver observer;
    observer.progress = [&](const std::string& stage, int of_stage, int of_all) {
        if (stages.empty() || stages.back() != stage) stages.push_back(stage);
        if (stage != kStageBlocks) return true;
        if (done.empty() || done.back() != of_stage) done.push_back(of_stage);
        total = of_all;
        return true;
    };
    const Rooms rooms = find(map, inBlocks(kTiny), observer);
    EXPECT_THAT(stages, ElementsAre(kStageDenoise, kStageScales, kStageBlocks, kStageFinished,
                                    kStepSeparate, kStepIslands, kStepMergePassages, kStepCuts));
    EXPECT_EQ(total, rooms.blocks);
    std::vector<int> all;
    for (int i = 0; i <= rooms.blocks; ++i) all.push_back(i);
    EXPECT_EQ(done, all);
}

TEST_F(FindRoomsInBlocks, CancelsAtEveryCall) {
    cv::Mat walls(230, 230, CV_32FC1, cv::Scalar(1.0));
    walls(cv::Rect(15, 15, 200, 200)) = 0.0;
    const GridMap map = mapOf(walls);
    int calls = 0;
    FlowObserver observer;
    observer.progress = [&](const std::string&, int, int) { return ++calls > 0; };
    const Rooms expected = find(map, inBlocks(kTiny), observer);
    const int all = calls;
    ASSERT_GE(expected.blocks, 2);
    // Before cleaning and at every scale, of which a room of 10 m has more than ten; before and
    // after each block, and at the end; before the five steps.
    ASSERT_GT(all, 1 + 10 + (expected.blocks + 1) + 1 + 5);
    for (int last = 1; last <= all; ++last) {
        calls = 0;
        observer.progress = [&](const std::string&, int, int) { return ++calls < last; };
        EXPECT_THROW(find(map, inBlocks(kTiny), observer), Cancelled) << last;
        EXPECT_EQ(calls, last);
    }
    EXPECT_THAT(dir_.names(), IsEmpty());
}

TEST_F(FindRoomsInBlocks, TellsWhyThereIsNoRoom) {
    // Too narrow for a seed at the first scale.
    cv::Mat walls(200, 300, CV_32FC1, cv::Scalar(1.0));
    walls(cv::Rect(20, 50, 250, 2)) = 0.0;
    EXPECT_THAT([&] { find(mapOf(walls), inBlocks(kTiny)); },
                ThrowsMessage<MapError>(StartsWith("no room found: ")));
    // All floor is cleaned away.
    walls = 1.0;
    walls(cv::Rect(20, 50, 5, 5)) = 0.0;
    EXPECT_THAT([&] { find(mapOf(walls), inBlocks(kTiny)); },
                ThrowsMessage<MapError>(StartsWith("no room found: ")));
}

TEST_F(FindRoomsInBlocks, SaysThatTheScalesEndTooEarly) {
    Settings settings = inBlocks(kTiny);
    settings.core.compute_labels_list.max_iter = 8;
    EXPECT_THAT([&] { find(mapOf(largeRooms()), settings); },
                ThrowsMessage<MapError>("no room found: the floor is wider than the scales reach; "
                                        "raise max_iter or sigma_step in compute_labels_list"));
}

TEST_F(FindRoomsInBlocks, GivesAMapThatIsAllFloorOneRoom) {
    const GridMap map = mapOf(cv::Mat(140, 160, CV_32FC1, cv::Scalar(0.0)));
    const Rooms rooms = find(map, inBlocks(kTiny));
    EXPECT_THAT(rooms.rooms, SizeIs(1));
    EXPECT_EQ(rooms.blocks, 1);
}

}  // namespace
}  // namespace vorund::rooms
