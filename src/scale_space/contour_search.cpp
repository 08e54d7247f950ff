#include "scale_space/contour_search.h"

#include <algorithm>
#include <cstring>

#include "scale_space/gaussian_pyramid.h"

namespace vorund::internal {
namespace {

constexpr double kHalfDiagonal = 0.70711;  // Of a cell with sides of 1, rounded up.
constexpr int kMargin = GaussianPyramid::kMargin;
constexpr int kFirstNode = 1 - kInterpolationNodes / 2;
constexpr int kGroup = 4;  // Floats that fit a register.
constexpr int kWord = 8;   // Cells that are compared at once.

/// Where a sequence of equal bytes ends.
int endOfEqual(const std::uint8_t* bytes, int begin, int count) {
    int end = begin + 1;
    while (end + kWord <= count && std::memcmp(bytes + end, bytes + end - 1, kWord) == 0) {
        end += kWord;
    }
    while (end < count && bytes[end] == bytes[begin]) ++end;
    return end;
}

}  // namespace

ContourSearch::ContourSearch(const cv::Mat& nodes, int level, const ContourBounds& bounds,
                             ExactBlur& exact, const cv::Size& map_size)
    : nodes_(nodes),
      level_(level),
      spacing_(1 << level),
      size_(map_size),
      cells_across_((map_size.width + spacing_ - 1) / spacing_),
      exact_(exact),
      in_cell_{bounds.surelyAtMost(kHalfDiagonal * spacing_),
               bounds.surelyAbove(kHalfDiagonal * spacing_)},
      at_pixel_{bounds.surelyAtMost(0.0), bounds.surelyAbove(0.0)},
      upper_sides_(static_cast<std::size_t>(cells_across_) + 1),
      lower_sides_(upper_sides_.size()),
      cell_sides_(upper_sides_.size()),
      values_(static_cast<std::size_t>(nodes.cols)) {
    for (int i = 0; i < spacing_; ++i) {
        weights_.push_back(interpolationWeights(static_cast<double>(i) / spacing_));
    }
    for (int depth = 0; depth <= level; ++depth) {
        const double half = 0.5 * (1 << depth);
        in_row_.push_back({bounds.surelyAtMost(half), bounds.surelyAbove(half)});
    }
}

std::optional<PixelRuns> ContourSearch::run(double most) {
    PixelRuns found(size_.height);
    findSidesOfNodes(kMargin, lower_sides_);
    for (int row = 0; row < size_.height; row += spacing_) {
        findStretches(row / spacing_ + kMargin);
        const int end = std::min(row + spacing_, size_.height);
        for (int inside = row; inside < end; ++inside) {
            for (const Stretch& stretch : stretches_) add(found, inside, stretch);
            found.closeRow();
        }
        if (exact_.cost() > most) return std::nullopt;
    }
    return found;
}

void ContourSearch::findSidesOfNodes(int node_row, std::vector<std::uint8_t>& sides) const {
    const float* const values = nodes_.ptr<float>(node_row) + kMargin;
    const Limits limits = in_cell_;
    // Through local variables: bytes might be anything, also the vector that holds them.
    std::uint8_t* const out = sides.data();
    const int count = static_cast<int>(sides.size());
    for (int i = 0; i < count; ++i) out[i] = static_cast<std::uint8_t>(limits.side(values[i]));
}

/// @param node_row  Above the row of cells; the sides of that below become the next one's above.
void ContourSearch::findStretches(int node_row) {
    std::swap(upper_sides_, lower_sides_);
    findSidesOfNodes(node_row + 1, lower_sides_);
    const std::uint8_t* const upper = upper_sides_.data();
    const std::uint8_t* const lower = lower_sides_.data();
    std::uint8_t* const cells = cell_sides_.data();
    for (int i = 0; i < cells_across_; ++i) {
        cells[i] = static_cast<std::uint8_t>(upper[i] & lower[i] & upper[i + 1] & lower[i + 1]);
    }
    stretches_.clear();
    for (int begin = 0; begin < cells_across_;) {
        const int end = endOfEqual(cells, begin, cells_across_);
        const unsigned side = cells[begin];
        if (side != kAbove) stretches_.push_back({side, begin, end});
        begin = end;
    }
}

void ContourSearch::add(PixelRuns& found, int row, const Stretch& stretch) {
    if (stretch.side == kAtMost) {
        found.add(stretch.begin * spacing_, std::min(stretch.end * spacing_, size_.width));
    } else {
        addUndecided(found, row, stretch);
    }
}

void ContourSearch::addUndecided(PixelRuns& found, int row, const Stretch& stretch) {
    interpolateAlongColumns(row, stretch);
    for (int cell = stretch.begin; cell < stretch.end; ++cell) {
        const float* const node = values_.data() + cell + kMargin;
        addPart(found, {row, cell * spacing_, node}, 0, level_, node[0], node[1]);
    }
}

/// Adds 2^depth pixels from the `begin`-th one of a gap on, which has the value `first`, up to one
/// of the value `last`: all or none if these two can say so, else one half, then the other.
void ContourSearch::addPart(PixelRuns& found, const Gap& gap, int begin, int depth, float first,
                            float last) {
    const int col = gap.col + begin;
    if (col >= size_.width) return;
    const Limits& limits = in_row_[static_cast<std::size_t>(depth)];
    const unsigned side =
        depth == 0 ? at_pixel_.side(first) : limits.side(first) & limits.side(last);
    if (side == kAbove) return;
    if (side == kAtMost) {
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

/// Fills in `values_` as far as a stretch needs them.
void ContourSearch::interpolateAlongColumns(int row, const Stretch& stretch) {
    const InterpolationWeights& weights = weights_[static_cast<std::size_t>(row % spacing_)];
    const int node_row = row / spacing_ + kMargin + kFirstNode;
    const int begin = stretch.begin + kMargin + kFirstNode;
    const int end = stretch.end + kMargin + kFirstNode + kInterpolationNodes;
    std::array<const float*, kInterpolationNodes> nodes{};
    for (int i = 0; i < kInterpolationNodes; ++i) {
        nodes[static_cast<std::size_t>(i)] = nodes_.ptr<float>(node_row + i);
    }
    // The margin takes what the last group has too many.
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

/// @param node  The value at the first node of a gap.
float ContourSearch::interpolateAlongRow(const float* node, int pixel) const {
    const InterpolationWeights& weights = weights_[static_cast<std::size_t>(pixel)];
    float even = 0.0F;
    float odd = 0.0F;
    for (int i = 0; i < kInterpolationNodes; i += 2) {
        even += weights[static_cast<std::size_t>(i)] * node[i + kFirstNode];
        odd += weights[static_cast<std::size_t>(i + 1)] * node[i + 1 + kFirstNode];
    }
    return even + odd;
}

}  // namespace vorund::internal
