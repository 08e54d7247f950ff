#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace vorund::rooms {

/// An image as it stands in its file.
struct ImageFile {
    cv::Mat pixels;        ///< `CV_8U` or `CV_16U`, 1, 3 (blue, green, red) or 4 (alpha) channels.
    int full_range = 255;  ///< The value of white.
};

/// @throws MapError  "PATH: cause" if the file cannot be read or is empty.
std::vector<std::uint8_t> readBytes(const std::string& path);

/// Reads a whole image; one that was cut off is an error, even where the decoder would fill it up.
/// @throws MapError  "PATH: cause"
ImageFile readImageFile(const std::string& path);

}  // namespace vorund::rooms
