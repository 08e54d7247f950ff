#pragma once

#include <optional>
#include <string>

#include "vorund/rooms/rooms.h"

namespace vorund::app {

/// The line that tells of a map whose rooms were found: how many, the size, the time.
std::string summaryLine(const rooms::Rooms& rooms, double seconds);

/// What a table holds of that line.
struct Summary {
    std::string rooms;
    std::string seconds;
};

/// Nothing for a text that is no such line.
std::optional<Summary> parseSummary(const std::string& line);

}  // namespace vorund::app
