#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vorund/export.h"

/// How well predicted rooms agree with the true ones. All functions are stateless and leave their
/// inputs untouched.
///
/// The counted pixels are those that are free in the map and belong to a true room: furniture,
/// doors and what lies outside count on neither side. A predicted room counts if it has 100 of them
/// or more; the pixels of a smaller one are missing from their true room all the same. Areas and
/// overlaps are numbers of counted pixels. The best partner of a room is the one it shares most
/// pixels with; of several, the one with the smallest label. IoU is the overlap of two rooms
/// divided by the area of their union.
namespace vorund::rooms {

/// Grey from which on a pixel of a map is free floor. What is painted as free but smoothed at a
/// wall's edge lies below.
inline constexpr int kLeastFreeGrey = 250;

/// Rooms as people see them. Both images have the same size, 0 = no room.
struct Truth {
    cv::Mat rooms;      ///< The rooms that count.
    cv::Mat all_rooms;  ///< Those for the `_raw` figures, in which smaller and detached ones count.
};

/// The rooms of a floor plan in which thin dark lines are drawn where one room ends and the next
/// begins: the 8-connected areas of a grey above 250. They are numbered 1, 2, 3, ... in raster
/// order of their first pixels (`CV_32SC1`). Dropped are areas below 500 pixels, which are gaps in
/// walls and the like, and those of which not more than half lies in the largest 8-connected free
/// area of the map, such as what a laser saw through a window. `all_rooms` keeps all areas above
/// 100 pixels.
/// @param drawing        `CV_8UC1`.
/// @param map            `CV_8UC1` of the same size, without furniture; empty if there is none,
///                       no area is detached then.
/// @param keep_detached  Areas off the map's largest free area count too.
/// @throws std::invalid_argument  if types or sizes do not fit.
VORUND_EXPORT Truth truthFromDrawing(const cv::Mat& drawing, const cv::Mat& map,
                                     bool keep_detached = false);

/// Rooms given as labels: all of them count, whatever their size.
/// @param labels  Label image as for `scoreRooms`.
/// @throws std::invalid_argument  as `scoreRooms`.
VORUND_EXPORT Truth truthFromLabels(const cv::Mat& labels);

/// All figures but the counts are 0 to 1, and 1 is best, save that `unlabelled` is best at 0 and
/// that a correlation may be as low as -1.
struct Score {
    int n_gt = 0;    ///< True rooms with counted pixels.
    int n_pred = 0;  ///< Predicted rooms that count.

    /// Share of a true room that its best partner covers, the mean over the true rooms. A single
    /// predicted room over everything has 1.
    double recall = 0.0;
    /// Share of a predicted room that lies in its best partner, the mean over the predicted rooms.
    /// Rooms cut into small pieces have 1.
    double precision = 0.0;
    double recall_px = 0.0;     ///< The same weighted with the rooms' areas.
    double precision_px = 0.0;  ///< The same weighted with the rooms' areas.

    /// Matthews' correlation between a true room and its best partner over the counted pixels, the
    /// mean over the true rooms. Surplus predicted rooms cost nothing.
    double mcc = 0.0;
    /// The same of pairs that are taken greedily, the largest overlap first (of equal ones, that of
    /// the smaller true label, then of the smaller predicted one), each room used once. A room of
    /// either side that is left over counts as 0. The figure to compare methods by.
    double mcc_1to1 = 0.0;

    double iou_gt = 0.0;      ///< IoU with the best partner, the mean over the true rooms.
    double iou_seg = 0.0;     ///< IoU with the best partner, the mean over the predicted rooms.
    double iou_gt_px = 0.0;   ///< The same weighted with the rooms' areas.
    double iou_seg_px = 0.0;  ///< The same weighted with the rooms' areas.

    /// A true room is found if a predicted one has an IoU above 0.5 with it: harmonic mean of the
    /// share of true rooms that are found and their number divided by that of the predicted ones.
    double f1_50 = 0.0;
    double f1_75 = 0.0;  ///< The same with an IoU above 0.75.
    /// Panoptic quality: the IoUs above 0.5, summed, divided by the mean of `n_gt` and `n_pred`.
    double pq = 0.0;

    int over = 0;       ///< True rooms of which two predicted ones or more cover 15 % each.
    int under = 0;      ///< Predicted rooms that cover half of two true ones or more.
    int merged_gt = 0;  ///< True rooms half of which or more lies in such a predicted room.

    double unlabelled = 0.0;  ///< Share of the counted pixels in no predicted room of any size.
    double cover = 0.0;       ///< Share of the map's largest free area in a predicted room.

    /// As `recall` and so on, but over all pixels, free or not, against `Truth::all_rooms`, with
    /// the rooms above 100 pixels of both sides.
    double recall_raw = 0.0;
    double precision_raw = 0.0;
    double recall_px_raw = 0.0;
    double precision_px_raw = 0.0;
};

/// @param predicted  Label image: `CV_8UC1`, `CV_16UC1` or `CV_32SC1` without negative values,
///                   0 = no room; or 8 or 16 bits with 3 or 4 channels (blue, green, red, alpha),
///                   where every colour is a room, black is none and alpha is ignored. Colours
///                   are in order by red, then green, then blue. A room may have several pieces.
/// @param map        `CV_8UC1`, floor light; empty if there is none, every pixel is free then.
/// @param unreached  Another label of `predicted` that stands for no room, such as 255 in what
///                   `segmentMap` gives.
/// @throws std::invalid_argument  if types or sizes do not fit, or if there is no counted pixel.
VORUND_EXPORT Score scoreRooms(const cv::Mat& predicted, const Truth& truth,
                               const cv::Mat& map = {}, std::optional<int> unreached = {});

/// One figure of a score by the name of its member.
struct Figure {
    std::string name;
    double value = 0.0;
    bool is_count = false;  ///< A number of rooms.
};

/// All figures of a score, in the order in which they are declared.
VORUND_EXPORT std::vector<Figure> figuresOf(const Score& score);

}  // namespace vorund::rooms
