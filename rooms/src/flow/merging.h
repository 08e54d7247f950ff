#pragma once

#include <functional>
#include <string>

#include "vorund/config.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

/// Called after each pass of a merging, with its name.
using PassObserver = std::function<void(const std::string& pass)>;

/// A way of deciding which rooms are one, on the primitives of `MergeProcessor`.
using Merging =
    std::function<void(RoomGraph& rooms, const Config& config, const PassObserver& after_pass)>;

/// Small rooms into the neighbour with the longest common border, then rooms across long borders.
void mergeBySizeAndBorderLength(RoomGraph& rooms, const Config& config,
                                const PassObserver& after_pass);

}  // namespace vorund::rooms
