#include "vorund/floorplan_segmenter.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "floor_plan_segmenter/observation.h"
#include "internal/console.h"
#include "internal/require.h"
#include "scale_space/seed_scales.h"
#include "vorund/ridge_filter.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {
namespace {

constexpr int kUnreached = 255;       // In label images: no room reached the pixel.
constexpr int kBackgroundSeed = 255;  // In seeds: the basin of walls and outside.

void tellOfAlignment(bool wanted) {
    if (wanted) {
        internal::consoleLine(LogLevel::WARN, "Map alignment is configured but not implemented.");
    } else {
        internal::consoleLine(LogLevel::INFO, "Map alignment is skipped.");
    }
}

/// Lines, and rooms that happen to be numbered 255, are flooded from the rooms beside them.
cv::Mat seedsBetweenRooms(const cv::Mat& over_segmented, const cv::Mat& denoised) {
    cv::Mat seeds(over_segmented.size(), CV_32SC1);
    for (int row = 0; row < seeds.rows; ++row) {
        const std::uint8_t* const label = over_segmented.ptr<std::uint8_t>(row);
        const float* const wall = denoised.ptr<float>(row);
        std::int32_t* const seed = seeds.ptr<std::int32_t>(row);
        for (int col = 0; col < seeds.cols; ++col) {
            const int room = label[col] == kUnreached ? 0 : label[col];
            seed[col] = wall[col] == 1.0F ? kBackgroundSeed : room;
        }
    }
    return seeds;
}

void swapBackgroundAndUnreached(cv::Mat& labels) {
    for (int row = 0; row < labels.rows; ++row) {
        std::uint8_t* const label = labels.ptr<std::uint8_t>(row);
        for (int col = 0; col < labels.cols; ++col) {
            if (label[col] == 0) {
                label[col] = kUnreached;
            } else if (label[col] == kBackgroundSeed) {
                label[col] = 0;
            }
        }
    }
}

std::ptrdiff_t countRooms(const cv::Mat& labels) {
    std::array<bool, 256> seen{};
    for (int row = 0; row < labels.rows; ++row) {
        const std::uint8_t* const label = labels.ptr<std::uint8_t>(row);
        for (int col = 0; col < labels.cols; ++col) seen[label[col]] = true;
    }
    seen[0] = false;
    seen[kUnreached] = false;
    return std::count(seen.begin(), seen.end(), true);
}

}  // namespace

FloorplanSegmenter::FloorplanSegmenter(const Config& config, std::shared_ptr<Debugger> debugger)
    : config_(config), debugger_(std::move(debugger)) {
    internal::require(debugger_ != nullptr, "FloorplanSegmenter: debugger cannot be null");
}

cv::Mat FloorplanSegmenter::doSegment(const cv::Mat& raw_image) {
    return doSegment(raw_image, StageObserver());
}

cv::Mat FloorplanSegmenter::doSegment(const cv::Mat& raw_image, const StageObserver& observer) {
    return doSegment(raw_image, observer, Overflow::kSaturate);
}

cv::Mat FloorplanSegmenter::doSegmentExact(const cv::Mat& raw_image,
                                           const StageObserver& observer) {
    return doSegment(raw_image, observer, Overflow::kFail);
}

cv::Mat FloorplanSegmenter::doSegment(const cv::Mat& raw_image, const StageObserver& observer,
                                      Overflow overflow) {
    const auto begin = [&](const char* stage) { internal::observe(observer, stage, 0, 1); };
    // No stage changes it.
    const cv::Mat& working = raw_image;
    debugger_->logInfo("Starting floor plan segmentation");
    tellOfAlignment(config_.alignment);

    begin(kStageDenoise);
    const auto [denoised, crop] = generateDenoisedAlone(working, config_.generate_denoised_alone);

    begin(kStageDilate);
    const cv::Mat dilated = ImageUtils::dilateBinary(denoised, config_.dilate_binary.kernel_size,
                                                     config_.dilate_binary.iterations);
    debugger_->logInfo("Generated denoised rank map and crop info");
    showStage("20cpp_binary_dilated", dilated);

    begin(kStageRidges);
    const cv::Mat ridges =
        RidgeFilter::generateRidgeMapMeijering(denoised, config_.generate_ridge_map_meijering);
    const cv::Mat boundary = RidgeFilter::generateBoundaryFromDilated(denoised);
    showStage("30cpp_ridges", ridges);
    showStage("31cpp_boundary", boundary);

    const auto [over_segmented, max_label] =
        overSegmentAtScales(dilated, denoised, ridges, observer, overflow);
    debugger_->logInfo("Completed over-segmentation");
    showStage("54cpp_over_segmented", over_segmented);

    begin(kStageFill);
    const cv::Mat filled = fillBetweenRooms(over_segmented, denoised, boundary);

    begin(kStageRestore);
    const cv::Mat uncropped = ImageUtils::uncropBackground(filled, crop, cv::Scalar(0));
    const cv::Mat rooms = ImageUtils::remapBorder(uncropped, max_label, kUnreached);
    debugger_->logInfo("Final segmentation completed");
    showStage("90cpp_final_segmented_map", rooms);
    debugger_->logInfo("Segment finish with " + std::to_string(countRooms(rooms)) + " regions");

    internal::observe(observer, kStageFinished, 1, 1);
    return rooms;
}

std::pair<cv::Mat, int> FloorplanSegmenter::overSegmentAtScales(const cv::Mat& dilated,
                                                                const cv::Mat& denoised,
                                                                const cv::Mat& ridges,
                                                                const StageObserver& observer,
                                                                Overflow overflow) {
    internal::observe(observer, kStageScales, 0, internal::mostScales(config_.compute_labels_list));
    if (debugger_->takesImages()) {
        const LabelsListResult scales =
            computeScales(dilated, denoised, config_.compute_labels_list, observer, overflow);
        internal::observe(observer, kStageOverSegment, 0, 1);
        return growFromSeeds(ridges, scales, config_.over_segment, overflow);
    }
    // Without pictures to draw, the seeds of a scale need no image.
    const internal::SeedScales seeds = findSeeds(dilated, denoised, observer, overflow);
    internal::observe(observer, kStageOverSegment, 0, 1);
    return growFromSeeds(ridges, seeds, overflow);
}

cv::Mat FloorplanSegmenter::fillBetweenRooms(const cv::Mat& over_segmented, const cv::Mat& denoised,
                                             const cv::Mat& boundary) {
    debugger_->logInfo("Starting boundary filling with second watershed");
    cv::Mat seeds = seedsBetweenRooms(over_segmented, denoised);
    showStage("55cpp_boundary_fill_seeds", seeds);

    const cv::Mat flooded = WatershedSegmenter::executeSkimageWatershed(
        boundary, seeds, config_.over_segment.create_watershed_segment_skimage.connectivity, false);
    cv::Mat filled;
    flooded.convertTo(filled, CV_8U);
    swapBackgroundAndUnreached(filled);
    debugger_->logInfo("Completed boundary filling");
    showStage("56cpp_boundary_filled_segments", filled);
    return filled;
}

void FloorplanSegmenter::showStage(const std::string& name, const cv::Mat& image) {
    debugger_->showAndWrite(name, image, name + ".png", false);
}

}  // namespace vorund
