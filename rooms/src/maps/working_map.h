#pragma once

#include <opencv2/core.hpp>

#include "vorund/floorplan_segmenter.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/resampling.h"

namespace vorund::rooms {

/// A robot's map as the core works on it.
class WorkingMap {
 public:
    /// @throws MapError, std::invalid_argument  as `segmentMap`.
    explicit WorkingMap(const GridMap& map);

    /// `doSegmentExact` on the map, in a rim of wall where it needs one.
    /// @return `CV_8UC1` of the working size.
    /// @throws MapError, Cancelled  as `segmentMap`; MapError too for more rooms than 8 bits hold.
    cv::Mat segment(FloorplanSegmenter& segmenter, const StageObserver& observer) const;

    const Resampling& resampling() const { return resampling_; }

 private:
    Resampling resampling_;
    cv::Mat values_;
    bool all_floor_;
    bool needs_rim_;
};

}  // namespace vorund::rooms
