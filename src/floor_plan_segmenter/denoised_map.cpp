#include "internal/console.h"
#include "internal/require.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund {

std::pair<cv::Mat, CropInfo> FloorplanSegmenter::generateDenoisedAlone(
    const cv::Mat& raw_image, const Config::GenerateDenoisedAloneConfig& config) {
    internal::require(
        !raw_image.empty() && raw_image.type() == CV_32FC1,
        "generateDenoisedAlone: Input raw_image must be a single-channel 32-bit float.");

    const cv::Mat content =
        ImageUtils::makeBinary(raw_image, config.binary_for_crop_make_binary.threshold, 1.0);
    const CropInfo crop = ImageUtils::cropSingleInfo(content, config.crop_single_info.padding);
    internal::consoleLine(LogLevel::INFO, "crop_info: " + std::to_string(crop.left) + ", " +
                                              std::to_string(crop.top) + ", " +
                                              std::to_string(crop.right) + ", " +
                                              std::to_string(crop.bottom));
    const cv::Mat rank_cropped = ImageUtils::cropBackground(raw_image, crop);
    internal::require(!rank_cropped.empty(), "generateDenoisedAlone: rank_cropped is empty.");
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
