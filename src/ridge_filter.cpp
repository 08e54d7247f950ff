#include "vorund/ridge_filter.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/imgproc.hpp>

#include "internal/require.h"

namespace vorund::RidgeFilter {
namespace {

constexpr double kSqrtTwoPi = 2.5066282746310002;
constexpr float kSqrtTwo = 1.4142135F;
constexpr float kAlpha = -0.33333334F;  // Meijering's weight of the other eigenvalue, for 2D.
constexpr double kLongestReach = 1e6;   // [pixels] No image is as wide.
constexpr double kByteToUnit = 0.00392156862745098;  // 1 / 255

/// Second derivatives of a blurred image, each `CV_32FC1`.
struct Hessian {
    cv::Mat xx;
    cv::Mat xy;
    cv::Mat yy;
};

cv::Mat toUnitFloat(const cv::Mat& image) {
    if (image.type() == CV_32FC1) return image.clone();
    cv::Mat converted;
    image.convertTo(converted, CV_32F);
    if (image.type() == CV_8UC1) converted *= kByteToUnit;
    return converted;
}

double kernelValue(double x, double sigma, int order) {
    const double variance = sigma * sigma;
    const double gauss = std::exp(-0.5 * x * x / variance);
    const double scale = 1.0 / (sigma * kSqrtTwoPi);
    switch (order) {
        case 0:
            return scale * gauss;
        case 1:
            return (-x / variance) * gauss * scale;
        case 2:
            return ((x * x - variance) / (variance * variance)) * gauss * scale;
        default:
            return 0.0;
    }
}

Hessian hessian(const cv::Mat& image, double sigma, int border) {
    const cv::Mat smooth = getGaussianKernel1D(0, sigma, 0);
    const cv::Mat derive = getGaussianKernel1D(0, sigma, 1);
    const auto filter = [border](const cv::Mat& source, const cv::Mat& row_kernel,
                                 const cv::Mat& column_kernel) {
        cv::Mat filtered;
        cv::sepFilter2D(source, filtered, CV_32F, row_kernel, column_kernel, cv::Point(-1, -1), 0.0,
                        border);
        return filtered;
    };
    const cv::Mat x = filter(image, derive, smooth);
    const cv::Mat y = filter(image, smooth, derive);
    return {filter(x, derive, smooth), filter(x, smooth, derive), filter(y, smooth, derive)};
}

float neuriteness(float xx, float xy, float yy) {
    float lambda1 = 0.0F;
    float lambda2 = 0.0F;
    computeEigenvalues2x2Sorted(xx, xy, yy, lambda1, lambda2);
    const float u = lambda1 + kAlpha * lambda2;
    const float v = lambda2 + kAlpha * lambda1;
    const float stronger = std::abs(u) <= std::abs(v) ? v : u;
    return stronger > 0.0F ? stronger : 0.0F;
}

cv::Mat ridgeResponse(const Hessian& hessian) {
    cv::Mat response(hessian.xx.size(), CV_32FC1);
    for (int row = 0; row < response.rows; ++row) {
        const float* const xx = hessian.xx.ptr<float>(row);
        const float* const xy = hessian.xy.ptr<float>(row);
        const float* const yy = hessian.yy.ptr<float>(row);
        float* const out = response.ptr<float>(row);
        for (int col = 0; col < response.cols; ++col) {
            out[col] = neuriteness(xx[col], xy[col], yy[col]);
        }
    }
    return response;
}

cv::Mat scaledToOne(const cv::Mat& response) {
    double largest = 0.0;
    cv::minMaxLoc(response, nullptr, &largest);
    const float maximum = static_cast<float>(largest);
    if (!(maximum > 0.0F)) return response;
    return response * (1.0 / static_cast<double>(maximum));
}

}  // namespace

int getCvBorderType(const std::string& mode) {
    if (mode == "reflect") return cv::BORDER_REFLECT_101;
    if (mode == "mirror") return cv::BORDER_REFLECT;
    if (mode == "constant") return cv::BORDER_CONSTANT;
    if (mode == "nearest") return cv::BORDER_REPLICATE;
    if (mode == "wrap") return cv::BORDER_WRAP;
    std::cerr << "Warning: Unknown border mode '" << mode << "', using BORDER_DEFAULT."
              << std::endl;
    return cv::BORDER_REFLECT_101;
}

cv::Mat getGaussianKernel1D(int /*size*/, double sigma, int order) {
    // Small scales get a much longer tail.
    const double reach = sigma * (sigma > 1.0 ? 8.0 : 100.0);
    internal::require(reach <= kLongestReach,
                      "getGaussianKernel1D: sigma must be a number of at most 125000.");
    const int radius = static_cast<int>(std::max(reach, -1.0));
    cv::Mat kernel(2 * radius + 1, 1, CV_64F);
    for (int x = -radius; x <= radius; ++x) {
        kernel.at<double>(x + radius) = kernelValue(x, sigma, order);
    }
    cv::Mat single;
    kernel.convertTo(single, CV_32F);
    return single;
}

void computeEigenvalues2x2Sorted(float a, float b, float c, float& lambda1, float& lambda2) {
    const float discriminant = 4.0F * b * b + (a - c) * (a - c);
    const float root = discriminant > 0.0F ? std::sqrt(discriminant) : 0.0F;
    const float trace = a + c;
    lambda1 = root * 0.5F + trace * 0.5F;
    lambda2 = trace * 0.5F - root * 0.5F;
}

cv::Mat generateRidgeMapMeijering(const cv::Mat& image,
                                  const Config::GenerateRidgeMapMeijeringConfig& config) {
    const cv::Mat working = toUnitFloat(image);
    const int border = getCvBorderType(config.mode);
    cv::Mat ridges = cv::Mat::zeros(working.size(), CV_32FC1);
    for (const double sigma : config.sigmas) {
        if (sigma <= 0.0) continue;
        // In single precision: the kernel's length follows from the rounded scale.
        const auto scale = static_cast<double>(static_cast<float>(sigma) / kSqrtTwo);
        ridges = cv::max(ridges, scaledToOne(ridgeResponse(hessian(working, scale, border))));
    }
    return ridges;
}

cv::Mat generateBoundaryFromDilated(const cv::Mat& image) {
    internal::require(!image.empty(), "generateBoundaryFromDilated: Input image is empty");
    const cv::Mat working = toUnitFloat(image);
    const cv::Mat element =
        cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3), cv::Point(-1, -1));
    cv::Mat eroded;
    // The border's default value is the largest: the edge of the image makes no boundary.
    cv::erode(working, eroded, element, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT);
    cv::Mat step;
    cv::subtract(working, eroded, step);
    cv::Mat boundary;
    cv::threshold(step, boundary, 0.5, 1.0, cv::THRESH_BINARY);
    return boundary;
}

}  // namespace vorund::RidgeFilter
