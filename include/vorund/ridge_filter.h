#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "vorund/config.h"
#include "vorund/export.h"

namespace vorund {

/// Ridge strength of a floor map, after E. Meijering et al., "Design and validation of a tool for
/// neurite tracing and analysis in fluorescence microscopy images", Cytometry A 58 (2004), on
/// Hessians of Gaussian derivatives, for dark lines: narrow floor between walls responds.
namespace RidgeFilter {

/// OpenCV's border constant for a mode: "reflect" is `BORDER_REFLECT_101`, "mirror"
/// `BORDER_REFLECT`, "constant", "nearest" `BORDER_REPLICATE`, "wrap". Any other name, after a
/// warning on standard error, is `BORDER_REFLECT_101`.
/// @note OpenCV's separable filter does not support `BORDER_WRAP` and throws.
VORUND_EXPORT int getCvBorderType(const std::string& mode);

/// A sampled Gaussian (order 0) or its first or second derivative, as a column of `CV_32F` with
/// 2r + 1 rows: r = 8 sigma, or 100 sigma for sigma <= 1, truncated. It is not normalised. Any
/// other order gives zeros.
/// @param size  Not used; the length follows from `sigma`.
/// @throws std::runtime_error  if `sigma` is not a number or above 125000.
VORUND_EXPORT cv::Mat getGaussianKernel1D(int size, double sigma, int order);

/// Eigenvalues `lambda1` >= `lambda2` of the symmetric matrix [[a, b], [b, c]].
VORUND_EXPORT void computeEigenvalues2x2Sorted(float a, float b, float c, float& lambda1,
                                               float& lambda2);

/// Ridge strength: the largest response over the scales, each scaled to a maximum of 1.
/// @param image  `CV_32FC1` with 0 to 1, or `CV_8UC1` with 0 to 255; one channel.
/// Other depths are taken as they are, unscaled.
/// @return `CV_32FC1` of the same size, values 0 to 1; all 0 if no scale is positive.
/// @throws std::runtime_error  for a scale that `getGaussianKernel1D` rejects.
/// @throws cv::Exception       for the mode "wrap", see `getCvBorderType`.
VORUND_EXPORT cv::Mat generateRidgeMapMeijering(
    const cv::Mat& image, const Config::GenerateRidgeMapMeijeringConfig& config);

/// The inner boundary of the wall regions of a binary map: 1 on wall pixels with floor among their
/// eight neighbours, else 0. The edge of the image makes no boundary.
/// @param image  `CV_32FC1` with 0 and 1, or `CV_8UC1` with 0 and 255; not empty.
/// @return `CV_32FC1` of the same size.
/// @throws std::runtime_error  if the image is empty.
VORUND_EXPORT cv::Mat generateBoundaryFromDilated(const cv::Mat& image);

}  // namespace RidgeFilter
}  // namespace vorund
