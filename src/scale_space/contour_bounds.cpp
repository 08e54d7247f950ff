#include "scale_space/contour_bounds.h"

#include <algorithm>
#include <cmath>

#include "scale_space/exact_blur.h"
#include "scale_space/interpolation.h"

namespace vorund::internal {
namespace {

/// Of the pyramid: what is cut off its kernels, aliasing, and rounding in single precision.
constexpr double kPyramidError = 1e-5;

double normalDistribution(double x) {
    return 0.5 * std::erfc(-x / std::sqrt(2.0));
}

/// The inverse of `normalDistribution`, by bisection: it is called twice per scale.
double normalQuantile(double probability) {
    double low = -9.0;
    double high = 9.0;
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        (normalDistribution(middle) < probability ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

/// The part of a Gaussian's weight, in the plane, that lies outside of the kernel.
double weightLeftOut(double sigma) {
    const double reach = (gaussianKernelSize(sigma) / 2 + 0.5) / sigma;
    // Pixels stand for the width of one: close enough, from sigma 4, to two parts in a thousand.
    const double along_one_axis = 1.01 * 2.0 * normalDistribution(-reach);
    return 1.0 - (1.0 - along_one_axis) * (1.0 - along_one_axis);
}

}  // namespace

ContourBounds::ContourBounds(double sigma, double threshold, int spacing)
    // A map of pixels is one of values from 0 to 1 only once it is blurred by a pixel or so.
    : step_(1.0 / std::sqrt(sigma * sigma - 1.0)),
      error_(kPyramidError + interpolationError(sigma / spacing)) {
    const double left_out = weightLeftOut(sigma);
    low_ = normalQuantile(threshold * (1.0 - left_out));
    high_ = normalQuantile(threshold * (1.0 - left_out) + left_out);
}

float ContourBounds::surelyAtMost(double distance) const {
    return static_cast<float>(normalDistribution(low_ - distance * step_) - error_);
}

float ContourBounds::surelyAbove(double distance) const {
    return static_cast<float>(normalDistribution(high_ + distance * step_) + error_);
}

}  // namespace vorund::internal
