// Merging by passages and taking out clutter give the same as their plain versions, and keep
// what belongs together.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

#include "cleaning/clutter.h"
#include "flow/regions.h"
#include "flow/separators.h"
#include "passages/merge_open_passages.h"
#include "passages/region_table.h"
#include "reference/clutter.h"
#include "reference/doorways.h"
#include "reference/find_rooms.h"
#include "reference/open_passages.h"
#include "support/consistency.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/varied_plans.h"

namespace vorund::rooms {
namespace {

using reference::MergeState;
using reference::PlainDoorway;
using test::MatEq;
using test::RandomImages;

/// Wall, floor that no region reached, and regions in patches; with labels from a table.
cv::Mat patches(RandomImages& random, const std::vector<int>& labels) {
    const cv::Size size(60 + random.below(100), 60 + random.below(80));
    const auto count = static_cast<int>(labels.size());
    const cv::Mat bytes = random.patches(size, count, 0);
    cv::Mat image(size, CV_32SC1);
    std::transform(bytes.begin<std::uint8_t>(), bytes.end<std::uint8_t>(),
                   image.begin<std::int32_t>(), [&](std::uint8_t patch) {
                       return patch == 0 ? 0 : labels[static_cast<std::size_t>(patch) - 1];
                   });
    return image;
}

/// Different labels in no order, the line's value left out.
std::vector<int> someLabels(RandomImages& random, int count, int spacing) {
    std::vector<int> labels;
    for (int i = 1; i <= count; ++i) {
        const int label = i * spacing + random.below(spacing);
        labels.push_back(label == kLine ? label - 1 : label);
    }
    for (std::size_t i = labels.size() - 1; i > 0; --i) {
        std::swap(labels[i], labels[static_cast<std::size_t>(random.below(static_cast<int>(i)))]);
    }
    return labels;
}

RoomsConfig someConfig(RandomImages& random) {
    RoomsConfig config;
    config.open_ratio = 0.1 * random.below(11);
    config.narrow_ratio = 0.1 * random.below(11);
    config.narrow_passage = 0.1 * random.below(30);
    config.least_area = 0.5 * random.below(9);
    return config;
}

MergeState stateOf(const Regions& regions) {
    const RoomGraph whole = wholeRoomGraph(regions);
    return {reference::regionGraph(whole.graph), whole.labels, whole.borders, whole.border_ids};
}

/// Both say the same but for the rounding of sums.
void expectSame(const Regions& regions, const MergeState& plain) {
    const MergeState merged = stateOf(regions);
    EXPECT_THAT(merged.segments, MatEq(plain.segments));
    EXPECT_THAT(merged.borders, MatEq(plain.borders));
    EXPECT_EQ(merged.border_ids, plain.border_ids);
    EXPECT_EQ(merged.graph.adjacency, plain.graph.adjacency);
    ASSERT_EQ(merged.graph.nodes.size(), plain.graph.nodes.size());
    for (const auto& [label, data] : merged.graph.nodes) {
        EXPECT_NEAR(data.area, plain.graph.nodes.at(label).area, 1e-9) << "room " << label;
    }
    ASSERT_EQ(merged.graph.edges.size(), plain.graph.edges.size());
    for (const auto& [edge, data] : merged.graph.edges) {
        EXPECT_NEAR(data.length, plain.graph.edges.at(edge).length, 1e-9);
    }
}

test::RegionMap regionMap(const Regions& regions) {
    const RoomGraph whole = wholeRoomGraph(regions);
    return {whole.graph, whole.labels, whole.borders, whole.border_ids};
}

std::vector<FoundDoorway> asFound(const std::vector<PlainDoorway>& doorways) {
    std::vector<FoundDoorway> found;
    for (const PlainDoorway& doorway : doorways) {
        found.push_back({doorway.first_jamb, doorway.second_jamb, doorway.width, doorway.wall});
    }
    return found;
}

/// Lines across the map, that may reach beyond it.
std::vector<PlainDoorway> someDoorways(RandomImages& random, const cv::Size& size) {
    const auto somewhere = [&] {
        return cv::Point(random.below(size.width + 10) - 5, random.below(size.height + 10) - 5);
    };
    std::vector<PlainDoorway> doorways;
    for (int i = random.below(5); i > 0; --i) {
        const cv::Point first_jamb = somewhere();
        doorways.push_back({first_jamb, somewhere(), 10 + random.below(40), 0});
    }
    return doorways;
}

/// Whether something is still to be merged; what its label has become is in the written images.
void expectNothingLeftToMerge(const Regions& regions, const cv::Mat& floor,
                              const std::vector<PlainDoorway>& doorways,
                              const RoomsConfig& config) {
    const RoomGraph whole = wholeRoomGraph(regions);
    cv::Mat open = (regions.labels != 0) & (floor != 0);
    for (const PlainDoorway& doorway : doorways) {
        for (const cv::Point& pixel : floorIn(doorway, floor)) open.at<std::uint8_t>(pixel) = 0;
    }
    const cv::Mat distances = reference::squaredDistances(open);
    std::map<int, double> of_room;
    std::map<int, double> of_border;
    for (int row = 0; row < distances.rows; ++row) {
        for (int col = 0; col < distances.cols; ++col) {
            const double width = 0.1 * std::sqrt(distances.at<std::int32_t>(row, col));
            double& room = of_room[whole.labels.at<std::int32_t>(row, col)];
            room = std::max(room, width);
            double& border = of_border[whole.borders.at<std::int32_t>(row, col)];
            border = std::max(border, width);
        }
    }
    for (const auto& [edge, id] : whole.border_ids) {
        const double passage = of_border.at(id);
        const double room = std::max(of_room.at(edge.first), of_room.at(edge.second));
        const bool is_narrow = passage < config.narrow_passage - 1e-9;
        const double ratio = is_narrow ? config.narrow_ratio : config.open_ratio;
        EXPECT_LE(passage, ratio * room + 1e-9) << edge.first << " and " << edge.second;
    }
    for (const auto& [label, data] : whole.graph.nodes()) {
        if (whole.graph.getNeighbors(label).empty()) continue;
        EXPECT_GE(data.area, std::max(config.least_area, 1.0) - 1e-9);
        EXPECT_TRUE(data.area >= 5.0 - 1e-9 || of_room.at(label) >= 0.7 - 1e-9) << label;
    }
}

class MergeOpenPassagesInNoise : public ::testing::TestWithParam<int> {};

TEST_P(MergeOpenPassagesInNoise, GivesTheSameAsThePlainVersion) {
    int joined = 0;
    int kept = 0;
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        const int spacing = GetParam();
        const cv::Mat image = patches(random, someLabels(random, 25, spacing));
        Regions regions = separate(image);
        // Specks that regions hold, in every other image.
        cv::Mat floor = image != 0;
        if (seed % 2 == 0) floor &= random.bytes(image.size(), 200) != 0;
        const RoomsConfig config = someConfig(random);
        const std::vector<PlainDoorway> doorways = someDoorways(random, image.size());
        MergeState plain = stateOf(regions);
        const auto before = plain.graph.nodes.size();
        const test::RegionTotals totals = test::regionTotals(regionMap(regions), kLine);
        reference::mergeOpenPassages(plain, floor, doorways, config);
        mergeOpenPassages(regions, floor, asFound(doorways), config);
        expectSame(regions, plain);
        EXPECT_TRUE(test::isConsistent(regionMap(regions), kLine, totals));
        expectNothingLeftToMerge(regions, floor, doorways, config);
        joined += plain.graph.nodes.size() < before ? 1 : 0;
        kept += plain.graph.edges.empty() ? 0 : 1;
    }
    EXPECT_GE(joined, 20);
    EXPECT_GE(kept, 5);
}

TEST_P(MergeOpenPassagesInNoise, GivesEveryLabelOneRoom) {
    for (std::uint32_t seed = 101; seed <= 120; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        cv::Mat image = patches(random, someLabels(random, 25, GetParam()));
        const cv::Mat before = image.clone();
        Regions regions = separate(image);
        mergeOpenPassages(regions, image != 0, {}, someConfig(random));
        const LabelTable successors = successorsOf(regions);
        rename(image, successors);
        EXPECT_THAT(image != 0, MatEq(before != 0));
        std::map<std::int32_t, std::int32_t> room_of;
        for (int row = 0; row < image.rows; ++row) {
            for (int col = 0; col < image.cols; ++col) {
                const auto label = before.at<std::int32_t>(row, col);
                const auto room = image.at<std::int32_t>(row, col);
                EXPECT_EQ(room_of.emplace(label, room).first->second, room);
            }
        }
    }
}

TEST_P(MergeOpenPassagesInNoise, GivesTheSameOnASecondRun) {
    RandomImages random(7);
    const cv::Mat image = patches(random, someLabels(random, 25, GetParam()));
    std::vector<Regions> runs;
    for (int run = 0; run < 2; ++run) {
        runs.push_back(separate(image));
        mergeOpenPassages(runs.back(), image != 0, {}, {});
    }
    EXPECT_THAT(runs[1].table.labels, MatEq(runs[0].table.labels));
    EXPECT_THAT(runs[1].table.borders, MatEq(runs[0].table.borders));
    EXPECT_EQ(runs[1].table.border_ids, runs[0].table.border_ids);
    EXPECT_EQ(reference::regionGraph(runs[1].table.graph),
              reference::regionGraph(runs[0].table.graph));
}

// Labels in 8 bits, on both sides of the line's value, and far above 16 bits.
INSTANTIATE_TEST_SUITE_P(Spacings, MergeOpenPassagesInNoise, ::testing::Values(9, 40, 20011));

class PlansByPassages : public ::testing::TestWithParam<test::VariedPlan> {};

TEST_P(PlansByPassages, AreCleanedAndMergedAsByThePlainVersions) {
    const cv::Mat values = test::workingMap(test::makePlan(GetParam().options));
    Settings settings;
    const double threshold = settings.core.generate_denoised_alone.binary_make_binary.threshold;
    const cv::Mat cleaned = withoutClutter(values, threshold, settings.rooms);
    EXPECT_THAT(cleaned, MatEq(reference::withoutClutter(values, threshold, settings.rooms)));

    cv::Mat segmented;
    reference::segmentInRim(cleaned, settings.core).convertTo(segmented, CV_32S);
    const cv::Mat floor = cleaned <= threshold;
    const std::vector<PlainDoorway> doorways = reference::findDoorways(floor, settings.rooms);
    reference::splitAtDoorways(segmented, floor, doorways);
    for (const double ratio : {0.3, 0.5, 0.7}) {
        SCOPED_TRACE(ratio);
        settings.rooms.open_ratio = ratio;
        Regions regions = separate(segmented);
        MergeState plain = stateOf(regions);
        const test::RegionTotals totals = test::regionTotals(regionMap(regions), kLine);
        reference::mergeOpenPassages(plain, floor, doorways, settings.rooms);
        mergeOpenPassages(regions, floor, asFound(doorways), settings.rooms);
        expectSame(regions, plain);
        EXPECT_TRUE(test::isConsistent(regionMap(regions), kLine, totals));
        expectNothingLeftToMerge(regions, floor, doorways, settings.rooms);
    }
}

INSTANTIATE_TEST_SUITE_P(Generated, PlansByPassages, ::testing::ValuesIn(test::variedPlans()),
                         [](const auto& test) { return test.param.family; });

TEST(WithoutClutterInNoise, GivesTheSameAsThePlainVersion) {
    int taken_out = 0;
    int closed = 0;
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        const cv::Size size(40 + random.below(160), 40 + random.below(120));
        cv::Mat values(size, CV_32FC1, cv::Scalar(0.0));
        for (int part = random.below(60); part > 0; --part) {
            const cv::Point corner(random.below(size.width), random.below(size.height));
            const int length = 1 + random.below(50);
            const int thickness = 1 + random.below(14);
            const cv::Size bar =
                random.below(2) == 0 ? cv::Size(length, thickness) : cv::Size(thickness, length);
            const cv::Rect where = cv::Rect(corner, bar) & cv::Rect({0, 0}, size);
            values(where) = 0.25 * random.below(5);
        }
        RoomsConfig config;
        config.loose_part = 0.05 * random.below(50);
        config.loose_block = 0.05 * random.below(60);
        config.wall_line = 0.1 * random.below(11);
        config.closed_floor = 0.25 * random.below(20);
        const cv::Mat cleaned = withoutClutter(values, 0.5, config);
        EXPECT_THAT(cleaned, MatEq(reference::withoutClutter(values, 0.5, config)));
        taken_out += cv::countNonZero(cleaned < values) > 0 ? 1 : 0;
        closed += cv::countNonZero(cleaned > values) > 0 ? 1 : 0;
    }
    EXPECT_GE(taken_out, 50);
    EXPECT_GE(closed, 10);
}

}  // namespace
}  // namespace vorund::rooms
