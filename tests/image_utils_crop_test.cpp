#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <random>
#include <stdexcept>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/image_utils.h"

namespace vorund {

void PrintTo(const CropInfo& crop, std::ostream* stream) {
    *stream << "left " << crop.left << ", top " << crop.top << ", right " << crop.right
            << ", bottom " << crop.bottom;
}

namespace {

using test::asView;
using test::labels;
using test::labels32;
using test::MatEq;
using test::values;
using ::testing::ThrowsMessage;

MATCHER_P4(IsCrop, left, top, right, bottom, "") {
    return arg.left == left && arg.top == top && arg.right == right && arg.bottom == bottom;
}

/// 1.0 everywhere save a single pixel of 0.
cv::Mat onePixelOfContent(cv::Size size, cv::Point content) {
    cv::Mat image(size, CV_32FC1, cv::Scalar(1.0));
    image.at<float>(content) = 0.0F;
    return image;
}

TEST(CropSingleInfo, WidensTheContentByThePadding) {
    const cv::Mat image = onePixelOfContent({10, 10}, {6, 4});
    const CropInfo crop = ImageUtils::cropSingleInfo(image, 2);
    EXPECT_THAT(crop, IsCrop(4, 2, 1, 3));
    EXPECT_EQ(ImageUtils::cropBackground(image, crop).size(), cv::Size(5, 5));
    EXPECT_THAT(image, MatEq(onePixelOfContent({10, 10}, {6, 4})));
}

TEST(CropSingleInfo, ClipsThePaddingAtTheEdges) {
    EXPECT_THAT(ImageUtils::cropSingleInfo(onePixelOfContent({10, 8}, {0, 3}), 2),
                IsCrop(0, 1, 7, 2));
    EXPECT_THAT(ImageUtils::cropSingleInfo(onePixelOfContent({10, 8}, {9, 3}), 2),
                IsCrop(7, 1, 0, 2));
    EXPECT_THAT(ImageUtils::cropSingleInfo(onePixelOfContent({10, 8}, {4, 1}), 2),
                IsCrop(2, 0, 3, 4));
    EXPECT_THAT(ImageUtils::cropSingleInfo(onePixelOfContent({10, 8}, {4, 7}), 2),
                IsCrop(2, 5, 3, 0));
    EXPECT_THAT(ImageUtils::cropSingleInfo(onePixelOfContent({10, 8}, {4, 4}), 100),
                IsCrop(0, 0, 0, 0));
}

TEST(CropSingleInfo, CountsWhateverDiffersFromTheTopLeftPixelAsContent) {
    // The same map with walls and floor exchanged.
    cv::Mat inverted(8, 9, CV_32FC1, cv::Scalar(0.0));
    inverted.at<float>(2, 3) = 1.0F;
    inverted.at<float>(5, 4) = 0.3F;
    EXPECT_THAT(ImageUtils::cropSingleInfo(inverted, 0), IsCrop(3, 2, 4, 2));

    // Where the top left pixel itself is the odd one, all others are content.
    EXPECT_THAT(ImageUtils::cropSingleInfo(onePixelOfContent({6, 5}, {0, 0}), 0),
                IsCrop(0, 0, 0, 0));
}

TEST(CropSingleInfo, ShrinksTheContentByANegativePadding) {
    const cv::Mat content = values(
        "0 0 0 0 0 0 0\n"
        "0 1 1 1 1 1 0\n"
        "0 1 1 1 1 1 0\n"
        "0 1 1 1 1 1 0\n"
        "0 0 0 0 0 0 0");
    EXPECT_THAT(ImageUtils::cropSingleInfo(content, -1), IsCrop(2, 2, 2, 2));
}

TEST(CropSingleInfo, TakesFloatsThatRoundToTheSameByteAsEqual) {
    // Times 255: 127.5, 127.755 and 128.4 round to 128, and 128.7 to 129.
    EXPECT_THAT([] { ImageUtils::cropSingleInfo(values("0.5 0.501 0.50353"), 0); },
                ThrowsMessage<std::runtime_error>("cropSingleInfo expects a non-empty image."));
    EXPECT_THAT(ImageUtils::cropSingleInfo(values("0.5 0.501 0.5047"), 0), IsCrop(2, 0, 0, 0));
    // Beyond the unit range the bytes are saturated.
    EXPECT_THAT(ImageUtils::cropSingleInfo(values("1 2 0 -3 5"), 0), IsCrop(2, 0, 1, 0));
}

/// The margins around all pixels that differ from the top left one as bytes.
CropInfo plainCrop(const cv::Mat& image, int padding) {
    const auto byte = [&](int row, int col) {
        return std::clamp(std::lrint(image.at<float>(row, col) * 255.0F), 0L, 255L);
    };
    int min_row = image.rows;
    int max_row = -1;
    int min_col = image.cols;
    int max_col = -1;
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            if (byte(row, col) == byte(0, 0)) continue;
            min_row = std::min(min_row, row);
            max_row = std::max(max_row, row);
            min_col = std::min(min_col, col);
            max_col = std::max(max_col, col);
        }
    }
    return {std::max(0, min_col - padding), std::max(0, min_row - padding),
            std::max(0, image.cols - 1 - max_col - padding),
            std::max(0, image.rows - 1 - max_row - padding)};
}

TEST(CropSingleInfo, AgreesWithThePlainBoundingBoxOnRandomSpecks) {
    std::mt19937 generator(4);
    const auto below = [&](int limit) {
        return static_cast<int>(generator() % static_cast<unsigned>(limit));
    };
    for (int trial = 0; trial < 200; ++trial) {
        cv::Mat image(1 + below(12), 2 + below(12), CV_32FC1, cv::Scalar(below(2)));
        for (int speck = 0; speck < 3; ++speck) {
            image.at<float>(below(image.rows), below(image.cols)) =
                static_cast<float>(below(255)) / 255.0F;
        }
        image.at<float>(below(image.rows), 1 + below(image.cols - 1)) =
            1.0F - std::round(image.at<float>(0, 0));
        const int padding = below(5);
        const CropInfo expected = plainCrop(image, padding);
        const auto is_expected =
            IsCrop(expected.left, expected.top, expected.right, expected.bottom);
        EXPECT_THAT(ImageUtils::cropSingleInfo(image, padding), is_expected) << trial;
        EXPECT_THAT(ImageUtils::cropSingleInfo(asView(image), padding), is_expected) << trial;
    }
}

TEST(CropSingleInfo, TakesAUniformImageAsEmpty) {
    for (const cv::Size size : {cv::Size(5, 4), cv::Size(1, 1), cv::Size(7, 1), cv::Size(1, 7)}) {
        for (const double value : {0.0, 1.0}) {
            EXPECT_THAT(
                [&] { ImageUtils::cropSingleInfo(cv::Mat(size, CV_32FC1, cv::Scalar(value)), 2); },
                ThrowsMessage<std::runtime_error>("cropSingleInfo expects a non-empty image."));
        }
    }
}

TEST(CropSingleInfo, RejectsAnEmptyImageBeforeItsType) {
    for (const cv::Mat& image : {cv::Mat(), cv::Mat(0, 5, CV_32FC1), cv::Mat(5, 0, CV_8UC3)}) {
        EXPECT_THAT([&] { ImageUtils::cropSingleInfo(image, 2); },
                    ThrowsMessage<std::runtime_error>("cropSingleInfo expects a non-empty image."));
    }
}

TEST(CropSingleInfo, RejectsEveryOtherType) {
    for (const int type : {CV_8UC1, CV_32SC1, CV_64FC1, CV_32FC3}) {
        EXPECT_THAT([&] { ImageUtils::cropSingleInfo(cv::Mat::zeros(4, 4, type), 2); },
                    ThrowsMessage<std::runtime_error>(
                        "cropSingleInfo expects a CV_32F or CV_32FC1 image."));
    }
}

TEST(CropBackground, GivesAViewOfTheKeptRectangle) {
    cv::Mat image = labels("1 2 3 4 5\n6 7 8 9 10\n11 12 13 14 15\n16 17 18 19 20");
    cv::Mat kept = ImageUtils::cropBackground(image, {1, 2, 1, 0});
    EXPECT_THAT(kept.clone(), MatEq(labels("12 13 14\n17 18 19")));
    kept.at<std::uint8_t>(0, 0) = 99;
    EXPECT_EQ(image.at<std::uint8_t>(2, 1), 99);
}

TEST(CropBackground, TakesAnyTypeAndAnImageThatIsAViewItself) {
    cv::Mat colours(2, 3, CV_16UC3, cv::Scalar(1, 2, 3));
    colours.at<cv::Vec3w>(1, 2) = {7, 8, 9};
    EXPECT_THAT(ImageUtils::cropBackground(colours, {2, 1, 0, 0}).clone(),
                MatEq(cv::Mat(1, 1, CV_16UC3, cv::Scalar(7, 8, 9))));
    const cv::Mat view = asView(labels("1 2 3\n4 5 6"));
    EXPECT_THAT(ImageUtils::cropBackground(view, {1, 0, 0, 1}).clone(), MatEq(labels("2 3")));
}

TEST(CropBackground, RejectsMarginsThatLeaveNothing) {
    const cv::Mat image = cv::Mat::zeros(4, 6, CV_8UC1);
    for (const CropInfo crop :
         {CropInfo{3, 0, 3, 0}, CropInfo{4, 0, 4, 0}, CropInfo{0, 1, 0, 3}, CropInfo{0, 9, 0, 0}}) {
        EXPECT_THAT([&] { ImageUtils::cropBackground(image, crop); },
                    ThrowsMessage<std::runtime_error>("cropBackground leads to an empty image."));
    }
    EXPECT_EQ(ImageUtils::cropBackground(image, {3, 0, 2, 3}).size(), cv::Size(1, 1));
}

TEST(CropBackground, RejectsAnEmptyImage) {
    for (const cv::Mat& image : {cv::Mat(), cv::Mat(0, 3, CV_8UC1)}) {
        EXPECT_THAT(
            [&] {
                ImageUtils::cropBackground(image, {0, 0, 0, 0});
            },
            ThrowsMessage<std::runtime_error>("cropBackground expects a non-empty image."));
    }
}

TEST(UncropBackground, SurroundsTheImageWithTheFill) {
    const cv::Mat image = labels("1 2\n3 4");
    EXPECT_THAT(ImageUtils::uncropBackground(image, {1, 2, 3, 1}, cv::Scalar(9)),
                MatEq(labels("9 9 9 9 9 9\n"
                             "9 9 9 9 9 9\n"
                             "9 1 2 9 9 9\n"
                             "9 3 4 9 9 9\n"
                             "9 9 9 9 9 9")));
    EXPECT_THAT(image, MatEq(labels("1 2\n3 4")));
    EXPECT_THAT(ImageUtils::uncropBackground(asView(image), {1, 0, 0, 0}, cv::Scalar(9)),
                MatEq(labels("9 1 2\n9 3 4")));
}

TEST(UncropBackground, CopiesAlsoWithoutMargins) {
    const cv::Mat image = labels("1 2\n3 4");
    cv::Mat full = ImageUtils::uncropBackground(image, {0, 0, 0, 0}, cv::Scalar(9));
    EXPECT_THAT(full, MatEq(labels("1 2\n3 4")));
    full.setTo(0);
    EXPECT_THAT(image, MatEq(labels("1 2\n3 4")));
}

TEST(UncropBackground, FillsEveryChannel) {
    const cv::Mat image(1, 1, CV_8UC3, cv::Scalar(7, 8, 9));
    cv::Mat expected(1, 2, CV_8UC3, cv::Scalar(1, 2, 3));
    expected.at<cv::Vec3b>(0, 1) = {7, 8, 9};
    EXPECT_THAT(ImageUtils::uncropBackground(image, {1, 0, 0, 0}, cv::Scalar(1, 2, 3)),
                MatEq(expected));
}

TEST(UncropBackground, UndoesTheCropAndFillsWhatWasCutOff) {
    std::mt19937 generator(5);
    const auto below = [&](int limit) {
        return static_cast<int>(generator() % static_cast<unsigned>(limit));
    };
    for (int trial = 0; trial < 50; ++trial) {
        cv::Mat image(3 + below(9), 3 + below(9), CV_32SC1);
        for (int pixel = 0; pixel < image.rows * image.cols; ++pixel) {
            image.at<int>(pixel / image.cols, pixel % image.cols) = below(1000000);
        }
        const CropInfo crop{below(2), below(2), below(2), below(2)};
        cv::Mat expected(image.size(), CV_32SC1);
        for (int row = 0; row < image.rows; ++row) {
            for (int col = 0; col < image.cols; ++col) {
                const bool kept = row >= crop.top && row < image.rows - crop.bottom &&
                                  col >= crop.left && col < image.cols - crop.right;
                expected.at<int>(row, col) = kept ? image.at<int>(row, col) : -5;
            }
        }
        const cv::Mat cropped = ImageUtils::cropBackground(image, crop);
        EXPECT_THAT(ImageUtils::uncropBackground(cropped, crop, cv::Scalar(-5)), MatEq(expected));
    }
}

MATCHER_P(IsNothingOfType, type, "") {
    return arg.type() == type && arg.size() == cv::Size(0, 0);
}

TEST(UncropBackground, GivesNothingForAnEmptyFullSize) {
    const cv::Mat nothing(0, 0, CV_32SC1);
    const cv::Mat image(2, 2, CV_16UC3, cv::Scalar(1));
    const cv::Scalar fill(9);
    EXPECT_THAT(ImageUtils::uncropBackground(nothing, {0, 0, 0, 0}, fill),
                IsNothingOfType(CV_32SC1));
    EXPECT_THAT(ImageUtils::uncropBackground(nothing, {2, 1, -2, -1}, fill),
                IsNothingOfType(CV_32SC1));
    EXPECT_THAT(ImageUtils::uncropBackground(nothing, {2, 0, 1, 0}, fill),
                IsNothingOfType(CV_32SC1));
    EXPECT_THAT(ImageUtils::uncropBackground(image, {-1, 0, -1, 0}, fill),
                IsNothingOfType(CV_16UC3));
    EXPECT_THAT(ImageUtils::uncropBackground(image, {0, -3, 0, 0}, fill),
                IsNothingOfType(CV_16UC3));
}

TEST(UncropBackground, FillsTheMarginsAroundAnEmptyImage) {
    EXPECT_THAT(ImageUtils::uncropBackground(cv::Mat(0, 0, CV_8UC1), {1, 1, 2, 0}, cv::Scalar(9)),
                MatEq(labels("9 9 9")));
}

TEST(UncropBackground, LeavesARectangleThatDoesNotFitToOpenCV) {
    const cv::Mat image(5, 5, CV_8UC1, cv::Scalar(1));
    EXPECT_THROW(ImageUtils::uncropBackground(image, {-1, 0, 3, 0}, cv::Scalar(0)), cv::Exception);
}

TEST(RemapBorder, ReplacesOneValueInACopy) {
    const cv::Mat image = labels("1 2 3\n3 2 1");
    EXPECT_THAT(ImageUtils::remapBorder(image, 3, 255), MatEq(labels("1 2 255\n255 2 1")));
    EXPECT_THAT(image, MatEq(labels("1 2 3\n3 2 1")));
    EXPECT_THAT(ImageUtils::remapBorder(image, 7, 255), MatEq(image));
}

TEST(RemapBorder, TakesMinusOneAsTheLargestValue) {
    EXPECT_THAT(ImageUtils::remapBorder(labels32("1 7 7\n0 3 7"), -1, 255),
                MatEq(labels32("1 255 255\n0 3 255")));
    EXPECT_THAT(ImageUtils::remapBorder(labels("1 7 7\n0 3 7"), -1, 255),
                MatEq(labels("1 255 255\n0 3 255")));
    // Not the pixels that hold -1.
    EXPECT_THAT(ImageUtils::remapBorder(labels32("-1 4"), -1, 9), MatEq(labels32("-1 9")));
}

TEST(RemapBorder, TruncatesTheLargestValueButRoundsThePixels) {
    // The largest value, 6.7, counts as 6; the pixels become 7, 6, 2 (halves go to even) and 4.
    EXPECT_THAT(ImageUtils::remapBorder(values("6.7 6.2 2.5 3.5"), -1, 255),
                MatEq(labels32("7 255 2 4")));
}

TEST(RemapBorder, CountsTheLowEightBitsInAByteImage) {
    EXPECT_THAT(ImageUtils::remapBorder(labels("3 4 5"), 3, 300), MatEq(labels("44 4 5")));
    EXPECT_THAT(ImageUtils::remapBorder(labels("3 4 5"), 260, 9), MatEq(labels("3 9 5")));
    EXPECT_THAT(ImageUtils::remapBorder(labels("251 4 5"), -5, -1), MatEq(labels("255 4 5")));
}

TEST(RemapBorder, CountsAllBitsInAWideImage) {
    EXPECT_THAT(ImageUtils::remapBorder(labels32("3 259 -7"), 259, 300),
                MatEq(labels32("3 300 -7")));
    EXPECT_THAT(ImageUtils::remapBorder(labels32("3 259 -7"), -7, -1), MatEq(labels32("3 259 -1")));
}

TEST(RemapBorder, WidensEveryOtherType) {
    const cv::Mat deep = (cv::Mat_<std::uint16_t>(1, 3) << 1, 500, 65535);
    EXPECT_THAT(ImageUtils::remapBorder(deep, 500, 70000), MatEq(labels32("1 70000 65535")));
    const cv::Mat small = (cv::Mat_<std::int8_t>(1, 3) << -128, 0, 127);
    EXPECT_THAT(ImageUtils::remapBorder(small, 0, 200), MatEq(labels32("-128 200 127")));
}

TEST(RemapBorder, ReadsEveryPixelOfAView) {
    std::mt19937 generator(6);
    for (const cv::Size size : {cv::Size(19, 23), cv::Size(1, 9), cv::Size(9, 1), cv::Size(1, 1)}) {
        cv::Mat image(size, CV_8UC1);
        cv::Mat expected(size, CV_8UC1);
        for (int row = 0; row < size.height; ++row) {
            for (int col = 0; col < size.width; ++col) {
                const auto value = static_cast<std::uint8_t>(generator() % 5);
                image.at<std::uint8_t>(row, col) = value;
                expected.at<std::uint8_t>(row, col) = value == 2 ? std::uint8_t{255} : value;
            }
        }
        EXPECT_THAT(ImageUtils::remapBorder(image, 2, 255), MatEq(expected));
        EXPECT_THAT(ImageUtils::remapBorder(asView(image), 2, 255), MatEq(expected));
        cv::Mat wide;
        cv::Mat wide_expected;
        image.convertTo(wide, CV_32S);
        expected.convertTo(wide_expected, CV_32S);
        EXPECT_THAT(ImageUtils::remapBorder(asView(wide), 2, 255), MatEq(wide_expected));
    }
}

}  // namespace
}  // namespace vorund
