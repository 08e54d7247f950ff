#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "ridges/fused_sums.h"

namespace vorund::internal {

/// Second derivatives of a blurred image, in bands of rows that stay in the cache.
class Hessian {
 public:
    /// @param image   `CV_32FC1`; is referred to.
    /// @param smooth  The Gaussian, `CV_32FC1`, one column of an odd number of rows.
    /// @param derive  Its derivative, likewise.
    /// @param border  How the image goes on beyond its edges, as OpenCV's filters have it.
    /// @throws cv::Exception  for BORDER_WRAP, which they have not either.
    Hessian(const cv::Mat& image, const cv::Mat& smooth, const cv::Mat& derive, int border);

    /// A good height for the bands: what they have in common is filtered twice.
    int bandRows() const { return 8 * static_cast<int>(smooth_.values.size()); }

    void filterRows(const cv::Range& rows);

    cv::Mat xx, xy, yy;  ///< Of the rows last filtered.

 private:
    struct Kernel {
        std::vector<float> values;
        Symmetry symmetry;
    };
    /// Some rows of an image.
    struct Band {
        cv::Mat pixels;
        cv::Range rows;
        const float* row(int row) const { return pixels.ptr<float>(row - rows.start); }
    };

    cv::Range withReach(const cv::Range& rows) const;
    void filter(const Band& source, const Kernel& row_kernel, const Kernel& column_kernel,
                const cv::Range& rows, cv::Mat& filtered);
    void filterAlongRow(const float* from, const Kernel& kernel, float* to);
    float* recentRow(int row) { return recent_.ptr<float>(row % recent_.rows); }
    void countEqualRows(const float* before, const float* row);
    void filterDownColumns(int row, const Kernel& kernel, const float* above, float* to);

    cv::Mat image_;
    int border_;
    int reach_;
    Kernel smooth_;
    Kernel derive_;
    std::vector<int> column_of_;   ///< Of the image, for each of a widened row; -1 for a zero.
    std::vector<float> widened_;   ///< A row with what goes on beyond its ends.
    cv::Mat recent_;               ///< The last rows filtered along.
    std::vector<int> equal_rows_;  ///< For each part of the last row, how many rows above equal it.
    std::vector<const float*> window_;  ///< Those that are filtered down.
    std::vector<float> zeros_;
    Band x_, y_;
};

}  // namespace vorund::internal
