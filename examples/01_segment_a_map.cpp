// Segments a map and writes the label image: 01_segment_a_map MAP ROOMS.png

#include <iostream>
#include <opencv2/imgcodecs.hpp>

#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"

int main(int argc, char** argv) try {
    if (argc != 3) throw std::runtime_error("usage: 01_segment_a_map MAP ROOMS.png");
    vorund::setPlainOutput(nullptr);
    const vorund::rooms::GridMap map = vorund::rooms::readMap(argv[1]);
    const vorund::rooms::Rooms rooms =
        vorund::rooms::findRooms(map, vorund::rooms::Settings{}, vorund::Debugger::create({}));
    cv::Mat labels;
    rooms.labels.convertTo(labels, CV_16U);
    cv::imwrite(argv[2], labels);
    std::cout << rooms.rooms.size() << " rooms\n";
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
