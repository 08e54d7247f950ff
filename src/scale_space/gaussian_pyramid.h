#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vorund::internal {

/// A map blurred by Gaussians and sampled on grids of nodes, coarser from level to level.
///
/// Level k has one node every h = 2^k pixels and holds the map blurred with sigma = h, which leaves
/// nothing that this spacing could not represent; and since a Gaussian followed by another is a
/// third one, a level stands in for the map wherever a wider blur is wanted (P. J. Burt and
/// E. H. Adelson, "The Laplacian pyramid as a compact image code", 1983; J. L. Crowley and
/// R. M. Stern, "Fast computation of the difference of low-pass transform", 1984). Around the map
/// its edge pixels count as repeated.
class GaussianPyramid {
 public:
    /// Nodes that each level has around those on the map. Beyond them the levels are constant
    /// outwards: the filters of all levels together reach over fewer than 9 nodes of the last one.
    static constexpr int kMargin = 12;

    /// @param map  `CV_32FC1`.
    explicit GaussianPyramid(const cv::Mat& map) : map_(map) {}

    /// The map blurred with a Gaussian of `sigma` pixels at the nodes of a level, up to 1e-6 for
    /// values from 0 to 1.
    /// @param level  >= 1, such that `sigma` is at least 2 * 2^level.
    /// @return `CV_32FC1`; the node at row i, column j lies on the pixel in row h (i - kMargin),
    ///         column h (j - kMargin). The nodes cover the map, and `kMargin` more on each side.
    ///         It holds until the next call.
    const cv::Mat& blurred(double sigma, int level);

 private:
    const cv::Mat& nodes(int level);

    cv::Mat map_;
    std::vector<cv::Mat> levels_;
    cv::Mat blurred_;
};

/// The coarsest level that holds what a blur with `sigma` leaves of a map; 0 if there is none.
int coarsestLevel(double sigma);

}  // namespace vorund::internal
