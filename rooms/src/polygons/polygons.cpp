#include "vorund/rooms/polygons.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

#include "polygons/arc_simplification.h"
#include "polygons/boundary_arcs.h"
#include "polygons/boundary_lattice.h"
#include "polygons/room_pieces.h"

namespace vorund::rooms {
namespace {

void requireUsable(const cv::Mat& labels, double simplify) {
    if (!(simplify >= 0.0) || !std::isfinite(simplify)) {
        throw std::invalid_argument("roomPolygons: The tolerance must be finite, at least 0.");
    }
    if (labels.empty()) return;
    if (labels.dims != 2 || labels.type() != CV_32SC1) {
        throw std::invalid_argument("roomPolygons: The labels must be CV_32SC1.");
    }
    double least = 0.0;
    cv::minMaxLoc(labels, &least);
    if (least < 0.0) {
        throw std::invalid_argument("roomPolygons: Label " +
                                    std::to_string(static_cast<int>(least)) + " is negative.");
    }
}

bool isHigher(const cv::Point& one, const cv::Point& other) {
    return std::tie(one.y, one.x) < std::tie(other.y, other.x);
}

Ring ringOf(const ArcRing& arc_ring, const std::vector<Chain>& chains) {
    Ring ring;
    for (const ArcUse& use : arc_ring.uses) {
        const Chain& chain = chains[static_cast<std::size_t>(use.arc)];
        // Without its end, which is the start of the next one.
        if (use.backwards) {
            ring.insert(ring.end(), chain.rbegin(), std::prev(chain.rend()));
        } else {
            ring.insert(ring.end(), chain.begin(), std::prev(chain.end()));
        }
    }
    std::rotate(ring.begin(), std::min_element(ring.begin(), ring.end(), isHigher), ring.end());
    ring.push_back(cv::Point(ring.front()));
    return ring;
}

/// By id.
std::vector<Polygon> polygonsOf(std::size_t ids, const std::vector<ArcRing>& rings,
                                const std::vector<Chain>& chains) {
    std::vector<Polygon> polygons(ids);
    for (const ArcRing& ring : rings) {
        Polygon& polygon = polygons[static_cast<std::size_t>(ring.piece)];
        if (ring.is_hole) {
            polygon.holes.push_back(ringOf(ring, chains));
        } else {
            polygon.outer = ringOf(ring, chains);
        }
    }
    for (Polygon& polygon : polygons) {
        std::stable_sort(polygon.holes.begin(), polygon.holes.end(),
                         [](const Ring& one, const Ring& other) {
                             return isHigher(one.front(), other.front());
                         });
    }
    return polygons;
}

}  // namespace

std::vector<RoomPolygons> roomPolygons(const cv::Mat& labels, double simplify) {
    requireUsable(labels, simplify);
    if (labels.empty()) return {};
    const RoomPieces pieces = findPieces(labels);
    const BoundaryLattice lattice(pieces.ids);
    const std::vector<Arc> arcs = traceArcs(lattice);
    const std::vector<ArcRing> rings = traceRings(lattice, arcs);
    // No distance in the image is larger, and halving has to end soon.
    const double largest = static_cast<double>(labels.rows) + labels.cols;
    const std::vector<Chain> chains = simplifiedTogether(arcs, std::min(simplify, largest));
    std::vector<Polygon> polygons = polygonsOf(pieces.labels.size(), rings, chains);

    std::map<int, RoomPolygons> by_label;
    for (std::size_t id = 1; id < polygons.size(); ++id) {
        RoomPolygons& room = by_label[pieces.labels[id]];
        room.label = pieces.labels[id];
        room.pieces.push_back(std::move(polygons[id]));
    }
    std::vector<RoomPolygons> rooms;
    rooms.reserve(by_label.size());
    for (auto& [label, room] : by_label) rooms.push_back(std::move(room));
    return rooms;
}

}  // namespace vorund::rooms
