// Made-up floor plans with their true rooms and doors, for tests and benchmarks.
//
//     PlanOptions options;
//     options.seed = 7;
//     options.furniture_percent = 60;
//     const Plan plan = makePlan(options);
//     writePlan(plan, "/tmp", "office");
//
// All geometry is in integers, so a seed gives the same bytes on every machine.
// The functions keep no state and may run in several threads at once.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace vorund::test {

/// The grey levels of a robot map, the only ones in Plan::map.
constexpr std::uint8_t kMapFree = 254;
constexpr std::uint8_t kMapUnknown = 205;
constexpr std::uint8_t kMapOccupied = 0;

/// What lies around the building.
enum class Outside {
    kUnseen,  ///< Never seen, as in a map that a robot built.
    kSolid,   ///< Occupied, as in a plan drawn by hand.
};

/// The building itself (rooms, walls, doors) depends on seed, width and height alone. All other
/// members change how it is seen: the same seed bare, furnished and turned has the same rooms.
struct PlanOptions {
    std::uint64_t seed = 1;
    int width_mm = 24000;          ///< Of the building, walls to the middle. [mm], 2000 to 300000.
    int height_mm = 14000;         ///< Likewise.
    int resolution_um = 50000;     ///< Side of a pixel. [micrometre], 10000 to 200000.
    int rotation_tenths_deg = 0;   ///< Counterclockwise in the picture. [0.1 degree], any number.
    int margin_mm = 1500;          ///< Around the turned building. [mm], 300 to 50000.
    int furniture_percent = 0;     ///< How full the rooms are; also door leaves. [%], 0 to 100.
    int noise_percent = 0;         ///< Ragged walls, speckle, holes in walls. [%], 0 to 100.
    int fans_percent = 0;          ///< Rooms whose windows let the laser out. [%], 0 to 100.
    int glass_percent = 0;         ///< Inner walls that are one pixel thick. [%], 0 to 100.
    Outside outside = Outside::kUnseen;
};

/// An opening between two rooms. The line from `a` to `b` lies in the middle of the wall.
struct Door {
    cv::Point a, b;  ///< End points in pixels, the floor's outermost within rounding.
    int room_a = 0;  ///< Numbers in Plan::rooms; room_a < room_b.
    int room_b = 0;
    int width_mm = 0;
};

struct Plan {
    cv::Mat map;  ///< CV_8UC1: kMapFree, kMapUnknown or kMapOccupied.

    /// CV_16UC1, size of the map: true rooms 1, 2, ... without gaps; 0 = wall or outside.
    /// A room is all its floor, as it was before anything stood on it: furniture, door leaves and
    /// noise on the floor keep its number. A doorway is shared, half to either room. Every
    /// free pixel of the building has a room; only laser fans outside are free with room 0.
    cv::Mat rooms;

    std::vector<Door> doors;
    PlanOptions options;  ///< Those that the plan was made with.
};

/// Makes a plan in which every room can be reached from every other.
/// Corridors are 1.6 to 2.6 m wide, doors 0.7 to 1.3 m, double doors 1.6 to 2.0 m. A building
/// narrower than 5.2 m is a row of rooms without a corridor, a tiny one a single room.
///
/// @throws std::invalid_argument  naming the member that is out of range, or if the picture
///     would have more than 64 million pixels; nothing is made then.
Plan makePlan(const PlanOptions& options);

/// Writes four files into the existing folder `directory`:
///   NAME.pgm         the map;
///   NAME.yaml        its resolution and origin, as map servers read them;
///   NAME_rooms.png   the true rooms, 16 bits;
///   NAME_doors.json  each door's rooms, width and end points, in pixels and in metres.
/// In metres, the origin is near the middle of the picture and y points up.
/// Each is written under a temporary name and then renamed, so none is ever seen half written.
/// The same plan gives the same bytes everywhere, but for the PNG, of which only the pixels are
/// promised: its compression is the image library's.
///
/// @throws std::invalid_argument  if `name` is empty or has a '/' in it.
/// @throws std::runtime_error     naming the file and the cause.
void writePlan(const Plan& plan, const std::string& directory, const std::string& name);

}  // namespace vorund::test
