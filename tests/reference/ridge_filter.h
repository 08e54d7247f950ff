#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// Plain versions of the library's algorithms, written for reading and not for speed, and
/// independently of it. The tests compare the two bit for bit.
namespace vorund::reference {

/// A sampled Gaussian (order 0) or its first or second derivative.
cv::Mat gaussianKernel(double sigma, int order);

/// @param border  OpenCV's constant. The filters are OpenCV's; the rest is loops over the pixels.
cv::Mat ridgeMap(const cv::Mat& image, const std::vector<double>& sigmas, int border);

/// 1 where a pixel exceeds one of its neighbours inside the image by more than a half.
cv::Mat boundaryMap(const cv::Mat& image);

}  // namespace vorund::reference
