#include "vorund/rooms/grid_map.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace vorund::rooms {
namespace {

using ::testing::DoubleNear;
using ::testing::Field;
using ::testing::Matcher;
using ::testing::ThrowsMessage;

const double kPi = std::acos(-1.0);

GridMap mapOf(const cv::Size& size, double resolution, const Origin& origin) {
    GridMap map;
    map.values = cv::Mat::zeros(size, CV_32FC1);
    map.resolution = resolution;
    map.origin = origin;
    return map;
}

Matcher<cv::Point2d> At(double x, double y) {
    return ::testing::AllOf(Field("x", &cv::Point2d::x, DoubleNear(x, 1e-12)),
                            Field("y", &cv::Point2d::y, DoubleNear(y, 1e-12)));
}

TEST(PixelToMetres, GivesPixelCentresWithYUpwards) {
    const GridMap map = mapOf({4, 2}, 0.5, {10.0, 20.0, 0.0});
    EXPECT_THAT(pixelToMetres(map, {0, 1}), At(10.25, 20.25));
    EXPECT_THAT(pixelToMetres(map, {0, 0}), At(10.25, 20.75));
    EXPECT_THAT(pixelToMetres(map, {3, 0}), At(11.75, 20.75));
}

TEST(PixelToMetres, TurnsTheMapAboutItsLowerLeftCorner) {
    // A quarter turn to the left: the map's columns run up, its rows (upwards) to the left.
    const GridMap quarter = mapOf({4, 2}, 0.5, {10.0, 20.0, kPi / 2.0});
    EXPECT_THAT(pixelToMetres(quarter, {0, 1}), At(10.0 - 0.25, 20.0 + 0.25));
    EXPECT_THAT(pixelToMetres(quarter, {3, 0}), At(10.0 - 0.75, 20.0 + 1.75));

    // A sixth of a half turn, 30 degrees: cos = sqrt(3) / 2, sin = 1 / 2.
    const GridMap sixth = mapOf({4, 2}, 2.0, {0.0, 0.0, kPi / 6.0});
    const double cos30 = std::sqrt(3.0) / 2.0;
    EXPECT_THAT(pixelToMetres(sixth, {1, 1}), At(3.0 * cos30 - 0.5, 1.5 + cos30));
}

TEST(PixelToMetres, TakesPixelsOutsideTheMap) {
    const GridMap map = mapOf({4, 2}, 0.5, {});
    EXPECT_THAT(pixelToMetres(map, {-1, 2}), At(-0.25, -0.25));
}

TEST(MetresToPixel, GivesThePixelThatHoldsThePoint) {
    const GridMap map = mapOf({4, 2}, 0.5, {10.0, 20.0, 0.0});
    EXPECT_EQ(metresToPixel(map, {10.01, 20.01}), cv::Point(0, 1));
    EXPECT_EQ(metresToPixel(map, {10.49, 20.49}), cv::Point(0, 1));
    EXPECT_EQ(metresToPixel(map, {10.51, 20.51}), cv::Point(1, 0));
    EXPECT_EQ(metresToPixel(map, {9.99, 21.01}), cv::Point(-1, -1));
}

TEST(MetresToPixel, CountsAnEdgeToThePixelOnItsRightAndAboveIt) {
    const GridMap map = mapOf({4, 2}, 0.5, {});
    EXPECT_EQ(metresToPixel(map, {0.0, 0.0}), cv::Point(0, 1));
    EXPECT_EQ(metresToPixel(map, {0.5, 0.5}), cv::Point(1, 0));
}

TEST(MetresToPixel, UndoesPixelToMetres) {
    for (const double yaw : {0.0, 0.3, kPi / 2.0, -2.0, kPi}) {
        for (const double resolution : {0.01, 0.05, 0.07, 1.0}) {
            const GridMap map = mapOf({7, 5}, resolution, {-30.125, 4.2, yaw});
            for (int row = -1; row <= 5; ++row) {
                for (int col = -1; col <= 7; ++col) {
                    const cv::Point pixel(col, row);
                    ASSERT_EQ(metresToPixel(map, pixelToMetres(map, pixel)), pixel)
                        << "yaw " << yaw << ", resolution " << resolution;
                }
            }
        }
    }
}

TEST(MetresToPixel, RejectsPointsThatNoPixelCanHold) {
    const GridMap map = mapOf({4, 2}, 0.05, {});
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const cv::Point2d& point :
         {cv::Point2d(nan, 0.0), cv::Point2d(0.0, nan), cv::Point2d(infinity, 0.0),
          cv::Point2d(0.0, -infinity), cv::Point2d(1e12, 0.0), cv::Point2d(0.0, -1e12)}) {
        EXPECT_THAT([&] { metresToPixel(map, point); },
                    ThrowsMessage<std::invalid_argument>(
                        "metresToPixel: The point is too far from the map."));
    }
}

}  // namespace
}  // namespace vorund::rooms
