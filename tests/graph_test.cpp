#include "vorund/graph.h"

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "reference/graph_processor.h"

namespace vorund::test {
namespace {

using reference::regionGraph;
using reference::RegionGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::ThrowsMessage;

/// Rooms 1 to `count`, without borders.
Graph rooms(int count) {
    Graph graph;
    for (int label = 1; label <= count; ++label) {
        graph.addNode(label, {static_cast<double>(label), cv::Point(label, 10 * label)});
    }
    return graph;
}

/// Room 2 in the middle of 1, 3 and 4; 3 and 4 touch as well.
Graph star() {
    Graph graph = rooms(4);
    graph.addEdge(2, 1, {0.1});
    graph.addEdge(2, 3, {0.2});
    graph.addEdge(2, 4, {0.3});
    graph.addEdge(3, 4, {0.4});
    return graph;
}

std::vector<Edge> keys(const Graph& graph) {
    std::vector<Edge> edges;
    for (const auto& edge : graph.edges()) edges.push_back(edge.first);
    return edges;
}

TEST(Edge, PutsTheSmallerLabelFirst) {
    const Edge edge(7, 3);
    EXPECT_EQ(edge.first, 3);
    EXPECT_EQ(edge.second, 7);
    EXPECT_EQ(edge, Edge(3, 7));
}

TEST(Edge, OrdersNegativeLabelsLikeOthers) {
    EXPECT_EQ(Edge(2, -5).first, -5);
    EXPECT_EQ(Edge(2, -5).second, 2);
}

TEST(Edge, IsComparedByTheSmallerLabelThenByTheLarger) {
    EXPECT_TRUE(Edge(1, 9) < Edge(2, 3));
    EXPECT_FALSE(Edge(2, 3) < Edge(1, 9));
    EXPECT_TRUE(Edge(2, 3) < Edge(2, 4));
    EXPECT_FALSE(Edge(2, 4) < Edge(2, 3));
    EXPECT_FALSE(Edge(4, 2) < Edge(2, 4));
}

TEST(Edge, IsEqualOnlyInBothLabels) {
    EXPECT_FALSE(Edge(2, 3) == Edge(2, 4));
    EXPECT_FALSE(Edge(2, 4) == Edge(3, 4));
}

TEST(Edge, OrdersAMapOfIds) {
    const BorderIds ids{{Edge(9, 2), 1}, {Edge(4, 3), 2}, {Edge(2, 5), 3}};
    EXPECT_THAT(ids, ElementsAre(Pair(Edge(2, 5), 3), Pair(Edge(2, 9), 1), Pair(Edge(3, 4), 2)));
}

TEST(Graph, IsEmptyAtFirst) {
    const Graph graph;
    EXPECT_THAT(graph.nodes(), IsEmpty());
    EXPECT_THAT(graph.adjacency(), IsEmpty());
    EXPECT_THAT(graph.edges(), IsEmpty());
}

TEST(Graph, GivesANewNodeAnEmptySetOfNeighbors) {
    Graph graph;
    graph.addNode(7, {2.5, cv::Point(3, 4)});
    EXPECT_EQ(graph.getNodeData(7).area, 2.5);
    EXPECT_EQ(graph.getNodeData(7).position, cv::Point(3, 4));
    EXPECT_THAT(graph.adjacency(), ElementsAre(Pair(7, IsEmpty())));
}

TEST(Graph, OverwritesANodeAndKeepsItsNeighbors) {
    Graph graph = star();
    graph.addNode(2, {9.0, cv::Point(1, 1)});
    EXPECT_EQ(graph.nodes().size(), 4U);
    EXPECT_EQ(graph.getNodeData(2).area, 9.0);
    EXPECT_EQ(graph.getNodeData(2).position, cv::Point(1, 1));
    EXPECT_THAT(graph.getNeighbors(2), ElementsAre(1, 3, 4));
    EXPECT_EQ(graph.edges().size(), 4U);
}

TEST(Graph, WalksInAscendingOrderWhateverTheOrderOfInsertion) {
    Graph graph;
    for (const int label : {5, -2, 300, 1}) graph.addNode(label, {0.0, {}});
    graph.addEdge(300, 5, {1.0});
    graph.addEdge(5, 1, {1.0});
    graph.addEdge(-2, 5, {1.0});
    EXPECT_THAT(graph.nodes(), ElementsAre(Pair(-2, ::testing::_), Pair(1, ::testing::_),
                                           Pair(5, ::testing::_), Pair(300, ::testing::_)));
    EXPECT_THAT(graph.getNeighbors(5), ElementsAre(-2, 1, 300));
    EXPECT_THAT(keys(graph), ElementsAre(Edge(-2, 5), Edge(1, 5), Edge(5, 300)));
}

TEST(Graph, TakesAnEdgeInEitherOrderAsOne) {
    Graph graph = rooms(7);
    graph.addEdge(7, 3, {1.0});
    graph.addEdge(3, 7, {2.0});
    EXPECT_THAT(keys(graph), ElementsAre(Edge(3, 7)));
    EXPECT_EQ(graph.getEdgeData(3, 7).length, 2.0);
    EXPECT_EQ(graph.getEdgeData(7, 3).length, 2.0);
    EXPECT_THAT(graph.getNeighbors(3), ElementsAre(7));
    EXPECT_THAT(graph.getNeighbors(7), ElementsAre(3));
}

TEST(Graph, FindsAnEdgeByItsLabelsInEitherOrder) {
    Graph graph = rooms(5);
    graph.addEdge(2, 5, {0.7});
    EXPECT_EQ(graph.getEdgeData(5, 2).length, 0.7);
}

TEST(Graph, RejectsAnEdgeOfAnUnknownNodeAndStaysAsItIs) {
    Graph graph = star();
    const RegionGraph before = regionGraph(graph);
    EXPECT_THAT([&] { graph.addEdge(9, 2, {1.0}); },
                ThrowsMessage<std::invalid_argument>("Node not found"));
    EXPECT_THAT([&] { graph.addEdge(2, 9, {1.0}); },
                ThrowsMessage<std::invalid_argument>("Node not found"));
    EXPECT_THAT([&] { graph.addEdge(8, 9, {1.0}); },
                ThrowsMessage<std::invalid_argument>("Node not found"));
    EXPECT_EQ(regionGraph(graph), before);
}

TEST(Graph, DoesNotRejectAnEdgeFromANodeToItself) {
    Graph graph = rooms(1);
    graph.addEdge(1, 1, {0.5});
    EXPECT_EQ(graph.getEdgeData(1, 1).length, 0.5);
    EXPECT_THAT(graph.getNeighbors(1), ElementsAre(1));
    graph.removeNode(1);
    EXPECT_EQ(regionGraph(graph), RegionGraph{});
}

TEST(Graph, RemovesAnEdgeFromBothNeighbors) {
    Graph graph = star();
    graph.removeEdge(4, 2);
    EXPECT_THAT(keys(graph), ElementsAre(Edge(1, 2), Edge(2, 3), Edge(3, 4)));
    EXPECT_THAT(graph.getNeighbors(2), ElementsAre(1, 3));
    EXPECT_THAT(graph.getNeighbors(4), ElementsAre(3));
}

TEST(Graph, TakesTheRemovalOfAnAbsentEdgeForDone) {
    Graph graph = star();
    const RegionGraph before = regionGraph(graph);
    graph.removeEdge(1, 4);
    graph.removeEdge(1, 99);
    graph.removeEdge(99, 1);
    graph.removeEdge(98, 99);
    EXPECT_EQ(regionGraph(graph), before);
}

TEST(Graph, RemovesANodeWithItsEdgesAndKeepsTheNeighbors) {
    Graph graph = star();
    graph.removeNode(2);
    EXPECT_THAT(keys(graph), ElementsAre(Edge(3, 4)));
    EXPECT_THAT(graph.adjacency(),
                ElementsAre(Pair(1, IsEmpty()), Pair(3, ElementsAre(4)), Pair(4, ElementsAre(3))));
    EXPECT_EQ(graph.nodes().size(), 3U);
    EXPECT_EQ(graph.nodes().count(2), 0U);
}

TEST(Graph, TakesTheRemovalOfAnAbsentNodeForDone) {
    Graph graph = star();
    const RegionGraph before = regionGraph(graph);
    graph.removeNode(99);
    EXPECT_EQ(regionGraph(graph), before);
}

TEST(Graph, ForgetsTheNeighborsOfARemovedNode) {
    Graph graph = star();
    graph.removeNode(2);
    graph.addNode(2, {1.0, {}});
    EXPECT_THAT(graph.getNeighbors(2), IsEmpty());
}

TEST(Graph, TellsThatANodeIsUnknown) {
    const Graph graph = rooms(2);
    EXPECT_THAT([&] { graph.getNodeData(3); },
                ThrowsMessage<std::invalid_argument>("Node not found"));
    EXPECT_THAT([&] { graph.getNeighbors(3); },
                ThrowsMessage<std::invalid_argument>("Node not found"));
}

TEST(Graph, TellsThatAnEdgeIsUnknown) {
    const Graph graph = star();
    EXPECT_THAT([&] { graph.getEdgeData(1, 4); },
                ThrowsMessage<std::invalid_argument>("Edge not found"));
    EXPECT_THAT([&] { graph.getEdgeData(98, 99); },
                ThrowsMessage<std::invalid_argument>("Edge not found"));
}

TEST(Graph, IsAValueWhoseCopiesAreIndependent) {
    const Graph original = star();
    Graph copy = original;
    copy.removeNode(2);
    copy.addNode(1, {8.0, {}});
    EXPECT_EQ(regionGraph(original), regionGraph(star()));
    copy = original;
    EXPECT_EQ(regionGraph(copy), regionGraph(original));
}

TEST(Graph, GivesReferencesToWhatItHolds) {
    static_assert(std::is_same_v<decltype(std::declval<const Graph&>().nodes()),
                                 const std::map<int, NodeData>&>);
    static_assert(std::is_same_v<decltype(std::declval<const Graph&>().edges()),
                                 const std::map<Edge, EdgeData>&>);
    const Graph graph = star();
    EXPECT_EQ(&graph.getNodeData(2), &graph.nodes().at(2));
    EXPECT_EQ(&graph.getNeighbors(2), &graph.adjacency().at(2));
    EXPECT_EQ(&graph.getEdgeData(4, 2), &graph.edges().at(Edge(2, 4)));
}

}  // namespace
}  // namespace vorund::test
