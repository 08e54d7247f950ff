
#include "internal/require.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/over_segment_processor.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {
namespace {

/// Background 255 becomes 0, and what was no seed gets a label one above the last seed's, in 8
/// bits. In place: the images share their pixels with the caller's.
void numberBackground(cv::Mat& seed_map, int ncc) {
    const auto above_last = static_cast<std::uint8_t>(ncc + 1);
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

}  // namespace

std::pair<cv::Mat, int> FloorplanSegmenter::overSegment(const cv::Mat& ridge_image,
                                                        const LabelsListResult& labels,
                                                        const Config::OverSegmentConfig& config) {
    std::vector<cv::Mat> seed_maps = labels.labels_list;
    for (std::size_t i = 0; i < seed_maps.size(); ++i) {
        numberBackground(seed_maps[i], labels.ncc_list.at(i));
    }
    internal::require(!seed_maps.empty(), "overSegment: labels_list is empty.");

    const auto mappers =
        OverSegmentProcessor::findConsistentGlobalLabels(labels.sigma_list, seed_maps, debugger_);
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
