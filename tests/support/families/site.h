// What a map is made of: rooms, walls, doors and things of one or more buildings. A list of shapes
// that are painted one over the other. Private to the families of plans.
#pragma once

#include <vector>

#include "families/shapes.h"
#include "plan_building.h"

namespace vorund::test::families {

enum class Brush {
    kFloor,  ///< Floor of the room `room`.
    kWall,   ///< Solid, over whatever is there; who owns the ground stays.
    kGlass,  ///< Likewise, but a laser often misses it.
    kOpen,   ///< Floor again, where a room owns the ground.
};

struct Stroke {
    Brush brush;
    Shape shape;
    int room = 0;
};

/// A thing on a floor or, if `outdoors`, where no building is.
struct Thing {
    Shape shape;
    bool hollow = false;  ///< Seen by its outline only.
    bool outdoors = false;
};

/// A door from `a` to `b` in the middle of its wall.
struct SiteDoor {
    SitePoint a, b;
    int room_a = 0, room_b = 0;
    int width_mm = 0;
};

struct RoomNote {
    SpaceKind kind = SpaceKind::kOffice;
};

/// A building on the site, for those who furnish it.
struct PlacedBuilding {
    Building building;
    Pose pose;
    std::vector<int> room_of_space;
};

struct Site {
    std::vector<Stroke> strokes;  ///< Painted in this order.
    std::vector<Thing> things;    ///< Then these.
    std::vector<Shape> holes;     ///< Where the map shows no wall although there is one.
    std::vector<SiteDoor> doors;
    std::vector<RoomNote> rooms;  ///< Room 1 is rooms[0].
    std::vector<PlacedBuilding> buildings;

    int addRoom(SpaceKind kind);
    void paint(Brush brush, const Shape& shape, int room = 0) {
        strokes.push_back({brush, shape, room});
    }
};

/// How a building is put on a site.
struct Placement {
    Pose pose;
    std::vector<int> room_of_space;  ///< Empty: a new room for each space.
    std::vector<bool> round;         ///< Of each space; empty: none. Only the disc in it is floor.
    std::vector<bool> glass;         ///< Of each wall; empty: none.
};

/// Paints floors, walls and openings, notes the doors.
void addBuilding(Site& site, const Building& building, Placement placement);

/// The part `part` of the wall, `thickness_mm` thick, on the site.
Shape wallShape(const Pose& pose, const Wall& wall, Span part, int thickness_mm);

}  // namespace vorund::test::families
