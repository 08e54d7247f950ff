#include "vorund/rooms/room_picture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::asView;
using test::MatEq;
using ::testing::ThrowsMessage;

constexpr int kFloor = 255;
constexpr int kWall = 0;

/// A room on an image without others, and the map: floor in the room, wall around it.
struct OneRoom {
    cv::Mat labels;
    cv::Mat picture;
};

OneRoom roomOf(const cv::Size& size, const std::vector<cv::Rect>& parts, int label = 7) {
    OneRoom drawn{cv::Mat::zeros(size, CV_8UC1), cv::Mat(size, CV_8UC1, cv::Scalar(kWall))};
    for (const cv::Rect& part : parts) {
        drawn.labels(part) = cv::Scalar(label);
        drawn.picture(part) = cv::Scalar(kFloor);
    }
    return drawn;
}

cv::Vec3b colourAt(const cv::Mat& drawn, int row, int col) {
    return drawn.at<cv::Vec3b>(row, col);
}

/// The rectangle around all pixels darker than any room's colour.
cv::Rect inkOf(const cv::Mat& drawn, const cv::Rect& within) {
    cv::Mat grey;
    cv::cvtColor(drawn(within), grey, cv::COLOR_BGR2GRAY);
    return cv::boundingRect(grey < 110) + within.tl();
}

TEST(DrawRooms, PaintsRoomsAndLeavesTheRestAsTheMapPaintsIt) {
    const cv::Mat labels = test::labels(
        ". . . . . . .\n"
        ". 1 1 . 2 2 .\n"
        ". 1 1 . 2 2 .\n"
        ". . . . . . .");
    const cv::Mat picture = test::labels(
        "205 0   0   0 0   0   0  \n"
        "205 255 255 0 255 255 0  \n"
        "205 255 255 0 255 255 0  \n"
        "205 0   0   0 0   0   254");
    const cv::Mat drawn = drawRooms(picture, labels);
    ASSERT_EQ(drawn.type(), CV_8UC3);
    ASSERT_EQ(drawn.size(), picture.size());
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const int label = labels.at<std::uint8_t>(row, col);
            const cv::Vec3b expected = label == 0
                                           ? cv::Vec3b::all(picture.at<std::uint8_t>(row, col))
                                           : colourAt(drawn, 1, label == 1 ? 1 : 4);
            EXPECT_EQ(colourAt(drawn, row, col), expected) << row << ", " << col;
        }
    }
    EXPECT_NE(colourAt(drawn, 1, 1), colourAt(drawn, 1, 4));
}

TEST(DrawRooms, DarkensAColourWhereTheMapIsDarker) {
    const cv::Mat drawn = drawRooms(test::labels("255 205 128 0"), test::labels("1 1 1 1"));
    const cv::Vec3b full = colourAt(drawn, 0, 0);
    for (const auto& [col, shade] : std::map<int, double>{{1, 205.0}, {2, 128.0}, {3, 0.0}}) {
        for (int channel = 0; channel < 3; ++channel) {
            EXPECT_NEAR(colourAt(drawn, 0, col)[channel], full[channel] * shade / 255.0, 0.5);
        }
    }
}

TEST(DrawRooms, UsesLightColoursOnly) {
    // Twenty rooms far apart, and the map light: each has a colour of its own choice.
    cv::Mat labels(1, 800, CV_8UC1, cv::Scalar(0));
    for (int i = 0; i < 20; ++i) labels.at<std::uint8_t>(0, 40 * i) = static_cast<uchar>(i + 1);
    const cv::Mat drawn = drawRooms(cv::Mat(labels.size(), CV_8UC1, cv::Scalar(255)), labels);
    std::set<std::vector<int>> colours;
    for (int i = 0; i < 20; ++i) {
        const cv::Vec3b colour = colourAt(drawn, 0, 40 * i);
        colours.insert({colour[0], colour[1], colour[2]});
        EXPECT_GT(colour[0] + colour[1] + colour[2], 3 * 150);
    }
    EXPECT_GE(colours.size(), 8U);
    EXPECT_LE(colours.size(), 12U);
}

/// Smallest distance between pixels of two rooms, diagonal steps counting as one.
int distanceBetween(const cv::Mat& labels, int a, int b) {
    std::vector<cv::Point> of_a;
    std::vector<cv::Point> of_b;
    cv::findNonZero(labels == a, of_a);
    cv::findNonZero(labels == b, of_b);
    int least = std::max(labels.rows, labels.cols);
    for (const cv::Point& p : of_a) {
        for (const cv::Point& q : of_b) {
            least = std::min(least, std::max(std::abs(p.x - q.x), std::abs(p.y - q.y)));
        }
    }
    return least;
}

TEST(DrawRooms, GivesRoomsWithinTenPixelsDifferentColours) {
    cv::RNG random(1);
    for (int i = 0; i < 10; ++i) {
        // Some cover each other in part, some touch, some lie apart.
        cv::Mat labels(120, 120, CV_8UC1, cv::Scalar(0));
        for (int room = 1; room <= 20; ++room) {
            const cv::Rect place(random.uniform(0, 108), random.uniform(0, 108), 12, 12);
            labels(place) = cv::Scalar(room);
        }
        const cv::Mat drawn = drawRooms(cv::Mat(labels.size(), CV_8UC1, cv::Scalar(255)), labels);
        std::map<int, cv::Vec3b> colours;
        for (int row = 0; row < labels.rows; ++row) {
            for (int col = 0; col < labels.cols; ++col) {
                const int room = labels.at<std::uint8_t>(row, col);
                if (room != 0) colours.emplace(room, colourAt(drawn, row, col));
            }
        }
        std::vector<std::pair<int, int>> pairs;
        for (const auto& [a, colour_a] : colours) {
            for (const auto& [b, colour_b] : colours) {
                if (a < b && distanceBetween(labels, a, b) <= 10) pairs.emplace_back(a, b);
            }
        }
        ASSERT_GT(pairs.size(), 10U);
        for (const auto& [a, b] : pairs) {
            EXPECT_NE(colours.at(a), colours.at(b)) << "rooms " << a << " and " << b;
        }
    }
}

TEST(DrawRooms, WritesTheNumberInTheMiddleOfARoom) {
    const cv::Rect place(20, 10, 60, 40);
    const OneRoom room = roomOf({120, 80}, {place});
    const cv::Mat drawn = drawRooms(room.picture, room.labels);
    const cv::Rect ink = inkOf(drawn, place);
    ASSERT_GT(ink.area(), 0);
    EXPECT_EQ(ink & place, ink);
    // Centred, up to rounding and the digit's own shape.
    EXPECT_NEAR(ink.x + ink.width / 2.0, 50.0, 3.0);
    EXPECT_NEAR(ink.y + ink.height / 2.0, 30.0, 3.0);
    EXPECT_GT(ink.height, 15);

    cv::Mat around = drawn.clone();
    around(place) = cv::Scalar::all(0);
    EXPECT_EQ(cv::countNonZero(around.reshape(1)), 0) << "wall, and nothing written on it";
}

TEST(DrawRooms, SurroundsTheNumberWithAHalo) {
    const OneRoom room = roomOf({60, 60}, {cv::Rect(5, 5, 50, 50)});
    const cv::Mat drawn = drawRooms(room.picture, room.labels);
    const cv::Vec3b colour = colourAt(drawn, 5, 5);
    cv::Mat lighter;
    cv::inRange(drawn, cv::Scalar(colour[0] + 1, colour[1] + 1, colour[2]), cv::Scalar::all(255),
                lighter);
    EXPECT_GT(cv::countNonZero(lighter), 50);
}

TEST(DrawRooms, WritesWhereMostSpaceIs) {
    // A long corridor and, at its end, a room.
    const cv::Rect wide(140, 20, 60, 60);
    const OneRoom room = roomOf({220, 100}, {cv::Rect(10, 20, 140, 14), wide});
    const cv::Mat drawn = drawRooms(room.picture, room.labels);
    const cv::Rect ink = inkOf(drawn, wide);
    EXPECT_GT(ink.area(), 0);
    EXPECT_EQ(colourAt(drawn, 27, 20), colourAt(drawn, 27, 130)) << "nothing in the corridor";
    EXPECT_EQ(inkOf(drawn, {10, 20, 130, 14}).area(), 0);
}

TEST(DrawRooms, MakesTheNumberAsLargeAsFits) {
    int last = 0;
    for (const int side : {26, 34, 45, 60}) {
        const cv::Rect place(2, 2, side, side);
        const OneRoom room = roomOf({70, 70}, {place}, 123);
        const cv::Rect ink = inkOf(drawRooms(room.picture, room.labels), place);
        EXPECT_GT(ink.height, last) << side;
        EXPECT_LT(ink.width, side);
        last = ink.height;
    }
}

TEST(DrawRooms, LeavesTheNumberOutWhereItWouldNotBeReadable) {
    for (const cv::Rect& place : {cv::Rect(10, 10, 200, 8), cv::Rect(10, 10, 14, 14)}) {
        const OneRoom room = roomOf({220, 40}, {place}, 123);
        const cv::Mat drawn = drawRooms(room.picture, room.labels);
        const cv::Vec3b colour = colourAt(drawn, 10, 10);
        cv::Mat same;
        cv::inRange(drawn(place), colour, colour, same);
        EXPECT_EQ(cv::countNonZero(same), place.area()) << place;
    }
}

TEST(DrawRooms, HatchesFloorThatNoRoomReached) {
    const cv::Mat labels(16, 16, CV_8UC1, cv::Scalar(255));
    const cv::Mat drawn = drawRooms(cv::Mat(16, 16, CV_8UC1, cv::Scalar(255)), labels);
    std::set<int> greys;
    for (int row = 0; row < drawn.rows; ++row) {
        for (int col = 0; col < drawn.cols; ++col) {
            const cv::Vec3b colour = colourAt(drawn, row, col);
            EXPECT_EQ(colour, cv::Vec3b::all(colour[0]));
            greys.insert(colour[0]);
        }
    }
    EXPECT_EQ(greys.size(), 2U);
    EXPECT_LT(*greys.rbegin(), 255) << "not like floor outside all rooms";
}

TEST(DrawRooms, TakesAnotherValueForUnreachedFloor) {
    const cv::Mat picture(1, 40, CV_8UC1, cv::Scalar(255));
    cv::Mat labels(1, 40, CV_8UC1, cv::Scalar(0));
    labels.at<std::uint8_t>(0, 0) = 3;
    labels.at<std::uint8_t>(0, 39) = 255;
    const cv::Mat drawn = drawRooms(picture, labels, 3);
    EXPECT_EQ(colourAt(drawn, 0, 0), cv::Vec3b::all(colourAt(drawn, 0, 0)[0]));
    EXPECT_NE(colourAt(drawn, 0, 39), cv::Vec3b::all(colourAt(drawn, 0, 39)[0]));
}

TEST(DrawRooms, TakesMoreRoomsThanAByteHolds) {
    const cv::Rect place(5, 5, 60, 60);
    const OneRoom room = roomOf({70, 70}, {place}, 12);
    cv::Mat wide;
    room.labels.convertTo(wide, CV_32S);
    const cv::Mat drawn = drawRooms(room.picture, room.labels);
    EXPECT_THAT(drawRooms(room.picture, wide), MatEq(drawn));
    wide.setTo(1234, wide == 12);
    const cv::Rect ink = inkOf(drawRooms(room.picture, wide), place);
    EXPECT_GT(ink.width, inkOf(drawn, place).width) << "four digits, not 1234 modulo 256 = 210";
}

TEST(DrawRooms, LeavesItsInputAloneAndGivesTheSameAgain) {
    const OneRoom room = roomOf({90, 70}, {cv::Rect(0, 0, 50, 70), cv::Rect(30, 20, 60, 20)});
    const cv::Mat picture = asView(room.picture);
    const cv::Mat labels = asView(room.labels);
    const cv::Mat drawn = drawRooms(picture, labels);
    EXPECT_THAT(picture, MatEq(room.picture));
    EXPECT_THAT(labels, MatEq(room.labels));
    EXPECT_THAT(drawRooms(room.picture, room.labels), MatEq(drawn));
}

TEST(DrawRooms, DrawsAMapWithoutRooms) {
    const cv::Mat picture = test::labels("0 205 254");
    cv::Mat expected;
    cv::cvtColor(picture, expected, cv::COLOR_GRAY2BGR);
    EXPECT_THAT(drawRooms(picture, test::labels(". . .")), MatEq(expected));
}

TEST(DrawRooms, RejectsImagesThatDoNotFit) {
    const cv::Mat picture(4, 4, CV_8UC1, cv::Scalar(0));
    const auto expectError = [](const cv::Mat& map, const cv::Mat& labels, const char* message) {
        EXPECT_THAT([&] { drawRooms(map, labels); }, ThrowsMessage<std::invalid_argument>(message));
    };
    expectError({}, {}, "drawRooms: The picture must be CV_8UC1 and not empty.");
    expectError(cv::Mat(4, 4, CV_8UC3), picture,
                "drawRooms: The picture must be CV_8UC1 and not empty.");
    expectError(picture, cv::Mat(4, 4, CV_32FC1),
                "drawRooms: The labels must be CV_8UC1 or CV_32SC1.");
    expectError(picture, cv::Mat(4, 5, CV_8UC1),
                "drawRooms: The labels must be of the picture's size.");
}

}  // namespace
}  // namespace vorund::rooms
