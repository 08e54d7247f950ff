// What stands in the rooms of a site. Private to the families of plans.
#pragma once

#include "families/site.h"
#include "random.h"

namespace vorund::test::families {

struct FurnishingAmounts {
    int desks = 0;     ///< Desks, chairs, shelves, door leaves, as makePlan places them. [%]
    int clutter = 0;   ///< Sofas, beds, cupboards, round tables, bins, plants at any turn. [%]
    int dividers = 0;  ///< Rooms that a long shelf all but divides; they stay one room. [%]
    int mess = 0;      ///< What lines the walls: radiators, bags, curtains, half open shelves. [%]
    int outdoors = 0;  ///< Trees, cars and fences for rays that leave by a window. [%]
};

/// Nothing stands before a door. A divider leaves 0.9 to 1.6 m to pass at one end.
void furnishSite(Site& site, const FurnishingAmounts& amounts, Random& random);

/// Gaps of up to 0.4 m in walls between rooms: partitions of shelves and screens.
void crackWalls(Site& site, int percent, Random& random);

}  // namespace vorund::test::families
