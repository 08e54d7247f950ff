#include "crop_margins.h"
#include "internal/console.h"
#include "internal/require.h"
#include "runs/pixel_runs.h"
#include "small_components.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund {
namespace {

using DenoiseConfig = Config::GenerateDenoisedAloneConfig;

/// `ImageUtils::cropSingleInfo` of the binary map.
CropInfo cropOfContent(const cv::Mat& map, const DenoiseConfig& config) {
    const double threshold = config.binary_for_crop_make_binary.threshold;
    internal::PixelRuns content = internal::pixelsNotAbove(map, threshold);
    const bool floor_at_corner =
        content.size() > 0 && content.rowBegin(1) > 0 && content[0].begin == 0;
    if (floor_at_corner) content = internal::complement(content, map.cols);
    const cv::Rect bounds = internal::boundsOf(content);
    internal::require(!bounds.empty(), "cropSingleInfo expects a non-empty image.");
    return internal::marginsAround(bounds, map.size(), config.crop_single_info.padding);
}

/// The stages' binary images as runs, where nobody sees them.
cv::Mat denoise(const cv::Mat& cropped, const DenoiseConfig& config) {
    const auto& floor_config = config.components_out_remove_small_connected_components;
    const auto& wall_config = config.components_in_remove_small_connected_components;
    const auto floor = internal::pixelsNotAbove(cropped, config.binary_make_binary.threshold);
    internal::requireConnectivity(cv::Mat::zeros(1, 1, CV_8UC1), floor_config.connectivity);
    const auto clean_floor = internal::withoutSmallComponents(floor, floor_config);
    const auto walls = internal::complement(clean_floor, cropped.cols);
    internal::requireConnectivity(cv::Mat::zeros(1, 1, CV_8UC1), wall_config.connectivity);
    return internal::drawn(internal::withoutSmallComponents(walls, wall_config), cropped.size());
}

}  // namespace

std::pair<cv::Mat, CropInfo> FloorplanSegmenter::generateDenoisedAlone(
    const cv::Mat& raw_image, const Config::GenerateDenoisedAloneConfig& config) {
    internal::require(
        !raw_image.empty() && raw_image.type() == CV_32FC1,
        "generateDenoisedAlone: Input raw_image must be a single-channel 32-bit float.");

    const CropInfo crop = cropOfContent(raw_image, config);
    internal::consoleLine(LogLevel::INFO, "crop_info: " + std::to_string(crop.left) + ", " +
                                              std::to_string(crop.top) + ", " +
                                              std::to_string(crop.right) + ", " +
                                              std::to_string(crop.bottom));
    const cv::Mat rank_cropped = ImageUtils::cropBackground(raw_image, crop);
    internal::require(!rank_cropped.empty(), "generateDenoisedAlone: rank_cropped is empty.");
    if (!debugger_->takesImages()) return {denoise(rank_cropped, config), crop};

    debugger_->show("rank_cropped", rank_cropped);

    const cv::Mat walls =
        ImageUtils::makeBinary(rank_cropped, config.binary_make_binary.threshold, 1.0);
    showStage("10cpp_rank_binary", walls);
    const cv::Mat floor = ImageUtils::makeInvert(walls);
    showStage("11cpp_rank_inverted", floor);
    const cv::Mat clean_floor = ImageUtils::removeSmallConnectedComponents(
        floor, config.components_out_remove_small_connected_components);
    showStage("12cpp_rank_no_small_out", clean_floor);
    const cv::Mat filled_walls = ImageUtils::makeInvert(clean_floor);
    showStage("13cpp_rank_inverted", filled_walls);
    const cv::Mat denoised = ImageUtils::removeSmallConnectedComponents(
        filled_walls, config.components_in_remove_small_connected_components);
    showStage("14cpp_rank_denoised", denoised);
    return {denoised, crop};
}

}  // namespace vorund
