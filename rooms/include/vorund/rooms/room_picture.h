#pragma once

#include <opencv2/core.hpp>

#include "vorund/export.h"

namespace vorund::rooms {

/// The rooms over the map: each in a light colour, its number where it has most space around it, as
/// large as fits and left out where it would not be readable. Rooms that lie within half a metre
/// of each other at 0.05 m per pixel (10 pixels, diagonal ones counting as one) differ in colour,
/// save where a room has more such neighbours than there are colours. Walls and the unknown stay as
/// the map paints them; the map's own shade darkens the colours, so that what stands in a room
/// shows.
/// @param picture  `CV_8UC1`: the map as it is painted, floor light.
/// @param labels   `CV_8UC1` or `CV_32SC1` of the same size: 0 = no room, `unreached` = floor that
///                 no room reached (hatched), other values = rooms.
/// @return `CV_8UC3` (blue, green, red) of the same size.
/// @throws std::invalid_argument  if sizes or types do not fit.
VORUND_EXPORT cv::Mat drawRooms(const cv::Mat& picture, const cv::Mat& labels, int unreached = 255);

}  // namespace vorund::rooms
