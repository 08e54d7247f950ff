#include <gmock/gmock.h>

#include <stdexcept>
#include <vector>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/rooms/score.h"

namespace vorund::rooms {
namespace {

using test::asView;
using test::labels;
using test::labels32;
using test::MatEq;
using ::testing::ThrowsMessage;

/// A dark drawing with white rectangles.
cv::Mat drawn(const cv::Size& size, const std::vector<cv::Rect>& rooms) {
    cv::Mat drawing(size, CV_8UC1, cv::Scalar(0));
    for (const cv::Rect& room : rooms) drawing(room).setTo(255);
    return drawing;
}

int roomAt(const cv::Mat& rooms, int row, int col) {
    return rooms.at<int>(row, col);
}

TEST(TruthFromDrawing, TakesTheAreasBetweenThinLines) {
    cv::Mat drawing = drawn({52, 30}, {{1, 1, 50, 28}});
    drawing.col(25).setTo(0);    // The line,
    drawing.col(26).setTo(250);  // and where it is smoothed.
    drawing(cv::Rect(27, 1, 1, 28)).setTo(251);
    const Truth truth = truthFromDrawing(drawing, {});
    cv::Mat expected = cv::Mat::zeros(drawing.size(), CV_32SC1);
    expected(cv::Rect(1, 1, 24, 28)).setTo(1);
    expected(cv::Rect(27, 1, 24, 28)).setTo(2);
    EXPECT_THAT(truth.rooms, MatEq(expected));
    EXPECT_THAT(truth.all_rooms, MatEq(expected));
}

TEST(TruthFromDrawing, JoinsAreasThatTouchAtACorner) {
    const Truth truth = truthFromDrawing(drawn({40, 40}, {{0, 0, 20, 20}, {20, 20, 20, 20}}), {});
    EXPECT_EQ(roomAt(truth.rooms, 0, 0), 1);  // Neither would be large enough alone.
    EXPECT_EQ(roomAt(truth.rooms, 39, 39), 1);
}

TEST(TruthFromDrawing, NumbersRoomsInRasterOrder) {
    // The left one begins one row lower: in blocks of 2 x 2 pixels it would come first.
    const Truth truth = truthFromDrawing(drawn({30, 600}, {{0, 1, 1, 599}, {2, 0, 28, 600}}), {});
    EXPECT_EQ(roomAt(truth.rooms, 0, 2), 1);
    EXPECT_EQ(roomAt(truth.rooms, 1, 0), 2);
}

TEST(TruthFromDrawing, DropsAreasBelow500Pixels) {
    const Truth truth =
        truthFromDrawing(drawn({600, 5}, {{0, 0, 499, 1}, {0, 2, 500, 1}, {0, 4, 100, 1}}), {});
    EXPECT_EQ(roomAt(truth.rooms, 0, 0), 0);
    EXPECT_EQ(roomAt(truth.rooms, 2, 0), 1);  // Numbered without gaps.
    EXPECT_EQ(roomAt(truth.all_rooms, 0, 0), 1);
    EXPECT_EQ(roomAt(truth.all_rooms, 2, 0), 2);
    EXPECT_EQ(roomAt(truth.all_rooms, 4, 0), 0);
}

TEST(TruthFromDrawing, KeepsAreasAbove100PixelsAmongAllRooms) {
    const Truth truth = truthFromDrawing(drawn({101, 1}, {{0, 0, 101, 1}}), {});
    EXPECT_EQ(roomAt(truth.rooms, 0, 0), 0);
    EXPECT_EQ(roomAt(truth.all_rooms, 0, 0), 1);
}

class DetachedAreas : public ::testing::Test {
 protected:
    /// Rooms of 1200 and 600 pixels; in the map the second is free on its `free_rows` upper rows,
    /// and those are joined to the first; its other rows are free too, but for a wall between.
    Truth truthWith(int free_rows, bool keep_detached) const {
        cv::Mat map = drawn(kSize, {{0, 0, 81, 30}});
        map.row(free_rows).colRange(40, 81).setTo(0);
        map.rowRange(free_rows, 30).col(40).setTo(0);
        return truthFromDrawing(drawing_, map, keep_detached);
    }

    const cv::Size kSize{81, 30};
    const cv::Mat drawing_ = drawn(kSize, {{0, 0, 40, 30}, {41, 0, 20, 30}});
};

TEST_F(DetachedAreas, AreDroppedUnlessMoreThanHalfIsInTheLargestFreeArea) {
    EXPECT_EQ(roomAt(truthWith(16, false).rooms, 0, 50), 2);
    EXPECT_EQ(roomAt(truthWith(15, false).rooms, 0, 50), 0);  // Half of it exactly.
    EXPECT_EQ(roomAt(truthWith(0, false).rooms, 0, 50), 0);
    EXPECT_EQ(roomAt(truthWith(0, false).rooms, 0, 0), 1);
}

TEST_F(DetachedAreas, AreKeptIfToldSo) {
    EXPECT_EQ(roomAt(truthWith(0, true).rooms, 0, 50), 2);
}

TEST_F(DetachedAreas, AreKeptWithoutAMap) {
    EXPECT_EQ(roomAt(truthFromDrawing(drawing_, {}).rooms, 0, 50), 2);
}

TEST_F(DetachedAreas, AreAmongAllRooms) {
    EXPECT_EQ(roomAt(truthWith(0, false).all_rooms, 0, 50), 2);
}

TEST_F(DetachedAreas, AreAllIfNothingIsFree) {
    const cv::Mat dark(kSize, CV_8UC1, cv::Scalar(249));
    EXPECT_EQ(cv::countNonZero(truthFromDrawing(drawing_, dark).rooms), 0);
}

TEST_F(DetachedAreas, AreFoundInViewsThatStayUnchanged) {
    const cv::Mat map = drawn(kSize, {{0, 0, 40, 30}});
    const cv::Mat drawing_view = asView(drawing_);
    const cv::Mat map_view = asView(map);
    EXPECT_THAT(truthFromDrawing(drawing_view, map_view).rooms,
                MatEq(truthFromDrawing(drawing_, map).rooms));
    EXPECT_THAT(drawing_view, MatEq(drawing_));
    EXPECT_THAT(map_view, MatEq(map));
}

TEST(TruthFromDrawing, RejectsImagesThatDoNotFit) {
    const cv::Mat drawing = labels("0 255");
    EXPECT_THAT([] { truthFromDrawing({}, {}); },
                ThrowsMessage<std::invalid_argument>("truthFromDrawing: the drawing is empty"));
    EXPECT_THAT(
        [] { truthFromDrawing(labels32("1"), {}); },
        ThrowsMessage<std::invalid_argument>("truthFromDrawing: the drawing must be CV_8UC1"));
    EXPECT_THAT([&] { truthFromDrawing(drawing, labels32("0 255")); },
                ThrowsMessage<std::invalid_argument>("truthFromDrawing: the map must be CV_8UC1"));
    EXPECT_THAT(
        [&] { truthFromDrawing(drawing, labels("0 255 0")); },
        ThrowsMessage<std::invalid_argument>("truthFromDrawing: drawing and map differ in size"));
}

TEST(TruthFromLabels, TakesEveryLabelAsARoomHoweverSmall) {
    const Truth truth = truthFromLabels(labels("9 9 .\n3 9 200"));
    EXPECT_THAT(truth.rooms, MatEq(labels32("2 2 .\n1 2 3")));
    EXPECT_THAT(truth.all_rooms, MatEq(truth.rooms));
}

}  // namespace
}  // namespace vorund::rooms
