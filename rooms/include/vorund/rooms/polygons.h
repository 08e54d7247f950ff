#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "vorund/export.h"

namespace vorund::rooms {

/// Corners of a closed line; the last repeats the first. A corner is a point of
/// the lattice between the pixels: pixel (x, y) has its upper left corner at
/// (x, y), its lower right one at (x + 1, y + 1); y is down as in the image.
using Ring = std::vector<cv::Point>;

/// One 4-connected piece of a room. Seen on the picture (and so in any frame
/// with y up, as RFC 7946 wants it) the outer ring runs counterclockwise, holes
/// clockwise. Each ring starts at its uppermost corner, the leftmost of these;
/// holes are in the raster order of their starts.
struct Polygon {
    Ring outer;
    std::vector<Ring> holes;
};

/// A room's pieces, in the raster order of their first pixels.
struct RoomPolygons {
    int label = 0;
    std::vector<Polygon> pieces;
};

/// Outlines of all rooms of a label image, along the edges of the pixels.
///
///     labels     room 1, outer ring           room 2
///       1 1 2    (0,0) (0,2) (1,2) (1,1)      (2,0) (2,1) (3,1) (3,0) (2,0)
///       1 . .    (2,1) (2,0) (0,0)
///
/// Where rooms touch they share their corners: the boundaries are cut into arcs
/// at the junctions, the corners of the lattice where three or four boundary
/// lines end, and every ring is put together from whole arcs. So a ring also
/// has a corner where it runs straight on past a junction. Two pixels that meet
/// only at a corner are two pieces unless they are connected elsewhere; if they
/// are, the hole they enclose touches another ring in that one point. No ring
/// touches itself.
///
/// With a tolerance each arc is simplified once, for all its rooms, and its
/// ends stay (D. Douglas and T. Peucker, Algorithms for the reduction of the
/// number of points required to represent a digitized line or its caricature,
/// The Canadian Cartographer 10(2), 1973): no boundary is further than the
/// tolerance from where it was. Where lines would then cross, touch or fall
/// together, or a hole or another room would end up on the wrong side of a
/// line, the tolerance of the arcs at fault is halved until nothing is wrong;
/// it ends at the latest when they follow the pixels again. Hence with every
/// tolerance: polygons are valid (simple rings, holes inside), rooms do not
/// overlap, none vanishes, and where rooms fill the image so do their polygons.
/// A wall one pixel thick that runs diagonally, connected at corners alone,
/// keeps its steps: each is a junction.
///
/// The cost grows with the pixels and the length of the boundaries, not with
/// the number of rooms; each round of halving costs one more pass over the
/// boundaries.
///
/// @param labels    `CV_32SC1`, 0 = no room, positive values = rooms; may be
/// empty.
/// @param simplify  Tolerance, at least 0. [pixels] 0 = exactly the pixels of
/// the rooms; so is
///                  everything below 0.447, since a line drawn past a step
///                  misses it by more.
/// @return Rooms by ascending label.
/// @throws std::invalid_argument  for another type, a negative label, or a
/// tolerance that is
///         negative or not finite.
VORUND_EXPORT std::vector<RoomPolygons> roomPolygons(const cv::Mat& labels, double simplify = 0.0);

}  // namespace vorund::rooms
