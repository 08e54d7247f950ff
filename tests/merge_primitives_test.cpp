#include <gmock/gmock.h>

#include <iterator>
#include <queue>
#include <stdexcept>
#include <string>
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

using MergeProcessor::findBestEdgeToMerge;
using MergeProcessor::mergeNodes;
using reference::regionGraph;
using reference::RegionGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::ThrowsMessage;

constexpr int kLine = 9;

Graph rooms(const std::vector<int>& labels) {
    Graph graph;
    for (const int label : labels) graph.addNode(label, {1.0, cv::Point(label, 0)});
    return graph;
}

/// Rooms 1 to 3 around a junction; 4 touches 3 alone.
RegionMap junctionMap() {
    return regionMap(labels("1 1 9 2 2\n"
                            "1 1 9 2 2\n"
                            "9 9 9 9 9\n"
                            "3 3 3 3 3\n"
                            "9 9 9 9 9\n"
                            "4 4 4 4 4"),
                     kLine);
}

void mergeSegments(RegionMap& map, int u, int v) {
    MergeProcessor::mergeSegmentsMapInPlace(map.graph, map.segments, map.borders, map.border_ids, u,
                                            v, kLine);
}

/// The image that a view made by `asView` lies in.
cv::Mat surroundings(const cv::Mat& view) {
    cv::Mat whole = view;
    whole.adjustROI(3, 3, 3, 3);
    return whole;
}

// Queue elements

TEST(NodePriorityElement, PutsFewNeighborsFirstThenSmallAreas) {
    std::priority_queue<NodePriorityElement> queue;
    queue.push({0.1, 1, 3});
    queue.push({5.0, 2, 1});
    queue.push({4.0, 3, 1});
    queue.push({0.2, 4, 2});
    std::vector<int> order;
    for (; !queue.empty(); queue.pop()) order.push_back(queue.top().label);
    EXPECT_THAT(order, ElementsAre(3, 2, 4, 1));
}

TEST(NodePriorityElement, PutsTheSmallerLabelFirstAmongEquals) {
    std::priority_queue<NodePriorityElement> queue;
    for (const int label : {5, 2, 8, 3}) queue.push({1.0, label, 2});
    std::vector<int> order;
    for (; !queue.empty(); queue.pop()) order.push_back(queue.top().label);
    EXPECT_THAT(order, ElementsAre(2, 3, 5, 8));
}

TEST(NodePriorityElement, IsNotLessThanItself) {
    const NodePriorityElement element{1.0, 2, 3};
    EXPECT_FALSE(element < element);
}

TEST(EdgePriorityElement, PutsTheShortestBorderFirst) {
    std::priority_queue<EdgePriorityElement> queue;
    queue.push({-2.0, Edge(1, 2)});
    queue.push({-0.5, Edge(3, 4)});
    queue.push({-1.0, Edge(1, 4)});
    std::vector<double> order;
    for (; !queue.empty(); queue.pop()) order.push_back(queue.top().key);
    EXPECT_THAT(order, ElementsAre(-0.5, -1.0, -2.0));
}

TEST(EdgePriorityElement, PutsTheSmallerEdgeFirstAmongEquals) {
    std::priority_queue<EdgePriorityElement> queue;
    for (const Edge& edge : {Edge(2, 3), Edge(1, 9), Edge(4, 5), Edge(1, 3)}) {
        queue.push({-1.0, edge});
    }
    std::vector<Edge> order;
    for (; !queue.empty(); queue.pop()) order.push_back(queue.top().edge);
    EXPECT_THAT(order, ElementsAre(Edge(1, 3), Edge(1, 9), Edge(2, 3), Edge(4, 5)));
}

TEST(EdgePriorityElement, IsNotLessThanItself) {
    const EdgePriorityElement element{-1.0, Edge(1, 2)};
    EXPECT_FALSE(element < element);
}

// findBestEdgeToMerge

TEST(FindBestEdgeToMerge, TakesTheLongestBorder) {
    Graph graph = rooms({1, 2, 3, 4});
    graph.addEdge(2, 1, {0.5});
    graph.addEdge(2, 3, {1.5});
    graph.addEdge(2, 4, {1.0});
    EXPECT_EQ(findBestEdgeToMerge(graph, 2), 3);
}

TEST(FindBestEdgeToMerge, TakesTheSmallestLabelAmongEqualBorders) {
    Graph graph = rooms({1, 4, 6, 9});
    graph.addEdge(1, 4, {2.0});
    graph.addEdge(1, 9, {3.5});
    graph.addEdge(1, 6, {3.5});
    EXPECT_EQ(findBestEdgeToMerge(graph, 1), 6);
}

TEST(FindBestEdgeToMerge, TakesABorderOfNoLength) {
    Graph graph = rooms({1, 5});
    graph.addEdge(1, 5, {0.0});
    EXPECT_EQ(findBestEdgeToMerge(graph, 1), 5);
    EXPECT_EQ(findBestEdgeToMerge(graph, 5), 1);
}

TEST(FindBestEdgeToMerge, TellsThatThereAreNoNeighbors) {
    const std::string message = "findBestEdgeToMerge: Node u has no neighbors.";
    EXPECT_THAT(
        [] {
            findBestEdgeToMerge(rooms({1, 2}), 1);
        },
        ThrowsMessage<std::runtime_error>(message));
    EXPECT_THAT(
        [] {
            findBestEdgeToMerge(rooms({1, 2}), 7);
        },
        ThrowsMessage<std::runtime_error>(message));
}

// mergeNodes

TEST(MergeNodes, AddsAreasAndWeightsPositionsByThem) {
    Graph graph;
    graph.addNode(1, {3.0, cv::Point(10, 0)});
    graph.addNode(2, {1.0, cv::Point(20, 8)});
    graph.addEdge(1, 2, {0.5});
    const Graph merged = mergeNodes(graph, 2, 1);
    EXPECT_EQ(merged.getNodeData(2).area, 4.0);
    // (3 * 10 + 20) / 4 = 12.5 and (0 + 8) / 4 = 2
    EXPECT_EQ(merged.getNodeData(2).position, cv::Point(13, 2));
    EXPECT_THAT(merged.adjacency(), ElementsAre(Pair(2, IsEmpty())));
    EXPECT_THAT(merged.edges(), IsEmpty());
}

TEST(MergeNodes, RoundsPositionsHalfAwayFromZero) {
    Graph graph;
    graph.addNode(1, {1.0, cv::Point(-1, 1)});
    graph.addNode(2, {1.0, cv::Point(-2, 2)});
    graph.addEdge(1, 2, {0.5});
    EXPECT_EQ(mergeNodes(graph, 1, 2).getNodeData(1).position, cv::Point(-2, 2));
}

TEST(MergeNodes, KeepsThePositionWhereThereIsNoArea) {
    Graph graph;
    graph.addNode(1, {0.0, cv::Point(5, 6)});
    graph.addNode(2, {0.0, cv::Point(50, 60)});
    graph.addEdge(1, 2, {0.5});
    EXPECT_EQ(mergeNodes(graph, 1, 2).getNodeData(1).position, cv::Point(5, 6));
    EXPECT_EQ(mergeNodes(graph, 2, 1).getNodeData(2).position, cv::Point(50, 60));
    EXPECT_EQ(mergeNodes(graph, 2, 1).getNodeData(2).area, 0.0);
}

TEST(MergeNodes, TakesAnAreaUpToABillionthForNone) {
    Graph graph;
    graph.addNode(1, {0.0, cv::Point(5, 6)});
    graph.addNode(2, {1e-9, cv::Point(50, 60)});
    graph.addEdge(1, 2, {0.5});
    EXPECT_EQ(mergeNodes(graph, 1, 2).getNodeData(1).position, cv::Point(5, 6));
    graph.addNode(2, {2e-9, cv::Point(50, 60)});
    EXPECT_EQ(mergeNodes(graph, 1, 2).getNodeData(1).position, cv::Point(50, 60));
}

TEST(MergeNodes, AddsTheLengthsOfBordersToACommonNeighbor) {
    Graph graph = rooms({1, 2, 3});
    graph.addEdge(1, 2, {0.25});
    graph.addEdge(1, 3, {0.5});
    graph.addEdge(2, 3, {2.0});
    const Graph merged = mergeNodes(graph, 1, 2);
    ASSERT_EQ(merged.edges().size(), 1U);
    EXPECT_EQ(merged.getEdgeData(1, 3).length, 2.5);
    EXPECT_THAT(merged.adjacency(), ElementsAre(Pair(1, ElementsAre(3)), Pair(3, ElementsAre(1))));
}

TEST(MergeNodes, HandsOnTheNeighborsOfTheRemovedRoom) {
    Graph graph = rooms({1, 2, 3, 4, 5});
    graph.addEdge(3, 2, {0.1});
    graph.addEdge(2, 5, {0.2});
    graph.addEdge(2, 1, {0.3});
    graph.addEdge(3, 4, {0.4});
    const Graph merged = mergeNodes(graph, 3, 2);
    EXPECT_EQ(merged.nodes().count(2), 0U);
    EXPECT_THAT(merged.adjacency(),
                ElementsAre(Pair(1, ElementsAre(3)), Pair(3, ElementsAre(1, 4, 5)),
                            Pair(4, ElementsAre(3)), Pair(5, ElementsAre(3))));
    EXPECT_EQ(merged.getEdgeData(1, 3).length, 0.3);
    EXPECT_EQ(merged.getEdgeData(3, 5).length, 0.2);
    EXPECT_EQ(merged.getEdgeData(3, 4).length, 0.4);
}

TEST(MergeNodes, LeavesItsInputAlone) {
    const RegionMap map = junctionMap();
    const RegionGraph before = regionGraph(map.graph);
    const Graph merged = mergeNodes(map.graph, 3, 1);
    EXPECT_EQ(merged.nodes().size(), 3U);
    EXPECT_EQ(regionGraph(map.graph), before);
}

TEST(MergeNodes, RejectsAnUnknownRoom) {
    const std::string message = "mergeNodes: Node u or v not found in graph.";
    Graph graph = rooms({1, 2});
    graph.addEdge(1, 2, {1.0});
    EXPECT_THAT([&] { mergeNodes(graph, 1, 7); }, ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT([&] { mergeNodes(graph, 7, 1); }, ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT([&] { mergeNodes(graph, 7, 8); }, ThrowsMessage<std::invalid_argument>(message));
}

TEST(MergeNodes, RejectsRoomsThatAreNoNeighbors) {
    const std::string message =
        "mergeNodes: Nodes u and v are not direct neighbors in the graph for merging.";
    Graph graph = rooms({1, 2, 3});
    graph.addEdge(1, 2, {1.0});
    EXPECT_THAT([&] { mergeNodes(graph, 1, 3); }, ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT([&] { mergeNodes(graph, 1, 1); }, ThrowsMessage<std::invalid_argument>(message));
}

// mergeSegmentsMapInPlace

TEST(MergeSegmentsMapInPlace, GivesTheLineBetweenToTheSurvivor) {
    RegionMap map = junctionMap();
    mergeSegments(map, 1, 2);
    // The junction and the lines to room 3 stay; 1-3 had id 2, 2-3 had id 3.
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1 1 1\n"
                                             "1 1 1 1 1\n"
                                             "9 9 9 9 9\n"
                                             "3 3 3 3 3\n"
                                             "9 9 9 9 9\n"
                                             "4 4 4 4 4")));
    EXPECT_THAT(map.borders, MatEq(labels32(". . . . .\n"
                                            ". . . . .\n"
                                            "2 2 . 2 2\n"
                                            ". . . . .\n"
                                            "4 4 4 4 4\n"
                                            ". . . . .")));
    EXPECT_THAT(map.border_ids, ElementsAre(Pair(Edge(1, 3), 2), Pair(Edge(3, 4), 4)));
}

TEST(MergeSegmentsMapInPlace, KeepsTheIdOfTheSurvivorsBorderToACommonNeighbor) {
    RegionMap map = junctionMap();
    mergeSegments(map, 2, 1);
    EXPECT_THAT(map.borders.row(2), MatEq(labels32("3 3 . 3 3")));
    EXPECT_THAT(map.border_ids, ElementsAre(Pair(Edge(2, 3), 3), Pair(Edge(3, 4), 4)));
}

TEST(MergeSegmentsMapInPlace, HandsOnABorderWithItsId) {
    RegionMap map = junctionMap();
    mergeSegments(map, 1, 3);
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 9 2 2\n"
                                             "1 1 9 2 2\n"
                                             "1 1 9 9 9\n"
                                             "1 1 1 1 1\n"
                                             "9 9 9 9 9\n"
                                             "4 4 4 4 4")));
    EXPECT_THAT(map.borders, MatEq(labels32(". . 1 . .\n"
                                            ". . 1 . .\n"
                                            ". . . 1 1\n"
                                            ". . . . .\n"
                                            "4 4 4 4 4\n"
                                            ". . . . .")));
    EXPECT_THAT(map.border_ids, ElementsAre(Pair(Edge(1, 2), 1), Pair(Edge(1, 4), 4)));
}

TEST(MergeSegmentsMapInPlace, KeepsTheFirstLabelEvenIfItIsTheGreater) {
    RegionMap map = junctionMap();
    mergeSegments(map, 4, 3);
    EXPECT_THAT(map.segments.rowRange(3, 6), MatEq(labels32("4 4 4 4 4\n"
                                                            "4 4 4 4 4\n"
                                                            "4 4 4 4 4")));
    EXPECT_THAT(map.border_ids,
                ElementsAre(Pair(Edge(1, 2), 1), Pair(Edge(1, 4), 2), Pair(Edge(2, 4), 3)));
}

TEST(MergeSegmentsMapInPlace, RelabelsPiecesThatLieApart) {
    RegionMap map = regionMap(labels("1 9 2 . 2 9 3 . 2"), kLine);
    mergeSegments(map, 1, 2);
    EXPECT_THAT(map.segments, MatEq(labels32("1 1 1 . 1 9 3 . 1")));
    EXPECT_THAT(map.borders, MatEq(labels32(". . . . . 2 . . .")));
}

TEST(MergeSegmentsMapInPlace, LeavesLinesWithoutABorderAlone) {
    // At both ends of the line only the walls' corners are near.
    RegionMap map = regionMap(labels("9 . 9 9\n"
                                     "1 . 9 .\n"
                                     "1 9 2 .\n"
                                     "1 . 2 9"),
                              kLine);
    mergeSegments(map, 2, 1);
    EXPECT_THAT(map.segments, MatEq(labels32("9 . 9 9\n"
                                             "2 . 9 .\n"
                                             "2 2 2 .\n"
                                             "2 . 2 9")));
}

TEST(MergeSegmentsMapInPlace, DoesNotAskTheGraphOrTheLineValue) {
    RegionMap map = junctionMap();
    RegionMap other = junctionMap();
    mergeSegments(map, 1, 2);
    MergeProcessor::mergeSegmentsMapInPlace(Graph(), other.segments, other.borders,
                                            other.border_ids, 1, 2, 12345);
    EXPECT_THAT(other.segments, MatEq(map.segments));
    EXPECT_THAT(other.borders, MatEq(map.borders));
    EXPECT_EQ(other.border_ids, map.border_ids);
}

TEST(MergeSegmentsMapInPlace, WritesIntoViewsAndNotPastThem) {
    RegionMap map = junctionMap();
    RegionMap expected = junctionMap();
    mergeSegments(expected, 1, 3);
    map.segments = asView(map.segments);
    map.borders = asView(map.borders);
    cv::Mat segments_around = surroundings(map.segments).clone();
    cv::Mat borders_around = surroundings(map.borders).clone();
    const cv::Mat segments = map.segments;
    const cv::Mat borders = map.borders;
    mergeSegments(map, 1, 3);
    EXPECT_THAT(segments, MatEq(expected.segments));
    EXPECT_THAT(borders, MatEq(expected.borders));

    const cv::Rect middle(3, 3, segments.cols, segments.rows);
    expected.segments.copyTo(segments_around(middle));
    expected.borders.copyTo(borders_around(middle));
    EXPECT_THAT(surroundings(segments), MatEq(segments_around));
    EXPECT_THAT(surroundings(borders), MatEq(borders_around));
}

TEST(MergeSegmentsMapInPlace, WorksOnOneRowAndOneColumn) {
    RegionMap row = regionMap(labels("1 9 2"), kLine);
    mergeSegments(row, 2, 1);
    EXPECT_THAT(row.segments, MatEq(labels32("2 2 2")));
    EXPECT_THAT(row.borders, MatEq(labels32(". . .")));
    EXPECT_THAT(row.border_ids, IsEmpty());
    RegionMap column = regionMap(labels("1\n9\n2"), kLine);
    mergeSegments(column, 1, 2);
    EXPECT_THAT(column.segments, MatEq(labels32("1\n1\n1")));
}

TEST(MergeSegmentsMapInPlace, MergesABorderThatHasNoPixels) {
    RegionMap map = junctionMap();
    map.border_ids.at(Edge(1, 2)) = 300;
    mergeSegments(map, 1, 2);
    EXPECT_THAT(map.segments.row(0), MatEq(labels32("1 1 9 1 1")));
    EXPECT_THAT(map.borders.row(0), MatEq(labels32(". . 1 . .")));
}

TEST(MergeSegmentsMapInPlace, RejectsRoomsWithoutABorderAndChangesNothing) {
    RegionMap map = junctionMap();
    const RegionMap before = junctionMap();
    const std::string message =
        "mergeSegmentsMapInPlace: Edge between u and v not found in borders map.";
    EXPECT_THAT([&] { mergeSegments(map, 1, 4); }, ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT([&] { mergeSegments(map, 7, 1); }, ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT([&] { mergeSegments(map, 1, 1); }, ThrowsMessage<std::invalid_argument>(message));
    EXPECT_THAT(map.segments, MatEq(before.segments));
    EXPECT_THAT(map.borders, MatEq(before.borders));
    EXPECT_EQ(map.border_ids, before.border_ids);
}

TEST(MergeSegmentsMapInPlace, RejectsImagesOfOtherTypesOrSizesAndChangesNothing) {
    const auto expect_rejected = [](const cv::Mat& segments, const cv::Mat& borders) {
        RegionMap map = junctionMap();
        map.segments = segments.clone();
        map.borders = borders.clone();
        EXPECT_THAT([&] { mergeSegments(map, 1, 2); },
                    ThrowsMessage<std::invalid_argument>(
                        "mergeSegmentsMapInPlace: segments and borders must be CV_32S of the same "
                        "size."));
        EXPECT_THAT(map.segments, MatEq(segments));
        EXPECT_THAT(map.borders, MatEq(borders));
        EXPECT_EQ(map.border_ids, junctionMap().border_ids);
    };
    const RegionMap map = junctionMap();
    cv::Mat segments8;
    cv::Mat borders8;
    map.segments.convertTo(segments8, CV_8U);
    map.borders.convertTo(borders8, CV_8U);
    expect_rejected(segments8, map.borders);
    expect_rejected(map.segments, borders8);
    expect_rejected(map.segments.rowRange(0, 5), map.borders);
    expect_rejected(map.segments, cv::Mat());
}

// Properties

/// Any edge of the graph.
Edge randomEdge(RandomImages& random, const Graph& graph) {
    auto edge = graph.edges().begin();
    std::advance(edge, random.below(static_cast<int>(graph.edges().size())));
    return edge->first;
}

TEST(MergePrimitives, AgreeWithThePlainVersionsAndKeepEverythingConsistent) {
    RandomImages random(21);
    std::size_t merges = 0;
    for (int i = 0; i < 220; ++i) {
        SCOPED_TRACE(i);
        const cv::Mat image = roomImage(random, random.size(40), 2 + random.below(25));
        RegionMap map = regionMap(image, 255);
        reference::MergeState expected = reference::mergeState(image, 255);
        const RegionTotals totals = regionTotals(map, 255);
        ASSERT_TRUE(isConsistent(map, 255, totals));
        while (!map.graph.edges().empty()) {
            const Edge edge = randomEdge(random, map.graph);
            const bool swap = random.below(2) == 0;
            const int u = swap ? edge.second : edge.first;
            const int v = swap ? edge.first : edge.second;
            EXPECT_EQ(findBestEdgeToMerge(map.graph, u),
                      reference::longestNeighbor(expected.graph, u));
            mergeSegments(map, u, v);
            map.graph = mergeNodes(map.graph, u, v);
            reference::merge(expected, u, v);
            ASSERT_EQ(regionGraph(map.graph), expected.graph);
            ASSERT_THAT(map.segments, MatEq(expected.segments));
            ASSERT_THAT(map.borders, MatEq(expected.borders));
            ASSERT_EQ(map.border_ids, expected.border_ids);
            ASSERT_TRUE(isConsistent(map, 255, totals));
            ++merges;
        }
    }
    EXPECT_GT(merges, 1000U) << "the images are too simple to show anything";
}

TEST(MergePrimitives, GiveTheSameRoomsWhicheverOfTwoSurvives) {
    RandomImages random(22);
    for (int i = 0; i < 50; ++i) {
        const cv::Mat image = roomImage(random, random.size(30), 10);
        RegionMap map = regionMap(image, 255);
        if (map.graph.edges().empty()) continue;
        const Edge edge = randomEdge(random, map.graph);
        RegionMap other = regionMap(image, 255);
        mergeSegments(map, edge.first, edge.second);
        mergeSegments(other, edge.second, edge.first);
        other.segments.setTo(edge.first, other.segments == edge.second);
        EXPECT_THAT(other.segments, MatEq(map.segments));
        EXPECT_THAT(cv::Mat(other.borders != 0), MatEq(map.borders != 0));
    }
}

}  // namespace
}  // namespace vorund::test
