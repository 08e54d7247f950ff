#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "vorund/rooms/polygons.h"

namespace vorund::test {

/// Whether a ray from the point to the right leaves the ring, by counting. Not for points on it.
inline bool isInside(const rooms::Ring& ring, const cv::Point2d& point) {
    bool inside = false;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        const cv::Point2d from = ring[i - 1];
        const cv::Point2d to = ring[i];
        if ((from.y > point.y) == (to.y > point.y)) continue;
        const double x = from.x + (point.y - from.y) / (to.y - from.y) * (to.x - from.x);
        if (x > point.x) inside = !inside;
    }
    return inside;
}

inline bool isInside(const rooms::Polygon& polygon, const cv::Point2d& point) {
    if (!isInside(polygon.outer, point)) return false;
    for (const rooms::Ring& hole : polygon.holes) {
        if (isInside(hole, point)) return false;
    }
    return true;
}

/// The label of every piece that covers the point.
inline std::vector<int> labelsAt(const std::vector<rooms::RoomPolygons>& rooms,
                                 const cv::Point2d& point) {
    std::vector<int> labels;
    for (const rooms::RoomPolygons& room : rooms) {
        for (const rooms::Polygon& piece : room.pieces) {
            if (isInside(piece, point)) labels.push_back(room.label);
        }
    }
    return labels;
}

/// Positive for a ring that runs counterclockwise on the picture. [pixels]
inline double areaOf(const rooms::Ring& ring) {
    double doubled = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        doubled += static_cast<double>(ring[i].x) * ring[i - 1].y -
                   static_cast<double>(ring[i - 1].x) * ring[i].y;
    }
    return doubled / 2.0;
}

inline double areaOf(const rooms::Polygon& polygon) {
    double area = areaOf(polygon.outer);
    for (const rooms::Ring& hole : polygon.holes) area += areaOf(hole);
    return area;
}

inline double areaOf(const rooms::RoomPolygons& room) {
    double area = 0.0;
    for (const rooms::Polygon& piece : room.pieces) area += areaOf(piece);
    return area;
}

}  // namespace vorund::test
