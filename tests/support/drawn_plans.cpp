#include "support/drawn_plans.h"

namespace vorund::test {
namespace {

// Pixels, at 0.05 m each.
constexpr int kMargin = 12;
constexpr int kWall = 4;
constexpr int kDoor = 18;
constexpr int kRoomSide = 60;
constexpr int kCorridorWidth = 32;

void addRoom(DrawnPlan& plan, const cv::Rect& room) {
    plan.map(room).setTo(0.0);
    const int index = static_cast<int>(plan.rooms.size());
    plan.rooms.push_back(room);
    const cv::Point center = (room.tl() + room.br()) / 2;
    const cv::Point step(room.width / 5, room.height / 5);
    for (const cv::Point& point :
         {center, center - step, center + step, center + cv::Point(step.x, -step.y)}) {
        plan.inside.push_back(point);
        plan.room_of.push_back(index);
    }
}

DrawnPlan walls(int width, int height) {
    DrawnPlan plan;
    plan.map = cv::Mat(height, width, CV_32FC1, cv::Scalar(1.0));
    return plan;
}

}  // namespace

DrawnPlan twoRooms() {
    DrawnPlan plan = walls(2 * kMargin + 2 * kRoomSide + kWall, 2 * kMargin + kRoomSide);
    const cv::Rect left(kMargin, kMargin, kRoomSide, kRoomSide);
    addRoom(plan, left);
    addRoom(plan, left + cv::Point(kRoomSide + kWall, 0));
    const int door_top = kMargin + (kRoomSide - kDoor) / 2;
    plan.map(cv::Rect(kMargin + kRoomSide, door_top, kWall, kDoor)).setTo(0.0);
    return plan;
}

DrawnPlan corridorWithSixRooms() {
    constexpr int kLength = 3 * kRoomSide + 2 * kWall;
    constexpr int kAbove = kMargin;
    constexpr int kCorridor = kAbove + kRoomSide + kWall;
    constexpr int kBelow = kCorridor + kCorridorWidth + kWall;
    DrawnPlan plan = walls(kLength + 2 * kMargin, kBelow + kRoomSide + kMargin);
    for (int column = 0; column < 3; ++column) {
        const int left = kMargin + column * (kRoomSide + kWall);
        const int door_left = left + (kRoomSide - kDoor) / 2;
        addRoom(plan, {left, kAbove, kRoomSide, kRoomSide});
        addRoom(plan, {left, kCorridor, kRoomSide, kCorridorWidth});
        addRoom(plan, {left, kBelow, kRoomSide, kRoomSide});
        plan.map(cv::Rect(door_left, kCorridor - kWall, kDoor, kWall)).setTo(0.0);
        plan.map(cv::Rect(door_left, kBelow - kWall, kDoor, kWall)).setTo(0.0);
    }
    plan.map(cv::Rect(kMargin, kCorridor, kLength, kCorridorWidth)).setTo(0.0);
    return plan;
}

cv::Mat gridOfRooms(int side) {
    constexpr int kPitch = 44;
    cv::Mat walls(side * kPitch + 20, side * kPitch + 20, CV_32FC1, cv::Scalar(1.0));
    for (int row = 0; row < side; ++row) {
        for (int col = 0; col < side; ++col) {
            const cv::Point corner(10 + col * kPitch, 10 + row * kPitch);
            walls(cv::Rect(corner, cv::Size(40, 40))) = 0.0;
            if (col > 0) walls(cv::Rect(corner.x - 4, corner.y + 13, 4, 14)) = 0.0;
            if (row > 0 && col == 0) walls(cv::Rect(corner.x + 13, corner.y - 4, 14, 4)) = 0.0;
        }
    }
    return walls;
}

}  // namespace vorund::test
