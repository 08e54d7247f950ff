#include "floor_plan_segmenter/observation.h"
#include "internal/console.h"
#include "internal/text.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {

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
    const int most_scales = internal::mostScales(config);
    cv::Mat mask;
    mask_image.convertTo(mask, CV_8U);

    double sigma = config.sigma_start;
    for (int i = 0; i < most_scales; ++i) {
        const GaussianSeedsResult seeds = WatershedSegmenter::generateGaussianSeedsSkimage(
            image, mask, sigma, config.generate_gaussian_seeds_skimage, debugger_);
        internal::consoleLine(LogLevel::INFO, "[computeLabelsList] iter: " + std::to_string(i) +
                                                  ", sigma: " + internal::fixedText(sigma) +
                                                  ", ncc: " + std::to_string(seeds.ncc));
        if (overflow == Overflow::kFail && seeds.ncc > internal::kMostLabels) {
            throw LabelOverflow(std::to_string(seeds.ncc) + " seeds at sigma " +
                                internal::fixedText(sigma) + ", at most " +
                                std::to_string(internal::kMostLabels) + " can be told apart");
        }
        result.sigma_list.push_back(sigma);
        result.labels_list.push_back(seeds.labels.clone());
        result.ncc_list.push_back(seeds.ncc);
        internal::observe(observer, kStageScales, i + 1, most_scales);
        sigma += config.sigma_step;
        // The scale without a seed stays in the lists: the tracking starts from it.
        if (seeds.ncc <= 0) break;
    }
    return result;
}

}  // namespace vorund
