#pragma once

#include <opencv2/core.hpp>

#include "vorund/export.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {

/// Runs `doSegment` on a robot's map of any resolution and gives the labels on the map's own
/// pixels.
///
/// The map is brought to 0.05 m per pixel for the run (see resampling.h). Where floor reaches the
/// edge of the image a rim of wall is put around it for the run, since the flooding never enters
/// the outermost pixels; a `raw` map gets none.
///
/// @return `CV_8UC1` of the map's size: 0 = background, 1 to 254 = rooms, 255 = floor that no room
///         reached. A map that is all floor (every value 0) is one room, without a run.
/// @throws MapError   if the resolution is not positive and finite; if the map is smaller than
///                    1 m^2, or so large at 0.05 m per pixel that it cannot be worked on; if it
///                    has no floor ("no free floor found"); if it has more rooms than 8-bit
///                    labels tell apart ("too many rooms:"); if no room is found ("no room found:"
///                    and the cause).
/// @throws Cancelled  when the observer returns false.
/// @throws std::invalid_argument  if the values are not `CV_32FC1` from 0 to 1.
/// @throws std::runtime_error  for whatever else a stage rejects.
VORUND_EXPORT cv::Mat segmentMap(const GridMap& map, FloorplanSegmenter& segmenter,
                                 const StageObserver& observer = {});

}  // namespace vorund::rooms
