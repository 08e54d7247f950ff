#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "reference/merge_processor.h"

/// Plain versions of the steps from a label image to its rooms, on the plain merging. Independent
/// of the libraries.
namespace vorund::reference {

/// Value of lines between rooms, and of floor that no room reached.
constexpr int kLine = 255;

/// `CV_8UC1`, 255 on the pixels that touch a room of a smaller label.
/// @param labels  `CV_32SC1`, 0 = no room.
cv::Mat linesBetween(const cv::Mat& labels);

/// The label image of the pipeline with those lines drawn into it.
/// @param segmented  `CV_8UC1` or `CV_32SC1`, 255 = unreached.
cv::Mat separated(const cv::Mat& segmented);

/// As `mergeState` with labels and ids of any size, in two passes over the image instead of a
/// search for every question, so that large maps can be asked for.
MergeState roomGraph(const cv::Mat& separated);

struct PlainIsland {
    double area;
    cv::Point position;
};

/// Removes the parts of the graph that are smaller than that, or than a part of all rooms.
std::vector<PlainIsland> removeIslands(MergeState& rooms, double area_threshold,
                                       double part_of_map = 0.01, bool keep_one = false);

/// The rooms without lines, `CV_32SC1`: every pixel goes to the room that its own has become.
/// @param segmented  Of the pipeline, `CV_8UC1` or `CV_32SC1`.
/// @param merged     `CV_32SC1`, the same after islands and merging.
cv::Mat withLinePixels(const cv::Mat& segmented, const cv::Mat& merged);

}  // namespace vorund::reference
