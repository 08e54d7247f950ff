#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace vorund::app {

/// Why no image can be shown; empty if one can. Of two sources the build takes one: with the
/// system's windows, or without any.
std::string whyNothingCanBeShown();

/// Shows the picture until a key is pressed, its window is closed, or the program is interrupted.
void showUntilKey(const cv::Mat& picture);

}  // namespace vorund::app
