#pragma once

#include <string>
#include <vector>

#include "vorund/rooms/room_settings.h"

/// The settings that `vorund tune` searches, as a box with sides from 0 to 1.
namespace vorund::app {

/// A point of the box; one number from 0 to 1 for each setting.
using TunePoint = std::vector<double>;

/// The values at a point, as KEY=VALUE for `applySetting`. They have three significant digits, so
/// that a file of settings can be read, and so that points which hardly differ need no second run.
using TuneValues = std::vector<std::string>;

TuneValues valuesAt(const TunePoint& point);

/// Where settings lie; what is outside of the box goes to its edge.
TunePoint pointOf(const rooms::Settings& settings);

/// @param settings  What the values go over.
rooms::Settings withValues(const TuneValues& values, rooms::Settings settings);

}  // namespace vorund::app
