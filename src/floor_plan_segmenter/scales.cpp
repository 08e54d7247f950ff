#include "floor_plan_segmenter/observation.h"
#include "internal/console.h"
#include "internal/text.h"
#include "scale_space/blurred_threshold.h"
#include "scale_space/seed_scales.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {
namespace {

/// Calls `find_seeds(sigma)` scale by scale, until it finds none, and tells of their numbers.
template <class FindSeeds, class CheckCount>
void visitScales(const Config::ComputeLabelsListConfig& config, const StageObserver& observer,
                 const CheckCount& check_count, const FindSeeds& find_seeds) {
    const int most_scales = internal::mostScales(config);
    double sigma = config.sigma_start;
    for (int i = 0; i < most_scales; ++i) {
        const int ncc = find_seeds(sigma);
        internal::consoleLine(LogLevel::INFO, "[computeLabelsList] iter: " + std::to_string(i) +
                                                  ", sigma: " + internal::fixedText(sigma) +
                                                  ", ncc: " + std::to_string(ncc));
        check_count(sigma, ncc);
        internal::observe(observer, kStageScales, i + 1, most_scales);
        sigma += config.sigma_step;
        // The scale without a seed has its place in the series: the tracking starts from it.
        if (ncc <= 0) break;
    }
}

void requireFewSeeds(double sigma, int ncc) {
    if (ncc <= internal::kMostLabels) return;
    throw LabelOverflow(std::to_string(ncc) + " seeds at sigma " + internal::fixedText(sigma) +
                        ", at most " + std::to_string(internal::kMostLabels) +
                        " can be told apart");
}

}  // namespace

LabelsListResult FloorplanSegmenter::computeLabelsList(
    const cv::Mat& image, const cv::Mat& mask_image,
    const Config::ComputeLabelsListConfig& config) {
    return computeScales(image, mask_image, config, StageObserver(), Overflow::kSaturate);
}

LabelsListResult FloorplanSegmenter::computeScales(const cv::Mat& image, const cv::Mat& mask_image,
                                                   const Config::ComputeLabelsListConfig& config,
                                                   const StageObserver& observer,
                                                   Overflow overflow) {
    LabelsListResult result;
    cv::Mat mask;
    mask_image.convertTo(mask, CV_8U);
    const auto check_count = [&](double sigma, int ncc) {
        if (overflow == Overflow::kFail) requireFewSeeds(sigma, ncc);
    };
    visitScales(config, observer, check_count, [&](double sigma) {
        const GaussianSeedsResult seeds = WatershedSegmenter::generateGaussianSeedsSkimage(
            image, mask, sigma, config.generate_gaussian_seeds_skimage, debugger_);
        result.sigma_list.push_back(sigma);
        result.labels_list.push_back(seeds.labels);
        result.ncc_list.push_back(seeds.ncc);
        return seeds.ncc;
    });
    return result;
}

internal::SeedScales FloorplanSegmenter::findSeeds(const cv::Mat& dilated, const cv::Mat& denoised,
                                                   const StageObserver& observer,
                                                   Overflow overflow) {
    const Config::ComputeLabelsListConfig& config = config_.compute_labels_list;
    cv::Mat background;
    denoised.convertTo(background, CV_8U);
    internal::SeedScales seeds(background);
    internal::BlurredThreshold blurred(dilated, config.generate_gaussian_seeds_skimage.threshold);
    const auto check_count = [&](double sigma, int ncc) {
        if (overflow == Overflow::kFail) requireFewSeeds(sigma, ncc);
    };
    visitScales(config, observer, check_count, [&](double sigma) {
        seeds.add(sigma, blurred.atMostThreshold(sigma));
        return seeds.scales().back().components.count;
    });
    return seeds;
}

}  // namespace vorund
