// Layouts of several parts at angles to each other.
#include <algorithm>

#include "families/layouts.h"

namespace vorund::test::families {
namespace {

// What other parts must not touch.
class Ground {
 public:
    bool isFree(const Shape& shape) const {
        return std::none_of(taken_.begin(), taken_.end(),
                            [&](const Shape& other) { return overlap(other, shape); });
    }
    void take(const Shape& shape) { taken_.push_back(shape); }

 private:
    std::vector<Shape> taken_;
};

// A corridor along x from 0 to `length`, its middle at y = 0, `half` wide to either side.
struct Wing {
    Pose pose;
    int length = 0;
    int half = 0;
    Box corridor() const { return {0, -half, length, half}; }
};

std::vector<Space> cellsBeside(const Wing& wing, Random& random, const Ground& ground) {
    std::vector<Space> spaces;
    for (const bool above : {true, false}) {
        const int depth = random.between(28, 55) * 100;
        std::vector<Space> cells;
        const Box strip = above ? Box{0, -wing.half - depth, wing.length, -wing.half}
                                : Box{0, wing.half, wing.length, wing.half + depth};
        addCells(cells, random, strip, {2400, 6000});
        for (const Space& cell : cells) {
            // What stands clear of it for a moment's walk outside.
            const Shape shape = grown(shapeOf(wing.pose, cell.boxes.front()), 400);
            if (ground.isFree(shape) && !random.chance(6)) spaces.push_back(cell);
        }
    }
    return spaces;
}

// Rooms along the wing, of which `corridor_room` is the corridor.
void addWing(Site& site, const Wing& wing, int corridor_room, Random& random,
             const Ground& ground) {
    std::vector<Space> spaces{{SpaceKind::kCorridor, {wing.corridor()}}};
    for (const Space& cell : cellsBeside(wing, random, ground)) spaces.push_back(cell);
    const Building building = buildFrom(std::move(spaces), random.next());
    Placement placement;
    placement.pose = wing.pose;
    for (const Space& space : building.spaces) {
        const bool corridor = space.kind == SpaceKind::kCorridor;
        placement.room_of_space.push_back(corridor ? corridor_room : site.addRoom(space.kind));
    }
    addBuilding(site, building, placement);
}

// The wings one after the other; where rooms of two would collide, those of the second give way.
void addWings(Site& site, const std::vector<Wing>& wings, const std::vector<int>& corridors,
              Random& random) {
    for (std::size_t i = 0; i < wings.size(); ++i) {
        Ground ground;
        for (std::size_t j = 0; j < wings.size(); ++j) {
            if (j != i) ground.take(shapeOf(wings[j].pose, wings[j].corridor().grown(300)));
        }
        for (const PlacedBuilding& placed : site.buildings) {
            for (const Space& space : placed.building.spaces) {
                ground.take(shapeOf(placed.pose, space.boxes.front()));
            }
        }
        addWing(site, wings[i], corridors[i], random, ground);
    }
}

Pose endOf(const Wing& wing, int turn) {
    const SitePoint end = onSite(wing.pose, wing.length, 0);
    return {static_cast<int>(floorDivided(end.x, 1000)),
            static_cast<int>(floorDivided(end.y, 1000)), wing.pose.tenths_deg + turn};
}

std::vector<Wing> drawBends(Random& random) {
    const int count = random.between(3, 5), half = random.between(8, 13) * 100;
    std::vector<Wing> wings{{{}, random.between(80, 220) * 100, half}};
    int sign = random.chance(50) ? 1 : -1;
    while (static_cast<int>(wings.size()) < count) {
        const int turn = random.chance(50) ? 900 : random.between(20, 90) * 10;
        // Three turns to the same side could run into themselves.
        sign = random.chance(70) || wings.size() > 2 ? -sign : sign;
        wings.push_back({endOf(wings.back(), sign * turn), random.between(100, 200) * 100, half});
    }
    return wings;
}

// Takes down the walls where one wing of the corridor runs into the next.
void joinBends(Site& site, const std::vector<Wing>& wings, int room) {
    constexpr int kFace = 100;  // Of the corridor's walls, from their middle.
    for (std::size_t i = 1; i < wings.size(); ++i) {
        site.paint(Brush::kWall, discAt(wings[i].pose, 0, 0, wings[i].half + kFace));
    }
    for (std::size_t i = 1; i < wings.size(); ++i) {
        site.paint(Brush::kFloor, discAt(wings[i].pose, 0, 0, wings[i].half - kFace), room);
    }
    for (std::size_t i = 0; i < wings.size(); ++i) {
        Box floor = wings[i].corridor();
        floor.y0 += kFace;
        floor.y1 -= kFace;
        if (i == 0) floor.x0 += 200;
        if (i + 1 == wings.size()) floor.x1 -= 200;
        site.paint(Brush::kFloor, shapeOf(wings[i].pose, floor), room);
    }
}

// The passage between a round hall and the corridor of one of its wings.
void openIntoHall(Site& site, const Wing& wing, int hall, int corridor) {
    const int half_width = std::min(wing.half - 350, kWidestDoor / 2);
    const Span along{-half_width, half_width};
    site.paint(Brush::kFloor, shapeOf(wing.pose, {-900, along.low, 0, along.high}), hall);
    site.paint(Brush::kFloor, shapeOf(wing.pose, {0, along.low, 500, along.high}), corridor);
    site.doors.push_back({onSite(wing.pose, 0, along.low), onSite(wing.pose, 0, along.high),
                          std::min(hall, corridor), std::max(hall, corridor), along.length()});
}

}  // namespace

Site layOutBentCorridor(Random& random) {
    Site site;
    const int corridor = site.addRoom(SpaceKind::kCorridor);
    const std::vector<Wing> wings = drawBends(random);
    addWings(site, wings, std::vector<int>(wings.size(), corridor), random);
    joinBends(site, wings, corridor);
    return site;
}

Site layOutStar(Random& random) {
    Site site;
    const int radius = random.between(35, 70) * 100, count = random.between(2, 4);
    const int hall = site.addRoom(SpaceKind::kHall);
    site.paint(Brush::kWall, discAt({}, 0, 0, radius + 150));
    site.paint(Brush::kFloor, discAt({}, 0, 0, radius - 150), hall);
    std::vector<Wing> wings;
    std::vector<int> corridors;
    for (int i = 0; i < count; ++i) {
        Wing wing{{}, random.between(90, 220) * 100, random.between(9, 13) * 100};
        wing.pose.tenths_deg = i * 3600 / count + random.between(-120, 120);
        const SitePoint start = onSite(wing.pose, radius, 0);
        wing.pose.x_mm = static_cast<int>(floorDivided(start.x, 1000));
        wing.pose.y_mm = static_cast<int>(floorDivided(start.y, 1000));
        wings.push_back(wing);
        corridors.push_back(site.addRoom(SpaceKind::kCorridor));
    }
    addWings(site, wings, corridors, random);
    for (std::size_t i = 0; i < wings.size(); ++i) {
        openIntoHall(site, wings[i], hall, corridors[i]);
    }
    for (int pillars = random.between(0, 6); pillars > 0; --pillars) {
        const Pose around{0, 0, random.between(0, 3599)};
        const int out = random.between(0, radius * 2 / 3);
        site.things.push_back({discAt(around, out, 0, random.between(150, 600)), true, false});
    }
    return site;
}

Site layOutCampus(Random& random) {
    Site site;
    const int count = random.between(2, 4);
    int x = 0;
    for (int i = 0; i < count; ++i) {
        const Building building = officeOf(random, {9, 20}, {7, 13});
        const int reach = std::max(building.width_mm, building.height_mm) * 3 / 4;
        x += reach + random.between(5, 30) * 100;
        const bool straight = random.chance(40);
        const int turn = straight ? 0 : random.between(-450, 450);
        const Pose middle{x, i % 2 * random.between(0, 60) * 100, turn};
        x += reach;
        const SitePoint corner = onSite(middle, -building.width_mm / 2, -building.height_mm / 2);
        Placement placement;
        placement.pose = {static_cast<int>(floorDivided(corner.x, 1000)),
                          static_cast<int>(floorDivided(corner.y, 1000)), turn};
        addBuilding(site, building, placement);
    }
    return site;
}

}  // namespace vorund::test::families
