// A program that knows the rooms library only as it is installed.
#include <vorund/rooms/find_rooms.h>
#include <vorund/rooms/rooms_json.h>

#include <cmath>
#include <iostream>

#include "drawn_map.h"

int main() {
    vorund::setPlainOutput(nullptr);
    vorund::rooms::GridMap map;
    map.values = drawn_map::draw();
    map.picture = cv::Mat(map.values.size(), CV_8UC1, cv::Scalar(255));
    const vorund::rooms::Rooms found =
        vorund::rooms::findRooms(map, vorund::rooms::Settings{}, vorund::Debugger::create({}));

    const cv::Point2d left = pixelToMetres(map, drawn_map::centre(drawn_map::kLeft));
    const cv::Point2d right = pixelToMetres(map, drawn_map::centre(drawn_map::kRight));
    std::cout << found.rooms.size() << " rooms, " << found.roomAt(left) << " and "
              << found.roomAt(right) << '\n';
    if (found.rooms.size() != 2 || found.borders.size() != 1) return 1;
    // Reading order: the left room is the first.
    if (found.roomAt(left) != 1 || found.roomAt(right) != 2) return 1;
    // The doorway's 0.18 square metres go to either room.
    for (const vorund::rooms::Room& room : found.rooms) {
        if (room.area_m2 < 9.0 || room.area_m2 > 9.2) return 1;
    }
    return found.borders.front().door.has_value() ? 0 : 1;
}
