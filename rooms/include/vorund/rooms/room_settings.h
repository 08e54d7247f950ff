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
    int block_pixels = 4'000'000;
};

/// All settings of a run.
struct Settings {
    Config core;
    RoomsConfig rooms;
};

}  // namespace vorund::rooms
