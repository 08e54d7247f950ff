#include <algorithm>

#include "families/layouts.h"

namespace vorund::test::families {
namespace {

// Rooms along one side of the hall; deep ones are cut in two, the back one has no door to the hall.
void addHomeStrip(std::vector<Space>& spaces, Random& random, const Box& strip, bool hall_below) {
    std::vector<Space> cells;
    addCells(cells, random, strip, {2100, 5200});
    for (const Space& cell : cells) {
        const Box& box = cell.boxes.front();
        const bool cuts = box.height() > 4000 && random.chance(25);
        if (!cuts) {
            spaces.push_back({SpaceKind::kOffice, {box}});
            continue;
        }
        const int back = random.between(1700, box.height() - 2000);
        const int cut = hall_below ? box.y0 + back : box.y1 - back;
        spaces.push_back({SpaceKind::kOffice, {{box.x0, box.y0, box.x1, cut}}});
        spaces.push_back({SpaceKind::kOffice, {{box.x0, cut, box.x1, box.y1}}});
    }
}

std::vector<Space> homeSpaces(Random& random) {
    const int width = random.between(75, 140) * 100;
    const int upper = random.between(28, 50) * 100, lower = random.between(28, 52) * 100;
    const int hall = random.between(22, 34) * 50;
    const int left = random.chance(50) ? random.between(32, 50) * 100 : 0;
    const int bottom = upper + hall + lower;
    std::vector<Space> spaces{{SpaceKind::kCorridor, {{left, upper, width, upper + hall}}}};
    if (left > 0) {  // A living room over the whole depth ends the hall.
        const int cut = bottom > 9000 ? upper + hall : bottom;
        spaces.push_back({SpaceKind::kOffice, {{0, 0, left, cut}}});
        if (cut < bottom) spaces.push_back({SpaceKind::kOffice, {{0, cut, left, bottom}}});
    }
    addHomeStrip(spaces, random, {left, 0, width, upper}, true);
    addHomeStrip(spaces, random, {left, upper + hall, width, bottom}, false);
    return spaces;
}

// A seam along which a kitchen may be open: two rooms, neither of them the hall.
struct Seam {
    std::size_t wall = 0;
    int length = 0;
};

Seam longestSeam(const Building& building) {
    Seam best;
    for (std::size_t i = 0; i < building.walls.size(); ++i) {
        const Wall& wall = building.walls[i];
        if (wall.outer() || wall.along.length() <= best.length) continue;
        const auto isHall = [&](int space) {
            return building.spaces[static_cast<std::size_t>(space)].kind == SpaceKind::kCorridor;
        };
        if (!isHall(wall.before) && !isHall(wall.behind)) best = {i, wall.along.length()};
    }
    return best;
}

// Wide enough to join, by the rule in the header; stubs of wall are left at both ends.
void joinOverSeam(std::vector<Space>& spaces, const Wall& wall) {
    Space& kept = spaces[static_cast<std::size_t>(wall.before)];
    const Space& given = spaces[static_cast<std::size_t>(wall.behind)];
    kept.boxes.insert(kept.boxes.end(), given.boxes.begin(), given.boxes.end());
    spaces.erase(spaces.begin() + wall.behind);
}

bool besideDoor(const Building& building, const Box& box) {
    return std::any_of(
        building.openings.begin(), building.openings.end(), [&](const Opening& opening) {
            const Wall& wall = building.walls[static_cast<std::size_t>(opening.wall)];
            return wall.box(opening.along, -700, 700).grown(100).overlaps(box);
        });
}

void addStubs(Site& site, const Building& building, Random& random, const Wall& seam) {
    const int spare = seam.along.length() - kWidestDoor - 200;
    const int low = random.between(0, spare), high = random.between(0, spare - low);
    const int thickness = random.between(2, 4) * 50;
    const Span stubs[] = {{seam.along.low, seam.along.low + low},
                          {seam.along.high - high, seam.along.high}};
    for (const Span& stub : stubs) {
        if (stub.length() < 150 || besideDoor(building, seam.box(stub, -50, 50))) continue;
        site.paint(Brush::kWall, wallShape({}, seam, stub, thickness));
    }
}

void openKitchen(Building& building, std::size_t wall, Random& random) {
    const Span along = building.walls[wall].along;
    const int index = static_cast<int>(wall);
    auto own = std::find_if(building.openings.begin(), building.openings.end(),
                            [&](const Opening& opening) { return opening.wall == index; });
    if (own == building.openings.end()) {
        const int low = random.between(along.low + kDoorGap, along.high - kDoorGap - 800);
        own = building.openings.insert(own, {index, {low, low + 800}});
    }
    const auto place = static_cast<std::size_t>(own - building.openings.begin());
    widen(building, place, random.between(28, 48) * 50);
}

}  // namespace

Site layOutHome(Random& random) {
    std::vector<Space> spaces = homeSpaces(random);
    const std::uint64_t seed = random.next();
    Building building = buildFrom(spaces, seed);
    const Seam seam = longestSeam(building);
    const bool joins = seam.length >= 2900 && random.chance(45);
    const Wall wall = building.walls[seam.wall];
    if (joins) {
        spaces = building.spaces;
        joinOverSeam(spaces, wall);
        building = buildFrom(spaces, seed);
    } else if (seam.length >= 2000 && random.chance(70)) {
        openKitchen(building, seam.wall, random);
    }
    for (std::size_t i = 0; i < building.openings.size(); ++i) {
        if (random.chance(20)) widen(building, i, random.between(24, 44) * 50);
    }
    Site site;
    addBuilding(site, building, {});
    if (joins) addStubs(site, building, random, wall);
    return site;
}

}  // namespace vorund::test::families
