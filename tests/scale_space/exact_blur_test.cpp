#include "scale_space/exact_blur.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "scale_space/binary_maps.h"
#include "support/label_grid.h"

namespace vorund::internal {
namespace {

using ::testing::ElementsAre;

std::vector<int> stepsOf(const RowSteps& steps, int row) {
    return {steps.begin(row), steps.end(row)};
}

TEST(RowSteps, AreTheColumnsThatDifferFromTheOneBefore) {
    const RowSteps steps(
        test::labels("1 1 . . . . . . . . . 1\n"
                     ". . . . . . . . . . . .\n"
                     ". 1 . 1 1 1 1 1 1 1 1 1"));
    EXPECT_THAT(stepsOf(steps, 0), ElementsAre(2, 11));
    EXPECT_THAT(stepsOf(steps, 1), ElementsAre());
    EXPECT_THAT(stepsOf(steps, 2), ElementsAre(1, 2, 3));
}

TEST(Corners, GiveTheMapBackWhenTheyAreSummedUp) {
    test::RandomImages random(6);
    for (int i = 0; i < 200; ++i) {
        const cv::Mat image = random.bytes({1 + random.below(90), 1 + random.below(70)}, 2);
        const Corners corners(image);
        // A corner changes all pixels below and right of it, on top of first row and column.
        cv::Mat_<double> sums(image.size(), 0.0);
        corners.visitTiles(cv::Rect(cv::Point(0, 0), image.size()), [&](const Corner& corner) {
            sums(cv::Rect(cv::Point(corner.col, corner.row), cv::Point(image.cols, image.rows))) +=
                corner.change;
        });
        for (int row = 0; row < image.rows; ++row) {
            for (int col = 0; col < image.cols; ++col) {
                const int expected = image.at<uchar>(row, col) - image.at<uchar>(0, col) -
                                     image.at<uchar>(row, 0) + image.at<uchar>(0, 0);
                ASSERT_EQ(sums(row, col), expected);
            }
        }
    }
}

TEST(ExactBlur, GivesTheAnswersOfABlurOfTheWholeMap) {
    test::RandomImages random(7);
    for (const test::BinaryMap& map : test::binaryMaps()) {
        if (map.walls.rows == 1 || map.walls.cols == 1) continue;
        SCOPED_TRACE(map.name);
        const BinaryEdges edges(map.walls);
        for (const double sigma : {1.0, 2.5, 4.0, 9.7, 21.0}) {
            cv::Mat blurred;
            gaussianBlur(map.walls, blurred, sigma);
            ExactBlur exact(edges, sigma, 0.04F);
            for (int i = 0; i < 60; ++i) {
                const int row = random.below(map.walls.rows);
                const int col = random.below(map.walls.cols);
                ASSERT_EQ(exact.isAtMostThreshold(row, col), blurred.at<float>(row, col) <= 0.04F)
                    << "sigma " << sigma << " row " << row << " col " << col;
            }
        }
    }
}

TEST(ExactBlur, DecidesTiesAsABlurOfTheWholeMap) {
    test::RandomImages random(8);
    for (const test::BinaryMap& map : test::binaryMaps()) {
        if (map.walls.rows == 1 || map.walls.cols == 1) continue;
        SCOPED_TRACE(map.name);
        const BinaryEdges edges(map.walls);
        for (const double sigma : {1.0, 4.0, 11.3}) {
            cv::Mat blurred;
            gaussianBlur(map.walls, blurred, sigma);
            for (int i = 0; i < 20; ++i) {
                const int row = random.below(map.walls.rows);
                const int col = random.below(map.walls.cols);
                const float value = blurred.at<float>(row, col);
                EXPECT_TRUE(ExactBlur(edges, sigma, value).isAtMostThreshold(row, col));
                const float below = std::nextafter(value, -1.0F);
                EXPECT_FALSE(ExactBlur(edges, sigma, below).isAtMostThreshold(row, col));
            }
        }
    }
}

}  // namespace
}  // namespace vorund::internal
