#include "vorund/watershed_segmenter.h"

#include <gmock/gmock.h>

#include <memory>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "reference/watershed_segmenter.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/pictures.h"
#include "support/random_images.h"

namespace vorund::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

// So narrow that the blur changes nothing, and seeds can be drawn.
constexpr double kNoBlur = 0.1;

GaussianSeedsResult seeds(const cv::Mat& image, const cv::Mat& mask, double sigma, double threshold,
                          const std::shared_ptr<Debugger>& debugger = nullptr) {
    Config::GenerateGaussianSeedsSkimageConfig config;
    config.threshold = threshold;
    return WatershedSegmenter::generateGaussianSeedsSkimage(image, mask, sigma, config, debugger);
}

cv::Mat noMask(const cv::Mat& image) {
    return cv::Mat::zeros(image.size(), CV_8UC1);
}

TEST(GenerateGaussianSeeds, NumbersTheRegionsInRasterOrderOfTheirFirstPixels) {
    const cv::Mat map = values(
        "1 1 . 1 . 1\n"
        ". 1 . 1 . 1\n"
        ". 1 . . . 1\n"
        "1 1 1 1 1 .");
    const auto result = seeds(map, noMask(map), kNoBlur, 0.5);
    EXPECT_THAT(result.labels, MatEq(labels(". . 1 . 1 .\n"
                                            "2 . 1 . 1 .\n"
                                            "2 . 1 1 1 .\n"
                                            ". . . . . 3")));
    EXPECT_EQ(result.ncc, 3);
}

TEST(GenerateGaussianSeeds, TakesTwoValleysThatTouchDiagonallyForTwo) {
    const cv::Mat map = values(
        ". 1\n"
        "1 .");
    const auto result = seeds(map, noMask(map), kNoBlur, 0.5);
    EXPECT_THAT(result.labels, MatEq(labels("1 .\n"
                                            ". 2")));
    EXPECT_EQ(result.ncc, 2);
}

TEST(GenerateGaussianSeeds, GivesOnlyTheMaskIfAllValuesExceedTheThreshold) {
    const cv::Mat map(3, 4, CV_32FC1, cv::Scalar(1.0));
    const auto result = seeds(map,
                              labels("1 . . .\n"
                                     ". . . .\n"
                                     ". . 9 255"),
                              2.0, 0.04);
    EXPECT_THAT(result.labels, MatEq(labels("255 . . .\n"
                                            ". . . .\n"
                                            ". . 255 255")));
    EXPECT_EQ(result.ncc, 0);
}

TEST(GenerateGaussianSeeds, GivesOneSeedIfNoValueExceedsTheThreshold) {
    const cv::Mat map = cv::Mat::zeros(3, 4, CV_32FC1);
    const auto result = seeds(map,
                              labels(". . 1 .\n"
                                     ". . . .\n"
                                     ". . . 1"),
                              2.0, 0.04);
    EXPECT_THAT(result.labels, MatEq(labels("1 1 255 1\n"
                                            "1 1 1 1\n"
                                            "1 1 1 255")));
    EXPECT_EQ(result.ncc, 1);
}

TEST(GenerateGaussianSeeds, CountsAValueAtTheThresholdAsSeed) {
    const cv::Mat map = values("0.5 1 0.25 1 0.75");
    EXPECT_THAT(seeds(map, noMask(map), kNoBlur, 0.5).labels, MatEq(labels("1 . 2 . .")));
    EXPECT_THAT(seeds(map, noMask(map), kNoBlur, 0.4999).labels, MatEq(labels(". . 1 . .")));
}

TEST(GenerateGaussianSeeds, CountsARegionThatTheMaskCoversAndLeavesItsNumberOut) {
    const cv::Mat map = values(". 1 . 1 .");
    const auto result = seeds(map, labels(". . 1 . ."), kNoBlur, 0.5);
    EXPECT_THAT(result.labels, MatEq(labels("1 . 255 . 3")));
    EXPECT_EQ(result.ncc, 3);
}

TEST(GenerateGaussianSeeds, Gives255ToEverySeedFromThe255thOn) {
    cv::Mat map(1, 600, CV_32FC1, cv::Scalar(1.0));
    cv::Mat expected = cv::Mat::zeros(1, 600, CV_8UC1);
    for (int seed = 1; seed <= 300; ++seed) {
        map.at<float>(0, 2 * seed - 1) = 0.0F;
        expected.at<uchar>(0, 2 * seed - 1) = static_cast<uchar>(seed < 255 ? seed : 255);
    }
    const auto result = seeds(map, noMask(map), kNoBlur, 0.5);
    EXPECT_THAT(result.labels, MatEq(expected));
    EXPECT_EQ(result.ncc, 300);
}

TEST(GenerateGaussianSeeds, BlursAsIfTheEdgePixelsWereRepeated) {
    // Floor of four pixels up to the left edge, then wall. With sigma 2 the wall adds 0.039 to the
    // first pixel; had the map been mirrored at its edge, the wall would add that twice.
    cv::Mat map(9, 12, CV_32FC1, cv::Scalar(1.0));
    map.colRange(0, 4) = 0.0;
    cv::Mat expected = cv::Mat::zeros(9, 12, CV_8UC1);
    expected.col(0) = 1;
    EXPECT_THAT(seeds(map, noMask(map), 2.0, 0.05).labels, MatEq(expected));
    // And no floor comes in from outside: a wall at the edge stays as high as it is.
    const cv::Mat wall(9, 12, CV_32FC1, cv::Scalar(1.0));
    EXPECT_EQ(seeds(wall, noMask(wall), 2.0, 0.99).ncc, 0);
}

TEST(GenerateGaussianSeeds, RejectsAMapThatIsNotFloat) {
    const std::string message =
        "Unsupported image type for makeBinary. Must be CV_32F or CV_32FC1.";
    const cv::Mat mask = cv::Mat::zeros(3, 3, CV_8UC1);
    for (const int type : {CV_8UC1, CV_64FC1, CV_32FC3}) {
        EXPECT_THAT([&] { seeds(cv::Mat::zeros(3, 3, type), mask, 1.0, 0.5); },
                    ThrowsMessage<std::runtime_error>(message))
            << cv::typeToString(type);
    }
}

TEST(GenerateGaussianSeeds, LeavesMapAndMaskAsTheyAreAndDoesNotSeeAroundViews) {
    RandomImages random(61);
    const cv::Mat map = random.floats(cv::Size(20, 14), 2);
    const cv::Mat mask = random.bytes(cv::Size(20, 14), 2);
    const cv::Mat map_view = asView(map);
    const cv::Mat mask_view = asView(mask);
    const auto expected = reference::gaussianSeeds(map, mask, 1.5, 0.5);
    const auto result = seeds(map_view, mask_view, 1.5, 0.5);
    EXPECT_THAT(result.labels, MatEq(expected.labels));
    EXPECT_EQ(result.ncc, expected.count);
    EXPECT_THAT(map_view, MatEq(map));
    EXPECT_THAT(mask_view, MatEq(mask));
}

TEST(GenerateGaussianSeeds, AgreesWithThePlainVersionOnRandomImages) {
    RandomImages random(62);
    for (int run = 0; run < 300; ++run) {
        const cv::Size size = random.size(16);
        const cv::Mat map = random.floats(size, 2 + random.below(3));
        const cv::Mat mask = random.bytes(size, 2);
        const double sigma = 0.3 + 0.4 * random.below(5);
        const double threshold = 0.3 + 0.1 * random.below(4);
        const auto expected = reference::gaussianSeeds(map, mask, sigma, threshold);
        const auto result = seeds(map, mask, sigma, threshold);
        ASSERT_THAT(result.labels, MatEq(expected.labels)) << "run " << run;
        ASSERT_EQ(result.ncc, expected.count) << "run " << run;
    }
}

TEST(GenerateGaussianSeeds, AgreesWithThePlainVersionOnALargerImage) {
    RandomImages random(63);
    const cv::Mat map = random.floats(cv::Size(417, 305), 2);
    cv::Mat mask = noMask(map);
    mask(cv::Rect(100, 50, 80, 90)) = 255;
    const auto expected = reference::gaussianSeeds(map, mask, 1.5, 0.48);
    const auto result = seeds(map, mask, 1.5, 0.48);
    EXPECT_GT(result.ncc, 300);
    EXPECT_THAT(result.labels, MatEq(expected.labels));
    EXPECT_EQ(result.ncc, expected.count);
    EXPECT_THAT(seeds(map, mask, 1.5, 0.48).labels, MatEq(result.labels));
}

/// Rooms of 20 pixels a side, ten of them, with walls between.
cv::Mat tenRooms() {
    cv::Mat map(60, 130, CV_32FC1, cv::Scalar(1.0));
    for (int room = 0; room < 10; ++room) {
        map(cv::Rect(3 + room % 5 * 25, 5 + room / 5 * 28, 20, 22)) = 0.0;
    }
    return map;
}

/// The four steps side by side, each under its caption.
cv::Mat expectedPanel(const cv::Mat& map, double threshold, const GaussianSeedsResult& result,
                      double sigma, const std::string& sigma_text) {
    cv::Mat blurred;
    cv::GaussianBlur(map, blurred, cv::Size(), sigma, 0.0, cv::BORDER_REPLICATE);
    cv::Mat inverted;
    cv::compare(blurred, threshold, inverted, cv::CMP_LE);
    const auto regions = reference::gaussianSeeds(map, noMask(map), sigma, threshold);

    const int rows = map.rows;
    const int cols = map.cols;
    cv::Mat panel = cv::Mat::zeros(2 * rows, 2 * cols, CV_8UC1);
    blurred.convertTo(panel(cv::Rect(0, 0, cols, rows)), CV_8U, 255.0);
    inverted.copyTo(panel(cv::Rect(cols, 0, cols, rows)));
    regions.labels.convertTo(panel(cv::Rect(0, rows, cols, rows)), CV_8U, 32.0);
    result.labels.convertTo(panel(cv::Rect(cols, rows, cols, rows)), CV_8U, 32.0);
    const auto caption = [&panel](const std::string& text, int x, int y, int level) {
        cv::putText(panel, text, cv::Point(x, y), cv::FONT_HERSHEY_SIMPLEX, 0.5, cv::Scalar(level));
    };
    caption("1. Gaussian Blur sigma=" + sigma_text, 10, 20, 0);
    caption("2. Binary Threshold", cols + 10, 20, 255);
    caption("3. Connected Components (x32)", 10, rows + 20, 255);
    caption("4. Background Marked (x32)", cols + 10, rows + 20, 0);
    return panel;
}

TEST(GenerateGaussianSeeds, WritesAPanelOfItsFourSteps) {
    const TempDir folder;
    const cv::Mat map = tenRooms();
    cv::Mat mask = noMask(map);
    mask(cv::Rect(0, 0, 130, 6)) = 1;
    mask(cv::Rect(60, 20, 9, 30)) = 200;
    const auto result = seeds(map, mask, 2.5, 0.125, savingDebugger(folder));
    EXPECT_EQ(result.ncc, 10);

    const std::string name = "40cpp_gaussian_seeds_sigma_2.500000.png";
    ASSERT_THAT(folder.names(), ElementsAre(name));
    const cv::Mat panel = readPicture(folder, name);
    EXPECT_THAT(panel, MatEq(expectedPanel(map, 0.125, result, 2.5, "2.500000")));
    EXPECT_THAT(result.labels, MatEq(seeds(map, mask, 2.5, 0.125).labels));
}

TEST(GenerateGaussianSeeds, WritesASmallPanelThoughTheCaptionsDoNotFit) {
    const TempDir folder;
    seeds(values("."), labels("1"), 12.0, 0.5, savingDebugger(folder));
    const std::string name = "40cpp_gaussian_seeds_sigma_12.000000.png";
    ASSERT_THAT(folder.names(), ElementsAre(name));
    // The map is 0, the valley 255, its number 1, the background 255, saturated.
    EXPECT_THAT(readPicture(folder, name), MatEq(labels(". 255\n"
                                                        "32 255")));
}

TEST(GenerateGaussianSeeds, WritesNothingUnlessAsked) {
    const TempDir folder;
    seeds(tenRooms(), noMask(tenRooms()), 2.0, 0.125, idleDebugger(folder));
    EXPECT_THAT(folder.names(), IsEmpty());
}

}  // namespace
}  // namespace vorund::test
