#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "scale_space/exact_blur.h"
#include "scale_space/gaussian_pyramid.h"
#include "runs/pixel_runs.h"

namespace vorund::internal {

/// Finds the pixels that stay at or below a threshold when a binary map is blurred: those of
/// `cv::GaussianBlur` of the whole map, bit for bit, at any number of scales.
///
/// Nearly all pixels are decided by bounds. A blurred map varies slowly, so that a few nodes of a
/// Gaussian pyramid say on which side of the threshold whole cells between them lie; along the
/// threshold's contour, single pixels are interpolated; and only what then still is too close to
/// call is summed up weight by weight. Small scales, and maps with too much contour for this to
/// pay, are blurred as a whole.
class BlurredThreshold {
 public:
    /// @param map        `CV_32FC1`, 0 and 1, not empty and no part of a larger image. It must
    ///                   outlive this object.
    /// @param threshold  Compared in single precision.
    BlurredThreshold(const cv::Mat& map, double threshold);

    /// @param sigma  Standard deviation of the Gaussian. [pixels]
    PixelRuns atMostThreshold(double sigma);

 private:
    PixelRuns fromWholeBlur(double sigma);
    std::optional<PixelRuns> fromPyramid(double sigma, int level);

    const cv::Mat& map_;
    float threshold_;
    GaussianPyramid pyramid_;
    std::optional<BinaryEdges> edges_;
    cv::Mat blurred_;  ///< Kept, since fresh memory costs about as much as a blur.
};

}  // namespace vorund::internal
