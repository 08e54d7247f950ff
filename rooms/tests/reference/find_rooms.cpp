#include "reference/find_rooms.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "reference/clutter.h"
#include "reference/doorways.h"
#include "reference/floorplan_segmenter.h"
#include "reference/open_passages.h"
#include "reference/records.h"

namespace vorund::reference {
namespace {

constexpr int kRim = 8;  // [pixels]

bool hasFloorAtTheEdge(const cv::Mat& map) {
    const cv::Mat floor = map <= 0.5;
    return cv::countNonZero(floor.row(0)) + cv::countNonZero(floor.row(floor.rows - 1)) +
               cv::countNonZero(floor.col(0)) + cv::countNonZero(floor.col(floor.cols - 1)) >
           0;
}

double thresholdOf(const Config& config) {
    return config.generate_denoised_alone.binary_make_binary.threshold;
}

void mergeByPasses(PlainRooms& rooms, const Config& config) {
    const double area_threshold = config.merge_nodes_in_place.area_threshold;
    rooms.islands = removeIslands(rooms.merged, area_threshold);
    mergeSmallRooms(rooms.merged, area_threshold);
    mergeAcrossLongBorders(rooms.merged, config.merge_edges_in_place.length_threshold);
}

}  // namespace

cv::Mat segmentInRim(const cv::Mat& map, const Config& config) {
    if (cv::countNonZero(map) == 0) return {map.size(), CV_8UC1, cv::Scalar(1)};
    const int rim = hasFloorAtTheEdge(map) ? kRim : 0;
    cv::Mat rimmed;
    cv::copyMakeBorder(map, rimmed, rim, rim, rim, rim, cv::BORDER_CONSTANT, cv::Scalar(1.0));
    const cv::Mat labels = doSegment(rimmed, config)(cv::Rect({rim, rim}, map.size())).clone();
    if (cv::countNonZero((labels != 0) & (labels != kLine)) == 0) {
        throw std::runtime_error("no room found");
    }
    return labels;
}

cv::Mat cleanedMap(const cv::Mat& map, const rooms::Settings& settings) {
    if (!settings.rooms.clear_clutter || cv::countNonZero(map) == 0) return map;
    return withoutClutter(map, thresholdOf(settings.core), settings.rooms);
}

PlainRooms findRooms(const cv::Mat& map, const rooms::Settings& settings) {
    const cv::Mat cleaned = cleanedMap(map, settings);
    const bool by_passages = settings.rooms.merging == "passages";
    const cv::Mat floor = cleaned <= thresholdOf(settings.core);
    std::vector<PlainDoorway> doorways;
    if (by_passages && settings.rooms.doorways) doorways = findDoorways(floor, settings.rooms);
    PlainRooms rooms;
    rooms.segmented = segmentInRim(cleaned, settings.core);
    cv::Mat regions;
    rooms.segmented.convertTo(regions, CV_32S);
    splitAtDoorways(regions, floor, doorways);
    rooms.merged = roomGraph(separated(regions));
    if (by_passages) {
        rooms.islands = removeIslands(rooms.merged, settings.rooms.least_area, 0.0, true);
        mergeOpenPassages(rooms.merged, floor, doorways, settings.rooms);
    } else {
        mergeByPasses(rooms, settings.core);
    }
    rooms.cuts = cutsOf(rooms.merged);
    rooms.labels = withLinePixels(regions, rooms.merged.segments);
    if (settings.rooms.straight_borders) straightenBorders(rooms.labels, rooms.cuts);
    rooms.numbers = numberInPlace(rooms.labels);
    return rooms;
}

}  // namespace vorund::reference
