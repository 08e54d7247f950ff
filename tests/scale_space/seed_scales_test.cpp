#include "scale_space/seed_scales.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "scale_space/binary_maps.h"
#include "scale_space/blurred_threshold.h"
#include "support/captures.h"
#include "support/mat_matchers.h"
#include "vorund/over_segment_processor.h"
#include "vorund/vorund.h"

namespace vorund::internal {
namespace {

using test::MatEq;

/// What tracking and superposition give, with all that they say on the way.
struct Outcome {
    std::string text;
    std::string error;
    std::vector<LabelMap> mappers;
    cv::Mat markers;
};

template <class Track>
Outcome outcomeOf(const Track& track) {
    Outcome outcome;
    test::PlainCapture plain;
    try {
        track(outcome);
    } catch (const std::runtime_error& error) {
        outcome.error = error.what();
    }
    outcome.text = plain.text();
    return outcome;
}

/// By way of seed maps, as `overSegment` numbers them.
Outcome fromSeedMaps(const SeedScales& seeds, const Config::GenerateMapInitialSeedsConfig& config) {
    return outcomeOf([&](Outcome& outcome) {
        std::vector<double> sigmas;
        std::vector<cv::Mat> maps;
        for (std::size_t i = 0; i < seeds.scales().size(); ++i) {
            cv::Mat map = seeds.seedMap(i);
            const cv::Mat rest = map == 0;
            map.setTo(0, map == 255);
            map.setTo(seeds.scales()[i].components.count + 1, rest);
            sigmas.push_back(seeds.scales()[i].sigma);
            maps.push_back(map);
        }
        using Processor = OverSegmentProcessor;
        outcome.mappers = Processor::findConsistentGlobalLabels(sigmas, maps, nullptr);
        const auto lifespans = Processor::findLifespans(outcome.mappers, nullptr);
        const auto masks =
            Processor::generateMapInitialSeeds(lifespans, outcome.mappers, maps, config, nullptr);
        outcome.markers = Processor::superposeMapInitialSeeds(masks, maps, nullptr);
    });
}

Outcome fromRuns(const SeedScales& seeds, const Config::GenerateMapInitialSeedsConfig& config) {
    return outcomeOf([&](Outcome& outcome) {
        outcome.mappers = seeds.findConsistentGlobalLabels();
        const auto lifespans = OverSegmentProcessor::findLifespans(outcome.mappers, nullptr);
        outcome.markers = seeds.superpose(chooseSeeds(lifespans, outcome.mappers, config));
    });
}

void expectSameOutcome(const SeedScales& seeds, const char* method, int filter_threshold) {
    Config::GenerateMapInitialSeedsConfig config;
    config.method = method;
    config.filter_threshold = filter_threshold;
    const Outcome runs = fromRuns(seeds, config);
    const Outcome maps = fromSeedMaps(seeds, config);
    EXPECT_EQ(runs.error, maps.error);
    EXPECT_EQ(runs.text, maps.text);
    EXPECT_EQ(runs.mappers, maps.mappers);
    EXPECT_THAT(runs.markers, MatEq(maps.markers));
}

SeedScales seedsOf(const cv::Mat& walls, const cv::Mat& background, double threshold, double step,
                   int most) {
    SeedScales seeds(background);
    BlurredThreshold blurred(walls, threshold);
    double sigma = 1.0;
    for (int i = 0; i < most; ++i, sigma += step) {
        seeds.add(sigma, blurred.atMostThreshold(sigma));
        if (seeds.scales().back().components.count == 0) break;
    }
    return seeds;
}

TEST(SeedScales, AreTrackedAsTheirSeedMapsAre) {
    for (const test::BinaryMap& map : test::binaryMaps()) {
        SCOPED_TRACE(map.name);
        const cv::Mat background = map.walls != 0.0;
        const SeedScales seeds = seedsOf(map.walls, background, 0.04, 1.0, 60);
        if (seeds.scales().front().components.count > 254) continue;
        expectSameOutcome(seeds, "start", 0);
        expectSameOutcome(seeds, "middle", 1);
        expectSameOutcome(seeds, "end", 2);
    }
}

TEST(SeedScales, OfMapsWithoutARestOrWithHiddenSeedsAreTrackedAsTheirSeedMapsAre) {
    test::RandomImages random(12);
    for (int i = 0; i < 150; ++i) {
        const cv::Size size(2 + random.below(60), 2 + random.below(60));
        const cv::Mat walls = test::randomPatches(random, size);
        // A background of its own: it may hide seeds, or leave no pixel beside them, or be nothing.
        cv::Mat background = test::randomPatches(random, size) != 0.0;
        if (i % 5 == 0) background.setTo(0);
        const SeedScales seeds =
            seedsOf(walls, background, 0.02 + 0.01 * random.below(10), 1.7, 3 + random.below(12));
        SCOPED_TRACE(i);
        expectSameOutcome(seeds, "start", i % 3);
    }
}

TEST(SeedScales, RefuseASingleScaleAndASeriesThatDoesNotEnd) {
    const cv::Mat walls = test::wallsOfPlan(1, 0, 0, 0);
    const cv::Mat background = walls != 0.0;
    const auto error = [&](int most) {
        test::PlainCapture plain;
        return fromRuns(seedsOf(walls, background, 0.04, 1.0, most), {}).error;
    };
    EXPECT_EQ(error(1), "findConsistentGlobalLabels: labels_map_list_in.size() == 1");
    EXPECT_EQ(error(6), "findConsistentGlobalLabels: last_frame_labels.size() > 2");
}

/// The label image with pictures switched on, which takes the way over seed maps, and without.
void expectSameRooms(const cv::Mat& map, const Config& config) {
    test::PlainCapture plain;
    const test::TempDir folder;
    DebuggerConfig drawing;
    drawing.save_images = true;
    drawing.output_dir = folder.path();
    const auto rooms = [&](const DebuggerConfig& debugger) {
        return FloorplanSegmenter(config, Debugger::create(debugger)).doSegment(map);
    };
    EXPECT_THAT(rooms({}), MatEq(rooms(drawing)));
}

TEST(DoSegment, GivesTheSameRoomsWithAndWithoutPictures) {
    Config config;
    expectSameRooms(test::wallsOfPlan(5, 0, 0, 0), config);
    config.dilate_binary.iterations = 4;
    config.compute_labels_list.generate_gaussian_seeds_skimage.threshold = 0.01;
    config.over_segment.generate_map_initial_seeds.filter_threshold = 0;
    expectSameRooms(test::wallsOfPlan(6, 40, 20, 33), config);
}

TEST(DoSegment, GivesTheSameRoomsWithoutPicturesWhereEightBitsOverflow) {
    // 16 x 17 closed cells: more seeds than labels.
    cv::Mat map(17 * 24 + 12, 16 * 24 + 12, CV_32FC1, cv::Scalar(1.0));
    for (int row = 0; row < 17; ++row) {
        for (int col = 0; col < 16; ++col) map(cv::Rect(8 + 24 * col, 8 + 24 * row, 20, 20)) = 0.0F;
    }
    Config config;
    config.compute_labels_list.sigma_step = 2.0;
    expectSameRooms(map, config);
}

}  // namespace
}  // namespace vorund::internal
