#include "runs/run_components.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include <vector>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::internal {
namespace {

using test::labels32;
using test::MatEq;
using ::testing::ElementsAre;

PixelRuns runsOf(const cv::Mat& image) {
    PixelRuns runs(image.rows);
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            if (image.at<int>(row, col) != 0) runs.add(col, col + 1);
        }
        runs.closeRow();
    }
    return runs;
}

cv::Mat drawn(const PixelRuns& runs, const RunComponents& components, const cv::Size& size) {
    cv::Mat image = cv::Mat::zeros(size, CV_32SC1);
    for (int row = 0; row < runs.rows(); ++row) {
        for (std::size_t i = runs.rowBegin(row); i < runs.rowBegin(row + 1); ++i) {
            image.row(row).colRange(runs[i].begin, runs[i].end) = components.label_of_run[i];
        }
    }
    return image;
}

TEST(PixelRuns, JoinPixelsThatTouchWithinARow) {
    PixelRuns runs(3);
    runs.add(1, 3);
    runs.add(3, 4);
    runs.add(6, 7);
    runs.closeRow();
    runs.closeRow();
    runs.add(7, 9);
    runs.closeRow();
    ASSERT_EQ(runs.size(), 3U);
    EXPECT_EQ(runs[0].begin, 1);
    EXPECT_EQ(runs[0].end, 4);
    EXPECT_THAT((std::vector<std::size_t>{runs.rowBegin(0), runs.rowBegin(1), runs.rowBegin(2),
                                          runs.rowBegin(3)}),
                ElementsAre(0, 2, 2, 3));
}

TEST(ConnectRuns, NumbersComponentsByTheirFirstPixels) {
    const cv::Mat image = labels32(
        ". 1 . 1 1\n"
        "1 . . . 1\n"
        "1 1 . 1 1\n"
        ". 1 1 . .\n"
        "1 . . . 1");
    const PixelRuns runs = runsOf(image);
    const RunComponents components = connectRuns(runs);
    EXPECT_EQ(components.count, 5);
    EXPECT_THAT(drawn(runs, components, image.size()), MatEq(labels32(". 1 . 2 2\n"
                                                                      "3 . . . 2\n"
                                                                      "3 3 . 2 2\n"
                                                                      ". 3 3 . .\n"
                                                                      "4 . . . 5")));
}

TEST(ConnectRuns, JoinsBranchesThatMeetFurtherDown) {
    const cv::Mat image = labels32(
        "1 . 1 . 1\n"
        "1 . 1 1 1\n"
        "1 1 1 . .");
    const PixelRuns runs = runsOf(image);
    const RunComponents components = connectRuns(runs);
    EXPECT_EQ(components.count, 1);
    EXPECT_THAT(drawn(runs, components, image.size()), MatEq(image));
}

TEST(ConnectRuns, JoinsCornersWithEightNeighbours) {
    const PixelRuns runs =
        runsOf(labels32("1 . 1 .\n"
                        ". 1 . .\n"
                        ". . . 1\n"
                        "1 . 1 ."));
    const RunComponents components = connectRuns(runs, 8);
    EXPECT_THAT(components.label_of_run, ElementsAre(1, 1, 1, 2, 3, 2));
    EXPECT_THAT(areasOf(runs, components), ElementsAre(3, 2, 1));
}

TEST(ConnectRuns, FindsOpenCvsComponentsWithEightNeighbours) {
    test::RandomImages random(5);
    for (int i = 0; i < 1000; ++i) {
        const cv::Size size = random.size(20);
        cv::Mat image;
        cv::Mat(random.bytes(size, 2 + random.below(4)) == 0).convertTo(image, CV_32S);
        cv::Mat bytes;
        image.convertTo(bytes, CV_8U);
        cv::Mat labels;
        cv::Mat stats;
        cv::Mat centroids;
        const int count = cv::connectedComponentsWithStats(bytes, labels, stats, centroids, 8) - 1;
        std::vector<int> expected;
        for (int label = 1; label <= count; ++label) {
            expected.push_back(stats.at<int>(label, cv::CC_STAT_AREA));
        }
        const PixelRuns runs = runsOf(image);
        // Its order of labels is another one.
        ASSERT_THAT(areasOf(runs, connectRuns(runs, 8)),
                    ::testing::UnorderedElementsAreArray(expected));
    }
}

TEST(ConnectRuns, AgreesWithOpenCvOnRandomImages) {
    test::RandomImages random(3);
    for (int i = 0; i < 2000; ++i) {
        const cv::Size size = random.size(24);
        cv::Mat image;
        cv::Mat(random.bytes(size, 2 + random.below(4)) == 0).convertTo(image, CV_32S);
        cv::Mat bytes;
        image.convertTo(bytes, CV_8U);
        cv::Mat expected;
        const int count = cv::connectedComponents(bytes, expected, 4, CV_32S) - 1;
        const PixelRuns runs = runsOf(image);
        const RunComponents components = connectRuns(runs);
        ASSERT_EQ(components.count, count);
        ASSERT_THAT(drawn(runs, components, size), MatEq(expected));
    }
}

}  // namespace
}  // namespace vorund::internal
