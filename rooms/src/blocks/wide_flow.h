#pragma once

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>

#include "blocks/segment_in_blocks.h"
#include "flow/cuts.h"
#include "maps/working_map.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

/// Maps with more pixels are divided even if one piece would hold their regions. The core takes
/// some 250 bytes for a pixel: 4 GiB for these, and one that has 8 GiB shares them with others.
inline constexpr std::int64_t kMostPixelsInOnePiece = 16'000'000;

/// Whether a map is divided from the start, without trying one piece.
bool isDivided(const Settings& settings, const cv::Size& working_size);

/// The regions of a map: in one piece where that holds them, else in blocks.
/// @throws MapError, Cancelled  as `findRooms`.
Regions findRegions(const WorkingMap& map, const Settings& settings,
                    const std::shared_ptr<Debugger>& debugger, const StageObserver& observer);

/// The pictures that `findRooms` gives; labels and ids that 8 bits do not hold share colours.
struct WidePictures {
    cv::Mat borders;
    cv::Mat graph;
    cv::Mat cuts;
};
WidePictures drawWide(const RoomGraph& rooms, const Cuts& cuts);

}  // namespace vorund::rooms
