// The families, and what each makes harder than its layout alone.
#include "families/recipes.h"

namespace vorund::test::families {
namespace {

void cookExplored(Recipe& recipe, Random& random) {
    cookDrawn(recipe, random);
    recipe.look.solid_outside = false;
    recipe.look.stations = random.between(5, 14);
    recipe.look.station_range_mm = random.between(5, 12) * 1000;
}

void cookFans(Recipe& recipe, Random& random) {
    cookDrawn(recipe, random);
    recipe.look.solid_outside = false;
    recipe.look.fans = random.between(6, 30);
    recipe.furniture.outdoors = random.between(0, 60);
}

void cookDoubled(Recipe& recipe, Random& random) {
    cookDrawn(recipe, random);
    recipe.look.doubled_mm = random.between(80, 240);
    recipe.look.fray_percent = random.between(10, 60);
}

void cookFull(Recipe& recipe, Random& random) {
    cookDrawn(recipe, random);
    recipe.furniture.desks = random.between(60, 100);
    recipe.furniture.clutter = random.between(40, 100);
    recipe.furniture.dividers = random.between(20, 60);
    recipe.furniture.mess = random.chance(50) ? random.between(5, 50) : 0;
}

void cookPartial(Recipe& recipe, Random& random) {
    cookMapped(recipe, random);
    recipe.drive.visited_percent = random.between(5, 40);
}

void cookDrift(Recipe& recipe, Random& random) {
    cookMapped(recipe, random);
    recipe.lidar.drift_mm = random.between(50, 130);
    recipe.lidar.drift_hundredths = random.between(30, 110);
    recipe.lidar.drift_length = random.between(15, 60);
    recipe.lidar.noise_mm = random.between(15, 45);
    recipe.lidar.people = random.between(6, 30);
}

void cookPanes(Recipe& recipe, Random& random) {
    cookMapped(recipe, random);
    recipe.windows_percent = random.between(15, 60);
    recipe.lidar.range_mm = random.between(14, 26) * 1000;
    recipe.lidar.frame_percent = random.between(20, 50);
    recipe.lidar.hit_percent = random.between(8, 25);
    recipe.furniture.outdoors = random.between(40, 100);
}

void cookOutlined(Recipe& recipe, Random& random) {
    cookMapped(recipe, random);
    recipe.style = random.chance(60) ? LidarStyle::kOutlined : LidarStyle::kThick;
    recipe.lidar.least_rays = random.between(1, 3);
}

Site layOutMappedOffice(Random& random) {
    Site site;
    addBuilding(site, officeOf(random, {14, 30}, {9, 18}), {});
    return site;
}

Site layOutWings(Random& random) {
    return random.chance(50) ? layOutBentCorridor(random) : layOutStar(random);
}

}  // namespace

const std::vector<Family>& allFamilies() {
    static const std::vector<Family> families{
        {{"offices", "Offices along straight corridors, without a particular difficulty.", false},
         layOutOffice,
         cookDrawn,
         1000},
        {{"homes", "Homes with a narrow hall, small rooms and an open kitchen.", false},
         layOutHome,
         cookDrawn,
         1000},
        {{"shapes", "L-shaped rooms and round rooms.", false}, layOutShapes, cookDrawn, 1000},
        {{"halls", "A hall with columns and double doors, smaller rooms around it.", false},
         layOutHall,
         cookDrawn,
         1000},
        {{"cubicles", "Open bays of 2 m along aisles; each bay is a room.", false},
         layOutCubicles,
         cookDrawn,
         1000},
        {{"glass", "Fronts of glass, one pixel thick and full of holes.", false},
         layOutGlass,
         cookDrawn,
         1000},
        {{"bends", "A long corridor with bends, many rooms along it.", false},
         layOutBentCorridor,
         cookDrawn,
         1000},
        {{"openings", "Wide openings and double doors, 1.2 to 2.4 m.", false},
         layOutOpenings,
         cookDrawn,
         1000},
        {{"campus", "Several buildings in one map, each at its own angle.", false},
         layOutCampus,
         cookDrawn,
         1000},
        {{"star", "Wings at slanted angles around a round hall.", false},
         layOutStar,
         cookDrawn,
         1000},
        {{"explored", "Half explored: only what was seen from a few places.", false},
         layOutMappedOffice,
         cookExplored,
         1000},
        {{"fans", "Bundles of rays that leave through windows.", false},
         layOutOffice,
         cookFans,
         5000},
        {{"doubled", "Walls that are there twice after a robot had lost its way.", false},
         layOutOffice,
         cookDoubled,
         1000},
        {{"furnished", "Furniture from chairs to shelves that all but divide a room.", false},
         layOutOffice,
         cookFull,
         1000},
        {{"thickness", "Walls from one pixel to 0.6 m.", false}, layOutThickness, cookDrawn, 1000},
        {{"mapped_office", "Offices mapped by a lidar, most rooms visited.", true},
         layOutMappedOffice,
         cookMapped,
         4000},
        {{"mapped_home", "A furnished home mapped by a lidar.", true},
         layOutHome,
         cookMapped,
         4000},
        {{"mapped_hall", "A hall with columns, mapped by a lidar.", true},
         layOutHall,
         cookMapped,
         4000},
        {{"mapped_cubicles", "Cubicles mapped by a lidar.", true},
         layOutCubicles,
         cookMapped,
         4000},
        {{"mapped_glass", "Glass fronts and windows that a lidar sees through.", true},
         layOutGlass,
         cookPanes,
         6000},
        {{"mapped_partial", "Most rooms are seen through their door only, or not at all.", true},
         layOutMappedOffice,
         cookPartial,
         4000},
        {{"mapped_wings", "Bent corridors and slanted wings mapped by a lidar.", true},
         layOutWings,
         cookMapped,
         4000},
        {{"mapped_drift", "A robot that errs: bent and doubled walls, people in the way.", true},
         layOutMappedOffice,
         cookDrift,
         4000},
        {{"mapped_outlined", "Maps whose mapper draws thick walls wherever the seen ends.", true},
         layOutShapes,
         cookOutlined,
         4000},
    };
    return families;
}

}  // namespace vorund::test::families
