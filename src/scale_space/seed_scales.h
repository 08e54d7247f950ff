#pragma once

#include <cstddef>
#include <map>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "runs/pixel_runs.h"
#include "runs/run_components.h"
#include "seed_inheritance.h"
#include "seed_selection.h"

namespace vorund::internal {

/// The seeds of one Gaussian scale.
struct SeedScale {
    double sigma;
    PixelRuns runs;
    RunComponents components;

    /// The seed at a pixel, 0 if there is none.
    int labelAt(int row, int col) const;
};

/// The seeds of all scales, and the map's background, which overrides them. Equal to a series of
/// seed maps with up to 254 seeds in each, but as large as its contours only.
///
/// As in the seed maps that the tracking takes, each scale has its seeds as labels 1, 2, ... and
/// one above the last of them for the other pixels, while the background is 0.
class SeedScales {
 public:
    /// @param background  `CV_8UC1`, not 0 = background.
    explicit SeedScales(cv::Mat background) : background_(std::move(background)) {}

    /// Adds a scale whose seeds are the components of `pixels`.
    void add(double sigma, PixelRuns pixels);
    const std::vector<SeedScale>& scales() const { return scales_; }

    /// `OverSegmentProcessor::findConsistentGlobalLabels`, with its errors and what it prints.
    /// @param any_number  See `globalLabels`: else more than 254 regions are confused.
    std::vector<LabelMap> findConsistentGlobalLabels(bool any_number = false) const;

    /// The `CV_32SC1` markers that seeds and background make, as
    /// `OverSegmentProcessor::superposeMapInitialSeeds`.
    cv::Mat superpose(const std::map<int, ChosenSeed>& seeds) const;

    /// One scale as the `CV_8UC1` seed map of `GaussianSeedsResult`.
    cv::Mat seedMap(std::size_t scale) const;

 private:
    /// For each seed that the background leaves something of, its first pixel.
    std::map<int, cv::Point> firstPixels(const SeedScale& scale) const;
    /// Whether there are pixels of neither seeds nor background.
    bool hasRest(const SeedScale& scale) const;
    int countValues(const SeedScale& scale) const;

    cv::Mat background_;
    std::vector<SeedScale> scales_;
};

}  // namespace vorund::internal
