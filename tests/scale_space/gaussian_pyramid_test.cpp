#include "scale_space/gaussian_pyramid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "scale_space/binary_maps.h"
#include "scale_space/interpolation.h"

namespace vorund::internal {
namespace {

double normal(double x, double sigma) {
    return std::exp(-0.5 * x * x / (sigma * sigma)) / (sigma * std::sqrt(2.0 * CV_PI));
}

/// The sum of Gaussian weights of all wall pixels around a pixel, as far as they count in double
/// precision; edge pixels repeated.
double trueBlur(const cv::Mat& walls, int row, int col, double sigma) {
    const int reach = static_cast<int>(std::ceil(8.0 * sigma));
    const auto weights = [&](int centre, int length) {
        std::vector<double> of(static_cast<std::size_t>(length), 0.0);
        for (int x = centre - reach; x <= centre + reach; ++x) {
            of[static_cast<std::size_t>(std::clamp(x, 0, length - 1))] += normal(x - centre, sigma);
        }
        return of;
    };
    const std::vector<double> of_rows = weights(row, walls.rows);
    const std::vector<double> of_cols = weights(col, walls.cols);
    double sum = 0.0;
    for (int y = 0; y < walls.rows; ++y) {
        for (int x = 0; x < walls.cols; ++x) {
            if (walls.at<float>(y, x) == 0.0F) continue;
            sum += of_rows[static_cast<std::size_t>(y)] * of_cols[static_cast<std::size_t>(x)];
        }
    }
    return sum;
}

TEST(CoarsestLevel, HasNodesNoFurtherApartThanHalfOfSigma) {
    EXPECT_EQ(coarsestLevel(1.0), 0);
    EXPECT_EQ(coarsestLevel(3.99), 0);
    EXPECT_EQ(coarsestLevel(4.0), 1);
    EXPECT_EQ(coarsestLevel(7.9), 1);
    EXPECT_EQ(coarsestLevel(8.0), 2);
    EXPECT_EQ(coarsestLevel(80.0), 5);
    EXPECT_EQ(coarsestLevel(std::nan("")), 0);
}

TEST(GaussianPyramid, HoldsTheBlurredMapAtItsNodes) {
    for (const test::BinaryMap& map : test::binaryMaps()) {
        SCOPED_TRACE(map.name);
        GaussianPyramid pyramid(map.walls);
        for (const double sigma : {4.0, 6.5, 8.0, 15.0, 16.0, 33.0}) {
            const int level = coarsestLevel(sigma);
            const int spacing = 1 << level;
            const cv::Mat& nodes = pyramid.blurred(sigma, level);
            for (int row = 0; row < map.walls.rows; row += 3 * spacing) {
                for (int col = 0; col < map.walls.cols; col += 3 * spacing) {
                    const float value = nodes.at<float>(row / spacing + GaussianPyramid::kMargin,
                                                        col / spacing + GaussianPyramid::kMargin);
                    ASSERT_NEAR(static_cast<double>(value), trueBlur(map.walls, row, col, sigma),
                                4e-6)
                        << "sigma " << sigma << " row " << row << " col " << col;
                }
            }
        }
    }
}

TEST(GaussianPyramid, KeepsTheMarginThatInterpolationNeedsAroundTheMap) {
    GaussianPyramid pyramid(test::wallsOfPlan(1, 0, 0, 0).colRange(0, 101).rowRange(0, 64).clone());
    const cv::Mat& nodes = pyramid.blurred(8.0, 2);
    // Columns 0 to 100 lie on nodes 0 to 25, and one more closes the last cell.
    EXPECT_EQ(nodes.cols, 27 + 2 * GaussianPyramid::kMargin);
    // Rows 0 to 63: the last lies between nodes 15 and 16.
    EXPECT_EQ(nodes.rows, 17 + 2 * GaussianPyramid::kMargin);
}

TEST(Interpolation, IsExactAtTheNodesAndSumsToOne) {
    const InterpolationWeights at_node = interpolationWeights(0.0);
    for (std::size_t i = 0; i < at_node.size(); ++i) {
        EXPECT_EQ(at_node[i], i == 4 ? 1.0F : 0.0F);
    }
    for (const double point : {0.125, 0.5, 0.75}) {
        double sum = 0.0;
        for (const float weight : interpolationWeights(point)) sum += static_cast<double>(weight);
        EXPECT_NEAR(sum, 1.0, 1e-6);
    }
}

/// The most that interpolation can be off for an image of values from 0 to 1: the values that add
/// where the interpolated weights exceed the Gaussian's own.
double worstError(double sigma, double point) {
    const InterpolationWeights weights = interpolationWeights(point);
    constexpr double kStep = 0.01;
    double positive = 0.0;
    for (double x = -12.0 * sigma; x <= 12.0 * sigma; x += kStep) {
        double difference = -normal(x - point, sigma);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            difference +=
                static_cast<double>(weights[i]) * normal(x - (static_cast<double>(i) - 4.0), sigma);
        }
        positive += std::max(difference, 0.0) * kStep;
    }
    return positive;
}

TEST(InterpolationError, BoundsBothDirectionsTogether) {
    for (const double sigma : {2.0, 2.1, 2.25, 2.5, 2.75, 3.0, 3.5, 3.99}) {
        for (const double point : {0.25, 0.5}) {
            const double along_rows = worstError(sigma, point);
            double sum_of_weights = 0.0;
            for (const float weight : interpolationWeights(point)) {
                sum_of_weights += std::abs(static_cast<double>(weight));
            }
            // Single precision of the weights adds a little of its own.
            EXPECT_LE(along_rows * (1.0 + sum_of_weights), interpolationError(sigma) + 1e-6)
                << "sigma " << sigma << " point " << point;
        }
    }
}

}  // namespace
}  // namespace vorund::internal
