#include "scale_space/blurred_threshold.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "scale_space/binary_maps.h"
#include "support/mat_matchers.h"

namespace vorund::internal {
namespace {

using test::MatEq;

cv::Mat drawn(const PixelRuns& runs, const cv::Size& size) {
    cv::Mat image = cv::Mat::zeros(size, CV_8UC1);
    for (int row = 0; row < runs.rows(); ++row) {
        for (std::size_t i = runs.rowBegin(row); i < runs.rowBegin(row + 1); ++i) {
            image.row(row).colRange(runs[i].begin, runs[i].end) = 255;
        }
    }
    return image;
}

/// The pixels that a threshold of OpenCV's own blur leaves.
cv::Mat expected(const cv::Mat& walls, double sigma, double threshold) {
    cv::Mat blurred;
    cv::GaussianBlur(walls, blurred, cv::Size(0, 0), sigma, 0.0, cv::BORDER_REPLICATE);
    cv::Mat above;
    cv::threshold(blurred, above, threshold, 1.0, cv::THRESH_BINARY);
    return above == 0.0;
}

TEST(BlurredThreshold, LeavesThePixelsOfAWholeBlur) {
    for (const test::BinaryMap& map : test::binaryMaps()) {
        SCOPED_TRACE(map.name);
        for (const double threshold : {0.04, 0.01, 0.1, 0.5, 0.93}) {
            BlurredThreshold blurred(map.walls, threshold);
            for (const double sigma : {1.0, 3.0, 4.0, 5.3, 8.0, 9.0, 16.0, 17.7, 40.0}) {
                ASSERT_THAT(drawn(blurred.atMostThreshold(sigma), map.walls.size()),
                            MatEq(expected(map.walls, sigma, threshold)))
                    << "sigma " << sigma << " threshold " << threshold;
            }
        }
    }
}

TEST(BlurredThreshold, TakesThresholdsThatBoundsCannotServe) {
    const cv::Mat walls = test::wallsOfPlan(4, 20, 10, 0);
    for (const double threshold :
         {-0.5, 0.0, 1e-6, 1.0 - 1e-6, 1.0, 2.0, std::numeric_limits<double>::quiet_NaN()}) {
        BlurredThreshold blurred(walls, threshold);
        for (const double sigma : {2.0, 6.0, 12.0}) {
            ASSERT_THAT(drawn(blurred.atMostThreshold(sigma), walls.size()),
                        MatEq(expected(walls, sigma, threshold)))
                << "sigma " << sigma << " threshold " << threshold;
        }
    }
}

TEST(BlurredThreshold, CountsAValueEqualToTheThresholdAsBelow) {
    // Along a straight wall whole rows have the same value, up to rounding.
    cv::Mat walls = cv::Mat::zeros(160, 200, CV_32FC1);
    walls.rowRange(0, 40) = 1.0F;
    for (const double sigma : {5.0, 9.0, 18.0}) {
        cv::Mat blurred;
        gaussianBlur(walls, blurred, sigma);
        for (const int row : {45, 52, 60}) {
            const auto threshold = static_cast<double>(blurred.at<float>(row, 90));
            EXPECT_THAT(
                drawn(BlurredThreshold(walls, threshold).atMostThreshold(sigma), walls.size()),
                MatEq(expected(walls, sigma, threshold)))
                << "sigma " << sigma << " row " << row;
        }
    }
}

TEST(BlurredThreshold, RefusesASigmaThatOpenCvRefuses) {
    const cv::Mat walls = test::wallsOfPlan(1, 0, 0, 0);
    BlurredThreshold blurred(walls, 0.04);
    EXPECT_THROW(blurred.atMostThreshold(0.0), cv::Exception);
    EXPECT_THROW(blurred.atMostThreshold(-3.0), cv::Exception);
}

TEST(BlurredThreshold, LeavesThePixelsOfAWholeBlurOnRandomMaps) {
    test::RandomImages random(31);
    for (int i = 0; i < 300; ++i) {
        const cv::Size size(1 + random.below(90), 1 + random.below(90));
        const cv::Mat walls = i % 3 == 0 ? test::noise(random, size, 2 + random.below(200))
                                         : test::randomPatches(random, size);
        const double sigma = 4.0 + 0.1 * random.below(200);
        const double threshold = 0.005 + 0.001 * random.below(120);
        ASSERT_THAT(drawn(BlurredThreshold(walls, threshold).atMostThreshold(sigma), size),
                    MatEq(expected(walls, sigma, threshold)))
            << "map " << i << " sigma " << sigma << " threshold " << threshold;
    }
}

}  // namespace
}  // namespace vorund::internal
