#include "vorund/rooms/find_rooms.h"

#include <utility>

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
    if (found.border_ids.size() > kMostBorders) {
        throw MapError(
            "too many borders between rooms: " + std::to_string(found.border_ids.size()) +
            ", at most " + std::to_string(kMostBorders) + " can be told apart");
    }
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

}  // namespace

Rooms findRooms(const GridMap& map, const Settings& settings, std::shared_ptr<Debugger> debugger,
                const FlowObserver& observer) {
    const WorkingMap working(map);
    FloorplanSegmenter segmenter(settings.core, std::move(debugger));
    const cv::Mat segmented = working.segment(segmenter, observer.progress);
    const Resampling& resampling = working.resampling();
    if (observer.segmented) observer.segmented(resampling.labelsToMap(segmented, map.values));

    begin(observer, kStepSeparate);
    RoomGraph rooms = findRoomGraph(segmented);
    tell(observer, kStepSeparate, rooms);

    begin(observer, kStepIslands);
    const auto islands = removeIslands(rooms, settings.core.merge_nodes_in_place.area_threshold);
    tell(observer, kStepIslands, rooms);

    begin(observer, kStepMergeNodes);
    mergeBySizeAndBorderLength(rooms, settings.core, [&](const std::string& pass) {
        tell(observer, pass, rooms);
        if (pass == kStepMergeNodes) begin(observer, kStepMergeEdges);
    });

    begin(observer, kStepCuts);
    const auto [picture, cuts] = findCuts(rooms);
    drawPictures(observer, rooms, picture);

    cv::Mat labels = assignLinePixels(segmented, rooms.labels);
    if (settings.rooms.straight_borders) straightenBorders(labels, cuts);

    Rooms result;
    result.resolution = map.resolution;
    result.origin = map.origin;
    result.settings = settings;
    result.unreached = resampling.maskToMap(segmented == kLine, map.values);
    result.unreached_pixels = cv::countNonZero(result.unreached);
    fillRecords({resampling.labelsToMap(labels, map.values), rooms.graph, cuts, islands,
                 resampling.isIdentity() ? 1.0 : kWorkingResolution / map.resolution},
                result);
    result.lines = linesBetween(result.labels);
    return result;
}

}  // namespace vorund::rooms
