// From the label image to the rooms: graph, merging, cuts, records; and the whole flow.

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "flow/cuts.h"
#include "flow/islands.h"
#include "flow/merging.h"
#include "flow/records.h"
#include "flow/regions.h"
#include "reference/find_rooms.h"
#include "stage.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::bench {
namespace {

constexpr int kMostOf8Bits = 1000;  // Side of a map of at most 254 rooms.

using reference::MergeState;
using rooms::Regions;
using rooms::RemovedIsland;
using rooms::RoomGraph;

std::vector<RemovedIsland> merge(Regions& regions, const Config& config) {
    std::vector<RemovedIsland> islands =
        rooms::removeIslands(regions, config.merge_nodes_in_place.area_threshold);
    rooms::mergeBySizeAndBorderLength(regions.table, config, [](const std::string&) {});
    return islands;
}

/// A copy whose images are its own.
Regions copyOf(const Regions& regions) {
    Regions copy = regions;
    for (cv::Mat* image : {&copy.labels, &copy.borders, &copy.table.labels, &copy.table.borders}) {
        *image = image->clone();
    }
    return copy;
}

/// What the plain versions hold.
void requireFew(int side) {
    if (side > kMostOf8Bits) throw std::runtime_error("more rooms than the plain version holds");
}

Work graph(int side, Kind kind) {
    const cv::Mat labels = regionsOfMap(side, kind);
    return {[=] { rooms::separate(labels); }, {}};
}

Work graphPlainly(int side, Kind kind) {
    const cv::Mat labels = enlarged(tileOf(side, kind).segmented, side);
    return {[=] { reference::roomGraph(reference::separated(labels)); }, {}};
}

Work merging(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const Regions found = rooms::separate(regionsOfMap(side, kind));
    const auto regions = std::make_shared<Regions>();
    return {[=] {
                merge(*regions, config);
                rooms::writeTable(*regions);
            },
            [=] { *regions = copyOf(found); }};
}

MergeState stateOf(const RoomGraph& rooms) {
    return {reference::regionGraph(rooms.graph), rooms.labels.clone(), rooms.borders.clone(),
            rooms.border_ids};
}

Work mergingPlainly(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const RoomGraph found = rooms::wholeRoomGraph(rooms::separate(regionsOfMap(side, kind)));
    const auto rooms = std::make_shared<MergeState>();
    return {[=] {
                reference::removeIslands(*rooms, config.merge_nodes_in_place.area_threshold);
                reference::mergeSmallRooms(*rooms, config.merge_nodes_in_place.area_threshold);
                reference::mergeAcrossLongBorders(*rooms,
                                                  config.merge_edges_in_place.length_threshold);
            },
            [=] { *rooms = stateOf(found); }};
}

RoomGraph mergedRooms(int side, Kind kind) {
    Regions regions = rooms::separate(regionsOfMap(side, kind));
    merge(regions, settingsOf(kind).core);
    return rooms::wholeRoomGraph(regions);
}

Work cuts(int side, Kind kind) {
    const RoomGraph merged = mergedRooms(side, kind);
    return {[=] { rooms::findCuts(merged); }, {}};
}

Work cutsPlainly(int side, Kind kind) {
    requireFew(side);
    const MergeState merged = stateOf(mergedRooms(side, kind));
    return {[=] { reference::cutsOf(merged); }, {}};
}

/// From the merged rooms' table to all that is told of them.
Work records(int side, Kind kind) {
    const cv::Mat segmented = regionsOfMap(side, kind);
    Regions regions = rooms::separate(segmented);
    const std::vector<RemovedIsland> islands = merge(regions, settingsOf(kind).core);
    const rooms::Cuts found_cuts = rooms::findCuts(rooms::wholeRoomGraph(regions));
    const auto labels = std::make_shared<cv::Mat>();
    return {
        [=] {
            rooms::rename(*labels, rooms::successorsOf(regions));
            rooms::Rooms result;
            rooms::fillRecords({*labels, regions.table.graph, found_cuts, {}, islands, 1.0}, result);
        },
        [=] { *labels = segmented.clone(); }};
}

Work whole(int side, Kind kind) {
    const rooms::GridMap map = mapOf(side);
    const rooms::Settings settings = settingsOf(kind);
    return {[=] { rooms::findRooms(map, settings, Debugger::create({})); }, {}};
}

Work wholePlainly(int side, Kind kind) {
    requireFew(side);
    const rooms::GridMap map = mapOf(side);
    const rooms::Settings settings = settingsOf(kind);
    return {[=] { reference::findRooms(map.values, settings); }, {}};
}

}  // namespace

void addRoomStages() {
    addStage("graph", graph, graphPlainly);
    addStage("merging", merging, mergingPlainly);
    addStage("cuts", cuts, cutsPlainly);
    addStage("records", records, {});
}

void addWholeFlow() {
    addStage("whole", whole, wholePlainly);
}

}  // namespace vorund::bench
