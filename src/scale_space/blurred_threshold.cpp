#include "scale_space/blurred_threshold.h"

#include <utility>

#include "scale_space/contour_bounds.h"
#include "scale_space/contour_search.h"

namespace vorund::internal {
namespace {

/// Thresholds nearer to 0 or 1 lie where the bounds say nothing.
constexpr double kLeastContrast = 1e-3;

/// Of the pixels of a map: when single pixels have cost as much as this part of a blur of the
/// whole, the scale is blurred as a whole after all.
constexpr double kMostCost = 0.5;

}  // namespace

BlurredThreshold::BlurredThreshold(const cv::Mat& map, double threshold)
    : map_(map), threshold_(static_cast<float>(threshold)), pyramid_(map) {}

PixelRuns BlurredThreshold::atMostThreshold(double sigma) {
    const double threshold = static_cast<double>(threshold_);
    const bool bounded = threshold >= kLeastContrast && threshold <= 1.0 - kLeastContrast;
    const int level = coarsestLevel(sigma);
    const bool plane = map_.rows > 1 && map_.cols > 1;
    if (level > 0 && bounded && plane) {
        std::optional<PixelRuns> found = fromPyramid(sigma, level);
        if (found) return std::move(*found);
    }
    return fromWholeBlur(sigma);
}

PixelRuns BlurredThreshold::fromWholeBlur(double sigma) {
    gaussianBlur(map_, blurred_, sigma);
    return pixelsNotAbove(blurred_, static_cast<double>(threshold_));
}

std::optional<PixelRuns> BlurredThreshold::fromPyramid(double sigma, int level) {
    if (!edges_) edges_.emplace(map_);
    const cv::Mat& nodes = pyramid_.blurred(sigma, level);
    ExactBlur exact(*edges_, sigma, threshold_);
    const ContourBounds bounds(sigma, static_cast<double>(threshold_), 1 << level);
    return ContourSearch(nodes, level, bounds, exact, map_.size())
        .run(kMostCost * static_cast<double>(map_.total()));
}

}  // namespace vorund::internal
