// The way of a robot through a site. Private to the families of plans.
#pragma once

#include <vector>

#include "families/rays.h"
#include "random.h"

namespace vorund::test::families {

struct DrivePlan {
    int visited_percent = 80;    ///< Of the rooms; corridors are always driven through. [%]
    int scan_distance_mm = 300;  ///< Between two scans; more on a long way.
    int most_scans = 260;
};

/// Where the robot was when it scanned.
struct Station {
    Place place;      ///< On the canvas of the field.
    int heading = 0;  ///< The way it drives. [0.01 degree]
};

/// From the room with most doors to the visited rooms, each time to the nearest place not seen yet.
/// Rooms that furniture shuts stay out. Empty where no room has a place to stand.
std::vector<Station> driveThrough(const RayField& field, const Site& site, const DrivePlan& plan,
                                  Random& random);

}  // namespace vorund::test::families
