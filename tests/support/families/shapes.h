// Boxes and discs at any angle, in integers. Private to the families of plans.
#pragma once

#include <cstdint>

#include "plan_building.h"
#include "plan_frame.h"

namespace vorund::test::families {

/// Where a part of a site lies: its own origin, and its turn counterclockwise in the picture.
struct Pose {
    int x_mm = 0, y_mm = 0;
    int tenths_deg = 0;
};

/// A point of the site. [micrometre], y down
struct SitePoint {
    std::int64_t x = 0, y = 0;
};

/// A box or the disc within it, about its own middle; `tenths_deg` is its turn on the site.
struct Shape {
    SitePoint middle;
    std::int64_t half_x = 0, half_y = 0;  ///< [micrometre]
    int tenths_deg = 0;
    bool round = false;
};

std::int64_t floorDivided(std::int64_t value, std::int64_t by);

/// (right, down) as seen by one who turned clockwise by `turn`: the way PlanFrame turns.
SitePoint turned(const SitePoint& point, const Turn& turn);

/// The part's point (x, y) on the site; `x` and `y` in millimetres.
SitePoint onSite(const Pose& pose, int x, int y);

/// The part's box on the site, turned by `more_tenths` about its own middle.
Shape shapeOf(const Pose& pose, const Box& box, bool round = false, int more_tenths = 0);

/// A disc about the part's point.
Shape discAt(const Pose& pose, int x, int y, int radius_mm);

/// The shape with its sides moved outwards.
Shape grown(Shape shape, int by_mm);

/// Whether the boxes of two shapes share more than their rims.
bool overlap(const Shape& a, const Shape& b);

}  // namespace vorund::test::families
