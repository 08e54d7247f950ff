#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "vorund/export.h"
#include "vorund/rooms/score.h"

/// Why a score is what it is: what became of each true room. Pixels count as for `scoreRooms`.
namespace vorund::rooms {

/// What became of a true room. True rooms are numbered as in `Truth::rooms`: a drawing's in raster
/// order, others by ascending label. Predicted ones go by their labels; a colour is the label
/// (red * 65536 + green) * 65536 + blue.
struct RoomFate {
    std::int64_t room = 0;  ///< Number of the true room.
    double iou = 0.0;       ///< With its best partner, 0 if it has none.

    /// The predicted rooms that cover 15 % of it each, the largest part first, if there are two or
    /// more.
    std::vector<std::int64_t> split;
    /// The predicted room that covers half of it and half of other true rooms; and those others,
    /// by number. Nothing and none if there is no such room.
    std::optional<std::int64_t> joined;
    std::vector<std::int64_t> joined_with;

    /// No predicted room has an IoU above 0.5 with it, for neither of the two reasons above: it is
    /// small and lies in a large room, or little of it is in any.
    bool isMissed() const { return !isFound() && split.empty() && !joined; }
    /// As for `Score::f1_50`.
    bool isFound() const { return iou > 0.5; }
    bool isRight() const { return isFound() && split.empty() && !joined; }
};

/// One entry for each true room with counted pixels, by number.
/// @throws std::invalid_argument  as `scoreRooms`.
VORUND_EXPORT std::vector<RoomFate> fatesOfRooms(const cv::Mat& predicted, const Truth& truth,
                                                 const cv::Mat& map = {},
                                                 std::optional<int> unreached = {});

/// A picture of them for people: the map in light grey, the true rooms with their outlines. Right
/// rooms are in muted colours; joined ones are in yellow, split ones in blue, missed ones in red,
/// each with its number and with the outlines of the predicted rooms within. A room that is both
/// joined and split is in yellow. A legend below tells the colours and how many rooms have each.
/// @return `CV_8UC3` (blue, green, red), at least as large as the truth.
/// @throws std::invalid_argument  as `scoreRooms`.
VORUND_EXPORT cv::Mat drawFates(const cv::Mat& predicted, const Truth& truth,
                                const cv::Mat& map = {}, std::optional<int> unreached = {});

}  // namespace vorund::rooms
