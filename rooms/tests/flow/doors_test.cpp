// Are the doors of generated plans found? docs/rooms.md has the figures of 100 plans.

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "support/captures.h"
#include "support/plan_generator.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {
namespace {

constexpr double kPixel = 0.05;   // [m]
constexpr double kMostOff = 0.3;  // [m]
constexpr double kBeside = 0.4;   // [m]

GridMap mapOf(const test::Plan& plan) {
    const cv::Mat outside = plan.map != test::kMapFree;
    GridMap map;
    outside.convertTo(map.values, CV_32F, 1.0 / 255.0);
    map.picture = plan.map;
    return map;
}

cv::Point nearest(const cv::Point2d& point) {
    return {static_cast<int>(std::lround(point.x)), static_cast<int>(std::lround(point.y))};
}

/// Whether the cut, drawn as a wall, leaves the larger part of each room on a side of its own.
bool separates(const Rooms& rooms, const Border& border) {
    cv::Mat floor = (rooms.labels == border.first) | (rooms.labels == border.second);
    // 4-connected steps: drawn as it is and shifted by one column.
    for (const int shift : {0, 1}) {
        const cv::Point by(shift, 0);
        cv::line(floor, nearest(border.door->start.pixel) + by,
                 nearest(border.door->end.pixel) + by, cv::Scalar(0));
    }
    cv::Mat pieces;
    const int count = cv::connectedComponents(floor, pieces, 4, CV_32S);
    const auto largestPieceOf = [&](int room) {
        int largest = 0;
        int most = 0;
        for (int piece = 1; piece < count; ++piece) {
            const int pixels = cv::countNonZero((pieces == piece) & (rooms.labels == room));
            if (pixels > most) {
                most = pixels;
                largest = piece;
            }
        }
        return largest;
    };
    return largestPieceOf(border.first) != largestPieceOf(border.second);
}

struct Tally {
    int between_two_rooms = 0;
    int found = 0;
};

void tallyDoors(const test::Plan& plan, Tally& tally) {
    const Rooms rooms = findRooms(mapOf(plan), {}, Debugger::create({}));
    for (const test::Door& door : plan.doors) {
        const cv::Point2d middle = (cv::Point2d(door.a) + cv::Point2d(door.b)) * 0.5;
        const cv::Point2d along = cv::Point2d(door.b - door.a);
        const cv::Point2d across =
            cv::Point2d(-along.y, along.x) * (kBeside / kPixel / cv::norm(along));
        const int before = rooms.roomAt(nearest(middle + across));
        const int behind = rooms.roomAt(nearest(middle - across));
        if (before == behind || before == 0 || behind == 0) continue;
        ++tally.between_two_rooms;
        for (const Border& border : rooms.borders) {
            if (!border.door) continue;
            const cv::Point2d cut = (border.door->start.pixel + border.door->end.pixel) * 0.5;
            if (cv::norm(cut - middle) * kPixel > kMostOff || !separates(rooms, border)) continue;
            ++tally.found;
            break;
        }
    }
}

TEST(Doors, OfGeneratedPlansAreMostlyFound) {
    const test::PlainCapture quiet;
    Tally tally;
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        test::PlanOptions options;
        options.seed = seed;
        options.width_mm = 30000;
        options.height_mm = 20000;
        tallyDoors(test::makePlan(options), tally);
    }
    EXPECT_GT(tally.between_two_rooms, 100);
    // These six are among the worse of the hundred: 86 %.
    EXPECT_GE(tally.found, tally.between_two_rooms * 4 / 5) << "of " << tally.between_two_rooms;
}

}  // namespace
}  // namespace vorund::rooms
