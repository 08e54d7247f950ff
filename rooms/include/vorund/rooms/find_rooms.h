#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>

#include "vorund/debugger.h"
#include "vorund/export.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/graph.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/rooms.h"

namespace vorund::rooms {

/// Rooms between two steps of the flow, at the working resolution and with the core's own labels.
struct RoomGraph {
    cv::Mat labels;   ///< `CV_32SC1`: 0 = no room, 255 = line or unreached, other values = rooms.
    cv::Mat borders;  ///< `CV_32SC1`: 0 = no border, else a border's id.
    BorderIds border_ids;
    Graph graph;
};

/// A map that is divided into blocks has this instead of the stages from `kStageRidges` on, but for
/// `kStageScales`: `done` blocks of `total`.
inline constexpr char kStageBlocks[] = "blocks";

/// The steps of `findRooms` after those of `doSegment`, in their order.
inline constexpr char kStepSeparate[] = "separate";
inline constexpr char kStepIslands[] = "islands";
inline constexpr char kStepMergeNodes[] = "merge-nodes";
inline constexpr char kStepMergeEdges[] = "merge-edges";
inline constexpr char kStepMergePassages[] = "merge-passages";
inline constexpr char kStepCuts[] = "cuts";

/// What a caller hears of a run. Both may be empty.
struct FlowObserver {
    /// Progress over all steps, those of `doSegment` first; false cancels.
    StageObserver progress;
    /// The label image of `doSegment`: `CV_8UC1`, on the map's own pixels. From blocks: `CV_32SC1`,
    /// 255 is still what no region reached and no region's label.
    std::function<void(const cv::Mat& labels)> segmented;
    /// The rooms after a step: separated (with the islands), without islands, after each merge
    /// pass. The images are views: clone what is to be kept.
    std::function<void(const std::string& step, const RoomGraph& rooms)> intermediate;
    /// Pictures of the last step for people, `CV_8UC3`, at the working resolution, by name:
    /// "borders", "graph", "cuts".
    std::function<void(const std::string& name, const cv::Mat& picture)> picture;
};

/// From a robot's map to its rooms: clutter taken out, `doSegment`, its regions parted at doorways,
/// the borders between them, islands removed, regions joined across passages that are no doorways, a
/// straight cut for every border left.
///
/// A map with more regions than the core's 8-bit labels hold, or with 4 million pixels or more at
/// the working resolution, is segmented in blocks that overlap (`Rooms::blocks` tells how many).
///
/// @throws MapError       as `segmentMap`, though not for a map with many rooms.
/// @throws Cancelled      when the observer asks to stop.
VORUND_EXPORT Rooms findRooms(const GridMap& map, const Settings& settings,
                              std::shared_ptr<Debugger> debugger,
                              const FlowObserver& observer = {});

}  // namespace vorund::rooms
