#include "scale_space/gaussian_pyramid.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

namespace vorund::internal {
namespace {

/// Two spacings of the nodes: what aliasing leaves of the map's finest detail is below
/// 2 exp(-2 pi^2 * 3/4) = 7e-7.
constexpr double kLeastSigmaPerSpacing = 2.0;

/// Further out a Gaussian holds less than 6e-7 of its weight.
constexpr double kReachPerSigma = 5.0;

cv::Mat gaussian(double sigma) {
    const int radius = static_cast<int>(std::ceil(kReachPerSigma * sigma));
    return cv::getGaussianKernel(2 * radius + 1, sigma, CV_32F);
}

/// Blurs an image and keeps every second pixel of every second row.
class Halving {
 public:
    /// @param sigma   Of the blur. [pixels of the image]
    /// @param margin  Pixels before the image's first one at which the result begins, even.
    Halving(const cv::Mat& image, double sigma, int margin)
        : image_(image), margin_(margin), radius_(static_cast<int>(gaussian(sigma).total()) / 2) {
        const cv::Mat kernel = gaussian(sigma);
        weights_.assign(kernel.begin<float>() + radius_, kernel.end<float>());
    }

    cv::Mat run(const cv::Size& size) {
        cv::Mat result(size, CV_32FC1);
        column_sums_.resize(static_cast<std::size_t>(image_.cols));
        even_.resize(static_cast<std::size_t>(size.width + radius_ + 1));
        odd_.resize(even_.size());
        for (int row = 0; row < size.height; ++row) {
            sumColumns(2 * row - margin_);
            split();
            sumRow(result.ptr<float>(row), size.width);
        }
        return result;
    }

 private:
    const float* imageRow(int row) const {
        return image_.ptr<float>(std::clamp(row, 0, image_.rows - 1));
    }

    void sumColumns(int row) {
        const float* const centre = imageRow(row);
        for (std::size_t col = 0; col < column_sums_.size(); ++col) {
            column_sums_[col] = weights_[0] * centre[col];
        }
        for (int i = 1; i <= radius_; ++i) {
            const float weight = weights_[static_cast<std::size_t>(i)];
            const float* const above = imageRow(row - i);
            const float* const below = imageRow(row + i);
            for (std::size_t col = 0; col < column_sums_.size(); ++col) {
                column_sums_[col] += weight * (above[col] + below[col]);
            }
        }
    }

    /// The pixels that the first node needs, and every second one from there; and those between.
    void split() {
        const int begin = -margin_ - radius_;
        const int last = image_.cols - 1;
        for (int i = 0; i < static_cast<int>(even_.size()); ++i) {
            const auto index = static_cast<std::size_t>(i);
            even_[index] =
                column_sums_[static_cast<std::size_t>(std::clamp(begin + 2 * i, 0, last))];
            odd_[index] =
                column_sums_[static_cast<std::size_t>(std::clamp(begin + 2 * i + 1, 0, last))];
        }
    }

    void sumRow(float* nodes, int count) const {
        std::fill(nodes, nodes + count, 0.0F);
        for (int i = 0; i <= 2 * radius_; ++i) {
            const float weight = weights_[static_cast<std::size_t>(std::abs(i - radius_))];
            const float* const values = (i % 2 == 0 ? even_ : odd_).data() + i / 2;
            for (int col = 0; col < count; ++col) nodes[col] += weight * values[col];
        }
    }

    const cv::Mat& image_;
    int margin_;
    int radius_;
    std::vector<float> weights_;  ///< From the centre of the kernel outwards.
    std::vector<float> column_sums_;
    std::vector<float> even_;
    std::vector<float> odd_;
};

/// Nodes every `spacing` pixels that reach beyond the last pixel.
int nodesAcross(int pixels, int spacing) {
    return (pixels - 1) / spacing + 2;
}

}  // namespace

int coarsestLevel(double sigma) {
    int level = 0;
    for (double next = 2.0; sigma >= kLeastSigmaPerSpacing * next && level < 16; next *= 2.0) {
        ++level;
    }
    return level;
}

const cv::Mat& GaussianPyramid::nodes(int level) {
    while (static_cast<int>(levels_.size()) < level) {
        const bool first = levels_.empty();
        const int spacing = 2 << levels_.size();
        const cv::Size size(nodesAcross(map_.cols, spacing) + 2 * kMargin,
                            nodesAcross(map_.rows, spacing) + 2 * kMargin);
        // From sigma h to 2 h, in units of h; the map itself has none. The finer level begins with
        // its own margin.
        levels_.push_back(first ? Halving(map_, 2.0, 2 * kMargin).run(size)
                                : Halving(levels_.back(), std::sqrt(3.0), kMargin).run(size));
    }
    return levels_[static_cast<std::size_t>(level) - 1];
}

const cv::Mat& GaussianPyramid::blurred(double sigma, int level) {
    const double in_nodes = sigma / static_cast<double>(1 << level);
    const cv::Mat kernel = gaussian(std::sqrt(in_nodes * in_nodes - 1.0));
    cv::sepFilter2D(nodes(level), blurred_, CV_32F, kernel, kernel, cv::Point(-1, -1), 0.0,
                    cv::BORDER_REPLICATE);
    return blurred_;
}

}  // namespace vorund::internal
