#include "support/consistency.h"

#include <gmock/gmock.h>

#include <functional>
#include <set>
#include <string>
#include <utility>

#include "reference/graph_processor.h"
#include "support/label_grid.h"
#include "support/room_images.h"

namespace vorund::test {
namespace {

using ::testing::HasSubstr;

constexpr int kLine = 9;

RegionMap threeRooms() {
    return regionMap(labels("1 1 9 2 2\n"
                            "1 1 9 2 2\n"
                            "9 9 9 9 9\n"
                            "3 3 3 3 3"),
                     kLine);
}

/// What the checker says after such a change.
std::string complaint(const std::function<void(RegionMap&)>& change) {
    RegionMap map = threeRooms();
    const RegionTotals totals = regionTotals(map, kLine);
    change(map);
    const auto result = isConsistent(map, kLine, totals);
    return result ? "" : result.message();
}

TEST(Consistency, HoldsForANewMap) {
    EXPECT_EQ(complaint([](RegionMap&) {}), "");
    const RegionTotals totals = regionTotals(threeRooms(), kLine);
    EXPECT_DOUBLE_EQ(totals.area, 13 * 0.0025);
    EXPECT_EQ(totals.rooms_and_borders, 13 + 6);
    EXPECT_EQ(totals.other_lines, 1);
}

TEST(Consistency, MissesALabelThatIsNoRoom) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.segments.at<int>(0, 0) = 7; }),
                HasSubstr("room 1 has 3 pixels"));
    EXPECT_THAT(complaint([](RegionMap& map) { map.segments.at<int>(2, 2) = 7; }),
                HasSubstr("label 7 is no room"));
}

TEST(Consistency, MissesARoomWithoutPixels) {
    EXPECT_THAT(complaint([](RegionMap& map) {
                    map.graph.addNode(7, {0.0025, {}});
                }),
                HasSubstr("room 7 has no pixel"));
}

TEST(Consistency, MissesAnEdgeWithoutAnId) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.border_ids.erase(Edge(1, 3)); }),
                HasSubstr("edge {1, 3} has no id"));
}

TEST(Consistency, MissesAnIdWithoutAnEdge) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.graph.removeEdge(1, 3); }),
                HasSubstr("id 2 is of {1, 3}, which is no edge"));
}

TEST(Consistency, MissesAnIdThatIsGivenTwice) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.border_ids[Edge(1, 3)] = 1; }),
                HasSubstr("id 1 is given twice"));
}

TEST(Consistency, MissesARoomThatNeighborsItself) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.graph.addEdge(2, 2, {0.0}); }),
                HasSubstr("2 neighbours itself"));
}

TEST(Consistency, MissesALengthThatIsNotThatOfThePixels) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.graph.addEdge(1, 2, {0.15}); }),
                HasSubstr("border 1 has 2 pixels, but a length of"));
    EXPECT_THAT(complaint([](RegionMap& map) { map.borders.at<int>(0, 2) = 0; }),
                HasSubstr("border 1 has 1 pixels, but a length of"));
}

TEST(Consistency, MissesABorderOfNobody) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.borders.at<int>(2, 2) = 77; }),
                HasSubstr("border 77 has pixels, but no rooms"));
}

TEST(Consistency, MissesABorderBetweenOtherRooms) {
    const auto swap_ids = [](RegionMap& map) {
        std::swap(map.border_ids.at(Edge(1, 3)), map.border_ids.at(Edge(2, 3)));
    };
    EXPECT_THAT(complaint(swap_ids),
                HasSubstr("the pixel at row 2, column 0 does not separate the rooms of border 2"));
}

TEST(Consistency, MissesABorderThatIsNoLine) {
    EXPECT_THAT(complaint([](RegionMap& map) { map.segments.at<int>(0, 2) = 1; }),
                HasSubstr("the pixel at row 0, column 2 does not separate the rooms of border 1"));
}

TEST(Consistency, MissesAChangedTotal) {
    EXPECT_THAT(complaint([](RegionMap& map) {
                    map.graph.addNode(3, {4 * 0.0025, {}});
                }),
                HasSubstr("the total area was"));
    EXPECT_THAT(complaint([](RegionMap& map) { map.segments.at<int>(2, 2) = 3; }),
                HasSubstr("rooms and borders had 19 pixels, have 20"));
    EXPECT_THAT(complaint([](RegionMap& map) { map.segments.at<int>(2, 2) = 0; }),
                HasSubstr("there were 1 other line pixels, are 0"));
}

TEST(RoomImage, ShowsRoomsThatTouchNowhere) {
    RandomImages random(41);
    for (int i = 0; i < 20; ++i) {
        const cv::Mat image = roomImage(random, random.size(30), 12);
        ASSERT_EQ(image.type(), CV_8UC1);
        for (int row = 0; row < image.rows; ++row) {
            for (int col = 0; col < image.cols; ++col) {
                if (image.at<uchar>(row, col) == 0 || image.at<uchar>(row, col) == 255) continue;
                std::set<int> around =
                    reference::neighborsInCell(reference::cellAround(image, {col, row}), 8);
                around.erase(255);
                ASSERT_TRUE(around.empty()) << "row " << row << ", column " << col;
            }
        }
    }
}

}  // namespace
}  // namespace vorund::test
