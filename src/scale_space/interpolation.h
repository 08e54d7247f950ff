#pragma once

#include <array>
#include <cstddef>

namespace vorund::internal {

/// Nodes on either side of a point that a value at the point is interpolated from, in all.
inline constexpr int kInterpolationNodes = 10;

using InterpolationWeights = std::array<float, kInterpolationNodes>;

/// Lagrange's weights of the nodes at -4, -3, ..., 5 for a point from 0 to 1.
InterpolationWeights interpolationWeights(double point);

/// How far interpolation in both directions is from the truth at most, for an image of values from
/// 0 to 1 that was blurred by a Gaussian.
/// @param sigma  Of the blur, from 2. [spacings of the nodes]
double interpolationError(double sigma);

}  // namespace vorund::internal
