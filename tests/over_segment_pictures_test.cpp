#include "over_segment_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

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

/// A black picture with texts as the pictures have them.
class Texts {
 public:
    explicit Texts(const cv::Size& size) : picture_(cv::Mat::zeros(size, CV_8UC3)) {}

    Texts& write(const std::string& text, const cv::Point& at, double scale, int level,
                 int thickness = 1) {
        cv::putText(picture_, text, at, cv::FONT_HERSHEY_SIMPLEX, scale, cv::Scalar::all(level),
                    thickness);
        return *this;
    }

    const cv::Mat& picture() const { return picture_; }

 private:
    cv::Mat picture_;
};

TEST(DrawSeedOverview, WritesTitleAndCaptions) {
    // One seed without a pixel: the picture is black but for its texts.
    const cv::Mat seed = cv::Mat::zeros(50, 150, CV_8UC1);
    const cv::Mat picture = drawSeedOverview({{7, seed}}, seed.size());
    const Texts expected = Texts(picture.size())
                               .write("Map Initial Seeds Visualization", {10, 30}, 0.8, 255, 2)
                               .write("Global Label 7", {20, 60 + 50 + 15}, 0.4, 255)
                               .write("Seeds: 0", {20, 60 + 50 + 30}, 0.4, 255);
    EXPECT_THAT(picture, test::MatEq(expected.picture()));
}

TEST(DrawMarkerCounts, WritesALinePerValue) {
    const cv::Mat picture = drawMarkerCounts(test::labels32(". . 255\n4 4 4"));
    const Texts expected = Texts({500, 3 * 25 + 80})
                               .write("Superposed Seeds Statistics", {10, 25}, 0.7, 255, 2)
                               .write("Label | Count | Type", {10, 50}, 0.5, 200)
                               .write("0", {10, 75}, 0.5, 128)
                               .write("2", {150, 75}, 0.5, 128)
                               .write("Unknown", {290, 75}, 0.5, 128)
                               .write("4", {10, 100}, 0.5, 255)
                               .write("3", {150, 100}, 0.5, 255)
                               .write("Foreground", {290, 100}, 0.5, 255)
                               .write("255", {10, 125}, 0.5, 255)
                               .write("1", {150, 125}, 0.5, 255)
                               .write("Background", {290, 125}, 0.5, 255);
    EXPECT_THAT(picture, test::MatEq(expected.picture()));
}

}  // namespace
}  // namespace vorund::internal
