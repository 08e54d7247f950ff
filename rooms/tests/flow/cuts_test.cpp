#include "flow/cuts.h"

#include <gmock/gmock.h>

#include <cstdint>

#include "cut_matchers.h"
#include "flow/regions.h"
#include "flow/separators.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"

namespace vorund::rooms {
namespace {

using test::labels32;
using test::MatEq;
using ::testing::IsEmpty;
using ::testing::SizeIs;

RoomGraph roomGraph(const cv::Mat& separated) {
    return wholeRoomGraph(regionsOf(separated));
}

GraphProcessor::OptimalLine lineFrom(const cv::Point2f& start, const cv::Point2f& end) {
    GraphProcessor::OptimalLine line{};
    line.start = start;
    line.end = end;
    line.center = (start + end) * 0.5F;
    return line;
}

TEST(FindCuts, CutsADoorwayFromWallToWall) {
    // The line of the doorway is in column 6, from row 3 to row 11.
    cv::Mat image(15, 13, CV_32SC1, cv::Scalar(0));
    image(cv::Rect(0, 0, 6, 15)) = 2;
    image(cv::Rect(7, 0, 6, 15)) = 900;
    image(cv::Rect(6, 3, 1, 9)) = kLine;
    const Cuts cuts = findCuts(roomGraph(image));
    ASSERT_THAT(cuts, SizeIs(1));
    EXPECT_EQ(cuts.begin()->first, Edge(2, 900));
    const GraphProcessor::OptimalLine& line = cuts.begin()->second;
    EXPECT_EQ(line.center, cv::Point2f(6.0F, 7.0F));
    EXPECT_EQ(line.angle, 90.0F);
    EXPECT_EQ(line.effective_length, 8.0F);
}

TEST(FindCuts, FindsNoneWhereNothingSharesABorder) {
    EXPECT_THAT(findCuts(roomGraph(labels32("1 1 . 2 2"))), IsEmpty());
    EXPECT_THAT(findCuts(roomGraph(labels32("1 1 1"))), IsEmpty());
    EXPECT_THAT(findCuts(roomGraph(labels32(". . ."))), IsEmpty());
}

TEST(FindCuts, FindsWhatTheCoreFindsAndSaysNothing) {
    test::RandomImages random(55);
    std::size_t all = 0;
    for (int run = 0; run < 30; ++run) {
        const cv::Mat image = test::roomImage(random, random.size(90), 1 + random.below(12));
        const auto found = GraphProcessor::extractCommonBorders(image, kLine);
        Cuts expected;
        {
            const test::PlainCapture printed;
            const auto [picture, lines] = GraphProcessor::processOptimalBorderRectification(
                found.borders_map, found.border_ids, image, "");
            for (const auto& [edge, id] : found.border_ids) {
                if (lines.count(id) > 0) expected.emplace(edge, lines.at(id));
            }
        }
        const test::PlainCapture printed;
        expectSameCuts(findCuts(roomGraph(cv::Mat_<std::int32_t>(image))), expected);
        EXPECT_EQ(printed.text(), "");
        all += expected.size();
    }
    EXPECT_GT(all, 30U) << "the images are too simple to show anything";
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

TEST(StraightenBorders, GivesAPieceThatIsHalfOfEachToTheSmallerLabel) {
    cv::Mat rooms = labels32(
        "1 1 1 2 2 2\n"
        "1 1 1 2 2 2\n"
        ". . . . . .\n"
        ". 1 2 . . .");
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({3.0F, 0.0F}, {3.0F, 1.0F})}});
    EXPECT_THAT(rooms, MatEq(labels32("1 1 1 2 2 2\n"
                                      "1 1 1 2 2 2\n"
                                      ". . . . . .\n"
                                      ". 1 1 . . .")));
}

TEST(StraightenBorders, CountsWhatARoomHasJustGrownBy) {
    // In the uppermost row, 25 pixels of 1 and an arm of 2, which has more of itself further down.
    cv::Mat rooms(5, 35, CV_32SC1, cv::Scalar(0));
    rooms(cv::Rect(0, 0, 25, 1)) = 1;
    rooms(cv::Rect(25, 0, 10, 1)) = 2;
    rooms(cv::Rect(17, 1, 8, 2)) = 3;
    rooms(cv::Rect(0, 4, 12, 1)) = 2;
    cv::Mat expected = rooms.clone();
    expected.row(0) = 1;
    // The first cut leaves the whole row to 1. The second one, through column 15, has 16 pixels of
    // 3 at its right, but 19 of 1 with the arm: it parts nothing.
    straightenBorders(rooms, {{Edge(1, 2), lineFrom({0.0F, 4.0F}, {0.0F, 4.0F})},
                              {Edge(1, 3), lineFrom({15.0F, 0.0F}, {15.0F, 0.0F})}});
    EXPECT_THAT(rooms, MatEq(expected));
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
