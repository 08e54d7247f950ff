#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::test {

/// A floor map drawn by the test, and points that stand for its rooms.
struct DrawnPlan {
    cv::Mat map;                    ///< `CV_32FC1`: 1 = wall or outside, 0 = floor.
    std::vector<cv::Rect> rooms;    ///< The floor of each room, doors left out.
    std::vector<cv::Point> inside;  ///< Points well inside the rooms, several for each.
    std::vector<int> room_of;       ///< For each such point, the index of its room.
};

/// Two rooms of 3 m by 3 m with a door of 0.9 m in the wall of 0.2 m between them.
DrawnPlan twoRooms();

/// A corridor, 9.4 m long and 1.6 m wide, with three rooms on either side, each with a door of 0.9
/// m opposite another one. A pair of doors widens the corridor, so its core lies there at every
/// scale and the corridor is three of the plan's nine rooms, one per pair.
DrawnPlan corridorWithSixRooms();

/// The walls of `side` x `side` rooms of 2 m x 2 m, 2.2 m from one to the next, with doors of 0.7 m
/// to their neighbours in the same row, and from row to row at the left. The middle of a room is at
/// pixel 30 + 44 i.
cv::Mat gridOfRooms(int side);

}  // namespace vorund::test
