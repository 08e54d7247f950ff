#pragma once

#include <string>

#include "vorund/config.h"

namespace vorund::rooms {

/// Settings of this library; they stand under the key `rooms` of the YAML file.
struct RoomsConfig {
    /// Tolerance to which the polygons of rooms are simplified, >= 0. [m]
    double simplify = 0.0;
    /// Redraw the borders between rooms along their straight cuts.
    bool straight_borders = false;
    /// When a map is segmented in blocks: "auto", if one piece does not hold it, or "always".
    std::string blocks = "auto";
    /// Most pixels of a block, with what is seen around it, >= 40000. [pixels at 0.05 m]
    int block_pixels = 16'000'000;

    /// How regions become rooms: "passages", by how open the passages between them are, or
    /// "passes", by the core's two merge passes.
    std::string merging = "passages";
    /// For "passages": a passage is no doorway if its clearance is above this part of that of the
    /// roomier side, 0 to 1. Larger values give more rooms.
    double open_ratio = 0.5;
    /// The same for passages narrower than `narrow_passage`, 0 to 1.
    double narrow_ratio = 0.6;
    double narrow_passage = 1.25;  ///< As wide as a wide door. [m]
    double least_area = 2.0;       ///< Of a room. [m^2]
    /// For "passages": find doorways as gaps in walls; regions end in them, and are not joined
    /// through them.
    bool doorways = true;
    /// With `doorways`: follow the walls of corridors, and take gaps of any width in them for
    /// doorways, unless the space behind one is no wider than the gap.
    bool corridors = true;
    double widest_doorway = 2.5;  ///< [m]
    double jamb = 0.5;            ///< Wall that goes on from one end of a doorway at least. [m]
    /// One knob over `open_ratio`, `narrow_ratio` and `least_area`: -2 for few large rooms to 2 for
    /// many small ones. The odds of the ratios are multiplied by 1 + detail, `least_area` is divided
    /// by it; below 0 it is the other way round, by 1 - detail.
    double detail = 0.0;

    /// Take out what stands free in rooms before they are looked for.
    bool clear_clutter = true;
    double loose_part = 2.0;   ///< Larger side of parts that nothing joins to the walls. [m]
    double loose_block = 2.5;  ///< The same for parts at least 0.5 m thick. [m]
    double wall_line = 0.7;  ///< Loose parts stay where so much of 8 m along them is wall, 0 to 1.
    double closed_floor = 4.0;  ///< Enclosed floor below this area is no room. [m^2]
};

/// All settings of a run.
struct Settings {
    Config core;
    RoomsConfig rooms;
};

}  // namespace vorund::rooms
