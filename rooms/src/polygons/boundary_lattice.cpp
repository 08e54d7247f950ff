#include "polygons/boundary_lattice.h"

#include <array>

namespace vorund::rooms {

cv::Point stepTowards(Direction direction) {
    static const std::array<cv::Point, 4> kSteps{{{1, 0}, {0, -1}, {-1, 0}, {0, 1}}};
    return kSteps[static_cast<std::size_t>(direction)];
}

Direction directionOf(const cv::Point& from, const cv::Point& to) {
    if (to.y == from.y) return to.x > from.x ? 0 : 2;
    return to.y < from.y ? 1 : 3;
}

int BoundaryLattice::pieceLeftOf(const cv::Point& corner, Direction direction) const {
    // Upper right, upper left, lower left, lower right pixel; its place in `ids_`
    // is one further to the right and below than in the image.
    const int right = direction == 0 || direction == 3 ? 1 : 0;
    const int below = direction >= 2 ? 1 : 0;
    return ids_(corner.y + below, corner.x + right);
}

int BoundaryLattice::pieceRightOf(const cv::Point& corner, Direction direction) const {
    return pieceLeftOf(corner, turnedRight(direction));
}

bool BoundaryLattice::isBoundary(const cv::Point& corner, Direction direction) const {
    return pieceLeftOf(corner, direction) != pieceRightOf(corner, direction);
}

bool BoundaryLattice::isPlain(const cv::Point& corner) const {
    const int* const above = ids_[corner.y] + corner.x;
    const int* const below = ids_[corner.y + 1] + corner.x;
    return above[0] == above[1] && above[0] == below[0] && above[0] == below[1];
}

bool BoundaryLattice::isJunction(const cv::Point& corner) const {
    int lines = 0;
    for (Direction direction = 0; direction < 4; ++direction) {
        if (isBoundary(corner, direction)) ++lines;
    }
    return lines > 2 || (lines > 0 && isCornerOfImage(corner));
}

bool BoundaryLattice::isCornerOfImage(const cv::Point& corner) const {
    return (corner.x == 0 || corner.x == size().width - 1) &&
           (corner.y == 0 || corner.y == size().height - 1);
}

Direction BoundaryLattice::onwards(const cv::Point& corner, Direction arriving) const {
    if (isBoundary(corner, arriving)) return arriving;
    const Direction left = turnedLeft(arriving);
    return isBoundary(corner, left) ? left : turnedRight(arriving);
}

Direction BoundaryLattice::onwardsAround(int piece, const cv::Point& corner,
                                         Direction arriving) const {
    // Right before left: where the piece meets itself across a corner the ring
    // goes over to the other pixel. So it never comes back to this corner, and
    // the loop it would have made is a ring of its own. (Going round that loop
    // once would separate it from the rest in the plane.)
    if (pieceLeftOf(corner, turnedRight(arriving)) == piece) return turnedRight(arriving);
    return pieceLeftOf(corner, arriving) == piece ? arriving : turnedLeft(arriving);
}

}  // namespace vorund::rooms
