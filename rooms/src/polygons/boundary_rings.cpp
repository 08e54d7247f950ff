#include <algorithm>
#include <cstdint>
#include <tuple>

#include "polygons/boundary_arcs.h"

namespace vorund::rooms {
namespace {

/// An arc that leaves a corner.
struct Departure {
    cv::Point corner;
    Direction direction = 0;
    ArcUse use;
};

bool operator<(const Departure& one, const Departure& other) {
    return std::tie(one.corner.y, one.corner.x, one.direction) <
           std::tie(other.corner.y, other.corner.x, other.direction);
}

/// Twice the area to the left of a line and of the way back to the origin. y is
/// down, hence the sign.
std::int64_t doubledAreaLeftOf(const Chain& corners) {
    std::int64_t sum = 0;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        sum += std::int64_t{corners[i].x} * corners[i - 1].y -
               std::int64_t{corners[i - 1].x} * corners[i].y;
    }
    return sum;
}

class RingTracer {
 public:
    RingTracer(const BoundaryLattice& lattice, const std::vector<Arc>& arcs)
        : lattice_(lattice), arcs_(arcs), walked_(2 * arcs.size(), false) {
        departures_.reserve(2 * arcs.size());
        for (std::size_t i = 0; i < arcs.size(); ++i) {
            const Chain& corners = arcs[i].corners;
            const std::size_t last = corners.size() - 1;
            const int arc = static_cast<int>(i);
            departures_.push_back({corners[0], directionOf(corners[0], corners[1]), {arc, false}});
            departures_.push_back(
                {corners[last], directionOf(corners[last], corners[last - 1]), {arc, true}});
        }
        std::sort(departures_.begin(), departures_.end());
    }

    std::vector<ArcRing> trace() {
        std::vector<ArcRing> rings;
        for (const Departure& departure : departures_) {
            const Arc& arc = arcOf(departure.use);
            const int piece = departure.use.backwards ? arc.right : arc.left;
            if (piece != 0 && !isWalked(departure.use)) {
                rings.push_back(traceRing(piece, departure.use));
            }
        }
        return rings;
    }

 private:
    ArcRing traceRing(int piece, ArcUse use) {
        ArcRing ring{piece, false, {}};
        std::int64_t doubled_area = 0;
        while (!isWalked(use)) {
            walked_[indexOf(use)] = true;
            ring.uses.push_back(use);
            const std::int64_t part = doubledAreaLeftOf(arcOf(use).corners);
            doubled_area += use.backwards ? -part : part;
            use = next(piece, use);
        }
        ring.is_hole = doubled_area < 0;
        return ring;
    }

    ArcUse next(int piece, const ArcUse& use) const {
        const Chain& corners = arcOf(use).corners;
        const std::size_t last = corners.size() - 1;
        const cv::Point end = use.backwards ? corners[0] : corners[last];
        const cv::Point before = use.backwards ? corners[1] : corners[last - 1];
        const Direction direction = lattice_.onwardsAround(piece, end, directionOf(before, end));
        return std::lower_bound(departures_.begin(), departures_.end(),
                                Departure{end, direction, {}})
            ->use;
    }

    const Arc& arcOf(const ArcUse& use) const { return arcs_[static_cast<std::size_t>(use.arc)]; }

    static std::size_t indexOf(const ArcUse& use) {
        return 2 * static_cast<std::size_t>(use.arc) + (use.backwards ? 1 : 0);
    }

    bool isWalked(const ArcUse& use) const { return walked_[indexOf(use)]; }

    const BoundaryLattice& lattice_;
    const std::vector<Arc>& arcs_;
    std::vector<bool> walked_;
    std::vector<Departure> departures_;  ///< Sorted, no two alike.
};

}  // namespace

std::vector<ArcRing> traceRings(const BoundaryLattice& lattice, const std::vector<Arc>& arcs) {
    return RingTracer(lattice, arcs).trace();
}

}  // namespace vorund::rooms
