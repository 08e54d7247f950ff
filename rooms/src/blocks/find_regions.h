#pragma once

#include <memory>

#include "blocks/segment_in_blocks.h"
#include "maps/working_map.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

/// The regions of a map: by `doSegment` where its 8 bits hold them and the map is not large, else
/// in blocks.
/// @throws MapError, Cancelled  as `findRooms`.
Segmented findRegions(const WorkingMap& map, const Settings& settings,
                      const std::shared_ptr<Debugger>& debugger, const StageObserver& observer);

}  // namespace vorund::rooms
