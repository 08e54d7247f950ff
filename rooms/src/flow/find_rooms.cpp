#include "vorund/rooms/find_rooms.h"

#include <utility>
#include <vector>

#include "blocks/wide_cuts.h"
#include "blocks/wide_flow.h"
#include "blocks/wide_graph.h"
#include "blocks/wide_lines.h"
#include "blocks/wide_merging.h"
#include "flow/cuts.h"
#include "flow/islands.h"
#include "flow/line_pixels.h"
#include "flow/merging.h"
#include "flow/records.h"
#include "flow/separators.h"
#include "maps/working_map.h"
#include "vorund/graph_processor.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

constexpr std::size_t kMostBorders = 255;  // Ids that the core's 8-bit borders map holds.

void begin(const FlowObserver& observer, const char* step) {
    if (observer.progress && !observer.progress(step, 0, 1)) {
        throw Cancelled(std::string("findRooms: cancelled at step ") + step + ".");
    }
}

void tell(const FlowObserver& observer, const std::string& step, const RoomGraph& rooms) {
    if (observer.intermediate) observer.intermediate(step, rooms);
}

void give(const FlowObserver& observer, const char* name, const cv::Mat& picture) {
    if (observer.picture) observer.picture(name, picture);
}

RoomGraph findRoomGraph(const cv::Mat& segmented) {
    const cv::Mat separated = drawSeparators(segmented);
    auto found = GraphProcessor::findGraphRepresentation(separated, kLine);
    RoomGraph rooms{{}, {}, std::move(found.border_ids), std::move(found.graph)};
    separated.convertTo(rooms.labels, CV_32S);
    found.borders_map.convertTo(rooms.borders, CV_32S);
    return rooms;
}

void drawPictures(const FlowObserver& observer, const RoomGraph& rooms, const cv::Mat& cuts) {
    if (!observer.picture) return;
    cv::Mat borders;
    rooms.borders.convertTo(borders, CV_8U);
    give(observer, "borders", GraphProcessor::visualizeBorders(borders, rooms.labels));
    give(observer, "graph",
         GraphProcessor::visualizeGraph(rooms.graph, rooms.labels.size(), rooms.labels));
    give(observer, "cuts", cuts);
}

/// What the flow has made of the regions, at the working resolution.
struct Outcome {
    RoomGraph rooms;
    std::vector<RemovedIsland> islands;
    Cuts cuts;
    cv::Mat labels;
};

/// From the graph of the regions to merged rooms.
void mergeRooms(const Settings& settings, const FlowObserver& observer, const Merging& merge,
                Outcome& outcome) {
    RoomGraph& rooms = outcome.rooms;
    tell(observer, kStepSeparate, rooms);

    begin(observer, kStepIslands);
    outcome.islands = removeIslands(rooms, settings.core.merge_nodes_in_place.area_threshold);
    tell(observer, kStepIslands, rooms);

    begin(observer, kStepMergeNodes);
    merge(rooms, settings.core, [&](const std::string& pass) {
        tell(observer, pass, rooms);
        if (pass == kStepMergeNodes) begin(observer, kStepMergeEdges);
    });

    begin(observer, kStepCuts);
}

/// With the core's functions for 8-bit images.
Outcome takeSteps(const cv::Mat& segmented, RoomGraph graph, const Settings& settings,
                  const FlowObserver& observer) {
    Outcome outcome{std::move(graph), {}, {}, {}};
    mergeRooms(settings, observer, mergeBySizeAndBorderLength, outcome);
    cv::Mat picture;
    outcome.cuts = findCuts(outcome.rooms, observer.picture ? &picture : nullptr);
    drawPictures(observer, outcome.rooms, picture);
    outcome.labels = assignLinePixels(segmented, outcome.rooms.labels);
    if (settings.rooms.straight_borders) straightenBorders(outcome.labels, outcome.cuts);
    return outcome;
}

/// With those for more regions or borders than 8 bits hold.
Outcome takeWideSteps(const cv::Mat& regions, const Settings& settings,
                      const FlowObserver& observer) {
    Outcome outcome{findWideGraph(drawWideSeparators(regions)), {}, {}, {}};
    mergeRooms(settings, observer, mergeWide, outcome);
    outcome.cuts = findWideCuts(outcome.rooms);
    if (observer.picture) {
        const WidePictures pictures = drawWide(outcome.rooms, outcome.cuts);
        give(observer, "borders", pictures.borders);
        give(observer, "graph", pictures.graph);
        give(observer, "cuts", pictures.cuts);
    }
    outcome.labels =
        assignWideLinePixels(regions, drawWideSeparators(regions), outcome.rooms.labels);
    if (settings.rooms.straight_borders) straightenWideBorders(outcome.labels, outcome.cuts);
    return outcome;
}

Outcome takeStepsAfterRegions(const cv::Mat& regions, const Settings& settings,
                              const FlowObserver& observer) {
    begin(observer, kStepSeparate);
    if (regions.type() == CV_8UC1) {
        RoomGraph graph = findRoomGraph(regions);
        if (graph.border_ids.size() <= kMostBorders) {
            return takeSteps(regions, std::move(graph), settings, observer);
        }
    }
    cv::Mat wide;
    regions.convertTo(wide, CV_32S);
    return takeWideSteps(wide, settings, observer);
}

}  // namespace

Rooms findRooms(const GridMap& map, const Settings& settings, std::shared_ptr<Debugger> debugger,
                const FlowObserver& observer) {
    const WorkingMap working(map);
    const Regions regions = findRegions(working, settings, debugger, observer.progress);
    const Resampling& resampling = working.resampling();
    if (observer.segmented) observer.segmented(resampling.labelsToMap(regions.labels, map.values));
    const Outcome outcome = takeStepsAfterRegions(regions.labels, settings, observer);

    Rooms result;
    result.resolution = map.resolution;
    result.origin = map.origin;
    result.settings = settings;
    result.blocks = regions.blocks;
    result.unreached = resampling.maskToMap(regions.labels == kLine, map.values);
    result.unreached_pixels = cv::countNonZero(result.unreached);
    fillRecords(
        {resampling.labelsToMap(outcome.labels, map.values), outcome.rooms.graph, outcome.cuts,
         outcome.islands, resampling.isIdentity() ? 1.0 : kWorkingResolution / map.resolution},
        result);
    result.lines = linesBetween(result.labels);
    return result;
}

}  // namespace vorund::rooms
