#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// The pixels of a straight line, each a step up, down, left or right from the last, so that they
/// part the floor even for 8-connected ways around.
std::vector<cv::Point> linePixels(const cv::Point& from, const cv::Point& to);

}  // namespace vorund::rooms
