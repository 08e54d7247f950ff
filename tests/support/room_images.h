#pragma once

#include <opencv2/core.hpp>

#include "support/random_images.h"

namespace vorund::test {

/// A `CV_8UC1` label image as the segmentation gives it: rooms of any shape with labels 1 to 254 in
/// no order, lines of 255 between them, some of them two pixels thick, and walls of 0. Rooms touch
/// each other nowhere.
/// @param count  At most 254; rooms may come out in several pieces or not at all.
cv::Mat roomImage(RandomImages& random, const cv::Size& size, int count);

}  // namespace vorund::test
