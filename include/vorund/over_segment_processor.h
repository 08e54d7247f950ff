#pragma once

#include <map>
#include <memory>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "vorund/config.h"
#include "vorund/debugger.h"
#include "vorund/export.h"

namespace vorund {

/// Follows the seeds of the Gaussian scales from the coarsest to the finest, and chooses one seed
/// for every region that persists. Stateless. A debugger may be empty; it gets the pictures.
///
/// Seed maps are `CV_8UC1` of equal size, one per scale in rising order: 0 = no seed, the largest
/// value = background, other values = local labels.
class VORUND_EXPORT OverSegmentProcessor {
 public:
    /// Links the local labels of successive scales to global labels 1, 2, 3, ... A region hands
    /// its global label on to the finer region under its first pixel that is not over a zero; a
    /// region that several
    /// coarser ones run into gets 255, and hands that on. The global counter does not skip 255.
    /// The result is also printed on the plain output.
    /// @param sigmas  One scale per seed map; names the pictures.
    /// @return Per seed map, local label -> global label; empty for the last one.
    /// @throws std::runtime_error  if the lists are empty, of different lengths or of length 1; if
    ///         the last map holds more than two values; if a region lies wholly over zeros of the
    ///         next finer map; if a region's predecessor has no global label; if the maps are not
    ///         `CV_8UC1` of equal size.
    static std::vector<std::map<int, int>> findConsistentGlobalLabels(
        const std::vector<double>& sigmas, const std::vector<cv::Mat>& labels_map_list_in,
        std::shared_ptr<Debugger> debugger);

    /// First and last scale index at which each global label other than 255 lives.
    /// @throws std::runtime_error  if `mappers` is empty.
    static std::map<int, std::pair<int, int>> findLifespans(
        const std::vector<std::map<int, int>>& mappers, std::shared_ptr<Debugger> debugger);

    /// Cuts one seed per global label that lives for at least `filter_threshold` steps, from the
    /// scale that `method` chooses.
    /// @return Global label -> `CV_8UC1` mask, 1 on the seed, 0 elsewhere. Masks may overlap.
    /// @throws std::runtime_error  for an unknown method, if a label needs one.
    /// @throws std::out_of_range   if there are fewer seed maps than mappers and one is needed.
    static std::map<int, cv::Mat> generateMapInitialSeeds(
        const std::map<int, std::pair<int, int>>& lifespans,
        const std::vector<std::map<int, int>>& mappers,
        const std::vector<cv::Mat>& labels_map_list_in,
        const Config::GenerateMapInitialSeedsConfig& config, std::shared_ptr<Debugger> debugger);

    /// One marker image of all seeds; where they overlap the smaller global label wins.
    /// @return `CV_32S` of the size of the first seed map: global labels, 255 where the first seed
    ///         map is 0 and no seed lies, 0 elsewhere. A seed of label 255 is left out; a mask of
    ///         another size counts where it covers the map.
    /// @throws std::runtime_error  if there is no seed map.
    static cv::Mat superposeMapInitialSeeds(const std::map<int, cv::Mat>& map_initial_seeds,
                                            const std::vector<cv::Mat>& labels_map_list_in,
                                            std::shared_ptr<Debugger> debugger);
};

}  // namespace vorund
