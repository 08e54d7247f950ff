#include "reference/floorplan_segmenter.h"

#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "reference/image_utils.h"
#include "reference/ridge_filter.h"
#include "reference/seeds.h"
#include "reference/watershed_segmenter.h"

namespace vorund::reference {
namespace {

constexpr int kUnreached = 255;
constexpr int kBackgroundSeed = 255;

int largestOf(const cv::Mat& image) {
    double largest = 0.0;
    cv::minMaxLoc(image, nullptr, &largest);
    return static_cast<int>(largest);
}

}  // namespace

cv::Mat ridgeMap(const cv::Mat& denoised, const Config::GenerateRidgeMapMeijeringConfig& config) {
    const std::map<std::string, int> borders{{"reflect", cv::BORDER_REFLECT_101},
                                             {"mirror", cv::BORDER_REFLECT},
                                             {"constant", cv::BORDER_CONSTANT},
                                             {"nearest", cv::BORDER_REPLICATE},
                                             {"wrap", cv::BORDER_WRAP}};
    return ridgeMap(denoised, config.sigmas, borders.at(config.mode));
}

cv::Mat overSegmented(const cv::Mat& ridges, const cv::Mat& markers, int connectivity) {
    // The flood leaves markers as they are.
    if (largestOf(markers) > 255) {
        throw std::runtime_error("createWatershedSegmentSkimage: Label values exceed uint8 range.");
    }
    return watershedSegment(ridges, markers, connectivity);
}

cv::Mat filled(const cv::Mat& over_segmented, const cv::Mat& denoised, const cv::Mat& boundary,
               int connectivity) {
    cv::Mat_<int> seeds(over_segmented.size());
    for (int row = 0; row < seeds.rows; ++row) {
        for (int col = 0; col < seeds.cols; ++col) {
            const int label = over_segmented.at<std::uint8_t>(row, col);
            seeds(row, col) = label == kUnreached ? 0 : label;
            if (denoised.at<float>(row, col) == 1.0F) seeds(row, col) = kBackgroundSeed;
        }
    }
    const cv::Mat_<int> flooded = watershed(boundary, seeds, connectivity, false);
    cv::Mat_<std::uint8_t> result(flooded.size());
    for (int row = 0; row < result.rows; ++row) {
        for (int col = 0; col < result.cols; ++col) {
            const int label = flooded(row, col);
            const int swapped = label == 0 ? kUnreached : label == kBackgroundSeed ? 0 : label;
            result(row, col) = static_cast<std::uint8_t>(swapped);
        }
    }
    return result;
}

cv::Mat doSegment(const cv::Mat& raw, const Config& config) {
    const int connectivity = config.over_segment.create_watershed_segment_skimage.connectivity;
    const CleanMap clean = denoised(raw, config.generate_denoised_alone);
    const cv::Mat ridges = ridgeMap(clean.map, config.generate_ridge_map_meijering);
    const cv::Mat boundary = boundaryMap(clean.map);
    const ScaleSeeds seeds = seedsOfScales(dilated(clean.map, config.dilate_binary), clean.map,
                                           config.compute_labels_list);
    const cv::Mat markers =
        markersOf(numberedSeeds(seeds), config.over_segment.generate_map_initial_seeds);
    const cv::Mat rooms = overSegmented(ridges, markers, connectivity);
    const cv::Mat labels = filled(rooms, clean.map, boundary, connectivity);
    return restored(labels, clean.place, raw.size(), largestOf(rooms));
}

}  // namespace vorund::reference
