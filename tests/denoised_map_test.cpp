// The first stage of the pipeline, and what it shares with `ImageUtils`, against the plain version.

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

#include "reference/denoised_map.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"
#include "support/random_images.h"
#include "vorund/vorund.h"

namespace vorund::test {
namespace {

using ::testing::ElementsAre;

using RemoveConfig = Config::RemoveSmallConnectedComponentsConfig;

std::vector<int> membersOf(const CropInfo& crop) {
    return {crop.left, crop.top, crop.right, crop.bottom};
}

std::string thresholdLine(double threshold) {
    std::ostringstream line;
    line << "removeSmallConnectedComponents: threshold_area: " << threshold;
    return line.str();
}

/// Rectangles of 255 on 0, wide enough for whole words of one value, with specks on top.
cv::Mat blocks(RandomImages& random, const cv::Size& size) {
    cv::Mat image = random.patches(size, 8, 0) > 0;
    image.setTo(0, random.patches(size, 5, 0) > 0);
    cv::Mat specks = random.bytes(size, 60) == 0;
    cv::bitwise_xor(image, specks, image);
    return image;
}

cv::Size wideSize(RandomImages& random) {
    const int rows = 1 + random.below(30);
    return cv::Size(1 + random.below(120), rows);
}

TEST(RemoveSmallConnectedComponents, AgreesWithThePlainVersionOnWideMaps) {
    RandomImages random(81);
    for (int run = 0; run < 400; ++run) {
        const PlainCapture plain;
        cv::Mat image = blocks(random, wideSize(random));
        image.at<std::uint8_t>(0, 0) = 255;
        if (run % 2 == 0) image.convertTo(image, CV_32F, 1.0 / 255.0);
        const std::string method = run % 3 == 0 ? "fixed" : run % 3 == 1 ? "mean" : "median";
        const RemoveConfig config{method, run % 4 < 2 ? 4 : 8, 1 + random.below(50)};
        double threshold = 0.0;
        const cv::Mat expected = reference::largeRegions(image, config, threshold);
        ASSERT_THAT(ImageUtils::removeSmallConnectedComponents(image, config), MatEq(expected))
            << "run " << run;
        ASSERT_THAT(ImageUtils::removeSmallConnectedComponents(asView(image), config),
                    MatEq(expected))
            << "run " << run;
        EXPECT_THAT(plain.lines(), ElementsAre(thresholdLine(threshold), thresholdLine(threshold)));
    }
}

TEST(CropSingleInfo, AgreesWithThePlainVersionOnWideMaps) {
    RandomImages random(82);
    for (int run = 0; run < 400; ++run) {
        const cv::Size size = wideSize(random);
        if (size.area() < 2) continue;
        cv::Mat image(size, CV_32FC1, cv::Scalar(run % 2));
        for (int speck = 1 + random.below(4); speck > 0; --speck) {
            image.at<float>(random.below(size.height), random.below(size.width)) = 0.5F;
        }
        image.at<float>(0, 0) = static_cast<float>(run % 2);
        image.at<float>(size.height - 1 - random.below(1 + size.height / 3), size.width - 1) = 0.4F;
        if (size.width == 1) continue;
        EXPECT_EQ(membersOf(ImageUtils::cropSingleInfo(image, 0)),
                  membersOf(reference::contentMargins(image)))
            << "run " << run;
        EXPECT_EQ(membersOf(ImageUtils::cropSingleInfo(asView(image), 0)),
                  membersOf(reference::contentMargins(image)))
            << "run " << run;
    }
}

void expectAgreement(const cv::Mat& raw, const Config::GenerateDenoisedAloneConfig& config,
                     const std::string& what) {
    const PlainCapture plain;
    const ConsoleCapture console;
    FloorplanSegmenter segmenter(Config(), Debugger::create({}));
    const cv::Mat original = raw.clone();
    const auto [map, crop] = segmenter.generateDenoisedAlone(raw, config);
    const reference::DenoisedMap expected = reference::denoisedMap(raw, config);
    ASSERT_THAT(map, MatEq(expected.map)) << what;
    ASSERT_EQ(membersOf(crop), membersOf(expected.crop)) << what;
    ASSERT_THAT(raw, MatEq(original)) << what;
    ASSERT_THAT(plain.lines(), ElementsAre(thresholdLine(expected.thresholds[0]),
                                           thresholdLine(expected.thresholds[1])))
        << what;
    ASSERT_THAT(console.lines(), ::testing::SizeIs(1)) << what;
}

TEST(DenoisedMap, AgreesWithThePlainVersionOnRandomMaps) {
    RandomImages random(83);
    for (int run = 0; run < 300; ++run) {
        const cv::Size size(20 + random.below(80), 12 + random.below(30));
        cv::Mat raw;
        blocks(random, size).convertTo(raw, CV_32F, 1.0 / 255.0);
        raw -= random.floats(size, 9) * 0.2;
        // Floor and wall of their own, so that there is always a region of either.
        raw(cv::Rect(0, 0, size.width, 2)) = 1.0;
        raw(cv::Rect(2, 5, 6, 3)) = 0.0;
        Config::GenerateDenoisedAloneConfig config = Config().generate_denoised_alone;
        config.crop_single_info.padding = 0;
        config.binary_for_crop_make_binary.threshold = 0.1 * random.below(4);
        config.binary_make_binary.threshold = 0.1 * random.below(4);
        config.components_out_remove_small_connected_components = {"fixed", 4, 1 + run % 18};
        config.components_in_remove_small_connected_components = {run % 2 == 0 ? "mean" : "median",
                                                                  8, 3};
        ASSERT_NO_FATAL_FAILURE(expectAgreement(raw, config, "run " + std::to_string(run)));
    }
}

TEST(DenoisedMap, TakesAMapValueForWallOnlyAboveTheRoundedThreshold) {
    // 0.1 in single precision is above 0.1 in double precision, and not above itself.
    cv::Mat raw(6, 12, CV_32FC1, cv::Scalar(1.0));
    raw(cv::Rect(2, 2, 3, 2)) = 0.1;
    raw(cv::Rect(7, 2, 3, 2)) = 0.0;
    Config::GenerateDenoisedAloneConfig config = Config().generate_denoised_alone;
    config.crop_single_info.padding = 0;
    config.components_out_remove_small_connected_components.min_size = 1;
    config.components_in_remove_small_connected_components.min_size = 1;
    const PlainCapture plain;
    FloorplanSegmenter segmenter(Config(), Debugger::create({}));
    EXPECT_THAT(segmenter.generateDenoisedAlone(raw, config).first,
                MatEq(values(". . . 1 1 . . .\n"
                             ". . . 1 1 . . .")));
}

TEST(DenoisedMap, AgreesWithThePlainVersionOnGeneratedPlans) {
    for (const std::uint64_t seed : {21U, 22U}) {
        PlanOptions options;
        options.seed = seed;
        options.noise_percent = 40;
        options.furniture_percent = 40;
        cv::Mat raw;
        makePlan(options).map.convertTo(raw, CV_32F, -1.0 / 255.0, 1.0);
        Config::GenerateDenoisedAloneConfig config = Config().generate_denoised_alone;
        config.crop_single_info.padding = 0;
        ASSERT_NO_FATAL_FAILURE(expectAgreement(raw, config, "seed " + std::to_string(seed)));
    }
}

}  // namespace
}  // namespace vorund::test
