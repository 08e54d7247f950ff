#include "flow/separators.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "reference/room_graph.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::MatEq;

TEST(DrawSeparators, TurnsThePixelsBesideASmallerLabelIntoALine) {
    EXPECT_THAT(drawSeparators(labels32("1 1 2 2\n"
                                        "1 1 2 2")),
                MatEq(labels32("1 1 255 2\n"
                               "1 1 255 2")));
}

TEST(DrawSeparators, TakesTheLineFromTheGreaterLabelOnEverySide) {
    EXPECT_THAT(drawSeparators(labels32("7 7 7 7 7\n"
                                        "7 7 7 7 7\n"
                                        "7 7 3 7 7\n"
                                        "7 7 7 7 7\n"
                                        "7 7 7 7 7")),
                MatEq(labels32("7  7   7   7  7\n"
                               "7  7  255  7  7\n"
                               "7 255  3  255 7\n"
                               "7  7  255  7  7\n"
                               "7  7   7   7  7")));
}

TEST(DrawSeparators, DrawsNothingBetweenRoomsThatTouchAtACornerOnly) {
    const cv::Mat corner = labels32(
        "1 .\n"
        ". 2");
    EXPECT_THAT(drawSeparators(corner), MatEq(corner));
}

TEST(DrawSeparators, LooksAtTheUntouchedImage) {
    // Were the first 2 a line when the second is looked at, or the 2 a line for the 3, the result
    // would differ.
    EXPECT_THAT(drawSeparators(labels32("1 2 2 3 3")), MatEq(labels32("1 255 2 255 3")));
    EXPECT_THAT(drawSeparators(labels32("1 2 3 4")), MatEq(labels32("1 255 255 255")));
    EXPECT_THAT(drawSeparators(labels32("4 3 2 1")), MatEq(labels32("255 255 255 1")));
}

TEST(DrawSeparators, TurnsARoomOnePixelThinIntoLineAllOver) {
    EXPECT_THAT(drawSeparators(labels32("1 1 1 1\n"
                                        "5 5 5 5\n"
                                        "9 9 9 9\n"
                                        "9 9 9 9")),
                MatEq(labels32(" 1   1   1   1\n"
                               "255 255 255 255\n"
                               "255 255 255 255\n"
                               " 9   9   9   9")));
}

TEST(DrawSeparators, MeetsInOnePixelWhereThreeRoomsDo) {
    EXPECT_THAT(drawSeparators(labels32("1 1 1 4 4\n"
                                        "1 1 1 4 4\n"
                                        "6 6 6 6 6\n"
                                        "6 6 6 6 6")),
                MatEq(labels32(" 1   1   1  255  4\n"
                               " 1   1   1  255  4\n"
                               "255 255 255 255 255\n"
                               " 6   6   6   6   6")));
}

TEST(DrawSeparators, LeavesRoomsBesideWallAndUnreachedFloorAsTheyAre) {
    const cv::Mat apart = labels32(
        "1 . 2 255 3\n"
        "1 . 2 255 3");
    EXPECT_THAT(drawSeparators(apart), MatEq(apart));
    const cv::Mat unreached = labels32("255 254 255");
    EXPECT_THAT(drawSeparators(unreached), MatEq(unreached));
}

TEST(DrawSeparators, KnowsLabels254And1AsRooms) {
    EXPECT_THAT(drawSeparators(labels32("1 1 254 254")), MatEq(labels32("1 1 255 254")));
}

TEST(DrawSeparators, TakesAnythingFromAPixelToAViewOfALargerImage) {
    for (const int label : {0, 1, 254, 255}) {
        const cv::Mat pixel(1, 1, CV_32SC1, cv::Scalar(label));
        EXPECT_THAT(drawSeparators(pixel), MatEq(pixel));
    }
    const cv::Mat rooms = labels32(
        "2 2 1\n"
        "2 2 1");
    const cv::Mat view = test::asView(rooms);
    EXPECT_THAT(drawSeparators(view), MatEq(labels32("2 255 1\n"
                                                     "2 255 1")));
    EXPECT_THAT(view, MatEq(rooms)) << "the input is left as it was";
}

TEST(DrawSeparators, KnowsLabelsAbove255AsRooms) {
    // 255 between them is a line already, or was reached from neither.
    EXPECT_THAT(drawSeparators(labels32("254 254 256 256 255 70000 70000 300 300")),
                MatEq(labels32("254 254 255 256 255 70000 255 300 300")));
}

TEST(DrawSeparators, AgreesWithThePlainVersion) {
    test::RandomImages random(8);
    for (int run = 0; run < 60; ++run) {
        const cv::Size size(1 + random.below(150), 1 + random.below(20));
        cv::Mat image;
        random.patches(size, 1 + random.below(250), run % 2).convertTo(image, CV_32S, 3.0);
        if (run % 3 == 0) image.setTo(kLine, image == 15);
        EXPECT_THAT(drawSeparators(run % 2 == 0 ? image : test::asView(image)),
                    MatEq(reference::separated(image)));
        EXPECT_THAT(linesBetween(image), MatEq(reference::linesBetween(image)));
    }
}

TEST(DrawSeparators, LeavesNoTwoRoomsSideBySideAndNoLineWithoutCause) {
    test::RandomImages random(7);
    constexpr int kSomeLabels[] = {0, 1, 2, 3, 100, 300, 255};
    for (int run = 0; run < 200; ++run) {
        cv::Mat_<std::int32_t> image(random.bytes(random.size(12), 7));
        if (run % 2 == 0) image = random.patches(random.size(30), 6, 0);
        for (std::int32_t& pixel : image) {
            pixel = kSomeLabels[pixel];
        }
        const cv::Mat_<std::int32_t> separated = drawSeparators(image);
        const cv::Rect whole({0, 0}, image.size());
        for (int i = 0; i < static_cast<int>(image.total()); ++i) {
            const cv::Point pixel(i % image.cols, i / image.cols);
            bool beside_smaller = false;
            for (const cv::Point& step : {cv::Point(1, 0), {-1, 0}, {0, 1}, {0, -1}}) {
                if (!whole.contains(pixel + step)) continue;
                const int other = image(pixel + step);
                beside_smaller |= other % 255 != 0 && other < image(pixel);
                const int now = separated(pixel);
                const int beside = separated(pixel + step);
                EXPECT_TRUE(now == beside || now % 255 == 0 || beside % 255 == 0) << image;
            }
            const bool is_room = image(pixel) % 255 != 0;
            EXPECT_EQ(separated(pixel), is_room && beside_smaller ? 255 : image(pixel)) << image;
        }
    }
}

}  // namespace
}  // namespace vorund::rooms
