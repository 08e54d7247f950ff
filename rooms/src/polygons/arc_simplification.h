#pragma once

#include <vector>

#include "polygons/boundary_arcs.h"

namespace vorund::rooms {

/// The line with as few of its corners as Douglas and Peucker's method keeps.
/// The ends stay; of a line that comes back to its start the corner furthest
/// from there stays too. The furthest corner is the first of equally far ones.
/// @param tolerance  [pixels]; 0 gives the line itself.
Chain simplified(const Chain& corners, double tolerance);

/// Simplifies arcs together, each to the tolerance or as much less as is needed
/// (see polygons.h).
/// @return The corners of each arc.
std::vector<Chain> simplifiedTogether(const std::vector<Arc>& arcs, double tolerance);

}  // namespace vorund::rooms
