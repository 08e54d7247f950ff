#include "flow/space.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>

#include "support/label_grid.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

TEST(WidestPixels, FindsTheMiddleOfASquare) {
    EXPECT_THAT(widestPixels(labels32("1 1 1 1 1\n"
                                      "1 1 1 1 1\n"
                                      "1 1 1 1 1\n"
                                      "1 1 1 1 1\n"
                                      "1 1 1 1 1")),
                ElementsAre(Pair(1, cv::Point(2, 2))));
}

TEST(WidestPixels, TakesTheFirstOfSeveralInRasterOrder) {
    EXPECT_THAT(widestPixels(labels32("7 7 7 7")), ElementsAre(Pair(7, cv::Point(0, 0))));
    EXPECT_THAT(widestPixels(labels32("7 7 7 7\n"
                                      "7 7 7 7\n"
                                      "7 7 7 7")),
                ElementsAre(Pair(7, cv::Point(1, 1))));
}

TEST(WidestPixels, PrefersTheWidePartOfARoom) {
    EXPECT_THAT(widestPixels(labels32("2 2 2 2 2 2 2 2\n"
                                      ". . . . . 2 2 2\n"
                                      ". . . . . 2 2 2")),
                ElementsAre(Pair(2, cv::Point(6, 1))));
}

TEST(WidestPixels, MeasuresToOtherRoomsToo) {
    EXPECT_THAT(widestPixels(labels32("1 1 1 2 2 2\n"
                                      "1 1 1 2 2 2\n"
                                      "1 1 1 2 2 2")),
                ElementsAre(Pair(1, cv::Point(1, 1)), Pair(2, cv::Point(4, 1))));
}

TEST(WidestPixels, LooksAtAllPiecesOfARoom) {
    EXPECT_THAT(widestPixels(labels32("3 . 3 3 3\n"
                                      ". . 3 3 3\n"
                                      ". . 3 3 3")),
                ElementsAre(Pair(3, cv::Point(3, 1))));
}

TEST(WidestPixels, StaysInsideARing) {
    const auto widest =
        widestPixels(labels32("4 4 4\n"
                              "4 . 4\n"
                              "4 4 4"));
    EXPECT_THAT(widest, ElementsAre(Pair(4, cv::Point(0, 0))));
}

TEST(WidestPixels, FindsNothingWithoutRooms) {
    EXPECT_THAT(widestPixels(labels32(". .")), IsEmpty());
    EXPECT_THAT(widestPixels(labels32("300")), ElementsAre(Pair(300, cv::Point(0, 0))));
}

/// The chamfer distance from one pixel to another.
int chamfer(const cv::Point& from, const cv::Point& to) {
    const int dx = std::abs(from.x - to.x);
    const int dy = std::abs(from.y - to.y);
    return 3 * std::max(dx, dy) + std::min(dx, dy);
}

int spaceAround(const cv::Mat_<std::int32_t>& labels, const cv::Point& pixel) {
    int least = 1 << 30;
    for (int row = -1; row <= labels.rows; ++row) {
        for (int col = -1; col <= labels.cols; ++col) {
            const bool inside = row >= 0 && row < labels.rows && col >= 0 && col < labels.cols;
            if (inside && labels(row, col) == labels(pixel)) continue;
            least = std::min(least, chamfer(pixel, {col, row}));
        }
    }
    return least;
}

TEST(WidestPixels, AgreesWithTheDistanceToEveryPixelOfAnotherLabel) {
    test::RandomImages random(3);
    for (int run = 0; run < 60; ++run) {
        cv::Mat_<std::int32_t> labels;
        random.patches(random.size(18), 4, 0).convertTo(labels, CV_32S);
        const auto widest = widestPixels(labels);
        for (int row = 0; row < labels.rows; ++row) {
            for (int col = 0; col < labels.cols; ++col) {
                const cv::Point pixel(col, row);
                if (labels(pixel) == 0) continue;
                const cv::Point best = widest.at(labels(pixel));
                ASSERT_EQ(labels(best), labels(pixel));
                const bool earlier = row < best.y || (row == best.y && col < best.x);
                const int margin = spaceAround(labels, best) - spaceAround(labels, pixel);
                EXPECT_GE(margin, earlier ? 1 : 0) << pixel << " " << best << "\n" << labels;
            }
        }
    }
}

}  // namespace
}  // namespace vorund::rooms
