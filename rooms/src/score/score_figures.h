#pragma once

#include "score/score_overlaps.h"
#include "vorund/rooms/score.h"

/// The figures that follow from overlaps alone.
namespace vorund::rooms {

/// From this share of a true room on a predicted one is a piece of it.
inline constexpr double kPieceShare = 0.15;
/// From this share on the true room lies in the predicted one.
inline constexpr double kMergedShare = 0.5;

/// Of a true room and a predicted one.
double intersectionOverUnion(const Overlap& pair, const Overlaps& overlaps);

/// 0 if the whole is 0.
double ratio(double part, double whole);

/// Sets `recall`, `precision` and the same weighted with areas.
void addShares(const Overlaps& overlaps, Score& score);

/// Sets all from `n_gt` to `merged_gt`.
/// @param all_pixels  How many pixels are counted.
void addFigures(const Overlaps& overlaps, double all_pixels, Score& score);

}  // namespace vorund::rooms
