// The files of a plan, piece by piece. Private to the plan generator.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "plan_generator.h"

namespace vorund::test {

/// @throws std::invalid_argument  "WHO: "NAME" is no file name." if it is empty or has a '/'.
void checkFileName(const std::string& who, const std::string& name);

/// Under a temporary name first, then renamed.
/// @throws std::runtime_error  "WHO: Cannot write PATH: CAUSE."
void writeFile(const std::string& who, const std::string& path, const std::string& bytes);

/// @throws std::runtime_error  naming `path` if the image library fails.
std::string pngOf(const std::string& who, const cv::Mat& image, const std::string& path);

/// Of the plan, only the map's size, the resolution and, for doorsOf, the doors are looked at.
std::string yamlOf(const Plan& plan, const std::string& image);
std::string doorsOf(const Plan& plan);

}  // namespace vorund::test
