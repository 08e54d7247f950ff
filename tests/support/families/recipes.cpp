#include "families/recipes.h"

#include <algorithm>

namespace vorund::test::families {

void cookDrawn(Recipe& recipe, Random& random) {
    recipe.furniture.desks = random.chance(60) ? random.between(10, 80) : 0;
    recipe.furniture.clutter = random.chance(50) ? random.between(10, 60) : 0;
    recipe.furniture.dividers = random.chance(15) ? 30 : 0;
    recipe.look.solid_outside = random.chance(25);
    recipe.look.hollow_walls = random.chance(50);
    recipe.look.fray_percent = random.chance(50) ? random.between(2, 40) : 0;
}

void cookMapped(Recipe& recipe, Random& random) {
    recipe.furniture.desks = random.between(20, 90);
    recipe.furniture.clutter = random.between(20, 80);
    recipe.furniture.mess = random.between(5, 90);
    recipe.cracked_percent = random.chance(50) ? random.between(3, 25) : 0;
    recipe.furniture.dividers = random.chance(30) ? random.between(10, 40) : 0;
    recipe.furniture.outdoors = random.between(20, 80);
    recipe.windows_percent = random.chance(60) ? random.between(3, 25) : 0;
    recipe.drive.visited_percent = random.between(55, 100);
    recipe.drive.scan_distance_mm = random.between(20, 50) * 10;
    LidarOptions& lidar = recipe.lidar;
    const int views[] = {18000, 18000, 27000, 36000, 36000};
    lidar.field_of_view = views[random.between(0, 4)];
    lidar.beams = lidar.field_of_view / 100 * random.between(2, 6) / 2;
    lidar.range_mm = random.between(8, 20) * 1000;
    lidar.noise_mm = random.between(5, 30);
    lidar.stray_permille = random.between(0, 6);
    lidar.lost_permille = random.between(0, 40);
    lidar.dark_percent = random.between(0, 8);
    lidar.frame_percent = random.between(5, 40);
    lidar.people = random.between(0, 8);
    lidar.drift_mm = random.between(5, 60);
    lidar.drift_hundredths = random.between(5, 45);
    lidar.drift_length = random.between(15, 50);
    lidar.hit_percent = random.between(12, 55);
    lidar.least_rays = random.chance(70) ? 1 : 2;
}

void addWindows(Site& site, int percent, Random& random) {
    for (const PlacedBuilding& placed : site.buildings) {
        for (const Wall& wall : placed.building.walls) {
            if (!wall.outer() || wall.along.length() < 1800 || !random.chance(percent)) continue;
            const int width = random.between(500, std::min(3500, wall.along.length() - 700));
            const int low = random.between(wall.along.low + 350, wall.along.high - 350 - width);
            site.paint(Brush::kGlass,
                       wallShape(placed.pose, wall, {low, low + width}, wall.thickness_mm + 20));
        }
    }
}

}  // namespace vorund::test::families
