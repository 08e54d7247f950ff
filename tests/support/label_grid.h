#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace vorund::test {

/// Images drawn in the test: pixels separated by blanks, rows by newlines, '.' for 0.
///
///     labels("1 1 9\n"
///            ". 2 2")      // 2 rows, 3 columns
///
/// Blank rows are left out. Throws std::invalid_argument for rows of different lengths, for what is
/// not a number, and for a number that the pixel type does not hold.
cv::Mat labels(const std::string& grid);    ///< `CV_8UC1`
cv::Mat labels32(const std::string& grid);  ///< `CV_32SC1`
cv::Mat values(const std::string& grid);    ///< `CV_32FC1`

/// The same pixels as a view into the middle of a larger image: its rows are not contiguous, and
/// the pixels around it are garbage that a function must neither use nor change.
cv::Mat asView(const cv::Mat& image);

}  // namespace vorund::test
