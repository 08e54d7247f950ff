#include "flow/room_graph.h"

#include <gmock/gmock.h>

#include <cstdint>

#include "flow/separators.h"
#include "reference/graph_processor.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"
#include "vorund/graph_processor.h"

namespace vorund::rooms {
namespace {

using reference::regionGraph;
using test::labels32;
using test::MatEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

TEST(FindGraph, TellsApartRoomsAbove255) {
    const FoundGraph found = findGraph(labels32("254 254 255 256 255 300\n"
                                                "254 254 255 256 255 300\n"
                                                "254 254 255 256 255 300"),
                                       301);
    EXPECT_THAT(found.borders, MatEq(labels32(". . 1 . 2 .\n"
                                              ". . 1 . 2 .\n"
                                              ". . 1 . 2 .")));
    EXPECT_THAT(found.border_ids, ElementsAre(Pair(Edge(254, 256), 1), Pair(Edge(256, 300), 2)));
    EXPECT_DOUBLE_EQ(found.graph.getEdgeData(256, 300).length, 3 * 0.05);
    EXPECT_DOUBLE_EQ(found.graph.getNodeData(256).area, 3 * 0.05 * 0.05);
    EXPECT_EQ(found.graph.getNodeData(256).position, cv::Point(3, 1));
    EXPECT_EQ(found.graph.nodes().count(kLine), 0U);
}

TEST(FindGraph, TellsApartMoreBordersThan8BitsDo) {
    // 400 rooms of two pixels in a row, a line after each.
    constexpr int kBelowFirst = 70'000;
    cv::Mat separated(1, 400 * 3 - 1, CV_32SC1);
    for (int col = 0; col < separated.cols; ++col) {
        separated.at<std::int32_t>(0, col) = col % 3 == 2 ? kLine : kBelowFirst + 1 + col / 3;
    }
    const FoundGraph found = findGraph(separated, kBelowFirst + 401);
    ASSERT_EQ(found.border_ids.size(), 399U);
    for (const auto& [edge, id] : found.border_ids) {
        EXPECT_EQ(edge.second, edge.first + 1);
        EXPECT_EQ(id, edge.first - kBelowFirst) << "in raster order";
        EXPECT_EQ(found.borders.at<std::int32_t>(0, 3 * id - 1), id);
        EXPECT_DOUBLE_EQ(found.graph.edges().at(edge).length, 0.05);
    }
}

TEST(FindGraph, FindsNothingWithoutRooms) {
    const FoundGraph found = findGraph(labels32(". 255 255"), 256);
    EXPECT_THAT(found.borders, MatEq(labels32(". . .")));
    EXPECT_THAT(found.border_ids, IsEmpty());
    EXPECT_THAT(found.graph.nodes(), IsEmpty());
}

void expectWhatTheCoreFinds(const cv::Mat& image) {
    const auto expected = GraphProcessor::findGraphRepresentation(image, kLine);
    const cv::Mat_<std::int32_t> separated(image);
    for (const cv::Mat& input : {cv::Mat(separated), test::asView(separated)}) {
        const FoundGraph found = findGraph(input, 256);
        EXPECT_THAT(found.borders, MatEq(cv::Mat_<std::int32_t>(expected.borders_map)));
        EXPECT_EQ(found.border_ids, expected.border_ids);
        EXPECT_EQ(regionGraph(found.graph), regionGraph(expected.graph));
        EXPECT_THAT(input, MatEq(separated)) << "the input is left as it was";
    }
}

class FindGraphInRandomImages : public ::testing::TestWithParam<int> {};

TEST_P(FindGraphInRandomImages, FindsWhatTheCoreFinds) {
    test::RandomImages random(static_cast<std::uint32_t>(GetParam()));
    for (int run = 0; run < 20; ++run) {
        expectWhatTheCoreFinds(test::roomImage(random, random.size(80), 1 + random.below(12)));
        // Rooms that touch, and lines all over.
        cv::Mat noise = random.bytes(random.size(12), 5);
        noise.setTo(kLine, noise == 4);
        expectWhatTheCoreFinds(noise);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FindGraphInRandomImages, ::testing::Range(1, 11));

}  // namespace
}  // namespace vorund::rooms
