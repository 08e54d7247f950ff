#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace vorund::internal {

/// Shows the image in the window of that name. Gives the reason why nothing is shown; empty if it
/// is. Of two sources the build takes one: with the system's windows, or without any.
std::string showInWindow(const std::string& window_name, const cv::Mat& image);

}  // namespace vorund::internal
