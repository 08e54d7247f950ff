#include "reference/ridge_filter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace vorund::reference {
namespace {

double derivativeFactor(double x, double s2, int order) {
    if (order == 0) return 1.0;
    if (order == 1) return -x / s2;
    if (order == 2) return (x * x - s2) / (s2 * s2);
    return 0.0;
}

cv::Mat_<float> unitRange(const cv::Mat& image) {
    cv::Mat floats;
    image.convertTo(floats, CV_32F);
    if (image.type() == CV_8UC1) floats.convertTo(floats, CV_32F, 1.0 / 255.0);
    return floats;
}

/// The combination of the two eigenvalues that is larger in size, if it is positive.
float response(float hxx, float hxy, float hyy) {
    const float d = 4.0F * hxy * hxy + (hxx - hyy) * (hxx - hyy);
    const float root = d > 0.0F ? std::sqrt(d) : 0.0F;
    const float large = root * 0.5F + (hxx + hyy) * 0.5F;
    const float small = (hxx + hyy) * 0.5F - root * 0.5F;
    const float alpha = -1.0F / 3.0F;
    const float u = large + alpha * small;
    const float v = small + alpha * large;
    return std::max(std::abs(u) > std::abs(v) ? u : v, 0.0F);
}

/// What OpenCV's sepFilter2D gives where the processor fuses multiplication and addition: along the
/// rows by ascending entries of the kernel, then down the columns from the middle outwards.
cv::Mat_<float> filtered(const cv::Mat_<float>& source, const cv::Mat_<float>& row_kernel,
                         const cv::Mat_<float>& column_kernel, bool column_is_odd, int border) {
    const int reach = row_kernel.rows / 2;
    cv::Mat_<float> wide, sums(source.size(), 0.0F), high, result(source.size(), 0.0F);
    cv::copyMakeBorder(source, wide, 0, 0, reach, reach, border);
    for (int row = 0; row < source.rows; ++row) {
        for (int col = 0; col < source.cols; ++col) {
            for (int i = 0; i <= 2 * reach; ++i) {
                sums(row, col) = std::fma(wide(row, col + i), row_kernel(i), sums(row, col));
            }
        }
    }
    cv::copyMakeBorder(sums, high, reach, reach, 0, 0, border);
    for (int row = 0; row < source.rows; ++row) {
        for (int col = 0; col < source.cols; ++col) {
            const int middle = row + reach;
            float sum = column_is_odd ? 0.0F : high(middle, col) * column_kernel(reach);
            for (int i = 1; i <= reach; ++i) {
                const float before = high(middle - i, col), after = high(middle + i, col);
                const float both = column_is_odd ? after - before : after + before;
                sum = std::fma(both, column_kernel(reach + i), sum);
            }
            result(row, col) = sum;
        }
    }
    return result;
}

cv::Mat_<float> scaleResponse(const cv::Mat& image, double sigma, int border) {
    const auto scale = static_cast<double>(static_cast<float>(sigma) / 1.4142135F);
    const cv::Mat smooth = gaussianKernel(scale, 0);
    const cv::Mat slope = gaussianKernel(scale, 1);
    const auto filter = [&](const cv::Mat& source, const cv::Mat& row, const cv::Mat& column) {
        return filtered(source, row, column, column.data == slope.data, border);
    };
    const cv::Mat_<float> gx = filter(image, slope, smooth);
    const cv::Mat_<float> gy = filter(image, smooth, slope);
    const cv::Mat_<float> hxx = filter(gx, slope, smooth);
    const cv::Mat_<float> hyy = filter(gy, smooth, slope);
    const cv::Mat_<float> hxy = filter(gx, smooth, slope);

    cv::Mat_<float> result(image.size());
    float max = 0.0F;
    for (int row = 0; row < result.rows; ++row) {
        for (int col = 0; col < result.cols; ++col) {
            result(row, col) = response(hxx(row, col), hxy(row, col), hyy(row, col));
            max = std::max(max, result(row, col));
        }
    }
    if (max > 0.0F) result = cv::Mat(result * (1.0 / static_cast<double>(max)));
    return result;
}

}  // namespace

cv::Mat gaussianKernel(double sigma, int order) {
    const int radius = static_cast<int>(sigma > 1.0 ? sigma * 8 : sigma * 100);
    const double s2 = sigma * sigma;
    const double norm = 1.0 / (sigma * 2.5066282746310002);
    cv::Mat_<double> kernel(2 * radius + 1, 1);
    for (int i = -radius; i <= radius; ++i) {
        const double x = i;
        const double g = std::exp(-0.5 * x * x / s2);
        kernel(i + radius) = derivativeFactor(x, s2, order) * g * norm;
    }
    cv::Mat floats;
    kernel.convertTo(floats, CV_32F);
    return floats;
}

cv::Mat ridgeMap(const cv::Mat& image, const std::vector<double>& sigmas, int border) {
    const cv::Mat_<float> map = unitRange(image.clone());
    cv::Mat_<float> result(map.size(), 0.0F);
    for (const double sigma : sigmas) {
        if (sigma <= 0.0) continue;
        const cv::Mat_<float> one = scaleResponse(map, sigma, border);
        for (int row = 0; row < result.rows; ++row) {
            for (int col = 0; col < result.cols; ++col) {
                result(row, col) = std::max(result(row, col), one(row, col));
            }
        }
    }
    return result;
}

cv::Mat boundaryMap(const cv::Mat& image) {
    const cv::Mat_<float> map = unitRange(image);
    cv::Mat_<float> result(map.size(), 0.0F);
    const cv::Rect inside(cv::Point(0, 0), map.size());
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            float lowest = map(row, col);
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const cv::Point neighbour(col + dx, row + dy);
                    if (inside.contains(neighbour)) lowest = std::min(lowest, map(neighbour));
                }
            }
            if (map(row, col) - lowest > 0.5F) result(row, col) = 1.0F;
        }
    }
    return result;
}

}  // namespace vorund::reference
