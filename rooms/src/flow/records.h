#pragma once

#include <vector>

#include "doorways/find_doorways.h"
#include "flow/cuts.h"
#include "flow/islands.h"
#include "vorund/rooms/rooms.h"

namespace vorund::rooms {

/// What the flow has found, with the core's labels; images have the map's own size.
struct FoundRooms {
    cv::Mat labels;                      ///< `CV_32SC1`, 0 = no room; becomes the result.
    Graph graph;                         ///< After merging, at the working resolution.
    Cuts cuts;                           ///< In pixels of the working resolution.
    std::vector<LinkingDoorway> doorways;  ///< In pixels of the working resolution.
    std::vector<RemovedIsland> islands;  ///< In pixels of the working resolution.
    double scale;                        ///< Pixels of the map per working pixel.
};

/// Numbers the rooms from 1 in reading order and fills in labels, lines, records and graph; the
/// map's resolution and origin are there already.
void fillRecords(const FoundRooms& found, Rooms& rooms);

}  // namespace vorund::rooms
