#include "flow/regions.h"

#include <gmock/gmock.h>

#include <cstdint>

#include "flow/separators.h"
#include "reference/room_graph.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::labels32;
using test::MatEq;

/// The rooms after merging.
/// @param segmented  Of bytes.
/// @param merged     The label image with its lines then.
cv::Mat successors(const cv::Mat& segmented, const cv::Mat& merged) {
    cv::Mat rooms;
    segmented.convertTo(rooms, CV_32S);
    Regions regions = separate(rooms);
    for (int row = 0; row < segmented.rows; ++row) {
        for (int col = 0; col < segmented.cols; ++col) {
            const int label = regions.labels.at<std::int32_t>(row, col);
            if (label == kLine) continue;
            regions.table.labels.at<std::int32_t>(label) = merged.at<std::int32_t>(row, col);
        }
    }
    rename(rooms, successorsOf(regions));
    EXPECT_THAT(rooms, MatEq(reference::withLinePixels(segmented, merged)));
    return rooms;
}

TEST(SuccessorsOf, GivesALineBackToTheRoomItWasTakenFrom) {
    EXPECT_THAT(successors(labels("1 1 2 2"), labels32("1 1 255 2")), MatEq(labels32("1 1 2 2")));
    EXPECT_THAT(successors(labels("8 8 3 3"), labels32("8 255 3 3")), MatEq(labels32("8 8 3 3")));
}

TEST(SuccessorsOf, GivesALineToWhatItsRoomHasBecome) {
    // 5 has become 1; the line between 5 and 9 was 9's.
    EXPECT_THAT(successors(labels("1 1 5 5 9 9"), labels32("1 1 1 1 255 9")),
                MatEq(labels32("1 1 1 1 9 9")));
    // 9 has become 5: the line that both have to 1 was theirs.
    EXPECT_THAT(successors(labels("1 1 1 1\n"
                                  "5 5 9 9\n"
                                  "5 5 9 9"),
                           labels32(" 1   1   1   1\n"
                                    "255 255 255 255\n"
                                    " 5   5   5   5")),
                MatEq(labels32("1 1 1 1\n"
                               "5 5 5 5\n"
                               "5 5 5 5")));
}

TEST(SuccessorsOf, KeepsRemovedRoomsAndTheirLinesAway) {
    EXPECT_THAT(successors(labels("2 2 3 3 . 1 1"), labels32(". . . . . 1 1")),
                MatEq(labels32(". . . . . 1 1")));
    // The 3's line stands where nothing touched the removed room.
    EXPECT_THAT(successors(labels("2 3 3 3"), labels32(". . 255 .")), MatEq(labels32(". . . .")));
}

TEST(SuccessorsOf, LeavesUnreachedFloorWithoutARoom) {
    EXPECT_THAT(successors(labels("1 1 255 255 2 2"), labels32("1 1 255 255 2 2")),
                MatEq(labels32("1 1 . . 2 2")));
    // Unreached floor between two rooms that were merged as a line.
    EXPECT_THAT(successors(labels("1 1 255 2 2"), labels32("1 1 1 1 1")),
                MatEq(labels32("1 1 . 1 1")));
}

TEST(SuccessorsOf, GivesAThinRoomToTheSmallerLabelBesideIt) {
    EXPECT_THAT(successors(labels("4 4 4\n"
                                  "4 4 4\n"
                                  "6 6 6\n"
                                  "9 9 9\n"
                                  "9 9 9"),
                           labels32(" 4   4   4\n"
                                    " 4   4   4\n"
                                    "255 255 255\n"
                                    "255 255 255\n"
                                    " 9   9   9")),
                MatEq(labels32("4 4 4\n"
                               "4 4 4\n"
                               "4 4 4\n"
                               "9 9 9\n"
                               "9 9 9")));
}

TEST(SuccessorsOf, FollowsAChainOfThinRooms) {
    // 3 goes to 2, which goes to 1, which has become 8.
    EXPECT_THAT(successors(labels("8 8 1 2 3"), labels32("8 8 8 255 255")),
                MatEq(labels32("8 8 8 8 8")));
}

TEST(SuccessorsOf, GivesAThinRoomBesideARemovedOneAwayWithIt) {
    EXPECT_THAT(successors(labels("2 2 4 . 5 5"), labels32(". . . . 5 5")),
                MatEq(labels32(". . . . 5 5")));
}

TEST(SuccessorsOf, KeepsARoomWhoseLineWentWithARemovedIsland) {
    // 3 shares only a junction with 4 and 5, so it was an island, and that junction, the last pixel
    // of 5, went with it.
    EXPECT_THAT(successors(labels("5 5 4 4\n"
                                  "5 5 4 4\n"
                                  ". 5 4 .\n"
                                  ". 3 . ."),
                           labels32("5 255 4 4\n"
                                    "5 255 4 4\n"
                                    ".  .  4 .\n"
                                    ".  .  . .")),
                MatEq(labels32("5 5 4 4\n"
                               "5 5 4 4\n"
                               ". 5 4 .\n"
                               ". . . .")));
}

TEST(SuccessorsOf, KeepsARoomWhoseThinEndWasALineBetweenTwoOthersThatBecameOne) {
    // The lower end of 9 is one pixel thin: lines that touch 1 and 2 alone, and so a border of
    // those. As 2 became 1 they did too, but 9 did not.
    EXPECT_THAT(successors(labels("9 9 9 9 9\n"
                                  "9 9 9 9 9\n"
                                  "1 1 9 2 2\n"
                                  "1 1 9 2 2\n"
                                  "1 1 9 2 2"),
                           labels32(" 9   9   9   9   9\n"
                                    "255 255  9  255 255\n"
                                    " 1   1  255  1   1\n"
                                    " 1   1   1   1   1\n"
                                    " 1   1   1   1   1")),
                MatEq(labels32("9 9 9 9 9\n"
                               "9 9 9 9 9\n"
                               "1 1 9 1 1\n"
                               "1 1 9 1 1\n"
                               "1 1 9 1 1")));
}

TEST(SuccessorsOf, TakesViewsOfLargerImages) {
    EXPECT_THAT(successors(test::asView(labels("1 1 2 2\n"
                                               ". 1 2 .")),
                           test::asView(labels32("1 1 255 2\n"
                                                 ". 1 255 ."))),
                MatEq(labels32("1 1 2 2\n"
                               ". 1 2 .")));
}

}  // namespace
}  // namespace vorund::rooms
