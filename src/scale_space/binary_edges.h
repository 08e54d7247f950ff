#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace vorund::internal {

/// The places along the rows of a binary image where its value changes.
class RowSteps {
 public:
    /// @param image  `CV_8UC1` with two values.
    explicit RowSteps(const cv::Mat& image);

    /// Columns in ascending order of the pixels that differ from the one on their left.
    const int* begin(int row) const {
        return steps_.data() + begin_[static_cast<std::size_t>(row)];
    }
    const int* end(int row) const { return begin(row + 1); }

 private:
    std::vector<int> steps_;
    std::vector<std::size_t> begin_;
};

/// A pixel at which the step from its left neighbour is not that of the row above: a corner of a
/// region.
struct Corner {
    int row;
    int col;
    double change;  ///< Of the step, from -2 to 2.
};

/// The corners of a binary image, in square tiles, so that those of a window are found at once.
class Corners {
 public:
    static constexpr int kTile = 32;

    /// @param image  `CV_8UC1`, 0 and 1.
    explicit Corners(const cv::Mat& image);

    /// Calls `visit(corner)` for all corners of the tiles that a window touches, and so for some
    /// around it.
    template <class Visit>
    void visitTiles(const cv::Rect& window, const Visit& visit) const {
        const cv::Point last = window.br() - cv::Point(1, 1);
        for (int row = window.y / kTile; row <= last.y / kTile; ++row) {
            // The tiles of a row of tiles follow each other.
            const auto first = static_cast<std::size_t>(row * tiles_across_ + window.x / kTile);
            const auto end = static_cast<std::size_t>(row * tiles_across_ + last.x / kTile + 1);
            for (std::size_t i = tile_begin_[first]; i < tile_begin_[end]; ++i) visit(corners_[i]);
        }
    }

 private:
    std::vector<Corner> corners_;
    std::vector<std::size_t> tile_begin_;
    int tiles_across_;
};

/// A binary map as its edges. A weighted sum over a window needs no more of a map than where its
/// value changes, however large the window.
struct BinaryEdges {
    /// @param map  `CV_32FC1`, 0 and 1, not empty.
    explicit BinaryEdges(const cv::Mat& map);

    cv::Mat pixels;  ///< The map as `CV_8UC1`, 0 and 1.
    RowSteps along_rows;
    RowSteps along_columns;  ///< Of the transposed map.
    Corners corners;
};

}  // namespace vorund::internal
