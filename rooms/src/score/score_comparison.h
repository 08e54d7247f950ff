#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "score/score_overlaps.h"
#include "vorund/rooms/score.h"

namespace vorund::rooms {

/// What is compared, checked and brought to one form.
struct Comparison {
    NumberedRooms rooms;  ///< The true ones.
    NumberedRooms segments;
    cv::Mat free;       ///< `CV_8UC1`: 255 where the map is free.
    cv::Mat counted;    ///< `CV_8UC1`: 255 where a true room is free; not empty of pixels.
    Overlaps overlaps;  ///< On counted pixels, of the rooms that count.
};

/// Parameters and errors as for `scoreRooms`.
Comparison compareRooms(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map,
                        std::optional<int> unreached);

}  // namespace vorund::rooms
