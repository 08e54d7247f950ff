#include "vorund/graph_processor.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/graph_processor.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"

namespace vorund::test {
namespace {

using GraphProcessor::CommonBordersResult;
using reference::regionGraph;
using reference::RegionGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::ThrowsMessage;

constexpr int kLine = 9;

std::set<int> neighbors(const cv::Mat& cell, int connectivity) {
    return GraphProcessor::allCellNeighbors(cell, connectivity);
}

cv::Mat converted(const cv::Mat& image, int type) {
    cv::Mat result;
    image.convertTo(result, type);
    return result;
}

/// Rooms of one pixel each on a grid, numbered from 1 by rows, with lines of 255 between them.
cv::Mat gridOfRooms(int rows, int cols) {
    cv::Mat_<std::uint8_t> image(2 * rows - 1, 2 * cols - 1, std::uint8_t{255});
    for (int i = 0; i < rows * cols; ++i) {
        image(2 * (i / cols), 2 * (i % cols)) = static_cast<std::uint8_t>(i + 1);
    }
    return image;
}

// extractCellAndPad

TEST(ExtractCellAndPad, CopiesTheNeighborhoodOfAPoint) {
    const cv::Mat map = labels(
        "1 2 3 4\n"
        "5 6 7 8\n"
        "1 3 5 7");
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(2, 1)), MatEq(labels("2 3 4\n"
                                                                                      "6 7 8\n"
                                                                                      "3 5 7")));
}

TEST(ExtractCellAndPad, ReadsZeroOutsideTheImage) {
    const cv::Mat map = labels(
        "1 2 3\n"
        "4 5 6\n"
        "7 8 9");
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(0, 0)), MatEq(labels(". . .\n"
                                                                                      ". 1 2\n"
                                                                                      ". 4 5")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(2, 0)), MatEq(labels(". . .\n"
                                                                                      "2 3 .\n"
                                                                                      "5 6 .")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(0, 2)), MatEq(labels(". 4 5\n"
                                                                                      ". 7 8\n"
                                                                                      ". . .")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(2, 2)), MatEq(labels("5 6 .\n"
                                                                                      "8 9 .\n"
                                                                                      ". . .")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(1, 0)), MatEq(labels(". . .\n"
                                                                                      "1 2 3\n"
                                                                                      "4 5 6")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(map, cv::Point(0, 1)), MatEq(labels(". 1 2\n"
                                                                                      ". 4 5\n"
                                                                                      ". 7 8")));
}

TEST(ExtractCellAndPad, PadsEverySideOfASinglePixel) {
    EXPECT_THAT(GraphProcessor::extractCellAndPad(labels("7"), cv::Point(0, 0)),
                MatEq(labels(". . .\n"
                             ". 7 .\n"
                             ". . .")));
}

TEST(ExtractCellAndPad, PadsOneRowAndOneColumn) {
    EXPECT_THAT(GraphProcessor::extractCellAndPad(labels("4 5 6"), cv::Point(1, 0)),
                MatEq(labels(". . .\n"
                             "4 5 6\n"
                             ". . .")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(labels("4\n5\n6"), cv::Point(0, 2)),
                MatEq(labels(". 5 .\n"
                             ". 6 .\n"
                             ". . .")));
}

TEST(ExtractCellAndPad, KeepsTheType) {
    EXPECT_THAT(GraphProcessor::extractCellAndPad(labels32("100000 -3"), cv::Point(0, 0)),
                MatEq(labels32(". . .\n"
                               ". 100000 -3\n"
                               ". . .")));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(values("0.5 0.25"), cv::Point(1, 0)),
                MatEq(values(". . .\n"
                             "0.5 0.25 .\n"
                             ". . .")));
    const cv::Mat colours(2, 2, CV_8UC3, cv::Scalar(1, 2, 3));
    const cv::Mat cell = GraphProcessor::extractCellAndPad(colours, cv::Point(0, 0));
    ASSERT_EQ(cell.type(), CV_8UC3);
    EXPECT_EQ(cell.at<cv::Vec3b>(0, 0), cv::Vec3b(0, 0, 0));
    EXPECT_EQ(cell.at<cv::Vec3b>(1, 1), cv::Vec3b(1, 2, 3));
}

TEST(ExtractCellAndPad, DoesNotSeeWhatLiesAroundAView) {
    const cv::Mat view =
        asView(labels("1 2\n"
                      "3 4"));
    EXPECT_THAT(GraphProcessor::extractCellAndPad(view, cv::Point(1, 1)), MatEq(labels("1 2 .\n"
                                                                                       "3 4 .\n"
                                                                                       ". . .")));
}

TEST(ExtractCellAndPad, SharesNoPixelsWithTheMap) {
    const cv::Mat map = labels("1 2 3\n4 5 6\n7 8 9");
    cv::Mat cell = GraphProcessor::extractCellAndPad(map, cv::Point(1, 1));
    cell.setTo(0);
    EXPECT_THAT(map, MatEq(labels("1 2 3\n4 5 6\n7 8 9")));
}

TEST(ExtractCellAndPad, RejectsAnEmptyMap) {
    EXPECT_THAT([] { GraphProcessor::extractCellAndPad(cv::Mat(), cv::Point(0, 0)); },
                ThrowsMessage<std::runtime_error>("extractCellAndPad: Input map is empty."));
}

// allCellNeighbors

TEST(AllCellNeighbors, LooksAtFourOrAtEight) {
    const cv::Mat cell = labels(
        "1 2 3\n"
        "4 5 6\n"
        "7 8 9");
    EXPECT_THAT(neighbors(cell, 4), ElementsAre(2, 4, 6, 8));
    EXPECT_THAT(neighbors(cell, 8), ElementsAre(1, 2, 3, 4, 6, 7, 8, 9));
}

TEST(AllCellNeighbors, LeavesOutZeroAndTheValueOfTheCentre) {
    EXPECT_THAT(neighbors(labels(". 3 .\n"
                                 "3 3 2\n"
                                 "2 3 ."),
                          8),
                ElementsAre(2));
}

TEST(AllCellNeighbors, FindsNothingAroundAUniformCell) {
    EXPECT_THAT(neighbors(labels("5 5 5\n5 5 5\n5 5 5"), 8), IsEmpty());
    EXPECT_THAT(neighbors(labels("5 5 5\n5 5 5\n5 5 5"), 4), IsEmpty());
}

TEST(AllCellNeighbors, FindsLabelsAroundBackground) {
    EXPECT_THAT(neighbors(labels("5 . .\n. . 7\n. . ."), 8), ElementsAre(5, 7));
}

TEST(AllCellNeighbors, WidensEveryType) {
    EXPECT_THAT(neighbors(labels("255 . .\n. 1 .\n. . 200"), 8), ElementsAre(200, 255));
    const cv::Mat grid = labels32("-128 . .\n-7 1 .\n. . 127");
    EXPECT_THAT(neighbors(converted(grid, CV_8S), 8), ElementsAre(-128, -7, 127));
    EXPECT_THAT(neighbors(converted(labels32("65535 . .\n. 1 .\n. 300 ."), CV_16U), 8),
                ElementsAre(300, 65535));
    EXPECT_THAT(neighbors(converted(labels32("-32768 . .\n. 1 .\n. 300 ."), CV_16S), 8),
                ElementsAre(-32768, 300));
    EXPECT_THAT(neighbors(labels32("-2000000000 . .\n. 1 .\n. 2000000000 ."), 8),
                ElementsAre(-2000000000, 2000000000));
}

TEST(AllCellNeighbors, ReadsAViewLikeAnyCell) {
    EXPECT_THAT(neighbors(asView(labels("4 . .\n. 1 .\n. . 6")), 8), ElementsAre(4, 6));
    EXPECT_THAT(neighbors(asView(labels32("4 . .\n. 1 .\n. . 6")), 8), ElementsAre(4, 6));
}

TEST(AllCellNeighbors, IsInstantiatedForThreeTypes) {
    const cv::Mat grid = labels32("4 . .\n. 1 3\n. . 300");
    EXPECT_THAT(GraphProcessor::allCellNeighborsImpl<int>(grid, 8), ElementsAre(3, 4, 300));
    EXPECT_THAT(GraphProcessor::allCellNeighborsImpl<short>(converted(grid, CV_16S), 4),
                ElementsAre(3));
    EXPECT_THAT(GraphProcessor::allCellNeighborsImpl<unsigned short>(converted(grid, CV_16U), 8),
                ElementsAre(3, 4, 300));
}

TEST(AllCellNeighbors, RejectsACellOfAnotherSizeFirst) {
    const std::string message = "allCellNeighbors: Input cell must be 3x3.";
    EXPECT_THAT([] { neighbors(cv::Mat::zeros(3, 4, CV_8UC1), 5); },
                ThrowsMessage<std::runtime_error>(message));
    EXPECT_THAT([] { neighbors(cv::Mat::zeros(4, 3, CV_32FC1), 8); },
                ThrowsMessage<std::runtime_error>(message));
    EXPECT_THAT([] { neighbors(cv::Mat(), 8); }, ThrowsMessage<std::runtime_error>(message));
}

TEST(AllCellNeighbors, RejectsAnotherConnectivityNext) {
    const std::string message = "allCellNeighbors: Connectivity must be 4 or 8.";
    for (const int connectivity : {-4, 0, 1, 5, 6, 9}) {
        EXPECT_THAT([=] { neighbors(cv::Mat::zeros(3, 3, CV_8UC1), connectivity); },
                    ThrowsMessage<std::runtime_error>(message));
    }
    EXPECT_THAT([] { neighbors(cv::Mat::zeros(3, 3, CV_32FC1), 5); },
                ThrowsMessage<std::runtime_error>(message));
}

TEST(AllCellNeighbors, RejectsAnotherType) {
    for (const int type : {CV_32FC1, CV_64FC1, CV_8UC3, CV_8UC2, CV_16UC3, CV_32SC2}) {
        EXPECT_THAT(
            [=] { neighbors(cv::Mat::zeros(3, 3, type), 8); },
            ThrowsMessage<std::runtime_error>("allCellNeighbors: Unsupported cell data type."))
            << type;
    }
}

// excludeEndPoints

TEST(ExcludeEndPoints, KeepsOrRemovesTheEndsOfASegment) {
    const cv::Mat map = labels(
        ". . . . . .\n"
        ". 3 3 3 3 .\n"
        ". . . . . .");
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, true), MatEq(labels(". . . . . .\n"
                                                                          ". 3 . . 3 .\n"
                                                                          ". . . . . .")));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, false), MatEq(labels(". . . . . .\n"
                                                                           ". . 3 3 . .\n"
                                                                           ". . . . . .")));
}

TEST(ExcludeEndPoints, TakesAnIsolatedPixelForNoEnd) {
    const cv::Mat map = labels(". . .\n. 4 .\n. . .");
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, true), MatEq(labels(". . .\n. . .\n. . .")));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, false), MatEq(map));
}

TEST(ExcludeEndPoints, CountsOnTheInputSoThatNothingCascades) {
    // Removing the ends of two pixels leaves nothing, of three the middle one.
    EXPECT_THAT(GraphProcessor::excludeEndPoints(labels("1 1 . 2 2 2"), false),
                MatEq(labels(". . . . 2 .")));
}

TEST(ExcludeEndPoints, CountsNeighborsOfAnyValueButNotDiagonalOnes) {
    const cv::Mat map = labels(
        "1 . .\n"
        "2 3 .\n"
        ". . 4");
    // The 1 and the 3 have the 2 beside them; the 2 has both; the 4 has only a diagonal neighbour.
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, true), MatEq(labels("1 . .\n"
                                                                          ". 3 .\n"
                                                                          ". . .")));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, false), MatEq(labels(". . .\n"
                                                                           "2 . .\n"
                                                                           ". . 4")));
}

TEST(ExcludeEndPoints, WorksAtTheRimOfOneRowOneColumnAndOnePixel) {
    EXPECT_THAT(GraphProcessor::excludeEndPoints(labels("8 8 8"), true), MatEq(labels("8 . 8")));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(labels("8\n8\n8"), true),
                MatEq(labels("8\n.\n8")));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(labels("8"), true), MatEq(labels(".")));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(labels("8"), false), MatEq(labels("8")));
}

TEST(ExcludeEndPoints, LeavesItsInputAloneAndReadsViews) {
    const cv::Mat map = asView(labels("8 8 8\n. . 8"));
    EXPECT_THAT(GraphProcessor::excludeEndPoints(map, true), MatEq(labels("8 . .\n. . 8")));
    EXPECT_THAT(map, MatEq(labels("8 8 8\n. . 8")));
}

TEST(ExcludeEndPoints, RejectsAnythingButAnEightBitImage) {
    const std::string message = "excludeEndPoints: Input map must be a non-empty CV_8U image.";
    EXPECT_THAT([] { GraphProcessor::excludeEndPoints(cv::Mat(), true); },
                ThrowsMessage<std::runtime_error>(message));
    for (const int type : {CV_8UC3, CV_8SC1, CV_32SC1}) {
        EXPECT_THAT([=] { GraphProcessor::excludeEndPoints(cv::Mat::zeros(2, 2, type), false); },
                    ThrowsMessage<std::runtime_error>(message));
    }
}

// extractRegionBorders

TEST(ExtractRegionBorders, MarksThePixelsOfTheSecondLabelThatTouchTheFirst) {
    const cv::Mat map = labels(
        "1 1 2 2 2\n"
        "1 2 2 2 2\n"
        ". . 2 2 1\n"
        ". . 2 2 2");
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, 2), MatEq(labels(". . 255 . .\n"
                                                                              ". 255 255 255 255\n"
                                                                              ". . . 255 .\n"
                                                                              ". . . 255 255")));
}

TEST(ExtractRegionBorders, NeverSeesBackgroundOrTheRegionItself) {
    const cv::Mat map = labels("1 . 2\n1 . 2");
    const cv::Mat nothing = cv::Mat::zeros(2, 3, CV_8UC1);
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 0, 1), MatEq(nothing));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, 1), MatEq(nothing));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, 2), MatEq(nothing));
}

TEST(ExtractRegionBorders, TakesBackgroundForARegionThatTouchesOthers) {
    EXPECT_THAT(GraphProcessor::extractRegionBorders(labels("1 . . 2"), 1, 0),
                MatEq(labels(". 255 . .")));
}

TEST(ExtractRegionBorders, FindsNothingForLabelsThatDoNotOccur) {
    const cv::Mat map = labels("1 2\n2 1");
    const cv::Mat nothing = cv::Mat::zeros(2, 2, CV_8UC1);
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, 7), MatEq(nothing));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 7, 1), MatEq(nothing));
    // 258 and -254 have the low bits of 2.
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, 258), MatEq(nothing));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 258, 1), MatEq(nothing));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, -254), MatEq(nothing));
}

TEST(ExtractRegionBorders, WorksOnOnePixelOneRowAndOneColumn) {
    EXPECT_THAT(GraphProcessor::extractRegionBorders(labels("1"), 2, 1), MatEq(labels(".")));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(labels("1 2 2 1"), 1, 2),
                MatEq(labels(". 255 255 .")));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(labels("1\n2\n2"), 1, 2),
                MatEq(labels(".\n255\n.")));
}

TEST(ExtractRegionBorders, LeavesItsInputAloneAndReadsViews) {
    const cv::Mat map = asView(labels("1 2\n3 2"));
    EXPECT_THAT(GraphProcessor::extractRegionBorders(map, 1, 2), MatEq(labels(". 255\n. 255")));
    EXPECT_THAT(map, MatEq(labels("1 2\n3 2")));
}

TEST(ExtractRegionBorders, RejectsAnythingButAnEightBitImage) {
    EXPECT_THAT([] { GraphProcessor::extractRegionBorders(cv::Mat(), 1, 2); },
                ThrowsMessage<std::runtime_error>("extractRegionBorders: Input map is empty."));
    for (const int type : {CV_32SC1, CV_8UC3, CV_8SC1}) {
        EXPECT_THAT([=] { GraphProcessor::extractRegionBorders(cv::Mat::zeros(2, 2, type), 1, 2); },
                    ThrowsMessage<std::runtime_error>(
                        "extractRegionBorders: Input map must be of type CV_8UC1."));
    }
}

// extractCommonBorders

TEST(ExtractCommonBorders, NumbersTheLineBetweenTwoRooms) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("3 3 9 7 7\n"
                                                                                   "3 3 9 7 7"),
                                                                            kLine);
    EXPECT_THAT(result.borders_map, MatEq(labels(". . 1 . .\n"
                                                 ". . 1 . .")));
    EXPECT_THAT(result.border_ids, ElementsAre(Pair(Edge(3, 7), 1)));
}

TEST(ExtractCommonBorders, GivesAJunctionOfThreeRoomsToNoBorder) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("1 1 9 2 2\n"
                                                                                   "1 1 9 2 2\n"
                                                                                   "9 9 9 9 9\n"
                                                                                   "3 3 3 3 3"),
                                                                            kLine);
    EXPECT_THAT(result.borders_map, MatEq(labels(". . 1 . .\n"
                                                 ". . 1 . .\n"
                                                 "2 2 . 3 3\n"
                                                 ". . . . .")));
    EXPECT_THAT(result.border_ids,
                ElementsAre(Pair(Edge(1, 2), 1), Pair(Edge(1, 3), 2), Pair(Edge(2, 3), 3)));
}

TEST(ExtractCommonBorders, NumbersByTheFirstPixelInRasterOrderNotByLabels) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("8 9 5 9 6\n"
                                                                                   "8 9 5 9 6\n"
                                                                                   "9 9 9 9 9\n"
                                                                                   "1 1 1 1 1"),
                                                                            kLine);
    EXPECT_THAT(result.borders_map, MatEq(labels(". 1 . 2 .\n"
                                                 ". 1 . 2 .\n"
                                                 "3 . 4 . 5\n"
                                                 ". . . . .")));
    EXPECT_THAT(result.border_ids,
                ElementsAre(Pair(Edge(1, 5), 4), Pair(Edge(1, 6), 5), Pair(Edge(1, 8), 3),
                            Pair(Edge(5, 6), 2), Pair(Edge(5, 8), 1)));
}

TEST(ExtractCommonBorders, GivesAllPiecesOfABorderOneId) {
    const CommonBordersResult result =
        GraphProcessor::extractCommonBorders(labels("1 9 2 . 2 9 1"), kLine);
    EXPECT_THAT(result.borders_map, MatEq(labels(". 1 . . . 1 .")));
    EXPECT_THAT(result.border_ids, ElementsAre(Pair(Edge(1, 2), 1)));
}

TEST(ExtractCommonBorders, LeavesALineWithOneRoomOrNoneAlone) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("1 9 . 9 9 9\n"
                                                                                   "1 9 . 9 9 9\n"
                                                                                   "1 9 . 9 9 9"),
                                                                            kLine);
    EXPECT_THAT(result.borders_map, MatEq(cv::Mat::zeros(3, 6, CV_8UC1)));
    EXPECT_THAT(result.border_ids, IsEmpty());
}

TEST(ExtractCommonBorders, SeesOnlyWhatLiesInTheImageAtACorner) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("9 1\n"
                                                                                   "2 2"),
                                                                            kLine);
    EXPECT_THAT(result.borders_map, MatEq(labels("1 .\n. .")));
    const CommonBordersResult single = GraphProcessor::extractCommonBorders(labels("9 1\n"
                                                                                   "1 1"),
                                                                            kLine);
    EXPECT_THAT(single.border_ids, IsEmpty());
}

TEST(ExtractCommonBorders, SeesDiagonalNeighbors) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("1 . .\n"
                                                                                   ". 9 .\n"
                                                                                   ". . 2"),
                                                                            kLine);
    EXPECT_THAT(result.border_ids, ElementsAre(Pair(Edge(1, 2), 1)));
}

TEST(ExtractCommonBorders, FindsNothingForALineValueThatDoesNotOccur) {
    const cv::Mat map = labels("1 9 2\n1 9 2");
    // 265 and -247 have the low bits of 9.
    for (const int border_value : {255, 256, 265, -247, -1, 1000000}) {
        const CommonBordersResult result = GraphProcessor::extractCommonBorders(map, border_value);
        EXPECT_THAT(result.borders_map, MatEq(cv::Mat::zeros(2, 3, CV_8UC1))) << border_value;
        EXPECT_THAT(result.border_ids, IsEmpty()) << border_value;
    }
}

TEST(ExtractCommonBorders, TakesBackgroundForALineIfAsked) {
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("1 . 2 9"), 0);
    EXPECT_THAT(result.borders_map, MatEq(labels(". 1 . .")));
    EXPECT_THAT(result.border_ids, ElementsAre(Pair(Edge(1, 2), 1)));
}

TEST(ExtractCommonBorders, TakesAValueThatIsNoLineForARoom) {
    // With 1 as the line, 9 is a room like 2.
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(labels("9 1 2"), 1);
    EXPECT_THAT(result.border_ids, ElementsAre(Pair(Edge(2, 9), 1)));
}

TEST(ExtractCommonBorders, WorksOnOnePixelOneRowAndOneColumn) {
    EXPECT_THAT(GraphProcessor::extractCommonBorders(labels("9"), kLine).borders_map,
                MatEq(labels(".")));
    EXPECT_THAT(GraphProcessor::extractCommonBorders(labels("1 9 2 9 3"), kLine).borders_map,
                MatEq(labels(". 1 . 2 .")));
    EXPECT_THAT(GraphProcessor::extractCommonBorders(labels("1\n9\n2\n9\n3"), kLine).borders_map,
                MatEq(labels(".\n1\n.\n2\n.")));
}

TEST(ExtractCommonBorders, WrapsIdsInTheImageAndKeepsThemInTheMap) {
    // 15 rooms in a row have 14 borders beside them and 15 below: 29 for each row of rooms.
    const cv::Mat map = gridOfRooms(16, 15);
    const CommonBordersResult result = GraphProcessor::extractCommonBorders(map, 255);
    ASSERT_EQ(result.border_ids.size(), 16U * 14U + 15U * 15U);
    // 8 * 29 = 232, so that the ninth row of rooms has 233 to 246 beside and 247 to 261 below.
    const int above = 8 * 15 + 1;
    EXPECT_EQ(result.border_ids.at(Edge(above, above + 1)), 233);
    EXPECT_EQ(result.border_ids.at(Edge(above + 8, above + 23)), 255);
    EXPECT_EQ(result.border_ids.at(Edge(above + 9, above + 24)), 256);
    EXPECT_EQ(result.border_ids.at(Edge(above + 10, above + 25)), 257);
    EXPECT_EQ(result.borders_map.at<std::uint8_t>(17, 16), 255);
    EXPECT_EQ(result.borders_map.at<std::uint8_t>(17, 18), 0);
    EXPECT_EQ(result.borders_map.at<std::uint8_t>(17, 20), 1);
    std::set<int> ids;
    for (const auto& border : result.border_ids) ids.insert(border.second);
    EXPECT_EQ(*ids.begin(), 1);
    EXPECT_EQ(*ids.rbegin(), static_cast<int>(ids.size())) << "ids have gaps";
}

TEST(ExtractCommonBorders, LeavesItsInputAloneAndReadsViews) {
    const cv::Mat map = asView(labels("1 9 2\n1 9 2"));
    EXPECT_THAT(GraphProcessor::extractCommonBorders(map, kLine).borders_map,
                MatEq(labels(". 1 .\n. 1 .")));
    EXPECT_THAT(map, MatEq(labels("1 9 2\n1 9 2")));
}

TEST(ExtractCommonBorders, RejectsAnythingButAnEightBitImage) {
    EXPECT_THAT([] { GraphProcessor::extractCommonBorders(cv::Mat(), kLine); },
                ThrowsMessage<std::runtime_error>("extractCommonBorders: Input map is empty."));
    for (const int type : {CV_32SC1, CV_8UC3, CV_8SC1}) {
        EXPECT_THAT(
            [=] { GraphProcessor::extractCommonBorders(cv::Mat::zeros(2, 2, type), kLine); },
            ThrowsMessage<std::runtime_error>(
                "extractCommonBorders: Input map must be of type CV_8UC1."));
    }
}

// getArea, getLength, getPosition

TEST(GetArea, CountsPixelsTimesTheSquareOfTheResolution) {
    const cv::Mat segments(20, 30, CV_8UC1, cv::Scalar(4));
    segments.colRange(20, 30).setTo(5);
    EXPECT_DOUBLE_EQ(GraphProcessor::getArea(segments, 4, 0.05), 1.0);
    EXPECT_EQ(GraphProcessor::getArea(segments, 4, 0.5), 100.0);
    EXPECT_EQ(GraphProcessor::getArea(segments, 7, 0.05), 0.0);
    EXPECT_EQ(GraphProcessor::getArea(cv::Mat(), 4, 0.05), 0.0);
}

TEST(GetArea, ReadsEightAndThirtyTwoBits) {
    EXPECT_EQ(GraphProcessor::getArea(labels32("100000 -3 -3"), -3, 1.0), 2.0);
    EXPECT_EQ(GraphProcessor::getArea(labels32("100000 -3 -3"), 100000, 1.0), 1.0);
    EXPECT_EQ(GraphProcessor::getArea(asView(labels("2 2\n2 1")), 2, 1.0), 3.0);
    // 258 and -254 have the low bits of 2, but no pixel of 8 bits is equal to them.
    EXPECT_EQ(GraphProcessor::getArea(labels("2 2"), 258, 1.0), 0.0);
    EXPECT_EQ(GraphProcessor::getArea(labels("2 2"), -254, 1.0), 0.0);
}

TEST(GetLength, CountsPixelsTimesTheResolution) {
    const cv::Mat borders(20, 1, CV_8UC1, cv::Scalar(1));
    EXPECT_DOUBLE_EQ(GraphProcessor::getLength(borders, 1, 0.05), 1.0);
    EXPECT_EQ(GraphProcessor::getLength(borders, 2, 0.05), 0.0);
    EXPECT_EQ(GraphProcessor::getLength(borders, 257, 0.05), 0.0);
    EXPECT_EQ(GraphProcessor::getLength(cv::Mat(), 1, 0.05), 0.0);
}

TEST(GetLength, CountsOnePerPixelOfADiagonal) {
    EXPECT_EQ(GraphProcessor::getLength(labels("1 . .\n. 1 .\n. . 1"), 1, 2.0), 6.0);
    EXPECT_EQ(GraphProcessor::getLength(asView(labels("1 . .\n. 1 .")), 1, 2.0), 4.0);
}

TEST(GetPosition, RoundsTheCentroidHalvesUp) {
    EXPECT_EQ(GraphProcessor::getPosition(labels("5 5"), 5), cv::Point(1, 0));
    EXPECT_EQ(GraphProcessor::getPosition(labels("5\n5"), 5), cv::Point(0, 1));
    EXPECT_EQ(GraphProcessor::getPosition(labels(". . 5 5"), 5), cv::Point(3, 0));
    // 4 / 3 rounds down, 5 / 3 up.
    EXPECT_EQ(GraphProcessor::getPosition(labels("5 5 . 5"), 5), cv::Point(1, 0));
    EXPECT_EQ(GraphProcessor::getPosition(labels("5 . 5 5"), 5), cv::Point(2, 0));
}

TEST(GetPosition, MayLieOutsideTheRoom) {
    EXPECT_EQ(GraphProcessor::getPosition(labels("3 3 3\n"
                                                 "3 . 3\n"
                                                 "3 3 3"),
                                          3),
              cv::Point(1, 1));
}

TEST(GetPosition, TellsThatThereIsNoPixel) {
    EXPECT_EQ(GraphProcessor::getPosition(labels("3 3"), 4), cv::Point(-1, -1));
    EXPECT_EQ(GraphProcessor::getPosition(labels("3 3"), 259), cv::Point(-1, -1));
    EXPECT_EQ(GraphProcessor::getPosition(cv::Mat(), 3), cv::Point(-1, -1));
}

TEST(GetPosition, ReadsThirtyTwoBitsAndViews) {
    EXPECT_EQ(GraphProcessor::getPosition(labels32(". . 100000"), 100000), cv::Point(2, 0));
    EXPECT_EQ(GraphProcessor::getPosition(asView(labels32("1 1\n1 -4")), -4), cv::Point(1, 1));
}

TEST(GetPosition, DoesNotOverflowOnALargeHall) {
    // The x of the pixels add up to 8.6e9.
    const cv::Mat hall(256, 8200, CV_8UC1, cv::Scalar(1));
    EXPECT_EQ(GraphProcessor::getPosition(hall, 1), cv::Point(4100, 128));
}

// createGraph

TEST(CreateGraph, MakesANodePerLabelWithAreaAndPosition) {
    const Graph graph = GraphProcessor::createGraph(labels(". 3 3 9 7\n"
                                                           ". 3 3 9 7"),
                                                    labels(". . . 1 .\n"
                                                           ". . . 1 ."),
                                                    {{Edge(3, 7), 1}}, kLine);
    ASSERT_EQ(graph.nodes().size(), 2U);
    EXPECT_DOUBLE_EQ(graph.getNodeData(3).area, 0.01);
    EXPECT_EQ(graph.getNodeData(3).position, cv::Point(2, 1));
    EXPECT_DOUBLE_EQ(graph.getNodeData(7).area, 0.005);
    EXPECT_EQ(graph.getNodeData(7).position, cv::Point(4, 1));
    EXPECT_DOUBLE_EQ(graph.getEdgeData(3, 7).length, 0.1);
    EXPECT_THAT(graph.adjacency(), ElementsAre(Pair(3, ElementsAre(7)), Pair(7, ElementsAre(3))));
}

TEST(CreateGraph, MakesNoNodeOfBackgroundAndLines) {
    const Graph graph =
        GraphProcessor::createGraph(labels(". 9 . 9"), labels(". . . ."), {}, kLine);
    EXPECT_EQ(regionGraph(graph), RegionGraph{});
}

TEST(CreateGraph, TakesAnotherLineValueForARoom) {
    const Graph graph = GraphProcessor::createGraph(labels("9 255"), labels(". ."), {}, 255);
    EXPECT_THAT(graph.nodes(), ElementsAre(Pair(9, ::testing::_)));
}

TEST(CreateGraph, SkipsBordersOfUnknownRooms) {
    const Graph graph = GraphProcessor::createGraph(
        labels("3 9 7"), labels(". 1 ."),
        {{Edge(3, 9), 1}, {Edge(3, 8), 1}, {Edge(0, 3), 1}, {Edge(3, 7), 1}}, kLine);
    EXPECT_THAT(graph.adjacency(), ElementsAre(Pair(3, ElementsAre(7)), Pair(7, ElementsAre(3))));
    EXPECT_EQ(graph.edges().size(), 1U);
}

TEST(CreateGraph, MakesAnEdgeOfLengthZeroOfABorderWithoutPixels) {
    const Graph graph =
        GraphProcessor::createGraph(labels("3 9 7"), labels(". 1 ."), {{Edge(3, 7), 257}}, kLine);
    EXPECT_EQ(graph.getEdgeData(3, 7).length, 0.0);
}

TEST(CreateGraph, ReadsThirtyTwoBitsWithNegativeAndLargeLabels) {
    const Graph graph =
        GraphProcessor::createGraph(labels32("-4 70000 -1 . 70000"), labels(". . . . ."), {}, -1);
    ASSERT_EQ(graph.nodes().size(), 2U);
    EXPECT_DOUBLE_EQ(graph.getNodeData(-4).area, 0.0025);
    EXPECT_EQ(graph.getNodeData(-4).position, cv::Point(0, 0));
    EXPECT_DOUBLE_EQ(graph.getNodeData(70000).area, 0.005);
    EXPECT_EQ(graph.getNodeData(70000).position, cv::Point(3, 0));
}

TEST(CreateGraph, ReadsViewsAndLeavesItsInputsAlone) {
    const cv::Mat segments = asView(labels("1 9 2\n1 9 2"));
    const cv::Mat segments32 = asView(labels32("1 9 2\n1 9 2"));
    const cv::Mat borders = asView(labels(". 1 .\n. 1 ."));
    const BorderIds ids{{Edge(1, 2), 1}};
    const Graph graph = GraphProcessor::createGraph(segments, borders, ids, kLine);
    EXPECT_DOUBLE_EQ(graph.getEdgeData(1, 2).length, 0.1);
    EXPECT_DOUBLE_EQ(graph.getNodeData(1).area, 0.005);
    EXPECT_EQ(regionGraph(GraphProcessor::createGraph(segments32, borders, ids, kLine)),
              regionGraph(graph));
    EXPECT_THAT(segments, MatEq(labels("1 9 2\n1 9 2")));
    EXPECT_THAT(segments32, MatEq(labels32("1 9 2\n1 9 2")));
    EXPECT_THAT(borders, MatEq(labels(". 1 .\n. 1 .")));
}

TEST(CreateGraph, MakesAnEmptyGraphOfAnEmptyImage) {
    EXPECT_EQ(regionGraph(GraphProcessor::createGraph(cv::Mat(), cv::Mat(), {}, kLine)),
              RegionGraph{});
    EXPECT_EQ(regionGraph(GraphProcessor::createGraph(cv::Mat(0, 0, CV_32FC1), cv::Mat(),
                                                      {{Edge(1, 2), 1}}, kLine)),
              RegionGraph{});
}

TEST(CreateGraph, NamesTheTypeThatItCannotRead) {
    const std::vector<std::pair<int, std::string>> types{
        {CV_8SC1, "1"},  {CV_16UC1, "2"}, {CV_16SC1, "3"}, {CV_32FC1, "5"},
        {CV_64FC1, "6"}, {CV_8UC3, "16"}, {CV_32SC2, "12"}};
    for (const auto& [type, number] : types) {
        const cv::Mat segments = cv::Mat::zeros(2, 2, type);
        EXPECT_THAT([&] { GraphProcessor::createGraph(segments, labels(". .\n. ."), {}, kLine); },
                    ThrowsMessage<std::runtime_error>("Unsupported segments mat type: " + number));
    }
}

// findGraphRepresentation

TEST(FindGraphRepresentation, FindsBordersAndGraphOfALabelImage) {
    const auto found = GraphProcessor::findGraphRepresentation(labels("1 1 9 2 2\n"
                                                                      "1 1 9 2 2\n"
                                                                      "9 9 9 9 9\n"
                                                                      "3 3 3 3 3"),
                                                               kLine);
    EXPECT_THAT(found.borders_map, MatEq(labels(". . 1 . .\n"
                                                ". . 1 . .\n"
                                                "2 2 . 3 3\n"
                                                ". . . . .")));
    EXPECT_THAT(found.border_ids,
                ElementsAre(Pair(Edge(1, 2), 1), Pair(Edge(1, 3), 2), Pair(Edge(2, 3), 3)));
    EXPECT_THAT(found.graph.adjacency(),
                ElementsAre(Pair(1, ElementsAre(2, 3)), Pair(2, ElementsAre(1, 3)),
                            Pair(3, ElementsAre(1, 2))));
    EXPECT_DOUBLE_EQ(found.graph.getEdgeData(2, 3).length, 0.1);
    EXPECT_DOUBLE_EQ(found.graph.getNodeData(3).area, 0.0125);
    EXPECT_EQ(found.graph.getNodeData(3).position, cv::Point(2, 3));
}

TEST(FindGraphRepresentation, GivesRoomsThatMeetOnlyAtAJunctionNoEdge) {
    // 1 and 4 meet only in the middle, as do 2 and 3.
    const auto found = GraphProcessor::findGraphRepresentation(labels("1 9 2\n"
                                                                      "9 9 9\n"
                                                                      "3 9 4"),
                                                               kLine);
    EXPECT_EQ(found.graph.edges().size(), 4U);
    EXPECT_EQ(found.graph.edges().count(Edge(1, 4)), 0U);
    EXPECT_EQ(found.graph.edges().count(Edge(2, 3)), 0U);
}

TEST(FindGraphRepresentation, MeasuresRoomsAndBordersInMetres) {
    cv::Mat segments(20, 41, CV_8UC1, cv::Scalar(1));
    segments.col(20).setTo(255);
    segments.colRange(21, 41).setTo(2);
    const auto found = GraphProcessor::findGraphRepresentation(segments, 255);
    EXPECT_DOUBLE_EQ(found.graph.getNodeData(1).area, 1.0);
    EXPECT_DOUBLE_EQ(found.graph.getNodeData(2).area, 1.0);
    EXPECT_DOUBLE_EQ(found.graph.getEdgeData(1, 2).length, 1.0);
}

TEST(FindGraphRepresentation, LosesTheLengthOfBordersPastThe255th) {
    const auto found = GraphProcessor::findGraphRepresentation(gridOfRooms(16, 15), 255);
    EXPECT_EQ(found.graph.edges().size(), found.border_ids.size());
    for (const auto& [edge, id] : found.border_ids) {
        const double length = found.graph.getEdgeData(edge.first, edge.second).length;
        if (id > 255) {
            EXPECT_EQ(length, 0.0) << id;
        } else {
            // The 449 borders of one pixel each wrap once, so that 1 to 193 are counted twice.
            EXPECT_DOUBLE_EQ(length, id <= 449 - 256 ? 0.1 : 0.05) << id;
        }
    }
}

TEST(FindGraphRepresentation, WorksOnASinglePixel) {
    const auto room = GraphProcessor::findGraphRepresentation(labels("5"), kLine);
    EXPECT_DOUBLE_EQ(room.graph.getNodeData(5).area, 0.0025);
    EXPECT_THAT(room.graph.getNeighbors(5), IsEmpty());
    EXPECT_EQ(regionGraph(GraphProcessor::findGraphRepresentation(labels("."), kLine).graph),
              RegionGraph{});
    EXPECT_EQ(regionGraph(GraphProcessor::findGraphRepresentation(labels("9"), kLine).graph),
              RegionGraph{});
}

TEST(FindGraphRepresentation, RejectsWhatTheBordersCannotBeFoundIn) {
    EXPECT_THAT([] { GraphProcessor::findGraphRepresentation(cv::Mat(), kLine); },
                ThrowsMessage<std::runtime_error>("extractCommonBorders: Input map is empty."));
    EXPECT_THAT([] { GraphProcessor::findGraphRepresentation(labels32("1 9 2"), kLine); },
                ThrowsMessage<std::runtime_error>(
                    "extractCommonBorders: Input map must be of type CV_8UC1."));
}

TEST(FindGraphRepresentation, LeavesItsInputAloneAndReadsViews) {
    const cv::Mat segments = asView(labels("1 9 2\n1 9 2"));
    const auto found = GraphProcessor::findGraphRepresentation(segments, kLine);
    EXPECT_DOUBLE_EQ(found.graph.getNodeData(2).area, 0.005);
    EXPECT_THAT(segments, MatEq(labels("1 9 2\n1 9 2")));
}

// Agreement with the plain versions

void expectSameGraphs(const cv::Mat& image, int border_value) {
    const auto expected = reference::commonBorders(image, border_value);
    const auto found = GraphProcessor::findGraphRepresentation(image, border_value);
    EXPECT_THAT(found.borders_map, MatEq(expected.borders_map));
    EXPECT_EQ(found.border_ids, expected.border_ids);
    const RegionGraph graph =
        reference::createGraph(image, expected.borders_map, expected.border_ids, border_value);
    EXPECT_EQ(regionGraph(found.graph), graph);
    EXPECT_EQ(regionGraph(GraphProcessor::createGraph(converted(image, CV_32S), found.borders_map,
                                                      found.border_ids, border_value)),
              graph);
}

TEST(GraphProcessorAgreement, HoldsOnRoomsAndLines) {
    RandomImages random(1);
    std::size_t borders = 0;
    for (int i = 0; i < 250; ++i) {
        SCOPED_TRACE(i);
        const cv::Mat image = roomImage(random, random.size(40), 1 + random.below(25));
        expectSameGraphs(i % 2 == 0 ? image : asView(image), 255);
        borders += GraphProcessor::extractCommonBorders(image, 255).border_ids.size();
        if (HasFailure()) return;
    }
    EXPECT_GT(borders, 1000U) << "the images are too simple to show anything";
}

TEST(GraphProcessorAgreement, HoldsOnNoise) {
    RandomImages random(2);
    for (int i = 0; i < 250; ++i) {
        SCOPED_TRACE(i);
        const cv::Mat image = random.bytes(random.size(12), 1 + random.below(6));
        const int border_value = random.below(7);
        expectSameGraphs(image, border_value);
        EXPECT_THAT(GraphProcessor::extractRegionBorders(image, 1, border_value),
                    MatEq(reference::regionBorders(image, 1, border_value)));
        for (const bool flag : {false, true}) {
            EXPECT_THAT(GraphProcessor::excludeEndPoints(image, flag),
                        MatEq(reference::endPoints(image, flag)));
        }
        if (HasFailure()) return;
    }
}

TEST(GraphProcessorAgreement, HoldsOnRoomsWiderThanABlockOfPixels) {
    RandomImages random(7);
    for (int i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        cv::Mat image = roomImage(random, cv::Size(150 + random.below(20), 30), 4);
        // Floor that no room reached lies among the rooms.
        image(cv::Rect(random.below(100), random.below(20), 45, 8)) = 255;
        expectSameGraphs(i % 2 == 0 ? image : asView(image), 255);
        if (HasFailure()) return;
    }
}

TEST(GraphProcessorAgreement, HoldsForEachCellOfAnImage) {
    RandomImages random(3);
    const cv::Mat image = asView(random.bytes(cv::Size(12, 9), 5));
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            const cv::Mat cell = reference::cellAround(image, cv::Point(col, row));
            EXPECT_THAT(GraphProcessor::extractCellAndPad(image, cv::Point(col, row)), MatEq(cell));
            for (const int type : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S}) {
                EXPECT_EQ(neighbors(converted(cell, type), 4), reference::neighborsInCell(cell, 4));
                EXPECT_EQ(neighbors(converted(cell, type), 8), reference::neighborsInCell(cell, 8));
            }
        }
    }
}

TEST(GraphProcessorAgreement, HoldsForEachQuestionAboutALabel) {
    RandomImages random(4);
    for (int i = 0; i < 50; ++i) {
        const cv::Mat image = random.bytes(random.size(15), 6);
        for (const int label : {-1, 0, 1, 3, 5, 7, 256}) {
            EXPECT_EQ(GraphProcessor::getArea(image, label, 0.05),
                      reference::area(image, label, 0.05));
            EXPECT_EQ(GraphProcessor::getLength(image, label, 0.05),
                      reference::length(image, label, 0.05));
            EXPECT_EQ(GraphProcessor::getPosition(image, label), reference::position(image, label));
        }
    }
}

TEST(ExtractCommonBorders, MirrorsWithTheMap) {
    RandomImages random(5);
    for (int i = 0; i < 50; ++i) {
        const cv::Mat image = roomImage(random, random.size(30), 8);
        cv::Mat mirrored;
        cv::flip(image, mirrored, 1);
        const auto result = GraphProcessor::extractCommonBorders(image, 255);
        const auto other = GraphProcessor::extractCommonBorders(mirrored, 255);
        cv::Mat back;
        cv::flip(other.borders_map, back, 1);
        // Ids go by raster order, so that only the pixels and the pairs are mirrored.
        EXPECT_THAT(cv::Mat(back != 0), MatEq(result.borders_map != 0));
        ASSERT_EQ(other.border_ids.size(), result.border_ids.size());
        for (const auto& border : result.border_ids) {
            EXPECT_EQ(other.border_ids.count(border.first), 1U);
        }
    }
}

TEST(FindGraphRepresentation, GivesTheSameOnASecondRun) {
    RandomImages random(6);
    const cv::Mat image = roomImage(random, cv::Size(60, 50), 30);
    const auto first = GraphProcessor::findGraphRepresentation(image, 255);
    const auto second = GraphProcessor::findGraphRepresentation(image, 255);
    EXPECT_THAT(second.borders_map, MatEq(first.borders_map));
    EXPECT_EQ(second.border_ids, first.border_ids);
    EXPECT_EQ(regionGraph(second.graph), regionGraph(first.graph));
}

TEST(CreateGraph, RefusesABordersMapOfAnotherType) {
    EXPECT_THAT(
        [] { GraphProcessor::createGraph(test::labels("1 9 2"), test::labels32(". 1 ."), {}, 9); },
        ::testing::ThrowsMessage<std::runtime_error>(
            "createGraph: The borders map must be of type CV_8UC1."));
    EXPECT_TRUE(GraphProcessor::createGraph(cv::Mat(), test::labels32("1"), {}, 9).nodes().empty());
}

}  // namespace
}  // namespace vorund::test
