// What makes one family different from another. Private to the families of plans.
#pragma once

#include "families/drawn.h"
#include "families/furnishing.h"
#include "families/layouts.h"
#include "families/mapper.h"
#include "families/plan_families.h"

namespace vorund::test::families {

/// How a mapper's grid is turned into a picture.
enum class LidarStyle {
    kPlain,     ///< As it is.
    kThick,     ///< Walls a pixel thicker on all sides.
    kOutlined,  ///< Likewise, and walls wherever the seen ends.
};

/// How the site of one plan is furnished and shown; drawn from its seed.
struct Recipe {
    FurnishingAmounts furniture;
    DrawnLook look;   ///< Of drawn families.
    DrivePlan drive;  ///< Of mapped ones, as all below.
    LidarOptions lidar;
    LidarStyle style = LidarStyle::kPlain;
    int cracked_percent = 0;  ///< Inner walls with gaps, as of shelves and screens. [%]
    int windows_percent = 0;  ///< Outer walls with a pane down to the lidar's height. [%]
};

struct Family {
    FamilyInfo info;
    Site (*layOut)(Random& random);
    void (*cook)(Recipe& recipe, Random& random);
    int margin_mm;
};

const std::vector<Family>& allFamilies();

/// Panes in outer walls.
void addWindows(Site& site, int percent, Random& random);

/// What is the same in all drawn, and in all mapped families.
void cookDrawn(Recipe& recipe, Random& random);
void cookMapped(Recipe& recipe, Random& random);

}  // namespace vorund::test::families
