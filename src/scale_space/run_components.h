#pragma once

#include <vector>

#include "scale_space/pixel_runs.h"

namespace vorund::internal {

/// Connected components of a set of pixels.
struct RunComponents {
    std::vector<int> label_of_run;  ///< 1 to `count`, in raster order of their first pixels.
    int count = 0;
};

/// The 4-connected components, numbered as `cv::connectedComponents` does.
///
/// Union-find over runs that overlap in neighbouring rows (L. He, Y. Chao and K. Suzuki, "A
/// run-based two-scan labeling algorithm", 2008).
RunComponents connectRuns(const PixelRuns& runs);

}  // namespace vorund::internal
