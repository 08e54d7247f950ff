#include "scale_space/interpolation.h"

#include <cmath>

namespace vorund::internal {
namespace {

constexpr int kFirstNode = 1 - kInterpolationNodes / 2;

}  // namespace

InterpolationWeights interpolationWeights(double point) {
    InterpolationWeights weights{};
    for (int i = 0; i < kInterpolationNodes; ++i) {
        double weight = 1.0;
        for (int j = 0; j < kInterpolationNodes; ++j) {
            if (j != i) weight *= (point - (kFirstNode + j)) / (i - j);
        }
        weights[static_cast<std::size_t>(i)] = static_cast<float>(weight);
    }
    return weights;
}

double interpolationError(double sigma) {
    // In one direction: half the sum of what the interpolated weights of a Gaussian differ from its
    // own. The other direction adds its own error to what this one's weights make of the first.
    constexpr double kSumOfWeights = 2.1;
    const double in_one_direction = 5.5e-5 * std::pow(2.0 / sigma, 9.0);
    return (1.0 + kSumOfWeights) * in_one_direction;
}

}  // namespace vorund::internal
