// Tells in which room a robot is: 04_which_room MAP X Y, metres in the map's frame

#include <iostream>
#include <string>

#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"

int main(int argc, char** argv) try {
    if (argc != 4) throw std::runtime_error("usage: 04_which_room MAP X Y");
    vorund::setPlainOutput(nullptr);
    const auto rooms =
        vorund::rooms::findRooms(vorund::rooms::readMap(argv[1]), {}, vorund::Debugger::create({}));
    const cv::Point2d robot(std::stod(argv[2]), std::stod(argv[3]));
    const int room = rooms.roomAt(robot);
    if (room == 0) {
        std::cout << "in no room\n";
    } else {
        std::cout << "in room " << room << '\n';
    }
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
