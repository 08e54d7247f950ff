#include "flow/cuts.h"

#include <gmock/gmock.h>

#include "flow/separators.h"
#include "support/captures.h"
#include "support/consistency.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::labels32;
using test::MatEq;
using ::testing::IsEmpty;
using ::testing::SizeIs;

RoomGraph roomGraph(const cv::Mat& separated) {
    test::RegionMap map = test::regionMap(separated, kLine);
    return {map.segments, map.borders, map.border_ids, map.graph};
}

GraphProcessor::OptimalLine lineFrom(const cv::Point2f& start, const cv::Point2f& end) {
    GraphProcessor::OptimalLine line{};
    line.start = start;
    line.end = end;
    line.center = (start + end) * 0.5F;
    return line;
}

TEST(FindCuts, CutsADoorwayFromWallToWall) {
    const test::PlainCapture plain;
    // The line of the doorway is in column 6, from row 3 to row 11.
    cv::Mat image(15, 13, CV_8UC1, cv::Scalar(0));
    image(cv::Rect(0, 0, 6, 15)) = 2;
    image(cv::Rect(7, 0, 6, 15)) = 9;
    image(cv::Rect(6, 3, 1, 9)) = kLine;
    const RoomGraph rooms = roomGraph(image);
    cv::Mat picture;
    const Cuts cuts = findCuts(rooms, &picture);
    EXPECT_EQ(findCuts(rooms, nullptr).size(), cuts.size());
    ASSERT_THAT(cuts, SizeIs(1));
    EXPECT_EQ(cuts.begin()->first, Edge(2, 9));
    const GraphProcessor::OptimalLine& line = cuts.begin()->second;
    EXPECT_EQ(line.center, cv::Point2f(6.0F, 7.0F));
    EXPECT_EQ(line.angle, 90.0F);
    EXPECT_EQ(line.effective_length, 8.0F);
    EXPECT_EQ(picture.type(), CV_8UC3);
    EXPECT_EQ(picture.size(), image.size());
}

TEST(FindCuts, FindsNoneWhereNothingSharesABorder) {
    const test::PlainCapture plain;
    EXPECT_THAT(findCuts(roomGraph(labels("1 1 . 2 2")), nullptr), IsEmpty());
    EXPECT_THAT(findCuts(roomGraph(labels("1 1 1")), nullptr), IsEmpty());
    EXPECT_THAT(findCuts(roomGraph(labels(". . .")), nullptr), IsEmpty());
}

TEST(StraightenBorders, GivesEverySideOfACutToItsRoom) {
    cv::Mat rooms = labels32(
        "1 1 1 2 2 2\n"
        "1 1 1 1 2 2\n"
        "1 1 2 2 2 2\n"
        "1 1 1 2 2 2");
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({2.0F, 0.0F}, {2.0F, 3.0F})}});
    // The cut's own pixels, column 2, stay with their rooms.
    EXPECT_THAT(rooms, MatEq(labels32("1 1 1 2 2 2\n"
                                      "1 1 1 2 2 2\n"
                                      "1 1 2 2 2 2\n"
                                      "1 1 1 2 2 2")));
}

TEST(StraightenBorders, CutsOneTwoFlankedByOtherRoomsAlone) {
    cv::Mat rooms = labels32(
        "5 5 5 5 5 5 5\n"
        "1 1 1 1 2 2 2\n"
        "1 1 1 1 2 2 2\n"
        "1 1 1 1 1 2 2\n"
        "9 9 9 9 9 9 .");
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({3.0F, 1.0F}, {3.0F, 3.0F})}});
    EXPECT_THAT(rooms, MatEq(labels32("5 5 5 5 5 5 5\n"
                                      "1 1 1 1 2 2 2\n"
                                      "1 1 1 1 2 2 2\n"
                                      "1 1 1 1 2 2 2\n"
                                      "9 9 9 9 9 9 .")));
}

TEST(StraightenBorders, LeavesRoomsThatTheCutDoesNotPart) {
    // Around the short cut there is a way.
    cv::Mat rooms = labels32(
        "1 1 1 2 2 2\n"
        "1 1 1 1 2 2\n"
        "1 1 1 2 2 2");
    const cv::Mat before = rooms.clone();
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({3.0F, 0.0F}, {3.0F, 1.0F})}});
    EXPECT_THAT(rooms, MatEq(before));
}

TEST(StraightenBorders, LeavesRoomsThatWouldLoseMostOfThemselves) {
    // To the right of the cut is most of 2, but more of 1.
    cv::Mat rooms = labels32(
        "1 1 1 1 1 1 1 1\n"
        "1 1 1 1 1 1 2 2");
    const cv::Mat before = rooms.clone();
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({2.0F, 0.0F}, {2.0F, 1.0F})}});
    EXPECT_THAT(rooms, MatEq(before));
}

TEST(StraightenBorders, PartsTheFloorAlongADiagonalCut) {
    // Steps up and sideways: no way from corner to corner leads through.
    cv::Mat rooms = labels32(
        "1 1 1 1 2\n"
        "1 1 1 2 2\n"
        "1 1 1 1 2\n"
        "1 1 2 2 2\n"
        "1 2 2 2 2");
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({0.0F, 4.0F}, {4.0F, 0.0F})}});
    // Off the cut every pixel lies on its room's side but row 2, column 3.
    EXPECT_EQ(rooms.at<std::int32_t>(2, 3), 2);
    EXPECT_EQ(rooms.at<std::int32_t>(0, 0), 1);
    EXPECT_EQ(rooms.at<std::int32_t>(4, 4), 2);
    const cv::Mat walls = rooms == 0;
    EXPECT_EQ(cv::countNonZero(walls), 0);
}

TEST(StraightenBorders, KeepsWhatLiesOutsideOfTheImageOutOfIt) {
    cv::Mat rooms = labels32(
        "1 1 1 2\n"
        "1 1 2 2");
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({2.0F, -1.0F}, {2.0F, 2.0F})}});
    EXPECT_THAT(rooms, MatEq(labels32("1 1 1 2\n"
                                      "1 1 2 2")));
}

TEST(StraightenBorders, DoesNothingWithoutCuts) {
    cv::Mat rooms = labels32("1 1 2 . 3");
    straightenBorders(rooms, {});
    EXPECT_THAT(rooms, MatEq(labels32("1 1 2 . 3")));
}

TEST(StraightenBorders, NeverErasesARoom) {
    // All of 2 lies on the cut.
    cv::Mat rooms = labels32("1 1 1 2 3 3");
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({3.0F, 0.0F}, {3.0F, 0.0F})}});
    EXPECT_THAT(rooms, MatEq(labels32("1 1 1 2 3 3")));
    straightenBorders(rooms, {{Edge(2, 3), lineFrom({3.0F, 0.0F}, {3.0F, 0.0F})}});
    EXPECT_THAT(rooms, MatEq(labels32("1 1 1 2 3 3")));
}

}  // namespace
}  // namespace vorund::rooms
