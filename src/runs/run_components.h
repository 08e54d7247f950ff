#pragma once

#include <vector>

#include "runs/pixel_runs.h"
#include "vorund/export.h"

namespace vorund::internal {

/// Connected components of a set of pixels.
struct RunComponents {
    std::vector<int> label_of_run;  ///< 1 to `count`, in raster order of their first pixels.
    int count = 0;
};

/// The 4- or 8-connected components, numbered as `cv::connectedComponents` numbers the 4-connected
/// ones.
///
/// Union-find over runs that overlap in neighbouring rows (L. He, Y. Chao and K. Suzuki, "A
/// run-based two-scan labeling algorithm", 2008).
VORUND_EXPORT RunComponents connectRuns(const PixelRuns& runs, int connectivity = 4);

/// The components' numbers of pixels, in the order of their labels.
VORUND_EXPORT std::vector<int> areasOf(const PixelRuns& runs, const RunComponents& components);

}  // namespace vorund::internal
