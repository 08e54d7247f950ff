#pragma once

#include <string>

#include "vorund/export.h"
#include "vorund/rooms/rooms.h"

namespace vorund::rooms {

/// The rooms as JSON (`schemas/rooms.schema.json`, `"format": 1`): map, rooms, borders with their
/// cuts, islands, unreached floor, settings. Keys in a fixed order, numbers rounded to six digits
/// after the point, no times: equal rooms give equal bytes.
VORUND_EXPORT std::string roomsAsJson(const Rooms& rooms);

/// The polygons of the rooms as GeoJSON, simplified as `settings.rooms.simplify` says. [m]
VORUND_EXPORT std::string roomsAsGeoJson(const Rooms& rooms);

}  // namespace vorund::rooms
