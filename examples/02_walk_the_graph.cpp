// Prints every room with the ways out of it: 02_walk_the_graph MAP

#include <iostream>

#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"

int main(int argc, char** argv) try {
    if (argc != 2) throw std::runtime_error("usage: 02_walk_the_graph MAP");
    vorund::setPlainOutput(nullptr);
    const auto rooms =
        vorund::rooms::findRooms(vorund::rooms::readMap(argv[1]), {}, vorund::Debugger::create({}));
    for (const vorund::rooms::Room& room : rooms.rooms) {
        std::cout << "room " << room.label << ", " << room.area_m2 << " m2:\n";
        for (const int neighbour : rooms.graph.getNeighbors(room.label)) {
            const double width = rooms.graph.getEdgeData(room.label, neighbour).length;
            std::cout << "  to room " << neighbour << " over " << width << " m\n";
        }
    }
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
