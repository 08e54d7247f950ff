// The steps after `doSegment` one after the other, on label images of any shape.

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <string>

#include "flow/islands.h"
#include "flow/line_pixels.h"
#include "flow/merging.h"
#include "flow/separators.h"
#include "support/consistency.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::labels32;
using test::MatEq;

constexpr double kPixel = 0.05 * 0.05;  // [m^2]

/// What the steps make of a label image.
struct Result {
    Graph separated;
    Graph kept;
    RoomGraph merged;
    cv::Mat labels;
};

Result takeSteps(const cv::Mat& segmented, double area_threshold, double length_threshold) {
    test::RegionMap map = test::regionMap(drawSeparators(segmented), kLine);
    Result result;
    result.separated = map.graph;
    RoomGraph rooms{map.segments, map.borders, map.border_ids, map.graph};
    removeIslands(rooms, area_threshold);
    result.kept = rooms.graph;
    Config config;
    config.merge_nodes_in_place.area_threshold = area_threshold;
    config.merge_edges_in_place.length_threshold = length_threshold;
    mergeBySizeAndBorderLength(rooms, config, [](const std::string&) {});
    result.labels = assignLinePixels(segmented, rooms.labels);
    result.merged = rooms;
    return result;
}

TEST(Steps, MergeASmallRoomWithItsLines) {
    EXPECT_THAT(takeSteps(labels("1 1 1 1 2 2\n"
                                 "1 1 1 1 2 2\n"
                                 "1 1 1 1 2 2"),
                          5.5 * kPixel, 1.0)
                    .labels,
                MatEq(labels32("1 1 1 1 1 1\n"
                               "1 1 1 1 1 1\n"
                               "1 1 1 1 1 1")));
}

TEST(Steps, JoinRoomsAcrossALongBorder) {
    const cv::Mat image = labels(
        "3 3 3 8 8 8 8\n"
        "3 3 3 8 8 8 8\n"
        "3 3 3 8 8 8 8");
    EXPECT_THAT(takeSteps(image, 0.0, 0.16).labels, MatEq(labels32("3 3 3 8 8 8 8\n"
                                                                   "3 3 3 8 8 8 8\n"
                                                                   "3 3 3 8 8 8 8")));
    // Equal areas beside the line: the smaller label stays.
    EXPECT_THAT(takeSteps(image, 0.0, 0.14).labels, MatEq(labels32("3 3 3 3 3 3 3\n"
                                                                   "3 3 3 3 3 3 3\n"
                                                                   "3 3 3 3 3 3 3")));
}

TEST(Steps, KeepARoomWhoseLastLinePixelWentWithAnIsland) {
    EXPECT_THAT(takeSteps(labels("5 5 4 4\n"
                                 "5 5 4 4\n"
                                 ". 5 4 .\n"
                                 ". 3 . ."),
                          1.5 * kPixel, 1.0)
                    .labels,
                MatEq(labels32("5 5 4 4\n"
                               "5 5 4 4\n"
                               ". 5 4 .\n"
                               ". . . .")));
}

TEST(Steps, KeepARoomThatEndsInALineBetweenTwoOthersThatBecomeOne) {
    // 1 and 2 have six pixels each, and a longer border to each other than to 9.
    const cv::Mat image = labels(
        "9 9 9 9 9\n"
        "9 9 9 9 9\n"
        "9 9 9 9 9\n"
        ". 1 9 2 .\n"
        ". 1 9 2 .\n"
        ". 1 9 2 .\n"
        ". 1 9 2 .\n"
        ". 1 9 2 .\n"
        ". 1 9 2 .");
    const cv::Mat result = takeSteps(image, 6.5 * kPixel, 1.0).labels;
    EXPECT_EQ(cv::countNonZero(result == 9), 15 + 6);
    EXPECT_EQ(result.at<std::int32_t>(8, 1), result.at<std::int32_t>(8, 3));
}

class StepsOnRandomImages : public ::testing::TestWithParam<int> {};

TEST_P(StepsOnRandomImages, TakeEveryLabelToWhatItsRoomHasBecome) {
    test::RandomImages random(static_cast<std::uint32_t>(GetParam()));
    for (int run = 0; run < 20; ++run) {
        const cv::Size size(4 + random.below(30), 4 + random.below(30));
        cv::Mat segmented = random.patches(size, 1 + random.below(12), 0);
        segmented.setTo(255, segmented == 5);
        const Result result =
            takeSteps(segmented, kPixel * random.below(60), 0.05 * (1 + random.below(20)));

        std::map<int, int> became;
        for (int row = 0; row < size.height; ++row) {
            for (int col = 0; col < size.width; ++col) {
                const int before = segmented.at<std::uint8_t>(row, col);
                const int after = result.labels.at<std::int32_t>(row, col);
                if (before == 0 || before == 255) {
                    ASSERT_EQ(after, 0) << segmented;
                    continue;
                }
                ASSERT_EQ(became.emplace(before, after).first->second, after)
                    << before << " is divided\n"
                    << segmented;
                ASSERT_TRUE(after == 0 || result.merged.graph.nodes().count(after) > 0);
                if (result.kept.nodes().count(before) > 0) {
                    ASSERT_NE(after, 0) << before << "\n" << segmented;
                }
            }
        }
        for (const auto& [label, data] : result.separated.nodes()) {
            if (result.kept.nodes().count(label) == 0) {
                EXPECT_EQ(became.at(label), 0);
            }
        }
        for (const auto& [label, data] : result.merged.graph.nodes()) {
            EXPECT_EQ(became.at(label), label) << "a room keeps its own floor\n" << segmented;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, StepsOnRandomImages, ::testing::Range(1, 31));

}  // namespace
}  // namespace vorund::rooms
