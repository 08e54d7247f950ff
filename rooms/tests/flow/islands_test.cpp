#include "flow/islands.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "flow/merging.h"
#include "flow/regions.h"
#include "flow/separators.h"
#include "reference/room_graph.h"
#include "support/consistency.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::MatEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

constexpr double kPixel = 0.05 * 0.05;  // [m^2]

/// @param separated  Of bytes or integers; left as it is.
Regions regions(const cv::Mat& separated) {
    cv::Mat copy;
    separated.convertTo(copy, CV_32S);
    return regionsOf(copy);
}

test::RegionMap regionMap(const Regions& rooms) {
    const RoomGraph whole = wholeRoomGraph(rooms);
    return {whole.graph, whole.labels, whole.borders, whole.border_ids};
}

std::set<int> nodesOf(const Regions& rooms) {
    std::set<int> nodes;
    for (const auto& node : rooms.table.graph.nodes()) nodes.insert(node.first);
    return nodes;
}

TEST(RemoveIslands, RemovesARoomThatIsTooSmallWithItsLines) {
    Regions rooms =
        regions(labels32("1 1 1 . 4 255\n"
                         "1 1 1 . 4 255\n"
                         "1 1 1 . .  . "));
    const auto islands = removeIslands(rooms, 5.5 * kPixel);
    EXPECT_THAT(rooms.labels, MatEq(labels32("1 1 1 . . .\n"
                                             "1 1 1 . . .\n"
                                             "1 1 1 . . .")));
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1));
    ASSERT_THAT(islands, SizeIs(1));
    EXPECT_DOUBLE_EQ(islands[0].area, 2 * kPixel);
    EXPECT_EQ(islands[0].position, cv::Point(4, 0));
}

TEST(RemoveIslands, KeepsASmallRoomThatALineJoinsToALargeOne) {
    Regions rooms = regions(labels32("1 1 1 1 255 2"));
    const cv::Mat before = rooms.labels.clone();
    EXPECT_THAT(removeIslands(rooms, 4.5 * kPixel), IsEmpty());
    EXPECT_THAT(rooms.labels, MatEq(before));
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1, 2));
}

TEST(RemoveIslands, JudgesRoomsThatAreJoinedTogether) {
    // 3 and 8 have four pixels together, 5 has three.
    const cv::Mat image = labels32(
        "1 1 1 1 1 . 5\n"
        ". . . . . . 5\n"
        "8 255 3 3 3 . 5");
    Regions rooms = regions(image);
    const auto islands = removeIslands(rooms, 3.5 * kPixel);
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1, 3, 8));
    ASSERT_THAT(islands, SizeIs(1));
    EXPECT_EQ(islands[0].position, cv::Point(6, 0));

    Regions again = regions(image);
    const auto both = removeIslands(again, 4.5 * kPixel);
    EXPECT_THAT(nodesOf(again), ElementsAre(1));
    EXPECT_THAT(again.labels, MatEq(labels32("1 1 1 1 1 . .\n"
                                             ". . . . . . .\n"
                                             ". . . . . . .")));
    EXPECT_EQ(cv::countNonZero(again.borders), 0);
    EXPECT_THAT(again.table.border_ids, IsEmpty());
    // In the order of their smallest labels, 3 before 5, each at its first pixel.
    ASSERT_THAT(both, SizeIs(2));
    EXPECT_DOUBLE_EQ(both[0].area, 4 * kPixel);
    EXPECT_EQ(both[0].position, cv::Point(0, 2));
    EXPECT_DOUBLE_EQ(both[1].area, 3 * kPixel);
    EXPECT_EQ(both[1].position, cv::Point(6, 0));
}

TEST(RemoveIslands, KeepsASingleRoomThatIsExactlyAsLargeAsAsked) {
    Regions rooms = regions(labels32("1 1 1 1 . 2 2"));
    const double two_pixels = rooms.table.graph.getNodeData(2).area;
    EXPECT_THAT(removeIslands(rooms, two_pixels), IsEmpty());
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1, 2));
    EXPECT_THAT(removeIslands(rooms, two_pixels + 1e-9), SizeIs(1));
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1));
}

TEST(RemoveIslands, RemovesSeveralRoomsThatAreTogetherExactlyAsLargeAsAsked) {
    // Merging adds their areas in another order, which may round below.
    const cv::Mat image = labels32("1 1 1 1 . 2 255 3");
    Regions rooms = regions(image);
    const double two_pixels =
        rooms.table.graph.getNodeData(2).area + rooms.table.graph.getNodeData(3).area;
    EXPECT_THAT(removeIslands(rooms, two_pixels), SizeIs(1));
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1));
    Regions kept = regions(image);
    EXPECT_THAT(removeIslands(kept, two_pixels - 2e-9), IsEmpty());
}

TEST(RemoveIslands, RemovesWhatIsBelowAHundredthOfTheMap) {
    const auto mapWith = [](int large) {
        cv::Mat image(30, 30, CV_8UC1, cv::Scalar(0));
        image.rowRange(0, 20).setTo(1);
        image.row(29).colRange(0, 5).setTo(2);
        for (int i = 20 * 30; i > large; --i)
            image.at<std::uint8_t>((i - 1) / 30, (i - 1) % 30) = 0;
        return image;
    };
    // 5 of 505 pixels are less than a hundredth, 5 of 495 are more.
    Regions small = regions(mapWith(500));
    EXPECT_THAT(removeIslands(small, 0.0), SizeIs(1));
    EXPECT_THAT(nodesOf(small), ElementsAre(1));
    Regions large = regions(mapWith(490));
    EXPECT_THAT(removeIslands(large, 0.0), IsEmpty());
    EXPECT_THAT(nodesOf(large), ElementsAre(1, 2));
}

TEST(RemoveIslands, MeasuresAHundredthOfAllRoomsWithTheIslands) {
    // 3 has less than a hundredth of 1004 pixels, but more than one of the 995 without 2.
    cv::Mat image(40, 40, CV_8UC1, cv::Scalar(0));
    image.rowRange(0, 24).setTo(1);
    image.row(24).colRange(0, 25).setTo(1);  // 985 pixels
    image.row(26).colRange(0, 9).setTo(2);
    image.row(28).colRange(0, 10).setTo(3);
    Regions rooms = regions(image);
    EXPECT_THAT(removeIslands(rooms, 0.0), SizeIs(2));
    EXPECT_THAT(nodesOf(rooms), ElementsAre(1));
}

TEST(RemoveIslands, MayLeaveNothing) {
    Regions rooms = regions(labels32("1 1 255 2 . 7"));
    const auto islands = removeIslands(rooms, 1.0);
    EXPECT_THAT(islands, SizeIs(2));
    EXPECT_THAT(rooms.labels, MatEq(labels32(". . . . . .")));
    EXPECT_THAT(rooms.borders, MatEq(labels32(". . . . . .")));
    EXPECT_THAT(rooms.table.graph.nodes(), IsEmpty());
    EXPECT_THAT(rooms.table.graph.edges(), IsEmpty());
    EXPECT_THAT(rooms.table.border_ids, IsEmpty());
    EXPECT_THAT(removeIslands(rooms, 1.0), IsEmpty()) << "a map without rooms";
}

TEST(RemoveIslands, KeepsTheOnlyRoomWhateverItsSizeIfNoThresholdIsSet) {
    Regions rooms = regions(labels32(". 5 ."));
    EXPECT_THAT(removeIslands(rooms, 0.0), IsEmpty());
    EXPECT_THAT(rooms.labels, MatEq(labels32(". 5 .")));
}

TEST(RemoveIslands, KeepsTheLinesThatTouchNothingRemoved) {
    // The line of 1 and 2 ends beside the removed 9; unreached floor further away stays too.
    Regions rooms =
        regions(labels32("1 1 255 2 2 .\n"
                         "1 1 255 2 2 .\n"
                         "1 1 255 2 2 .\n"
                         ".  .  .  . . 9\n"
                         "255 . .  . 255 255"));
    EXPECT_THAT(removeIslands(rooms, 3.5 * kPixel), SizeIs(1));
    EXPECT_THAT(rooms.labels, MatEq(labels32("1 1 255 2 2 .\n"
                                             "1 1 255 2 2 .\n"
                                             "1 1 255 2 2 .\n"
                                             ". .  .  . . .\n"
                                             "255 . . . . .")));
    EXPECT_THAT(rooms.borders, MatEq(labels32(". . 1 . . .\n"
                                              ". . 1 . . .\n"
                                              ". . 1 . . .\n"
                                              ". . . . . .\n"
                                              ". . . . . .")));
    EXPECT_THAT(rooms.table.border_ids, ElementsAre(Pair(Edge(1, 2), 1)));
}

TEST(RemoveIslands, TakesAJunctionAwayWithTheIslandThatTouchesNothingElse) {
    // 3 shares no border with 4 or 5, only the pixel at which all meet.
    Regions rooms =
        regions(drawSeparators(labels32("5 5 4 4\n"
                                        "5 5 4 4\n"
                                        ". 5 4 .\n"
                                        ". 3 . .")));
    EXPECT_THAT(removeIslands(rooms, 1.5 * kPixel), SizeIs(1));
    EXPECT_THAT(rooms.labels, MatEq(labels32("5 255 4 4\n"
                                             "5 255 4 4\n"
                                             ".  .  4 .\n"
                                             ".  .  . .")));
    EXPECT_DOUBLE_EQ(rooms.table.graph.getEdgeData(4, 5).length, 0.1);
}

class MergedWithoutIslands : public ::testing::TestWithParam<int> {};

TEST_P(MergedWithoutIslands, KeepsImagesGraphAndIdsTogetherAndNeverThrows) {
    test::RandomImages random(static_cast<std::uint32_t>(GetParam()));
    for (int run = 0; run < 12; ++run) {
        const cv::Size size(8 + random.below(60), 8 + random.below(60));
        // Few enough rooms for the ids of their borders.
        const cv::Mat image =
            run % 2 == 0 ? test::roomImage(random, size, 1 + random.below(40))
                         : reference::separated(random.patches(size, 1 + random.below(20), 0));
        Regions rooms = regions(image);
        ASSERT_LE(rooms.table.border_ids.size(), 255U);
        Config config;
        config.merge_nodes_in_place.area_threshold = kPixel * random.below(300);
        config.merge_edges_in_place.length_threshold = 0.05 * random.below(30);

        double removed = 0.0;
        const double before = test::regionTotals(regionMap(rooms), kLine).area;
        reference::MergeState expected = reference::roomGraph(image);
        const auto expected_islands =
            reference::removeIslands(expected, config.merge_nodes_in_place.area_threshold);
        const auto islands = removeIslands(rooms, config.merge_nodes_in_place.area_threshold);
        ASSERT_THAT(islands, SizeIs(expected_islands.size()));
        for (std::size_t i = 0; i < islands.size(); ++i) {
            EXPECT_EQ(islands[i].area, expected_islands[i].area);
            EXPECT_EQ(islands[i].position, expected_islands[i].position);
        }
        EXPECT_THAT(wholeRoomGraph(rooms).labels, MatEq(expected.segments));
        EXPECT_THAT(wholeRoomGraph(rooms).borders, MatEq(expected.borders));
        EXPECT_EQ(rooms.table.border_ids, expected.border_ids);
        EXPECT_EQ(reference::regionGraph(rooms.table.graph), expected.graph);
        for (const RemovedIsland& island : islands) {
            EXPECT_NE(image.at<std::uint8_t>(island.position) % 255, 0);
            EXPECT_EQ(rooms.labels.at<std::int32_t>(island.position), 0);
            removed += island.area;
        }
        const test::RegionTotals totals = test::regionTotals(regionMap(rooms), kLine);
        EXPECT_NEAR(totals.area + removed, before, 1e-9);
        EXPECT_TRUE(test::isConsistent(regionMap(rooms), kLine, totals));

        std::vector<std::string> passes;
        ASSERT_NO_THROW(mergeBySizeAndBorderLength(
            rooms.table, config,
            [&](const std::string& pass) {
                passes.push_back(pass);
                EXPECT_TRUE(test::isConsistent(regionMap(rooms), kLine, totals)) << pass;
            }))
            << image;
        EXPECT_THAT(passes, ElementsAre("merge-nodes", "merge-edges"));
        for (const auto& [edge, data] : rooms.table.graph.edges()) {
            EXPECT_LE(data.length, config.merge_edges_in_place.length_threshold + 1e-9);
        }
        for (const auto& [label, data] : rooms.table.graph.nodes()) {
            EXPECT_GE(data.area, config.merge_nodes_in_place.area_threshold - 1e-9);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MergedWithoutIslands, ::testing::Range(1, 21));

/// Rooms 1, 2 and 3 in a row of the given pixels, before them 4 of two pixels, and apart from them
/// the island 5.
cv::Mat rowOfRooms(const std::array<int, 3>& pixels, int island) {
    cv::Mat image(3, 600, CV_8UC1, cv::Scalar(0));
    image.row(0).colRange(0, 2).setTo(4);
    int col = 2;
    for (int label = 1; label <= 3; ++label) {
        image.at<std::uint8_t>(0, col++) = kLine;
        const int next = col + pixels[static_cast<std::size_t>(label - 1)];
        image.row(0).colRange(col, next).setTo(label);
        col = next;
    }
    image.row(2).colRange(0, island).setTo(5);
    return image;
}

TEST(MergeBySizeAndBorderLength, NeverMeetsAnIslandThatIsAHundredthOfTheMapButForRounding) {
    // 5 of 500 pixels. As 4 joins 1, the areas are added in another order, and for these numbers
    // the sum in floating point gets larger by its last bit.
    Config config;
    config.merge_nodes_in_place.area_threshold = 2.5 * kPixel;
    const std::array<std::array<int, 3>, 2> cases{{{78, 307, 108}, {264, 178, 51}}};
    for (const auto& pixels : cases) {
        Regions rooms = regions(rowOfRooms(pixels, 5));
        removeIslands(rooms, config.merge_nodes_in_place.area_threshold);
        EXPECT_NO_THROW(mergeBySizeAndBorderLength(rooms.table, config, [](const std::string&) {}));
        EXPECT_EQ(nodesOf(rooms).count(4), 0U);
    }
}

}  // namespace
}  // namespace vorund::rooms
