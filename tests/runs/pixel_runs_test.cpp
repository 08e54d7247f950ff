#include "runs/pixel_runs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::internal {
namespace {

using test::labels;
using test::MatEq;

cv::Mat drawnRuns(const PixelRuns& runs, const cv::Size& size) {
    cv::Mat image = cv::Mat::zeros(size, CV_8UC1);
    runs.visit(
        [&](int row, const PixelRun& run) { image.row(row).colRange(run.begin, run.end) = 1; });
    return image;
}

TEST(PixelsNotAbove, TakesTheThresholdInAndWhatIsNoNumber) {
    cv::Mat values = test::values(
        "0.5 0.4 0.6 0.7\n"
        "0.6 0.6 0.6 0.5");
    values.at<float>(0, 3) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(drawnRuns(pixelsNotAbove(values, 0.5), values.size()), MatEq(labels("1 1 . 1\n"
                                                                                    ". . . 1")));
    EXPECT_THAT(drawnRuns(pixelsNotAbove(test::asView(values), 0.5), values.size()),
                MatEq(labels("1 1 . 1\n"
                             ". . . 1")));
}

TEST(NonZeroPixels, JoinsNeighboursOfDifferentValues) {
    const PixelRuns runs =
        nonZeroPixels(labels("3 7 . 2\n"
                             ". . . ."));
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].end, 2);
    EXPECT_EQ(runs.rowBegin(1), 2U);
}

TEST(Complement, HoldsTheOtherPixels) {
    test::RandomImages random(4);
    for (int i = 0; i < 300; ++i) {
        const cv::Mat image = random.bytes(random.size(30), 2);
        const PixelRuns others = complement(nonZeroPixels(image), image.cols);
        ASSERT_THAT(drawnRuns(others, image.size()), MatEq(cv::Mat(1 - image)));
    }
}

TEST(BoundsOf, IsTheSmallestRectangle) {
    const cv::Mat image = labels(
        ". . . .\n"
        ". . 1 .\n"
        ". 1 . .\n"
        ". . . .");
    EXPECT_EQ(boundsOf(nonZeroPixels(image)), cv::Rect(1, 1, 2, 2));
    EXPECT_TRUE(boundsOf(nonZeroPixels(labels(". ."))).empty());
}

}  // namespace
}  // namespace vorund::internal
