// Families of made-up maps, each hard in one of the ways in which real maps are.
//
//     const FamilyPlan plan = makeFamilyPlan("mapped_office", 7);
//     writeFamilyPlan(plan, "/tmp/plans", "mapped_office_7");
//
// Drawn families show a building as somebody would draw it, with some faults put in. Mapped ones
// are what a simulated robot makes of it: a lidar carried through the furnished building, its scans
// counted into a grid. All of it is in integers, so a seed gives the same bytes on every machine.
// The functions keep no state and may run in several threads at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan_generator.h"

namespace vorund::test {

struct FamilyInfo {
    std::string name;
    std::string sentence;  ///< What it stands for.
    bool mapped = false;
};

/// All families, drawn ones first.
const std::vector<FamilyInfo>& planFamilies();

struct FamilyOptions {
    int resolution_um = 50000;               ///< Side of a pixel. [micrometre], 20000 to 200000.
    std::optional<int> rotation_tenths_deg;  ///< Counterclockwise; the seed's choice if not set.
};

struct FamilyPlan {
    std::string family;
    std::uint64_t seed = 0;
    int resolution_um = 50000;
    int rotation_tenths_deg = 0;

    cv::Mat map;  ///< CV_8UC1: kMapFree, kMapUnknown or kMapOccupied.

    /// CV_16UC1, size of the map: true rooms 1, 2, ... without gaps; 0 = none. A doorway is shared,
    /// half to either room. Furniture and small unseen gaps within a room are its own. Free pixels
    /// without a room are laser fans and what the map shows too little of: of a room that is partly
    /// seen, the part that is free, if it is 2 m^2 and a fifth of the room at least; its
    /// largest piece where it is seen in several.
    cv::Mat rooms;

    std::vector<Door> doors;  ///< Between rooms that are in `rooms`, by their numbers there.

    /// CV_16UC1: the empty and wholly seen building, where walls really stand; the numbers
    /// are its own: rooms_of_floor tells which is which.
    cv::Mat floor;
    std::vector<Door> floor_doors;    ///< All doors, by the numbers of `floor`.
    std::vector<int> rooms_of_floor;  ///< The number in `rooms` of each in `floor`, 0 for none.
};

/// @throws std::invalid_argument  naming the family if there is no such one, or the option that is
///     out of range; nothing is made then.
FamilyPlan makeFamilyPlan(const std::string& family, std::uint64_t seed,
                          const FamilyOptions& options = {});

/// Writes into the existing folder `directory`:
///   NAME.png                  the map;
///   NAME.yaml                 its resolution and origin, as map servers read them;
///   NAME_gt_segmentation.png  the true rooms as a drawing: white areas, cut by lines of one pixel
///                             where two rooms meet;
///   NAME_rooms.png            the true rooms by number, 16 bits;
///   NAME_doors.json           each door's rooms, width and end points.
/// @throws std::invalid_argument  if `name` is empty or has a '/' in it.
/// @throws std::runtime_error     naming the file and the cause.
void writeFamilyPlan(const FamilyPlan& plan, const std::string& directory, const std::string& name);

/// The rooms as NAME_gt_segmentation.png shows them: CV_8UC1, 255 = room, 0 = none or a border.
cv::Mat drawnTruth(const cv::Mat& rooms);

}  // namespace vorund::test
