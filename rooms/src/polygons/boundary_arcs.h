#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "polygons/boundary_lattice.h"

namespace vorund::rooms {

using Chain = std::vector<cv::Point>;

/// A stretch of boundary from junction to junction, or a whole boundary without
/// junctions, which starts and ends at its uppermost corner, the leftmost of
/// these.
struct Arc {
    Chain corners;  ///< Its two ends and its turns.
    int left = 0;   ///< The piece on this side, 0 = no room.
    int right = 0;
};

/// An arc as it is walked by a ring.
struct ArcUse {
    int arc = 0;
    bool backwards = false;
};

/// A ring around a piece, which lies on its left.
struct ArcRing {
    int piece = 0;
    bool is_hole = false;
    std::vector<ArcUse> uses;
};

/// Every edge between different pieces belongs to exactly one arc.
std::vector<Arc> traceArcs(const BoundaryLattice& lattice);

/// The rings of all pieces. Each comes to a corner once at most.
std::vector<ArcRing> traceRings(const BoundaryLattice& lattice, const std::vector<Arc>& arcs);

}  // namespace vorund::rooms
