#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <random>

namespace vorund::test {

/// Images from a fixed seed. The distributions of the standard library differ between compilers;
/// these do not.
class RandomImages {
 public:
    explicit RandomImages(std::uint32_t seed) : generator_(seed) {}

    /// 0 to `count` - 1.
    int below(int count);

    /// 1 to `max_side` rows and columns.
    cv::Size size(int max_side);

    /// `CV_8UC1`, every pixel 0 to `count` - 1.
    cv::Mat bytes(const cv::Size& size, int count);

    /// `CV_32FC1` of few values: 0, 1, ..., `count` - 1, divided by `count` - 1.
    cv::Mat floats(const cv::Size& size, int count);

    /// `CV_32SC1`: one pixel in `spacing` is 1 to `count`, the others are 0.
    cv::Mat markers(const cv::Size& size, int count, int spacing);

    /// `CV_8UC1`, 1 to `count` in rectangles that overlap, on `background`.
    cv::Mat patches(const cv::Size& size, int count, int background);

 private:
    std::mt19937 generator_;
};

}  // namespace vorund::test
