
#include <map>
#include <set>

#include "floor_plan_segmenter/observation.h"
#include "internal/require.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/over_segment_processor.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {
namespace {

/// Background 255 becomes 0, and what was no seed gets a label one above the last seed's, in 8
/// bits. In place: the images share their pixels with the caller's.
void numberBackground(cv::Mat& seed_map, int ncc) {
    const auto above_last = static_cast<std::uint8_t>(static_cast<unsigned>(ncc) + 1U);
    for (int row = 0; row < seed_map.rows; ++row) {
        std::uint8_t* const label = seed_map.ptr<std::uint8_t>(row);
        for (int col = 0; col < seed_map.cols; ++col) {
            if (label[col] == 255) {
                label[col] = 0;
            } else if (label[col] == 0) {
                label[col] = above_last;
            }
        }
    }
}

/// Before any image is changed.
void requireSeedMaps(const std::vector<cv::Mat>& seed_maps, const std::vector<int>& ncc_list) {
    internal::require(!seed_maps.empty(), "overSegment: labels_list is empty.");
    internal::require(seed_maps.size() == ncc_list.size(),
                      "overSegment: labels_list and ncc_list have different lengths.");
    for (const cv::Mat& seed_map : seed_maps) {
        internal::require(seed_map.type() == CV_8UC1, "overSegment: Labels must be CV_8UC1.");
    }
}

/// The global label 255 is that of ambiguous regions as well: a 255th region passes for one.
void requireFewRegions(const std::vector<std::map<int, int>>& mappers) {
    std::set<int> regions;
    for (const auto& mapper : mappers) {
        for (const auto& [local, global] : mapper) regions.insert(global);
    }
    regions.erase(255);
    if (regions.empty() || *regions.rbegin() < internal::kMostLabels) return;
    throw LabelOverflow(std::to_string(*regions.rbegin()) +
                        " regions or more over all scales, fewer than " +
                        std::to_string(internal::kMostLabels) + " can be told apart");
}

}  // namespace

std::pair<cv::Mat, int> FloorplanSegmenter::overSegment(const cv::Mat& ridge_image,
                                                        const LabelsListResult& labels,
                                                        const Config::OverSegmentConfig& config) {
    return growFromSeeds(ridge_image, labels, config, Overflow::kSaturate);
}

std::pair<cv::Mat, int> FloorplanSegmenter::growFromSeeds(const cv::Mat& ridge_image,
                                                          const LabelsListResult& labels,
                                                          const Config::OverSegmentConfig& config,
                                                          Overflow overflow) {
    std::vector<cv::Mat> seed_maps = labels.labels_list;
    requireSeedMaps(seed_maps, labels.ncc_list);
    for (std::size_t i = 0; i < seed_maps.size(); ++i) {
        numberBackground(seed_maps[i], labels.ncc_list[i]);
    }

    const auto mappers =
        OverSegmentProcessor::findConsistentGlobalLabels(labels.sigma_list, seed_maps, debugger_);
    if (overflow == Overflow::kFail) requireFewRegions(mappers);
    const auto lifespans = OverSegmentProcessor::findLifespans(mappers, debugger_);
    const auto seeds = OverSegmentProcessor::generateMapInitialSeeds(
        lifespans, mappers, seed_maps, config.generate_map_initial_seeds, debugger_);
    cv::Mat markers = OverSegmentProcessor::superposeMapInitialSeeds(seeds, seed_maps, debugger_);

    const cv::Mat rooms = WatershedSegmenter::createWatershedSegmentSkimage(
        ridge_image, markers, config.create_watershed_segment_skimage);
    double largest = 0.0;
    cv::minMaxLoc(rooms, nullptr, &largest);
    return {rooms, static_cast<int>(largest)};
}

}  // namespace vorund
