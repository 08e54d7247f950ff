#pragma once

#include <opencv2/core.hpp>

namespace vorund::reference {

/// Seeds of one Gaussian scale and their number.
struct Seeds {
    cv::Mat labels;  ///< `CV_8UC1`
    int count;
};

/// The blur is OpenCV's; the regions are numbered in raster order of their first pixels.
Seeds gaussianSeeds(const cv::Mat& image, const cv::Mat& mask, double sigma, double threshold);

/// Floods `image` from `markers` (`CV_32SC1`, neither is changed).
cv::Mat watershed(const cv::Mat& image, const cv::Mat& markers, int connectivity, bool lines);

/// Floods with lines, and swaps 0 and 255. `CV_8UC1`.
cv::Mat watershedSegment(const cv::Mat& image, const cv::Mat& markers, int connectivity);

}  // namespace vorund::reference
