#include "inputs.h"

#include <ros/console.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "flow/separators.h"
#include "reference/image_utils.h"
#include "reference/seeds.h"
#include "support/varied_plans.h"
#include "vorund/floorplan_segmenter.h"
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
    return tile;
}

}  // namespace

const char* nameOf(Kind kind) {
    return kind == Kind::kDefault ? "default" : "thin-walls";
}

Kind kindOf(const std::string& name) {
    for (const Kind kind : kKinds) {
        if (name == nameOf(kind)) return kind;
    }
    throw std::invalid_argument("no settings are called " + name);
}

rooms::Settings settingsOf(Kind kind) {
    rooms::Settings settings;
    if (kind == Kind::kThinWalls) settings.core = test::thinWalls();
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

cv::Mat regionsOfMap(int side, Kind kind) {
    const int across = tilesAcross(side);
    cv::Mat tile;
    tileOf(side, kind).segmented.convertTo(tile, CV_32S);
    const cv::Mat has_room = (tile != 0) & (tile != rooms::kLine);
    cv::Mat regions(tile.size() * across, CV_32SC1);
    for (int number = 0; number < across * across; ++number) {
        const cv::Point corner(number % across * tile.cols, number / across * tile.rows);
        cv::Mat part = regions(cv::Rect(corner, tile.size()));
        tile.copyTo(part);
        cv::add(part, cv::Scalar(number * kLabelsPerTile), part, has_room);
    }
    return regions;
}

void beQuietAndSingleThreaded() {
    cv::setNumThreads(1);
    setPlainOutput(nullptr);
    ros::console::initialize();
    ros::console::set_logger_level("ros.vorund", ros::console::levels::Fatal);
    ros::console::notifyLoggerLevelsChanged();
}

}  // namespace vorund::bench
