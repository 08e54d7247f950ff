#include "support/families/plan_families.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <set>

#include "support/captures.h"
#include "support/families/layouts.h"
#include "support/families/rays.h"
#include "support/families/truth.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::test {
namespace {

using ::testing::ThrowsMessage;
using ::testing::UnorderedElementsAre;

int highestOf(const cv::Mat& rooms) {
    double most = 0;
    cv::minMaxLoc(rooms, nullptr, &most);
    return static_cast<int>(most);
}

// Pixels of each room; the first entry counts those of none.
std::vector<int> areasOf(const cv::Mat& rooms) {
    std::vector<int> areas(static_cast<std::size_t>(highestOf(rooms)) + 1, 0);
    for (int row = 0; row < rooms.rows; ++row) {
        for (int col = 0; col < rooms.cols; ++col) ++areas[rooms.at<std::uint16_t>(row, col)];
    }
    return areas;
}

int outlineOf(const cv::Mat& rooms, int room) {
    const cv::Mat own = rooms == room;
    cv::Mat inner;
    cv::erode(own, inner, cv::getStructuringElement(cv::MORPH_CROSS, cv::Size(3, 3)));
    return cv::countNonZero(own) - cv::countNonZero(inner);
}

void expectOnePieceEach(const cv::Mat& rooms) {
    for (int room = 1; room <= highestOf(rooms); ++room) {
        cv::Mat pieces;
        EXPECT_EQ(cv::connectedComponents(rooms == room, pieces, 8, CV_32S), 2) << "room " << room;
    }
}

// The rooms that hang together when all doors are bricked up but the one with index `open`.
std::map<int, std::set<int>> roomsJoined(const FamilyPlan& plan, std::size_t open) {
    cv::Mat floor = plan.floor > 0, pieces;
    for (std::size_t i = 0; i < plan.floor_doors.size(); ++i) {
        if (i == open) continue;
        cv::line(floor, plan.floor_doors[i].a, plan.floor_doors[i].b, cv::Scalar(0), 3);
    }
    // A room's number is where most of it is: bricks leave crumbs of floor in doorways.
    cv::connectedComponents(floor, pieces, 8, CV_32S);
    std::vector<std::map<int, int>> votes(static_cast<std::size_t>(highestOf(plan.floor)) + 1);
    for (int row = 0; row < floor.rows; ++row) {
        for (int col = 0; col < floor.cols; ++col) {
            const int piece = pieces.at<int>(row, col);
            if (piece > 0) ++votes[plan.floor.at<std::uint16_t>(row, col)][piece];
        }
    }
    std::map<int, std::set<int>> joined;
    for (std::size_t room = 1; room < votes.size(); ++room) {
        const auto most =
            std::max_element(votes[room].begin(), votes[room].end(),
                             [](const auto& a, const auto& b) { return a.second < b.second; });
        joined[most->first].insert(static_cast<int>(room));
    }
    return joined;
}

// --- What holds for every family ----------------------------------------------------------------

struct Sample {
    FamilyInfo family;
    std::uint64_t seed;
    friend std::ostream& operator<<(std::ostream& out, const Sample& sample) {
        return out << sample.family.name << ", seed " << sample.seed;
    }
};

class EveryFamily : public ::testing::TestWithParam<Sample> {
 protected:
    const FamilyInfo& family() const { return GetParam().family; }
    const FamilyPlan plan = makeFamilyPlan(GetParam().family.name, GetParam().seed);
};

std::vector<Sample> samples() {
    std::vector<Sample> result;
    for (const FamilyInfo& family : planFamilies()) {
        result.push_back({family, 1});
    }
    return result;
}

INSTANTIATE_TEST_SUITE_P(Families, EveryFamily, ::testing::ValuesIn(samples()),
                         [](const auto& sample) { return sample.param.family.name; });

TEST_P(EveryFamily, HasThePromisedImages) {
    EXPECT_EQ(plan.map.type(), CV_8UC1);
    EXPECT_EQ(plan.rooms.type(), CV_16UC1);
    EXPECT_EQ(plan.floor.type(), CV_16UC1);
    EXPECT_EQ(plan.map.size(), plan.rooms.size());
    EXPECT_EQ(plan.map.size(), plan.floor.size());
    const cv::Mat strange =
        (plan.map != kMapFree) & (plan.map != kMapUnknown) & (plan.map != kMapOccupied);
    EXPECT_EQ(cv::countNonZero(strange), 0);
}

TEST_P(EveryFamily, IsTheSameASecondTime) {
    const FamilyPlan again = makeFamilyPlan(family().name, GetParam().seed);
    EXPECT_THAT(again.map, MatEq(plan.map));
    EXPECT_THAT(again.rooms, MatEq(plan.rooms));
    EXPECT_THAT(again.floor, MatEq(plan.floor));
    ASSERT_EQ(again.doors.size(), plan.doors.size());
    for (std::size_t i = 0; i < plan.doors.size(); ++i) {
        EXPECT_EQ(again.doors[i].a, plan.doors[i].a) << "door " << i;
        EXPECT_EQ(again.doors[i].b, plan.doors[i].b) << "door " << i;
    }
}

TEST_P(EveryFamily, BuildsRoomsOfOnePieceAndOfPlausibleSize) {
    expectOnePieceEach(plan.floor);
    const std::vector<int> areas = areasOf(plan.floor);
    ASSERT_GE(areas.size(), 4U);
    for (std::size_t room = 1; room < areas.size(); ++room) {
        EXPECT_GE(areas[room], 2 * 400) << "room " << room;  // 2 m^2 of 0.05 m
        EXPECT_LE(areas[room], 500 * 400) << "room " << room;
    }
}

TEST_P(EveryFamily, JoinsByEachDoorTheTwoRoomsItNamesAndNoOthers) {
    for (std::size_t open = 0; open <= plan.floor_doors.size(); ++open) {  // At last, none is open.
        std::set<int> expected, found;
        if (open < plan.floor_doors.size()) {
            expected = {plan.floor_doors[open].room_a, plan.floor_doors[open].room_b};
        }
        for (const auto& [piece, rooms] : roomsJoined(plan, open)) {
            if (rooms.size() > 1) found.insert(rooms.begin(), rooms.end());
        }
        EXPECT_EQ(found, expected) << "door " << open;
    }
}

TEST_P(EveryFamily, CanBeWalkedThroughExceptFromBuildingToBuilding) {
    std::vector<int> group(areasOf(plan.floor).size());
    std::iota(group.begin(), group.end(), 0);
    for (const Door& door : plan.floor_doors) {
        const int from = group[static_cast<std::size_t>(door.room_a)];
        const int to = group[static_cast<std::size_t>(door.room_b)];
        std::replace(group.begin(), group.end(), from, to);
    }
    const std::size_t buildings = std::set<int>(group.begin() + 1, group.end()).size();
    if (family().name == "campus") {
        EXPECT_GE(buildings, 2U);
        EXPECT_LE(buildings, 4U);
    } else {
        EXPECT_EQ(buildings, 1U);
    }
}

TEST_P(EveryFamily, HasDoorsOfAllowedWidthAsLongInPixelsAsInMillimetres) {
    for (const Door& door : plan.floor_doors) {
        EXPECT_LT(door.room_a, door.room_b);
        EXPECT_GE(door.width_mm, 700);
        EXPECT_LE(door.width_mm, families::kWidestDoor);
        // Either end is rounded by up to half a diagonal.
        const double length_um = cv::norm(door.b - door.a) * plan.resolution_um;
        EXPECT_NEAR(length_um, 1000.0 * door.width_mm, 1.42 * plan.resolution_um);
    }
}

TEST_P(EveryFamily, ShowsRoomsOfOnePieceWithoutGapsInTheNumbers) {
    const std::vector<int> areas = areasOf(plan.rooms);
    ASSERT_GE(areas.size(), 4U);
    for (const int area : areas) EXPECT_GT(area, 0);
    // Noise may cut specks off a room that is shown whole; what a lidar shows is cleaned.
    if (family().mapped || family().name == "explored") expectOnePieceEach(plan.rooms);
}

TEST_P(EveryFamily, ShowsRoomsWhereTheyAre) {
    int same = 0, compared = 0;
    for (int row = 0; row < plan.rooms.rows; ++row) {
        for (int col = 0; col < plan.rooms.cols; ++col) {
            const int shown = plan.rooms.at<std::uint16_t>(row, col);
            const std::uint16_t real = plan.floor.at<std::uint16_t>(row, col);
            if (shown == 0 || real == 0) continue;
            ++compared;
            if (plan.rooms_of_floor[real] == shown) ++same;
        }
    }
    // A robot that errs by 0.1 m shifts a room of 4 m by 2.5 % of its breadth.
    EXPECT_GE(same, compared / 100 * 97);
    EXPECT_GE(compared, 3 * 800);
}

TEST_P(EveryFamily, ShowsOfEachRoomAtLeastAFifth) {
    const std::vector<int> real = areasOf(plan.floor), shown = areasOf(plan.rooms);
    for (std::size_t room = 1; room < real.size(); ++room) {
        const int number = plan.rooms_of_floor[room];
        if (number == 0) continue;
        // The largest of several pieces may be less than all that was seen.
        EXPECT_GE(shown[static_cast<std::size_t>(number)] * 8, real[room]) << "room " << room;
    }
}

TEST_P(EveryFamily, ListsTheDoorsBetweenRoomsThatAreShown) {
    std::size_t expected = 0;
    for (const Door& door : plan.floor_doors) {
        if (plan.rooms_of_floor[static_cast<std::size_t>(door.room_a)] > 0 &&
            plan.rooms_of_floor[static_cast<std::size_t>(door.room_b)] > 0) {
            ++expected;
        }
    }
    EXPECT_EQ(plan.doors.size(), expected);
    for (const Door& door : plan.doors) {
        EXPECT_GE(door.room_a, 1);
        EXPECT_LE(door.room_b, highestOf(plan.rooms));
    }
}

TEST_P(EveryFamily, KeepsTheBuildingWhenTurned) {
    FamilyOptions options;
    options.rotation_tenths_deg = 0;
    const cv::Mat straight = makeFamilyPlan(family().name, GetParam().seed, options).floor;
    options.rotation_tenths_deg = 217;
    const cv::Mat turned = makeFamilyPlan(family().name, GetParam().seed, options).floor;
    const std::vector<int> before = areasOf(straight), after = areasOf(turned);
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t room = 1; room < before.size(); ++room) {
        // Half a pixel all along the outline is what rounding may move walls by; those as thin as
        // can be drawn are thicker at an angle.
        const int most = outlineOf(straight, static_cast<int>(room)) * 3 / 4;
        EXPECT_NEAR(after[room], before[room], most) << "room " << room;
    }
}

TEST_P(EveryFamily, DrawsATruthWhoseWhiteAreasAreTheRooms) {
    cv::Mat areas;
    const cv::Mat truth = drawnTruth(plan.rooms);
    const int count = cv::connectedComponents(truth, areas, 8, CV_32S);
    std::vector<std::set<int>> members(static_cast<std::size_t>(count));
    for (int row = 0; row < areas.rows; ++row) {
        for (int col = 0; col < areas.cols; ++col) {
            members[static_cast<std::size_t>(areas.at<int>(row, col))].insert(
                plan.rooms.at<std::uint16_t>(row, col));
        }
    }
    for (std::size_t area = 1; area < members.size(); ++area) EXPECT_EQ(members[area].size(), 1U);
    // Only borders are lost, and a border is as long as a door or a crack in a wall.
    EXPECT_GT(cv::countNonZero(truth), cv::countNonZero(plan.rooms > 0) * 9 / 10);
}

// --- Families one by one ------------------------------------------------------------------------

TEST(MakeFamilyPlan, DiffersBetweenSeedsAndFamilies) {
    std::set<std::vector<int>> seen;
    for (const FamilyInfo& family : planFamilies()) {
        for (std::uint64_t seed = 1; seed <= 2; ++seed) {
            seen.insert(areasOf(makeFamilyPlan(family.name, seed).floor));
        }
    }
    EXPECT_EQ(seen.size(), 2 * planFamilies().size());
}

// FNV-1a over what a plan consists of.
class Hash {
 public:
    void add(const cv::Mat& image) {
        for (int row = 0; row < image.rows; ++row) {
            const std::uint8_t* bytes = image.ptr<std::uint8_t>(row);
            const std::size_t count = static_cast<std::size_t>(image.cols) * image.elemSize();
            for (std::size_t i = 0; i < count; ++i) add(bytes[i]);
        }
    }
    void add(const Door& door) {
        for (const int number :
             {door.a.x, door.a.y, door.b.x, door.b.y, door.room_a, door.room_b, door.width_mm}) {
            for (int shift = 0; shift < 32; shift += 8) {
                add(static_cast<std::uint8_t>(static_cast<unsigned>(number) >> shift));
            }
        }
    }
    std::uint64_t value() const { return value_; }

 private:
    void add(std::uint8_t byte) { value_ = (value_ ^ byte) * 0x100000001B3U; }
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

std::uint64_t hashOf(const FamilyPlan& plan) {
    Hash hash;
    for (const cv::Mat& image : {plan.map, plan.rooms, plan.floor}) hash.add(image);
    for (const Door& door : plan.doors) hash.add(door);
    return hash.value();
}

// A measurement on made-up plans can be repeated only if everybody gets the same ones: on every
// machine, at every optimisation level. Whoever changes a family on purpose renews its number.
TEST(MakeFamilyPlan, GivesTheSameBytesEverywhere) {
    const std::map<std::string, std::uint64_t> expected{
        {"offices", 0xEA4BD24723CEC928U},         {"homes", 0xC7C9DD38160E8E68U},
        {"shapes", 0x1F244B2C4D2A5CBDU},          {"halls", 0x22385073353DB259U},
        {"cubicles", 0x5E5F6530D1C30473U},        {"glass", 0x92C5FAE08E0C9A2DU},
        {"bends", 0x239DDC5139746CC2U},           {"openings", 0x32F8E7DB9426A944U},
        {"campus", 0xF9EB12B810271623U},          {"star", 0x2C02DB4F3DABD679U},
        {"explored", 0x8ED2F61924E4CDDAU},        {"fans", 0x9055DADD40A4822AU},
        {"doubled", 0x0EEA526E1C0D6DC7U},         {"furnished", 0x36F843922DB6DB75U},
        {"thickness", 0xE609E4A4ED4C85DAU},       {"mapped_office", 0xBB8AB29BABC047A7U},
        {"mapped_home", 0x27E409D9B3DCA4E1U},     {"mapped_hall", 0x6988E0FCC3CCAD5BU},
        {"mapped_cubicles", 0x5693060E53E36E6AU}, {"mapped_glass", 0xB8881A285DB4A2ABU},
        {"mapped_partial", 0xEF97F4D6A0222D5AU},  {"mapped_wings", 0x8BBA2F78F4ADE528U},
        {"mapped_drift", 0x0777A9483D845140U},    {"mapped_outlined", 0x176305D711982453U},
    };
    for (const FamilyInfo& family : planFamilies()) {
        ASSERT_EQ(expected.count(family.name), 1U) << family.name;
        EXPECT_EQ(hashOf(makeFamilyPlan(family.name, 3)), expected.at(family.name)) << family.name;
    }
}

TEST(MakeFamilyPlan, LeavesFansWithoutARoom) {
    for (const char* family : {"fans", "mapped_glass"}) {
        const FamilyPlan plan = makeFamilyPlan(family, 1);
        const cv::Mat rays = (plan.map == kMapFree) & (plan.rooms == 0) & (plan.floor == 0);
        EXPECT_GT(cv::countNonZero(rays), 300) << family;
    }
}

TEST(MakeFamilyPlan, ShowsOnlyPartOfWhatIsHalfExplored) {
    int shown = 0, real = 0;
    for (const char* family : {"explored", "mapped_partial"}) {
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
            const FamilyPlan plan = makeFamilyPlan(family, seed);
            shown += cv::countNonZero((plan.map == kMapFree) & (plan.floor > 0));
            real += cv::countNonZero(plan.floor);
        }
    }
    EXPECT_LT(shown, real * 9 / 10);
    EXPECT_GT(shown, real * 3 / 10);
}

TEST(MakeFamilyPlan, MakesEachBayOfTheCubiclesARoom) {
    const FamilyPlan plan = makeFamilyPlan("cubicles", 1);
    const std::vector<int> areas = areasOf(plan.floor);
    const auto isBay = [](int area) { return area >= 2 * 400 && area <= 6 * 400; };
    EXPECT_GE(std::count_if(areas.begin() + 1, areas.end(), isBay), 6);
    const auto wide = [](const Door& door) { return door.width_mm >= 1300; };
    EXPECT_GE(std::count_if(plan.floor_doors.begin(), plan.floor_doors.end(), wide), 6);
}

TEST(MakeFamilyPlan, HasRoundRoomsAmongTheShapes) {
    int round = 0;
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        const cv::Mat floor = makeFamilyPlan("shapes", seed).floor;
        for (int room = 1; room <= highestOf(floor); ++room) {
            std::vector<std::vector<cv::Point>> outlines;
            cv::findContours(floor == room, outlines, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
            cv::Point2f middle;
            float radius = 0;
            cv::minEnclosingCircle(outlines.front(), middle, radius);
            const double disc = CV_PI * static_cast<double>(radius) * static_cast<double>(radius);
            // A square fills 64 % of the circle around it; doorways stick out of a disc a little.
            if (cv::contourArea(outlines.front()) > 0.72 * disc) ++round;
        }
    }
    EXPECT_GE(round, 3);
}

TEST(MakeFamilyPlan, ScalesWithTheResolution) {
    FamilyOptions options;
    options.rotation_tenths_deg = 0;
    const std::vector<int> coarse = areasOf(makeFamilyPlan("offices", 3, options).floor);
    options.resolution_um /= 2;
    const std::vector<int> fine = areasOf(makeFamilyPlan("offices", 3, options).floor);
    ASSERT_EQ(coarse.size(), fine.size());
    for (std::size_t room = 1; room < coarse.size(); ++room) {
        EXPECT_NEAR(fine[room], 4 * coarse[room], 0.06 * fine[room]) << "room " << room;
    }
}

TEST(MakeFamilyPlan, RefusesWhatItDoesNotKnow) {
    EXPECT_THAT(
        [] { makeFamilyPlan("castles", 1); },
        ThrowsMessage<std::invalid_argument>("makeFamilyPlan: There is no family \"castles\"."));
    FamilyOptions options;
    options.resolution_um = 10000;
    EXPECT_THAT([&] { makeFamilyPlan("homes", 1, options); },
                ThrowsMessage<std::invalid_argument>(
                    "makeFamilyPlan: resolution_um must be 20000 to 200000 um, but is 10000."));
}

TEST(PlanFamilies, HaveDifferentNamesAndASentenceEach) {
    std::set<std::string> names;
    for (const FamilyInfo& family : planFamilies()) {
        EXPECT_TRUE(names.insert(family.name).second) << family.name;
        EXPECT_EQ(family.sentence.back(), '.') << family.name;
        EXPECT_EQ(family.name.rfind("mapped_", 0) == 0, family.mapped) << family.name;
    }
}

// --- Truth --------------------------------------------------------------------------------------

cv::Mat rooms16(const char* text) {
    cv::Mat result;
    labels(text).convertTo(result, CV_16U);
    return result;
}

TEST(DrawnTruth, CutsTheLowerRoomAtABorder) {
    EXPECT_THAT(drawnTruth(rooms16("1 1 2 2\n"
                                   "1 1 2 2\n"
                                   ". . . .\n"
                                   "3 3 . 1")),
                MatEq(labels("255 .   255 255\n"
                             "255 .   255 255\n"
                             ".   .   .   .\n"
                             "255 255 .   255")));
}

// At 1 m per pixel a room needs 2 pixels, and a fifth of its floor; gaps of 2 pixels are closed.
constexpr int kMetre = 1000000;

TEST(RoomsSeen, FillsGapsAndKeepsWhatIsFreeOfOthers) {
    const cv::Mat floor = rooms16("1 1 1 1 1 2 2");
    const cv::Mat seen = rooms16("1 1 . 1 1 2 2");
    EXPECT_THAT(families::roomsSeen(seen, seen > 0, floor, 2, kMetre),
                MatEq(rooms16("1 1 1 1 1 2 2")));
    EXPECT_THAT(families::roomsSeen(rooms16("1 1 2 1 1 2 2"), floor > 0, floor, 2, kMetre),
                MatEq(rooms16("1 1 . . . 2 2")));  // Of either room the first largest piece.
}

TEST(RoomsSeen, DropsRoomsOfWhichLittleWasSeen) {
    const cv::Mat floor = rooms16("1 1 1 1 1 1 1 1 1 1 1 2 2 . 3 3");
    const cv::Mat seen = rooms16("1 1 . . . . . . . . . 2 . . 3 3");
    // 2 of 11 are less than a fifth, 1 m^2 is too small.
    EXPECT_THAT(families::roomsSeen(seen, seen > 0, floor, 3, kMetre),
                MatEq(rooms16(". . . . . . . . . . . . . . 3 3")));
}

TEST(Renumber, LeavesNoGap) {
    cv::Mat rooms = rooms16("2 2 . 5");
    EXPECT_EQ(families::renumber(rooms, 5), (std::vector<int>{0, 0, 1, 0, 0, 2}));
    EXPECT_THAT(rooms, MatEq(rooms16("1 1 . 2")));
}

// --- Geometry -----------------------------------------------------------------------------------

TEST(DirectionOf, AgreesWithSineAndCosine) {
    for (int hundredths = -40000; hundredths < 40000; hundredths += 13) {
        const double angle = hundredths * CV_PI / 18000;
        const families::Direction direction = families::directionOf(hundredths);
        const double allowed = std::ldexp(1.0, 10);  // 2^-20 of one, which is 2^30.
        EXPECT_NEAR(direction.x, std::cos(angle) * std::ldexp(1.0, 30), allowed);
        EXPECT_NEAR(direction.y, std::sin(angle) * std::ldexp(1.0, 30), allowed);
    }
}

TEST(Overlap, TellsBoxesAtAnAngleApart) {
    // The diamond of half diagonal 1.41 m about (2.5, 2.5) covers the corner (2, 2) of the box up
    // to there; about (3.1, 3.1) it ends 0.1 m * 1.41 away from it.
    const families::Shape box = families::shapeOf({}, {0, 0, 2000, 2000});
    const auto diamond = [](int at) {
        return families::shapeOf({}, {at - 1000, at - 1000, at + 1000, at + 1000}, false, 450);
    };
    EXPECT_TRUE(overlap(box, diamond(2500)));
    EXPECT_FALSE(overlap(box, diamond(3100)));
    EXPECT_FALSE(overlap(box, families::shapeOf({}, {2000, 0, 3000, 2000})));
}

TEST(RayField, StopsAtTheFirstThingThatStopsIt) {
    families::Canvas canvas;
    canvas.material = cv::Mat(9, 40, CV_8UC1, cv::Scalar(families::kFloor));
    canvas.material.col(20).setTo(cv::Scalar(families::kGlass));
    canvas.material.col(30).setTo(cv::Scalar(families::kWall));
    const families::RayField field(canvas);
    const families::Place from = families::middleOf(4, 3);
    const auto hit = [&](int angle, int most, int least) {
        return field.cast(from, families::directionOf(angle), most,
                          [&](std::uint8_t material, int, int) { return material == least; });
    };
    EXPECT_EQ(hit(0, 100, families::kGlass).pixels, 17);
    EXPECT_EQ(hit(0, 100, families::kWall).pixels, 27);
    EXPECT_FALSE(hit(0, 26, families::kWall).found);       // Too far.
    EXPECT_FALSE(hit(18000, 100, families::kWall).found);  // Leaves the picture.
}

TEST(RayField, KnowsTheChessboardDistance) {
    families::Canvas canvas;
    canvas.material = cv::Mat(7, 9, CV_8UC1, cv::Scalar(families::kFloor));
    canvas.material.at<std::uint8_t>(2, 3) = families::kWall;
    canvas.material.at<std::uint8_t>(6, 8) = families::kThing;
    const cv::Mat clearance = families::RayField(canvas).clearance();
    for (int row = 0; row < 7; ++row) {
        for (int col = 0; col < 9; ++col) {
            const int to_wall = std::max(std::abs(row - 2), std::abs(col - 3));
            const int to_thing = std::max(std::abs(row - 6), std::abs(col - 8));
            EXPECT_EQ(clearance.at<std::uint8_t>(row, col), std::min(to_wall, to_thing));
        }
    }
}

// --- Files --------------------------------------------------------------------------------------

TEST(WriteFamilyPlan, WritesMapsAndTruthAsTheyAreScored) {
    const TempDir folder;
    const FamilyPlan plan = makeFamilyPlan("homes", 1);
    writeFamilyPlan(plan, folder.path(), "home");
    const auto read = [&](const char* file) {
        return cv::imread(folder.path() + "/" + file, cv::IMREAD_UNCHANGED);
    };
    EXPECT_THAT(read("home.png"), MatEq(plan.map));
    EXPECT_THAT(read("home_gt_segmentation.png"), MatEq(drawnTruth(plan.rooms)));
    EXPECT_THAT(read("home_rooms.png"), MatEq(plan.rooms));
    EXPECT_THAT([&] { writeFamilyPlan(plan, folder.path(), "a/b"); },
                ThrowsMessage<std::invalid_argument>("writeFamilyPlan: \"a/b\" is no file name."));
    EXPECT_THAT([&] { writeFamilyPlan(plan, folder.path() + "/absent", "x"); },
                ThrowsMessage<std::runtime_error>("writeFamilyPlan: Cannot write " + folder.path() +
                                                  "/absent/x.png: No such file or directory."));
}

}  // namespace
}  // namespace vorund::test
