#pragma once

#include <functional>

#include "inputs.h"

namespace vorund::bench {

/// Work to be timed. It may be done any number of times and does the same each time.
struct Work {
    std::function<void()> run;
    /// Done before each run without being timed; may be empty.
    std::function<void()> prepare;
};

/// Makes the work of a stage ready for a map of that side. What it throws is told as the reason
/// why the size is left out.
using Preparation = std::function<Work(int side, Kind kind)>;

/// Adds a stage to the benchmarks, as STAGE/library/... and STAGE/plain/..., under all settings and
/// on maps of all sizes. `plain` may be empty.
void addStage(const char* stage, const Preparation& library, const Preparation& plain);

/// The stages, in their order.
void addImageStages();  ///< Load, denoise, dilate, ridges, boundary.
void addSeedStages();   ///< Scales, tracking, both floods.
void addRoomStages();   ///< Graph, merging, cuts, records.
void addWholeFlow();

}  // namespace vorund::bench
