#include "cleaning/wall_continuation.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vorund::rooms {
namespace {

constexpr double kRightAngle = CV_PI / 2.0;

PartShape shapeOf(const cv::Rect& box) {
    PartShape shape;
    for (int row = box.y; row < box.y + box.height; ++row) {
        shape.add(row, {box.x, box.x + box.width});
    }
    return shape;
}

TEST(PartShape, KnowsCentreAndAngleOfABar) {
    const PartShape lying = shapeOf({10, 20, 11, 3});
    EXPECT_DOUBLE_EQ(lying.centre().x, 15.0);
    EXPECT_DOUBLE_EQ(lying.centre().y, 21.0);
    EXPECT_NEAR(lying.angle(), 0.0, 1e-9);
    const PartShape standing = shapeOf({10, 20, 2, 9});
    EXPECT_DOUBLE_EQ(standing.centre().x, 10.5);
    EXPECT_DOUBLE_EQ(standing.centre().y, 24.0);
    EXPECT_NEAR(std::abs(standing.angle()), kRightAngle, 1e-9);
}

TEST(PartShape, KnowsTheAngleOfASlantedRow) {
    PartShape falling;
    PartShape rising;
    for (int i = 0; i < 9; ++i) {
        falling.add(30 + i, {40 + i, 41 + i});
        rising.add(30 + i, {40 - i, 41 - i});
    }
    EXPECT_NEAR(falling.angle(), CV_PI / 4.0, 1e-9) << "clockwise, rows go down";
    EXPECT_NEAR(rising.angle(), -CV_PI / 4.0, 1e-9);
}

TEST(PartShape, ComparesLengthWithThickness) {
    // A row of n pixels has the variance (n^2 - 1) / 12; one row counts as wide as a pixel.
    EXPECT_NEAR(shapeOf({5, 5, 7, 1}).elongation(), std::sqrt(48.0), 1e-9);
    EXPECT_NEAR(shapeOf({5, 5, 1, 7}).elongation(), std::sqrt(48.0), 1e-9);
    EXPECT_NEAR(shapeOf({5, 5, 9, 3}).elongation(), std::sqrt(80.0 / 8.0), 1e-9);
    EXPECT_NEAR(shapeOf({5, 5, 6, 6}).elongation(), 1.0, 1e-9);
    EXPECT_NEAR(shapeOf({7000, 7900, 9, 3}).elongation(), std::sqrt(80.0 / 8.0), 1e-6);
}

/// A piece of 21 pixels in the middle of a line that has pixels of wall on both its sides within
/// reach, which is 80 pixels either way.
/// @param pixels  Of wall along it, without its own.
bool continues(int pixels, double least_wall = 0.7) {
    cv::Mat walls(61, 401, CV_8UC1, cv::Scalar(0));
    walls(cv::Rect(190, 30, 21, 1)) = 255;
    const int left = pixels / 2;
    const int right = pixels - left;
    walls(cv::Rect(120, 30, left, 1)) = 255;
    walls(cv::Rect(281 - right, 30, right, 1)) = 255;
    // Out of reach.
    walls(cv::Rect(0, 30, 120, 1)) = 255;
    walls(cv::Rect(281, 30, 120, 1)) = 255;
    return continuesWall(walls, shapeOf({190, 30, 21, 1}), least_wall);
}

TEST(ContinuesWall, CountsWallAlongTheAxis) {
    // 0.7 of 161 pixels are 112.7.
    EXPECT_TRUE(continues(113 - 21));
    EXPECT_FALSE(continues(112 - 21));
    EXPECT_TRUE(continues(0, 0.1));
    EXPECT_TRUE(continues(140, 1.0));
    EXPECT_FALSE(continues(139, 1.0));
    EXPECT_TRUE(continues(0, 0.0));
}

TEST(ContinuesWall, TakesWallOnePixelAside) {
    const auto beside = [](int rows) {
        cv::Mat walls(61, 401, CV_8UC1, cv::Scalar(0));
        walls.row(30 + rows) = 255;
        walls(cv::Rect(180, 30, 41, 1)) = 255;
        return continuesWall(walls, shapeOf({180, 30, 41, 1}), 1.0);
    };
    EXPECT_TRUE(beside(1));
    EXPECT_TRUE(beside(-1));
    EXPECT_FALSE(beside(2));
    EXPECT_FALSE(beside(-2));
}

TEST(ContinuesWall, TakesDirectionsAFewDegreesOff) {
    const auto turned = [](double degrees) {
        cv::Mat walls(201, 401, CV_8UC1, cv::Scalar(0));
        for (int col = 0; col < walls.cols; ++col) {
            const double off = (col - 200) * std::tan(degrees * CV_PI / 180.0);
            const int row = 100 + static_cast<int>(std::lround(off));
            if (row >= 0 && row < walls.rows) walls.at<std::uint8_t>(row, col) = 255;
        }
        return continuesWall(walls, shapeOf({185, 97, 30, 7}), 0.9);
    };
    EXPECT_TRUE(turned(0.0));
    EXPECT_TRUE(turned(5.0));
    EXPECT_TRUE(turned(-6.0));
    // Three degrees are left, and 40 steps from the middle the line is two pixels off.
    EXPECT_FALSE(turned(9.0));
    EXPECT_FALSE(turned(-9.0));
}

/// A piece of 20 pixels with wall to the left and right of it.
bool isBetween(int left_gap, int right_gap, int thickness = 2) {
    cv::Mat walls(61, 401, CV_8UC1, cv::Scalar(0));
    const cv::Rect piece(190, 30, 20, thickness);
    walls(piece) = 255;
    walls(cv::Rect(190 - left_gap - 6, 30, 6, thickness)) = 255;
    walls(cv::Rect(210 + right_gap, 30, 6, thickness)) = 255;
    return continuesWall(walls, shapeOf(piece), 1.0);
}

TEST(ContinuesWall, KnowsAPieceBetweenTwoDoorways) {
    EXPECT_TRUE(isBetween(18, 18));
    EXPECT_TRUE(isBetween(18, 23));
    EXPECT_FALSE(isBetween(18, 26)) << "1.3 m";
    EXPECT_FALSE(isBetween(26, 18));
    EXPECT_TRUE(isBetween(18, 18, 6));
    EXPECT_FALSE(isBetween(18, 18, 8)) << "0.4 m thick";
}

TEST(ContinuesWall, TakesWhatLiesOutsideForNoWall) {
    // At the left edge: 80 of 161 pixels are outside.
    const cv::Mat walls(41, 301, CV_8UC1, cv::Scalar(255));
    EXPECT_FALSE(continuesWall(walls, shapeOf({0, 20, 3, 1}), 0.51));
    EXPECT_TRUE(continuesWall(walls, shapeOf({0, 20, 3, 1}), 0.49));
}

TEST(ContinuesWall, AsksForADirection) {
    const cv::Mat walls(401, 401, CV_8UC1, cv::Scalar(255));
    EXPECT_FALSE(continuesWall(walls, shapeOf({190, 190, 20, 20}), 0.1));
    EXPECT_FALSE(continuesWall(walls, shapeOf({190, 190, 19, 10}), 0.1)) << "sqrt(360 / 99)";
    EXPECT_TRUE(continuesWall(walls, shapeOf({190, 190, 20, 10}), 0.1)) << "sqrt(399 / 99)";
    EXPECT_FALSE(continuesWall(walls, shapeOf({190, 190, 2, 1}), 0.1)) << "sqrt(3)";
    EXPECT_FALSE(continuesWall(walls, shapeOf({190, 190, 1, 1}), 0.1));
    EXPECT_TRUE(continuesWall(walls, shapeOf({190, 190, 3, 1}), 0.1)) << "sqrt(8)";
}

}  // namespace
}  // namespace vorund::rooms
