#pragma once

#include "vorund/config.h"

namespace vorund::rooms {

/// Settings of this library; they stand under the key `rooms` of the YAML file.
struct RoomsConfig {
    /// Tolerance to which the polygons of rooms are simplified, >= 0. [m]
    double simplify = 0.0;
    /// Redraw the borders between rooms along their straight cuts.
    bool straight_borders = false;
};

/// All settings of a run.
struct Settings {
    Config core;
    RoomsConfig rooms;
};

}  // namespace vorund::rooms
