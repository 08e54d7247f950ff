// What `doSegmentExact` refuses, and that it gives the same as `doSegment` otherwise.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "support/captures.h"
#include "support/drawn_plans.h"
#include "support/mat_matchers.h"
#include "vorund/vorund.h"

namespace vorund {
namespace {

using test::MatEq;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

/// Closed cells of 1 m by 1 m in a grid, in a margin of wall.
cv::Mat cells(int columns, int rows) {
    constexpr int kCell = 20;
    constexpr int kPitch = kCell + 4;
    constexpr int kMargin = 10;
    cv::Mat map(2 * kMargin + rows * kPitch, 2 * kMargin + columns * kPitch, CV_32FC1,
                cv::Scalar(1.0));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            map(cv::Rect(kMargin + column * kPitch, kMargin + row * kPitch, kCell, kCell)) = 0.0;
        }
    }
    return map;
}

class DoSegmentExact : public ::testing::Test {
 protected:
    test::PlainCapture plain_;
    FloorplanSegmenter segmenter_{Config(), Debugger::create({})};
};

TEST_F(DoSegmentExact, GivesTheBytesOfDoSegment) {
    const cv::Mat map = test::corridorWithSixRooms().map;
    EXPECT_THAT(segmenter_.doSegmentExact(map), MatEq(segmenter_.doSegment(map)));
}

TEST_F(DoSegmentExact, RefusesMoreSeedsThanEightBitsHold) {
    const cv::Mat map = cells(16, 16);
    EXPECT_THAT(
        [&] { segmenter_.doSegmentExact(map); },
        ThrowsMessage<LabelOverflow>("256 seeds at sigma 1.000000, at most 254 can be told apart"));
    EXPECT_NO_THROW(segmenter_.doSegment(map));
}

TEST_F(DoSegmentExact, RefusesMoreRegionsOverAllScalesThanEightBitsHold) {
    // 254 cells fill the seed map of every scale; their global labels reach the ambiguous 255.
    EXPECT_THAT([&] { segmenter_.doSegmentExact(cells(127, 2)); },
                ThrowsMessage<LabelOverflow>(
                    "254 regions or more over all scales, fewer than 254 can be told apart"));
}

TEST_F(DoSegmentExact, TakesAsManyAsAreToldApart) {
    const cv::Mat map = cells(23, 11);
    const cv::Mat rooms = segmenter_.doSegmentExact(map);
    double largest = 0.0;
    cv::Mat without_unreached = rooms.clone();
    without_unreached.setTo(0, rooms == 255);
    cv::minMaxLoc(without_unreached, nullptr, &largest);
    EXPECT_EQ(largest, 23 * 11);
}

TEST_F(DoSegmentExact, IsCancelledLikeDoSegment) {
    const auto stop = [](const std::string&, int, int) { return false; };
    EXPECT_THROW(segmenter_.doSegmentExact(test::twoRooms().map, stop), Cancelled);
}

}  // namespace
}  // namespace vorund
