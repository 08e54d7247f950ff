// Maps drawn from a site, with the faults of real ones put in. Private to the families of plans.
#pragma once

#include "families/canvas.h"
#include "random.h"

namespace vorund::test::families {

struct DrawnLook {
    bool solid_outside = false;  ///< Occupied instead of unknown around the buildings.
    bool hollow_walls = false;   ///< The cores of thick walls are unknown, as a laser leaves them.
    int fray_percent = 0;        ///< Ragged faces of walls, specks on the floor. [%]
    int doubled_mm = 0;          ///< In some places walls are there twice, that far apart. [mm]
    int fans = 0;                ///< Bundles of rays that leave through windows.
    int stations = 0;            ///< Seen from so many places only; 0 = all is seen.
    int station_range_mm = 8000;
};

/// A drawing and its truth, with the numbers of the site's rooms.
struct DrawnSite {
    cv::Mat map;    ///< CV_8UC1
    cv::Mat rooms;  ///< CV_16UC1
};

DrawnSite drawSite(const Site& site, const Canvas& canvas, const DrawnLook& look, Random& random);

}  // namespace vorund::test::families
