#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// A part of a map that is flooded by itself.
struct Block {
    cv::Rect core;  ///< The pixels whose rooms it decides. Cores do not overlap.
    cv::Rect view;  ///< The core and what is seen around it, so that its rooms come out whole.
};

/// How far a block sees beyond its core. [pixels] 20 m: the line between two regions of a corridor
/// lies midway between their seeds.
inline constexpr int kContext = 400;

/// Divides a map into blocks.
///
/// Cuts are straight, across the longer side, in its middle third, where they meet the least floor:
/// that is along walls, where rooms part anyway. Only what cannot be missed is cut: a corridor, a
/// hall. Counts of pixels decide, so that every machine divides alike.
/// @param floor        `CV_8UC1`: not 0 = floor.
/// @param most_pixels  Of a block's view; exceeded by blocks that are too small to be cut.
/// @return In the order of the cuts. Blocks without floor are left out.
std::vector<Block> divide(const cv::Mat& floor, int most_pixels);

}  // namespace vorund::rooms
