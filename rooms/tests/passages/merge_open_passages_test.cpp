#include "passages/merge_open_passages.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "drawn_regions.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::ElementsAre;

RoomsConfig ratioAlone(double open_ratio) {
    RoomsConfig config;
    config.open_ratio = open_ratio;
    config.narrow_passage = 0.0;
    return config;
}

std::vector<int> nodesOf(const Regions& regions) {
    std::vector<int> nodes;
    for (const auto& node : regions.table.graph.nodes()) nodes.push_back(node.first);
    return nodes;
}

std::vector<int> merged(const DrawnRegions& drawn, const RoomsConfig& config = {},
                        const std::vector<FoundDoorway>& doorways = {}) {
    Regions regions = drawn.regions();
    mergeOpenPassages(regions, drawn.floor(), doorways, config);
    return nodesOf(regions);
}

// A room of 59 pixels has a clearance of 30 pixels in its middle, an opening of n one of (n + 1)/2.

TEST(MergeOpenPassages, KeepsRoomsOnBothSidesOfADoor) {
    EXPECT_THAT(merged(twoRooms(59, 17)), ElementsAre(1, 2));
}

TEST(MergeOpenPassages, JoinsRoomsAcrossAWideOpening) {
    EXPECT_THAT(merged(twoRooms(59, 41)), ElementsAre(1));
}

TEST(MergeOpenPassages, JoinsAboveTheRatioAndNotAtIt) {
    EXPECT_THAT(merged(twoRooms(59, 29), ratioAlone(0.5)), ElementsAre(1, 2)) << "15 of 30";
    EXPECT_THAT(merged(twoRooms(59, 31), ratioAlone(0.5)), ElementsAre(1)) << "16 of 30";
    EXPECT_THAT(merged(twoRooms(59, 35), ratioAlone(0.6)), ElementsAre(1, 2)) << "18 of 30";
    EXPECT_THAT(merged(twoRooms(59, 37), ratioAlone(0.6)), ElementsAre(1)) << "19 of 30";
}

TEST(MergeOpenPassages, JoinsNothingAtARatioThatBinaryFractionsMiss) {
    // 0.7 * 0.7 is below 0.49 in double precision: 14 of 20 pixels, and 21 of 30.
    EXPECT_THAT(merged(twoRooms(39, 27), ratioAlone(0.7)), ElementsAre(1, 2));
    EXPECT_THAT(merged(twoRooms(59, 41), ratioAlone(0.7)), ElementsAre(1, 2));
    EXPECT_THAT(merged(twoRooms(59, 43), ratioAlone(0.7)), ElementsAre(1));
}

TEST(MergeOpenPassages, AsksNarrowPassagesForMore) {
    RoomsConfig config;
    config.open_ratio = 0.5;
    config.narrow_ratio = 0.75;
    config.narrow_passage = 1.6;  // A clearance of 16 pixels is not below.
    EXPECT_THAT(merged(twoRooms(49, 29), config), ElementsAre(1, 2)) << "narrow, 15 of 25";
    EXPECT_THAT(merged(twoRooms(49, 31), config), ElementsAre(1)) << "not narrow, 16 of 25";
    EXPECT_THAT(merged(twoRooms(37, 29), config), ElementsAre(1)) << "narrow, 15 of 19";
    EXPECT_THAT(merged(twoRooms(39, 29), config), ElementsAre(1, 2)) << "narrow, 15 of 20";
}

TEST(MergeOpenPassages, ComparesWithTheRoomierSide) {
    // As wide as the smaller room, and yet a door of the larger: 14 of 30, and 14 of 14.
    DrawnRegions drawn(cv::Size(110, 70));
    drawn.region(1, {4, 4, 59, 59}).region(2, {63, 20, 40, 27}).line({63, 20, 1, 27});
    EXPECT_THAT(merged(drawn), ElementsAre(1, 2));
}

TEST(MergeOpenPassages, KeepsTheRoomsBesideACorridor) {
    // A corridor of 25 pixels (a clearance of 13), in three regions as seeds divide it, and three
    // rooms of 49 with doors of 17 (9).
    DrawnRegions drawn(cv::Size(169, 90));
    drawn.region(1, {4, 61, 161, 25});
    drawn.region(2, {57, 61, 53, 25}).region(3, {110, 61, 55, 25});
    drawn.line({57, 61, 1, 25}).line({110, 61, 1, 25});
    for (int room = 0; room < 3; ++room) {
        const int left = 4 + 55 * room;
        drawn.region(10 + room, {left, 4, 49, 49});
        drawn.region(10 + room, {left + 16, 53, 17, 8}).line({left + 16, 57, 17, 1});
        drawn.region(1 + room, {left + 16, 58, 17, 3});
    }
    EXPECT_THAT(merged(drawn), ElementsAre(1, 10, 11, 12))
        << "1 and 2, which came first, are larger than 3";
}

TEST(MergeOpenPassages, JoinsAChainOfOpenRegions) {
    DrawnRegions drawn(cv::Size(210, 50));
    for (int i = 0; i < 5; ++i) drawn.region(7 - i, {4 + 40 * i, 4, 40, 40});
    for (int i = 1; i < 5; ++i) drawn.line({4 + 40 * i, 4, 1, 40});
    // 3 and 4 first, of which 3 has the smaller label; it is larger than any that follows.
    EXPECT_THAT(merged(drawn), ElementsAre(3));
}

TEST(MergeOpenPassages, GivesEqualRegionsTheSmallerLabel) {
    DrawnRegions drawn(cv::Size(100, 50));
    drawn.region(8, {4, 4, 40, 40}).region(5, {45, 4, 40, 40}).line({44, 4, 1, 40});
    EXPECT_THAT(merged(drawn), ElementsAre(5));
}

TEST(MergeOpenPassages, GivesASpeckToTheWidestPassage) {
    // 9 has less than 400 pixels, a door to the left and a wider one to the right.
    DrawnRegions drawn(cv::Size(160, 70));
    drawn.region(1, {4, 4, 59, 59}).region(2, {94, 4, 59, 59}).region(9, {69, 20, 13, 19});
    drawn.region(9, {63, 25, 6, 5}).line({63, 25, 1, 5});
    drawn.region(9, {82, 24, 12, 7}).line({93, 24, 1, 7});
    Regions regions = drawn.regions();
    const double area =
        regions.table.graph.getNodeData(2).area + regions.table.graph.getNodeData(9).area;
    mergeOpenPassages(regions, drawn.floor(), {}, {});
    EXPECT_THAT(nodesOf(regions), ElementsAre(1, 2));
    EXPECT_NEAR(regions.table.graph.getNodeData(2).area, area, 1e-9);
}

TEST(MergeOpenPassages, GivesASpeckBetweenEqualPassagesToTheSmallerLabel) {
    DrawnRegions drawn(cv::Size(160, 70));
    drawn.region(6, {4, 4, 59, 59}).region(3, {94, 4, 59, 59}).region(9, {69, 20, 13, 15});
    drawn.region(9, {63, 25, 6, 5}).line({63, 25, 1, 5});
    drawn.region(9, {82, 25, 12, 5}).line({93, 25, 1, 5});
    Regions regions = drawn.regions();
    const double area =
        regions.table.graph.getNodeData(3).area + regions.table.graph.getNodeData(9).area;
    mergeOpenPassages(regions, drawn.floor(), {}, {});
    EXPECT_THAT(nodesOf(regions), ElementsAre(3, 6));
    EXPECT_NEAR(regions.table.graph.getNodeData(3).area, area, 1e-9);
}

/// A room, and behind a door of nine pixels another of that size.
DrawnRegions roomWith(const cv::Size& other) {
    DrawnRegions drawn(cv::Size(80 + other.width, std::max(68, other.height + 8)));
    drawn.region(1, {4, 4, 59, 59}).region(2, {69, 4, other.width, other.height});
    drawn.region(1, {63, 5, 6, 9}).line({68, 5, 1, 9});
    return drawn;
}

TEST(MergeOpenPassages, KeepsRoomsFromLeastAreaOn) {
    RoomsConfig config;
    config.least_area = 2.0;
    EXPECT_THAT(merged(roomWith({40, 20}), config), ElementsAre(1, 2)) << "800 pixels";
    EXPECT_THAT(merged(roomWith({47, 17}), config), ElementsAre(1)) << "799 pixels";
    config.least_area = 0.0;
    EXPECT_THAT(merged(roomWith({25, 16}), config), ElementsAre(1, 2)) << "400 pixels";
    EXPECT_THAT(merged(roomWith({21, 19}), config), ElementsAre(1)) << "399 pixels, a cupboard";
}

TEST(MergeOpenPassages, TakesNarrowGapsForNoRooms) {
    EXPECT_THAT(merged(roomWith({100, 12})), ElementsAre(1)) << "0.6 m wide, 3 m^2";
    EXPECT_THAT(merged(roomWith({100, 14})), ElementsAre(1, 2)) << "0.7 m wide, 3.5 m^2";
    EXPECT_THAT(merged(roomWith({250, 12})), ElementsAre(1, 2)) << "7.5 m^2, a corridor";
}

TEST(MergeOpenPassages, LeavesSmallRegionsThatStandAlone) {
    DrawnRegions drawn(cv::Size(100, 70));
    drawn.region(1, {4, 4, 59, 59}).region(2, {70, 4, 6, 6});
    EXPECT_THAT(merged(drawn), ElementsAre(1, 2));
}

TEST(MergeOpenPassages, JoinsNothingAtARatioOfOneAndAllThatIsOpenAtZero) {
    RoomsConfig none = ratioAlone(1.0);
    EXPECT_THAT(merged(twoRooms(59, 59), none), ElementsAre(1, 2));
    RoomsConfig all = ratioAlone(0.0);
    EXPECT_THAT(merged(twoRooms(59, 1), all), ElementsAre(1));
}

TEST(MergeOpenPassages, SeesAWallThatARegionHolds) {
    // An opening of 41 with a pillar across the middle of its line: two passages of 20, 10 of 30.
    const DrawnRegions drawn = twoRooms(59, 41);
    cv::Mat floor = drawn.floor();
    floor(cv::Rect(64, 34, 5, 1)).setTo(0);
    Regions regions = drawn.regions();
    mergeOpenPassages(regions, floor, {}, {});
    EXPECT_THAT(nodesOf(regions), ElementsAre(1, 2));
}

// The doorway fills the opening in the wall, which begins five pixels before the second room.

FoundDoorway doorwayAt(const cv::Point& first_jamb, int width) {
    return {first_jamb, first_jamb + cv::Point(0, width + 1), width, 40};
}

TEST(MergeOpenPassages, JoinsNothingThroughADoorway) {
    // 19 of 30 are open; the doorway's pixels are the line between the two.
    const DrawnRegions drawn = twoRooms(59, 37);
    EXPECT_THAT(merged(drawn), ElementsAre(1));
    EXPECT_THAT(merged(drawn, {}, {doorwayAt({66, 15}, 37)}), ElementsAre(1, 2));
}

TEST(MergeOpenPassages, JoinsThroughAnOpeningBesideADoorway) {
    // Two openings in one wall; only the narrow one is a doorway.
    DrawnRegions drawn(cv::Size(140, 130));
    drawn.region(1, {4, 4, 59, 119}).region(2, {68, 4, 59, 119});
    for (const auto& [top, height] : {std::make_pair(10, 17), std::make_pair(50, 61)}) {
        drawn.region(1, {63, top, 3, height}).region(2, {67, top, 1, height});
        drawn.line({66, top, 1, height});
    }
    EXPECT_THAT(merged(drawn, {}, {doorwayAt({66, 9}, 17)}), ElementsAre(1));
    EXPECT_THAT(merged(drawn, {}, {doorwayAt({66, 9}, 17), doorwayAt({66, 49}, 61)}),
                ElementsAre(1, 2));
}

TEST(MergeOpenPassages, LetsSmallRegionsLeaveThroughTheWidestPassageEvenIfItIsADoorway) {
    // 9 has less than 400 pixels, an opening of 5 to the left and a doorway of 11 to the right.
    DrawnRegions drawn(cv::Size(160, 70));
    drawn.region(1, {4, 4, 59, 59}).region(2, {94, 4, 59, 59}).region(9, {69, 20, 13, 13});
    drawn.region(9, {63, 25, 6, 5}).line({63, 25, 1, 5});
    drawn.region(9, {82, 22, 12, 11}).line({93, 22, 1, 11});
    Regions regions = drawn.regions();
    const double area =
        regions.table.graph.getNodeData(2).area + regions.table.graph.getNodeData(9).area;
    mergeOpenPassages(regions, drawn.floor(), {doorwayAt({93, 21}, 11)}, {});
    EXPECT_THAT(nodesOf(regions), ElementsAre(1, 2));
    EXPECT_NEAR(regions.table.graph.getNodeData(2).area, area, 1e-9);
}

TEST(MergeOpenPassages, JoinsTheMostOpenPassageFirst) {
    // 16 of 25 on the left comes before 12 of 20 on the right, which then has 12 of 25. The other
    // way round all three were one.
    RoomsConfig config = ratioAlone(0.55);
    DrawnRegions drawn(cv::Size(180, 60));
    drawn.region(1, {4, 4, 49, 49}).region(2, {57, 4, 39, 39}).region(3, {100, 4, 39, 39});
    drawn.region(1, {53, 8, 4, 31}).line({56, 8, 1, 31});
    drawn.region(2, {96, 12, 4, 23}).line({99, 12, 1, 23});
    EXPECT_THAT(merged(drawn, config), ElementsAre(1, 3));
}

TEST(MergeOpenPassages, TakesLabelsOfAnySize) {
    EXPECT_THAT(merged(twoRooms(59, 41, 3'000'000, 256)), ElementsAre(256));
    EXPECT_THAT(merged(twoRooms(59, 17, 3'000'000, 256)), ElementsAre(256, 3'000'000));
    EXPECT_THAT(merged(twoRooms(59, 41, 254, 70'000)), ElementsAre(254));
}

}  // namespace
}  // namespace vorund::rooms
