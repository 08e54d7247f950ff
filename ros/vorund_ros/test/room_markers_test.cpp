#include "room_markers.h"

#include <gmock/gmock.h>

#include <set>

#include "drawn_maps.h"

namespace vorund_ros {
namespace {

using test::foundOf;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using visualization_msgs::Marker;

std::vector<Marker> named(const visualization_msgs::MarkerArray& array, const std::string& name) {
    std::vector<Marker> found;
    for (const Marker& marker : array.markers) {
        if (marker.ns == name) found.push_back(marker);
    }
    return found;
}

/// Twice the area of all triangles, positive if they face up.
double doubledArea(const Marker& marker) {
    double area = 0.0;
    for (std::size_t i = 0; i + 2 < marker.points.size(); i += 3) {
        const auto &a = marker.points[i], &b = marker.points[i + 1], &c = marker.points[i + 2];
        const double one = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
        EXPECT_GT(one, 0.0);
        area += one;
    }
    return area;
}

const cv::Mat kLabels = (cv::Mat_<std::int32_t>(4, 5) << 1, 1, 1, 2, 2,  //
                         1, 1, 1, 0, 2,                                  //
                         1, 0, 1, 2, 2,                                  //
                         3, 3, 0, 0, 2);

TEST(ToBlocks, CoversEveryPixelOfARoomOnce) {
    cv::Mat covered = cv::Mat::zeros(kLabels.size(), CV_32SC1);
    for (const RoomBlock& block : toBlocks(foundOf(kLabels).labels)) {
        EXPECT_EQ(cv::countNonZero(covered(block.pixels)), 0);
        covered(block.pixels).setTo(block.label);
    }
    EXPECT_EQ(cv::countNonZero(covered != kLabels), 0);
}

TEST(ToBlocks, JoinsEqualRunsOfOneRoom) {
    const auto blocks = toBlocks(foundOf((cv::Mat_<std::int32_t>(3, 3) << 1, 1, 0,  //
                                          1, 1, 0,                                  //
                                          2, 2, 0))
                                     .labels);
    ASSERT_THAT(blocks, SizeIs(2));
    EXPECT_EQ(blocks[0].pixels, cv::Rect(0, 0, 2, 2));
    EXPECT_EQ(blocks[1].pixels, cv::Rect(0, 2, 2, 1));
}

TEST(ToMarkers, TakesAwayWhatWasThereFirst) {
    const auto array = toMarkers(foundOf(kLabels));
    ASSERT_FALSE(array.markers.empty());
    EXPECT_EQ(array.markers.front().action, Marker::DELETEALL);
    for (std::size_t i = 1; i < array.markers.size(); ++i) {
        EXPECT_EQ(array.markers[i].action, Marker::ADD);
        EXPECT_EQ(array.markers[i].header.frame_id, "map");
        EXPECT_TRUE(array.markers[i].header.stamp.isZero());
    }
}

TEST(ToMarkers, HasNothingElseForNoRooms) {
    EXPECT_THAT(toMarkers(foundOf(cv::Mat_<std::int32_t>::zeros(2, 2))).markers, SizeIs(1));
}

TEST(ToMarkers, FillsEachRoomWithItsArea) {
    const FoundRooms found = foundOf(kLabels, 0.5);
    const auto rooms = named(toMarkers(found), "rooms");
    ASSERT_THAT(rooms, SizeIs(3));
    for (std::size_t i = 0; i < rooms.size(); ++i) {
        EXPECT_EQ(rooms[i].id, static_cast<int>(i) + 1);
        EXPECT_EQ(rooms[i].type, Marker::TRIANGLE_LIST);
        EXPECT_NEAR(doubledArea(rooms[i]) / 2.0, found.graph.rooms[i].area, 1e-9);
    }
}

TEST(ToMarkers, PutsTheUpperRowOfTheImageOnTop) {
    const auto rooms =
        named(toMarkers(foundOf((cv::Mat_<std::int32_t>(3, 1) << 1, 0, 0))), "rooms");
    for (const auto& corner : rooms[0].points) EXPECT_GE(corner.y, 2.0);
}

TEST(ToMarkers, GivesNeighboursDifferentColours) {
    // A ring of rooms around one, 0 to 9: each touches the one before, and all the first.
    FoundRooms found = foundOf((cv::Mat_<std::int32_t>(1, 9) << 1, 2, 3, 4, 5, 6, 7, 8, 9));
    for (int label = 2; label <= 9; ++label) {
        found.graph.rooms[static_cast<std::size_t>(label - 1)].neighbours = {1};
        if (label > 2) {
            found.graph.rooms[static_cast<std::size_t>(label - 1)].neighbours.push_back(label - 1);
        }
    }
    const auto rooms = named(toMarkers(found), "rooms");
    const auto colour = [&](std::size_t i) {
        return std::vector<float>{rooms[i].color.r, rooms[i].color.g, rooms[i].color.b};
    };
    for (std::size_t i = 1; i < rooms.size(); ++i) {
        EXPECT_NE(colour(i), colour(0));
        EXPECT_NE(colour(i), colour(i - 1));
    }
}

TEST(ToMarkers, WritesNumberAndAreaAtThePlaceOfTheRoom) {
    FoundRooms found = foundOf(kLabels);
    found.graph.rooms[1].area = 12.34;
    found.graph.rooms[1].position.x = 4.0;
    found.graph.rooms[1].position.y = 1.0;
    const auto numbers = named(toMarkers(found), "numbers");
    ASSERT_THAT(numbers, SizeIs(3));
    EXPECT_EQ(numbers[1].text, "2\n12.3 m2");
    EXPECT_DOUBLE_EQ(numbers[1].pose.position.x, 4.0);
    EXPECT_DOUBLE_EQ(numbers[1].pose.position.y, 1.0);
}

TEST(ToMarkers, ClosesEveryOutline) {
    const auto outlines =
        named(toMarkers(foundOf((cv::Mat_<std::int32_t>(1, 1) << 1))), "outlines");
    ASSERT_THAT(outlines, SizeIs(1));
    EXPECT_EQ(outlines[0].type, Marker::LINE_LIST);
    ASSERT_THAT(outlines[0].points, SizeIs(8));  // Four sides of a square.
    std::set<std::pair<double, double>> corners;
    for (const auto& point : outlines[0].points) corners.insert({point.x, point.y});
    EXPECT_EQ(corners, (std::set<std::pair<double, double>>{{0, 0}, {0, 1}, {1, 0}, {1, 1}}));
    EXPECT_EQ(outlines[0].points.front().x, outlines[0].points.back().x);
    EXPECT_EQ(outlines[0].points.front().y, outlines[0].points.back().y);
}

TEST(ToMarkers, DrawsDoorsThatAreThere) {
    FoundRooms found = foundOf(kLabels);
    EXPECT_THAT(named(toMarkers(found), "doors"), IsEmpty());
    found.graph.borders.resize(2);
    found.graph.borders[1].has_door = true;
    found.graph.borders[1].door_start.x = 3.0;
    found.graph.borders[1].door_end.x = 4.0;
    const auto doors = named(toMarkers(found), "doors");
    ASSERT_THAT(doors, SizeIs(1));
    ASSERT_THAT(doors[0].points, SizeIs(2));
    EXPECT_DOUBLE_EQ(doors[0].points[0].x, 3.0);
    EXPECT_DOUBLE_EQ(doors[0].points[1].x, 4.0);
}

}  // namespace
}  // namespace vorund_ros
