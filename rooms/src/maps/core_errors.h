#pragma once

#include <exception>

namespace vorund::rooms {

/// Whether the core has found no seed, or ended its scales before the last one.
enum class NoRoom {
    kOther,       ///< Another error.
    kNothing,     ///< Nothing that could be a room.
    kScalesEnded  ///< Rooms are wider than the scales reach.
};

NoRoom kindOf(const std::exception& error);

/// What the user of a map has to know of such an error, in words of settings; nullptr for another.
const char* causeOfNoRoom(const std::exception& error);

}  // namespace vorund::rooms
