#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "vorund/rooms/file_output.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/rooms.h"

namespace vorund::app {

/// What a run gives, beside its rooms.
struct RunImages {
    cv::Mat segments;                                       ///< As `doSegment` gave them.
    std::vector<std::pair<std::string, cv::Mat>> pictures;  ///< By name, without an ending.
};

/// Has the observer keep the images of a run.
void keepImages(rooms::FlowObserver& observer, RunImages& images);

/// The rooms over their map.
cv::Mat paintRooms(const rooms::GridMap& map, const rooms::Rooms& rooms);

/// Writes all files of a run. `rooms.json` is the last one: where it is, the others are.
void writeResults(const rooms::GridMap& map, const rooms::Rooms& rooms, const RunImages& images,
                  rooms::FileOutput& output);

}  // namespace vorund::app
