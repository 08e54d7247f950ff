#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <locale>
#include <opencv2/imgproc.hpp>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/debugger.h"
#include "vorund/image_utils.h"

namespace vorund {
namespace {

using test::asView;
using test::labels;
using test::MatEq;
using test::PlainCapture;
using test::values;
using ::testing::ThrowsMessage;

using RemoveConfig = Config::RemoveSmallConnectedComponentsConfig;

constexpr char kEmptyMessage[] = "removeSmallConnectedComponents expects a non-empty image.";
constexpr char kMethodMessage[] = "Invalid method in removeSmallConnectedComponents";

/// Regions of 1, 2, 3 and 10 pixels.
cv::Mat fourRegions() {
    return values(
        "1 0 1 1 0 1 1\n"
        "0 0 0 0 0 1 0\n"
        "1 1 1 1 0 0 0\n"
        "1 1 1 1 1 1 0");
}

TEST(RemoveSmallConnectedComponents, KeepsRegionsOfAtLeastTheFixedSize) {
    const PlainCapture plain;
    const cv::Mat image = fourRegions();
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(image, {"fixed", 4, 3}),
                MatEq(values("0 0 0 0 0 1 1\n"
                             "0 0 0 0 0 1 0\n"
                             "1 1 1 1 0 0 0\n"
                             "1 1 1 1 1 1 0")));
    EXPECT_THAT(image, MatEq(fourRegions()));
    EXPECT_EQ(plain.text(), "removeSmallConnectedComponents: threshold_area: 3\n");
}

TEST(RemoveSmallConnectedComponents, KeepsRegionsOfAtLeastTheMeanSize) {
    const PlainCapture plain;
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(fourRegions(), {"mean", 4, 3}),
                MatEq(values("0 0 0 0 0 0 0\n"
                             "0 0 0 0 0 0 0\n"
                             "1 1 1 1 0 0 0\n"
                             "1 1 1 1 1 1 0")));
    EXPECT_EQ(plain.text(), "removeSmallConnectedComponents: threshold_area: 4\n");
}

TEST(RemoveSmallConnectedComponents, KeepsRegionsOfAtLeastTheMedianSize) {
    const PlainCapture plain;
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(fourRegions(), {"median", 4, 3}),
                MatEq(values("0 0 0 0 0 1 1\n"
                             "0 0 0 0 0 1 0\n"
                             "1 1 1 1 0 0 0\n"
                             "1 1 1 1 1 1 0")));
    EXPECT_EQ(plain.text(), "removeSmallConnectedComponents: threshold_area: 2.5\n");
}

TEST(RemoveSmallConnectedComponents, TakesTheMiddleOfAnOddNumberOfSizes) {
    const PlainCapture plain;
    // In label order the sizes are 4, 1 and 2: they are sorted for the median.
    EXPECT_THAT(
        ImageUtils::removeSmallConnectedComponents(values("1 1 1 1 0 1 0 1 1"), {"median", 4, 0}),
        MatEq(values("1 1 1 1 0 0 0 1 1")));
    EXPECT_EQ(plain.text(), "removeSmallConnectedComponents: threshold_area: 2\n");
}

TEST(RemoveSmallConnectedComponents, PrintsTheThresholdWithSixDigits) {
    const PlainCapture plain;
    const cv::Mat image = values("1 0 1 0 1 1");
    ImageUtils::removeSmallConnectedComponents(image, {"mean", 4, 0});
    ImageUtils::removeSmallConnectedComponents(image, {"fixed", 4, 1234567});
    ImageUtils::removeSmallConnectedComponents(image, {"fixed", 4, -2});
    EXPECT_THAT(plain.lines(),
                testing::ElementsAre("removeSmallConnectedComponents: threshold_area: 1.33333",
                                     "removeSmallConnectedComponents: threshold_area: 1.23457e+06",
                                     "removeSmallConnectedComponents: threshold_area: -2"));
}

/// A locale that writes 1.5 as 1,5 and 123456 as 123.456.
class Commas : public std::numpunct<char> {
 private:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(RemoveSmallConnectedComponents, PrintsTheThresholdAlikeInEveryLocale) {
    const PlainCapture plain;
    const cv::Mat image = values("1 0 1 1");
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Commas));
    ImageUtils::removeSmallConnectedComponents(image, {"mean", 4, 0});
    ImageUtils::removeSmallConnectedComponents(image, {"fixed", 4, 123456});
    std::locale::global(former);
    EXPECT_THAT(plain.lines(),
                testing::ElementsAre("removeSmallConnectedComponents: threshold_area: 1.5",
                                     "removeSmallConnectedComponents: threshold_area: 123456"));
}

TEST(RemoveSmallConnectedComponents, AlwaysKeepsASingleRegionByMeanAndMedian) {
    const PlainCapture plain;
    for (const std::string method : {"mean", "median"}) {
        EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(values("0 1 1 0"), {method, 4, 99}),
                    MatEq(values("0 1 1 0")));
    }
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(values("0 1 1 0"), {"fixed", 4, 99}),
                MatEq(values("0 0 0 0")));
}

TEST(RemoveSmallConnectedComponents, JoinsCornersOnlyWithEightConnectivity) {
    const PlainCapture plain;
    const cv::Mat image = values("1 0\n0 1");
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(image, {"fixed", 4, 2}),
                MatEq(values("0 0\n0 0")));
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(image, {"fixed", 8, 2}), MatEq(image));
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(image, {"fixed", 8, 3}),
                MatEq(values("0 0\n0 0")));
}

TEST(RemoveSmallConnectedComponents, GivesFloatsForABinaryMapOfBytes) {
    const PlainCapture plain;
    EXPECT_THAT(
        ImageUtils::removeSmallConnectedComponents(labels("255 255 0 255"), {"fixed", 4, 2}),
        MatEq(values("1 1 0 0")));
}

TEST(RemoveSmallConnectedComponents, TakesWhatRoundsToANonZeroByteAsForeground) {
    const PlainCapture plain;
    // Times 255: 0.255 and -255 are background, 0.51 and 2.55e5 are not.
    EXPECT_THAT(
        ImageUtils::removeSmallConnectedComponents(values("0.001 0.002 1000 -1"), {"fixed", 4, 1}),
        MatEq(values("0 1 1 0")));
    EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(labels("0 1 2 254"), {"fixed", 4, 1}),
                MatEq(values("0 1 1 1")));
}

TEST(RemoveSmallConnectedComponents, RejectsAMapWithoutForeground) {
    const PlainCapture plain;
    for (const cv::Mat& image : {values("0 0\n0 0"), values("0"), labels("0 0 0")}) {
        for (const std::string method : {"fixed", "mean", "median", "none of these"}) {
            EXPECT_THAT(
                [&] {
                    ImageUtils::removeSmallConnectedComponents(image, {method, 4, 1});
                },
                ThrowsMessage<std::runtime_error>(kEmptyMessage));
        }
    }
    EXPECT_EQ(plain.text(), "");
}

TEST(RemoveSmallConnectedComponents, RejectsAnUnknownMethod) {
    const PlainCapture plain;
    for (const std::string method : {"Median", "", "fixed ", "MEAN"}) {
        EXPECT_THAT(
            [&] {
                ImageUtils::removeSmallConnectedComponents(fourRegions(), {method, 4, 1});
            },
            ThrowsMessage<std::runtime_error>(kMethodMessage));
    }
    EXPECT_EQ(plain.text(), "");
}

TEST(RemoveSmallConnectedComponents, LeavesAnotherConnectivityToOpenCV) {
    EXPECT_THROW(ImageUtils::removeSmallConnectedComponents(fourRegions(), {"fixed", 5, 1}),
                 cv::Exception);
}

/// Number of the pixels connected to `start`, each of which is set to 2 in `image`.
int takeRegion(cv::Mat& image, cv::Point start, int connectivity) {
    std::vector<cv::Point> open{start};
    image.at<float>(start) = 2.0F;
    int area = 0;
    while (!open.empty()) {
        const cv::Point at = open.back();
        open.pop_back();
        ++area;
        for (int k = 0; k < 9; ++k) {
            const cv::Point step(k % 3 - 1, k / 3 - 1);
            if (connectivity == 4 && step.x != 0 && step.y != 0) continue;
            const cv::Point next = at + step;
            if (!cv::Rect({0, 0}, image.size()).contains(next)) continue;
            if (image.at<float>(next) != 1.0F) continue;
            image.at<float>(next) = 2.0F;
            open.push_back(next);
        }
    }
    return area;
}

double plainThreshold(std::vector<int> areas, const RemoveConfig& config) {
    if (config.method == "fixed") return config.min_size;
    std::sort(areas.begin(), areas.end());
    const std::size_t count = areas.size();
    double sum = 0.0;
    for (const int area : areas) sum += area;
    if (config.method == "mean") return sum / static_cast<double>(count);
    if (count % 2 == 1) return areas[count / 2];
    return (areas[count / 2 - 1] + areas[count / 2]) / 2.0;
}

cv::Mat plainRemoval(const cv::Mat& image, const RemoveConfig& config) {
    cv::Mat work = image.clone();
    std::vector<int> areas;
    std::vector<cv::Mat> regions;
    for (int pixel = 0; pixel < image.rows * image.cols; ++pixel) {
        const cv::Point start(pixel % image.cols, pixel / image.cols);
        if (work.at<float>(start) != 1.0F) continue;
        areas.push_back(takeRegion(work, start, config.connectivity));
        regions.push_back(work == 2.0);
        work.setTo(0.0, regions.back());
    }
    const double threshold = plainThreshold(areas, config);
    cv::Mat result = cv::Mat::zeros(image.size(), CV_32FC1);
    for (std::size_t i = 0; i < areas.size(); ++i) {
        if (areas[i] >= threshold) result.setTo(1.0, regions[i]);
    }
    return result;
}

TEST(RemoveSmallConnectedComponents, AgreesWithAPlainFloodFillOnRandomMaps) {
    const PlainCapture plain;
    std::mt19937 generator(7);
    for (const cv::Size size : {cv::Size(24, 21), cv::Size(40, 1), cv::Size(1, 40)}) {
        for (unsigned density = 3; density <= 7; ++density) {
            cv::Mat image(size, CV_32FC1);
            for (int row = 0; row < size.height; ++row) {
                for (int col = 0; col < size.width; ++col) {
                    image.at<float>(row, col) = generator() % 10 < density ? 1.0F : 0.0F;
                }
            }
            for (const RemoveConfig& config :
                 {RemoveConfig{"fixed", 4, 4}, RemoveConfig{"fixed", 8, 4},
                  RemoveConfig{"mean", 4, 0}, RemoveConfig{"mean", 8, 0},
                  RemoveConfig{"median", 4, 0}, RemoveConfig{"median", 8, 0}}) {
                const cv::Mat expected = plainRemoval(image, config);
                EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(image, config),
                            MatEq(expected))
                    << config.method << config.connectivity;
                EXPECT_THAT(ImageUtils::removeSmallConnectedComponents(asView(image), config),
                            MatEq(expected))
                    << config.method << config.connectivity;
            }
        }
    }
}

/// Counts how often its stream is flushed.
class CountingBuffer : public std::stringbuf {
 public:
    int flushes = 0;

 private:
    int sync() override {
        ++flushes;
        return std::stringbuf::sync();
    }
};

TEST(SetPlainOutput, IsStandardOutputWhenNeverCalled) {
    const test::StdoutCapture out;
    ImageUtils::removeSmallConnectedComponents(values("1 0"), {"fixed", 4, 1});
    EXPECT_EQ(out.text(), "removeSmallConnectedComponents: threshold_area: 1\n");
}

TEST(SetPlainOutput, FlushesEachLineToItsStream) {
    CountingBuffer buffer;
    std::ostream stream(&buffer);
    setPlainOutput(&stream);
    ImageUtils::removeSmallConnectedComponents(values("1 0"), {"fixed", 4, 1});
    setPlainOutput(&std::cout);
    EXPECT_EQ(buffer.str(), "removeSmallConnectedComponents: threshold_area: 1\n");
    EXPECT_GE(buffer.flushes, 1);
}

TEST(SetPlainOutput, SilencesTheLinesWithoutAStream) {
    const test::StdoutCapture out;
    setPlainOutput(nullptr);
    ImageUtils::removeSmallConnectedComponents(values("1 0"), {"fixed", 4, 1});
    setPlainOutput(&std::cout);
    EXPECT_EQ(out.text(), "");
}

TEST(SetPlainOutput, LeavesTheFormerStreamAlone) {
    std::ostringstream former;
    setPlainOutput(&former);
    {
        const PlainCapture plain;
        ImageUtils::removeSmallConnectedComponents(values("1 0"), {"fixed", 4, 1});
        EXPECT_EQ(plain.text(), "removeSmallConnectedComponents: threshold_area: 1\n");
    }
    const test::StdoutCapture out;
    ImageUtils::removeSmallConnectedComponents(values("1 0"), {"fixed", 4, 2});
    EXPECT_EQ(out.text(), "removeSmallConnectedComponents: threshold_area: 2\n");
    EXPECT_EQ(former.str(), "");
}

}  // namespace
}  // namespace vorund
