#pragma once

#include <opencv2/core.hpp>

namespace vorund::rooms {

/// 0 = right, 1 = up, 2 = left, 3 = down, as seen on the picture; adding 1
/// turns left, modulo 4.
using Direction = int;

constexpr Direction turnedLeft(Direction direction) {
    return (direction + 1) % 4;
}

constexpr Direction reversed(Direction direction) {
    return (direction + 2) % 4;
}

constexpr Direction turnedRight(Direction direction) {
    return (direction + 3) % 4;
}

cv::Point stepTowards(Direction direction);

/// Of a line along the lattice from one corner to another one.
Direction directionOf(const cv::Point& from, const cv::Point& to);

/// The lattice of corners between pixels, and the boundary lines along it: a
/// corner and a direction stand for the edge between two pixels that begins
/// there.
class BoundaryLattice {
 public:
    /// @param ids  As in RoomPieces; must outlive the lattice.
    explicit BoundaryLattice(const cv::Mat_<int>& ids) : ids_(ids) {}

    cv::Size size() const { return {ids_.cols - 1, ids_.rows - 1}; }

    int pieceLeftOf(const cv::Point& corner, Direction direction) const;
    int pieceRightOf(const cv::Point& corner, Direction direction) const;

    /// Whether the edge separates two pieces, or a piece from what is no room.
    bool isBoundary(const cv::Point& corner, Direction direction) const;

    /// Whether all four pixels around a corner are of one piece, or of none: no line passes.
    bool isPlain(const cv::Point& corner) const;

    /// Whether three or four boundary lines meet, or two in a corner of the image.
    bool isJunction(const cv::Point& corner) const;

    /// Where a line that arrives from anywhere but a junction goes on.
    Direction onwards(const cv::Point& corner, Direction arriving) const;

    /// Where a ring around a piece on its left goes on, at junctions too.
    Direction onwardsAround(int piece, const cv::Point& corner, Direction arriving) const;

 private:
    bool isCornerOfImage(const cv::Point& corner) const;

    const cv::Mat_<int>& ids_;
};

}  // namespace vorund::rooms
