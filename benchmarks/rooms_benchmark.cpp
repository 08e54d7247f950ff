// From the label image to the rooms: graph, merging, cuts, records; and the whole flow.

#include <memory>
#include <stdexcept>
#include <vector>

#include "flow/cuts.h"
#include "flow/islands.h"
#include "flow/line_pixels.h"
#include "flow/merging.h"
#include "flow/records.h"
#include "flow/separators.h"
#include "reference/find_rooms.h"
#include "stage.h"
#include "vorund/graph_processor.h"

namespace vorund::bench {
namespace {

constexpr int kMostOf8Bits = 1000;  // Side of a map of at most 254 rooms.

using reference::MergeState;
using rooms::RoomGraph;

Work graph(int side, Kind kind) {
    const cv::Mat labels = enlarged(tileOf(side, kind).segmented, side);
    return {[=] {
                const cv::Mat separated = rooms::drawSeparators(labels);
                const auto found = GraphProcessor::findGraphRepresentation(separated, rooms::kLine);
                RoomGraph result;
                separated.convertTo(result.labels, CV_32S);
                found.borders_map.convertTo(result.borders, CV_32S);
            },
            {}};
}

Work graphPlainly(int side, Kind kind) {
    const cv::Mat labels = enlarged(tileOf(side, kind).segmented, side);
    return {[=] { reference::roomGraph(reference::separated(labels)); }, {}};
}

Work merging(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const RoomGraph found = enlarged(tileOf(side, kind).found, side);
    const auto rooms = std::make_shared<RoomGraph>();
    return {[=] {
                rooms::removeIslands(*rooms, config.merge_nodes_in_place.area_threshold);
                rooms::mergeBySizeAndBorderLength(*rooms, config, [](const std::string&) {});
            },
            [=] { *rooms = copyOf(found); }};
}

MergeState stateOf(const RoomGraph& rooms) {
    return {reference::regionGraph(rooms.graph), rooms.labels, rooms.borders, rooms.border_ids};
}

Work mergingPlainly(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const RoomGraph found = enlarged(tileOf(side, kind).found, side);
    const auto rooms = std::make_shared<MergeState>();
    return {[=] {
                reference::removeIslands(*rooms, config.merge_nodes_in_place.area_threshold);
                reference::mergeSmallRooms(*rooms, config.merge_nodes_in_place.area_threshold);
                reference::mergeAcrossLongBorders(*rooms,
                                                  config.merge_edges_in_place.length_threshold);
            },
            [=] { *rooms = stateOf(copyOf(found)); }};
}

/// With the labels of one tile in all of them: cuts are found in 8-bit images.
RoomGraph mergedRooms(int side, Kind kind) {
    const RoomGraph& tile = tileOf(side, kind).merged;
    return {enlarged(tile.labels, side), enlarged(tile.borders, side), tile.border_ids, tile.graph};
}

Work cuts(int side, Kind kind) {
    const RoomGraph merged = mergedRooms(side, kind);
    return {[=] { rooms::findCuts(merged, nullptr); }, {}};
}

Work cutsPlainly(int side, Kind kind) {
    const MergeState merged = stateOf(mergedRooms(side, kind));
    return {[=] { reference::cutsOf(merged); }, {}};
}

Work records(int side, Kind kind) {
    const Tile& tile = tileOf(side, kind);
    const cv::Mat segmented = enlarged(tile.segmented, side);
    const RoomGraph merged = mergedRooms(side, kind);
    const rooms::Cuts found_cuts = rooms::findCuts(tile.merged, nullptr);
    const std::vector<rooms::RemovedIsland> islands = tile.islands;
    return {[=] {
                rooms::Rooms result;
                rooms::fillRecords({rooms::assignLinePixels(segmented, merged.labels), merged.graph,
                                    found_cuts, islands, 1.0},
                                   result);
                result.lines = rooms::linesBetween(result.labels);
            },
            {}};
}

Work whole(int side, Kind kind) {
    const rooms::GridMap map = mapOf(side);
    const rooms::Settings settings = settingsOf(kind);
    return {[=] { rooms::findRooms(map, settings, Debugger::create({})); }, {}};
}

Work wholePlainly(int side, Kind kind) {
    if (side > kMostOf8Bits) throw std::runtime_error("more rooms than the plain version holds");
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
