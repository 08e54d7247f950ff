#include "families/site.h"

#include <algorithm>

namespace vorund::test::families {
namespace {

const Wall& wallOf(const Building& building, const Opening& opening) {
    return building.walls[static_cast<std::size_t>(opening.wall)];
}

bool flag(const std::vector<bool>& flags, int index) {
    return !flags.empty() && index >= 0 && flags[static_cast<std::size_t>(index)];
}

void paintFloors(Site& site, const Building& building, const Placement& placement) {
    for (std::size_t i = 0; i < building.spaces.size(); ++i) {
        for (const Box& box : building.spaces[i].boxes) {
            site.paint(Brush::kFloor, shapeOf(placement.pose, box), placement.room_of_space[i]);
        }
    }
}

void paintWalls(Site& site, const Building& building, const Placement& placement) {
    for (std::size_t i = 0; i < building.walls.size(); ++i) {
        const Wall& wall = building.walls[i];
        const Brush brush =
            flag(placement.glass, static_cast<int>(i)) ? Brush::kGlass : Brush::kWall;
        // Longer by half the thickness, which closes the corners where two walls end.
        const Span longer{wall.along.low - wall.thickness_mm / 2,
                          wall.along.high + wall.thickness_mm / 2};
        site.paint(brush, wallShape(placement.pose, wall, longer, wall.thickness_mm));
    }
}

void paintRoundRooms(Site& site, const Building& building, const Placement& placement) {
    for (std::size_t i = 0; i < building.spaces.size(); ++i) {
        if (!flag(placement.round, static_cast<int>(i))) continue;
        const Box& box = building.spaces[i].boxes.front();
        const int side = std::min(box.width(), box.height());
        site.paint(Brush::kWall, shapeOf(placement.pose, box));
        site.paint(Brush::kOpen, discAt(placement.pose, (box.x0 + box.x1) / 2,
                                        (box.y0 + box.y1) / 2, side / 2 - 100));
    }
}

// A door into a round room is a passage through the solid corner.
int depthOf(const Building& building, const Placement& placement, const Wall& wall, int space) {
    if (!flag(placement.round, space)) return wall.thickness_mm / 2 + 1;
    const Box& box = building.spaces[static_cast<std::size_t>(space)].boxes.front();
    return (wall.vertical ? box.width() : box.height()) / 3;
}

void openDoor(Site& site, const Building& building, const Placement& placement,
              const Opening& opening) {
    const Wall& wall = wallOf(building, opening);
    const Box way = wall.box(opening.along, -depthOf(building, placement, wall, wall.before),
                             depthOf(building, placement, wall, wall.behind));
    Shape shape = shapeOf(placement.pose, way);
    // Walls as thin as can be drawn are thicker than their opening if pixels are large.
    (wall.vertical ? shape.half_x : shape.half_y) += 100000;
    site.paint(Brush::kOpen, shape);
    const int room_a = placement.room_of_space[static_cast<std::size_t>(wall.before)];
    const int room_b = placement.room_of_space[static_cast<std::size_t>(wall.behind)];
    if (room_a == room_b) return;
    const Box line = wall.box(opening.along, 0, 0);
    site.doors.push_back({onSite(placement.pose, line.x0, line.y0),
                          onSite(placement.pose, line.x1, line.y1), std::min(room_a, room_b),
                          std::max(room_a, room_b), opening.along.length()});
}

}  // namespace

int Site::addRoom(SpaceKind kind) {
    rooms.push_back({kind});
    return static_cast<int>(rooms.size());
}

Shape wallShape(const Pose& pose, const Wall& wall, Span part, int thickness_mm) {
    Shape shape = shapeOf(pose, wall.box(part, 0, 0));
    (wall.vertical ? shape.half_x : shape.half_y) = std::int64_t{500} * thickness_mm;
    return shape;
}

void addBuilding(Site& site, const Building& building, Placement placement) {
    if (placement.room_of_space.empty()) {
        for (const Space& space : building.spaces) {
            placement.room_of_space.push_back(site.addRoom(space.kind));
        }
    }
    paintFloors(site, building, placement);
    paintWalls(site, building, placement);
    paintRoundRooms(site, building, placement);
    for (const Opening& opening : building.openings) {
        openDoor(site, building, placement, opening);
    }
    site.buildings.push_back({building, placement.pose, placement.room_of_space});
}

}  // namespace vorund::test::families
