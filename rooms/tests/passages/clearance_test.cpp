#include "passages/clearance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "support/label_grid.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::RandomImages;

/// By looking at every wall pixel, those around the map included.
std::int64_t squaredDistance(const cv::Mat& is_floor, const cv::Point& pixel) {
    std::int64_t least = std::int64_t{is_floor.rows + 1} * (is_floor.rows + 1);
    for (int row = -1; row <= is_floor.rows; ++row) {
        for (int col = -1; col <= is_floor.cols; ++col) {
            const cv::Point other(col, row);
            const bool inside = cv::Rect({0, 0}, is_floor.size()).contains(other);
            if (inside && is_floor.at<std::uint8_t>(other) != 0) continue;
            const cv::Point step = other - pixel;
            least = std::min(least, std::int64_t{step.dot(step)});
        }
    }
    return least;
}

TEST(Clearance, IsTheLargestDistanceToWallOrTheMapsEdge) {
    const cv::Mat labels = labels32(". . . . . . .\n"
                                    "1 1 1 1 1 1 1\n"
                                    "1 1 1 1 1 1 1\n"
                                    "1 1 1 1 1 1 1\n"
                                    ". 1 . . . . .");
    const cv::Mat floor = labels != 0;
    const Clearance clearance(labels, floor);
    EXPECT_EQ(clearance.largest(2, 0, 7, 0), 4) << "walls above and below";
    EXPECT_EQ(clearance.largest(2, 0, 1, 0), 1) << "the left edge";
    EXPECT_EQ(clearance.largest(3, 1, 2, 0), 2) << "corners on both sides";
    EXPECT_EQ(clearance.largest(2, 0, 7, 5), 5) << "what is known is larger";
    cv::Mat with_speck = floor.clone();
    with_speck.at<std::uint8_t>(2, 3) = 0;
    EXPECT_EQ(Clearance(labels, with_speck).largest(2, 2, 5, 0), 1) << "beside the speck";
    EXPECT_EQ(Clearance(labels, with_speck).largest(2, 0, 7, 0), 4) << "two columns from it";
}

TEST(Clearance, IsWhatEveryPixelsDistancesSay) {
    RandomImages random(91);
    for (int run = 0; run < 300; ++run) {
        const cv::Mat bytes = random.bytes(random.size(30), 1 + random.below(150));
        cv::Mat labels;
        bytes.convertTo(labels, CV_32S);
        const cv::Mat floor = random.bytes(bytes.size(), 1 + random.below(150));
        const cv::Mat is_floor = (bytes != 0) & (floor != 0);
        const Clearance clearance(labels, floor);
        for (int row = 0; row < bytes.rows; ++row) {
            const int begin = random.below(bytes.cols);
            const int end = begin + 1 + random.below(bytes.cols - begin);
            const std::int64_t known = random.below(30);
            std::int64_t expected = known;
            for (int col = begin; col < end; ++col) {
                expected = std::max(expected, squaredDistance(is_floor, {col, row}));
            }
            ASSERT_EQ(clearance.largest(row, begin, end, known), expected)
                << "run " << run << ", row " << row;
        }
    }
}

}  // namespace
}  // namespace vorund::rooms
