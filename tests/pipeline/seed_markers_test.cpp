#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <string>

#include "support/captures.h"
#include "support/drawn_plans.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/over_segment_processor.h"

namespace vorund {
namespace {

using test::MatEq;

class SeedMarkers : public ::testing::Test {
 protected:
    FloorplanSegmenter segmenter() const { return {Config(), Debugger::create({})}; }

    test::ConsoleCapture console_;
    test::PlainCapture plain_;
};

/// Background 255 becomes 0, and what is no seed a label above all others.
void numberBackground(cv::Mat& seed_map, int ncc) {
    for (std::uint8_t& label : cv::Mat_<std::uint8_t>(seed_map)) {
        if (label == 0) {
            label = static_cast<std::uint8_t>(ncc + 1);
        } else if (label == 255) {
            label = 0;
        }
    }
}

/// By the functions for images of 8 bits.
cv::Mat markersOf(FloorplanSegmenter segmenter, const cv::Mat& denoised) {
    const Config config;
    const cv::Mat dilated = ImageUtils::dilateBinary(denoised, config.dilate_binary.kernel_size,
                                                     config.dilate_binary.iterations);
    LabelsListResult scales =
        segmenter.computeLabelsList(dilated, denoised, config.compute_labels_list);
    for (std::size_t i = 0; i < scales.labels_list.size(); ++i) {
        numberBackground(scales.labels_list[i], scales.ncc_list[i]);
    }
    const auto mappers = OverSegmentProcessor::findConsistentGlobalLabels(
        scales.sigma_list, scales.labels_list, nullptr);
    const auto seeds = OverSegmentProcessor::generateMapInitialSeeds(
        OverSegmentProcessor::findLifespans(mappers, nullptr), mappers, scales.labels_list,
        config.over_segment.generate_map_initial_seeds, nullptr);
    return OverSegmentProcessor::superposeMapInitialSeeds(seeds, scales.labels_list, nullptr);
}

TEST_F(SeedMarkers, AreThoseOfTheFunctionsFor8Bits) {
    for (const int seed : {1, 2, 3}) {
        test::PlanOptions options;
        options.seed = static_cast<std::uint64_t>(seed);
        options.furniture_percent = 30 * (seed - 1);
        cv::Mat walls;
        cv::Mat(test::makePlan(options).map != test::kMapFree).convertTo(walls, CV_32F, 1 / 255.0);
        EXPECT_THAT(segmenter().findSeedMarkers(walls), MatEq(markersOf(segmenter(), walls)));
    }
}

TEST_F(SeedMarkers, TellAnyNumberOfRoomsApart) {
    constexpr int kSide = 18;
    const cv::Mat walls = test::gridOfRooms(kSide);
    const cv::Mat markers = segmenter().findSeedMarkers(walls);
    EXPECT_EQ(cv::countNonZero((markers == 255) != (walls == 1.0)), 0)
        << "255 is wall, and no seed";
    std::map<int, int> room_of;
    for (int room = 0; room < kSide * kSide; ++room) {
        const cv::Point middle(30 + room % kSide * 44, 30 + room / kSide * 44);
        const int seed = markers.at<std::int32_t>(middle);
        EXPECT_GT(seed, 0);
        EXPECT_EQ(room_of.emplace(seed, room).first->second, room);
    }
    EXPECT_EQ(room_of.size(), static_cast<std::size_t>(kSide * kSide));
}

TEST_F(SeedMarkers, AreNotFoundAgainstTheObserver) {
    int calls = 0;
    EXPECT_THROW(segmenter().findSeedMarkers(test::twoRooms().map,
                                             [&](const std::string& stage, int, int) {
                                                 EXPECT_EQ(stage, kStageScales);
                                                 return ++calls < 4;
                                             }),
                 Cancelled);
    EXPECT_EQ(calls, 4);
}

}  // namespace
}  // namespace vorund
