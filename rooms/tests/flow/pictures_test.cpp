#include "flow/pictures.h"

#include <gmock/gmock.h>

#include <cstdint>

#include "flow/regions.h"
#include "flow/separators.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"
#include "vorund/graph_processor.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::MatEq;

FlowPictures picturesOf(const cv::Mat& separated) {
    const RoomGraph rooms = wholeRoomGraph(regionsOf(separated));
    return drawPictures(rooms, findCuts(rooms));
}

TEST(DrawPictures, DrawsWhatTheCoreDraws) {
    const test::PlainCapture plain;
    test::RandomImages random(31);
    for (int run = 0; run < 30; ++run) {
        const cv::Mat image = test::roomImage(random, random.size(90), 1 + random.below(20));
        const auto found = GraphProcessor::findGraphRepresentation(image, kLine);
        ASSERT_LE(found.border_ids.size(), 255U);
        const FlowPictures pictures = picturesOf(cv::Mat_<std::int32_t>(image));
        EXPECT_THAT(pictures.borders,
                    MatEq(GraphProcessor::visualizeBorders(found.borders_map, image)));
        EXPECT_THAT(pictures.graph,
                    MatEq(GraphProcessor::visualizeGraph(found.graph, image.size(), image)));
        EXPECT_THAT(pictures.cuts, MatEq(GraphProcessor::processOptimalBorderRectification(
                                             found.borders_map, found.border_ids, image, "")
                                             .first));
    }
}

TEST(DrawPictures, GivesRoomsAbove255ColoursOfThoseBelow) {
    // 254 colours, and neither that of walls nor that of lines among them.
    const FlowPictures low = picturesOf(labels32("1 1 1 255 2 2 . 254"));
    const FlowPictures high = picturesOf(labels32("509 509 509 255 256 256 . 508"));
    EXPECT_THAT(high.borders, MatEq(low.borders));
    EXPECT_THAT(high.cuts, MatEq(low.cuts));
    EXPECT_EQ(high.graph.size(), low.graph.size());
    const cv::Vec3b wall(76, 76, 76);  // 255 * 0.3, white darkened.
    EXPECT_EQ(high.borders.at<cv::Vec3b>(0, 6), wall);
    EXPECT_NE(high.borders.at<cv::Vec3b>(0, 7), wall);
}

TEST(DrawPictures, DrawsBordersOfAnyNumber) {
    // 600 rooms of two pixels in a row, a line after each.
    cv::Mat separated(1, 600 * 3 - 1, CV_32SC1);
    for (int col = 0; col < separated.cols; ++col) {
        separated.at<std::int32_t>(0, col) = col % 3 == 2 ? kLine : 1000 + col / 3;
    }
    const RoomGraph rooms = wholeRoomGraph(regionsOf(separated));
    ASSERT_EQ(rooms.border_ids.size(), 599U);
    const FlowPictures pictures = drawPictures(rooms, {});
    const cv::Vec3b line(0, 0, 0);
    for (int col = 2; col < separated.cols; col += 3) {
        EXPECT_NE(pictures.borders.at<cv::Vec3b>(0, col), line) << "border " << col / 3 + 1;
    }
}

}  // namespace
}  // namespace vorund::rooms
