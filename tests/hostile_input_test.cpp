// Settings and images that no sane caller passes: an error that names the cause, never a crash.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <opencv2/core.hpp>
#include <stdexcept>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/vorund.h"
#include "vorund/yaml_value.h"

namespace vorund {
namespace {

using test::labels;
using test::labels32;
using test::MatEq;
using test::values;
using ::testing::ElementsAre;
using ::testing::ThrowsMessage;

constexpr int kLargest = std::numeric_limits<int>::max();
constexpr int kSmallest = std::numeric_limits<int>::min();

TEST(CropSingleInfo, TakesAnyPadding) {
    const cv::Mat map = values("1 1 1\n1 0 1\n1 1 1");
    for (const int padding : {-2'000'000'000, kSmallest}) {
        const CropInfo crop = ImageUtils::cropSingleInfo(map, padding);
        EXPECT_THAT([&] { ImageUtils::cropBackground(map, crop); },
                    ThrowsMessage<std::runtime_error>("cropBackground leads to an empty image."));
    }
    const CropInfo whole = ImageUtils::cropSingleInfo(map, kLargest);
    EXPECT_EQ(ImageUtils::cropBackground(map, whole).size(), map.size());
}

TEST(CropBackground, RefusesMarginsThatReachBeyondTheImage) {
    const cv::Mat map = values("1 1 1");
    EXPECT_THROW(ImageUtils::cropBackground(map, {-1, 0, 0, 0}), cv::Exception);
    EXPECT_THROW(ImageUtils::cropBackground(map, {2'000'000'003, 0, -2'000'000'001, 0}),
                 cv::Exception);
}

TEST(UncropBackground, DoesNotTakeAHugeImageForAnEmptyOne) {
    EXPECT_THROW(ImageUtils::uncropBackground(values("1"), {kLargest, 0, 10, 0}, cv::Scalar(0)),
                 cv::Exception);
    EXPECT_THROW(ImageUtils::uncropBackground(values("1"), {0, kLargest, 0, 10}, cv::Scalar(0)),
                 cv::Exception);
}

TEST(RemoveSmallConnectedComponents, RejectsAnImageWithoutRowsOrColumns) {
    for (const cv::Size size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)}) {
        EXPECT_THAT(
            [&] { ImageUtils::removeSmallConnectedComponents(cv::Mat(size, CV_32FC1), {}); },
            ThrowsMessage<std::runtime_error>(
                "removeSmallConnectedComponents expects a non-empty image."));
    }
}

class Commas : public std::numpunct<char> {
 protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(GetYamlValue, ReadsNumbersAlikeInEveryLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    const double number = getYamlValue(YAML::Load("1.25"), 0.0);
    const auto numbers = getYamlValue(YAML::Load("[0.5, 1e-3, .inf]"), std::vector<double>());
    const double word = getYamlValue(YAML::Load("1.25 m"), 7.0);
    std::locale::global(before);
    EXPECT_EQ(number, 1.25);
    EXPECT_THAT(numbers, ElementsAre(0.5, 1e-3, std::numeric_limits<double>::infinity()));
    EXPECT_EQ(word, 7.0);
}

TEST(RidgeMap, RejectsAScaleThatNoImageHolds) {
    for (const double sigma : {std::numeric_limits<double>::infinity(), 1e9, 1e300,
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_THAT(
            [&] {
                RidgeFilter::generateRidgeMapMeijering(values("0 1"), {"reflect", {sigma}});
            },
            ThrowsMessage<std::runtime_error>(
                "getGaussianKernel1D: sigma must be a number of at most 125000."));
    }
}

TEST(GaussianSeeds, RefuseAMaskThatDoesNotCoverTheMap) {
    const cv::Mat map = values("0 0\n0 0");
    for (const cv::Mat& mask : {cv::Mat(), labels("0 0")}) {
        EXPECT_THROW(WatershedSegmenter::generateGaussianSeedsSkimage(map, mask, 1.0, {}, nullptr),
                     cv::Exception);
    }
}

TEST(Watershed, RefusesMarkersThatDoNotFitTheImage) {
    const cv::Mat cost = values("0 0 0");
    for (cv::Mat markers : {labels32("1 0"), labels("1 0 0"), cv::Mat()}) {
        EXPECT_THAT(
            [&] { WatershedSegmenter::executeSkimageWatershed(cost, markers, 4, true); },
            ThrowsMessage<std::runtime_error>(
                "executeSkimageWatershed: Markers must be CV_32S and of the image's size."));
    }
}

TEST(Watershed, TakesEveryLabelOfASeedMap) {
    cv::Mat markers(16, 16, CV_32SC1);
    for (int i = 0; i < 256; ++i) markers.at<std::int32_t>(i / 16, i % 16) = i;
    const cv::Mat cost = cv::Mat::zeros(markers.size(), CV_32FC1);
    EXPECT_NO_THROW(WatershedSegmenter::createWatershedSegmentSkimage(cost, markers, {4}));
}

TEST(FindConsistentGlobalLabels, RefusesSeedMapsThatDoNotFitEachOther) {
    for (const cv::Mat& first : {cv::Mat(), labels("1"), labels32("1 1")}) {
        EXPECT_THAT(
            [&] {
                OverSegmentProcessor::findConsistentGlobalLabels({1, 2}, {first, labels("1 1")},
                                                                 nullptr);
            },
            ThrowsMessage<std::runtime_error>("findConsistentGlobalLabels: Seed maps must be "
                                              "CV_8UC1 and of equal size."));
    }
}

TEST(SuperposeMapInitialSeeds, TakesAMaskOfAnotherSizeWhereItCoversTheMap) {
    const cv::Mat markers = OverSegmentProcessor::superposeMapInitialSeeds(
        {{1, cv::Mat()}, {2, labels("1")}, {3, labels("1 1 1\n1 1 1")}}, {labels("9 9\n9 9")},
        nullptr);
    EXPECT_THAT(markers, MatEq(labels32("2 3\n3 3")));
}

class OverSegmentLists : public ::testing::Test {
 protected:
    FloorplanSegmenter segmenter_{Config(), Debugger::create({})};
    cv::Mat seeds_ = labels("255 1");
};

TEST_F(OverSegmentLists, MustHaveTheSameLength) {
    EXPECT_THAT(
        [&] {
            segmenter_.overSegment(values("0 0"), {{1, 2}, {seeds_, seeds_}, {1}, {}}, {});
        },
        ThrowsMessage<std::runtime_error>(
            "overSegment: labels_list and ncc_list have different lengths."));
    EXPECT_THAT(seeds_, MatEq(labels("255 1")));
}

TEST_F(OverSegmentLists, MustHoldBytes) {
    const cv::Mat wide = labels32("255 1");
    EXPECT_THAT(
        [&] {
            segmenter_.overSegment(values("0 0"), {{1, 2}, {seeds_, wide}, {1, 1}, {}}, {});
        },
        ThrowsMessage<std::runtime_error>("overSegment: Labels must be CV_8UC1."));
    EXPECT_THAT(wide, MatEq(labels32("255 1")));
    EXPECT_THAT(seeds_, MatEq(labels("255 1")));
}

TEST(ConfigWeights, LeaveOutANameWithoutAValue) {
    const test::TempDir folder;
    const test::ConsoleCapture console;
    Config config;
    EXPECT_TRUE(config.loadFromYaml(folder.write(
        "c.yaml", "over_segment:\n  generate_map_initial_seeds:\n    weights: {middle: ~}\n")));
    EXPECT_EQ(config.over_segment.generate_map_initial_seeds.weights,
              Config().over_segment.generate_map_initial_seeds.weights);
}

}  // namespace
}  // namespace vorund
