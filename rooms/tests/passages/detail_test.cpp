#include "passages/detail.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "families/plan_families.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/settings.h"

namespace vorund::rooms {
namespace {

using ::testing::DoubleEq;
using ::testing::ThrowsMessage;

const std::vector<double> kDetails{-2.0, -1.0, -0.5, 0.0, 0.5, 1.0, 2.0};

RoomsConfig atDetail(double detail) {
    RoomsConfig config;
    config.detail = detail;
    return rooms::atDetail(config);
}

TEST(AtDetail, LeavesEverythingAsItIsAtZero) {
    const RoomsConfig config;
    const RoomsConfig scaled = atDetail(0.0);
    EXPECT_EQ(scaled.open_ratio, config.open_ratio);
    EXPECT_EQ(scaled.narrow_ratio, config.narrow_ratio);
    EXPECT_EQ(scaled.least_area, config.least_area);
}

TEST(AtDetail, MultipliesOdds) {
    RoomsConfig config;
    config.open_ratio = 0.5;     // Odds of 1.
    config.narrow_ratio = 0.75;  // Odds of 3.
    config.least_area = 6.0;
    config.detail = 1.0;
    const RoomsConfig finer = rooms::atDetail(config);
    EXPECT_THAT(finer.open_ratio, DoubleEq(2.0 / 3.0));
    EXPECT_THAT(finer.narrow_ratio, DoubleEq(6.0 / 7.0));
    EXPECT_THAT(finer.least_area, DoubleEq(3.0));
    config.detail = -2.0;
    const RoomsConfig coarser = rooms::atDetail(config);
    EXPECT_THAT(coarser.open_ratio, DoubleEq(0.25));
    EXPECT_THAT(coarser.narrow_ratio, DoubleEq(0.5));
    EXPECT_THAT(coarser.least_area, DoubleEq(18.0));
}

TEST(AtDetail, MovesAllThreeInOneDirection) {
    for (std::size_t i = 1; i < kDetails.size(); ++i) {
        const RoomsConfig coarse = atDetail(kDetails[i - 1]);
        const RoomsConfig fine = atDetail(kDetails[i]);
        EXPECT_LT(coarse.open_ratio, fine.open_ratio);
        EXPECT_LT(coarse.narrow_ratio, fine.narrow_ratio);
        EXPECT_GT(coarse.least_area, fine.least_area);
        EXPECT_LT(fine.open_ratio, 1.0);
    }
}

TEST(AtDetail, KeepsTheEndsOfTheScale) {
    RoomsConfig config;
    config.open_ratio = 0.0;
    config.narrow_ratio = 1.0;
    for (const double detail : kDetails) {
        config.detail = detail;
        EXPECT_EQ(rooms::atDetail(config).open_ratio, 0.0);
        EXPECT_EQ(rooms::atDetail(config).narrow_ratio, 1.0);
    }
}

TEST(Detail, IsASettingFromMinusTwoToTwo) {
    Settings settings;
    EXPECT_TRUE(applySetting("rooms/detail=-1.5", settings).empty());
    EXPECT_EQ(settings.rooms.detail, -1.5);
    EXPECT_THAT(
        [&] { applySetting("rooms/detail=3", settings); },
        ThrowsMessage<SettingError>("rooms/detail: is 3 (permitted: a number from -2 to 2)"));
}

GridMap mapOf(const test::FamilyPlan& plan) {
    GridMap map;
    map.picture = plan.map;
    cv::Mat(plan.map < 250).convertTo(map.values, CV_32F, 1.0 / 255.0);
    return map;
}

std::size_t countRooms(const GridMap& map, double detail) {
    Settings settings;
    settings.rooms.detail = detail;
    return findRooms(map, settings, Debugger::create(DebuggerConfig{})).rooms.size();
}

/// Not by construction (see detail.h), but on all plans that were tried.
TEST(Detail, NeverGivesFewerRoomsOnPlansOfAllFamilies) {
    std::size_t coarsest = 0;
    std::size_t finest = 0;
    for (const test::FamilyInfo& family : test::planFamilies()) {
        const GridMap map = mapOf(test::makeFamilyPlan(family.name, 3));
        std::size_t before = 0;
        for (const double detail : {-2.0, -1.0, 0.0, 1.0, 2.0}) {
            const std::size_t rooms = countRooms(map, detail);
            EXPECT_GE(rooms, before) << family.name << " at " << detail;
            before = rooms;
            if (detail < -1.5) coarsest += rooms;
        }
        finest += before;
    }
    EXPECT_GT(finest, coarsest + coarsest / 4);  // The knob does something.
}

}  // namespace
}  // namespace vorund::rooms
