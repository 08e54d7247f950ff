#include "inputs.h"

#include <ros/console.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "flow/merging.h"
#include "flow/separators.h"
#include "reference/image_utils.h"
#include "reference/seeds.h"
#include "support/varied_plans.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/graph_processor.h"
#include "vorund/over_segment_processor.h"
#include "vorund/ridge_filter.h"
#include "vorund/rooms/segment_map.h"
#include "vorund/watershed_segmenter.h"

namespace vorund::bench {
namespace {

constexpr int kTileSide = 1000;
constexpr int kLargestBuilding = 4000;
constexpr int kPixelMm = 50;
constexpr int kMarginMm = 1500;
constexpr int kLabelsPerTile = 256;  // A multiple of it keeps the value of lines apart.

cv::Mat building(int side, std::uint64_t seed) {
    test::PlanOptions options;
    options.seed = seed;
    options.margin_mm = kMarginMm;
    options.width_mm = side * kPixelMm - 2 * kMarginMm;
    options.height_mm = options.width_mm;
    return test::makePlan(options).map;
}

cv::Mat paintedMap(int side) {
    if (side <= kLargestBuilding) return building(side, 1);
    cv::Mat map(side, side, CV_8UC1);
    std::uint64_t seed = 0;
    for (int y = 0; y < side; y += kLargestBuilding) {
        for (int x = 0; x < side; x += kLargestBuilding) {
            building(kLargestBuilding, ++seed)
                .copyTo(map(cv::Rect(x, y, kLargestBuilding, kLargestBuilding)));
        }
    }
    return map;
}

/// The seeds at all scales, numbered, and the markers that are made of them.
void addSeeds(Tile& tile, const Config& config) {
    reference::ScaleSeeds seeds;
    const LabelsListResult scales =
        FloorplanSegmenter(config, Debugger::create({}))
            .computeLabelsList(tile.dilated, tile.denoised, config.compute_labels_list);
    tile.sigmas = scales.sigma_list;
    tile.seed_maps = reference::numberedSeeds({scales.labels_list, scales.ncc_list});
    tile.markers =
        reference::markersOf(tile.seed_maps, config.over_segment.generate_map_initial_seeds);
}

cv::Mat fillSeeds(const Tile& tile, const Config& config) {
    cv::Mat markers = tile.markers;
    const cv::Mat rooms = WatershedSegmenter::createWatershedSegmentSkimage(
        tile.ridges, markers, config.over_segment.create_watershed_segment_skimage);
    cv::Mat seeds;
    rooms.convertTo(seeds, CV_32S);
    seeds.setTo(0, seeds == 255);
    seeds.setTo(255, tile.denoised == 1.0);
    return seeds;
}

/// The rooms before islands and merging and after.
void addRooms(Tile& tile, const Config& config) {
    const cv::Mat separated = rooms::drawSeparators(tile.segmented);
    const auto found = GraphProcessor::findGraphRepresentation(separated, rooms::kLine);
    tile.found.graph = found.graph;
    tile.found.border_ids = found.border_ids;
    separated.convertTo(tile.found.labels, CV_32S);
    found.borders_map.convertTo(tile.found.borders, CV_32S);
    tile.merged = copyOf(tile.found);
    tile.islands = rooms::removeIslands(tile.merged, config.merge_nodes_in_place.area_threshold);
    rooms::mergeBySizeAndBorderLength(tile.merged, config, [](const std::string&) {});
}

Tile makeTile(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    Tile tile;
    tile.map = mapOf(side);
    tile.denoised = reference::denoised(tile.map.values, config.generate_denoised_alone).map;
    tile.dilated = reference::dilated(tile.denoised, config.dilate_binary);
    tile.ridges =
        RidgeFilter::generateRidgeMapMeijering(tile.denoised, config.generate_ridge_map_meijering);
    tile.boundary = RidgeFilter::generateBoundaryFromDilated(tile.denoised);
    addSeeds(tile, config);
    tile.fill_seeds = fillSeeds(tile, config);
    FloorplanSegmenter segmenter(config, Debugger::create({}));
    tile.segmented = rooms::segmentMap(tile.map, segmenter);
    addRooms(tile, config);
    return tile;
}

/// Adds to all values but 0 and `kept`.
cv::Mat raised(const cv::Mat& image, int by, int kept) {
    cv::Mat result = image.clone();
    cv::add(image, cv::Scalar(by), result, (image != 0) & (image != kept));
    return result;
}

void addTile(const rooms::RoomGraph& tile, int number, const cv::Point& corner,
             rooms::RoomGraph& all) {
    const int by = number * kLabelsPerTile;
    const cv::Rect place(corner, tile.labels.size());
    raised(tile.labels, by, rooms::kLine).copyTo(all.labels(place));
    raised(tile.borders, by, 0).copyTo(all.borders(place));
    for (const auto& [label, data] : tile.graph.nodes()) {
        all.graph.addNode(label + by, {data.area, data.position + corner});
    }
    for (const auto& [edge, data] : tile.graph.edges()) {
        all.graph.addEdge(edge.first + by, edge.second + by, data);
    }
    for (const auto& [edge, id] : tile.border_ids) {
        all.border_ids.emplace(Edge(edge.first + by, edge.second + by), id + by);
    }
}

}  // namespace

const char* nameOf(Kind kind) {
    return kind == Kind::kDefault ? "default" : "thick-walls";
}

Kind kindOf(const std::string& name) {
    for (const Kind kind : kKinds) {
        if (name == nameOf(kind)) return kind;
    }
    throw std::invalid_argument("no settings are called " + name);
}

rooms::Settings settingsOf(Kind kind) {
    rooms::Settings settings;
    if (kind == Kind::kThickWalls) settings.core = test::thickWalls();
    return settings;
}

rooms::GridMap mapOf(int side) {
    rooms::GridMap map;
    map.picture = paintedMap(side);
    const cv::Mat walls = map.picture != test::kMapFree;
    walls.convertTo(map.values, CV_32F, 1.0 / 255.0);
    return map;
}

const Tile& tileOf(int side, Kind kind) {
    static std::map<std::pair<int, Kind>, Tile> tiles;
    const int tile_side = std::min(side, kTileSide);
    const auto key = std::make_pair(tile_side, kind);
    const auto known = tiles.find(key);
    return known != tiles.end() ? known->second
                                : tiles.emplace(key, makeTile(tile_side, kind)).first->second;
}

int tilesAcross(int side) {
    return std::max(side / kTileSide, 1);
}

cv::Mat enlarged(const cv::Mat& image, int side) {
    const int across = tilesAcross(side);
    return across == 1 ? image : cv::repeat(image, across, across);
}

rooms::RoomGraph enlarged(const rooms::RoomGraph& rooms, int side) {
    const int across = tilesAcross(side);
    const cv::Size tile = rooms.labels.size();
    rooms::RoomGraph all;
    all.labels.create(tile.height * across, tile.width * across, CV_32SC1);
    all.borders.create(all.labels.size(), CV_32SC1);
    for (int number = 0; number < across * across; ++number) {
        const cv::Point corner(number % across * tile.width, number / across * tile.height);
        addTile(rooms, number, corner, all);
    }
    return all;
}

rooms::RoomGraph copyOf(const rooms::RoomGraph& rooms) {
    return {rooms.labels.clone(), rooms.borders.clone(), rooms.border_ids, rooms.graph};
}

void beQuietAndSingleThreaded() {
    cv::setNumThreads(1);
    setPlainOutput(nullptr);
    ros::console::initialize();
    ros::console::set_logger_level("ros.vorund", ros::console::levels::Fatal);
    ros::console::notifyLoggerLevelsChanged();
}

}  // namespace vorund::bench
