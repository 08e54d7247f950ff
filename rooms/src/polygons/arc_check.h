#pragma once

#include <vector>

#include "polygons/boundary_arcs.h"

namespace vorund::rooms {

/// The arcs whose simplification makes a polygon invalid or lets rooms overlap.
///
/// The plane is walked through in strips of one pixel's height. Two things are
/// looked at in each:
/// - No two lines touch, save that they may share an end: ends are corners of
/// the unsimplified
///   boundary, where lines share one only if they did so from the beginning. So
///   rings are simple and touch one another only where they did before.
/// - From left to right each line has on its left side what the line before has
/// on its right side.
///   Then the winding number of a piece's rings, holes counted negative, is 1
///   where the lines tell of this piece and 0 elsewhere: holes are inside, and
///   each point is in one piece at most.
///
/// All by integers: exact for any image.
///
/// @param chains  The simplified corners of each arc; a part of those of the
/// arc, both ends among
///                them.
/// @return Ascending indices of arcs that have lost corners; empty if and only
/// if all is well.
std::vector<int> faultyArcs(const std::vector<Arc>& arcs, const std::vector<Chain>& chains);

}  // namespace vorund::rooms
