#include "vorund/rooms/find_rooms.h"

#include <utility>
#include <vector>

#include "blocks/find_regions.h"
#include "doorways/find_doorways.h"
#include "flow/cuts.h"
#include "flow/islands.h"
#include "flow/merging.h"
#include "flow/pictures.h"
#include "flow/records.h"
#include "flow/regions.h"
#include "flow/separators.h"
#include "maps/working_map.h"
#include "passages/detail.h"
#include "passages/merge_open_passages.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

void begin(const FlowObserver& observer, const char* step) {
    if (observer.progress && !observer.progress(step, 0, 1)) {
        throw Cancelled(std::string("findRooms: cancelled at step ") + step + ".");
    }
}

void tell(const FlowObserver& observer, const std::string& step, const Regions& regions) {
    if (observer.intermediate) observer.intermediate(step, wholeRoomGraph(regions));
}

cv::Mat asIntegers(const cv::Mat& labels) {
    if (labels.type() == CV_32SC1) return labels;
    cv::Mat integers;
    labels.convertTo(integers, CV_32S);
    return integers;
}

bool mergesByPassages(const Settings& settings) {
    return settings.rooms.merging == kMergeByPassages;
}

/// What the building leaves free, and where its walls have gaps.
struct Space {
    cv::Mat floor;  ///< `CV_8UC1`: 255 = floor, 0 = wall.
    std::vector<FoundDoorway> doorways;

    Space(const WorkingMap& map, const Settings& settings) {
        if (!mergesByPassages(settings)) return;
        floor = map.floor();
        if (settings.rooms.doorways) doorways = findDoorways(floor, settings.rooms);
    }
};

void mergeByPasses(Regions& regions, const Settings& settings, const FlowObserver& observer) {
    begin(observer, kStepMergeNodes);
    mergeBySizeAndBorderLength(regions.table, settings.core, [&](const std::string& pass) {
        tell(observer, pass, regions);
        if (pass == kStepMergeNodes) begin(observer, kStepMergeEdges);
    });
}

void mergeByPassages(Regions& regions, const Space& space, const RoomsConfig& config,
                     const FlowObserver& observer) {
    begin(observer, kStepMergePassages);
    mergeOpenPassages(regions, space.floor, space.doorways, config);
    tell(observer, kStepMergePassages, regions);
}

/// From regions to merged rooms.
std::vector<RemovedIsland> mergeRooms(Regions& regions, const Space& space,
                                      const Settings& settings, const FlowObserver& observer) {
    begin(observer, kStepIslands);
    const bool by_passages = mergesByPassages(settings);
    const RoomsConfig config = atDetail(settings.rooms);
    // A room that stands alone on a large map is a room, too.
    std::vector<RemovedIsland> islands =
        by_passages ? removeIslands(regions, config.least_area, 0.0, true)
                    : removeIslands(regions, settings.core.merge_nodes_in_place.area_threshold);
    tell(observer, kStepIslands, regions);
    if (by_passages) {
        mergeByPassages(regions, space, config, observer);
    } else {
        mergeByPasses(regions, settings, observer);
    }
    return islands;
}

Cuts cutAndDraw(Regions& regions, const FlowObserver& observer) {
    begin(observer, kStepCuts);
    writeTable(regions);
    const RoomGraph rooms{regions.labels, regions.borders, regions.table.border_ids,
                          regions.table.graph};
    Cuts cuts = findCuts(rooms);
    if (!observer.picture) return cuts;
    const FlowPictures pictures = drawPictures(rooms, cuts);
    observer.picture("borders", pictures.borders);
    observer.picture("graph", pictures.graph);
    observer.picture("cuts", pictures.cuts);
    return cuts;
}

}  // namespace

Rooms findRooms(const GridMap& map, const Settings& settings, std::shared_ptr<Debugger> debugger,
                const FlowObserver& observer) {
    const WorkingMap working(map, settings);
    const Segmented segmented = findRegions(working, settings, debugger, observer.progress);
    const Resampling& resampling = working.resampling();
    if (observer.segmented) {
        observer.segmented(resampling.labelsToMap(segmented.labels, working.ownValues()));
    }

    begin(observer, kStepSeparate);
    cv::Mat labels = asIntegers(segmented.labels);
    const Space space(working, settings);
    splitAtDoorways(labels, space.floor, space.doorways);
    Regions regions = separate(labels);
    tell(observer, kStepSeparate, regions);
    const std::vector<RemovedIsland> islands = mergeRooms(regions, space, settings, observer);
    const Cuts cuts = cutAndDraw(regions, observer);

    Rooms result;
    result.resolution = map.resolution;
    result.origin = map.origin;
    result.settings = settings;
    result.blocks = segmented.blocks;
    result.unreached = resampling.maskToMap(labels == kLine, working.ownValues());
    result.unreached_pixels = cv::countNonZero(result.unreached);
    rename(labels, successorsOf(regions));
    const std::vector<LinkingDoorway> doorways =
        linkingDoorways(labels, space.floor, space.doorways, settings.rooms);
    if (settings.rooms.straight_borders) straightenBorders(labels, cuts);
    const bool same_pixels = resampling.isIdentity();
    fillRecords({same_pixels ? labels : resampling.labelsToMap(labels, working.ownValues()),
                 regions.table.graph, cuts, doorways, islands,
                 same_pixels ? 1.0 : kWorkingResolution / map.resolution},
                result);
    return result;
}

}  // namespace vorund::rooms
