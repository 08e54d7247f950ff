#include "reference/seeds.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "reference/over_segment_processor.h"

namespace vorund::reference {
namespace {

constexpr int kBackground = 255;

/// @return the number of seeds.
int findSeeds(const cv::Mat& map, const cv::Mat& background, double sigma, double threshold,
              cv::Mat& labels) {
    cv::Mat blurred;
    cv::GaussianBlur(map, blurred, cv::Size(0, 0), sigma, 0.0, cv::BORDER_REPLICATE);
    cv::Mat floor;
    cv::threshold(blurred, floor, threshold, 255.0, cv::THRESH_BINARY_INV);
    floor.convertTo(floor, CV_8U);
    cv::Mat regions;
    const int count = cv::connectedComponents(floor, regions, 4, CV_32S) - 1;
    regions.convertTo(labels, CV_8U);  // Saturates: from the 255th on they are background.
    labels.setTo(kBackground, background);
    return count;
}

cv::Mat numbered(const cv::Mat& labels, int count) {
    const auto above = static_cast<std::uint8_t>((count + 1) % 256);
    cv::Mat result(labels.size(), CV_8UC1);
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const std::uint8_t label = labels.at<std::uint8_t>(row, col);
            result.at<std::uint8_t>(row, col) =
                label == kBackground ? std::uint8_t{0} : (label == 0 ? above : label);
        }
    }
    return result;
}

}  // namespace

ScaleSeeds seedsOfScales(const cv::Mat& dilated, const cv::Mat& denoised,
                         const Config::ComputeLabelsListConfig& config) {
    const int most = config.sigma_step == 0.0 ? 1 : config.max_iter;
    const double threshold = config.generate_gaussian_seeds_skimage.threshold;
    const cv::Mat background = denoised != 0.0;
    ScaleSeeds seeds;
    double sigma = config.sigma_start;
    for (int i = 0; i < most; ++i, sigma += config.sigma_step) {
        cv::Mat labels;
        seeds.counts.push_back(findSeeds(dilated, background, sigma, threshold, labels));
        seeds.labels.push_back(labels);
        if (seeds.counts.back() == 0) break;
    }
    return seeds;
}

std::vector<cv::Mat> numberedSeeds(const ScaleSeeds& seeds) {
    std::vector<cv::Mat> seed_maps;
    for (std::size_t i = 0; i < seeds.labels.size(); ++i) {
        seed_maps.push_back(numbered(seeds.labels[i], seeds.counts[i]));
    }
    return seed_maps;
}

cv::Mat markersOf(const std::vector<cv::Mat>& seed_maps,
                  const Config::GenerateMapInitialSeedsConfig& config) {
    if (seed_maps.empty()) throw std::runtime_error("overSegment: labels_list is empty.");
    if (seed_maps.size() == 1) {
        throw std::runtime_error("findConsistentGlobalLabels: labels_map_list_in.size() == 1");
    }
    const std::vector<std::map<int, int>> mappers = globalLabels(seed_maps);
    return superposedSeeds(initialSeeds(lifespans(mappers), mappers, seed_maps, config),
                           seed_maps.front());
}

}  // namespace vorund::reference
