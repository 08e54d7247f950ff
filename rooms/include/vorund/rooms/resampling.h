#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "vorund/export.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {

/// Brings a map's values from its own resolution to the working one (0.05 m per pixel) and labels
/// back, by integer arithmetic on pixel edges in nanometres, so that every machine gives the same.
///
/// Finer maps: every pixel goes to the working pixel that holds its centre, and the highest value
/// wins, so that a wall one pixel wide survives. Coarser maps: every working pixel takes the value
/// of the pixel that holds its centre. A resolution that differs from the working one by less than
/// half a pixel over the whole map is taken as the same.
///
/// What holds either way, of floor that is 4-connected, and of floor that is 8-connected alike:
/// - Places that no way over floor joins in the map are not joined at the working resolution.
/// - Walls that are 8-connected in the map are 8-connected at the working resolution.
/// Floor that is joined in a finer map may come apart: where a passage is narrower than two
/// working pixels, it depends on how it lies to their edges. In a coarser map it stays joined.
class VORUND_EXPORT Resampling {
 public:
    /// @param size        Size of the map. [own pixels]
    /// @param resolution  Of the map. [m per pixel]
    /// @throws MapError  if the resolution is not positive and finite, if the map is smaller than
    ///         1 m^2, or has more than `kMostPixels` at the working resolution.
    Resampling(const cv::Size& size, double resolution);

    /// Most pixels of a map at the working resolution.
    static constexpr long long kMostPixels = 64'000'000;

    bool isIdentity() const { return identity_; }
    cv::Size workingSize() const { return working_size_; }

    /// @param values  `CV_32FC1` of the map's size.
    /// @return `CV_32FC1` of the working size.
    /// @throws std::invalid_argument  for another type or size.
    cv::Mat toWorking(const cv::Mat& values) const;

    /// Labels at the working resolution on the map's own pixels. Every pixel takes the label of
    /// the working pixel that holds its centre, but a wall pixel (value above `kWallThreshold`)
    /// becomes 0. Floor that lost its place, since a wall shares its working pixel, is taken by the
    /// nearest label that reaches it over such floor in steps up, left, right or down; of several
    /// equally near, by the one whose pixel it starts from comes first in raster order. Floor
    /// that none reaches stays 0. With `isIdentity` the labels come back as they are.
    /// @param labels  `CV_8UC1` or `CV_32SC1`, of the working size.
    /// @param values  `CV_32FC1`: the map's values at its own resolution.
    /// @return The type of the labels, the map's size.
    /// @throws std::invalid_argument  for other types or sizes.
    cv::Mat labelsToMap(const cv::Mat& labels, const cv::Mat& values) const;

    /// A mask of floor at the working resolution on the map's own pixels: each is looked up at its
    /// centre, wall pixels become 0. With `isIdentity` the mask comes back as it is.
    /// @param mask    `CV_8UC1` of the working size.
    /// @param values  As for `labelsToMap`.
    /// @throws std::invalid_argument  for other types or sizes.
    cv::Mat maskToMap(const cv::Mat& mask, const cv::Mat& values) const;

 private:
    template <class T>
    cv::Mat anyLabelsToMap(const cv::Mat& labels, const cv::Mat& values) const;

    cv::Size size_;
    cv::Size working_size_;
    bool identity_ = false;
    bool finer_ = false;
    /// For every column (row) of the map the working column (row) that holds its centre.
    std::vector<int> working_col_of_;
    std::vector<int> working_row_of_;
    /// For every working column (row) of a coarser map the map's one that holds its centre.
    std::vector<int> own_col_of_;
    std::vector<int> own_row_of_;
};

}  // namespace vorund::rooms
