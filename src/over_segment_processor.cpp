#include "vorund/over_segment_processor.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <set>

#include "internal/require.h"
#include "internal/text.h"
#include "over_segment_pictures.h"
#include "seed_inheritance.h"
#include "seed_selection.h"

namespace vorund {
namespace {

using internal::require;

constexpr int kByteValues = 256;
constexpr int kBackground = 255;  // Marker of what is no seed.

using internal::LabelMap;

std::set<int> valuesOf(const cv::Mat& image) {
    std::array<bool, kByteValues> seen{};
    for (int row = 0; row < image.rows; ++row) {
        const std::uint8_t* const pixels = image.ptr<std::uint8_t>(row);
        for (int col = 0; col < image.cols; ++col) seen[pixels[col]] = true;
    }
    std::set<int> values;
    for (int value = 0; value < kByteValues; ++value) {
        if (seen[static_cast<std::size_t>(value)]) values.insert(value);
    }
    return values;
}

/// The local labels of a seed map, ascending: its values without 0 and the largest one.
std::vector<int> labelsOf(const cv::Mat& image) {
    std::set<int> values = valuesOf(image);
    values.erase(0);
    // The largest stands for the background and goes even where the map has none.
    if (!values.empty()) values.erase(std::prev(values.end()));
    return {values.begin(), values.end()};
}

cv::Mat seedMask(const cv::Mat& seed_map, int local) {
    cv::Mat mask = cv::Mat::zeros(seed_map.size(), CV_8UC1);
    mask.setTo(1, seed_map == local);
    return mask;
}

void superposeSeed(cv::Mat& markers, const cv::Mat& mask, int global) {
    // A mask of another size counts where it covers the markers.
    const int cols = std::min(markers.cols, mask.cols);
    for (int row = 0; row < std::min(markers.rows, mask.rows); ++row) {
        const std::uint8_t* const seed = mask.ptr<std::uint8_t>(row);
        std::int32_t* const marker = markers.ptr<std::int32_t>(row);
        for (int col = 0; col < cols; ++col) {
            if (seed[col] != 1) continue;
            marker[col] = marker[col] == 0 ? global : std::min(marker[col], global);
        }
    }
}

void markBackground(cv::Mat& markers, const cv::Mat& finest_seed_map) {
    for (int row = 0; row < markers.rows; ++row) {
        const std::uint8_t* const seed = finest_seed_map.ptr<std::uint8_t>(row);
        std::int32_t* const marker = markers.ptr<std::int32_t>(row);
        for (int col = 0; col < markers.cols; ++col) {
            if (seed[col] == 0 && marker[col] == 0) marker[col] = kBackground;
        }
    }
}

/// Pictures that nobody sees are not drawn.
bool isSeen(const std::shared_ptr<Debugger>& debugger) {
    return debugger && debugger->takesImages();
}

}  // namespace

std::vector<LabelMap> OverSegmentProcessor::findConsistentGlobalLabels(
    const std::vector<double>& sigmas, const std::vector<cv::Mat>& labels_map_list_in,
    std::shared_ptr<Debugger> debugger) {
    const std::size_t count = labels_map_list_in.size();
    require(count > 0 && sigmas.size() == count,
            "findConsistentGlobalLabels: Input lists are empty or have mismatched sizes.");
    require(count != 1, "findConsistentGlobalLabels: labels_map_list_in.size() == 1");
    require(valuesOf(labels_map_list_in.back()).size() <= 2,
            "findConsistentGlobalLabels: last_frame_labels.size() > 2");

    for (const cv::Mat& seed_map : labels_map_list_in) {
        require(seed_map.type() == CV_8UC1 && seed_map.size() == labels_map_list_in.back().size(),
                "findConsistentGlobalLabels: Seed maps must be CV_8UC1 and of equal size.");
    }

    std::vector<LabelMap> mappers(count);
    // The coarsest map has no labels to hand on: those of the next one all start anew.
    std::vector<int> coarser_labels;
    int counter = 0;
    for (std::size_t i = count - 1; i-- > 0;) {
        const cv::Mat& finer = labels_map_list_in[i];
        const std::vector<int> labels = labelsOf(finer);
        const auto parents = internal::findParents(
            coarser_labels, internal::valuesUnderFirstPixels(labels_map_list_in[i + 1], finer));
        mappers[i] = internal::globalLabels(labels, parents, mappers[i + 1], counter);
        if (!mappers[i].empty() && isSeen(debugger)) {
            debugger->write(
                "50cpp_local_global_label_sigma_" + internal::fixedText(sigmas[i]) + ".png",
                internal::drawLocalAndGlobalLabels(finer, mappers[i]));
        }
        coarser_labels = labels;
    }
    internal::printMappers(mappers);
    return mappers;
}

std::map<int, std::pair<int, int>> OverSegmentProcessor::findLifespans(
    const std::vector<LabelMap>& mappers, std::shared_ptr<Debugger> debugger) {
    require(!mappers.empty(), "findLifespans: mappers is empty");
    std::map<int, std::pair<int, int>> lifespans;
    for (int i = static_cast<int>(mappers.size()) - 1; i >= 0; --i) {
        for (const auto& [local, global] : mappers[static_cast<std::size_t>(i)]) {
            if (global == internal::kAmbiguous) continue;
            const auto lifespan = lifespans.emplace(global, std::make_pair(i, i)).first;
            lifespan->second.first = i;
        }
    }
    if (!lifespans.empty() && isSeen(debugger)) {
        debugger->write("51cpp_lifespans_visualization.png",
                        internal::drawLifespans(lifespans, static_cast<int>(mappers.size())));
    }
    return lifespans;
}

std::map<int, cv::Mat> OverSegmentProcessor::generateMapInitialSeeds(
    const std::map<int, std::pair<int, int>>& lifespans, const std::vector<LabelMap>& mappers,
    const std::vector<cv::Mat>& labels_map_list_in,
    const Config::GenerateMapInitialSeedsConfig& config, std::shared_ptr<Debugger> debugger) {
    std::map<int, cv::Mat> seeds;
    if (labels_map_list_in.empty()) return seeds;
    for (const auto& [global, seed] : internal::chooseSeeds(lifespans, mappers, config)) {
        seeds[global] = seedMask(labels_map_list_in.at(seed.scale), seed.local);
    }

    if (seeds.empty() || !isSeen(debugger)) return seeds;
    debugger->write("52cpp_map_initial_seeds_visualization.png",
                    internal::drawSeedOverview(seeds, labels_map_list_in.front().size()));
    for (const auto& [global, mask] : seeds) {
        debugger->write("52cpp_seed_label_" + std::to_string(global) + ".png", mask);
    }
    return seeds;
}

cv::Mat OverSegmentProcessor::superposeMapInitialSeeds(
    const std::map<int, cv::Mat>& map_initial_seeds, const std::vector<cv::Mat>& labels_map_list_in,
    std::shared_ptr<Debugger> debugger) {
    require(!labels_map_list_in.empty(), "superposeMapInitialSeeds: labels_map_list_in is empty.");
    const cv::Mat& finest = labels_map_list_in.front();
    cv::Mat markers = cv::Mat::zeros(finest.size(), CV_32SC1);
    for (const auto& [global, mask] : map_initial_seeds) {
        if (global != kBackground) superposeSeed(markers, mask, global);
    }
    markBackground(markers, finest);

    if (!isSeen(debugger)) return markers;
    debugger->write("53cpp_superposed_seeds_visualization.png", internal::drawMarkers(markers));
    debugger->write("53cpp_superposed_seeds_stats.png", internal::drawMarkerCounts(markers));
    debugger->write("53cpp_superposed_seeds_raw.png", markers);
    return markers;
}

}  // namespace vorund
