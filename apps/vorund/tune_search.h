#pragma once

#include <functional>

#include "tune_space.h"

namespace vorund::app {

/// What is to be as large as possible.
using Merit = std::function<double(const TuneValues&)>;

/// Searches from a point on: the simplex method on subspaces (T. Rowan, "Functional stability
/// analysis of numerical algorithms", 1990), which needs no derivatives and stands plateaus, as a
/// merit has where settings change no room. It draws no random numbers: the same merit gives the
/// same values.
/// @param evaluations  Most calls of `merit`, at least 1; the first is at the start.
/// @return The best values; of equally good ones the first.
TuneValues searchBest(const TunePoint& start, int evaluations, const Merit& merit);

}  // namespace vorund::app
