#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "doorways/find_doorways.h"
#include "drawn_walls.h"
#include "flow/separators.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::ElementsAre;

FoundDoorway doorwayBetween(const cv::Point& first_jamb, const cv::Point& second_jamb) {
    return {first_jamb, second_jamb, 18, 40};
}

/// All floor is one region.
cv::Mat oneRegion(const cv::Mat& floor, int label = 7) {
    cv::Mat labels = cv::Mat::zeros(floor.size(), CV_32SC1);
    labels.setTo(label, floor);
    return labels;
}

std::set<int> labelsOf(const cv::Mat& labels) {
    std::set<int> values;
    for (const int label : cv::Mat_<std::int32_t>(labels)) values.insert(label);
    return values;
}

/// Floor of two labels and a door between them.
TEST(LinkingDoorways, NameTheRoomsOnBothSides) {
    const cv::Mat floor = DrawnWalls(cv::Size(60, 40))
                              .floor({5, 5, 24, 30})
                              .floor({30, 5, 25, 30})
                              .floor({29, 10, 1, 18})
                              .floor();
    cv::Mat labels = oneRegion(floor, 3);
    labels.colRange(30, 60).setTo(8, floor.colRange(30, 60));
    const FoundDoorway door = doorwayBetween({29, 9}, {29, 28});
    const auto linking = linkingDoorways(labels, floor, {door}, {});
    ASSERT_THAT(linking, ::testing::SizeIs(1));
    EXPECT_EQ(linking[0].rooms, Edge(3, 8));
    EXPECT_THAT(linkingDoorways(oneRegion(floor), floor, {door}, {}), ::testing::IsEmpty())
        << "within a room it leads nowhere";
    RoomsConfig config;
    config.widest_doorway = 0.85;
    EXPECT_THAT(linkingDoorways(labels, floor, {door}, config), ::testing::IsEmpty())
        << "0.9 m are too wide";
    labels.colRange(30, 60).setTo(0);
    EXPECT_THAT(linkingDoorways(labels, floor, {door}, {}), ::testing::IsEmpty());
}

/// Rooms of 5 m by 3 m and 2.5 m by 3 m, and a door in the wall between them.
cv::Mat twoRooms() {
    return DrawnWalls(cv::Size(180, 80))
        .floor({10, 10, 100, 60})
        .floor({112, 10, 50, 60})
        .floor({110, 30, 2, 18})
        .floor();
}

const FoundDoorway kDoor = doorwayBetween({110, 29}, {110, 48});

TEST(SplitAtDoorways, LeavesRegionsAsTheyAreWithoutDoorways) {
    cv::Mat labels = oneRegion(twoRooms());
    splitAtDoorways(labels, twoRooms(), {});
    EXPECT_THAT(labels, MatEq(oneRegion(twoRooms())));
}

TEST(SplitAtDoorways, LeavesTheLabelToTheLargestPiece) {
    cv::Mat labels = oneRegion(twoRooms());
    splitAtDoorways(labels, twoRooms(), {kDoor});
    EXPECT_THAT(labelsOf(labels), ElementsAre(0, 7, 256));
    EXPECT_THAT(labelsOf(labels(cv::Rect(10, 10, 100, 60))), ElementsAre(7));
    EXPECT_THAT(labelsOf(labels(cv::Rect(112, 10, 50, 60))), ElementsAre(256));
    EXPECT_THAT(labelsOf(labels(cv::Rect(110, 30, 1, 18))), ElementsAre(7))
        << "the doorway goes to the smaller label beside it";
}

TEST(SplitAtDoorways, GivesLabelsAboveAllOthers) {
    cv::Mat labels = oneRegion(twoRooms(), 254);
    splitAtDoorways(labels, twoRooms(), {kDoor});
    EXPECT_THAT(labelsOf(labels), ElementsAre(0, 254, 256)) << "255 is unreached";
    labels = oneRegion(twoRooms(), 3000);
    splitAtDoorways(labels, twoRooms(), {kDoor});
    EXPECT_THAT(labelsOf(labels), ElementsAre(0, 3000, 3001));
}

TEST(SplitAtDoorways, LeavesRegionsThatEndInTheDoorway) {
    cv::Mat labels = oneRegion(twoRooms());
    labels(cv::Rect(110, 0, 70, 80)).setTo(9, twoRooms()(cv::Rect(110, 0, 70, 80)));
    const cv::Mat before = labels.clone();
    splitAtDoorways(labels, twoRooms(), {kDoor});
    EXPECT_THAT(labels, MatEq(before));
}

TEST(SplitAtDoorways, KeepsPiecesBelowASquareMetreWhereTheyWere) {
    // A niche of 19 by 20 pixels behind a door, beside a region of another label; then of 20 by 20.
    for (const int width : {19, 20}) {
        const cv::Mat floor = DrawnWalls(cv::Size(180, 80))
                                  .floor({10, 10, 100, 60})
                                  .floor({112, 29, width, 20})
                                  .floor({110, 30, 2, 18})
                                  .floor();
        cv::Mat labels = oneRegion(floor);
        // The doorway on its last column: the niche alone is the piece.
        splitAtDoorways(labels, floor, {doorwayBetween({111, 29}, {111, 48})});
        if (width == 19) {
            EXPECT_THAT(labels, MatEq(oneRegion(floor)));
        } else {
            EXPECT_THAT(labelsOf(labels), ElementsAre(0, 7, 256));
        }
    }
}

TEST(SplitAtDoorways, LeavesWhatIsUnreached) {
    cv::Mat labels = oneRegion(twoRooms());
    labels(cv::Rect(110, 30, 1, 6)) = kLine;
    labels(cv::Rect(10, 10, 20, 20)) = kLine;
    const cv::Mat unreached = labels == kLine;
    splitAtDoorways(labels, twoRooms(), {kDoor});
    EXPECT_THAT(labels == kLine, MatEq(unreached));
    EXPECT_THAT(labelsOf(labels), ElementsAre(0, 7, kLine, 256));
}

TEST(SplitAtDoorways, PartsARegionWhereDoorwaysCross) {
    // Two lines across a square, from wall to wall, make four pieces.
    const cv::Mat floor = DrawnWalls(cv::Size(121, 121)).floor({10, 10, 101, 101}).floor();
    cv::Mat labels = oneRegion(floor);
    splitAtDoorways(labels, floor,
                    {doorwayBetween({9, 50}, {111, 50}), doorwayBetween({70, 9}, {70, 111})});
    EXPECT_THAT(labelsOf(labels), ElementsAre(0, 7, 256, 257, 258));
    EXPECT_THAT(labelsOf(labels(cv::Rect(10, 10, 60, 40))), ElementsAre(256));
    EXPECT_THAT(labelsOf(labels(cv::Rect(71, 10, 40, 40))), ElementsAre(257));
    EXPECT_THAT(labelsOf(labels(cv::Rect(10, 51, 60, 60))), ElementsAre(7)) << "the largest";
    EXPECT_THAT(labelsOf(labels(cv::Rect(71, 51, 40, 60))), ElementsAre(258));
}

TEST(SplitAtDoorways, LetsADoorwayPartSeveralRegions) {
    // Regions above and below row 40, a doorway through both.
    const cv::Mat floor = DrawnWalls(cv::Size(121, 81)).floor({10, 10, 101, 61}).floor();
    cv::Mat labels = oneRegion(floor, 3);
    labels(cv::Rect(10, 40, 101, 31)) = 5;
    splitAtDoorways(labels, floor, {doorwayBetween({50, 9}, {50, 71})});
    EXPECT_THAT(labelsOf(labels(cv::Rect(10, 10, 40, 30))), ElementsAre(256));
    EXPECT_THAT(labelsOf(labels(cv::Rect(51, 10, 60, 30))), ElementsAre(3));
    EXPECT_THAT(labelsOf(labels(cv::Rect(10, 40, 40, 31))), ElementsAre(257));
    EXPECT_THAT(labelsOf(labels(cv::Rect(51, 40, 60, 31))), ElementsAre(5));
}

TEST(SplitAtDoorways, KeepsEveryPixelInItsRegionOrAPieceOfIt) {
    int parted = 0;
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        test::RandomImages random(seed);
        const cv::Size size(60 + random.below(80), 60 + random.below(80));
        const cv::Mat floor = random.bytes(size, 100) != 0;
        cv::Mat labels = cv::Mat_<std::int32_t>(random.patches(size, 3, 1));
        labels.setTo(kLine, labels == 2);
        labels.setTo(0, labels == 3);
        const cv::Mat before = labels.clone();
        std::vector<FoundDoorway> doorways;
        for (int i = 0; i < 2; ++i) {
            doorways.push_back(doorwayBetween({-3, random.below(size.height)},
                                              {size.width + 3, random.below(size.height)}));
            doorways.push_back(doorwayBetween({random.below(size.width), 0},
                                              {random.below(size.width), size.height - 1}));
        }
        splitAtDoorways(labels, floor, doorways);
        const std::set<int> known = labelsOf(before);
        std::map<int, int> region_of;
        for (int row = 0; row < size.height; ++row) {
            for (int col = 0; col < size.width; ++col) {
                const int was = before.at<std::int32_t>(row, col);
                const int now = labels.at<std::int32_t>(row, col);
                if (known.count(now) > 0) {
                    ASSERT_EQ(now, was);
                } else {
                    ASSERT_GT(now, kLine);
                    ASSERT_EQ(region_of.emplace(now, was).first->second, was);
                    ASSERT_TRUE(was != 0 && was != kLine);
                }
            }
        }
        const std::set<int> left = labelsOf(labels);
        for (const int label : known) EXPECT_EQ(left.count(label), 1U) << label;
        if (!region_of.empty()) ++parted;
    }
    EXPECT_GE(parted, 20);
}

}  // namespace
}  // namespace vorund::rooms
