#pragma once

#include <opencv2/core.hpp>

#include "vorund/rooms/room_settings.h"

/// Plain versions of taking out what stands in rooms. Independent of the libraries.
namespace vorund::reference {

/// Pixel by pixel: a flood for each part, and every square tried for thickness.
/// @param values     `CV_32FC1` at the working resolution.
/// @param threshold  Values above it are wall.
cv::Mat withoutClutter(const cv::Mat& values, double threshold, const rooms::RoomsConfig& config);

}  // namespace vorund::reference
