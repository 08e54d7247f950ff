#include "reference/over_segment_processor.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>

namespace vorund::reference {
namespace {

/// Background in a marker image; in a mapper, a region that several coarser ones run into.
constexpr int kReserved = 255;

std::set<int> distinctValues(const cv::Mat& image) {
    std::set<int> values;
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) values.insert(image.at<uchar>(row, col));
    }
    return values;
}

/// All values but 0 and the largest.
std::set<int> localLabels(const cv::Mat& seed_map) {
    std::set<int> labels = distinctValues(seed_map);
    labels.erase(0);
    if (!labels.empty()) labels.erase(*labels.rbegin());
    return labels;
}

/// The finer label under the first pixel of a coarser region that does not lie over 0.
int successor(const cv::Mat& coarse, const cv::Mat& fine, int label) {
    for (int row = 0; row < coarse.rows; ++row) {
        for (int col = 0; col < coarse.cols; ++col) {
            const int below = fine.at<uchar>(row, col);
            if (coarse.at<uchar>(row, col) == label && below != 0) return below;
        }
    }
    throw std::runtime_error("findConsistentGlobalLabels: new_m == 0");
}

/// For one label of a finer map, the coarser labels that run into it.
std::set<int> predecessors(const std::map<int, int>& successors, int label) {
    std::set<int> result;
    for (const auto& [coarse, fine] : successors) {
        if (fine == label) result.insert(coarse);
    }
    return result;
}

/// The quotient truncated towards zero, or 0 where there is none.
int quotient(int dividend, int divisor) {
    return divisor == 0 ? 0 : dividend / divisor;
}

int weightedIndex(int start, int end, const std::map<std::string, int>& weights) {
    const auto weight = [&weights](const std::string& name) {
        return weights.count(name) > 0 ? weights.at(name) : 1;
    };
    const int last = weight("end");
    const int first = weight("start") + last == 0 ? 1 : weight("start");
    return quotient(start * first + end * last, first + last);
}

int seedIndex(int start, int end, const Config::GenerateMapInitialSeedsConfig& config) {
    if (config.method == "start") return start;
    if (config.method == "end") return end;
    if (config.method == "middle") return (start + end) / 2;
    if (config.method == "weighted") return weightedIndex(start, end, config.weights);
    throw std::runtime_error("generateMapInitialSeeds: Unknown method: " + config.method);
}

cv::Mat maskOf(const cv::Mat& seed_map, int label) {
    cv::Mat mask = cv::Mat::zeros(seed_map.size(), CV_8UC1);
    for (int row = 0; row < mask.rows; ++row) {
        for (int col = 0; col < mask.cols; ++col) {
            if (seed_map.at<uchar>(row, col) == label) mask.at<uchar>(row, col) = 1;
        }
    }
    return mask;
}

/// The smallest global label whose seed covers the pixel, or 0.
int smallestSeedAt(const std::map<int, cv::Mat>& seeds, int row, int col) {
    for (const auto& [label, mask] : seeds) {
        if (label != kReserved && mask.at<uchar>(row, col) == 1) return label;
    }
    return 0;
}

}  // namespace

std::vector<std::map<int, int>> globalLabels(const std::vector<cv::Mat>& seed_maps) {
    if (distinctValues(seed_maps.back()).size() > 2) {
        throw std::runtime_error("findConsistentGlobalLabels: last_frame_labels.size() > 2");
    }
    std::vector<std::map<int, int>> mappers(seed_maps.size());
    int newest = 0;
    for (std::size_t i = seed_maps.size() - 1; i-- > 0;) {
        const std::map<int, int>& coarser = mappers[i + 1];
        std::map<int, int> successors;
        for (const auto& [label, global] : coarser) {
            successors[label] = successor(seed_maps[i + 1], seed_maps[i], label);
        }
        for (const int label : localLabels(seed_maps[i])) {
            const std::set<int> before = predecessors(successors, label);
            int global = kReserved;
            if (before.empty()) global = ++newest;
            if (before.size() == 1) global = coarser.at(*before.begin());
            mappers[i][label] = global;
        }
    }
    return mappers;
}

std::map<int, std::pair<int, int>> lifespans(const std::vector<std::map<int, int>>& mappers) {
    std::map<int, std::pair<int, int>> result;
    for (int i = 0; i < static_cast<int>(mappers.size()); ++i) {
        for (const auto& [local, global] : mappers[static_cast<std::size_t>(i)]) {
            if (global == kReserved) continue;
            result.emplace(global, std::make_pair(i, i));
            result.at(global).second = i;
        }
    }
    return result;
}

std::map<int, cv::Mat> initialSeeds(const std::map<int, std::pair<int, int>>& lifespans,
                                    const std::vector<std::map<int, int>>& mappers,
                                    const std::vector<cv::Mat>& seed_maps,
                                    const Config::GenerateMapInitialSeedsConfig& config) {
    std::map<int, cv::Mat> seeds;
    if (mappers.empty() || seed_maps.empty()) return seeds;
    for (const auto& [global, lifespan] : lifespans) {
        const auto [start, end] = lifespan;
        if (end - start < config.filter_threshold) continue;
        const int last = static_cast<int>(mappers.size()) - 1;
        const int index = std::min(std::max(seedIndex(start, end, config), 0), last);
        const auto chosen = static_cast<std::size_t>(index);
        for (const auto& [local, label] : mappers[chosen]) {
            if (label != global) continue;
            if (local != -1) seeds[global] = maskOf(seed_maps[chosen], local);
            break;
        }
    }
    return seeds;
}

cv::Mat superposedSeeds(const std::map<int, cv::Mat>& seeds, const cv::Mat& first_seed_map) {
    cv::Mat result = cv::Mat::zeros(first_seed_map.size(), CV_32SC1);
    for (int row = 0; row < result.rows; ++row) {
        for (int col = 0; col < result.cols; ++col) {
            int label = smallestSeedAt(seeds, row, col);
            if (label == 0 && first_seed_map.at<uchar>(row, col) == 0) label = kReserved;
            result.at<int>(row, col) = label;
        }
    }
    return result;
}

}  // namespace vorund::reference
