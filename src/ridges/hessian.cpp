#include "ridges/hessian.h"

#include <algorithm>
#include <cstring>
#include <opencv2/imgproc.hpp>

namespace vorund::internal {
namespace {

constexpr int kPart = 64;  // Columns that are looked at together.

/// Ends of zeros are left out, the same number on both sides: they add nothing.
int reachOf(const cv::Mat& smooth, const cv::Mat& derive) {
    const int radius = smooth.rows / 2;
    int zeros = 0;
    while (zeros < radius && smooth.at<float>(zeros) == 0.0F && derive.at<float>(zeros) == 0.0F) {
        ++zeros;
    }
    return radius - zeros;
}

std::vector<float> middleOf(const cv::Mat& kernel, int reach) {
    const float* const middle = kernel.ptr<float>(kernel.rows / 2);
    return {middle - reach, middle + reach + 1};
}

}  // namespace

Hessian::Hessian(const cv::Mat& image, const cv::Mat& smooth, const cv::Mat& derive, int border)
    : image_(image),
      border_(border),
      reach_(reachOf(smooth, derive)),
      smooth_{middleOf(smooth, reach_), Symmetry::kEven},
      derive_{middleOf(derive, reach_), Symmetry::kOdd},
      recent_(2 * reach_ + 2, image.cols, CV_32FC1),
      equal_rows_(static_cast<std::size_t>((image.cols + kPart - 1) / kPart)),
      window_(static_cast<std::size_t>(2 * reach_ + 1)),
      zeros_(static_cast<std::size_t>(image.cols), 0.0F) {
    CV_Assert(border != cv::BORDER_WRAP);
    for (int col = -reach_; col < image.cols + reach_; ++col) {
        column_of_.push_back(cv::borderInterpolate(col, image.cols, border));
    }
    widened_.resize(column_of_.size());
}

cv::Range Hessian::withReach(const cv::Range& rows) const {
    return {std::max(rows.start - reach_, 0), std::min(rows.end + reach_, image_.rows)};
}

void Hessian::filterRows(const cv::Range& rows) {
    const Band source{image_, {0, image_.rows}};
    const cv::Range around = withReach(rows);
    filter(source, derive_, smooth_, around, x_.pixels);
    filter(source, smooth_, derive_, around, y_.pixels);
    x_.rows = y_.rows = around;
    filter(x_, derive_, smooth_, rows, xx);
    filter(x_, smooth_, derive_, rows, xy);
    filter(y_, smooth_, derive_, rows, yy);
}

void Hessian::filter(const Band& source, const Kernel& row_kernel, const Kernel& column_kernel,
                     const cv::Range& rows, cv::Mat& filtered) {
    filtered.create(rows.size(), image_.cols, CV_32FC1);
    const cv::Range read = withReach(rows);
    std::fill(equal_rows_.begin(), equal_rows_.end(), 0);
    int next = read.start;
    for (int row = rows.start; row < rows.end; ++row) {
        for (; next < std::min(row + reach_ + 1, read.end); ++next) {
            filterAlongRow(source.row(next), row_kernel, recentRow(next));
            if (next > read.start) countEqualRows(recentRow(next - 1), recentRow(next));
        }
        const int in_band = row - rows.start;
        const bool none_missing = row - reach_ > read.start && row + reach_ < read.end;
        filterDownColumns(row, column_kernel,
                          none_missing && in_band > 0 ? filtered.ptr<float>(in_band - 1) : nullptr,
                          filtered.ptr<float>(in_band));
    }
}

void Hessian::filterAlongRow(const float* from, const Kernel& kernel, float* to) {
    const auto reach = static_cast<std::size_t>(reach_);
    const auto cols = static_cast<std::size_t>(image_.cols);
    const auto widen = [&](std::size_t i) {
        widened_[i] = column_of_[i] < 0 ? 0.0F : from[column_of_[i]];
    };
    for (std::size_t i = 0; i < reach; ++i) widen(i);
    std::copy(from, from + cols, widened_.begin() + reach_);
    for (std::size_t i = reach + cols; i < widened_.size(); ++i) widen(i);
    sumAlongRow(widened_.data(), kernel.values.data(), 2 * reach_ + 1, to, image_.cols);
}

void Hessian::countEqualRows(const float* before, const float* row) {
    for (std::size_t part = 0; part < equal_rows_.size(); ++part) {
        const std::size_t begin = part * kPart;
        const std::size_t count =
            std::min<std::size_t>(kPart, static_cast<std::size_t>(image_.cols) - begin);
        const bool equal = std::memcmp(before + begin, row + begin, count * sizeof *row) == 0;
        equal_rows_[part] = equal ? equal_rows_[part] + 1 : 0;
    }
}

/// @param above  The sums of the row above, if the rows around both have been filtered along.
void Hessian::filterDownColumns(int row, const Kernel& kernel, const float* above, float* to) {
    for (int i = -reach_; i <= reach_; ++i) {
        const int inside = cv::borderInterpolate(row + i, image_.rows, border_);
        window_[static_cast<std::size_t>(reach_ + i)] =
            inside < 0 ? zeros_.data() : recentRow(inside);
    }
    // Where all rows around both are equal, so are the sums.
    const auto isKnown = [&](std::size_t part) {
        return above != nullptr && equal_rows_[part] > 2 * reach_;
    };
    int at = 0;  // Where the window's rows point to.
    int from = 0;
    for (std::size_t part = 0; part < equal_rows_.size();) {
        const bool known = isKnown(part);
        while (part < equal_rows_.size() && isKnown(part) == known) ++part;
        const int end = std::min(static_cast<int>(part) * kPart, image_.cols);
        if (known) {
            std::copy(above + from, above + end, to + from);
        } else {
            for (const float*& pixels : window_) pixels += from - at;
            at = from;
            sumDownColumns(window_.data() + reach_, kernel.values.data() + reach_, reach_,
                           kernel.symmetry, to + from, end - from);
        }
        from = end;
    }
}

}  // namespace vorund::internal
