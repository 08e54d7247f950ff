#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vorund::rooms {

/// Distances to the nearest wall, of which only the largest are worked out; what lies outside the
/// map counts as wall.
///
/// The distances along columns are known from two passes over the map. From them follows that of a
/// pixel by a search along its row (A. Meijster, J. Roerdink and W. Hesselink, "A general algorithm
/// for computing distance transforms in linear time", 2000), which ends as soon as it cannot be the
/// largest. Along a row a distance grows by no more than 1 per pixel, so that most are passed over.
class Clearance {
 public:
    /// @param labels  `CV_32SC1`, 0 = wall.
    /// @param floor   `CV_8UC1` of the same size, 0 = wall as well.
    Clearance(const cv::Mat& labels, const cv::Mat& floor);

    /// The largest squared distance of the pixels `begin` to `end` - 1 of a row; `known`, if none
    /// is larger. [pixels^2]
    std::int64_t largest(int row, int begin, int end, std::int64_t known) const;

 private:
    /// Or anything from there to `enough`, if it is no more than that.
    std::int64_t squaredDistance(int row, int col, std::int64_t enough) const;

    cv::Mat along_columns_;  ///< `CV_16UC1`. Narrower maps have no larger distances than it holds.
};

}  // namespace vorund::rooms
