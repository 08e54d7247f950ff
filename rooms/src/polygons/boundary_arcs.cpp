#include "polygons/boundary_arcs.h"

#include <cstdint>
#include <utility>

namespace vorund::rooms {
namespace {

class ArcTracer {
 public:
    explicit ArcTracer(const BoundaryLattice& lattice)
        : lattice_(lattice), walked_(cv::Mat_<std::uint8_t>::zeros(lattice.size())) {}

    std::vector<Arc> trace() {
        // Boundaries with junctions first: what is left of the lines then has none.
        traceFrom(true);
        traceFrom(false);
        return std::move(arcs_);
    }

 private:
    void traceFrom(bool junctions) {
        for (int y = 0; y < walked_.rows; ++y) {
            for (int x = 0; x < walked_.cols; ++x) {
                const cv::Point corner(x, y);
                if (lattice_.isPlain(corner)) continue;
                if (junctions && !lattice_.isJunction(corner)) continue;
                for (Direction direction = 0; direction < 4; ++direction) {
                    if (!lattice_.isBoundary(corner, direction)) continue;
                    if (!isWalked(corner, direction)) arcs_.push_back(walk(corner, direction));
                }
            }
        }
    }

    Arc walk(const cv::Point& start, Direction direction) {
        Arc arc{{start},
                lattice_.pieceLeftOf(start, direction),
                lattice_.pieceRightOf(start, direction)};
        cv::Point corner = start;
        while (true) {
            markWalked(corner, direction);
            corner += stepTowards(direction);
            markWalked(corner, reversed(direction));
            if (corner == start || lattice_.isJunction(corner)) break;
            const Direction next = lattice_.onwards(corner, direction);
            if (next != direction) arc.corners.push_back(corner);
            direction = next;
        }
        arc.corners.push_back(corner);
        return arc;
    }

    bool isWalked(const cv::Point& corner, Direction direction) const {
        return (walked_(corner) >> direction & 1) != 0;
    }

    void markWalked(const cv::Point& corner, Direction direction) {
        walked_(corner) = static_cast<std::uint8_t>(walked_(corner) | 1 << direction);
    }

    const BoundaryLattice& lattice_;
    cv::Mat_<std::uint8_t> walked_;  ///< A bit for each direction.
    std::vector<Arc> arcs_;
};

}  // namespace

std::vector<Arc> traceArcs(const BoundaryLattice& lattice) {
    return ArcTracer(lattice).trace();
}

}  // namespace vorund::rooms
