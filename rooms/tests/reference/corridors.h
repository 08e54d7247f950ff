#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// Plain versions of finding corridors and the gaps in their walls. Independent of the libraries.
namespace vorund::reference {

struct PlainCorridor {
    int begin;                ///< Its first column.
    std::vector<int> firsts;  ///< By column: the first row of its floor.
    std::vector<int> lasts;   ///< By column: the last one.
};

struct PlainCorridorGap {
    cv::Point left;   ///< Wall.
    cv::Point right;  ///< Wall.
    int wall;         ///< Columns of wall within 3 m of both ends.
    int outward;      ///< -1 up, 1 down.
};

/// Those along the rows, longest first.
/// @param floor  `CV_8UC1`: 0 = wall.
std::vector<PlainCorridor> corridorsAlongRows(const cv::Mat& floor);

/// Upper wall first, from left to right.
std::vector<PlainCorridorGap> gapsInWalls(const PlainCorridor& corridor, const cv::Mat& floor);

bool isInCorridor(const PlainCorridor& corridor, const cv::Point& pixel);

}  // namespace vorund::reference
