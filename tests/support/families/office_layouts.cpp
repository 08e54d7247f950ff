// Layouts that change an ordinary office building.
#include <algorithm>

#include "families/layouts.h"

namespace vorund::test::families {
namespace {

Site siteOf(const Building& building, Placement placement = {}) {
    Site site;
    addBuilding(site, building, std::move(placement));
    return site;
}

std::int64_t areaOf(const Space& space) {
    std::int64_t area = 0;
    for (const Box& box : space.boxes) area += std::int64_t{box.width()} * box.height();
    return area;
}

// The length along which two rooms of one box each touch, if together they are an L.
int seamOfL(const Box& a, const Box& b) {
    const Span y{std::max(a.y0, b.y0), std::min(a.y1, b.y1)};
    const Span x{std::max(a.x0, b.x0), std::min(a.x1, b.x1)};
    if (a.x0 == b.x1 || a.x1 == b.x0) return a.height() == b.height() ? 0 : y.length();
    if (a.y0 == b.y1 || a.y1 == b.y0) return a.width() == b.width() ? 0 : x.length();
    return 0;
}

bool becomesL(const Space& a, const Space& b) {
    if (a.kind == SpaceKind::kCorridor || b.kind == SpaceKind::kCorridor) return false;
    if (a.boxes.size() > 1 || b.boxes.size() > 1) return false;
    const int seam = seamOfL(a.boxes.front(), b.boxes.front());
    return seam >= 1600 && areaOf(a) + areaOf(b) < 80000000;
}

void joinToLs(std::vector<Space>& spaces, Random& random) {
    for (std::size_t i = 0; i < spaces.size(); ++i) {
        for (std::size_t j = i + 1; j < spaces.size(); ++j) {
            if (!becomesL(spaces[i], spaces[j]) || !random.chance(60)) continue;
            spaces[i].boxes.push_back(spaces[j].boxes.front());
            spaces[i].kind = SpaceKind::kOffice;
            spaces.erase(spaces.begin() + static_cast<std::ptrdiff_t>(j));
            break;
        }
    }
}

// A corner is cut out of a large room by a small one, which makes the large one an L.
void cutCorners(std::vector<Space>& spaces, Random& random) {
    const std::size_t count = spaces.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Space space = spaces[i];
        if (space.kind == SpaceKind::kCorridor || space.boxes.size() > 1) continue;
        const Box& box = space.boxes.front();
        if (std::min(box.width(), box.height()) < 4200 || !random.chance(50)) continue;
        const int x = box.x0 + random.between(1900, box.width() - 2000);
        const int y = box.y0 + random.between(1900, box.height() - 2000);
        const bool right = random.chance(50);
        const Box corner{right ? x : box.x0, box.y0, right ? box.x1 : x, y};
        const Box beside{right ? box.x0 : x, box.y0, right ? x : box.x1, y};
        spaces[i].boxes = {{box.x0, y, box.x1, box.y1}, beside};
        spaces[i].kind = SpaceKind::kOffice;
        spaces.push_back({SpaceKind::kSmall, {corner}});
    }
}

// Whether all doors of the room are near the middle of its sides, where a disc touches them.
bool canBeRound(const Building& building, int space) {
    const Space& own = building.spaces[static_cast<std::size_t>(space)];
    const Box& box = own.boxes.front();
    const int shorter = std::min(box.width(), box.height());
    const int longer = std::max(box.width(), box.height());
    if (own.boxes.size() > 1 || own.kind == SpaceKind::kCorridor) return false;
    if (shorter < 3400 || longer > shorter + 150) return false;
    return std::all_of(
        building.openings.begin(), building.openings.end(), [&](const Opening& opening) {
            const Wall& wall = building.walls[static_cast<std::size_t>(opening.wall)];
            if (wall.before != space && wall.behind != space) return true;
            const int middle = wall.vertical ? box.y0 + box.y1 : box.x0 + box.x1;
            const int off = opening.along.low + opening.along.high - middle;
            return std::max(off, -off) < shorter * 2 / 5;
        });
}

bool hasCorridorAbove(const std::vector<Space>& spaces, const Box& box) {
    return std::any_of(spaces.begin(), spaces.end(), [&](const Space& space) {
        if (space.kind != SpaceKind::kCorridor) return false;
        return std::any_of(space.boxes.begin(), space.boxes.end(), [&](const Box& other) {
            return other.y1 == box.y0 && other.x0 < box.x1 && box.x0 < other.x1;
        });
    });
}

// Rooms nearly square become square, so that a disc fills them. They keep to their corridor.
void squareUp(std::vector<Space>& spaces) {
    for (std::size_t i = 0; i < spaces.size(); ++i) {
        if (spaces[i].boxes.size() > 1 || spaces[i].kind == SpaceKind::kCorridor) continue;
        const Box box = spaces[i].boxes.front();
        const int surplus = box.height() - box.width();
        if (surplus <= 0 || surplus > 3500 || box.width() < 3400) continue;
        if (hasCorridorAbove(spaces, box)) {
            spaces[i].boxes.front().y1 -= surplus;
        } else {
            spaces[i].boxes.front().y0 += surplus;
        }
    }
}

void centreDoors(Building& building) {
    for (Opening& opening : building.openings) {
        const Wall& wall = building.walls[static_cast<std::size_t>(opening.wall)];
        const int low = (wall.along.low + wall.along.high - opening.along.length()) / 2;
        opening.along = {low, low + opening.along.length()};
    }
}

// Of a pane that long, a laser that passes gets no echo from some parts.
void addHoles(Site& site, const Building& building, const std::vector<bool>& glass,
              Random& random) {
    const int longest = random.between(2, 9) * 50, rarest = random.between(12, 40) * 50;
    for (std::size_t i = 0; i < building.walls.size(); ++i) {
        const Wall& wall = building.walls[i];
        if (!glass[i]) continue;
        for (int low = wall.along.low + random.between(0, rarest); low < wall.along.high;) {
            const int high = std::min(wall.along.high, low + random.between(50, longest));
            site.holes.push_back(wallShape({}, wall, {low, high}, 0));
            low = high + random.between(150, rarest);
        }
    }
}

}  // namespace

Site layOutOffice(Random& random) {
    return siteOf(officeOf(random, {14, 40}, {9, 24}));
}

Site layOutShapes(Random& random) {
    // One by one: the order in which arguments are computed is the compiler's choice.
    const int width = random.between(160, 360) * 100, height = random.between(120, 240) * 100;
    std::vector<Space> spaces = layOutSpaces(random.next(), width, height);
    const bool with_rounds = random.chance(70);
    if (with_rounds) squareUp(spaces);
    cutCorners(spaces, random);
    joinToLs(spaces, random);
    Building building = buildFrom(std::move(spaces), random.next());
    if (with_rounds) centreDoors(building);
    Placement placement;
    for (std::size_t i = 0; i < building.spaces.size(); ++i) {
        const bool can = canBeRound(building, static_cast<int>(i));
        placement.round.push_back(with_rounds && can && random.chance(80));
    }
    return siteOf(building, placement);
}

Site layOutOpenings(Random& random) {
    Building building = officeOf(random, {16, 36}, {10, 22});
    for (std::size_t i = 0; i < building.openings.size(); ++i) {
        const int width = random.between(24, 48) * 50;
        if (random.chance(70)) widen(building, i, width);
    }
    return siteOf(building);
}

Site layOutGlass(Random& random) {
    const Building building = officeOf(random, {14, 34}, {9, 20});
    Placement placement;
    const int share = random.between(40, 100);
    for (const Wall& wall : building.walls) {
        const auto isCorridor = [&](int space) {
            return space != kNoSpace &&
                   building.spaces[static_cast<std::size_t>(space)].kind == SpaceKind::kCorridor;
        };
        const bool front = !wall.outer() && (isCorridor(wall.before) || isCorridor(wall.behind));
        placement.glass.push_back(random.chance(front ? share : share / 4));
    }
    Building thin = building;
    for (std::size_t i = 0; i < thin.walls.size(); ++i) {
        if (placement.glass[i]) thin.walls[i].thickness_mm = 0;
    }
    Site site = siteOf(thin, placement);
    addHoles(site, thin, placement.glass, random);
    return site;
}

Site layOutThickness(Random& random) {
    Building building = officeOf(random, {14, 34}, {9, 22});
    const int outer = random.between(0, 12) * 50;
    const int thickest = random.between(0, 12) * 50;
    const bool each_its_own = random.chance(50);
    for (Wall& wall : building.walls) {
        wall.thickness_mm = wall.outer() ? outer : thickest;
        if (each_its_own && !wall.outer()) wall.thickness_mm = random.between(0, 12) * 50;
    }
    return siteOf(building);
}

}  // namespace vorund::test::families
