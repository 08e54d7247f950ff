// Closes every doorway of a map with a line of wall, for a robot that is to stay in its room:
// 03_virtual_walls MAP WALLED.png

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"

int main(int argc, char** argv) try {
    if (argc != 3) throw std::runtime_error("usage: 03_virtual_walls MAP WALLED.png");
    vorund::setPlainOutput(nullptr);
    const vorund::rooms::GridMap map = vorund::rooms::readMap(argv[1]);
    const auto rooms = vorund::rooms::findRooms(map, {}, vorund::Debugger::create({}));
    cv::Mat walled = map.picture.clone();
    int walls = 0;
    for (const vorund::rooms::Border& border : rooms.borders) {
        if (!border.door) continue;  // No straight line parts the two rooms.
        // Two pixels wide: a robot does not slip through between diagonal pixels.
        cv::line(walled, border.door->start.pixel, border.door->end.pixel, cv::Scalar(0), 2);
        ++walls;
    }
    cv::imwrite(argv[2], walled);
    std::cout << walls << " virtual walls\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
