#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::rooms {

/// A piece of floor in a row between two walls. [pixels]
struct WallGap {
    int row;
    int begin;
    int end;         ///< One past its last pixel.
    int wall_left;   ///< Pixels of wall seen edge on within 3 m of its left end, along the row.
    int wall_right;  ///< The same of its right end.

    int width() const { return end - begin; }
    int wall() const { return wall_left + wall_right; }
};

/// What a gap in a wall has to be.
struct GapLimits {
    int widest;  ///< [pixels]
    int jamb;    ///< Wall that goes on from one of its ends at least, seen edge on. [pixels]
};

/// The gaps in walls that run along the rows: from 0.5 m wide, with much wider floor within 0.5 m on
/// both sides of the wall, wall that goes on from an end as a thin line between two floors (a jamb),
/// and in total half as much wall in line with the gap as the gap is wide. Of gaps in adjacent rows,
/// which is one gap in a thick wall, the narrowest in the middle is given.
/// @param floor  `CV_8UC1`: 255 = floor, 0 = wall.
/// @return By row and column.
std::vector<WallGap> gapsInRows(const cv::Mat& floor, const GapLimits& limits);

}  // namespace vorund::rooms
