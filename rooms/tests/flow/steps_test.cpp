// The steps after the segmentation one after the other, on label images of any shape.

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cut_matchers.h"
#include "flow/cuts.h"
#include "flow/islands.h"
#include "flow/merging.h"
#include "flow/regions.h"
#include "flow/separators.h"
#include "reference/cuts.h"
#include "reference/room_graph.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using reference::MergeState;
using reference::RegionGraph;
using test::labels32;
using test::MatEq;

constexpr double kPixel = 0.05 * 0.05;  // [m^2]

/// What the steps make of a label image.
struct Result {
    std::vector<MergeState> states;  ///< Separated, without islands, after each pass.
    Cuts cuts;
    cv::Mat labels;
    cv::Mat straight;

    const RegionGraph& separated() const { return states[0].graph; }
    const RegionGraph& kept() const { return states[1].graph; }
    const RegionGraph& merged() const { return states[3].graph; }
};

Config configOf(double area_threshold, double length_threshold) {
    Config config;
    config.merge_nodes_in_place.area_threshold = area_threshold;
    config.merge_edges_in_place.length_threshold = length_threshold;
    return config;
}

/// @param segmented  Of bytes or integers.
Result takeSteps(const cv::Mat& segmented, double area_threshold, double length_threshold) {
    Result result;
    segmented.convertTo(result.labels, CV_32S);
    Regions regions = separate(result.labels);
    const auto keep = [&] {
        const RoomGraph rooms = wholeRoomGraph(regions);
        result.states.push_back({reference::regionGraph(rooms.graph), rooms.labels.clone(),
                                 rooms.borders.clone(), rooms.border_ids});
    };
    keep();
    removeIslands(regions, area_threshold);
    keep();
    mergeBySizeAndBorderLength(regions.table, configOf(area_threshold, length_threshold),
                               [&](const std::string&) { keep(); });
    writeTable(regions);
    result.cuts =
        findCuts({regions.labels, regions.borders, regions.table.border_ids, regions.table.graph});
    rename(result.labels, successorsOf(regions));
    result.straight = result.labels.clone();
    straightenBorders(result.straight, result.cuts);
    return result;
}

MergeState copyOf(const MergeState& state) {
    return {state.graph, state.segments.clone(), state.borders.clone(), state.border_ids};
}

/// The steps over whole images, in their plain versions.
/// @param segmented  Of bytes.
Result takePlainSteps(const cv::Mat& segmented, double area_threshold, double length_threshold) {
    Result result;
    MergeState rooms = reference::roomGraph(reference::separated(segmented));
    result.states.push_back(copyOf(rooms));
    reference::removeIslands(rooms, area_threshold);
    result.states.push_back(copyOf(rooms));
    reference::mergeSmallRooms(rooms, area_threshold);
    result.states.push_back(copyOf(rooms));
    reference::mergeAcrossLongBorders(rooms, length_threshold);
    result.states.push_back(copyOf(rooms));
    result.cuts = reference::cutsOf(rooms);
    result.labels = reference::withLinePixels(segmented, rooms.segments);
    result.straight = result.labels.clone();
    reference::straightenBorders(result.straight, result.cuts);
    return result;
}

void expectSame(const Result& actual, const Result& expected) {
    ASSERT_EQ(actual.states.size(), expected.states.size());
    for (std::size_t step = 0; step < expected.states.size(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        EXPECT_THAT(actual.states[step].segments, MatEq(expected.states[step].segments));
        EXPECT_THAT(actual.states[step].borders, MatEq(expected.states[step].borders));
        EXPECT_EQ(actual.states[step].border_ids, expected.states[step].border_ids);
        EXPECT_EQ(actual.states[step].graph, expected.states[step].graph);
    }
    expectSameCuts(actual.cuts, expected.cuts);
    EXPECT_THAT(actual.labels, MatEq(expected.labels));
    EXPECT_THAT(actual.straight, MatEq(expected.straight));
}

int moved(int label) {
    constexpr int kFarAway = 70'000;  // More than 16 bits hold.
    return label == 0 || label == kLine ? label : label + kFarAway;
}

Edge moved(const Edge& rooms) {
    return {moved(rooms.first), moved(rooms.second)};
}

cv::Mat moved(const cv::Mat& labels) {
    cv::Mat_<std::int32_t> result;
    labels.convertTo(result, CV_32S);
    for (std::int32_t& label : result) label = moved(label);
    return result;
}

RegionGraph moved(const RegionGraph& graph) {
    RegionGraph result;
    for (const auto& [label, data] : graph.nodes) result.nodes.emplace(moved(label), data);
    for (const auto& [label, neighbours] : graph.adjacency) {
        for (const int other : neighbours) result.adjacency[moved(label)].insert(moved(other));
        result.adjacency[moved(label)];
    }
    for (const auto& [edge, data] : graph.edges) result.edges.emplace(moved(edge), data);
    return result;
}

/// What the steps make of the image if all its labels are greater.
Result moved(const Result& result) {
    Result far{{}, {}, moved(result.labels), moved(result.straight)};
    for (const MergeState& state : result.states) {
        far.states.push_back({moved(state.graph), moved(state.segments), state.borders, {}});
        for (const auto& [edge, id] : state.border_ids) {
            far.states.back().border_ids.emplace(moved(edge), id);
        }
    }
    for (const auto& [edge, line] : result.cuts) far.cuts.emplace(moved(edge), line);
    return far;
}

TEST(Steps, MergeASmallRoomWithItsLines) {
    EXPECT_THAT(takeSteps(labels32("1 1 1 1 2 2\n"
                                   "1 1 1 1 2 2\n"
                                   "1 1 1 1 2 2"),
                          5.5 * kPixel, 1.0)
                    .labels,
                MatEq(labels32("1 1 1 1 1 1\n"
                               "1 1 1 1 1 1\n"
                               "1 1 1 1 1 1")));
}

TEST(Steps, JoinRoomsAcrossALongBorder) {
    const cv::Mat image = labels32(
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
    EXPECT_THAT(takeSteps(labels32("5 5 4 4\n"
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
    const cv::Mat image = labels32(
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
        const double area = kPixel * random.below(60);
        const double length = 0.05 * (1 + random.below(20));
        const Result result = takeSteps(segmented, area, length);
        expectSame(result, takePlainSteps(segmented, area, length));

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
                ASSERT_TRUE(after == 0 || result.merged().nodes.count(after) > 0);
                if (result.kept().nodes.count(before) > 0) {
                    ASSERT_NE(after, 0) << before << "\n" << segmented;
                }
            }
        }
        for (const auto& [label, data] : result.separated().nodes) {
            if (result.kept().nodes.count(label) == 0) {
                EXPECT_EQ(became.at(label), 0);
            }
        }
        for (const auto& [label, data] : result.merged().nodes) {
            EXPECT_EQ(became.at(label), label) << "a room keeps its own floor\n" << segmented;
        }
    }
}

TEST_P(StepsOnRandomImages, DependOnNothingButTheOrderOfLabels) {
    test::RandomImages random(static_cast<std::uint32_t>(1000 + GetParam()));
    for (int run = 0; run < 5; ++run) {
        const cv::Size size(4 + random.below(60), 4 + random.below(60));
        cv::Mat segmented = random.patches(size, 1 + random.below(25), 0);
        segmented.setTo(255, segmented == 5);
        const double area = kPixel * random.below(80);
        const double length = 0.05 * (1 + random.below(20));
        SCOPED_TRACE(segmented);
        const Result expected = takePlainSteps(segmented, area, length);
        expectSame(takeSteps(segmented, area, length), expected);
        expectSame(takeSteps(moved(segmented), area, length), moved(expected));
        if (HasFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, StepsOnRandomImages, ::testing::Range(1, 31));

}  // namespace
}  // namespace vorund::rooms
