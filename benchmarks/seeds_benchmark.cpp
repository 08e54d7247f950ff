// Scales, tracking and both floods.

#include "reference/seeds.h"
#include "reference/watershed_segmenter.h"
#include "stage.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/over_segment_processor.h"
#include "vorund/watershed_segmenter.h"

namespace vorund::bench {
namespace {

Work scales(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const Tile& tile = tileOf(side, kind);
    const cv::Mat dilated = enlarged(tile.dilated, side);
    const cv::Mat denoised = enlarged(tile.denoised, side);
    return {[=] {
                FloorplanSegmenter(config, Debugger::create({}))
                    .computeLabelsList(dilated, denoised, config.compute_labels_list);
            },
            {}};
}

Work scalesPlainly(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const Tile& tile = tileOf(side, kind);
    const cv::Mat dilated = enlarged(tile.dilated, side);
    const cv::Mat denoised = enlarged(tile.denoised, side);
    return {[=] { reference::seedsOfScales(dilated, denoised, config.compute_labels_list); }, {}};
}

std::vector<cv::Mat> seedMaps(int side, Kind kind) {
    std::vector<cv::Mat> maps;
    for (const cv::Mat& map : tileOf(side, kind).seed_maps) maps.push_back(enlarged(map, side));
    return maps;
}

Work tracking(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const std::vector<double> sigmas = tileOf(side, kind).sigmas;
    const std::vector<cv::Mat> maps = seedMaps(side, kind);
    return {[=] {
                using Processor = OverSegmentProcessor;
                const auto mappers = Processor::findConsistentGlobalLabels(sigmas, maps, nullptr);
                const auto seeds = Processor::generateMapInitialSeeds(
                    Processor::findLifespans(mappers, nullptr), mappers, maps,
                    config.over_segment.generate_map_initial_seeds, nullptr);
                Processor::superposeMapInitialSeeds(seeds, maps, nullptr);
            },
            {}};
}

Work trackingPlainly(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const std::vector<cv::Mat> maps = seedMaps(side, kind);
    return {[=] { reference::markersOf(maps, config.over_segment.generate_map_initial_seeds); },
            {}};
}

/// What either flood takes.
struct FloodInput {
    cv::Mat cost;
    cv::Mat seeds;
    Config::CreateWatershedSegmentSkimageConfig config;
};

template <class Flood>
Preparation firstFlood(Flood flood) {
    return [flood](int side, Kind kind) -> Work {
        const Tile& tile = tileOf(side, kind);
        const FloodInput input{enlarged(tile.ridges, side), enlarged(tile.markers, side),
                               settingsOf(kind).core.over_segment.create_watershed_segment_skimage};
        return {[=] { flood(input); }, {}};
    };
}

template <class Flood>
Preparation secondFlood(Flood flood) {
    return [flood](int side, Kind kind) -> Work {
        const Tile& tile = tileOf(side, kind);
        const FloodInput input{enlarged(tile.boundary, side), enlarged(tile.fill_seeds, side),
                               settingsOf(kind).core.over_segment.create_watershed_segment_skimage};
        return {[=] { flood(input); }, {}};
    };
}

}  // namespace

void addSeedStages() {
    addStage("scales", scales, scalesPlainly);
    addStage("tracking", tracking, trackingPlainly);
    addStage("first-flood", firstFlood([](const FloodInput& input) {
                 cv::Mat seeds = input.seeds;
                 WatershedSegmenter::createWatershedSegmentSkimage(input.cost, seeds, input.config);
             }),
             firstFlood([](const FloodInput& input) {
                 reference::watershedSegment(input.cost, input.seeds, input.config.connectivity);
             }));
    addStage("second-flood", secondFlood([](const FloodInput& input) {
                 cv::Mat seeds = input.seeds;
                 WatershedSegmenter::executeSkimageWatershed(input.cost, seeds,
                                                             input.config.connectivity, false);
             }),
             secondFlood([](const FloodInput& input) {
                 reference::watershed(input.cost, input.seeds, input.config.connectivity, false);
             }));
}

}  // namespace vorund::bench
