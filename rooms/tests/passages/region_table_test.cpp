#include "passages/region_table.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "drawn_regions.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::MatEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Pair;
using ::testing::SizeIs;

constexpr double kPixel = 0.05 * 0.05;  // [m^2]

/// The table of a drawn grid in which all that has a label is floor.
RegionTable tableOf(const cv::Mat& separated) {
    return {regionsOf(separated.clone()), separated != 0, {}};
}

std::vector<int> labelsOf(const RegionTable& table) {
    std::vector<int> labels;
    for (const auto& region : table.regions()) labels.push_back(region.first);
    return labels;
}

TEST(RegionTable, KnowsAreasClearancesAndBorders) {
    // The line's middle is two pixels from the walls above and below, the third column of 2 too,
    // and outside is wall.
    const RegionTable table =
        tableOf(labels32(". .  .  . . .\n"
                         "1 1 255 2 2 2\n"
                         "1 1 255 2 2 2\n"
                         "1 1 255 2 2 2\n"
                         ". .  .  . . ."));
    ASSERT_THAT(table.regions(), ElementsAre(Key(1), Key(2)));
    const Region& left = table.regions().at(1);
    EXPECT_DOUBLE_EQ(left.area(), 6 * kPixel);
    EXPECT_EQ(left.clearance, 4);
    EXPECT_DOUBLE_EQ(left.width(), 4 * 0.05);
    ASSERT_THAT(left.passages, ElementsAre(Key(2)));
    EXPECT_EQ(left.passages.at(2).clearance, 4);
    EXPECT_DOUBLE_EQ(left.passages.at(2).length, 3 * 0.05);
    const Region& right = table.regions().at(2);
    EXPECT_DOUBLE_EQ(right.area(), 9 * kPixel);
    ASSERT_THAT(right.passages, ElementsAre(Key(1)));
    EXPECT_EQ(right.passages.at(1).clearance, 4);
}

TEST(RegionTable, MeasuresDiagonalDistancesExactly) {
    // The middle is two pixels down and two aside of each piece of wall, and four from outside.
    const RegionTable table =
        tableOf(labels32("7 7 7 7 7 7 7\n"
                         "7 . 7 7 7 . 7\n"
                         "7 7 7 7 7 7 7\n"
                         "7 7 7 7 7 7 7\n"
                         "7 7 7 7 7 7 7\n"
                         "7 . 7 7 7 . 7\n"
                         "7 7 7 7 7 7 7"));
    EXPECT_EQ(table.regions().at(7).clearance, 8);
}

TEST(RegionTable, TakesWallWithinARegionForWall) {
    const cv::Mat separated = labels32(
        "3 3 3 3 3\n"
        "3 3 3 3 3\n"
        "3 3 3 3 3\n"
        "3 3 3 3 3\n"
        "3 3 3 3 3");
    cv::Mat floor = separated != 0;
    EXPECT_EQ(RegionTable(regionsOf(separated.clone()), floor, {}).regions().at(3).clearance, 9);
    floor.at<std::uint8_t>(2, 2) = 0;
    // One pixel down and one aside of the middle.
    EXPECT_EQ(RegionTable(regionsOf(separated.clone()), floor, {}).regions().at(3).clearance, 2);
    EXPECT_EQ(RegionTable(regionsOf(separated.clone()), cv::Mat::zeros(5, 5, CV_8UC1), {})
                  .regions()
                  .at(3)
                  .clearance,
              0);
}

TEST(RegionTable, TakesUnreachedFloorForFloor) {
    const RegionTable table =
        tableOf(labels32("  5   5   5\n"
                         "  5   5   5\n"
                         "255 255 255\n"
                         "255 255 255"));
    // (1, 1) is two from the left, the right and the upper edge.
    EXPECT_EQ(table.regions().at(5).clearance, 4);
}

TEST(RegionTable, IgnoresJunctionsForPassages) {
    const RegionTable table =
        tableOf(labels32("1 1 255 2 2\n"
                         "1 1 255 2 2\n"
                         "255 255 255 255 255\n"
                         "3 3 3 3 3"));
    // The middle of the third row sees all three.
    EXPECT_THAT(table.regions().at(1).passages, ElementsAre(Key(2), Key(3)));
    EXPECT_DOUBLE_EQ(table.regions().at(1).passages.at(2).length, 2 * 0.05);
    EXPECT_DOUBLE_EQ(table.regions().at(1).passages.at(3).length, 2 * 0.05);
    EXPECT_DOUBLE_EQ(table.regions().at(2).passages.at(3).length, 2 * 0.05);
}

TEST(RegionTable, ShutsDoorwaysWhileItMeasures) {
    const cv::Mat grid = labels32(
        "1 1 1 255 2 2 2\n"
        "1 1 1 255 2 2 2\n"
        "1 1 1 255 2 2 2\n"
        "1 1 1 255 2 2 2\n"
        "1 1 1 255 2 2 2");
    const FoundDoorway doorway{{3, -1}, {3, 5}, 5, 40};
    const RegionTable open(regionsOf(grid.clone()), grid != 0, {});
    EXPECT_EQ(open.regions().at(1).clearance, 9) << "the third pixel of the middle row";
    EXPECT_EQ(open.regions().at(1).passages.at(2).clearance, 9);
    EXPECT_EQ(open.regions().at(1).passages.at(2).doorway, 0);
    const RegionTable shut(regionsOf(grid.clone()), grid != 0, {doorway});
    EXPECT_EQ(shut.regions().at(1).clearance, 4) << "the second pixel of the middle row";
    for (const Passage& passage :
         {shut.regions().at(1).passages.at(2), shut.regions().at(2).passages.at(1)}) {
        EXPECT_EQ(passage.clearance, 0);
        EXPECT_EQ(passage.doorway, 6) << "half of five, squared, in whole pixels";
        EXPECT_EQ(passage.widest(), 6);
    }
}

TEST(RegionTable, KnowsTheWidestDoorwayToANeighbourAsRegionsAreJoined) {
    const cv::Mat grid = labels32(
        "1 1 255 2 2\n"
        "255 255 255 255 255\n"
        "3 3 3 3 3");
    const std::vector<FoundDoorway> doorways{{{-1, 1}, {1, 1}, 8, 40}, {{3, 1}, {5, 1}, 12, 40}};
    RegionTable table(regionsOf(grid.clone()), grid != 0, doorways);
    EXPECT_EQ(table.regions().at(1).passages.at(3).doorway, 16);
    EXPECT_EQ(table.regions().at(2).passages.at(3).doorway, 36);
    table.merge(1, 2);
    EXPECT_EQ(table.regions().at(3).passages.at(1).doorway, 36);
}

TEST(RegionTable, KeepsTheLabelOfTheLarger) {
    const cv::Mat grid = labels32("4 255 2 2 255 9 9 9");
    RegionTable table = tableOf(grid);
    table.merge(4, 2);
    EXPECT_THAT(labelsOf(table), ElementsAre(2, 9));
    EXPECT_EQ(table.survivor(4), 2);
    EXPECT_EQ(table.survivor(2), 2);
    EXPECT_DOUBLE_EQ(table.regions().at(2).area(), 3 * kPixel);
    // Now equally large: the smaller label.
    table.merge(9, 2);
    EXPECT_THAT(labelsOf(table), ElementsAre(2));
    EXPECT_EQ(table.survivor(9), 2);
    EXPECT_EQ(table.survivor(4), 2);
    EXPECT_THAT(table.regions().at(2).passages, IsEmpty());
}

TEST(RegionTable, FollowsLabelsThroughSeveralMerges) {
    RegionTable table = tableOf(labels32("4 255 2 2 255 9 9 9 9 9"));
    table.merge(2, 4);
    table.merge(2, 9);
    for (const int label : {2, 4, 9}) EXPECT_EQ(table.survivor(label), 9);
    EXPECT_EQ(table.survivor(0), 0);
    EXPECT_EQ(table.survivor(kLine), kLine);
}

TEST(RegionTable, JoinsPassagesToACommonNeighbour) {
    // 3 has five pixels to 1, three to 2, and a junction.
    RegionTable table =
        tableOf(labels32("1 1 1 1 1 255 2 2 2\n"
                         "1 1 1 1 1 255 2 2 2\n"
                         "255 255 255 255 255 255 255 255 255\n"
                         "3 3 3 3 3 3 3 3 3\n"
                         "3 3 3 3 3 3 3 3 3"));
    const Passage of_1 = table.regions().at(1).passages.at(3);
    const Passage of_2 = table.regions().at(2).passages.at(3);
    EXPECT_DOUBLE_EQ(of_1.length, 5 * 0.05);
    EXPECT_DOUBLE_EQ(of_2.length, 3 * 0.05);
    table.merge(1, 2);
    for (const Passage& passage :
         {table.regions().at(1).passages.at(3), table.regions().at(3).passages.at(1)}) {
        EXPECT_DOUBLE_EQ(passage.length, of_1.length + of_2.length);
        EXPECT_EQ(passage.clearance, std::max(of_1.clearance, of_2.clearance));
    }
    EXPECT_THAT(table.regions().at(3).passages, SizeIs(1));
}

TEST(RegionTable, CountsTheLineBetweenJoinedRegionsAsTheirs) {
    // The line's middle is three pixels from wall above and below, all of 1 and 2 at most two.
    RegionTable table =
        tableOf(labels32("1   1   1   1   1   1\n"
                         "1   1   1   1   1   1\n"
                         "255 255 255 255 255 255\n"
                         "2   2   2   2   2   2\n"
                         "2   2   2   2   2   2"));
    ASSERT_EQ(table.regions().at(1).clearance, 4);
    ASSERT_EQ(table.regions().at(1).passages.at(2).clearance, 9);
    table.merge(1, 2);
    EXPECT_EQ(table.regions().at(1).clearance, 9);
}

TEST(RegionTable, TakesRegionsOfAsManyPixelsForEqual) {
    // As areas in m^2, 1 pixel and 4 pixels add up to a little more than 5 pixels.
    RegionTable table = tableOf(labels32("3 3 3 3 3 255 8 255 9 9 9 9"));
    table.merge(8, 9);
    table.merge(9, 3);
    EXPECT_EQ(table.survivor(9), 3);
}

TEST(RegionTable, AppliesToGraphIdsLabelsAndBorders) {
    // Ids in raster order: {1, 2} 1, {1, 3} 2, {2, 3} 3.
    const cv::Mat grid = labels32(
        "1 1 1 1 1 255 2 2 2\n"
        "1 1 1 1 1 255 2 2 2\n"
        "255 255 255 255 255 255 255 255 255\n"
        "3 3 3 3 3 3 3 3 3\n"
        "3 3 3 3 3 3 3 3 3");
    Regions regions = regionsOf(grid.clone());
    RegionTable table(regions, grid != 0, {});
    table.merge(1, 2);
    table.apply(regions);
    const Graph& graph = regions.table.graph;
    ASSERT_THAT(graph.nodes(), ElementsAre(Key(1), Key(3)));
    EXPECT_DOUBLE_EQ(graph.getNodeData(1).area, 16 * kPixel);
    EXPECT_DOUBLE_EQ(graph.getNodeData(3).area, 18 * kPixel);
    ASSERT_THAT(graph.edges(), SizeIs(1));
    EXPECT_DOUBLE_EQ(graph.getEdgeData(1, 3).length, 8 * 0.05);
    EXPECT_THAT(regions.table.border_ids, ElementsAre(Pair(Edge(1, 3), 2)));
    writeTable(regions);
    EXPECT_THAT(regions.labels, MatEq(labels32("1 1 1 1 1 1 1 1 1\n"
                                               "1 1 1 1 1 1 1 1 1\n"
                                               "255 255 255 255 255 255 255 255 255\n"
                                               "3 3 3 3 3 3 3 3 3\n"
                                               "3 3 3 3 3 3 3 3 3")));
    EXPECT_THAT(regions.borders, MatEq(labels32(". . . . . . . . .\n"
                                                ". . . . . . . . .\n"
                                                "2 2 2 2 2 . 2 2 2\n"
                                                ". . . . . . . . .\n"
                                                ". . . . . . . . .")));
}

TEST(RegionTable, PutsAJoinedRegionAtTheCentreOfBoth) {
    // 6 pixels around column 1 and 3 around column 4: together around column 2.
    const cv::Mat grid = labels32(
        "1 1 1 255 2\n"
        "1 1 1 255 2\n"
        ". . .  .  2");
    Regions regions = regionsOf(grid.clone());
    ASSERT_EQ(regions.table.graph.getNodeData(1).position, cv::Point(1, 1));
    ASSERT_EQ(regions.table.graph.getNodeData(2).position, cv::Point(4, 1));
    RegionTable table(regions, grid != 0, {});
    table.merge(1, 2);
    table.apply(regions);
    EXPECT_EQ(regions.table.graph.getNodeData(1).position, cv::Point(2, 1));
}

TEST(RegionTable, LeavesAllAsItIsWithoutAMerge) {
    const cv::Mat grid = labels32(
        "1 1 255 300 300\n"
        "1 1 255 300 300\n"
        ". . . 70000 .");
    Regions regions = regionsOf(grid.clone());
    const RoomGraph before{regions.table.labels.clone(), regions.table.borders.clone(),
                           regions.table.border_ids, regions.table.graph};
    RegionTable(regions, grid != 0, {}).apply(regions);
    EXPECT_THAT(regions.table.labels, MatEq(before.labels));
    EXPECT_THAT(regions.table.borders, MatEq(before.borders));
    EXPECT_EQ(regions.table.border_ids, before.border_ids);
    writeTable(regions);
    EXPECT_THAT(regions.labels, MatEq(grid));
}

}  // namespace
}  // namespace vorund::rooms
