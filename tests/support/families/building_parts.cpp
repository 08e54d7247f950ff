// What several layouts need.
#include <algorithm>

#include "families/layouts.h"

namespace vorund::test::families {
namespace {

// Where the opening may lie: within its wall, clear of the other openings in it.
Span roomFor(const Building& building, std::size_t index) {
    const Opening& own = building.openings[index];
    const Wall& wall = building.walls[static_cast<std::size_t>(own.wall)];
    Span room{wall.along.low + kDoorGap, wall.along.high - kDoorGap};
    for (std::size_t i = 0; i < building.openings.size(); ++i) {
        const Opening& other = building.openings[i];
        if (i == index || other.wall != own.wall) continue;
        if (other.along.high <= own.along.low) {
            room.low = std::max(room.low, other.along.high + 2 * kDoorGap);
        }
        if (other.along.low >= own.along.high) {
            room.high = std::min(room.high, other.along.low - 2 * kDoorGap);
        }
    }
    return room;
}

}  // namespace

Building buildFrom(std::vector<Space> spaces, std::uint64_t seed) {
    Building building{0, 0, std::move(spaces), {}, {}};
    std::vector<bool> reached;
    do {
        building.walls = buildWalls(building.spaces, seed, 0);
        building.openings = placeDoors(building.spaces, building.walls, seed, reached);
        std::vector<Space> kept;
        for (std::size_t i = 0; i < reached.size(); ++i) {
            if (reached[i]) kept.push_back(building.spaces[i]);
        }
        building.spaces = kept;
    } while (std::find(reached.begin(), reached.end(), false) != reached.end());
    return building;
}

Building officeOf(Random& random, Span width_m, Span height_m) {
    const int width = random.between(width_m.low * 10, width_m.high * 10) * 100;
    const int height = random.between(height_m.low * 10, height_m.high * 10) * 100;
    return makeBuilding(random.next(), width, height, 0);
}

void addCells(std::vector<Space>& spaces, Random& random, const Box& strip, Span width_mm) {
    for (int x = strip.x0; x < strip.x1;) {
        int width = std::min(random.between(width_mm.low, width_mm.high), strip.x1 - x);
        if (strip.x1 - x - width < width_mm.low) width = strip.x1 - x;
        const bool large = std::int64_t{width} * strip.height() > 42000000;
        spaces.push_back(
            {large ? SpaceKind::kHall : SpaceKind::kOffice, {{x, strip.y0, x + width, strip.y1}}});
        x += width;
    }
}

int sideAlong(const Building& building, int space, const Wall& wall) {
    int low = wall.along.low, high = wall.along.high;
    for (const Box& box : building.spaces[static_cast<std::size_t>(space)].boxes) {
        const Span across = wall.vertical ? Span{box.x0, box.x1} : Span{box.y0, box.y1};
        if (wall.at != across.low && wall.at != across.high) continue;
        const Span along = wall.vertical ? Span{box.y0, box.y1} : Span{box.x0, box.x1};
        if (along.high < low || high < along.low) continue;
        low = std::min(low, along.low);
        high = std::max(high, along.high);
    }
    return high - low;
}

bool widen(Building& building, std::size_t opening, int width_mm) {
    Opening& own = building.openings[opening];
    const Wall& wall = building.walls[static_cast<std::size_t>(own.wall)];
    const int side =
        std::min(sideAlong(building, wall.before, wall), sideAlong(building, wall.behind, wall));
    const Span room = roomFor(building, opening);
    const int width = std::min({width_mm, kWidestDoor, room.length(), side * 3 / 4});
    if (width <= own.along.length()) return false;
    const int middle = (own.along.low + own.along.high) / 2;
    const int low = std::clamp(middle - width / 2, room.low, room.high - width);
    own.along = {low, low + width};
    return true;
}

}  // namespace vorund::test::families
