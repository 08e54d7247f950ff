// Layouts with large openings: halls and cubicles.
#include <algorithm>

#include "families/layouts.h"

namespace vorund::test::families {
namespace {

// --- Halls --------------------------------------------------------------------------------------

void addColumns(Site& site, Random& random, const Box& hall) {
    const int columns = hall.width() / (random.between(28, 50) * 100);
    const int rows = hall.height() / (random.between(28, 50) * 100);
    const int size = random.between(6, 16) * 50;
    const bool round = random.chance(40);
    for (int i = 1; i <= columns; ++i) {
        for (int j = 1; j <= rows; ++j) {
            const int x = hall.x0 + hall.width() * i / (columns + 1);
            const int y = hall.y0 + hall.height() * j / (rows + 1);
            const Box box{x - size / 2, y - size / 2, x + size / 2, y + size / 2};
            site.things.push_back({shapeOf({}, box, round), true, false});
        }
    }
}

// --- Cubicles -----------------------------------------------------------------------------------

//     +--------------------------+
//     | a     aisle            a |     Blocks of two rows of bays, back to back, each row open to
//     | i  +-----+-----+-----+ i |     its aisle; cross aisles at both ends join them. The aisles
//     | s  | bay | bay | bay | s |     are one room, each bay is one.
//     | l  +-----+-----+-----+ l |
//     | e  | bay | bay | bay | e |
//     |    +-----+-----+-----+   |
//     |       aisle              |
//     +--------------------------+
struct Bays {
    int width, depth, aisle, count, blocks, partition;
    int bottom() const { return blocks * (aisle + 2 * depth) + aisle; }
    // Space 0 are the aisles, then come the bays.
    bool isBay(int space) const { return space >= 1 && space <= 2 * count * blocks; }
};

Bays drawBays(Random& random) {
    Bays bays{};
    bays.width = random.between(36, 48) * 50;
    bays.depth = random.between(36, 48) * 50;
    bays.aisle = random.between(24, 44) * 50;
    bays.count = random.between(3, 8);
    bays.blocks = random.between(1, 3);
    bays.partition = random.between(1, 3) * 50;
    return bays;
}

std::vector<Space> baySpaces(const Bays& bays) {
    const int row = bays.count * bays.width;
    Space aisles{SpaceKind::kCorridor,
                 {{-bays.aisle, 0, 0, bays.bottom()}, {row, 0, row + bays.aisle, bays.bottom()}}};
    std::vector<Space> spaces{aisles};
    for (int y = 0; y < bays.bottom(); y += bays.aisle + 2 * bays.depth) {
        spaces.front().boxes.push_back({0, y, row, y + bays.aisle});
        if (y + bays.aisle == bays.bottom()) break;
        for (int i = 0; i < 2 * bays.count; ++i) {
            const int x = i / 2 * bays.width, top = y + bays.aisle + i % 2 * bays.depth;
            spaces.push_back({SpaceKind::kSmall, {{x, top, x + bays.width, top + bays.depth}}});
        }
    }
    return spaces;
}

// Each bay is open to the aisle in front of it, but for a stub of partition at either side.
void openBays(Building& building, const Bays& bays, Random& random) {
    const auto wallOf = [&](const Opening& opening) {
        return building.walls[static_cast<std::size_t>(opening.wall)];
    };
    const auto ofBay = [&](const Opening& opening) {
        const Wall wall = wallOf(opening);
        return bays.isBay(wall.before) || bays.isBay(wall.behind);
    };
    std::vector<Opening>& openings = building.openings;
    openings.erase(std::remove_if(openings.begin(), openings.end(), ofBay), openings.end());
    const int stub = random.between(1, 6) * 50;
    for (std::size_t i = 0; i < building.walls.size(); ++i) {
        Wall& wall = building.walls[i];
        if (!bays.isBay(wall.before) && !bays.isBay(wall.behind)) continue;
        wall.thickness_mm = bays.partition;
        const bool front = bays.isBay(wall.before) != bays.isBay(wall.behind) && !wall.vertical;
        if (wall.outer() || !front) continue;
        const int low = random.chance(50) ? stub : 50;
        openings.push_back(
            {static_cast<int>(i),
             {wall.along.low + low + bays.partition, wall.along.high - 50 - bays.partition}});
    }
}

}  // namespace

Site layOutHall(Random& random) {
    const int width = random.between(90, 240) * 100, depth = random.between(80, 160) * 100;
    const int corridor = random.between(18, 28) * 100, strip = random.between(30, 60) * 100;
    const int left = random.chance(60) ? random.between(30, 50) * 100 : 0;
    std::vector<Space> spaces{{SpaceKind::kCorridor, {{-left, depth, width, depth + corridor}}},
                              {SpaceKind::kHall, {{0, 0, width, depth}}}};
    addCells(spaces, random, {-left, depth + corridor, width, depth + corridor + strip},
             {2600, 8000});
    if (random.chance(50)) addCells(spaces, random, {0, -strip, width, 0}, {2600, 8000});
    for (int y = 0; left > 0 && y < depth;) {
        const int cell = depth - y < 6000 ? depth - y : random.between(28, 40) * 100;
        spaces.push_back({SpaceKind::kOffice, {{-left, y, 0, y + cell}}});
        y += cell;
    }
    Building building = buildFrom(std::move(spaces), random.next());
    for (std::size_t i = 0; i < building.openings.size(); ++i) {
        const Wall& wall = building.walls[static_cast<std::size_t>(building.openings[i].wall)];
        const bool to_hall = wall.before == 1 || wall.behind == 1;
        if (to_hall && random.chance(60)) widen(building, i, random.between(32, 48) * 50);
    }
    Site site;
    addBuilding(site, building, {});
    if (random.chance(80)) addColumns(site, random, {0, 0, width, depth});
    return site;
}

Site layOutCubicles(Random& random) {
    const Bays bays = drawBays(random);
    std::vector<Space> spaces = baySpaces(bays);
    const int depth = random.between(28, 50) * 100, length = bays.count * bays.width + bays.aisle;
    addCells(spaces, random, {-bays.aisle, -depth, length, 0}, {2600, 6000});
    if (random.chance(60)) {
        addCells(spaces, random, {-bays.aisle, bays.bottom(), length, bays.bottom() + depth},
                 {2600, 6000});
    }
    Building building = buildFrom(std::move(spaces), random.next());
    openBays(building, bays, random);
    Site site;
    addBuilding(site, building, {});
    return site;
}

}  // namespace vorund::test::families
