#pragma once

#include <opencv2/core.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "support/plan_generator.h"
#include "vorund/config.h"

namespace vorund::test {

/// A small generated plan of one family.
struct VariedPlan {
    std::string family;
    PlanOptions options;
};

/// How GoogleTest prints it.
inline void PrintTo(const VariedPlan& plan, std::ostream* stream) {
    *stream << plan.family;
}

/// Settings under a name.
struct NamedConfig {
    std::string name;
    Config config;
};

inline void PrintTo(const NamedConfig& config, std::ostream* stream) {
    *stream << config.name;
}

/// Offices bare, furnished, ragged, with fans and glass, turned, drawn by hand; from one room to a
/// dozen.
inline std::vector<VariedPlan> variedPlans() {
    const auto plan = [](const char* family, std::uint64_t seed, int width_mm, int height_mm) {
        VariedPlan varied{family, {}};
        varied.options.seed = seed;
        varied.options.width_mm = width_mm;
        varied.options.height_mm = height_mm;
        return varied;
    };
    std::vector<VariedPlan> plans{
        plan("tiny", 1, 3500, 4200),    plan("row", 2, 9000, 4800),
        plan("bare", 3, 13000, 9000),   plan("furnished", 4, 12000, 9500),
        plan("ragged", 5, 11000, 9000), plan("seenThrough", 6, 12000, 8500),
        plan("turned", 7, 10000, 8000), plan("drawn", 8, 9500, 12000)};
    plans[3].options.furniture_percent = 60;
    plans[4].options.noise_percent = 60;
    plans[5].options.fans_percent = 40;
    plans[5].options.glass_percent = 40;
    plans[6].options.rotation_tenths_deg = 170;
    plans[6].options.furniture_percent = 30;
    plans[7].options.outside = Outside::kSolid;
    return plans;
}

/// The working map of a plan: 1 = wall or unknown.
inline cv::Mat workingMap(const Plan& plan) {
    const cv::Mat outside = plan.map != kMapFree;
    cv::Mat map;
    outside.convertTo(map, CV_32F, 1.0 / 255.0);
    return map;
}

/// Walls widened by one pixel on either side, seeds that come near them, short-lived ones left out.
inline Config thinWalls() {
    Config config;
    config.dilate_binary = {3, 1};
    config.compute_labels_list.generate_gaussian_seeds_skimage.threshold = 0.04;
    config.over_segment.generate_map_initial_seeds.filter_threshold = 1;
    return config;
}

/// The defaults; thin walls with large seeds; and whatever else changes a stage's way.
inline std::vector<NamedConfig> variedConfigs() {
    NamedConfig diagonal{"diagonal", {}};
    diagonal.config.over_segment.create_watershed_segment_skimage.connectivity = 8;
    diagonal.config.over_segment.generate_map_initial_seeds.method = "middle";
    diagonal.config.generate_ridge_map_meijering = {"nearest", {0.0, 1.0, 3.0}};

    NamedConfig fine{"fineScales", {}};
    fine.config.compute_labels_list.sigma_start = 0.7;
    fine.config.compute_labels_list.sigma_step = 0.6;
    fine.config.dilate_binary = {5, 1};
    fine.config.generate_denoised_alone.crop_single_info.padding = 2;
    fine.config.generate_denoised_alone.components_in_remove_small_connected_components.min_size =
        20;
    return {{"defaults", {}}, {"thinWalls", thinWalls()}, diagonal, fine};
}

}  // namespace vorund::test
