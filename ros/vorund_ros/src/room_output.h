// Rooms with all that is published of them.
#pragma once

#include "room_markers.h"
#include "saved_rooms.h"

namespace vorund_ros {

struct RoomOutput {
    SavedRooms rooms;
    nav_msgs::OccupancyGrid cells;
    visualization_msgs::MarkerArray markers;
};

/// Takes a while for large maps: to be called without a lock, and not from a callback.
RoomOutput toOutput(SavedRooms rooms);

/// "8 rooms".
std::string countText(const FoundRooms& found);

}  // namespace vorund_ros
