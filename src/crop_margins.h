#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>

#include "vorund/image_utils.h"

namespace vorund::internal {

/// Sizes and margins are added in 64 bits and brought back here: any margin may come from a file.
inline int toInt(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(),
                                                     std::numeric_limits<int>::max()));
}

/// What is cut off around content, less the padding, but never less than nothing.
inline CropInfo marginsAround(const cv::Rect& content, const cv::Size& size, int padding) {
    const auto margin = [padding](std::int64_t pixels) {
        return toInt(std::max<std::int64_t>(0, pixels - padding));
    };
    return {margin(content.x), margin(content.y), margin(size.width - content.br().x),
            margin(size.height - content.br().y)};
}

}  // namespace vorund::internal
