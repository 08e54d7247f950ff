#include "scale_space/blurred_threshold.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "scale_space/contour_bounds.h"
#include "scale_space/interpolation.h"

namespace vorund::internal {
namespace {

/// Thresholds nearer to 0 or 1 lie where the bounds say nothing.
constexpr double kLeastContrast = 1e-3;

/// Of the pixels of a map: when single pixels have cost as much as this part of a blur of the
/// whole, the scale is blurred as a whole after all.
constexpr double kMostCost = 0.5;

constexpr double kHalfDiagonal = 0.70711;  // Of a cell with sides of 1, rounded up.

enum class Side : std::uint8_t { kUndecided = 0, kAtMost = 1, kAbove = 2 };

/// A part of a row of cells of which all lie on the same side.
struct Stretch {
    Side side;
    int begin;  ///< In cells.
    int end;
};

/// One scale: the contour of the threshold between the nodes of a level.
class ContourSearch {
 public:
    ContourSearch(const cv::Mat& nodes, int level, const ContourBounds& bounds, ExactBlur& exact,
                  const cv::Size& map_size)
        : nodes_(nodes),
          level_(level),
          spacing_(1 << level),
          size_(map_size),
          exact_(exact),
          at_pixel_{bounds.surelyAtMost(0.0), bounds.surelyAbove(0.0)},
          in_cell_{bounds.surelyAtMost(kHalfDiagonal * spacing_),
                   bounds.surelyAbove(kHalfDiagonal * spacing_)},
          values_(static_cast<std::size_t>(nodes.cols)) {
        for (int i = 0; i < spacing_; ++i) {
            weights_.push_back(interpolationWeights(static_cast<double>(i) / spacing_));
        }
        for (int depth = 0; depth <= level; ++depth) {
            const double half = 0.5 * (1 << depth);
            in_row_.push_back({bounds.surelyAtMost(half), bounds.surelyAbove(half)});
        }
    }

    /// The pixels at or below the threshold, unless finding them costs more than `most`.
    std::optional<PixelRuns> run(double most) {
        PixelRuns found(size_.height);
        for (int row = 0; row < size_.height; row += spacing_) {
            findStretches(row / spacing_ + GaussianPyramid::kMargin);
            const int end = std::min(row + spacing_, size_.height);
            for (int inside = row; inside < end; ++inside) {
                for (const Stretch& stretch : stretches_) add(found, inside, stretch);
                found.closeRow();
            }
            if (exact_.cost() > most) return std::nullopt;
        }
        return found;
    }

 private:
    struct Limits {
        float at_most;
        float above;

        Side side(float value) const {
            if (value <= at_most) return Side::kAtMost;
            return value > above ? Side::kAbove : Side::kUndecided;
        }
        /// Of what lies between two points.
        Side side(float a, float b) const {
            if (a <= at_most && b <= at_most) return Side::kAtMost;
            return a > above && b > above ? Side::kAbove : Side::kUndecided;
        }
    };

    void findStretches(int node_row) {
        const float* const upper = nodes_.ptr<float>(node_row) + GaussianPyramid::kMargin;
        const float* const lower = nodes_.ptr<float>(node_row + 1) + GaussianPyramid::kMargin;
        const int cells = (size_.width + spacing_ - 1) / spacing_;
        stretches_.clear();
        Side left = in_cell_.side(upper[0], lower[0]);
        for (int cell = 0; cell < cells; ++cell) {
            const Side right = in_cell_.side(upper[cell + 1], lower[cell + 1]);
            const Side side = left == right ? left : Side::kUndecided;
            left = right;
            if (stretches_.empty() || stretches_.back().side != side) {
                stretches_.push_back({side, cell, cell});
            }
            stretches_.back().end = cell + 1;
        }
    }

    void add(PixelRuns& found, int row, const Stretch& stretch) {
        if (stretch.side == Side::kAtMost) {
            found.add(stretch.begin * spacing_, std::min(stretch.end * spacing_, size_.width));
        } else if (stretch.side == Side::kUndecided) {
            addUndecided(found, row, stretch);
        }
    }

    void addUndecided(PixelRuns& found, int row, const Stretch& stretch) {
        interpolateAlongColumns(row, stretch);
        for (int cell = stretch.begin; cell < stretch.end; ++cell) {
            const float* const node = values_.data() + cell + GaussianPyramid::kMargin;
            addPart(found, {row, cell * spacing_, node}, 0, level_, node[0], node[1]);
        }
    }

    /// The values of a row of pixels below the columns of nodes, as far as a stretch needs them.
    void interpolateAlongColumns(int row, const Stretch& stretch) {
        const InterpolationWeights& weights = weights_[static_cast<std::size_t>(row % spacing_)];
        const int node_row = row / spacing_ + GaussianPyramid::kMargin + kFirstNode;
        const int begin = stretch.begin + GaussianPyramid::kMargin + kFirstNode;
        const int end = stretch.end + GaussianPyramid::kMargin + kFirstNode + kInterpolationNodes;
        std::array<const float*, kInterpolationNodes> nodes{};
        for (int i = 0; i < kInterpolationNodes; ++i) {
            nodes[static_cast<std::size_t>(i)] = nodes_.ptr<float>(node_row + i);
        }
        // In groups that fit a register. The margin takes what the last one has too many.
        for (int col = begin; col < end; col += kGroup) {
            std::array<float, kGroup> sums{};
            for (std::size_t i = 0; i < nodes.size(); ++i) {
                for (std::size_t j = 0; j < sums.size(); ++j) {
                    sums[j] += weights[i] * nodes[i][static_cast<std::size_t>(col) + j];
                }
            }
            std::copy(sums.begin(), sums.end(), values_.begin() + col);
        }
    }

    /// Two neighbouring nodes of a row of pixels.
    struct Gap {
        int row;
        int col;            ///< Of the pixel at the first node.
        const float* node;  ///< The value at the first node, among those of the others.
    };

    /// Adds 2^depth pixels from the `begin`-th one of a gap on, which has the value `first`, up to
    /// one of the value `last`: all or none if these two can say so, else one half, then the other.
    void addPart(PixelRuns& found, const Gap& gap, int begin, int depth, float first, float last) {
        const int col = gap.col + begin;
        if (col >= size_.width) return;
        const Side side = depth == 0 ? at_pixel_.side(first)
                                     : in_row_[static_cast<std::size_t>(depth)].side(first, last);
        if (side == Side::kAbove) return;
        if (side == Side::kAtMost) {
            found.add(col, std::min(col + (1 << depth), size_.width));
        } else if (depth == 0) {
            if (exact_.isAtMostThreshold(gap.row, col)) found.add(col, col + 1);
        } else {
            const int middle = begin + (1 << (depth - 1));
            const float value = interpolateAlongRow(gap.node, middle);
            addPart(found, gap, begin, depth - 1, first, value);
            addPart(found, gap, middle, depth - 1, value, last);
        }
    }

    float interpolateAlongRow(const float* node, int pixel) const {
        const InterpolationWeights& weights = weights_[static_cast<std::size_t>(pixel)];
        float even = 0.0F;
        float odd = 0.0F;
        for (int i = 0; i < kInterpolationNodes; i += 2) {
            even += weights[static_cast<std::size_t>(i)] * node[i + kFirstNode];
            odd += weights[static_cast<std::size_t>(i + 1)] * node[i + 1 + kFirstNode];
        }
        return even + odd;
    }

    static constexpr int kGroup = 4;
    static constexpr int kFirstNode = 1 - kInterpolationNodes / 2;

    const cv::Mat& nodes_;
    int level_;
    int spacing_;
    cv::Size size_;
    ExactBlur& exact_;
    Limits at_pixel_;
    Limits in_cell_;
    std::vector<Limits> in_row_;                 ///< For two pixels 2^i apart.
    std::vector<InterpolationWeights> weights_;  ///< For each pixel between two nodes.
    std::vector<float> values_;
    std::vector<Stretch> stretches_;
};

}  // namespace

BlurredThreshold::BlurredThreshold(const cv::Mat& map, double threshold)
    : map_(map), threshold_(static_cast<float>(threshold)), pyramid_(map) {}

PixelRuns BlurredThreshold::atMostThreshold(double sigma) {
    const double threshold = static_cast<double>(threshold_);
    const bool bounded = threshold >= kLeastContrast && threshold <= 1.0 - kLeastContrast;
    const int level = coarsestLevel(sigma);
    const bool plane = map_.rows > 1 && map_.cols > 1;
    if (level > 0 && bounded && plane) {
        std::optional<PixelRuns> found = fromPyramid(sigma, level);
        if (found) return std::move(*found);
    }
    return fromWholeBlur(sigma);
}

PixelRuns BlurredThreshold::fromWholeBlur(double sigma) {
    gaussianBlur(map_, blurred_, sigma);
    PixelRuns found(blurred_.rows);
    for (int row = 0; row < blurred_.rows; ++row) {
        const float* const values = blurred_.ptr<float>(row);
        for (int col = 0; col < blurred_.cols;) {
            while (col < blurred_.cols && values[col] > threshold_) ++col;
            const int begin = col;
            while (col < blurred_.cols && !(values[col] > threshold_)) ++col;
            if (col > begin) found.add(begin, col);
        }
        found.closeRow();
    }
    return found;
}

std::optional<PixelRuns> BlurredThreshold::fromPyramid(double sigma, int level) {
    if (!edges_) edges_.emplace(map_);
    const cv::Mat nodes = pyramid_.blurred(sigma, level);
    ExactBlur exact(*edges_, sigma, threshold_);
    const ContourBounds bounds(sigma, static_cast<double>(threshold_), 1 << level);
    return ContourSearch(nodes, level, bounds, exact, map_.size())
        .run(kMostCost * static_cast<double>(map_.total()));
}

}  // namespace vorund::internal
