// The steps on 32-bit images give what the core's functions for 8-bit images give, and do not
// depend on what the numbers of the regions are, as long as their order is the same.

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

#include "blocks/wide_cuts.h"
#include "blocks/wide_graph.h"
#include "blocks/wide_lines.h"
#include "blocks/wide_merging.h"
#include "flow/cuts.h"
#include "flow/islands.h"
#include "flow/line_pixels.h"
#include "flow/merging.h"
#include "flow/separators.h"
#include "support/captures.h"
#include "support/consistency.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::MatEq;
using ::testing::ElementsAre;
using ::testing::Pair;

constexpr int kFarAway = 70'000;  // More than 16 bits hold.

/// All that the steps give.
struct Steps {
    std::vector<RoomGraph> graphs;  ///< Separated, without islands, after each pass.
    Cuts cuts;
    cv::Mat labels;
    cv::Mat straight;
};

RoomGraph copyOf(const RoomGraph& rooms) {
    return {rooms.labels.clone(), rooms.borders.clone(), rooms.border_ids, rooms.graph};
}

Steps merge(RoomGraph rooms, const Config& config, const Merging& merging) {
    Steps steps;
    steps.graphs.push_back(copyOf(rooms));
    removeIslands(rooms, config.merge_nodes_in_place.area_threshold);
    steps.graphs.push_back(copyOf(rooms));
    merging(rooms, config, [&](const std::string&) { steps.graphs.push_back(copyOf(rooms)); });
    return steps;
}

Steps takeCoreSteps(const cv::Mat& regions, const Config& config) {
    test::RegionMap map = test::regionMap(drawSeparators(regions), kLine);
    Steps steps = merge({map.segments, map.borders, map.border_ids, map.graph}, config,
                        mergeBySizeAndBorderLength);
    steps.cuts = findCuts(steps.graphs.back(), nullptr);
    steps.labels = assignLinePixels(regions, steps.graphs.back().labels);
    steps.straight = steps.labels.clone();
    straightenBorders(steps.straight, steps.cuts);
    return steps;
}

Steps takeWideSteps(const cv::Mat& regions, const Config& config) {
    const cv::Mat separated = drawWideSeparators(regions);
    Steps steps = merge(findWideGraph(separated.clone()), config, mergeWide);
    steps.cuts = findWideCuts(steps.graphs.back());
    steps.labels = assignWideLinePixels(regions, separated, steps.graphs.back().labels);
    steps.straight = steps.labels.clone();
    straightenWideBorders(steps.straight, steps.cuts);
    return steps;
}

int moved(int label) {
    return label == 0 || label == kLine ? label : label + kFarAway;
}

cv::Mat moved(const cv::Mat& labels) {
    cv::Mat result = labels.clone();
    for (std::int32_t& label : cv::Mat_<std::int32_t>(result)) label = moved(label);
    return result;
}

Steps moved(const Steps& steps) {
    Steps result;
    for (const RoomGraph& rooms : steps.graphs) {
        RoomGraph graph{moved(rooms.labels), rooms.borders, {}, {}};
        for (const auto& [edge, id] : rooms.border_ids) {
            graph.border_ids.emplace(Edge(moved(edge.first), moved(edge.second)), id);
        }
        for (const auto& [label, data] : rooms.graph.nodes()) {
            graph.graph.addNode(moved(label), data);
        }
        for (const auto& [edge, data] : rooms.graph.edges()) {
            graph.graph.addEdge(moved(edge.first), moved(edge.second), data);
        }
        result.graphs.push_back(graph);
    }
    for (const auto& [edge, line] : steps.cuts) {
        result.cuts.emplace(Edge(moved(edge.first), moved(edge.second)), line);
    }
    result.labels = moved(steps.labels);
    result.straight = moved(steps.straight);
    return result;
}

void expectSame(const Graph& actual, const Graph& expected) {
    ASSERT_EQ(actual.nodes().size(), expected.nodes().size());
    for (const auto& [label, data] : expected.nodes()) {
        ASSERT_EQ(actual.nodes().count(label), 1U) << label;
        EXPECT_EQ(actual.getNodeData(label).area, data.area) << label;
        EXPECT_EQ(actual.getNodeData(label).position, data.position) << label;
    }
    EXPECT_EQ(actual.adjacency(), expected.adjacency());
    ASSERT_EQ(actual.edges().size(), expected.edges().size());
    for (const auto& [edge, data] : expected.edges()) {
        ASSERT_EQ(actual.edges().count(edge), 1U) << edge.first << " " << edge.second;
        EXPECT_EQ(actual.edges().at(edge).length, data.length) << edge.first << " " << edge.second;
    }
}

void expectSame(const Steps& actual, const Steps& expected) {
    ASSERT_EQ(actual.graphs.size(), expected.graphs.size());
    for (std::size_t step = 0; step < expected.graphs.size(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        EXPECT_THAT(actual.graphs[step].labels, MatEq(expected.graphs[step].labels));
        EXPECT_THAT(actual.graphs[step].borders, MatEq(expected.graphs[step].borders));
        EXPECT_EQ(actual.graphs[step].border_ids, expected.graphs[step].border_ids);
        expectSame(actual.graphs[step].graph, expected.graphs[step].graph);
    }
    ASSERT_EQ(actual.cuts.size(), expected.cuts.size());
    for (const auto& [edge, line] : expected.cuts) {
        ASSERT_EQ(actual.cuts.count(edge), 1U) << edge.first << " " << edge.second;
        const GraphProcessor::OptimalLine& other = actual.cuts.at(edge);
        EXPECT_EQ(other.center, line.center);
        EXPECT_EQ(other.start, line.start);
        EXPECT_EQ(other.end, line.end);
        EXPECT_EQ(other.angle, line.angle);
        EXPECT_EQ(other.effective_length, line.effective_length);
        EXPECT_EQ(other.direction_weight, line.direction_weight);
        EXPECT_EQ(other.score, line.score);
    }
    EXPECT_THAT(actual.labels, MatEq(expected.labels));
    EXPECT_THAT(actual.straight, MatEq(expected.straight));
}

class WideFlow : public ::testing::TestWithParam<int> {};

TEST_P(WideFlow, GivesWhatTheCoreGivesWhateverTheNumbers) {
    const test::PlainCapture plain;
    test::RandomImages random(static_cast<std::uint32_t>(GetParam()));
    for (int run = 0; run < 10; ++run) {
        const cv::Size size(4 + random.below(60), 4 + random.below(60));
        cv::Mat regions = random.patches(size, 1 + random.below(25), 0);
        regions.setTo(255, regions == 5);
        Config config;
        config.merge_nodes_in_place.area_threshold = 0.0025 * random.below(80);
        config.merge_edges_in_place.length_threshold = 0.05 * (1 + random.below(20));

        const Steps expected = takeCoreSteps(regions, config);
        cv::Mat wide;
        regions.convertTo(wide, CV_32S);
        SCOPED_TRACE(regions);
        expectSame(takeWideSteps(wide, config), expected);
        expectSame(takeWideSteps(moved(wide), config), moved(expected));
        if (HasFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, WideFlow, ::testing::Range(1, 21));

TEST(WideGraph, TellsApartRegionsAndBordersAbove255) {
    // Line 255 lies between regions 254, 256 and 300, the smaller of which keeps its pixels.
    const cv::Mat regions = labels32(
        "254 254 256 256 300 300\n"
        "254 254 256 256 300 300\n"
        "254 254 256 256 300 300");
    const cv::Mat separated = drawWideSeparators(regions);
    EXPECT_THAT(separated, MatEq(labels32("254 254 255 256 255 300\n"
                                          "254 254 255 256 255 300\n"
                                          "254 254 255 256 255 300")));
    const RoomGraph rooms = findWideGraph(separated);
    EXPECT_THAT(rooms.border_ids, ElementsAre(Pair(Edge(254, 256), 1), Pair(Edge(256, 300), 2)));
    EXPECT_DOUBLE_EQ(rooms.graph.getEdgeData(256, 300).length, 3 * 0.05);
    EXPECT_DOUBLE_EQ(rooms.graph.getNodeData(256).area, 3 * 0.05 * 0.05);
    EXPECT_EQ(rooms.graph.nodes().count(255), 0U);
}

TEST(WideGraph, TellsApartMoreBordersThan8Bits) {
    // 400 regions of 3 pixels in a row, 399 borders.
    cv::Mat regions(1, 1200, CV_32SC1);
    for (int col = 0; col < regions.cols; ++col) {
        regions.at<std::int32_t>(0, col) = kFarAway + 1 + col / 3;
    }
    const RoomGraph rooms = findWideGraph(drawWideSeparators(regions));
    ASSERT_EQ(rooms.border_ids.size(), 399U);
    for (const auto& [edge, id] : rooms.border_ids) {
        EXPECT_EQ(edge.second, edge.first + 1);
        EXPECT_EQ(id, edge.first - kFarAway) << "in raster order";
        EXPECT_DOUBLE_EQ(rooms.graph.edges().at(edge).length, 0.05);
    }
}

}  // namespace
}  // namespace vorund::rooms
