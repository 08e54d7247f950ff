#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "vorund/config.h"
#include "vorund/debugger.h"
#include "vorund/export.h"
#include "vorund/image_utils.h"

namespace vorund {

namespace internal {
class SeedScales;
}

/// Seeds of all Gaussian scales. Entry i of each list belongs to scale i; `extra_list` is empty.
struct LabelsListResult {
    std::vector<double> sigma_list;    ///< Standard deviations. [pixels]
    std::vector<cv::Mat> labels_list;  ///< `CV_8UC1` seed maps, see `GaussianSeedsResult`.
    std::vector<int> ncc_list;         ///< Numbers of seeds.
    std::vector<cv::Mat> extra_list;
};

/// Thrown by `doSegment` when its observer asks to stop.
class VORUND_EXPORT Cancelled : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Thrown by `doSegmentExact` for a map with more regions than 8-bit labels tell apart.
class VORUND_EXPORT LabelOverflow : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Hears how far `doSegment` is, on the caller's thread: before each stage with `done` 0, after
/// each Gaussian scale with the number of scales done (`total` is the most there can be; the
/// series mostly ends earlier), and at the end as `kStageFinished` with `done` 1. Other stages
/// have a `total` of 1. When it returns false the run is cancelled.
using StageObserver = std::function<bool(const std::string& stage, int done, int total)>;

/// The stages of `doSegment`, in their order, and its end.
inline constexpr char kStageDenoise[] = "denoise";
inline constexpr char kStageDilate[] = "dilate";
inline constexpr char kStageRidges[] = "ridges";
inline constexpr char kStageScales[] = "scales";
inline constexpr char kStageOverSegment[] = "over-segment";
inline constexpr char kStageFill[] = "fill";
inline constexpr char kStageRestore[] = "restore";
inline constexpr char kStageFinished[] = "finished";

/// Divides a floor map into rooms. It keeps a copy of its configuration and a share of its
/// debugger, and changes neither; one object may serve several threads, and so may one debugger
/// with windows and image files switched off (the runs would write the same files).
class VORUND_EXPORT FloorplanSegmenter {
 public:
    /// @throws std::runtime_error  if `debugger` is empty.
    FloorplanSegmenter(const Config& config, std::shared_ptr<Debugger> debugger);

    /// The whole pipeline: denoised map, ridges, seeds at all scales, over-segmentation, filling,
    /// and the label image at the size of the map.
    /// @param raw_image  `CV_32FC1`, values 0 to 1: high = wall, obstacle or outside, low = floor.
    ///                   Left as it is.
    /// @return `CV_8UC1` of the same size: 0 = background, 1 to 254 = rooms, 255 = no room reached
    ///         the pixel.
    /// @throws std::runtime_error  for an image of another type, one without content, and whatever
    ///         else a stage rejects.
    /// @throws cv::Exception  where OpenCV rejects a setting or lacks memory.
    /// @note The largest label of the over-segmentation becomes 255 too. It is 255 already where a
    ///       line or a pixel out of reach is left, and the outermost pixels are always out of
    ///       reach; a map whose outermost pixels all carry seeds would lose a room.
    cv::Mat doSegment(const cv::Mat& raw_image);

    /// The same with an observer for progress, timings and cancelling; an empty one is none.
    /// @throws Cancelled  when the observer returns false; nothing is left behind. What the
    ///         observer throws passes through.
    cv::Mat doSegment(const cv::Mat& raw_image, const StageObserver& observer);

    /// The same bytes as `doSegment`, or an error where 8 bits do not hold the map: where a scale
    /// has more than 254 seeds `doSegment` takes those above for background, and of the regions
    /// that it follows over the scales it loses the 255th.
    /// @throws LabelOverflow  with the numbers; otherwise as `doSegment`.
    cv::Mat doSegmentExact(const cv::Mat& raw_image, const StageObserver& observer = {});

    /// Crops the map to its content, makes it binary and removes small regions of floor, then of
    /// wall.
    /// @param raw_image  `CV_32FC1`, values 0 to 1, not empty.
    /// @return `CV_32FC1` of the crop's size, 1 = wall or outside, 0 = floor; and the crop.
    /// @throws std::runtime_error  for an image of another type, one without content, and one in
    ///         which no region is found.
    std::pair<cv::Mat, CropInfo> generateDenoisedAlone(
        const cv::Mat& raw_image, const Config::GenerateDenoisedAloneConfig& config);

    /// Seeds at Gaussian scales of growing width, until one has no seed left; that one is the last
    /// of the lists.
    /// @param image       `CV_32FC1`, values 0 to 1, walls high: the map to blur.
    /// @param mask_image  Same size, one channel; not 0 = background.
    /// @throws std::runtime_error, cv::Exception  as `generateGaussianSeedsSkimage`.
    LabelsListResult computeLabelsList(const cv::Mat& image, const cv::Mat& mask_image,
                                       const Config::ComputeLabelsListConfig& config);

    /// Tracks the seeds over the scales, chooses one per region and floods the ridge map from them.
    /// @param ridge_image  `CV_32FC1`: the cost.
    /// @param labels       Seeds of all scales. Their label images are renumbered in place: do not
    ///                     use them afterwards.
    /// @return `CV_8UC1` label image, 0 = background, 255 = line or out of reach; and its largest
    ///         value.
    /// @throws std::runtime_error  if there is no scale, if the lists differ in length, if a label
    ///         image is not `CV_8UC1`, and whatever the tracking rejects.
    std::pair<cv::Mat, int> overSegment(const cv::Mat& ridge_image, const LabelsListResult& labels,
                                        const Config::OverSegmentConfig& config);

    /// The seeds that `doSegment` floods a denoised map from, for any number of regions.
    /// @param denoised  `CV_32FC1` as from `generateDenoisedAlone`.
    /// @param observer  Hears of the scales.
    /// @return `CV_32SC1`: 0 = floor without a seed, 255 = wall, other values = seeds.
    /// @throws std::runtime_error  as `overSegment`. @throws Cancelled  as `doSegment`.
    cv::Mat findSeedMarkers(const cv::Mat& denoised, const StageObserver& observer = {});

 private:
    /// What becomes of labels above 254.
    enum class Overflow { kSaturate, kFail };

    cv::Mat doSegment(const cv::Mat& raw_image, const StageObserver& observer, Overflow overflow);
    std::pair<cv::Mat, int> overSegmentAtScales(const cv::Mat& dilated, const cv::Mat& denoised,
                                                const cv::Mat& ridges,
                                                const StageObserver& observer, Overflow overflow);
    std::pair<cv::Mat, int> growFromSeeds(const cv::Mat& ridge_image,
                                          const LabelsListResult& labels,
                                          const Config::OverSegmentConfig& config,
                                          Overflow overflow);
    std::pair<cv::Mat, int> growFromSeeds(const cv::Mat& ridge_image,
                                          const internal::SeedScales& seeds, Overflow overflow);
    LabelsListResult computeScales(const cv::Mat& image, const cv::Mat& mask_image,
                                   const Config::ComputeLabelsListConfig& config,
                                   const StageObserver& observer, Overflow overflow);
    internal::SeedScales findSeeds(const cv::Mat& dilated, const cv::Mat& denoised,
                                   const StageObserver& observer, Overflow overflow);
    cv::Mat fillBetweenRooms(const cv::Mat& over_segmented, const cv::Mat& denoised,
                             const cv::Mat& boundary);
    void showStage(const std::string& name, const cv::Mat& image);

    Config config_;
    std::shared_ptr<Debugger> debugger_;
};

}  // namespace vorund
