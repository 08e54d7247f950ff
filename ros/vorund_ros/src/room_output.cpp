#include "room_output.h"

#include <utility>

namespace vorund_ros {

RoomOutput toOutput(SavedRooms rooms) {
    RoomOutput output;
    output.cells = toCells(rooms.found);
    output.markers = toMarkers(rooms.found);
    output.rooms = std::move(rooms);
    return output;
}

std::string countText(const FoundRooms& found) {
    const std::size_t count = found.graph.rooms.size();
    return std::to_string(count) + (count == 1 ? " room" : " rooms");
}

}  // namespace vorund_ros
