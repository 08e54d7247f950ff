#include "polygons/arc_simplification.h"

#include <cstdint>
#include <utility>

#include "polygons/arc_check.h"

namespace vorund::rooms {
namespace {

/// Just below 1 / sqrt(5), the least by which a line can miss a corner that it
/// leaves out: that of a step of one pixel, left out by a line over two pixels.
/// Lower tolerances change nothing.
constexpr double kLeastTolerance = 0.447;

using Range = std::pair<std::size_t, std::size_t>;

std::int64_t dot(const cv::Point& one, const cv::Point& other) {
    return std::int64_t{one.x} * other.x + std::int64_t{one.y} * other.y;
}

/// Squared distance from the line between two points, ends included, times its
/// squared length: no division, and no product that is summed up but those of
/// integers, so that it is the same on every machine. For equal ends their
/// squared distance.
double scaledDistance(const cv::Point& point, const cv::Point& first, const cv::Point& last) {
    const cv::Point line = last - first;
    const cv::Point way = point - first;
    const std::int64_t length = dot(line, line);
    if (length == 0) return static_cast<double>(dot(way, way));
    const std::int64_t along = dot(way, line);
    if (along < 0) return static_cast<double>(dot(way, way)) * static_cast<double>(length);
    if (along > length) {
        const cv::Point beyond = point - last;
        return static_cast<double>(dot(beyond, beyond)) * static_cast<double>(length);
    }
    const auto area = static_cast<double>(dot(way, {line.y, -line.x}));
    return area * area;
}

/// The corner within a range that is furthest from the line between the range's
/// ends, or the first end if all are within the tolerance.
std::size_t cornerToKeep(const Chain& corners, const Range& range, double tolerance) {
    const cv::Point& first = corners[range.first];
    const cv::Point& last = corners[range.second];
    const bool returns = first == last;
    const auto length = static_cast<double>(dot(last - first, last - first));
    double limit = returns ? 0.0 : tolerance * tolerance * length;
    std::size_t furthest = range.first;
    for (std::size_t i = range.first + 1; i < range.second; ++i) {
        const double distance = scaledDistance(corners[i], first, last);
        if (distance <= limit) continue;
        limit = distance;
        furthest = i;
    }
    return furthest;
}

class JointSimplification {
 public:
    JointSimplification(const std::vector<Arc>& arcs, double tolerance)
        : arcs_(arcs), tolerances_(arcs.size(), tolerance) {
        for (const Arc& arc : arcs) chains_.push_back(simplified(arc.corners, tolerance));
    }

    /// Ends: each round gives back corners to at least one arc, and with all
    /// corners nothing is wrong.
    std::vector<Chain> run() {
        while (true) {
            const std::vector<int> faulty = faultyArcs(arcs_, chains_);
            if (faulty.empty()) return std::move(chains_);
            for (const int arc : faulty) refine(static_cast<std::size_t>(arc));
        }
    }

 private:
    void refine(std::size_t arc) {
        const std::size_t before = chains_[arc].size();
        while (chains_[arc].size() <= before) {
            double& tolerance = tolerances_[arc];
            tolerance = tolerance / 2.0 < kLeastTolerance ? 0.0 : tolerance / 2.0;
            chains_[arc] = simplified(arcs_[arc].corners, tolerance);
        }
    }

    const std::vector<Arc>& arcs_;
    std::vector<double> tolerances_;
    std::vector<Chain> chains_;
};

}  // namespace

Chain simplified(const Chain& corners, double tolerance) {
    if (tolerance < kLeastTolerance) return corners;
    std::vector<bool> keep(corners.size(), false);
    keep.front() = keep.back() = true;
    // Not by recursion: a spiral would nest as deeply as it has corners.
    std::vector<Range> open{{0, corners.size() - 1}};
    while (!open.empty()) {
        const Range range = open.back();
        open.pop_back();
        const std::size_t corner = cornerToKeep(corners, range, tolerance);
        if (corner == range.first) continue;
        keep[corner] = true;
        open.emplace_back(range.first, corner);
        open.emplace_back(corner, range.second);
    }
    Chain kept;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        if (keep[i]) kept.push_back(corners[i]);
    }
    return kept;
}

std::vector<Chain> simplifiedTogether(const std::vector<Arc>& arcs, double tolerance) {
    return JointSimplification(arcs, tolerance).run();
}

}  // namespace vorund::rooms
