#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "doorways/wall_gaps.h"

namespace vorund::rooms {

/// A corridor along the rows: floor between two walls, at least three times as long as wide.
struct Corridor {
    int begin;                    ///< Its first column.
    std::vector<cv::Range> rows;  ///< Its floor, by column.

    int length() const { return static_cast<int>(rows.size()); }
    int end() const { return begin + length(); }
    const cv::Range& at(int col) const { return rows[static_cast<std::size_t>(col - begin)]; }
    bool holds(const cv::Point& pixel) const {
        return pixel.x >= begin && pixel.x < end() && pixel.y >= at(pixel.x).start &&
               pixel.y < at(pixel.x).end;
    }
};

/// A gap in one of a corridor's walls, however wide.
struct CorridorGap {
    WallGap gap;    ///< `row` is that of the outer one of its jambs.
    int left_row;   ///< Of the pixel of wall at its left end.
    int right_row;  ///< Of that at its right end.
    int outward;    ///< 1 if the corridor lies above it, -1 below.

    cv::Point left() const { return {gap.begin - 1, left_row}; }
    cv::Point right() const { return {gap.end, right_row}; }
};

/// The corridors of 1 to 4 m that run along the rows. People see a corridor go on where a wall of
/// it is missing, as a lidar leaves out glass and open doors, or where a hall opens beside it. So
/// both walls are followed from column to column, and past columns without them as long as the way
/// ahead is open and no hall of more than 15 m comes in between; in the end each wall has to be
/// there along 40 % of the corridor.
/// @param floor    `CV_8UC1`: 255 = floor, 0 = wall.
/// @param columns  The floor flipped at its diagonal: its columns as rows.
/// @return The longest first; none that overlaps a longer one.
std::vector<Corridor> corridorsInRows(const cv::Mat& floor, const cv::Mat& columns);

/// The gaps of 0.5 m and more in a corridor's walls.
std::vector<CorridorGap> gapsBeside(const Corridor& corridor, const cv::Mat& floor);

}  // namespace vorund::rooms
