#pragma once

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "vorund/export.h"
namespace vorund::internal {

/// Pixels of one row, from `begin` up to, but without, `end`.
struct PixelRun {
    int begin;
    int end;
};

/// A set of pixels as the runs of its rows: of a map's free space at a coarse scale there are few.
class PixelRuns {
 public:
    explicit PixelRuns(int rows) : row_begin_(static_cast<std::size_t>(rows) + 1, 0) {}

    /// Adds pixels to the row that is open; one that touches the last run continues it.
    void add(int begin, int end) {
        if (runs_.size() > row_begin_[open_row_] && runs_.back().end == begin) {
            runs_.back().end = end;
        } else {
            runs_.push_back({begin, end});
        }
    }

    /// Closes the row that is open, the first one to begin with, and opens the next.
    void closeRow() { row_begin_[++open_row_] = runs_.size(); }

    /// Calls `visit(row, run)` for all runs, in raster order.
    template <class Visit>
    void visit(const Visit& visit) const {
        for (int row = 0; row < rows(); ++row) {
            for (std::size_t i = rowBegin(row); i < rowBegin(row + 1); ++i) visit(row, runs_[i]);
        }
    }

    int rows() const { return static_cast<int>(row_begin_.size()) - 1; }
    std::size_t size() const { return runs_.size(); }
    const PixelRun& operator[](std::size_t index) const { return runs_[index]; }

    /// The runs of a row are those from `rowBegin(row)` up to, but without, `rowBegin(row + 1)`.
    std::size_t rowBegin(int row) const { return row_begin_[static_cast<std::size_t>(row)]; }

 private:
    std::vector<PixelRun> runs_;
    std::vector<std::size_t> row_begin_;
    std::size_t open_row_ = 0;
};

/// The pixels of a float image that are not above a threshold.
/// @param values  `CV_32FC1`. What is no number is not above.
VORUND_EXPORT PixelRuns pixelsNotAbove(const cv::Mat& values, double threshold);

/// The pixels of an 8-bit image that are not 0.
VORUND_EXPORT PixelRuns nonZeroPixels(const cv::Mat& bytes);

/// The other pixels of an image.
VORUND_EXPORT PixelRuns complement(const PixelRuns& runs, int cols);

/// The smallest upright rectangle around the pixels; empty if there are none.
cv::Rect boundsOf(const PixelRuns& runs);

}  // namespace vorund::internal
