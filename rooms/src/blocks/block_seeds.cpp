#include "blocks/block_seeds.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "maps/core_errors.h"
#include "vorund/image_utils.h"
#include "vorund/over_segment_processor.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

/// Of wall around a view, so that the blur finds wall beyond it. [pixels]
constexpr int kRim = 8;

/// Scales between two signs of life.
constexpr int kScalesAtOnce = 8;

/// Labels that the core's 8-bit images hold beside 0 and 255, and what it gives to regions that
/// several others run into.
constexpr int kMostLabels = 254;
constexpr int kAmbiguous = 255;
constexpr int kWall = 255;

/// What is seen, in a rim of wall. At the map's own edge there is none: there the core's blur takes
/// what lies at the edge for what lies beyond it.
struct Walls {
    cv::Mat walls;  ///< `CV_32FC1`: 1 = wall, 0 = floor.
    cv::Rect view;  ///< Where the view lies in it.
};

Walls wallsOf(const cv::Mat& floor, const cv::Rect& view) {
    const cv::Point rim(kRim, kRim);
    const cv::Rect framed =
        cv::Rect(view.tl() - rim, view.br() + rim) & cv::Rect({0, 0}, floor.size());
    Walls walls{cv::Mat(framed.size(), CV_32FC1, cv::Scalar(1.0)), view - framed.tl()};
    walls.walls(walls.view).setTo(0.0, floor(view));
    return walls;
}

void append(const LabelsListResult& more, LabelsListResult& scales) {
    scales.sigma_list.insert(scales.sigma_list.end(), more.sigma_list.begin(),
                             more.sigma_list.end());
    scales.labels_list.insert(scales.labels_list.end(), more.labels_list.begin(),
                              more.labels_list.end());
    scales.ncc_list.insert(scales.ncc_list.end(), more.ncc_list.begin(), more.ncc_list.end());
}

/// `computeLabelsList` in portions, so that a run can be stopped and an overflow comes early.
LabelsListResult computeScales(const cv::Mat& walls, const Config& config,
                               FloorplanSegmenter& segmenter, const std::function<void()>& alive) {
    const cv::Mat dilated = ImageUtils::dilateBinary(walls, config.dilate_binary.kernel_size,
                                                     config.dilate_binary.iterations);
    Config::ComputeLabelsListConfig portion = config.compute_labels_list;
    LabelsListResult scales;
    for (int left = portion.max_iter; left > 0; left -= kScalesAtOnce) {
        alive();
        portion.max_iter = std::min(left, kScalesAtOnce);
        append(segmenter.computeLabelsList(dilated, walls, portion), scales);
        const int most = *std::max_element(scales.ncc_list.begin(), scales.ncc_list.end());
        if (most > kMostLabels) throw LabelOverflow(std::to_string(most) + " seeds at one scale");
        if (scales.ncc_list.back() <= 0 || portion.sigma_step == 0.0) break;
        portion.sigma_start = scales.sigma_list.back() + portion.sigma_step;
    }
    return scales;
}

/// As the tracking takes them: background 0, and a label above all others where no seed is.
void numberBackground(cv::Mat& seed_map, int ncc) {
    const auto above_last = static_cast<std::uint8_t>(static_cast<unsigned>(ncc) + 1U);
    for (int row = 0; row < seed_map.rows; ++row) {
        std::uint8_t* const label = seed_map.ptr<std::uint8_t>(row);
        for (int col = 0; col < seed_map.cols; ++col) {
            if (label[col] == kWall) {
                label[col] = 0;
            } else if (label[col] == 0) {
                label[col] = above_last;
            }
        }
    }
}

void requireFewRegions(const std::vector<std::map<int, int>>& mappers) {
    int most = 0;
    for (const auto& mapper : mappers) {
        for (const auto& entry : mapper) {
            if (entry.second != kAmbiguous) most = std::max(most, entry.second);
        }
    }
    if (most >= kMostLabels) {
        throw LabelOverflow(std::to_string(most) + " regions or more over all scales");
    }
}

/// By label, its first pixel in raster order.
std::map<int, cv::Point> firstPixels(const cv::Mat& labels) {
    std::map<int, cv::Point> first;
    for (int row = 0; row < labels.rows; ++row) {
        const std::uint8_t* const label = labels.ptr<std::uint8_t>(row);
        for (int col = 0; col < labels.cols; ++col) {
            const bool repeats = col > 0 && label[col] == label[col - 1];
            if (!repeats) first.emplace(label[col], cv::Point(col, row));
        }
    }
    return first;
}

/// By global label, where the region was seen first.
std::map<int, Birth> findBirths(const std::map<int, std::pair<int, int>>& lifespans,
                                const std::vector<std::map<int, int>>& mappers,
                                const std::vector<cv::Mat>& seed_maps) {
    std::map<int, Birth> births;
    for (std::size_t scale = 0; scale < mappers.size(); ++scale) {
        const std::map<int, cv::Point> first = firstPixels(seed_maps[scale]);
        for (const auto& [local, global] : mappers[scale]) {
            const auto lifespan = lifespans.find(global);
            if (lifespan == lifespans.end() || lifespan->second.second != static_cast<int>(scale)) {
                continue;
            }
            births[global] = {static_cast<int>(scale), first.at(local)};
        }
    }
    return births;
}

/// One seed for each region that lives long enough.
Seeds chooseSeeds(LabelsListResult& scales, const Config& config) {
    std::vector<cv::Mat>& seed_maps = scales.labels_list;
    for (std::size_t i = 0; i < seed_maps.size(); ++i) {
        numberBackground(seed_maps[i], scales.ncc_list[i]);
    }
    const auto mappers =
        OverSegmentProcessor::findConsistentGlobalLabels(scales.sigma_list, seed_maps, nullptr);
    requireFewRegions(mappers);
    const auto lifespans = OverSegmentProcessor::findLifespans(mappers, nullptr);
    const auto masks = OverSegmentProcessor::generateMapInitialSeeds(
        lifespans, mappers, seed_maps, config.over_segment.generate_map_initial_seeds, nullptr);
    const cv::Mat markers =
        OverSegmentProcessor::superposeMapInitialSeeds(masks, seed_maps, nullptr);
    Seeds seeds{{}, findBirths(lifespans, mappers, seed_maps)};
    markers.convertTo(seeds.labels, CV_8U);
    return seeds;
}

}  // namespace

bool isBefore(const Birth& a, const Birth& b) {
    return std::make_tuple(-a.scale, a.first.y, a.first.x) <
           std::make_tuple(-b.scale, b.first.y, b.first.x);
}

Seeds findSeeds(const cv::Mat& floor, const cv::Rect& view, const Config& config,
                FloorplanSegmenter& segmenter, const std::function<void()>& alive) {
    const Walls seen = wallsOf(floor, view);
    LabelsListResult scales = computeScales(seen.walls, config, segmenter, alive);
    if (scales.labels_list.size() < 2) return {floor(view) == 0, {}};  // No seed at all.
    try {
        Seeds seeds = chooseSeeds(scales, config);
        seeds.labels = seeds.labels(seen.view).clone();
        for (auto& birth : seeds.births) birth.second.first -= seen.view.tl();
        return seeds;
    } catch (const std::runtime_error& error) {
        if (kindOf(error) != NoRoom::kScalesEnded) throw;
        throw MapError(causeOfNoRoom(error));
    }
}

}  // namespace vorund::rooms
