#include "vorund/image_utils.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund {
namespace {

using test::asView;
using test::labels;
using test::MatEq;
using test::readFile;
using test::TempDir;
using test::values;
using ::testing::ThrowsMessage;

constexpr double kByteToUnit = 0.00392156862745098;

cv::Mat scaledToUnit(const cv::Mat& image) {
    cv::Mat scaled;
    image.convertTo(scaled, CV_32F, kByteToUnit);
    return scaled;
}

std::vector<std::uint8_t> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

/// Floats that are not whole numbers, some outside 0 to 1.
cv::Mat randomFloats(int rows, int cols, unsigned seed) {
    std::mt19937 generator(seed);
    cv::Mat image(rows, cols, CV_32FC1);
    for (int row = 0; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            image.at<float>(row, col) = static_cast<float>(generator() % 1400) / 1000.0F - 0.2F;
        }
    }
    return image;
}

/// A byte image in the binary grey format: rows of bytes after a short header.
const std::string kGreyThreePixels = std::string("P5\n3 1\n255\n") + '\x00' + '\xcd' + '\xfe';

/// One pixel in the binary colour format: red 10, green 20, blue 30.
const std::string kColourPixel = std::string("P6\n1 1\n255\n") + '\x0a' + '\x14' + '\x1e';

/// One pixel of grey 102 with an alpha of 0.
const std::vector<std::uint8_t> kGreyAlphaPng = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x04, 0x00, 0x00,
    0x00, 0xb5, 0x1c, 0x0c, 0x02, 0x00, 0x00, 0x00, 0x0b, 0x49, 0x44, 0x41, 0x54, 0x78,
    0x9c, 0x63, 0x48, 0x63, 0x00, 0x00, 0x00, 0xcf, 0x00, 0x67, 0x9f, 0xb2, 0xf2, 0x54,
    0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};

TEST(LoadMapFromFileUint8, KeepsTheBytesOfAGreyImage) {
    const TempDir dir;
    const std::string path = dir.write("map.pgm", kGreyThreePixels);
    EXPECT_THAT(ImageUtils::loadMapFromFileUint8(path), MatEq(labels("0 205 254")));
}

TEST(LoadMapFromFileUint8, KeepsTheDepthOfASixteenBitImage) {
    const TempDir dir;
    const cv::Mat image = (cv::Mat_<std::uint16_t>(1, 3) << 0, 1000, 65535);
    ASSERT_TRUE(cv::imwrite(dir.file("map.png"), image));
    EXPECT_THAT(ImageUtils::loadMapFromFileUint8(dir.file("map.png")), MatEq(image));
}

TEST(LoadMapFromFileUint8, KeepsTheThreeChannelsOfAColourImage) {
    const TempDir dir;
    const cv::Mat expected(1, 1, CV_8UC3, cv::Scalar(30, 20, 10));
    EXPECT_THAT(ImageUtils::loadMapFromFileUint8(dir.write("map.ppm", kColourPixel)),
                MatEq(expected));
}

TEST(LoadMapFromFileUint8, DropsAlpha) {
    const TempDir dir;
    ASSERT_TRUE(cv::imwrite(dir.file("map.png"), cv::Mat(2, 3, CV_8UC4, cv::Scalar(1, 2, 3, 4))));
    EXPECT_THAT(ImageUtils::loadMapFromFileUint8(dir.file("map.png")),
                MatEq(cv::Mat(2, 3, CV_8UC3, cv::Scalar(1, 2, 3))));
}

TEST(LoadMapFromFileUint8, DropsAlphaOfSixteenBits) {
    const TempDir dir;
    const cv::Mat image(2, 3, CV_16UC4, cv::Scalar(1000, 2000, 3000, 4000));
    ASSERT_TRUE(cv::imwrite(dir.file("map.png"), image));
    EXPECT_THAT(ImageUtils::loadMapFromFileUint8(dir.file("map.png")),
                MatEq(cv::Mat(2, 3, CV_16UC3, cv::Scalar(1000, 2000, 3000))));
}

TEST(LoadMapFromFile, NamesAFileThatIsMissing) {
    const TempDir dir;
    const std::string path = dir.file("x.png");
    const std::string message = "Could not read or find the image: " + path;
    EXPECT_THAT([&] { ImageUtils::loadMapFromFileUint8(path); },
                ThrowsMessage<std::runtime_error>(message));
    EXPECT_THAT([&] { ImageUtils::loadMapFromFile(path); },
                ThrowsMessage<std::runtime_error>(message));
    EXPECT_THAT([&] { ImageUtils::loadGrayMapFromFile(path); },
                ThrowsMessage<std::runtime_error>(message));
}

TEST(LoadMapFromFile, NamesAFileThatIsNoImage) {
    const TempDir dir;
    for (const std::string& path :
         {dir.write("text.png", "no image"), dir.write("empty.png", ""), dir.path()}) {
        EXPECT_THAT([&] { ImageUtils::loadMapFromFile(path); },
                    ThrowsMessage<std::runtime_error>("Could not read or find the image: " + path));
    }
}

TEST(LoadMapFromFile, ScalesBytesToTheUnitRange) {
    const TempDir dir;
    const cv::Mat map = ImageUtils::loadMapFromFile(dir.write("map.pgm", kGreyThreePixels));
    EXPECT_THAT(map, MatEq(scaledToUnit(labels("0 205 254"))));
    EXPECT_EQ(map.at<float>(0, 0), 0.0F);
    EXPECT_NEAR(map.at<float>(0, 1), 0.80392, 5e-6);
    EXPECT_NEAR(map.at<float>(0, 2), 0.99608, 5e-6);
}

TEST(LoadMapFromFile, ScalesSixteenBitsByTheSameFactor) {
    const TempDir dir;
    const cv::Mat image = (cv::Mat_<std::uint16_t>(1, 3) << 0, 255, 65535);
    ASSERT_TRUE(cv::imwrite(dir.file("map.png"), image));
    const cv::Mat map = ImageUtils::loadMapFromFile(dir.file("map.png"));
    ASSERT_EQ(map.type(), CV_32FC1);
    EXPECT_NEAR(map.at<float>(0, 1), 1.0, 1e-6);
    EXPECT_NEAR(map.at<float>(0, 2), 257.0, 1e-4);
}

TEST(LoadMapFromFile, KeepsTheThreeChannelsOfAColourImage) {
    const TempDir dir;
    const cv::Mat expected = scaledToUnit(cv::Mat(1, 1, CV_8UC3, cv::Scalar(30, 20, 10)));
    EXPECT_THAT(ImageUtils::loadMapFromFile(dir.write("map.ppm", kColourPixel)), MatEq(expected));
}

TEST(LoadMapFromBuffer, GivesWhatTheFileGives) {
    const TempDir dir;
    ASSERT_TRUE(cv::imwrite(dir.file("alpha.png"), cv::Mat(2, 3, CV_8UC4, cv::Scalar(1, 2, 3, 4))));
    ASSERT_TRUE(cv::imwrite(dir.file("deep.png"), cv::Mat(3, 2, CV_16UC1, cv::Scalar(40000))));
    dir.write("grey.pgm", kGreyThreePixels);
    dir.write("colour.ppm", kColourPixel);
    for (const std::string name : {"alpha.png", "deep.png", "grey.pgm", "colour.ppm"}) {
        const std::vector<std::uint8_t> buffer = bytesOf(readFile(dir.file(name)));
        EXPECT_THAT(ImageUtils::loadMapFromBuffer(buffer),
                    MatEq(ImageUtils::loadMapFromFile(dir.file(name))))
            << name;
        EXPECT_THAT(ImageUtils::loadGrayMapFromBuffer(buffer),
                    MatEq(ImageUtils::loadGrayMapFromFile(dir.file(name))))
            << name;
    }
}

TEST(LoadMapFromBuffer, LeavesTheBytesAsTheyAre) {
    const std::vector<std::uint8_t> buffer = bytesOf(kGreyThreePixels);
    EXPECT_THAT(ImageUtils::loadMapFromBuffer(buffer), MatEq(scaledToUnit(labels("0 205 254"))));
    EXPECT_EQ(buffer, bytesOf(kGreyThreePixels));
}

TEST(LoadMapFromBuffer, RejectsBytesThatAreNoImage) {
    const std::vector<std::vector<std::uint8_t>> buffers = {
        {}, {0}, bytesOf("no image"), bytesOf("\x89PNG\r\n"), bytesOf("P5\n")};
    for (const std::vector<std::uint8_t>& buffer : buffers) {
        EXPECT_THAT([&] { ImageUtils::loadMapFromBuffer(buffer); },
                    ThrowsMessage<std::runtime_error>("Could not decode image from buffer."));
        EXPECT_THAT([&] { ImageUtils::loadGrayMapFromBuffer(buffer); },
                    ThrowsMessage<std::runtime_error>("Could not decode image from buffer."));
    }
}

TEST(LoadGrayMap, IgnoresAlpha) {
    const TempDir dir;
    const cv::Mat transparent_white(2, 2, CV_8UC4, cv::Scalar(255, 255, 255, 0));
    ASSERT_TRUE(cv::imwrite(dir.file("map.png"), transparent_white));
    const cv::Mat map = ImageUtils::loadGrayMapFromFile(dir.file("map.png"));
    ASSERT_EQ(map.type(), CV_32FC1);
    ASSERT_EQ(map.size(), cv::Size(2, 2));
    EXPECT_NEAR(map.at<float>(1, 1), 1.0, 1e-6);
}

TEST(LoadGrayMap, IgnoresTheAlphaOfAGreyImage) {
    const cv::Mat map = ImageUtils::loadGrayMapFromBuffer(kGreyAlphaPng);
    ASSERT_EQ(map.type(), CV_32FC1);
    ASSERT_EQ(map.size(), cv::Size(1, 1));
    EXPECT_NEAR(map.at<float>(0, 0), 102.0 / 255.0, 1e-6);
}

TEST(LoadGrayMap, WeighsTheColours) {
    const cv::Mat map = ImageUtils::loadGrayMapFromBuffer(bytesOf(kColourPixel));
    ASSERT_EQ(map.type(), CV_32FC1);
    const double grey = 0.299 * 10 + 0.587 * 20 + 0.114 * 30;
    EXPECT_NEAR(map.at<float>(0, 0), grey / 255.0, 1e-6);
}

TEST(MakeGray, CopiesOneChannel) {
    const cv::Mat image = labels("1 2\n3 4");
    cv::Mat grey = ImageUtils::makeGray(image);
    EXPECT_THAT(grey, MatEq(labels("1 2\n3 4")));
    grey.setTo(9);
    EXPECT_THAT(image, MatEq(labels("1 2\n3 4")));
}

TEST(MakeGray, WeighsBlueGreenRedAndKeepsTheDepth) {
    cv::Mat colours(1, 3, CV_8UC3);
    colours.at<cv::Vec3b>(0, 0) = {255, 0, 0};
    colours.at<cv::Vec3b>(0, 1) = {0, 255, 0};
    colours.at<cv::Vec3b>(0, 2) = {0, 0, 255};
    // 255 times 0.114, 0.587 and 0.299, rounded.
    EXPECT_THAT(ImageUtils::makeGray(colours), MatEq(labels("29 150 76")));

    const cv::Mat deep(1, 1, CV_16UC3, cv::Scalar(1000, 0, 0));
    EXPECT_THAT(ImageUtils::makeGray(deep), MatEq(cv::Mat(1, 1, CV_16UC1, cv::Scalar(114))));

    const cv::Mat floating(1, 1, CV_32FC3, cv::Scalar(0, 0, 0.5));
    const cv::Mat grey = ImageUtils::makeGray(floating);
    ASSERT_EQ(grey.type(), CV_32FC1);
    EXPECT_NEAR(grey.at<float>(0, 0), 0.1495, 1e-6);
}

TEST(MakeGray, RejectsOtherNumbersOfChannels) {
    for (const int channels : {2, 4, 5}) {
        EXPECT_THAT([&] { ImageUtils::makeGray(cv::Mat::zeros(2, 2, CV_8UC(channels))); },
                    ThrowsMessage<std::runtime_error>(
                        "Input image for makeGray must have 1 or 3 channels."));
    }
}

TEST(MakeBinary, MapsOnlyWhatIsAboveTheThresholdToTheMaximum) {
    const cv::Mat image = values("0 0.9 0.9000001 1");
    EXPECT_THAT(ImageUtils::makeBinary(image, 0.9, 1.0), MatEq(values("0 0 1 1")));
    EXPECT_THAT(ImageUtils::makeBinary(image, 0.5, 0.25), MatEq(values("0 0.25 0.25 0.25")));
    EXPECT_THAT(image, MatEq(values("0 0.9 0.9000001 1")));
}

TEST(MakeBinary, AgreesWithOneComparisonPerPixel) {
    const cv::Mat image = randomFloats(23, 31, 1);
    const double threshold = 0.375;
    cv::Mat expected(image.size(), CV_32FC1);
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            expected.at<float>(row, col) = image.at<float>(row, col) > 0.375F ? 1.0F : 0.0F;
        }
    }
    EXPECT_THAT(ImageUtils::makeBinary(image, threshold, 1.0), MatEq(expected));
    EXPECT_THAT(ImageUtils::makeBinary(asView(image), threshold, 1.0), MatEq(expected));
}

TEST(MakeBinary, RejectsEveryOtherType) {
    for (const int type : {CV_8UC1, CV_64FC1, CV_32SC1, CV_32FC2, CV_32FC3}) {
        EXPECT_THAT([&] { ImageUtils::makeBinary(cv::Mat::zeros(2, 2, type), 0.1, 1.0); },
                    ThrowsMessage<std::runtime_error>(
                        "Unsupported image type for makeBinary. Must be CV_32F or CV_32FC1."));
    }
    EXPECT_THAT([] { ImageUtils::makeBinary(cv::Mat(), 0.1, 1.0); },
                ThrowsMessage<std::runtime_error>(
                    "Unsupported image type for makeBinary. Must be CV_32F or CV_32FC1."));
}

TEST(MakeInvert, SubtractsFloatsFromOneWithoutClamping) {
    const cv::Mat image = values("0 0.25 1 1.25 -0.5");
    EXPECT_THAT(ImageUtils::makeInvert(image), MatEq(values("1 0.75 0 -0.25 1.5")));
    EXPECT_THAT(image, MatEq(values("0 0.25 1 1.25 -0.5")));
}

TEST(MakeInvert, SubtractsBytesFrom255) {
    const cv::Mat image = labels("0 1 128 255");
    EXPECT_THAT(ImageUtils::makeInvert(image), MatEq(labels("255 254 127 0")));
    EXPECT_THAT(image, MatEq(labels("0 1 128 255")));
}

TEST(MakeInvert, ReadsAViewLikeItsCopy) {
    const cv::Mat image = randomFloats(7, 5, 2);
    EXPECT_THAT(ImageUtils::makeInvert(asView(image)), MatEq(ImageUtils::makeInvert(image)));
    const cv::Mat bytes = labels("1 2\n3 4");
    EXPECT_THAT(ImageUtils::makeInvert(asView(bytes)), MatEq(labels("254 253\n252 251")));
}

TEST(MakeInvert, RejectsEveryOtherType) {
    for (const int type : {CV_8UC3, CV_32FC2, CV_32FC3, CV_16UC1, CV_64FC1, CV_8SC1}) {
        EXPECT_THAT([&] { ImageUtils::makeInvert(cv::Mat::zeros(2, 2, type)); },
                    ThrowsMessage<std::runtime_error>(
                        "Unsupported image type for makeInvert. Must be CV_32F or CV_8U."));
    }
}

/// One dilation after another; a pixel is the largest of those under the square, whose anchor is
/// kernel_size / 2, as far as they lie in the image.
cv::Mat plainDilation(const cv::Mat& image, int kernel_size, int iterations) {
    const int before = kernel_size / 2;
    cv::Mat result = image.clone();
    for (int iteration = 0; iteration < iterations; ++iteration) {
        const cv::Mat source = result.clone();
        for (int row = 0; row < source.rows; ++row) {
            for (int col = 0; col < source.cols; ++col) {
                float largest = -std::numeric_limits<float>::max();
                for (int k = 0; k < kernel_size * kernel_size; ++k) {
                    const cv::Point point(col - before + k % kernel_size,
                                          row - before + k / kernel_size);
                    if (!cv::Rect({0, 0}, source.size()).contains(point)) continue;
                    largest = std::max(largest, source.at<float>(point));
                }
                result.at<float>(row, col) = largest;
            }
        }
    }
    return result;
}

TEST(DilateBinary, GrowsASinglePixelToASquare) {
    const cv::Mat image = values("0 0 0 0 0\n0 0 0 0 0\n0 0 1 0 0\n0 0 0 0 0\n0 0 0 0 0");
    EXPECT_THAT(ImageUtils::dilateBinary(image, 3, 1),
                MatEq(values("0 0 0 0 0\n0 1 1 1 0\n0 1 1 1 0\n0 1 1 1 0\n0 0 0 0 0")));
    EXPECT_THAT(ImageUtils::dilateBinary(image, 3, 2), MatEq(values("1 1 1 1 1\n1 1 1 1 1\n"
                                                                    "1 1 1 1 1\n1 1 1 1 1\n"
                                                                    "1 1 1 1 1")));
    EXPECT_EQ(cv::countNonZero(image), 1);
}

TEST(DilateBinary, ClipsTheSquareAtACorner) {
    EXPECT_THAT(ImageUtils::dilateBinary(values("1 0 0 0\n0 0 0 0\n0 0 0 0"), 3, 1),
                MatEq(values("1 1 0 0\n1 1 0 0\n0 0 0 0")));
    EXPECT_THAT(ImageUtils::dilateBinary(values("0 0 0 0\n0 0 0 0\n0 0 0 1"), 3, 1),
                MatEq(values("0 0 0 0\n0 0 1 1\n0 0 1 1")));
}

TEST(DilateBinary, LetsNothingSpreadInFromBeyondTheEdge) {
    const cv::Mat floor = cv::Mat::zeros(6, 5, CV_32FC1);
    EXPECT_THAT(ImageUtils::dilateBinary(floor, 5, 3), MatEq(floor));
    EXPECT_THAT(ImageUtils::dilateBinary(asView(floor), 5, 3), MatEq(floor));
}

TEST(DilateBinary, AgreesWithAPlainLoopOverEveryPixel) {
    for (const auto& [kernel_size, iterations] :
         std::vector<std::pair<int, int>>{{1, 1}, {2, 1}, {3, 1}, {3, 3}, {4, 2}, {5, 2}, {3, 0}}) {
        for (const cv::Size size : {cv::Size(13, 17), cv::Size(9, 1), cv::Size(1, 9)}) {
            const cv::Mat image = randomFloats(size.height, size.width, 3);
            const cv::Mat expected = plainDilation(image, kernel_size, iterations);
            EXPECT_THAT(ImageUtils::dilateBinary(image, kernel_size, iterations), MatEq(expected))
                << kernel_size << " x " << iterations;
            EXPECT_THAT(ImageUtils::dilateBinary(asView(image), kernel_size, iterations),
                        MatEq(expected))
                << kernel_size << " x " << iterations;
        }
    }
}

TEST(DilateBinary, KeepsTheType) {
    EXPECT_THAT(ImageUtils::dilateBinary(labels("0 0 7 0"), 3, 1), MatEq(labels("0 7 7 7")));
    const cv::Mat deep = (cv::Mat_<std::uint16_t>(1, 4) << 0, 0, 0, 1000);
    const cv::Mat expected = (cv::Mat_<std::uint16_t>(1, 4) << 0, 0, 1000, 1000);
    EXPECT_THAT(ImageUtils::dilateBinary(deep, 3, 1), MatEq(expected));
}

TEST(ImageUtils, HandlesASinglePixel) {
    EXPECT_THAT(ImageUtils::makeGray(values("0.5")), MatEq(values("0.5")));
    EXPECT_THAT(ImageUtils::makeBinary(values("0.5"), 0.1, 1.0), MatEq(values("1")));
    EXPECT_THAT(ImageUtils::makeInvert(values("0.25")), MatEq(values("0.75")));
    EXPECT_THAT(ImageUtils::dilateBinary(values("0.25"), 3, 1), MatEq(values("0.25")));
}

}  // namespace
}  // namespace vorund
