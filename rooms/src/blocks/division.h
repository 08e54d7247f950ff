#pragma once

#include <opencv2/core.hpp>
#include <utility>
#include <vector>

namespace vorund::rooms {

/// A part of a map that is segmented by itself.
struct Block {
    cv::Rect core;  ///< The pixels whose rooms it decides. Cores do not overlap.
    cv::Rect view;  ///< The core and what is seen around it, so that its rooms come out whole.
};

/// How far a block sees beyond its core. [pixels] 7.5 m. What decides on a seed is the room around
/// it as far as a blur reaches that still leaves one, about as far again as the room is wide, and
/// whether a second seed lies in the same corridor or hall. On 24 plans of 50 m x 40 m in blocks of
/// 20 m, 3 m of surroundings gave the same rooms as one piece on 99.5 % of the pixels, 5 m on
/// 99.7 %, 7.5 m on 99.98 %.
inline constexpr int kContext = 150;

/// A division of a map into blocks.
///
/// Cuts are straight, across the longer side, in its middle third, where they meet the least floor:
/// that is along walls, where rooms part anyway. Only what cannot be missed is cut: a corridor, a
/// hall. Counts of pixels decide, so that every machine divides alike.
class Division {
 public:
    /// @param floor        `CV_8UC1`: 1 = floor, 0 = wall.
    /// @param most_pixels  Of a block's view.
    Division(const cv::Mat& floor, int most_pixels);

    /// All floor, in blocks in the order of the cuts. Blocks without floor are left out.
    std::vector<Block> blocks() const;

    /// A block as two. Empty if it is too small for that.
    std::vector<Block> halves(const Block& block) const;

 private:
    void divide(const cv::Rect& core, std::vector<Block>& blocks) const;
    std::vector<cv::Rect> cut(const cv::Rect& core) const;
    bool fits(const Block& block) const;
    int countCompartments(const cv::Rect& view) const;
    Block around(const cv::Rect& core) const;

    cv::Mat floor_;
    int most_pixels_;
};

}  // namespace vorund::rooms
