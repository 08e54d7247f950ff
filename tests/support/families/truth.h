// True rooms, restricted to what a map shows. Private to the families of plans.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::test::families {

/// A room counts if at least kLeastSharePercent of its floor and kLeastSquareDm of it were seen.
constexpr int kLeastSharePercent = 20;
constexpr int kLeastSquareDm = 200;  ///< 2 m^2

/// The rooms of a map that shows part of them. `seen` has the room of each free pixel, `floor` the
/// floor of all rooms, both CV_16UC1. Small gaps within a room, where furniture stands or nothing
/// was seen, are the room's. A room in several pieces keeps the largest; a room that doesn't count
/// has no pixel.
cv::Mat roomsSeen(const cv::Mat& seen, const cv::Mat& free, const cv::Mat& floor, int room_count,
                  int pixel_um);

/// Numbers the rooms that have a pixel 1, 2, ... in the order they had.
/// Returns the new number of each old one, 0 for those that are gone.
std::vector<int> renumber(cv::Mat& rooms, int room_count);

}  // namespace vorund::test::families
