#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <vector>

#include "reference/cuts.h"
#include "reference/room_graph.h"
#include "vorund/rooms/room_settings.h"

/// The plain whole, from a map to its rooms: the plain pipeline and the plain steps after it.
namespace vorund::reference {

struct PlainRooms {
    cv::Mat segmented;  ///< `CV_8UC1`: the label image of the pipeline.
    MergeState merged;  ///< After islands and merging, with the regions' labels.
    std::vector<PlainIsland> islands;
    PlainCuts cuts;
    std::map<int, int> numbers;  ///< A region's label -> 1, 2, ... in reading order; 0 -> 0.
    cv::Mat labels;              ///< `CV_32SC1`: the rooms by those numbers.
};

/// The label image of the pipeline. Where floor lies at the edge a rim of wall is put around the
/// map for the run.
/// @param map  `CV_32FC1` at the working resolution, 0 to 1, walls high.
/// @throws std::runtime_error  if there is no room.
cv::Mat segmentInRim(const cv::Mat& map, const Config& config);

/// What is segmented of a map: without clutter, if the settings say so.
cv::Mat cleanedMap(const cv::Mat& map, const rooms::Settings& settings);

/// @throws std::runtime_error  likewise.
PlainRooms findRooms(const cv::Mat& map, const rooms::Settings& settings);

}  // namespace vorund::reference
