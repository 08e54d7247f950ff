#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "reference/doorways.h"
#include "reference/merge_processor.h"
#include "vorund/rooms/room_settings.h"

/// Plain versions of merging by how open passages are. Independent of the libraries.
namespace vorund::reference {

/// To the nearest wall, squared; what lies outside the image is wall. `CV_32SC1` [pixels^2]
/// @param floor  `CV_8UC1`: 0 = wall.
cv::Mat squaredDistances(const cv::Mat& floor);

/// Looks at all pixels for the next two rooms to merge, every time anew.
/// @param floor     `CV_8UC1`: 0 = wall.
/// @param doorways  Shut; but small rooms leave through them.
void mergeOpenPassages(MergeState& rooms, const cv::Mat& floor,
                       const std::vector<PlainDoorway>& doorways, const rooms::RoomsConfig& config);

}  // namespace vorund::reference
