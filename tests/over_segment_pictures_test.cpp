#include "over_segment_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "support/captures.h"

namespace vorund::internal {
namespace {

class PlaceThumbnail : public ::testing::Test {
 protected:
    int litPixels() const {
        cv::Mat channel;
        cv::extractChannel(canvas_, channel, 0);
        return cv::countNonZero(channel);
    }

    cv::Mat canvas_ = cv::Mat::zeros(10, 10, CV_8UC3);
    cv::Mat thumbnail_ = cv::Mat(4, 4, CV_8UC3, cv::Scalar::all(255));
};

TEST_F(PlaceThumbnail, FillsACellThatReachesTheLastRowAndColumn) {
    const test::StderrCapture errors;
    EXPECT_TRUE(placeThumbnail(canvas_, cv::Rect(6, 6, 4, 4), thumbnail_, 3));
    EXPECT_EQ(litPixels(), 16);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(PlaceThumbnail, SkipsACellThatCrossesTheRightOrLowerEdge) {
    const test::StderrCapture errors;
    EXPECT_FALSE(placeThumbnail(canvas_, cv::Rect(7, 0, 4, 4), thumbnail_, 3));
    EXPECT_FALSE(placeThumbnail(canvas_, cv::Rect(0, 7, 4, 4), thumbnail_, 4));
    EXPECT_EQ(litPixels(), 0);
    EXPECT_EQ(errors.text(),
              "Warning: Skipping seed 3 due to bounds violation\n"
              "Warning: Skipping seed 4 due to bounds violation\n");
}

TEST_F(PlaceThumbnail, LeavesOutThePictureOfACellThatStartsOutside) {
    const test::StderrCapture errors;
    EXPECT_TRUE(placeThumbnail(canvas_, cv::Rect(-1, 2, 4, 4), thumbnail_, 3));
    EXPECT_TRUE(placeThumbnail(canvas_, cv::Rect(2, -1, 4, 4), thumbnail_, 4));
    EXPECT_EQ(litPixels(), 0);
    EXPECT_EQ(errors.text(),
              "Warning: ROI out of bounds for seed 3\n"
              "Warning: ROI out of bounds for seed 4\n");
}

}  // namespace
}  // namespace vorund::internal
