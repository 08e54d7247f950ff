// The building behind a plan, in millimetres and not yet turned. Private to the plan generator.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorund::test {

/// Independent random streams, so that more furniture doesn't move a wall.
enum class Stream : std::uint64_t { kLayout, kDoors, kGlass, kFurniture, kNoise, kFans };

struct Span {
    int low = 0, high = 0;
    int length() const { return high - low; }
};

/// The points with x0 <= x < x1 and y0 <= y < y1; y points down. [mm]
struct Box {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int width() const { return x1 - x0; }
    int height() const { return y1 - y0; }
    Box transposed() const { return {y0, x0, y1, x1}; }
    Box grown(int by) const { return {x0 - by, y0 - by, x1 + by, y1 + by}; }
    bool overlaps(const Box& other) const {
        return x0 < other.x1 && other.x0 < x1 && y0 < other.y1 && other.y0 < y1;
    }
};

enum class SpaceKind { kCorridor, kOffice, kHall, kSmall };

/// A room or corridor: boxes that touch without overlapping, up to the middle of the walls.
struct Space {
    SpaceKind kind = SpaceKind::kOffice;
    std::vector<Box> boxes;
};

constexpr int kNoSpace = -1;  ///< Beyond an outer wall.

/// A straight wall with the same two spaces on its sides all along.
struct Wall {
    bool vertical = false;   ///< Along y, at x = `at`; otherwise along x, at y = `at`.
    int at = 0;              ///< Its middle. [mm]
    Span along;              ///< [mm]
    int before = kNoSpace;   ///< Index of the space at smaller x (or y).
    int behind = kNoSpace;   ///< Index of the space at larger x (or y).
    int thickness_mm = 0;    ///< 0 = as thin as can be drawn.
    bool outer() const { return before == kNoSpace || behind == kNoSpace; }

    /// The part `part` of the wall, from `from` to `to` across it (negative = before the middle).
    Box box(Span part, int from, int to) const {
        const Box lying{part.low, at + from, part.high, at + to};
        return vertical ? lying.transposed() : lying;
    }
};

/// An opening in a wall.
struct Opening {
    int wall = 0;  ///< Index into Building::walls.
    Span along;    ///< [mm]
};

struct Building {
    int width_mm = 0, height_mm = 0;
    std::vector<Space> spaces;
    std::vector<Wall> walls;
    std::vector<Opening> openings;
};

/// Corridors and rooms, in plan_layout.cpp. They fill the building but for courts and recesses.
std::vector<Space> layOutSpaces(std::uint64_t seed, int width_mm, int height_mm);

/// All walls around and between the spaces, in plan_walls.cpp; in an order that depends on the
/// spaces alone. `glass_percent` of the inner ones are as thin as can be drawn.
std::vector<Wall> buildWalls(const std::vector<Space>& spaces, std::uint64_t seed,
                             int glass_percent);

/// Doors so that as many spaces as possible can be reached from the first, in plan_doors.cpp.
/// None is nearer than kDoorGap to an end of its wall, where other walls join.
/// `reached` tells of each space whether it can be.
std::vector<Opening> placeDoors(const std::vector<Space>& spaces, const std::vector<Wall>& walls,
                                std::uint64_t seed, std::vector<bool>& reached);
constexpr int kDoorGap = 350;  ///< [mm]

/// The whole building; spaces that no door can reach are left out of it.
Building makeBuilding(std::uint64_t seed, int width_mm, int height_mm, int glass_percent);

/// A thing on the floor. Hollow ones are seen by their outline only: their inside is unknown.
struct Furnishing {
    Box box;
    bool hollow = false;
};

/// Desks, chairs, shelves, tables and open door leaves, in plan_furniture.cpp.
/// Nothing stands before a door, and between two things one can pass.
std::vector<Furnishing> furnish(const Building& building, std::uint64_t seed, int percent);

}  // namespace vorund::test
