#include "vorund/rooms/room_fates.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/rooms/score_files.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::MatEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Every pixel as a square of 10 x 10, so that a cell has the area of the smallest room that
/// counts.
cv::Mat cells(const std::string& grid) {
    cv::Mat large;
    cv::resize(labels(grid), large, {}, 10.0, 10.0, cv::INTER_NEAREST);
    return large;
}

std::vector<RoomFate> fatesOf(const std::string& predicted, const std::string& truth) {
    return fatesOfRooms(cells(predicted), truthFromLabels(cells(truth)));
}

TEST(FatesOfRooms, FindsNothingWrongWhereTheRoomsAreTheSame) {
    const auto fates = fatesOf("7 7 . 5 5", "1 1 . 2 2");
    ASSERT_THAT(fates, SizeIs(2));
    EXPECT_EQ(fates[0].room, 1);
    EXPECT_EQ(fates[1].room, 2);
    for (const RoomFate& fate : fates) {
        EXPECT_TRUE(fate.isRight());
        EXPECT_EQ(fate.iou, 1.0);
    }
}

TEST(FatesOfRooms, NamesThePiecesOfASplitRoomTheLargestFirst) {
    const auto fates = fatesOf("8 8 3 3 3 . 9 9", "1 1 1 1 1 . 2 2");
    ASSERT_THAT(fates, SizeIs(2));
    EXPECT_THAT(fates[0].split, ElementsAre(3, 8));
    EXPECT_EQ(fates[0].iou, 0.6);
    EXPECT_FALSE(fates[0].joined);
    EXPECT_TRUE(fates[0].isFound());
    EXPECT_FALSE(fates[0].isRight());
    EXPECT_FALSE(fates[0].isMissed());
    EXPECT_TRUE(fates[1].isRight());
}

TEST(FatesOfRooms, CountsPiecesOf15PercentAsTheScoreDoes) {
    const std::string room = "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1";
    EXPECT_THAT(fatesOf("2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 3 3 3", room)[0].split,
                ElementsAre(2, 3));
    EXPECT_THAT(fatesOf("2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 3 3", room)[0].split, IsEmpty());
}

TEST(FatesOfRooms, NamesTheOtherRoomsOfAJoinedOne) {
    const auto fates = fatesOf("6 6 6 6 6 6 . 9 9", "1 1 2 2 4 4 . 3 3");
    ASSERT_THAT(fates, SizeIs(4));
    EXPECT_EQ(fates[0].joined, 6);
    EXPECT_THAT(fates[0].joined_with, ElementsAre(2, 4));
    EXPECT_EQ(fates[1].joined, 6);
    EXPECT_THAT(fates[1].joined_with, ElementsAre(1, 4));
    EXPECT_FALSE(fates[1].isMissed());
    EXPECT_EQ(fates[2].room, 3);
    EXPECT_TRUE(fates[2].isRight());
    EXPECT_FALSE(fates[2].joined);
}

TEST(FatesOfRooms, FindsARoomBothSplitAndJoined) {
    // Room 1: 6 covers half of it, 4 the other half; 6 covers all of room 2.
    const auto fates = fatesOf("4 4 6 6 6 6", "1 1 1 1 2 2");
    EXPECT_THAT(fates[0].split, ElementsAre(4, 6));
    EXPECT_EQ(fates[0].joined, 6);
    EXPECT_THAT(fates[0].joined_with, ElementsAre(2));
    EXPECT_EQ(fates[1].joined, 6);
    EXPECT_THAT(fates[1].split, IsEmpty());
}

TEST(FatesOfRooms, MissesWhatNoRoomFits) {
    // Room 1 has no label at all; of room 2 a third has one.
    const auto fates = fatesOf(". . . . 5 . .", "1 1 1 . 2 2 2");
    EXPECT_TRUE(fates[0].isMissed());
    EXPECT_EQ(fates[0].iou, 0.0);
    EXPECT_TRUE(fates[1].isMissed());
    EXPECT_EQ(fates[1].iou, 1.0 / 3.0);
}

TEST(FatesOfRooms, MissesASmallRoomInAPieceOfALargeOne) {
    // The predicted room 5 covers room 1, and of room 2 less than half: nothing is joined to it.
    const auto fates = fatesOf("5 5 5 6 6 6 6", "1 2 2 2 2 2 2");
    EXPECT_TRUE(fates[0].isMissed());
    EXPECT_EQ(fates[0].iou, 1.0 / 3.0);
    EXPECT_THAT(fates[1].split, ElementsAre(6, 5));
}

TEST(FatesOfRooms, LooksAtFreePixelsAlone) {
    const Truth truth = truthFromLabels(cells("1 1 1 2 2"));
    const cv::Mat predicted = cells("1 1 2 2 2");
    EXPECT_THAT(fatesOfRooms(predicted, truth)[0].split, ElementsAre(1, 2));
    const auto fates = fatesOfRooms(predicted, truth, cells("255 255 100 255 255"));
    EXPECT_TRUE(fates[0].isRight());
    EXPECT_EQ(fates[1].iou, 1.0);
}

TEST(FatesOfRooms, AgreesWithTheCountsOfTheScore) {
    const Truth truth =
        truthFromLabels(cells("1 1 1 1 2 2 3 3 4 4\n"
                              "1 1 1 1 2 2 3 3 5 5"));
    const cv::Mat predicted = cells(
        "1 1 2 2 4 4 4 4 6 6\n"
        "1 1 2 2 4 4 4 4 . .");
    const Score score = scoreRooms(predicted, truth);
    int split = 0;
    int joined = 0;
    for (const RoomFate& fate : fatesOfRooms(predicted, truth)) {
        split += fate.split.empty() ? 0 : 1;
        joined += fate.joined ? 1 : 0;
    }
    EXPECT_EQ(split, 1);
    EXPECT_EQ(split, score.over);
    EXPECT_EQ(joined, 2);
    EXPECT_EQ(joined, score.merged_gt);
}

TEST(FatesOfRooms, NumbersTrueRoomsByLabelAndKeepsPredictedLabels) {
    const auto fates = fatesOf("200 200 . 30 30", "7 7 . 5 5");
    ASSERT_THAT(fates, SizeIs(2));
    EXPECT_EQ(fates[0].room, 1);  // The label 5 comes first.
    const auto halves = fatesOf("200 200 . 30 40", "7 7 . 5 5");
    EXPECT_THAT(halves[0].split, ElementsAre(30, 40));
    EXPECT_THAT(halves[1].split, IsEmpty());
}

TEST(FatesOfRooms, RejectsWhatCannotBeCompared) {
    EXPECT_THROW(fatesOfRooms(cells("1 1"), truthFromLabels(cells("1"))), std::invalid_argument);
    EXPECT_THROW(drawFates(cells("1 1"), truthFromLabels(cells("1"))), std::invalid_argument);
}

TEST(ScoreJson, TellsWhatBecameOfEachRoom) {
    const Truth truth = truthFromLabels(cells("1 1 2 2 . 3 3 3 . 4"));
    const cv::Mat predicted = cells("6 6 6 6 . 2 2 3 . .");
    const auto json = nlohmann::json::parse(
        scoreJson(scoreRooms(predicted, truth), fatesOfRooms(predicted, truth)));
    EXPECT_EQ(json["n_gt"], 4);
    ASSERT_EQ(json["rooms"].size(), 4U);
    EXPECT_EQ(json["rooms"][0],
              nlohmann::json::parse(R"({"room": 1, "iou": 0.5, "missed": false, "split": [],
                                        "joined": {"in": 6, "with": [2]}})"));
    EXPECT_EQ(json["rooms"][2]["split"], nlohmann::json({2, 3}));
    EXPECT_EQ(json["rooms"][2]["joined"], nullptr);
    EXPECT_EQ(json["rooms"][3], nlohmann::json::parse(R"({"room": 4, "iou": 0.0, "missed": true,
                                                          "split": [], "joined": null})"));
}

/// Colours that are in some cell (row, column) of the picture, but outlines and letters.
cv::Vec3b colourOfCell(const cv::Mat& picture, int row, int col) {
    return picture.at<cv::Vec3b>(row * 10 + 1, col * 10 + 1);
}

bool isGreyish(const cv::Vec3b& colour) {
    const auto limits = std::minmax({colour[0], colour[1], colour[2]});
    return limits.second - limits.first < 60;
}

TEST(DrawFates, GivesEachKindOfErrorAColourAndMutesTheRest) {
    const Truth truth = truthFromLabels(cells("1 1 2 2 . 3 3 . 4 4 4 . 5 5"));
    const cv::Mat predicted = cells("6 6 6 6 . 1 2 . . . . . 8 8");
    const cv::Mat picture = drawFates(predicted, truth);
    ASSERT_EQ(picture.type(), CV_8UC3);
    const cv::Vec3b joined = colourOfCell(picture, 0, 0);
    const cv::Vec3b split = colourOfCell(picture, 0, 5);
    const cv::Vec3b missed = colourOfCell(picture, 0, 8);
    const cv::Vec3b right = colourOfCell(picture, 0, 12);
    EXPECT_EQ(joined, colourOfCell(picture, 0, 3));
    EXPECT_GT(joined[2], joined[0] + 100);  // Yellow.
    EXPECT_GT(joined[1], joined[0] + 100);
    EXPECT_GT(split[0], split[2] + 100);    // Blue.
    EXPECT_GT(missed[2], missed[0] + 100);  // Red.
    EXPECT_GT(missed[2], missed[1] + 100);
    EXPECT_TRUE(isGreyish(right));
    EXPECT_FALSE(isGreyish(joined) || isGreyish(split) || isGreyish(missed));
    EXPECT_EQ(colourOfCell(picture, 0, 4), cv::Vec3b::all(255));  // No room.
}

TEST(DrawFates, DrawsTrueBordersAndWithinErrorsTheFoundOnes) {
    const cv::Mat picture = drawFates(cells("1 2 3 3"), truthFromLabels(cells("1 1 2 2")));
    const auto isDark = [&](int col) { return picture.at<cv::Vec3b>(1, col)[1] < 100; };
    EXPECT_TRUE(isDark(9));    // Between the pieces of the split room.
    EXPECT_TRUE(isDark(19));   // Between the true rooms.
    EXPECT_FALSE(isDark(29));  // Within a right room.
}

TEST(DrawFates, ShowsTheMapInLightGreyWhereThereIsNoRoom) {
    const Truth truth = truthFromLabels(cells("1 1 . ."));
    const cv::Mat picture = drawFates(cells("1 1 . ."), truth, cells("255 255 0 205"));
    const cv::Vec3b wall = colourOfCell(picture, 0, 2);
    EXPECT_EQ(wall, cv::Vec3b::all(170));
    EXPECT_EQ(colourOfCell(picture, 0, 3), cv::Vec3b::all(239));
}

TEST(DrawFates, HasALegendBelowThatFitsNarrowMapsToo) {
    const cv::Mat picture = drawFates(cells("1"), truthFromLabels(cells("1")));
    EXPECT_GE(picture.cols, 100);
    ASSERT_GT(picture.rows, 60);
    const cv::Mat legend = picture.rowRange(10, picture.rows);
    EXPECT_THAT(cv::Mat(picture({10, 0, picture.cols - 10, 10})),
                MatEq(cv::Mat(10, picture.cols - 10, CV_8UC3, cv::Scalar::all(255))));
    int colours = 0;
    std::vector<cv::Vec3b> seen;
    for (int row = 0; row < legend.rows; ++row) {
        const cv::Vec3b colour = legend.at<cv::Vec3b>(row, 13);
        if (isGreyish(colour) || (!seen.empty() && seen.back() == colour)) continue;
        seen.push_back(colour);
        ++colours;
    }
    EXPECT_EQ(colours, 3);
}

TEST(DrawFates, LeavesItsInputsAsTheyWere) {
    const cv::Mat predicted = cells("1 2");
    const Truth truth = truthFromLabels(cells("1 1"));
    const cv::Mat map = cells("255 250");
    const cv::Mat copies[]{predicted.clone(), truth.rooms.clone(), map.clone()};
    drawFates(predicted, truth, map);
    EXPECT_THAT(predicted, MatEq(copies[0]));
    EXPECT_THAT(truth.rooms, MatEq(copies[1]));
    EXPECT_THAT(map, MatEq(copies[2]));
}

}  // namespace
}  // namespace vorund::rooms
