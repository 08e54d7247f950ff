#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "internal/runs.h"

namespace vorund::internal {

/// Sums over the pixels of one label, in 64 bits: the x sum of a hall of 4000 x 4000 is 3.2e10.
struct PixelSums {
    std::int64_t count = 0;
    std::int64_t x = 0;
    std::int64_t y = 0;

    cv::Point2d mean() const {
        const auto n = static_cast<double>(count);
        return {static_cast<double>(x) / n, static_cast<double>(y) / n};
    }
};

/// Adds the pixels of all labels in one pass, run by run.
/// @tparam T     Type of a pixel.
/// @tparam Sums  `sums[label]` is the label's sum.
template <class T, class Sums>
void addLabels(const cv::Mat& segments, Sums& sums) {
    for (int row = 0; row < segments.rows; ++row) {
        forEachRun(segments.ptr<T>(row), segments.cols, [&](int begin, int end, T label) {
            const std::int64_t count = end - begin;
            PixelSums& sum = sums[label];
            sum.count += count;
            sum.x += count * (begin + end - 1) / 2;
            sum.y += count * row;
        });
    }
}

/// Sums by label or id, for as many as there are.
class NumberedSums {
 public:
    explicit NumberedSums(int count) : sums_(static_cast<std::size_t>(count)) {}

    PixelSums& operator[](std::int32_t number) { return sums_[static_cast<std::size_t>(number)]; }

 private:
    std::vector<PixelSums> sums_;
};

/// The sums of an 8-bit image by value.
class ByteSums {
 public:
    explicit ByteSums(const cv::Mat& image) { addLabels<std::uint8_t>(image, sums_); }

    /// Nothing for what no byte holds.
    PixelSums of(int value) const {
        const bool is_byte = value >= 0 && value < kValues;
        return is_byte ? sums_[static_cast<std::size_t>(value)] : PixelSums{};
    }

    static constexpr int kValues = 256;

 private:
    std::array<PixelSums, kValues> sums_{};
};

}  // namespace vorund::internal
