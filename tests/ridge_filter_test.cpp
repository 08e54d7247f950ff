#include "vorund/ridge_filter.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/ridge_filter.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"
#include "support/random_images.h"

namespace vorund::test {
namespace {

using RidgeFilter::computeEigenvalues2x2Sorted;
using RidgeFilter::generateBoundaryFromDilated;
using RidgeFilter::generateRidgeMapMeijering;
using RidgeFilter::getCvBorderType;
using RidgeFilter::getGaussianKernel1D;
using ::testing::Not;
using ::testing::Pair;
using ::testing::ThrowsMessage;

Config::GenerateRidgeMapMeijeringConfig settings(const std::vector<double>& sigmas,
                                                 const std::string& mode = "reflect") {
    Config::GenerateRidgeMapMeijeringConfig config;
    config.mode = mode;
    config.sigmas = sigmas;
    return config;
}

std::pair<float, float> eigenvalues(float a, float b, float c) {
    std::pair<float, float> result{-7.0F, -7.0F};
    computeEigenvalues2x2Sorted(a, b, c, result.first, result.second);
    return result;
}

double largest(const cv::Mat& image) {
    double max = 0.0;
    cv::minMaxLoc(image, nullptr, &max);
    return max;
}

/// Two rooms with a door between them, and a corridor that ends at the right edge.
cv::Mat plan() {
    cv::Mat map(40, 60, CV_32FC1, cv::Scalar(1.0));
    map(cv::Rect(3, 4, 20, 20)) = 0.0;
    map(cv::Rect(26, 4, 25, 20)) = 0.0;
    map(cv::Rect(23, 12, 3, 4)) = 0.0;
    map(cv::Rect(10, 24, 4, 8)) = 0.0;
    map(cv::Rect(10, 30, 50, 4)) = 0.0;
    return map;
}

// getCvBorderType

TEST(GetCvBorderType, GivesOpenCvsConstantForEachName) {
    const StderrCapture errors;
    EXPECT_EQ(getCvBorderType("reflect"), 4);
    EXPECT_EQ(getCvBorderType("mirror"), 2);
    EXPECT_EQ(getCvBorderType("constant"), 0);
    EXPECT_EQ(getCvBorderType("nearest"), 1);
    EXPECT_EQ(getCvBorderType("wrap"), 3);
    EXPECT_EQ(errors.text(), "");
}

TEST(GetCvBorderType, WarnsOfAnUnknownNameAndReflects) {
    const StderrCapture errors;
    EXPECT_EQ(getCvBorderType("Reflect"), 4);
    EXPECT_EQ(errors.text(), "Warning: Unknown border mode 'Reflect', using BORDER_DEFAULT.\n");
}

TEST(GetCvBorderType, TakesAnEmptyOrPaddedNameForUnknown) {
    const StderrCapture errors;
    EXPECT_EQ(getCvBorderType(""), 4);
    EXPECT_EQ(getCvBorderType("wrap "), 4);
    EXPECT_EQ(errors.text(),
              "Warning: Unknown border mode '', using BORDER_DEFAULT.\n"
              "Warning: Unknown border mode 'wrap ', using BORDER_DEFAULT.\n");
}

// getGaussianKernel1D

TEST(GetGaussianKernel1D, TakesItsLengthFromSigmaAlone) {
    EXPECT_EQ(getGaussianKernel1D(7, 1.0, 0).size(), cv::Size(1, 201));
    EXPECT_EQ(getGaussianKernel1D(0, 2.0, 0).size(), cv::Size(1, 33));
    EXPECT_EQ(getGaussianKernel1D(99, 2.0, 1).size(), cv::Size(1, 33));
    EXPECT_EQ(getGaussianKernel1D(-1, 2.0, 2).size(), cv::Size(1, 33));
    EXPECT_EQ(getGaussianKernel1D(0, 2.0, 0).type(), CV_32FC1);
}

TEST(GetGaussianKernel1D, TruncatesTheRadiusAndGivesSmallSigmasALongerTail) {
    EXPECT_EQ(getGaussianKernel1D(0, 1.3, 0).rows, 2 * 10 + 1);  // 10.4
    EXPECT_EQ(getGaussianKernel1D(0, 1.9, 0).rows, 2 * 15 + 1);  // 15.2
    EXPECT_EQ(getGaussianKernel1D(0, 1.001, 0).rows, 2 * 8 + 1);
    EXPECT_EQ(getGaussianKernel1D(0, 0.999, 0).rows, 2 * 99 + 1);
    EXPECT_EQ(getGaussianKernel1D(0, 0.5, 0).rows, 2 * 50 + 1);
}

TEST(GetGaussianKernel1D, SamplesTheGaussianWithoutNormalisingTheSum) {
    const cv::Mat_<float> kernel = getGaussianKernel1D(0, 2.0, 0);
    const double centre = 1.0 / (2.0 * std::sqrt(2.0 * CV_PI));
    EXPECT_FLOAT_EQ(kernel(16), static_cast<float>(centre));
    EXPECT_FLOAT_EQ(kernel(16 + 2), static_cast<float>(centre * std::exp(-0.5)));
    EXPECT_FLOAT_EQ(kernel(16 - 4), static_cast<float>(centre * std::exp(-2.0)));
    // A sum of 1 could not have a single entry above 1.
    const cv::Mat_<float> narrow = getGaussianKernel1D(0, 0.3, 0);
    EXPECT_FLOAT_EQ(narrow(30), static_cast<float>(1.0 / (0.3 * std::sqrt(2.0 * CV_PI))));
    EXPECT_GT(narrow(30), 1.3F);
}

TEST(GetGaussianKernel1D, IsAntisymmetricForTheFirstDerivative) {
    const cv::Mat_<float> kernel = getGaussianKernel1D(0, 2.0, 1);
    EXPECT_GT(kernel(15), 0.0F);
    EXPECT_LT(kernel(17), 0.0F);
    EXPECT_EQ(kernel(16), 0.0F);
    for (int x = 1; x <= 16; ++x) EXPECT_EQ(kernel(16 + x), -kernel(16 - x)) << "x = " << x;
    const double expected = -2.0 / 4.0 * std::exp(-0.5) / (2.0 * std::sqrt(2.0 * CV_PI));
    EXPECT_FLOAT_EQ(kernel(18), static_cast<float>(expected));
}

TEST(GetGaussianKernel1D, ChangesSignAtOneSigmaForTheSecondDerivative) {
    const cv::Mat_<float> kernel = getGaussianKernel1D(0, 2.0, 2);
    const double norm = 1.0 / (2.0 * std::sqrt(2.0 * CV_PI));
    EXPECT_FLOAT_EQ(kernel(16), static_cast<float>(-norm / 4.0));
    EXPECT_EQ(kernel(18), 0.0F);
    EXPECT_FLOAT_EQ(kernel(20), static_cast<float>((16.0 - 4.0) / 16.0 * norm * std::exp(-2.0)));
    EXPECT_EQ(kernel(12), kernel(20));
}

TEST(GetGaussianKernel1D, IsZeroForAnyOtherOrder) {
    const cv::Mat zeros = cv::Mat::zeros(33, 1, CV_32FC1);
    EXPECT_THAT(getGaussianKernel1D(0, 2.0, 3), MatEq(zeros));
    EXPECT_THAT(getGaussianKernel1D(0, 2.0, -1), MatEq(zeros));
}

TEST(GetGaussianKernel1D, AgreesWithThePlainVersion) {
    for (const double sigma : {0.3, 0.70710678, 1.0, 1.4142135, 2.0, 3.3, 7.0}) {
        for (const int order : {0, 1, 2, 3}) {
            EXPECT_THAT(getGaussianKernel1D(0, sigma, order),
                        MatEq(reference::gaussianKernel(sigma, order)))
                << "sigma " << sigma << ", order " << order;
        }
    }
}

// computeEigenvalues2x2Sorted

TEST(ComputeEigenvalues2x2Sorted, GivesTheLargerOneFirst) {
    EXPECT_THAT(eigenvalues(1.0F, 0.0F, 3.0F), Pair(3.0F, 1.0F));
    EXPECT_THAT(eigenvalues(3.0F, 0.0F, 1.0F), Pair(3.0F, 1.0F));
    EXPECT_THAT(eigenvalues(-1.0F, 0.0F, -3.0F), Pair(-1.0F, -3.0F));
}

TEST(ComputeEigenvalues2x2Sorted, GivesADoubleEigenvalueTwice) {
    EXPECT_THAT(eigenvalues(2.0F, 0.0F, 2.0F), Pair(2.0F, 2.0F));
    EXPECT_THAT(eigenvalues(0.0F, 0.0F, 0.0F), Pair(0.0F, 0.0F));
}

TEST(ComputeEigenvalues2x2Sorted, TakesTheOffDiagonalEntryTwice) {
    EXPECT_THAT(eigenvalues(0.0F, 1.0F, 0.0F), Pair(1.0F, -1.0F));
    // Trace 7, determinant 6.
    EXPECT_THAT(eigenvalues(2.0F, 2.0F, 5.0F), Pair(6.0F, 1.0F));
    EXPECT_THAT(eigenvalues(5.0F, -2.0F, 2.0F), Pair(6.0F, 1.0F));
}

// generateRidgeMapMeijering

TEST(GenerateRidgeMapMeijering, RespondsInTheMiddleOfADarkLine) {
    cv::Mat map(41, 41, CV_32FC1, cv::Scalar(1.0));
    map.col(20) = 0.0;
    const cv::Mat_<float> ridges = generateRidgeMapMeijering(map, settings({2.0}));
    EXPECT_EQ(ridges.size(), map.size());
    for (int row = 0; row < ridges.rows; ++row) {
        EXPECT_NEAR(ridges(row, 20), 1.0, 1e-4) << "row " << row;
        EXPECT_LT(ridges(row, 19), ridges(row, 20));
        EXPECT_LT(ridges(row, 21), ridges(row, 20));
        EXPECT_LT(ridges(row, 5), 1e-4F);
    }
}

TEST(GenerateRidgeMapMeijering, IsZeroInTheMiddleOfABrightLine) {
    cv::Mat map = cv::Mat::zeros(41, 41, CV_32FC1);
    map.row(20) = 1.0;
    const cv::Mat ridges = generateRidgeMapMeijering(map, settings({2.0}));
    EXPECT_THAT(ridges.row(20), MatEq(cv::Mat::zeros(1, 41, CV_32FC1)));
    EXPECT_NEAR(largest(ridges), 1.0, 1e-6);  // On the slopes at its sides.
}

TEST(GenerateRidgeMapMeijering, IsZeroForAnEmptyFloor) {
    const cv::Mat map = cv::Mat::zeros(20, 30, CV_32FC1);
    EXPECT_THAT(generateRidgeMapMeijering(map, settings({1.0, 2.0})), MatEq(map));
}

TEST(GenerateRidgeMapMeijering, IsZeroWithoutAPositiveScale) {
    const cv::Mat zeros = cv::Mat::zeros(40, 60, CV_32FC1);
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({})), MatEq(zeros));
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({0.0, -2.0})), MatEq(zeros));
}

TEST(GenerateRidgeMapMeijering, SkipsScalesThatAreNotPositive) {
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({-1.0, 2.0, 0.0})),
                MatEq(generateRidgeMapMeijering(plan(), settings({2.0}))));
}

TEST(GenerateRidgeMapMeijering, ScalesEachResponseToOneAndTakesTheLargest) {
    const cv::Mat fine = generateRidgeMapMeijering(plan(), settings({1.5}));
    const cv::Mat coarse = generateRidgeMapMeijering(plan(), settings({4.0}));
    EXPECT_NEAR(largest(fine), 1.0, 1e-6);
    EXPECT_NEAR(largest(coarse), 1.0, 1e-6);
    const cv::Mat both = cv::max(fine, coarse);
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({1.5, 4.0})), MatEq(both));
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({4.0, 1.5})), MatEq(both));
    EXPECT_THAT(both, Not(MatEq(fine)));
    EXPECT_THAT(both, Not(MatEq(coarse)));
}

TEST(GenerateRidgeMapMeijering, TreatsBytesOf255LikeFloatsOfOne) {
    cv::Mat bytes;
    plan().convertTo(bytes, CV_8U, 255.0);
    EXPECT_THAT(generateRidgeMapMeijering(bytes, settings({2.0})),
                MatEq(generateRidgeMapMeijering(plan(), settings({2.0}))));
}

TEST(GenerateRidgeMapMeijering, TakesOtherDepthsAsTheyAre) {
    for (const int depth : {CV_16U, CV_32S, CV_64F}) {
        cv::Mat map;
        plan().convertTo(map, depth);
        EXPECT_THAT(generateRidgeMapMeijering(map, settings({2.0})),
                    MatEq(generateRidgeMapMeijering(plan(), settings({2.0}))))
            << cv::depthToString(depth);
    }
}

TEST(GenerateRidgeMapMeijering, HandlesTheEdgeByItsMode) {
    const std::vector<std::pair<std::string, int>> borders{
        {"reflect", 4}, {"mirror", 2}, {"constant", 0}, {"nearest", 1}};
    for (const auto& [mode, border] : borders) {
        EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({2.0}, mode)),
                    MatEq(reference::ridgeMap(plan(), {2.0}, border)))
            << mode;
    }
    // The corridor meets the edge, so the modes can be told apart.
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({2.0}, "mirror")),
                Not(MatEq(generateRidgeMapMeijering(plan(), settings({2.0}, "reflect")))));
}

TEST(GenerateRidgeMapMeijering, ThrowsOpenCvsErrorForTheWrapMode) {
    EXPECT_THROW(generateRidgeMapMeijering(plan(), settings({2.0}, "wrap")), cv::Exception);
}

TEST(GenerateRidgeMapMeijering, WarnsOnceOfAnUnknownModeAndReflects) {
    const cv::Mat reflected = generateRidgeMapMeijering(plan(), settings({2.0, 3.0}));
    const StderrCapture errors;
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({2.0, 3.0}, "blur")), MatEq(reflected));
    EXPECT_EQ(errors.text(), "Warning: Unknown border mode 'blur', using BORDER_DEFAULT.\n");
}

TEST(GenerateRidgeMapMeijering, WarnsOfAnUnknownModeEvenWithoutAScale) {
    const StderrCapture errors;
    generateRidgeMapMeijering(plan(), settings({}, "blur"));
    EXPECT_EQ(errors.text(), "Warning: Unknown border mode 'blur', using BORDER_DEFAULT.\n");
}

TEST(GenerateRidgeMapMeijering, LeavesItsInputAsItIs) {
    const cv::Mat map = plan();
    const cv::Mat ridges = generateRidgeMapMeijering(map, settings({2.0}));
    EXPECT_THAT(map, MatEq(plan()));
    EXPECT_NE(ridges.data, map.data);
}

TEST(GenerateRidgeMapMeijering, DoesNotSeeWhatLiesAroundAView) {
    cv::Mat bytes;
    plan().convertTo(bytes, CV_8U, 255.0);
    const cv::Mat expected = generateRidgeMapMeijering(plan(), settings({2.0}));
    EXPECT_THAT(generateRidgeMapMeijering(asView(plan()), settings({2.0})), MatEq(expected));
    EXPECT_THAT(generateRidgeMapMeijering(asView(bytes), settings({2.0})), MatEq(expected));
}

TEST(GenerateRidgeMapMeijering, GivesTheSameBytesOnASecondRun) {
    const cv::Mat first = generateRidgeMapMeijering(plan(), settings({1.0, 2.0}));
    EXPECT_THAT(generateRidgeMapMeijering(plan(), settings({1.0, 2.0})), MatEq(first));
}

TEST(GenerateRidgeMapMeijering, AgreesWithThePlainVersionOnRandomImages) {
    RandomImages random(51);
    for (int run = 0; run < 150; ++run) {
        const cv::Size size = random.size(24);
        const cv::Mat image = run % 2 == 0 ? random.floats(size, 2) : random.floats(size, 5);
        const std::vector<double> sigmas{0.5 + random.below(8) * 0.5, 2.0};
        ASSERT_THAT(generateRidgeMapMeijering(image, settings(sigmas, "nearest")),
                    MatEq(reference::ridgeMap(image, sigmas, cv::BORDER_REPLICATE)))
            << "run " << run;
        ASSERT_THAT(generateRidgeMapMeijering(image, settings(sigmas)),
                    MatEq(reference::ridgeMap(image, sigmas, cv::BORDER_REFLECT_101)))
            << "run " << run;
    }
}

TEST(GenerateRidgeMapMeijering, AgreesWithThePlainVersionOnHighImages) {
    // Several bands of rows, whatever the scale; the last one of a single row or of many.
    RandomImages random(55);
    const std::vector<std::pair<std::string, int>> borders{
        {"reflect", 4}, {"mirror", 2}, {"constant", 0}, {"nearest", 1}};
    for (const int rows : {184, 185, 369, 800}) {
        cv::Mat walls = random.patches(cv::Size(50, rows), 12, 0) > 0;
        walls.setTo(0, random.patches(walls.size(), 5, 0) > 0);
        cv::Mat map;
        walls.convertTo(map, CV_32F, 1.0 / 255.0);
        for (const auto& [mode, border] : borders) {
            const std::vector<double> sigmas{2.0, 0.7, 3.1};
            ASSERT_THAT(generateRidgeMapMeijering(map, settings(sigmas, mode)),
                        MatEq(reference::ridgeMap(map, sigmas, border)))
                << rows << " rows, " << mode;
        }
    }
}

TEST(GenerateRidgeMapMeijering, AgreesWithThePlainVersionAtScalesWithLongTailsOfZeros) {
    // The kernels reach 100 scales far, but are zero in single precision from about 14 on.
    RandomImages random(56);
    for (const double sigma : {0.01, 0.05, 0.1, 0.2, 0.3, 0.5, 0.8, 1.0, 1.2, 1.4142}) {
        for (const int values_count : {2, 1000}) {
            const cv::Mat image = random.floats(cv::Size(61, 47), values_count) - 0.25;
            ASSERT_THAT(generateRidgeMapMeijering(image, settings({sigma})),
                        MatEq(reference::ridgeMap(image, {sigma}, cv::BORDER_REFLECT_101)))
                << "sigma " << sigma << ", " << values_count << " values";
        }
        ASSERT_THAT(generateRidgeMapMeijering(plan(), settings({sigma})),
                    MatEq(reference::ridgeMap(plan(), {sigma}, cv::BORDER_REFLECT_101)))
            << "sigma " << sigma;
    }
}

TEST(GenerateRidgeMapMeijering, AgreesWithThePlainVersionOnGeneratedPlans) {
    for (const std::uint64_t seed : {11U, 12U}) {
        PlanOptions options;
        options.seed = seed;
        options.furniture_percent = seed == 12 ? 50 : 0;
        const cv::Mat walls = makePlan(options).map != kMapFree;
        EXPECT_THAT(generateRidgeMapMeijering(walls, settings({2.0})),
                    MatEq(reference::ridgeMap(walls, {2.0}, cv::BORDER_REFLECT_101)))
            << "seed " << seed;
        EXPECT_THAT(generateBoundaryFromDilated(walls), MatEq(reference::boundaryMap(walls)))
            << "seed " << seed;
    }
}

TEST(GenerateRidgeMapMeijering, AgreesWithThePlainVersionOnASinglePixelRowAndColumn) {
    RandomImages random(52);
    for (const cv::Size& size : {cv::Size(1, 1), cv::Size(30, 1), cv::Size(1, 30)}) {
        const cv::Mat bytes = random.bytes(size, 256);
        EXPECT_THAT(generateRidgeMapMeijering(bytes, settings({2.0})),
                    MatEq(reference::ridgeMap(bytes, {2.0}, cv::BORDER_REFLECT_101)))
            << size;
    }
}

TEST(GenerateRidgeMapMeijering, StaysBetweenZeroAndOneOnALargerImage) {
    RandomImages random(53);
    const cv::Mat image = random.bytes(cv::Size(310, 205), 2) * 255;
    const cv::Mat ridges = generateRidgeMapMeijering(image, settings({2.0, 5.0}));
    EXPECT_THAT(ridges, MatEq(reference::ridgeMap(image, {2.0, 5.0}, cv::BORDER_REFLECT_101)));
    EXPECT_TRUE(cv::checkRange(ridges, true, nullptr, 0.0, 1.000001));
}

// generateBoundaryFromDilated

TEST(GenerateBoundaryFromDilated, IsThePerimeterOfASquare) {
    EXPECT_THAT(generateBoundaryFromDilated(values(". . . . . . .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". . . . . . .")),
                MatEq(values(". . . . . . .\n"
                             ". 1 1 1 1 1 .\n"
                             ". 1 . . . 1 .\n"
                             ". 1 . . . 1 .\n"
                             ". 1 . . . 1 .\n"
                             ". 1 1 1 1 1 .\n"
                             ". . . . . . .")));
}

TEST(GenerateBoundaryFromDilated, MakesNoBoundaryAtTheEdgeOfTheImage) {
    EXPECT_THAT(generateBoundaryFromDilated(values(". 1 1 1 1 1 .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". 1 1 1 1 1 .\n"
                                                   ". . . . . . .")),
                MatEq(values(". 1 . . . 1 .\n"
                             ". 1 . . . 1 .\n"
                             ". 1 1 1 1 1 .\n"
                             ". . . . . . .")));
}

TEST(GenerateBoundaryFromDilated, CountsDiagonalNeighbours) {
    EXPECT_THAT(generateBoundaryFromDilated(values("1 1 1 1\n"
                                                   "1 1 1 1\n"
                                                   "1 1 1 .")),
                MatEq(values(". . . .\n"
                             ". . 1 1\n"
                             ". . 1 .")));
}

TEST(GenerateBoundaryFromDilated, NeedsAStepOfMoreThanAHalf) {
    EXPECT_THAT(generateBoundaryFromDilated(values("0.5 . 0.51 . 1 0.5 1")),
                MatEq(values(". . 1 . 1 . .")));
}

TEST(GenerateBoundaryFromDilated, ScalesBytesAndOnlyBytes) {
    EXPECT_THAT(generateBoundaryFromDilated(labels("255 . 128 . 127 . 1")),
                MatEq(values("1 . 1 . . . .")));
    EXPECT_THAT(generateBoundaryFromDilated(labels32("1 . 2 1 1 .")), MatEq(values("1 . 1 . 1 .")));
}

TEST(GenerateBoundaryFromDilated, IsZeroForASinglePixelAndForUniformMaps) {
    EXPECT_THAT(generateBoundaryFromDilated(values("1")), MatEq(values(".")));
    EXPECT_THAT(generateBoundaryFromDilated(values("1 1 1")), MatEq(values(". . .")));
    EXPECT_THAT(generateBoundaryFromDilated(values(".\n.")), MatEq(values(".\n.")));
}

TEST(GenerateBoundaryFromDilated, RejectsAnEmptyImage) {
    EXPECT_THAT(
        [] { generateBoundaryFromDilated(cv::Mat()); },
        ThrowsMessage<std::runtime_error>("generateBoundaryFromDilated: Input image is empty"));
}

TEST(GenerateBoundaryFromDilated, LeavesItsInputAsItIsAndDoesNotSeeAroundAView) {
    const cv::Mat view = asView(plan());
    EXPECT_THAT(generateBoundaryFromDilated(view), MatEq(generateBoundaryFromDilated(plan())));
    EXPECT_THAT(view, MatEq(plan()));
}

TEST(GenerateBoundaryFromDilated, AgreesWithThePlainVersionOnRandomImages) {
    RandomImages random(54);
    for (int run = 0; run < 300; ++run) {
        const cv::Size size = random.size(12);
        const cv::Mat image = run % 3 == 0   ? random.floats(size, 2)
                              : run % 3 == 1 ? random.floats(size, 9)
                                             : random.bytes(size, 256);
        ASSERT_THAT(generateBoundaryFromDilated(image), MatEq(reference::boundaryMap(image)))
            << "run " << run;
        ASSERT_THAT(generateBoundaryFromDilated(asView(image)),
                    MatEq(reference::boundaryMap(image)))
            << "run " << run;
    }
}

}  // namespace
}  // namespace vorund::test
