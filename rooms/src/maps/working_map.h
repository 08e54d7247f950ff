#pragma once

#include <opencv2/core.hpp>

#include "vorund/floorplan_segmenter.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/rooms/resampling.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// The core's 8-bit labels do not hold the map in one piece.
class TooManyRooms : public MapError {
 public:
    using MapError::MapError;
};

/// @param labels  Of regions, 0 = none, 255 = unreached.
/// @throws MapError  if there is no region. Walls may vanish in the cleaning, for example, and then
///                   no seed ever starts.
void requireRooms(const cv::Mat& labels);

/// A robot's map as the core works on it.
class WorkingMap {
 public:
    /// @throws MapError, std::invalid_argument  as `segmentMap`.
    explicit WorkingMap(const GridMap& map);

    /// The same without what stands free in its rooms, if the settings say so.
    WorkingMap(const GridMap& map, const Settings& settings);

    /// `doSegmentExact` on the map, in a rim of wall where it needs one.
    /// @return `CV_8UC1` of the working size.
    /// @throws MapError, Cancelled  as `segmentMap`; TooManyRooms for more than 8 bits hold.
    cv::Mat segment(FloorplanSegmenter& segmenter, const StageObserver& observer) const;

    /// What the core is to work on.
    struct Framed {
        cv::Mat values;  ///< `CV_32FC1`, in a rim of wall where the map needs one.
        cv::Rect own;    ///< Where the map's own pixels lie in it.
    };
    Framed framed() const;

    /// Whether nothing but floor is there: one room, without a wall to find it by.
    bool isAllFloor() const { return all_floor_; }

    const Resampling& resampling() const { return resampling_; }

    /// At the working resolution, `CV_8UC1`: 255 = floor, 0 = wall.
    cv::Mat floor() const;

    /// The map's own pixels, without what was taken out of the rooms: `CV_32FC1`.
    const cv::Mat& ownValues() const { return own_values_; }

 private:
    /// What there is among a map's values.
    struct Found {
        bool other_than_wall;   ///< A value that is not 1.
        bool other_than_floor;  ///< A value that is not 0.
        bool unusable;          ///< A value that is not from 0 to 1.
    };
    static Found findIn(const cv::Mat& values);
    static Found findUsable(const cv::Mat& values);

    WorkingMap(const GridMap& map, const Found& found);

    Resampling resampling_;
    cv::Mat own_values_;
    cv::Mat values_;  ///< At the working resolution.
    bool all_floor_;
    bool needs_rim_;
    double wall_threshold_ = static_cast<double>(kWallThreshold);
};

}  // namespace vorund::rooms
