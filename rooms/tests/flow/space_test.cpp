#include "flow/space.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "reference/records.h"
#include "support/label_grid.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

int countOf(const cv::Mat& image) {
    double largest = 0.0;
    cv::minMaxLoc(image, nullptr, &largest);
    return static_cast<int>(largest) + 1;
}

/// By label, those that occur.
std::map<int, cv::Point> widestOf(const cv::Mat& image) {
    std::map<int, cv::Point> found;
    const std::vector<cv::Point> widest = widestPixels(image, countOf(image));
    for (std::size_t label = 0; label < widest.size(); ++label) {
        if (widest[label].x >= 0) found.emplace(static_cast<int>(label), widest[label]);
    }
    return found;
}

TEST(WidestPixels, FindsTheMiddleOfASquare) {
    EXPECT_THAT(widestOf(labels32("1 1 1 1 1\n"
                                  "1 1 1 1 1\n"
                                  "1 1 1 1 1\n"
                                  "1 1 1 1 1\n"
                                  "1 1 1 1 1")),
                ElementsAre(Pair(1, cv::Point(2, 2))));
}

TEST(WidestPixels, TakesTheFirstOfSeveralInRasterOrder) {
    EXPECT_THAT(widestOf(labels32("7 7 7 7")), ElementsAre(Pair(7, cv::Point(0, 0))));
    EXPECT_THAT(widestOf(labels32("7 7 7 7\n"
                                  "7 7 7 7\n"
                                  "7 7 7 7")),
                ElementsAre(Pair(7, cv::Point(1, 1))));
}

TEST(WidestPixels, PrefersTheWidePartOfARoom) {
    EXPECT_THAT(widestOf(labels32("2 2 2 2 2 2 2 2\n"
                                  ". . . . . 2 2 2\n"
                                  ". . . . . 2 2 2")),
                ElementsAre(Pair(2, cv::Point(6, 1))));
}

TEST(WidestPixels, MeasuresToOtherRoomsToo) {
    EXPECT_THAT(widestOf(labels32("1 1 1 2 2 2\n"
                                  "1 1 1 2 2 2\n"
                                  "1 1 1 2 2 2")),
                ElementsAre(Pair(1, cv::Point(1, 1)), Pair(2, cv::Point(4, 1))));
}

TEST(WidestPixels, LooksAtAllPiecesOfARoom) {
    EXPECT_THAT(widestOf(labels32("3 . 3 3 3\n"
                                  ". . 3 3 3\n"
                                  ". . 3 3 3")),
                ElementsAre(Pair(3, cv::Point(3, 1))));
}

TEST(WidestPixels, StaysInsideARing) {
    const auto widest =
        widestOf(labels32("4 4 4\n"
                          "4 . 4\n"
                          "4 4 4"));
    EXPECT_THAT(widest, ElementsAre(Pair(4, cv::Point(0, 0))));
}

TEST(WidestPixels, FindsNothingWithoutRooms) {
    EXPECT_THAT(widestOf(labels32(". .")), IsEmpty());
    EXPECT_THAT(widestOf(labels32("300")), ElementsAre(Pair(300, cv::Point(0, 0))));
}

/// The chamfer distance from one pixel to another.
int chamfer(const cv::Point& from, const cv::Point& to) {
    const int dx = std::abs(from.x - to.x);
    const int dy = std::abs(from.y - to.y);
    return 3 * std::max(dx, dy) + std::min(dx, dy);
}

int spaceAround(const cv::Mat_<std::int32_t>& image, const cv::Point& pixel) {
    int least = 1 << 30;
    for (int row = -1; row <= image.rows; ++row) {
        for (int col = -1; col <= image.cols; ++col) {
            const bool inside = row >= 0 && row < image.rows && col >= 0 && col < image.cols;
            if (inside && image(row, col) == image(pixel)) continue;
            least = std::min(least, chamfer(pixel, {col, row}));
        }
    }
    return least;
}

TEST(WidestPixels, AgreesWithTheDistanceToEveryPixelOfAnotherLabel) {
    test::RandomImages random(3);
    for (int run = 0; run < 60; ++run) {
        const cv::Mat_<std::int32_t> image(random.patches(random.size(18), 4, 0));
        const auto widest = widestOf(image);
        for (int row = 0; row < image.rows; ++row) {
            for (int col = 0; col < image.cols; ++col) {
                const cv::Point pixel(col, row);
                if (image(pixel) == 0) continue;
                const cv::Point best = widest.at(image(pixel));
                ASSERT_EQ(image(best), image(pixel));
                const bool earlier = row < best.y || (row == best.y && col < best.x);
                const int margin = spaceAround(image, best) - spaceAround(image, pixel);
                EXPECT_GE(margin, earlier ? 1 : 0) << pixel << " " << best << "\n" << image;
            }
        }
    }
}

TEST(WidestPixels, AgreesWithDistancesThatPassFromPixelToPixel) {
    test::RandomImages random(4);
    for (int run = 0; run < 60; ++run) {
        const cv::Size size(1 + random.below(300), 1 + random.below(200));
        const cv::Mat_<std::int32_t> image(random.patches(size, 1 + random.below(25), run % 3));
        EXPECT_EQ(widestOf(run % 2 == 0 ? cv::Mat(image) : test::asView(image)),
                  reference::widestPixels(image));
        const int count = countOf(image);
        EXPECT_EQ(widestPixelsOfHuge(image, count), widestPixels(image, count));
    }
}

}  // namespace
}  // namespace vorund::rooms
