
#include <algorithm>
#include <cstddef>
#include <map>
#include <set>

#include "floor_plan_segmenter/observation.h"
#include "internal/require.h"
#include "scale_space/seed_scales.h"
#include "seed_selection.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/image_utils.h"
#include "vorund/over_segment_processor.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {
namespace {

constexpr char kNoScale[] = "overSegment: labels_list is empty.";

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
    internal::require(!seed_maps.empty(), kNoScale);
    internal::require(seed_maps.size() == ncc_list.size(),
                      "overSegment: labels_list and ncc_list have different lengths.");
    for (const cv::Mat& seed_map : seed_maps) {
        internal::require(seed_map.type() == CV_8UC1, "overSegment: Labels must be CV_8UC1.");
    }
}

/// More than the labels of 8-bit seed maps tell apart.
bool hasTooManySeeds(const internal::SeedScales& seeds) {
    return std::any_of(seeds.scales().begin(), seeds.scales().end(), [](const auto& scale) {
        return scale.components.count > internal::kMostLabels;
    });
}

LabelsListResult asSeedMaps(const internal::SeedScales& seeds) {
    LabelsListResult result;
    for (std::size_t i = 0; i < seeds.scales().size(); ++i) {
        result.sigma_list.push_back(seeds.scales()[i].sigma);
        result.labels_list.push_back(seeds.seedMap(i));
        result.ncc_list.push_back(seeds.scales()[i].components.count);
    }
    return result;
}

/// The label image that grows from the markers, and its largest label.
std::pair<cv::Mat, int> flood(const cv::Mat& ridge_image, cv::Mat& markers,
                              const Config::OverSegmentConfig& config) {
    const cv::Mat rooms = WatershedSegmenter::createWatershedSegmentSkimage(
        ridge_image, markers, config.create_watershed_segment_skimage);
    double largest = 0.0;
    cv::minMaxLoc(rooms, nullptr, &largest);
    return {rooms, static_cast<int>(largest)};
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
    return flood(ridge_image, markers, config);
}

std::pair<cv::Mat, int> FloorplanSegmenter::growFromSeeds(const cv::Mat& ridge_image,
                                                          const internal::SeedScales& seeds,
                                                          Overflow overflow) {
    if (hasTooManySeeds(seeds)) {
        return growFromSeeds(ridge_image, asSeedMaps(seeds), config_.over_segment, overflow);
    }
    internal::require(!seeds.scales().empty(), kNoScale);
    const auto mappers = seeds.findConsistentGlobalLabels();
    if (overflow == Overflow::kFail) requireFewRegions(mappers);
    const auto lifespans = OverSegmentProcessor::findLifespans(mappers, debugger_);
    const auto chosen =
        internal::chooseSeeds(lifespans, mappers, config_.over_segment.generate_map_initial_seeds);
    cv::Mat markers = seeds.superpose(chosen);
    return flood(ridge_image, markers, config_.over_segment);
}

cv::Mat FloorplanSegmenter::findSeedMarkers(const cv::Mat& denoised,
                                            const StageObserver& observer) {
    const cv::Mat dilated = ImageUtils::dilateBinary(denoised, config_.dilate_binary.kernel_size,
                                                     config_.dilate_binary.iterations);
    internal::observe(observer, kStageScales, 0, internal::mostScales(config_.compute_labels_list));
    const internal::SeedScales seeds = findSeeds(dilated, denoised, observer, Overflow::kSaturate);
    internal::require(!seeds.scales().empty(), kNoScale);
    const auto mappers = seeds.findConsistentGlobalLabels(true);
    const auto lifespans = OverSegmentProcessor::findLifespans(mappers, debugger_);
    return seeds.superpose(
        internal::chooseSeeds(lifespans, mappers, config_.over_segment.generate_map_initial_seeds));
}

}  // namespace vorund
