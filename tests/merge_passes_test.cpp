#include <gmock/gmock.h>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/graph_processor.h"
#include "reference/merge_processor.h"
#include "support/consistency.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"
#include "vorund/merge_processor.h"

namespace vorund::test {
namespace {

using MergeProcessor::cleanSmallDisconnectedSegmentsInPlace;
using MergeProcessor::deleteZeroDegreeNodeFromSegmentsMapInPlace;
using reference::regionGraph;
using reference::RegionGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::ThrowsMessage;

constexpr int kLine = 9;
const std::string kNotEightBit = "extractRegionBorders: Input map must be of type CV_8UC1.";

void mergeSmall(RegionMap& map, double area_threshold, int border_value = kLine) {
    Config::MergeNodesInPlaceConfig config;
    config.area_threshold = area_threshold;
    MergeProcessor::mergeNodesInPlace(map.graph, map.segments, map.borders, map.border_ids,
                                      border_value, config);
}

void mergeLong(RegionMap& map, double length_threshold, int border_value = kLine) {
    Config::MergeEdgesInPlaceConfig config;
    config.length_threshold = length_threshold;
    MergeProcessor::mergeEdgesInPlace(map.graph, map.segments, map.borders, map.border_ids,
                                      border_value, config);
}

/// A small drawing for a map with areas and lengths of any size.
RegionMap drawnMap(const std::string& grid, const std::map<int, double>& areas,
                   const std::map<Edge, double>& lengths) {
    RegionMap map = regionMap(labels(grid), kLine);
    for (const auto& [label, area] : areas) map.graph.addNode(label, {area, cv::Point(label, 0)});
    for (const auto& [edge, length] : lengths) {
        map.graph.addEdge(edge.first, edge.second, {length});
    }
    return map;
}

/// Four rooms around a junction, each with two neighbours: best 1 with 2, then 1 with 3.
RegionMap fourRooms(const std::map<int, double>& areas) {
    return drawnMap(
        "1 9 2\n"
        "9 9 9\n"
        "3 9 4",
        areas, {{Edge(1, 2), 1.0}, {Edge(1, 3), 0.9}, {Edge(2, 4), 0.2}, {Edge(3, 4), 0.3}});
}

void expectSame(const RegionMap& map, const RegionMap& expected) {
    EXPECT_EQ(regionGraph(map.graph), regionGraph(expected.graph));
    EXPECT_THAT(map.segments, MatEq(expected.segments));
    EXPECT_THAT(map.borders, MatEq(expected.borders));
    EXPECT_EQ(map.border_ids, expected.border_ids);
}

RegionMap copied(const RegionMap& map) {
    return {map.graph, map.segments.clone(), map.borders.clone(), map.border_ids};
}

cv::Mat surroundings(const cv::Mat& view) {
    cv::Mat whole = view;
    whole.adjustROI(3, 3, 3, 3);
    return whole;
}

std::vector<int> nodeLabels(const Graph& graph) {
    std::vector<int> labels;
    for (const auto& node : graph.nodes()) labels.push_back(node.first);
    return labels;
}

// mergeNodesInPlace

TEST(MergeNodesInPlace, LeavesRoomsThatAreLargeEnoughAlone) {
    RegionMap map = fourRooms({{1, 0.5}, {2, 0.6}, {3, 7.0}, {4, 0.5}});
    const RegionMap before = copied(map);
    mergeSmall(map, 0.5);
    expectSame(map, before);
}

TEST(MergeNodesInPlace, GivesASmallRoomToTheSmallestLabelAmongEqualBorders) {
    RegionMap map = drawnMap("7 9 5 9 3", {{3, 10.0}, {5, 0.3}, {7, 10.0}},
                             {{Edge(5, 7), 1.2}, {Edge(3, 5), 1.2}});
    mergeSmall(map, 0.5);
    EXPECT_THAT(map.segments, MatEq(labels32("7 9 3 3 3")));
    EXPECT_THAT(map.borders, MatEq(labels32(". 1 . . .")));
    EXPECT_THAT(map.border_ids, ElementsAre(Pair(Edge(3, 7), 1)));
    EXPECT_EQ(map.graph.getNodeData(3).area, 10.3);
    EXPECT_EQ(map.graph.getEdgeData(3, 7).length, 1.2);
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(3, 7));
}

TEST(MergeNodesInPlace, GivesASmallRoomToTheLongestBorder) {
    RegionMap map = drawnMap("7 9 5 9 3", {{3, 10.0}, {5, 0.3}, {7, 10.0}},
                             {{Edge(5, 7), 1.3}, {Edge(3, 5), 1.2}});
    mergeSmall(map, 0.5);
    EXPECT_THAT(map.segments, MatEq(labels32("7 7 7 9 3")));
}

TEST(MergeNodesInPlace, KeepsTheNeighborsLabelEvenIfTheNeighborIsSmaller) {
    RegionMap map = drawnMap("1 9 2 9 3", {{1, 0.4}, {2, 0.2}, {3, 10.0}},
                             {{Edge(1, 2), 0.1}, {Edge(2, 3), 5.0}});
    mergeSmall(map, 0.5);
    // Room 1 has one neighbour and comes first, although 2 is smaller; then 2 is large enough.
    EXPECT_THAT(map.segments, MatEq(labels32("2 2 2 9 3")));
    EXPECT_DOUBLE_EQ(map.graph.getNodeData(2).area, 0.6);
}

TEST(MergeNodesInPlace, TakesTheSmallerOfTwoRoomsWithAsManyNeighbors) {
    RegionMap map = fourRooms({{1, 0.3}, {2, 0.2}, {3, 0.4}, {4, 5.0}});
    mergeSmall(map, 0.5);
    // 2 goes to 1, then 3 goes to 1.
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1\n"
                                             "1 9 9\n"
                                             "1 9 4")));
    EXPECT_THAT(map.borders, MatEq(labels32(". . .\n"
                                            ". . 3\n"
                                            ". 3 .")));
    EXPECT_DOUBLE_EQ(map.graph.getEdgeData(1, 4).length, 0.5);
}

TEST(MergeNodesInPlace, TakesTheSmallerLabelOfTwoEqualRooms) {
    RegionMap map = fourRooms({{1, 0.2}, {2, 0.2}, {3, 0.4}, {4, 5.0}});
    mergeSmall(map, 0.5);
    // 1 goes to 2, then 2, as large as 3, goes to 3.
    EXPECT_THAT(map.segments, MatEq(labels32("3 3 3\n"
                                             "3 9 9\n"
                                             "3 9 4")));
}

TEST(MergeNodesInPlace, LooksPastLargeRoomsWithFewerNeighbors) {
    RegionMap map = drawnMap("1 9 2 9 3", {{1, 10.0}, {2, 0.2}, {3, 10.0}},
                             {{Edge(1, 2), 0.1}, {Edge(2, 3), 0.2}});
    mergeSmall(map, 0.5);
    EXPECT_THAT(map.segments, MatEq(labels32("1 9 3 3 3")));
}

TEST(MergeNodesInPlace, GoesOnUntilNoRoomIsSmall) {
    RegionMap map =
        drawnMap("1 9 2 9 3 9 4 9 5", {{1, 0.2}, {2, 0.2}, {3, 0.2}, {4, 0.2}, {5, 0.2}}, {});
    mergeSmall(map, 0.7);
    // The ends come first, having one neighbour: 1 goes to 2, then 5 to 4. The ends then are 2 and
    // 4 with 0.4 each: 2 goes to 3, and 4, which now is smaller, follows.
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(3));
    EXPECT_THAT(map.segments, MatEq(labels32("3 3 3 3 3 3 3 3 3")));
    EXPECT_THAT(map.borders, MatEq(cv::Mat::zeros(1, 9, CV_32SC1)));
    EXPECT_THAT(map.border_ids, IsEmpty());
    EXPECT_DOUBLE_EQ(map.graph.getNodeData(3).area, 1.0);
}

TEST(MergeNodesInPlace, LeavesALargeIsolatedRoomAlone) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 10.0}, {2, 0.1}, {3, 0.6}}, {});
    mergeSmall(map, 0.5);
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1 . 3")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1, 3));
}

TEST(MergeNodesInPlace, FailsOnAnIsolatedSmallRoomBeforeAnyMerge) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 10.0}, {2, 0.1}, {3, 0.4}}, {});
    const RegionMap before = copied(map);
    EXPECT_THAT([&] { mergeSmall(map, 0.5); }, ThrowsMessage<std::runtime_error>(kNotEightBit));
    expectSame(map, before);
}

TEST(MergeNodesInPlace, TakesOnePercentOfAllRoomsForSmallIfIsolated) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 80.0}, {2, 20.0}, {3, 1.0}}, {});
    EXPECT_THAT([&] { mergeSmall(map, 0.0); }, ThrowsMessage<std::runtime_error>(kNotEightBit));
}

TEST(MergeNodesInPlace, KeepsTheMergesMadeBeforeAFailure) {
    RegionMap map = drawnMap("1 9 2", {{1, 0.1}, {2, 0.1}}, {});
    EXPECT_THAT([&] { mergeSmall(map, 1.0); }, ThrowsMessage<std::runtime_error>(kNotEightBit));
    EXPECT_THAT(map.segments, MatEq(labels32("2 2 2")));
    EXPECT_THAT(map.border_ids, IsEmpty());
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(2));
}

TEST(MergeNodesInPlace, DeletesIsolatedSmallRoomsFromAnEightBitImage) {
    // Nothing is merged here, so that the label image may have 8 bits.
    RegionMap map = drawnMap("1 1 . 9 3 9", {{1, 10.0}, {3, 0.4}}, {});
    map.segments.convertTo(map.segments, CV_8U);
    mergeSmall(map, 0.5);
    EXPECT_THAT(map.segments, MatEq(labels("1 1 . . . .")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1));
}

TEST(MergeNodesInPlace, PassesOnThatABorderIsUnknown) {
    RegionMap map = drawnMap("1 9 2", {{1, 10.0}, {2, 0.1}}, {});
    map.border_ids.clear();
    const RegionMap before = copied(map);
    EXPECT_THAT([&] { mergeSmall(map, 1.0); },
                ThrowsMessage<std::invalid_argument>(
                    "mergeSegmentsMapInPlace: Edge between u and v not found in borders map."));
    expectSame(map, before);
}

TEST(MergeNodesInPlace, TakesAnEmptyGraph) {
    RegionMap map = drawnMap(". . 9", {}, {});
    const RegionMap before = copied(map);
    mergeSmall(map, 1.0);
    mergeLong(map, 0.0);
    expectSame(map, before);
}

// mergeEdgesInPlace

TEST(MergeEdgesInPlace, LeavesBordersUpToTheThresholdAlone) {
    RegionMap map = fourRooms({{1, 0.1}, {2, 0.1}, {3, 0.1}, {4, 0.1}});
    const RegionMap before = copied(map);
    mergeLong(map, 1.0);
    expectSame(map, before);
}

TEST(MergeEdgesInPlace, KeepsTheLargerRoomsLabel) {
    RegionMap map = drawnMap("1 9 2", {{1, 1.0}, {2, 1.5}}, {{Edge(1, 2), 2.5}});
    mergeLong(map, 2.0);
    EXPECT_THAT(map.segments, MatEq(labels32("2 2 2")));
    EXPECT_EQ(map.graph.getNodeData(2).area, 2.5);
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(2));
    EXPECT_THAT(map.border_ids, IsEmpty());
    RegionMap other = drawnMap("1 9 2", {{1, 1.5}, {2, 1.0}}, {{Edge(1, 2), 2.5}});
    mergeLong(other, 2.0);
    EXPECT_THAT(other.segments, MatEq(labels32("1 1 1")));
}

TEST(MergeEdgesInPlace, KeepsTheSmallerLabelOfTwoEqualRooms) {
    RegionMap map = drawnMap("7 9 3", {{3, 1.0}, {7, 1.0}}, {{Edge(3, 7), 2.5}});
    mergeLong(map, 2.0);
    EXPECT_THAT(map.segments, MatEq(labels32("3 3 3")));
}

TEST(MergeEdgesInPlace, TakesTheShortestOfTheLongBordersFirst) {
    // 2 to 3 makes 3.5, which then is larger than 1. The other way round 1 would survive.
    RegionMap map = drawnMap("1 9 2 9 3", {{1, 3.0}, {2, 1.0}, {3, 2.5}},
                             {{Edge(1, 2), 3.0}, {Edge(2, 3), 2.5}});
    mergeLong(map, 2.0);
    EXPECT_THAT(map.segments, MatEq(labels32("3 3 3 3 3")));
}

TEST(MergeEdgesInPlace, TakesTheSmallerPairOfLabelsAmongEqualBorders) {
    // 2 to 1 makes 4.0, which is larger than 3. The other way round 3 would survive.
    RegionMap map = drawnMap("1 9 2 9 3", {{1, 3.0}, {2, 1.0}, {3, 3.5}},
                             {{Edge(1, 2), 3.0}, {Edge(2, 3), 3.0}});
    mergeLong(map, 2.0);
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1 1 1")));
}

TEST(MergeEdgesInPlace, NeverMergesAcrossAShortBorder) {
    RegionMap map = drawnMap("1 9 2 9 3", {{1, 3.0}, {2, 1.0}, {3, 0.001}},
                             {{Edge(1, 2), 3.0}, {Edge(2, 3), 1.0}});
    mergeLong(map, 2.0);
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1 9 3")));
    EXPECT_THAT(map.border_ids, ElementsAre(Pair(Edge(1, 3), 2)));
}

TEST(MergeEdgesInPlace, MergesAcrossABorderThatBecomesLong) {
    const std::string grid =
        "1 9 2\n"
        "9 9 9\n"
        "3 3 3";
    const std::map<int, double> areas{{1, 3.0}, {2, 1.0}, {3, 2.0}};
    RegionMap map =
        drawnMap(grid, areas, {{Edge(1, 2), 3.0}, {Edge(1, 3), 1.5}, {Edge(2, 3), 1.0}});
    mergeLong(map, 2.0);
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1));
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1\n"
                                             "1 9 1\n"
                                             "1 1 1")));
    RegionMap other =
        drawnMap(grid, areas, {{Edge(1, 2), 3.0}, {Edge(1, 3), 1.0}, {Edge(2, 3), 1.0}});
    mergeLong(other, 2.0);
    EXPECT_THAT(nodeLabels(other.graph), ElementsAre(1, 3));
    EXPECT_EQ(other.graph.getEdgeData(1, 3).length, 2.0);
}

TEST(MergeEdgesInPlace, LeavesIsolatedSmallRoomsAlone) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 80.0}, {2, 20.0}, {3, 0.001}}, {{Edge(1, 2), 3.0}});
    mergeLong(map, 2.0);
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1 . 3")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1, 3));
}

TEST(MergeEdgesInPlace, PassesOnThatABorderIsUnknown) {
    RegionMap map = drawnMap("1 9 2", {{1, 1.0}, {2, 1.0}}, {{Edge(1, 2), 3.0}});
    map.border_ids.clear();
    const RegionMap before = copied(map);
    EXPECT_THAT([&] { mergeLong(map, 2.0); },
                ThrowsMessage<std::invalid_argument>(
                    "mergeSegmentsMapInPlace: Edge between u and v not found in borders map."));
    expectSame(map, before);
}

// cleanSmallDisconnectedSegmentsInPlace

TEST(CleanSmallDisconnectedSegmentsInPlace, DeletesSmallIsolatedRoomsWithTheirLines) {
    RegionMap map = drawnMap(
        "1 9 2 . 9 9 . . .\n"
        "1 9 2 . 9 3 9 . .\n"
        "1 9 2 . . . . . 4",
        {{1, 0.1}, {2, 0.1}, {3, 0.4}, {4, 0.6}}, {});
    cv::Mat segments;
    map.segments.convertTo(segments, CV_8U);
    cleanSmallDisconnectedSegmentsInPlace(map.graph, segments, kLine, 0.5);
    EXPECT_THAT(segments, MatEq(labels("1 9 2 . . . . . .\n"
                                       "1 9 2 . . . . . .\n"
                                       "1 9 2 . . . . . 4")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1, 2, 4));
    EXPECT_THAT(map.graph.getNeighbors(1), ElementsAre(2));
}

TEST(CleanSmallDisconnectedSegmentsInPlace, KeepsARoomOfExactlyTheThreshold) {
    RegionMap map = drawnMap("1 . 2", {{1, 0.5}, {2, 0.5}}, {});
    cv::Mat segments = labels("1 . 2");
    cleanSmallDisconnectedSegmentsInPlace(map.graph, segments, kLine, 0.5);
    EXPECT_THAT(segments, MatEq(labels("1 . 2")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1, 2));
}

TEST(CleanSmallDisconnectedSegmentsInPlace, DeletesLessThanOnePercentOfAllRooms) {
    // 1 % of 128 is 1.28.
    RegionMap map = drawnMap("1 . 2 . 3", {{1, 1.25}, {2, 1.5}, {3, 125.25}}, {});
    cv::Mat segments = labels("1 . 2 . 3");
    cleanSmallDisconnectedSegmentsInPlace(map.graph, segments, kLine, 0.0);
    EXPECT_THAT(segments, MatEq(labels(". . 2 . 3")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(2, 3));
}

TEST(CleanSmallDisconnectedSegmentsInPlace, AddsUpTheRoomsBeforeItDeletesAny) {
    // 1 % of 100 is more than 0.995; 1 % of what is left without room 1 is less.
    RegionMap map = drawnMap("1 . 2 . 3", {{1, 0.99}, {2, 0.995}, {3, 98.015}}, {});
    cv::Mat segments = labels("1 . 2 . 3");
    cleanSmallDisconnectedSegmentsInPlace(map.graph, segments, kLine, 0.0);
    EXPECT_THAT(segments, MatEq(labels(". . . . 3")));
}

TEST(CleanSmallDisconnectedSegmentsInPlace, CountsConnectedRoomsButNeverDeletesThem) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 0.001}, {2, 200.0}, {3, 1.5}}, {});
    cv::Mat segments = labels("1 9 2 . 3");
    cleanSmallDisconnectedSegmentsInPlace(map.graph, segments, kLine, 0.0);
    EXPECT_THAT(segments, MatEq(labels("1 9 2 . .")));
    EXPECT_THAT(nodeLabels(map.graph), ElementsAre(1, 2));
}

TEST(CleanSmallDisconnectedSegmentsInPlace, TakesAnyImageWhereThereIsNothingToDelete) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 0.1}, {2, 0.1}, {3, 7.0}}, {});
    cleanSmallDisconnectedSegmentsInPlace(map.graph, map.segments, kLine, 0.5);
    EXPECT_THAT(map.segments, MatEq(labels32("1 9 2 . 3")));
    Graph nothing;
    cv::Mat empty;
    cleanSmallDisconnectedSegmentsInPlace(nothing, empty, kLine, 0.5);
    EXPECT_THAT(nothing.nodes(), IsEmpty());
}

TEST(CleanSmallDisconnectedSegmentsInPlace, RejectsToDeleteFromThirtyTwoBits) {
    RegionMap map = drawnMap("1 9 2 . 3", {{1, 10.0}, {2, 10.0}, {3, 0.1}}, {});
    const RegionMap before = copied(map);
    EXPECT_THAT([&] { cleanSmallDisconnectedSegmentsInPlace(map.graph, map.segments, kLine, 0.5); },
                ThrowsMessage<std::runtime_error>(kNotEightBit));
    expectSame(map, before);
}

TEST(CleanSmallDisconnectedSegmentsInPlace, AgreesWithThePlainVersion) {
    RandomImages random(31);
    std::size_t deleted = 0;
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        cv::Mat image = roomImage(random, random.size(40), 1 + random.below(6));
        RegionMap map = regionMap(image, 255);
        RegionGraph graph = regionGraph(map.graph);
        cv::Mat labels = image.clone();
        const std::size_t rooms = graph.nodes.size();
        const double threshold = 0.05 * random.below(20);
        cleanSmallDisconnectedSegmentsInPlace(map.graph, image, 255, threshold);
        reference::cleanSmallRooms(graph, labels, 255, threshold);
        ASSERT_EQ(regionGraph(map.graph), graph);
        ASSERT_THAT(image, MatEq(labels));
        deleted += rooms - map.graph.nodes().size();
    }
    EXPECT_GT(deleted, 25U) << "the images are too simple to show anything";
}

// deleteZeroDegreeNodeFromSegmentsMapInPlace

TEST(DeleteZeroDegreeNode, ErasesTheRoomAndTheLinesThatTouchIt) {
    Graph graph;
    graph.addNode(3, {1.0, {}});
    cv::Mat segments = labels(
        "9 9 9 9 9 1\n"
        "9 9 3 3 9 9\n"
        "9 . 3 . . 9\n"
        "9 9 . 9 . 3");
    deleteZeroDegreeNodeFromSegmentsMapInPlace(graph, segments, 3, kLine);
    EXPECT_THAT(segments, MatEq(labels("9 . . . . 1\n"
                                       "9 . . . . 9\n"
                                       "9 . . . . .\n"
                                       "9 . . . . .")));
    EXPECT_THAT(nodeLabels(graph), ElementsAre(3));
}

TEST(DeleteZeroDegreeNode, ErasesALineThatTouchesOtherRoomsToo) {
    Graph graph;
    graph.addNode(3, {1.0, {}});
    cv::Mat segments = labels(
        "3 9 1\n"
        "9 9 1\n"
        "2 2 9");
    deleteZeroDegreeNodeFromSegmentsMapInPlace(graph, segments, 3, kLine);
    EXPECT_THAT(segments, MatEq(labels(". . 1\n"
                                       ". . 1\n"
                                       "2 2 9")));
}

TEST(DeleteZeroDegreeNode, ErasesARoomThatTheGraphDoesNotKnow) {
    cv::Mat segments = labels("1 9 3 9 1");
    deleteZeroDegreeNodeFromSegmentsMapInPlace(Graph(), segments, 3, kLine);
    EXPECT_THAT(segments, MatEq(labels("1 . . . 1")));
}

TEST(DeleteZeroDegreeNode, ErasesNothingForALabelThatDoesNotOccur) {
    // 259 has the low bits of 3.
    for (const int label : {4, 259, -253}) {
        cv::Mat segments = labels("1 9 3 9 1");
        deleteZeroDegreeNodeFromSegmentsMapInPlace(Graph(), segments, label, kLine);
        EXPECT_THAT(segments, MatEq(labels("1 9 3 9 1"))) << label;
    }
}

TEST(DeleteZeroDegreeNode, WritesInPlaceAndNeverPastAPixel) {
    Graph graph;
    graph.addNode(3, {1.0, {}});
    // The room fills the corners, so that any write of more than a byte would reach the guards.
    const cv::Mat view =
        asView(labels("3 3 9 3\n"
                      "3 . 1 9\n"
                      "3 3 9 3"));
    cv::Mat around = surroundings(view).clone();
    cv::Mat segments = view;
    deleteZeroDegreeNodeFromSegmentsMapInPlace(graph, segments, 3, kLine);
    const cv::Mat expected = labels(
        ". . . .\n"
        ". . 1 .\n"
        ". . . .");
    EXPECT_THAT(view, MatEq(expected));
    expected.copyTo(around(cv::Rect(3, 3, view.cols, view.rows)));
    EXPECT_THAT(surroundings(view), MatEq(around));
}

TEST(DeleteZeroDegreeNode, WorksOnOnePixelOneRowAndOneColumn) {
    cv::Mat pixel = labels("3");
    deleteZeroDegreeNodeFromSegmentsMapInPlace(Graph(), pixel, 3, kLine);
    EXPECT_THAT(pixel, MatEq(labels(".")));
    cv::Mat column = labels("1\n9\n9\n3\n9");
    deleteZeroDegreeNodeFromSegmentsMapInPlace(Graph(), column, 3, kLine);
    EXPECT_THAT(column, MatEq(labels("1\n9\n.\n.\n.")));
}

TEST(DeleteZeroDegreeNode, RejectsARoomWithNeighborsAndChangesNothing) {
    RegionMap map = drawnMap("1 9 3", {}, {});
    cv::Mat segments = labels("1 9 3");
    const std::string message =
        "deleteZeroDegreeNodeFromSegmentsMapInPlace: Node degree is not zero.";
    EXPECT_THAT([&] { deleteZeroDegreeNodeFromSegmentsMapInPlace(map.graph, segments, 3, kLine); },
                ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT(segments, MatEq(labels("1 9 3")));
    // Also where the image would be rejected.
    EXPECT_THAT(
        [&] { deleteZeroDegreeNodeFromSegmentsMapInPlace(map.graph, map.segments, 3, kLine); },
        ThrowsMessage<std::invalid_argument>(message));
}

TEST(DeleteZeroDegreeNode, RejectsAnythingButEightBits) {
    cv::Mat segments = labels32("1 9 3");
    EXPECT_THAT([&] { deleteZeroDegreeNodeFromSegmentsMapInPlace(Graph(), segments, 3, kLine); },
                ThrowsMessage<std::runtime_error>(kNotEightBit));
    EXPECT_THAT(segments, MatEq(labels32("1 9 3")));
    cv::Mat empty;
    EXPECT_THAT([&] { deleteZeroDegreeNodeFromSegmentsMapInPlace(Graph(), empty, 3, kLine); },
                ThrowsMessage<std::runtime_error>("extractRegionBorders: Input map is empty."));
}

// Properties of the passes

/// What was thrown, or nothing.
template <class Call>
std::string thrownBy(const Call& call) {
    try {
        call();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

void expectAgreement(const RegionMap& map, const reference::MergeState& expected) {
    EXPECT_EQ(regionGraph(map.graph), expected.graph);
    EXPECT_THAT(map.segments, MatEq(expected.segments));
    EXPECT_THAT(map.borders, MatEq(expected.borders));
    EXPECT_EQ(map.border_ids, expected.border_ids);
}

TEST(MergePasses, AgreeWithThePlainVersionsAndKeepEverythingConsistent) {
    RandomImages random(32);
    std::size_t merged_small = 0;
    std::size_t merged_long = 0;
    int failures = 0;
    for (int i = 0; i < 250; ++i) {
        SCOPED_TRACE(i);
        const cv::Mat image = roomImage(random, random.size(45), 2 + random.below(30));
        RegionMap map = regionMap(image, 255);
        reference::MergeState expected = reference::mergeState(image, 255);
        const RegionTotals totals = regionTotals(map, 255);
        const double area = 0.02 * random.below(20);
        const double length = 0.1 * random.below(10);

        std::size_t rooms = map.graph.nodes().size();
        const std::string thrown = thrownBy([&] { mergeSmall(map, area, 255); });
        EXPECT_EQ(thrown, thrownBy([&] { reference::mergeSmallRooms(expected, area); }));
        expectAgreement(map, expected);
        ASSERT_TRUE(isConsistent(map, 255, totals));
        merged_small += rooms - map.graph.nodes().size();
        if (!thrown.empty()) ++failures;

        rooms = map.graph.nodes().size();
        mergeLong(map, length, 255);
        reference::mergeAcrossLongBorders(expected, length);
        expectAgreement(map, expected);
        ASSERT_TRUE(isConsistent(map, 255, totals));
        merged_long += rooms - map.graph.nodes().size();
        if (HasFailure()) return;
    }
    EXPECT_GT(merged_small, 300U) << "the images are too simple to show anything";
    EXPECT_GT(merged_long, 300U) << "the images are too simple to show anything";
    EXPECT_GT(failures, 10);
    EXPECT_LT(failures, 150);
}

/// Areas, lengths and ids that a client has made up.
RegionMap madeUpMap(RandomImages& random) {
    RegionMap map = regionMap(roomImage(random, random.size(30), 2 + random.below(12)), 255);
    const Graph graph = map.graph;
    for (const auto& [label, data] : graph.nodes()) {
        map.graph.addNode(label, {0.25 * (random.below(8) - 1), data.position});
    }
    for (const auto& [edge, data] : graph.edges()) {
        map.graph.addEdge(edge.first, edge.second, {0.25 * random.below(4)});
        if (random.below(20) == 0) map.graph.removeEdge(edge.first, edge.second);
        if (random.below(3) == 0) map.border_ids[edge] = random.below(4);
    }
    return map;
}

TEST(MergePasses, AgreeWithThePlainVersionsOnWhatAClientHasMadeUp) {
    RandomImages random(36);
    std::size_t merged = 0;
    int failures = 0;
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        RegionMap map = madeUpMap(random);
        reference::MergeState expected{regionGraph(map.graph), map.segments.clone(),
                                       map.borders.clone(), map.border_ids};
        const std::size_t rooms = map.graph.nodes().size();
        const double area = 0.25 * random.below(8);
        const std::string thrown = thrownBy([&] { mergeSmall(map, area, 255); });
        EXPECT_EQ(thrown, thrownBy([&] { reference::mergeSmallRooms(expected, area); }));
        expectAgreement(map, expected);
        const double length = 0.25 * random.below(4);
        mergeLong(map, length, 255);
        reference::mergeAcrossLongBorders(expected, length);
        expectAgreement(map, expected);
        merged += rooms - map.graph.nodes().size();
        if (!thrown.empty()) ++failures;
        if (HasFailure()) return;
    }
    EXPECT_GT(merged, 500U) << "the maps are too simple to show anything";
    EXPECT_GT(failures, 20);
}

/// 32-bit labels, more than bytes hold: rooms of one pixel in a grid, a line's pixel between any
/// two beside each other, and as many ids.
RegionMap gridOfRooms(RandomImages& random, int side) {
    const cv::Size size(2 * side - 1, 2 * side - 1);
    RegionMap map{{}, cv::Mat(size, CV_32SC1, cv::Scalar(255)), cv::Mat::zeros(size, CV_32SC1), {}};
    const auto roomAt = [&](int row, int col) { return 1000 + row * side + col; };
    for (int row = 0; row < side; ++row) {
        for (int col = 0; col < side; ++col) {
            map.segments.at<int>(2 * row, 2 * col) = roomAt(row, col);
            map.graph.addNode(roomAt(row, col), {0.01 * random.below(10), {col, row}});
        }
    }
    const auto join = [&](int row, int col, int down, int right) {
        const Edge edge(roomAt(row, col), roomAt(row + down, col + right));
        map.graph.addEdge(edge.first, edge.second, {0.05 * random.below(10)});
        const int id = static_cast<int>(map.border_ids.size()) + 1;
        map.border_ids[edge] = id;
        map.borders.at<int>(2 * row + down, 2 * col + right) = id;
    };
    for (int row = 0; row < side; ++row) {
        for (int col = 0; col < side; ++col) {
            if (row + 1 < side) join(row, col, 1, 0);
            if (col + 1 < side) join(row, col, 0, 1);
        }
    }
    return map;
}

TEST(MergePasses, AgreeWithThePlainVersionsOnMoreRoomsThanBytesHold) {
    RandomImages random(37);
    for (const double area : {0.05, 0.2, 100.0}) {
        RegionMap map = gridOfRooms(random, 18);
        reference::MergeState expected{regionGraph(map.graph), map.segments.clone(),
                                       map.borders.clone(), map.border_ids};
        const auto small = [&] { mergeSmall(map, area, 255); };
        EXPECT_EQ(thrownBy(small), thrownBy([&] { reference::mergeSmallRooms(expected, area); }));
        expectAgreement(map, expected);
        mergeLong(map, 0.3, 255);
        reference::mergeAcrossLongBorders(expected, 0.3);
        expectAgreement(map, expected);
    }
}

TEST(MergePasses, LeaveNoSmallRoomWithNeighborsAndNoLongBorder) {
    RandomImages random(33);
    for (int i = 0; i < 50; ++i) {
        RegionMap map = regionMap(roomImage(random, cv::Size(45, 40), 25), 255);
        if (thrownBy([&] { mergeSmall(map, 0.3, 255); }).empty()) {
            for (const auto& [label, data] : map.graph.nodes()) {
                EXPECT_TRUE(map.graph.getNeighbors(label).empty() || data.area >= 0.3) << label;
            }
        }
        mergeLong(map, 0.5, 255);
        for (const auto& edge : map.graph.edges()) EXPECT_LE(edge.second.length, 0.5);
    }
}

TEST(MergePasses, ChangeNothingWhenRunAgain) {
    RandomImages random(34);
    for (int i = 0; i < 20; ++i) {
        RegionMap map = regionMap(roomImage(random, cv::Size(45, 40), 25), 255);
        if (!thrownBy([&] { mergeSmall(map, 0.3, 255); }).empty()) continue;
        const RegionMap small = copied(map);
        mergeSmall(map, 0.3, 255);
        expectSame(map, small);
        mergeLong(map, 0.5, 255);
        const RegionMap without_long = copied(map);
        mergeLong(map, 0.5, 255);
        expectSame(map, without_long);
    }
}

TEST(MergePasses, GiveTheSameOnASecondRunAndOnViews) {
    RandomImages random(35);
    const cv::Mat image = roomImage(random, cv::Size(60, 50), 30);
    RegionMap map = regionMap(image, 255);
    RegionMap other = regionMap(image, 255);
    other.segments = asView(other.segments);
    other.borders = asView(other.borders);
    EXPECT_EQ(thrownBy([&] { mergeSmall(map, 0.2, 255); }),
              thrownBy([&] { mergeSmall(other, 0.2, 255); }));
    mergeLong(map, 0.6, 255);
    mergeLong(other, 0.6, 255);
    expectSame(other, map);
    EXPECT_LT(map.graph.nodes().size(), 30U);
}

}  // namespace
}  // namespace vorund::test
