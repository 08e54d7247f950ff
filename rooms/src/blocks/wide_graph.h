#pragma once

#include <opencv2/core.hpp>

#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

// The core finds borders and makes graphs from 8-bit images. Joined blocks have more regions and
// borders than those tell apart; the functions here and in the other files named wide_... do the
// same on 32-bit images, with time that grows with the pixels and not with pixels times rooms.
// On images that the core's functions take they give the same.

/// As `drawSeparators`.
/// @param regions  `CV_32SC1`: 0 = background, 255 = unreached, other values = regions.
cv::Mat drawWideSeparators(const cv::Mat& regions);

/// As `GraphProcessor::findGraphRepresentation` on the separated regions.
/// @param separated  As from `drawWideSeparators`; it becomes part of the result.
RoomGraph findWideGraph(const cv::Mat& separated);

}  // namespace vorund::rooms
