#pragma once

#include <algorithm>

#include "vorund/floorplan_segmenter.h"

namespace vorund::internal {

/// Labels that an 8-bit label image holds beside 0 and 255.
inline constexpr int kMostLabels = 254;

/// Tells the observer, if there is one. @throws Cancelled  when it asks to stop.
inline void observe(const StageObserver& observer, const char* stage, int done, int total) {
    if (observer && !observer(stage, done, total)) {
        throw Cancelled(std::string("doSegment: cancelled at stage ") + stage + ".");
    }
}

/// The length of the series of scales, unless one without a seed ends it earlier; perhaps 0.
inline int mostScales(const Config::ComputeLabelsListConfig& config) {
    return config.sigma_step != 0.0 ? std::max(config.max_iter, 0) : 1;
}

}  // namespace vorund::internal
