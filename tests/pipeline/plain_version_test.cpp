// The pipeline gives the same bytes as its plain version.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>

#include "reference/floorplan_segmenter.h"
#include "support/captures.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/varied_plans.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund::test {
namespace {

/// What a run gives: labels, or the message of its error.
struct Outcome {
    cv::Mat labels;
    std::string error;
};

Outcome outcomeOf(const std::function<cv::Mat()>& run) {
    try {
        return {run(), ""};
    } catch (const std::runtime_error& error) {
        return {{}, error.what()};
    }
}

Outcome segmented(const cv::Mat& map, const Config& config) {
    return outcomeOf(
        [&] { return FloorplanSegmenter(config, Debugger::create({})).doSegment(map); });
}

Outcome plainlySegmented(const cv::Mat& map, const Config& config) {
    return outcomeOf([&] { return reference::doSegment(map, config); });
}

/// The rooms among the labels.
std::set<int> roomsIn(const cv::Mat& labels) {
    std::set<int> rooms;
    for (const std::uint8_t label : cv::Mat_<std::uint8_t>(labels)) rooms.insert(label);
    rooms.erase(0);
    rooms.erase(255);
    return rooms;
}

using PlanAndConfig = std::tuple<VariedPlan, NamedConfig>;

std::string nameOf(const ::testing::TestParamInfo<PlanAndConfig>& info) {
    return std::get<0>(info.param).family + "_" + std::get<1>(info.param).name;
}

class PlainPipelineOnPlans : public ::testing::TestWithParam<PlanAndConfig> {
 protected:
    ConsoleCapture console_;
    PlainCapture plain_;
};

TEST_P(PlainPipelineOnPlans, GivesTheSameBytes) {
    const auto& [plan, settings] = GetParam();
    const cv::Mat map = workingMap(makePlan(plan.options));
    const Outcome expected = plainlySegmented(map, settings.config);
    ASSERT_EQ(expected.error, "");
    EXPECT_FALSE(roomsIn(expected.labels).empty());
    EXPECT_THAT(segmented(map, settings.config).labels, MatEq(expected.labels));
}

INSTANTIATE_TEST_SUITE_P(Generated, PlainPipelineOnPlans,
                         ::testing::Combine(::testing::ValuesIn(variedPlans()),
                                            ::testing::ValuesIn(variedConfigs())),
                         nameOf);

/// Blocks of random grey, walls and floor, on which anything may go wrong.
cv::Mat noiseMap(RandomImages& random) {
    const int side = 1 + random.below(4);
    const cv::Size blocks(3 + random.below(40 / side), 3 + random.below(40 / side));
    const int levels = 2 + random.below(3);
    cv::Mat small = random.floats(blocks, levels);
    // Between nearly all floor and nearly all wall.
    small.setTo(0.0, random.bytes(blocks, 8) < random.below(8));
    cv::Mat map(blocks.height * side, blocks.width * side, CV_32FC1);
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            map.at<float>(row, col) = small.at<float>(row / side, col / side);
        }
    }
    return map;
}

Config noiseConfig(RandomImages& random) {
    Config config;
    Config::GenerateDenoisedAloneConfig& denoise = config.generate_denoised_alone;
    for (auto* const components : {&denoise.components_in_remove_small_connected_components,
                                   &denoise.components_out_remove_small_connected_components}) {
        components->min_size = random.below(3) * random.below(12);
        components->connectivity = random.below(2) == 0 ? 4 : 8;
        if (random.below(4) == 0) components->method = random.below(2) == 0 ? "mean" : "median";
    }
    denoise.binary_make_binary.threshold = 0.1 + 0.3 * random.below(3);
    denoise.crop_single_info.padding = random.below(6);
    config.dilate_binary = {1 + 2 * random.below(2), random.below(3)};
    config.compute_labels_list.sigma_start = 0.3 + 0.2 * random.below(4);
    config.compute_labels_list.sigma_step = 0.25 + 0.25 * random.below(3);
    config.compute_labels_list.max_iter = random.below(10) == 0 ? random.below(3) : 60;
    config.compute_labels_list.generate_gaussian_seeds_skimage.threshold =
        0.05 + 0.1 * random.below(4);
    config.over_segment.generate_map_initial_seeds.filter_threshold = random.below(3);
    config.over_segment.generate_map_initial_seeds.method = std::array<const char*, 4>{
        "start", "end", "middle", "weighted"}[static_cast<std::size_t>(random.below(4))];
    config.over_segment.create_watershed_segment_skimage.connectivity =
        random.below(2) == 0 ? 4 : 8;
    return config;
}

TEST(PlainPipeline, GivesTheSameBytesOrErrorsOnNoise) {
    const ConsoleCapture console;
    const PlainCapture plain;
    std::set<std::string> errors;
    int with_several_rooms = 0;
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        RandomImages random(seed);
        const cv::Mat map = noiseMap(random);
        const Config config = noiseConfig(random);
        const Outcome expected = plainlySegmented(map, config);
        const Outcome actual = segmented(map, config);
        ASSERT_EQ(actual.error, expected.error);
        ASSERT_THAT(actual.labels, MatEq(expected.labels));
        errors.insert(expected.error);
        if (expected.error.empty() && roomsIn(expected.labels).size() > 1) ++with_several_rooms;
    }
    // Most maps are divided, and some fail in one way or another.
    EXPECT_GE(with_several_rooms, 50);
    EXPECT_GE(errors.size(), 3U);
}

TEST(PlainPipeline, GivesTheSameBytesWhereEightBitsDoNotHoldTheSeeds) {
    const ConsoleCapture console;
    const PlainCapture plain;
    // 17 x 16 closed cells.
    cv::Mat cell(14, 14, CV_32FC1, cv::Scalar(1.0));
    cell(cv::Rect(2, 2, 11, 11)) = 0.0;
    cv::Mat map;
    cv::repeat(cell, 16, 17, map);
    Config config;
    config.dilate_binary.iterations = 1;
    config.compute_labels_list.generate_gaussian_seeds_skimage.threshold = 0.04;
    const Outcome expected = plainlySegmented(map, config);
    ASSERT_EQ(expected.error, "");
    EXPECT_LT(roomsIn(expected.labels).size(), 17U * 16U);
    EXPECT_THAT(segmented(map, config).labels, MatEq(expected.labels));
}

}  // namespace
}  // namespace vorund::test
