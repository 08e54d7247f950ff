#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "scale_space/contour_bounds.h"
#include "scale_space/exact_blur.h"
#include "scale_space/interpolation.h"
#include "runs/pixel_runs.h"

namespace vorund::internal {

/// Finds the pixels at or below a threshold at one scale, between the nodes of a pyramid's level:
/// whole cells of four nodes first, then parts of pixel rows between two nodes, halved until they
/// are decided, and single pixels by exact sums where even that is too close to call.
class ContourSearch {
 public:
    /// @param nodes  Of `GaussianPyramid::blurred` at `level`. All arguments taken by reference
    ///               must outlive this object.
    ContourSearch(const cv::Mat& nodes, int level, const ContourBounds& bounds, ExactBlur& exact,
                  const cv::Size& map_size);

    /// @return Nothing where the exact sums have come to cost more than `most`.
    std::optional<PixelRuns> run(double most);

 private:
    /// As bits, so that points are on the same side where all of them share a bit.
    enum Side : std::uint8_t { kUndecided = 0, kAtMost = 1, kAbove = 2 };

    struct Limits {
        float at_most;
        float above;

        unsigned side(float value) const {
            return static_cast<unsigned>(value <= at_most) | static_cast<unsigned>(value > above)
                                                                 << 1U;
        }
    };

    /// A part of a row of cells of which all lie on the same side.
    struct Stretch {
        unsigned side;
        int begin;  ///< In cells.
        int end;
    };

    /// Two neighbouring nodes of a row of pixels.
    struct Gap {
        int row;
        int col;            ///< Of the pixel at the first node.
        const float* node;  ///< The value at the first node, among those of the others.
    };

    void findSidesOfNodes(int node_row, std::vector<std::uint8_t>& sides) const;
    void findStretches(int node_row);
    void add(PixelRuns& found, int row, const Stretch& stretch);
    void addUndecided(PixelRuns& found, int row, const Stretch& stretch);
    void addPart(PixelRuns& found, const Gap& gap, int begin, int depth, float first, float last);
    void interpolateAlongColumns(int row, const Stretch& stretch);
    float interpolateAlongRow(const float* node, int pixel) const;

    const cv::Mat& nodes_;
    int level_;
    int spacing_;
    cv::Size size_;
    int cells_across_;
    ExactBlur& exact_;
    Limits in_cell_;
    std::vector<Limits> in_row_;  ///< For two pixels 2^i apart.
    Limits at_pixel_;
    std::vector<InterpolationWeights> weights_;  ///< For each pixel between two nodes.
    std::vector<std::uint8_t> upper_sides_;      ///< Of the nodes above the row of cells.
    std::vector<std::uint8_t> lower_sides_;
    std::vector<std::uint8_t> cell_sides_;
    std::vector<Stretch> stretches_;
    std::vector<float> values_;  ///< A row of pixels, where columns of nodes cross it.
};

}  // namespace vorund::internal
