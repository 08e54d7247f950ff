#include "plan_generator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <set>
#include <stdexcept>

#include "plan_building.h"
#include "plan_frame.h"
#include "random.h"

namespace vorund::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ThrowsMessage;

bool samePixels(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

int roomCount(const Plan& plan) {
    double most = 0;
    cv::minMaxLoc(plan.rooms, nullptr, &most);
    return static_cast<int>(most);
}

// Pixels of each room; the first entry counts those of none.
std::vector<int> areas(const Plan& plan) {
    std::vector<int> result(static_cast<std::size_t>(roomCount(plan)) + 1, 0);
    for (int row = 0; row < plan.rooms.rows; ++row) {
        for (int col = 0; col < plan.rooms.cols; ++col) {
            ++result[plan.rooms.at<std::uint16_t>(row, col)];
        }
    }
    return result;
}

// How many of the room's pixels are at its rim.
int outline(const Plan& plan, int room) {
    const cv::Mat own = plan.rooms == room;
    cv::Mat inner;
    cv::erode(own, inner, cv::getStructuringElement(cv::MORPH_CROSS, cv::Size(3, 3)));
    return cv::countNonZero(own) - cv::countNonZero(inner);
}

// For each room the pixel that is farthest from its walls.
std::vector<cv::Point> middles(const Plan& plan) {
    std::vector<cv::Point> result;
    for (int room = 1; room <= roomCount(plan); ++room) {
        cv::Mat own = plan.rooms == room, distance;
        cv::copyMakeBorder(own, own, 1, 1, 1, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
        cv::distanceTransform(own, distance, cv::DIST_L2, 3);
        cv::Point middle;
        cv::minMaxLoc(distance, nullptr, nullptr, nullptr, &middle);
        result.push_back(middle - cv::Point(1, 1));
    }
    return result;
}

// Floor is a component number per pixel; doors but the one with index `open` are bricked up.
cv::Mat floorWithOneDoor(const Plan& plan, std::size_t open) {
    cv::Mat floor = plan.rooms > 0, components;
    for (std::size_t i = 0; i < plan.doors.size(); ++i) {
        if (i == open) continue;
        cv::line(floor, plan.doors[i].a, plan.doors[i].b, cv::Scalar(0), 3);
    }
    cv::connectedComponents(floor, components, 8, CV_32S);
    return components;
}

PlanOptions sized(std::uint64_t seed, int width_mm, int height_mm) {
    PlanOptions options;
    options.seed = seed;
    options.width_mm = width_mm;
    options.height_mm = height_mm;
    return options;
}

PlanOptions everything(std::uint64_t seed) {
    PlanOptions options = sized(seed, 21000, 13000);
    options.rotation_tenths_deg = 237;
    options.furniture_percent = 70;
    options.noise_percent = 60;
    options.fans_percent = 50;
    options.glass_percent = 30;
    return options;
}

// --- What holds for every plan ------------------------------------------------------------------

struct Variant {
    const char* name;
    PlanOptions options;
};

std::vector<Variant> variants() {
    std::vector<Variant> result{
        {"Office", sized(1, 24000, 14000)},        {"Wings", sized(5, 36000, 24000)},
        {"Tall", sized(3, 9000, 31000)},           {"OneSided", sized(4, 16000, 7000)},
        {"RowOfRooms", sized(6, 17000, 4500)},     {"Turned", sized(7, 22000, 15000)},
        {"Coarse", sized(8, 30000, 20000)},        {"Fine", sized(9, 9000, 8700)},
        {"Glass", sized(10, 20000, 13000)},        {"Furnished", sized(11, 24000, 14000)},
        {"Noisy", sized(12, 24000, 14000)},        {"Fans", sized(13, 24000, 14000)},
        {"SolidOutside", sized(14, 24000, 14000)}, {"Everything", everything(15)}};
    result[5].options.rotation_tenths_deg = 333;
    result[6].options.resolution_um = 200000;
    result[6].options.rotation_tenths_deg = 450;
    result[7].options.resolution_um = 13333;
    result[8].options.glass_percent = 100;
    result[8].options.rotation_tenths_deg = -121;
    result[9].options.furniture_percent = 100;
    result[10].options.noise_percent = 100;
    result[11].options.fans_percent = 100;
    result[11].options.margin_mm = 6000;
    result[12].options.outside = Outside::kSolid;
    return result;
}

class EveryPlan : public ::testing::TestWithParam<Variant> {
 protected:
    const Plan plan = makePlan(GetParam().options);
};

INSTANTIATE_TEST_SUITE_P(Variants, EveryPlan, ::testing::ValuesIn(variants()),
                         [](const auto& variant) { return std::string(variant.param.name); });

TEST_P(EveryPlan, HasThePromisedImages) {
    EXPECT_EQ(plan.map.type(), CV_8UC1);
    EXPECT_EQ(plan.rooms.type(), CV_16UC1);
    EXPECT_EQ(plan.map.size(), plan.rooms.size());
    const cv::Mat strange =
        (plan.map != kMapFree) & (plan.map != kMapUnknown) & (plan.map != kMapOccupied);
    EXPECT_EQ(cv::countNonZero(strange), 0);
}

TEST_P(EveryPlan, IsTheSameASecondTime) {
    const Plan again = makePlan(GetParam().options);
    EXPECT_TRUE(samePixels(plan.map, again.map));
    EXPECT_TRUE(samePixels(plan.rooms, again.rooms));
    ASSERT_EQ(plan.doors.size(), again.doors.size());
    for (std::size_t i = 0; i < plan.doors.size(); ++i) {
        EXPECT_EQ(plan.doors[i].a, again.doors[i].a) << "door " << i;
        EXPECT_EQ(plan.doors[i].b, again.doors[i].b) << "door " << i;
    }
}

TEST_P(EveryPlan, HasRoomsOfOnePieceWithoutGapsInTheNumbers) {
    ASSERT_GT(roomCount(plan), 1);
    for (int room = 1; room <= roomCount(plan); ++room) {
        cv::Mat components;
        const cv::Mat own = plan.rooms == room;
        EXPECT_EQ(cv::connectedComponents(own, components, 8, CV_32S), 2) << "room " << room;
    }
}

TEST_P(EveryPlan, JoinsByEachDoorTheTwoRoomsItNamesAndNoOthers) {
    PlanOptions options = GetParam().options;
    options.noise_percent = 0;  // Holes in walls join rooms too.
    const Plan clean = makePlan(options);
    const std::vector<cv::Point> rooms = middles(clean);
    for (std::size_t open = 0; open <= clean.doors.size(); ++open) {  // At last, none is open.
        const cv::Mat floor = floorWithOneDoor(clean, open);
        std::map<int, std::set<int>> joined;
        for (std::size_t i = 0; i < rooms.size(); ++i) {
            joined[floor.at<int>(rooms[i])].insert(static_cast<int>(i) + 1);
        }
        std::set<int> expected;
        if (open < clean.doors.size()) {
            expected = {clean.doors[open].room_a, clean.doors[open].room_b};
        }
        std::set<int> found;
        for (const auto& [component, members] : joined) {
            EXPECT_NE(component, 0);
            if (members.size() > 1) found.insert(members.begin(), members.end());
        }
        EXPECT_EQ(found, expected) << "door " << open;
    }
}

TEST_P(EveryPlan, CanBeWalkedFromAnyRoomToAnyOther) {
    std::vector<int> group(static_cast<std::size_t>(roomCount(plan)) + 1);
    std::iota(group.begin(), group.end(), 0);
    for (const Door& door : plan.doors) {
        ASSERT_LT(door.room_a, door.room_b);
        const int from = group[static_cast<std::size_t>(door.room_a)];
        const int to = group[static_cast<std::size_t>(door.room_b)];
        std::replace(group.begin(), group.end(), from, to);
    }
    EXPECT_EQ(std::set<int>(group.begin() + 1, group.end()).size(), 1U);
}

TEST_P(EveryPlan, StaysWalkableBetweenFurnitureAndNoise) {
    const cv::Mat free = (plan.map == kMapFree) & (plan.rooms > 0);
    cv::Mat components, stats, centres;
    const int count = cv::connectedComponentsWithStats(free, components, stats, centres, 4, CV_32S);
    int largest = 1;
    for (int i = 2; i < count; ++i) {
        if (stats.at<int>(i, cv::CC_STAT_AREA) > stats.at<int>(largest, cv::CC_STAT_AREA)) {
            largest = i;
        }
    }
    for (int room = 1; room <= roomCount(plan); ++room) {
        const cv::Mat own = free & (plan.rooms == room);
        const cv::Mat reached = own & (components == largest);
        EXPECT_GT(cv::countNonZero(reached), cv::countNonZero(own) * 9 / 10) << "room " << room;
    }
}

TEST_P(EveryPlan, GivesEveryFreePixelInsideARoom) {
    PlanOptions options = GetParam().options;
    options.fans_percent = 0;  // Fans are free and outside.
    const Plan closed = makePlan(options);
    const cv::Mat homeless = (closed.map == kMapFree) & (closed.rooms == 0);
    EXPECT_EQ(cv::countNonZero(homeless), 0);
}

TEST_P(EveryPlan, HasDoorsOfAllowedWidthAsLongInPixelsAsInMillimetres) {
    const int resolution_um = plan.options.resolution_um;
    for (const Door& door : plan.doors) {
        const bool single = door.width_mm >= 700 && door.width_mm <= 1300;
        const bool two_leaves = door.width_mm >= 1600 && door.width_mm <= 2000;
        EXPECT_TRUE(single || two_leaves) << door.width_mm << " mm";
        const double length_um = cv::norm(door.b - door.a) * resolution_um;
        // Either end is rounded by up to half a diagonal.
        EXPECT_NEAR(length_um, 1000.0 * door.width_mm, 1.42 * resolution_um);
    }
}

TEST_P(EveryPlan, LeavesTheRimOfThePictureOutside) {
    cv::Mat inner = plan.rooms.clone();
    inner(cv::Rect(1, 1, inner.cols - 2, inner.rows - 2)).setTo(cv::Scalar(0));
    EXPECT_EQ(cv::countNonZero(inner), 0);
}

// --- Options ------------------------------------------------------------------------------------

TEST(MakePlan, DiffersBetweenSeeds) {
    std::set<std::vector<int>> seen;
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        seen.insert(areas(makePlan(sized(seed, 24000, 14000))));
    }
    EXPECT_EQ(seen.size(), 20U);
}

TEST(MakePlan, HasMoreRoomsInALargerBuilding) {
    for (std::uint64_t seed = 0; seed < 5; ++seed) {
        const int tiny = roomCount(makePlan(sized(seed, 3000, 3000)));
        const int small = roomCount(makePlan(sized(seed, 12000, 9000)));
        const int middle = roomCount(makePlan(sized(seed, 30000, 15000)));
        const int large = roomCount(makePlan(sized(seed, 60000, 40000)));
        EXPECT_EQ(tiny, 1);
        EXPECT_GT(small, tiny);
        EXPECT_GT(middle, small);
        EXPECT_GT(large, 2 * middle);
    }
}

TEST(MakePlan, KeepsTheAreaOfEachRoomWhenTurned) {
    const PlanOptions straight = sized(3, 24000, 14000);
    const Plan before = makePlan(straight);
    const std::vector<int> expected = areas(before);
    for (const int tenths_deg : {1, 150, 450, 900, 1234, 1800, 2700, 3599, -300}) {
        PlanOptions options = straight;
        options.rotation_tenths_deg = tenths_deg;
        const std::vector<int> turned = areas(makePlan(options));
        ASSERT_EQ(turned.size(), expected.size());
        for (std::size_t room = 1; room < expected.size(); ++room) {
            // Half a pixel all along the room's outline is what rounding may move its walls by.
            EXPECT_NEAR(turned[room], expected[room], outline(before, static_cast<int>(room)) / 2)
                << "room " << room << " turned by " << tenths_deg / 10.0;
        }
        const double total = std::accumulate(expected.begin() + 1, expected.end(), 0.0);
        EXPECT_NEAR(std::accumulate(turned.begin() + 1, turned.end(), 0.0), total, total / 100);
    }
}

TEST(MakePlan, TurnsCounterclockwise) {
    PlanOptions options = sized(3, 24000, 14000);
    const Plan straight = makePlan(options);
    options.rotation_tenths_deg = 900;
    const Plan turned = makePlan(options);
    ASSERT_EQ(turned.map.size(), cv::Size(straight.map.rows, straight.map.cols));
    cv::Mat expected;
    cv::rotate(straight.rooms, expected, cv::ROTATE_90_COUNTERCLOCKWISE);
    // Only where a wall's face runs through pixel centres may either side win.
    EXPECT_LT(cv::countNonZero(turned.rooms != expected), static_cast<int>(expected.total() / 50));
}

TEST(MakePlan, KeepsTheRoomsWhateverElseIsChosen) {
    PlanOptions bare = everything(4);
    bare.furniture_percent = bare.noise_percent = bare.fans_percent = bare.glass_percent = 0;
    bare.rotation_tenths_deg = 0;
    const Plan before = makePlan(bare);
    const Plan after = makePlan(everything(4));
    ASSERT_EQ(roomCount(before), roomCount(after));
    ASSERT_EQ(before.doors.size(), after.doors.size());
    for (std::size_t i = 0; i < before.doors.size(); ++i) {
        EXPECT_EQ(before.doors[i].room_a, after.doors[i].room_a);
        EXPECT_EQ(before.doors[i].room_b, after.doors[i].room_b);
        EXPECT_EQ(before.doors[i].width_mm, after.doors[i].width_mm);
    }
}

TEST(MakePlan, ScalesWithTheResolution) {
    PlanOptions options = sized(2, 20000, 12000);
    const std::vector<int> coarse = areas(makePlan(options));
    options.resolution_um /= 2;
    const std::vector<int> fine = areas(makePlan(options));
    ASSERT_EQ(coarse.size(), fine.size());
    for (std::size_t room = 1; room < coarse.size(); ++room) {
        EXPECT_NEAR(fine[room], 4 * coarse[room], 0.05 * fine[room]) << "room " << room;
    }
}

TEST(MakePlan, PutsFurnitureOnlyOnFloorAndKeepsItsRoom) {
    PlanOptions options = sized(5, 24000, 14000);
    const Plan bare = makePlan(options);
    options.furniture_percent = 80;
    const Plan furnished = makePlan(options);
    EXPECT_TRUE(samePixels(bare.rooms, furnished.rooms));
    const cv::Mat changed = bare.map != furnished.map;
    EXPECT_GT(cv::countNonZero(changed), 200);
    EXPECT_EQ(cv::countNonZero(changed & (bare.rooms == 0)), 0);
    for (const Door& door : furnished.doors) {
        const cv::Point middle = (door.a + door.b) / 2;
        EXPECT_EQ(furnished.map.at<std::uint8_t>(middle), kMapFree) << middle;
    }
}

TEST(MakePlan, AddsMoreOfEverythingWithTheAmount) {
    const PlanOptions bare = sized(6, 24000, 14000);
    const cv::Mat clean = makePlan(bare).map;
    for (int PlanOptions::*const amount :
         {&PlanOptions::furniture_percent, &PlanOptions::noise_percent, &PlanOptions::fans_percent,
          &PlanOptions::glass_percent}) {
        PlanOptions options = bare;
        options.*amount = 10;
        const int few = cv::countNonZero(clean != makePlan(options).map);
        options.*amount = 100;
        const int many = cv::countNonZero(clean != makePlan(options).map);
        EXPECT_GT(many, few);
    }
}

TEST(MakePlan, LetsFansFallOutsideOnly) {
    PlanOptions options = sized(7, 24000, 14000);
    options.margin_mm = 5000;
    const Plan closed = makePlan(options);
    options.fans_percent = 100;
    const Plan open = makePlan(options);
    const cv::Mat rays = (open.map == kMapFree) & (open.rooms == 0);
    EXPECT_GT(cv::countNonZero(rays), 300);
    const cv::Mat floor_changed = (closed.map != open.map) & (closed.rooms > 0);
    EXPECT_EQ(cv::countNonZero(floor_changed), 0);
}

TEST(MakePlan, DrawsGlassWallsOnePixelThick) {
    PlanOptions options = sized(2, 9000, 3000);  // A row of rooms.
    options.glass_percent = 100;
    const Plan plan = makePlan(options);
    ASSERT_EQ(roomCount(plan), 1 + static_cast<int>(plan.doors.size()));
    const int row = plan.map.rows / 2 + 24;  // 1.2 m below the middle, where no door reaches.
    std::vector<int> runs;                   // Of wall between floor.
    int run = 0;
    for (int col = 1; col < plan.rooms.cols; ++col) {
        const bool floor = plan.rooms.at<std::uint16_t>(row, col) > 0;
        if (!floor) ++run;
        if (floor && run > 0) runs.push_back(run);
        if (floor) run = 0;
    }
    ASSERT_FALSE(runs.empty());
    runs.erase(runs.begin());  // The margin and the outer wall on the left.
    for (const int thickness : runs) EXPECT_EQ(thickness, 1);
}

TEST(MakePlan, SurroundsTheBuildingByWhatWasAskedFor) {
    PlanOptions options = sized(1, 10000, 10000);
    EXPECT_EQ(makePlan(options).map.at<std::uint8_t>(0, 0), kMapUnknown);
    options.outside = Outside::kSolid;
    EXPECT_EQ(makePlan(options).map.at<std::uint8_t>(0, 0), kMapOccupied);
}

TEST(MakePlan, RefusesOptionsOutOfRangeByName) {
    const auto refused = [](int PlanOptions::*member, int value) {
        PlanOptions options;
        options.*member = value;
        try {
            makePlan(options);
        } catch (const std::invalid_argument& error) {
            return std::string(error.what());
        }
        return std::string("accepted");
    };
    EXPECT_EQ(refused(&PlanOptions::width_mm, 0),
              "makePlan: width_mm must be 2000 to 300000 mm, but is 0.");
    EXPECT_EQ(refused(&PlanOptions::height_mm, -5),
              "makePlan: height_mm must be 2000 to 300000 mm, but is -5.");
    EXPECT_EQ(refused(&PlanOptions::height_mm, 300001),
              "makePlan: height_mm must be 2000 to 300000 mm, but is 300001.");
    EXPECT_EQ(refused(&PlanOptions::resolution_um, 0),
              "makePlan: resolution_um must be 10000 to 200000 um, but is 0.");
    EXPECT_EQ(refused(&PlanOptions::margin_mm, 299),
              "makePlan: margin_mm must be 300 to 50000 mm, but is 299.");
    EXPECT_EQ(refused(&PlanOptions::furniture_percent, 101),
              "makePlan: furniture_percent must be 0 to 100, but is 101.");
    EXPECT_EQ(refused(&PlanOptions::noise_percent, -1),
              "makePlan: noise_percent must be 0 to 100, but is -1.");
    EXPECT_EQ(refused(&PlanOptions::fans_percent, -1),
              "makePlan: fans_percent must be 0 to 100, but is -1.");
    EXPECT_EQ(refused(&PlanOptions::glass_percent, 1000),
              "makePlan: glass_percent must be 0 to 100, but is 1000.");
}

TEST(MakePlan, RefusesAPictureOfTooManyPixels) {
    PlanOptions options = sized(1, 300000, 300000);
    options.resolution_um = 10000;
    options.margin_mm = 1000;
    // 300 m and twice 1 m at 0.01 m per pixel.
    EXPECT_THAT([&] { makePlan(options); },
                ThrowsMessage<std::invalid_argument>(
                    "makePlan: The picture would have 30200 x 30200 pixels; "
                    "64 million are allowed."));
}

// --- The building -------------------------------------------------------------------------------

int areaOf(const Box& box) {
    return box.width() / 100 * (box.height() / 100);
}  // [dm^2]

TEST(LayOutSpaces, FillsAtMostTheBuildingWithoutOverlaps) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        std::vector<Box> boxes;
        for (const Space& space : layOutSpaces(seed, 40000, 26000)) {
            boxes.insert(boxes.end(), space.boxes.begin(), space.boxes.end());
        }
        const Box whole{0, 0, 40000, 26000};
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            EXPECT_TRUE(boxes[i].x0 >= 0 && boxes[i].y0 >= 0 && boxes[i].x1 <= whole.x1 &&
                        boxes[i].y1 <= whole.y1);
            for (std::size_t j = 0; j < i; ++j) {
                EXPECT_FALSE(boxes[i].overlaps(boxes[j])) << "seed " << seed;
            }
        }
    }
}

TEST(LayOutSpaces, MakesRoomsAndCorridorsOfPlausibleSizes) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        for (const Space& space : layOutSpaces(seed, 45000, 25000)) {
            for (const Box& box : space.boxes) {
                const int narrow = std::min(box.width(), box.height());
                if (space.kind == SpaceKind::kCorridor) {
                    EXPECT_GE(narrow, 1800);
                    EXPECT_LE(narrow, 2800);
                } else {
                    EXPECT_GE(narrow, 1700) << "seed " << seed;
                    EXPECT_GE(areaOf(box), 300) << "seed " << seed;
                    EXPECT_LE(areaOf(box), 15000) << "seed " << seed;
                }
            }
        }
    }
}

TEST(MakeBuilding, KeepsDoorsAwayFromTheEndsOfTheirWalls) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        const Building building = makeBuilding(seed, 40000, 26000, 20);
        std::set<int> walls;
        for (const Opening& opening : building.openings) {
            const Wall& wall = building.walls[static_cast<std::size_t>(opening.wall)];
            EXPECT_GE(opening.along.low, wall.along.low + kDoorGap);
            EXPECT_LE(opening.along.high, wall.along.high - kDoorGap);
            EXPECT_TRUE(walls.insert(opening.wall).second) << "two doors in a wall";
        }
    }
}

TEST(MakeBuilding, ReachesEverySpaceAtAnySize) {
    Random random(2024);
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        const int width = random.between(2000, 70000), height = random.between(2000, 70000);
        const Building building = makeBuilding(seed, width, height, 0);
        ASSERT_FALSE(building.spaces.empty());
        std::vector<bool> reached;
        placeDoors(building.spaces, building.walls, seed, reached);
        EXPECT_EQ(std::count(reached.begin(), reached.end(), false), 0)
            << width << " x " << height << ", seed " << seed;
    }
}

TEST(BuildWalls, FindsTheWallBetweenTwoRoomsAndTheOutline) {
    //    0   3   8
    //  0 +---+---+     Room 0 is square, room 1 is longer and hangs over by 2 m: between them a
    //    | 0 | 1 |     wall of 3 m, and 2 m of room 1's left side are outside.
    //  3 +---+   |
    //        |   |
    //  5     +---+
    const std::vector<Space> spaces{{SpaceKind::kOffice, {{0, 0, 3000, 3000}}},
                                    {SpaceKind::kOffice, {{3000, 0, 8000, 5000}}}};
    int inner = 0, outline_mm = 0;
    for (const Wall& wall : buildWalls(spaces, 1, 0)) {
        if (wall.outer()) {
            outline_mm += wall.along.length();
            continue;
        }
        ++inner;
        EXPECT_TRUE(wall.vertical);
        EXPECT_EQ(wall.at, 3000);
        EXPECT_EQ(wall.along.low, 0);
        EXPECT_EQ(wall.along.high, 3000);
    }
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(outline_mm, 3000 + 3000 + 3000 + 5000 + 5000 + 5000 + 2000);
}

// --- Numbers ------------------------------------------------------------------------------------

TEST(Random, IsSplitMix64) {
    Random random(1234567);  // The published test vector of this seed.
    EXPECT_EQ(random.next(), 6457827717110365317U);
    EXPECT_EQ(random.next(), 3203168211198807973U);
    EXPECT_EQ(random.next(), 9817491932198370423U);
}

TEST(Random, StaysInTheRangeAndReachesBothEnds) {
    Random random(1);
    std::set<int> seen;
    for (int i = 0; i < 1000; ++i) seen.insert(random.between(-2, 2));
    EXPECT_THAT(seen, ElementsAre(-2, -1, 0, 1, 2));
    EXPECT_EQ(random.between(5, 5), 5);
    EXPECT_EQ(random.between(5, 4), 5);
}

TEST(TurnOf, IsExactAtRightAngles) {
    const std::int64_t one = Turn::kOne;
    const std::int64_t expected[][2] = {{0, one}, {one, 0}, {0, -one}, {-one, 0}};
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        for (const int turns : {-1, 0, 1}) {
            const Turn turn = turnOf(900 * quadrant + 3600 * turns);
            EXPECT_EQ(turn.sine, expected[quadrant][0]);
            EXPECT_EQ(turn.cosine, expected[quadrant][1]);
        }
    }
}

TEST(TurnOf, AgreesWithTheSine) {
    for (int tenths_deg = -3600; tenths_deg < 3600; tenths_deg += 7) {
        const double angle = tenths_deg * CV_PI / 1800;
        const Turn turn = turnOf(tenths_deg);
        const auto one = static_cast<double>(Turn::kOne);
        EXPECT_NEAR(static_cast<double>(turn.sine), std::sin(angle) * one, 8);
        EXPECT_NEAR(static_cast<double>(turn.cosine), std::cos(angle) * one, 8);
    }
}

// --- Files --------------------------------------------------------------------------------------

class WritePlan : public ::testing::Test {
 protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        directory_ = ::testing::TempDir() + "plan_generator_" + info->name();
        std::filesystem::remove_all(directory_);
        std::filesystem::create_directory(directory_);
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string path(const std::string& file) const { return directory_ + "/" + file; }
    std::string text(const std::string& file) const {
        std::ifstream stream(path(file), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    std::string directory_;
};

// Two rooms of one pixel and a door of one pixel between them, at 0.1 m per pixel.
Plan tinyPlan() {
    Plan plan;
    plan.options.resolution_um = 100000;
    plan.map = (cv::Mat_<std::uint8_t>(2, 3) << 254, 254, 205, 0, 0, 0);
    plan.rooms = (cv::Mat_<std::uint16_t>(2, 3) << 1, 300, 0, 0, 0, 0);
    plan.doors = {{{0, 0}, {1, 0}, 1, 300, 750}};
    return plan;
}

TEST_F(WritePlan, GivesBackTheSamePixels) {
    const Plan plan = makePlan(everything(3));
    writePlan(plan, directory_, "office");
    EXPECT_THAT(files(),
                ElementsAre("office.pgm", "office.yaml", "office_doors.json", "office_rooms.png"));
    EXPECT_TRUE(samePixels(cv::imread(path("office.pgm"), cv::IMREAD_UNCHANGED), plan.map));
    EXPECT_TRUE(samePixels(cv::imread(path("office_rooms.png"), cv::IMREAD_UNCHANGED), plan.rooms));
}

TEST_F(WritePlan, WritesAPgmOfKnownBytes) {
    writePlan(tinyPlan(), directory_, "tiny");
    EXPECT_EQ(text("tiny.pgm"), std::string("P5\n3 2\n255\n\xFE\xFE\xCD\0\0\0", 17));
}

TEST_F(WritePlan, WritesTheYamlOfMapServers) {
    writePlan(tinyPlan(), directory_, "tiny");
    EXPECT_EQ(text("tiny.yaml"),
              "image: tiny.pgm\nmode: trinary\nresolution: 0.1\norigin: [-0.1, -0.1, 0.0]\n"
              "negate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.196\n");
}

// The origin is one pixel from the left and one from below: door pixels are above it.
TEST_F(WritePlan, WritesDoorsInPixelsAndMetres) {
    writePlan(tinyPlan(), directory_, "tiny");
    EXPECT_EQ(text("tiny_doors.json"),
              "{\n  \"resolution_m\": 0.1,\n  \"doors\": [\n"
              "    {\"rooms\": [1, 300], \"width_m\": 0.75, \"a_px\": [0, 0], \"b_px\": [1, 0], "
              "\"a_m\": [-0.05, 0.05], \"b_m\": [0.05, 0.05]}\n  ]\n}\n");
}

TEST_F(WritePlan, WritesAnEmptyListOfDoors) {
    Plan plan = tinyPlan();
    plan.doors.clear();
    writePlan(plan, directory_, "tiny");
    EXPECT_EQ(text("tiny_doors.json"), "{\n  \"resolution_m\": 0.1,\n  \"doors\": []\n}\n");
}

TEST_F(WritePlan, NamesTheFileAndTheCauseOfAFailure) {
    EXPECT_THAT([&] { writePlan(tinyPlan(), path("absent"), "x"); },
                ThrowsMessage<std::runtime_error>("writePlan: Cannot write " + path("absent") +
                                                  "/x.pgm: No such file or directory."));
}

TEST_F(WritePlan, LeavesNothingBehindWhereRenamingFails) {
    std::filesystem::create_directory(path("x.pgm"));
    EXPECT_THAT([&] { writePlan(tinyPlan(), directory_, "x"); },
                ThrowsMessage<std::runtime_error>("writePlan: Cannot write " + path("x.pgm") +
                                                  ": Is a directory."));
    EXPECT_THAT(files(), ElementsAre("x.pgm"));
}

TEST_F(WritePlan, RefusesANameThatIsNoFileName) {
    EXPECT_THAT([&] { writePlan(tinyPlan(), directory_, ""); },
                ThrowsMessage<std::invalid_argument>("writePlan: \"\" is no file name."));
    EXPECT_THAT([&] { writePlan(tinyPlan(), directory_, "a/b"); },
                ThrowsMessage<std::invalid_argument>("writePlan: \"a/b\" is no file name."));
    EXPECT_TRUE(files().empty());
}

}  // namespace
}  // namespace vorund::test
