#include "vorund/ridge_filter.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/imgproc.hpp>

#include "internal/require.h"
#include "ridges/hessian.h"

namespace vorund::RidgeFilter {
namespace {

constexpr double kSqrtTwoPi = 2.5066282746310002;
constexpr float kSqrtTwo = 1.4142135F;
constexpr float kAlpha = -0.33333334F;  // Meijering's weight of the other eigenvalue, for 2D.
constexpr double kLongestReach = 1e6;   // [pixels] No image is as wide.
constexpr double kByteToUnit = 0.00392156862745098;  // 1 / 255

/// Shares the pixels of an image that is of the type already and no view of a larger one.
cv::Mat toUnitFloat(const cv::Mat& image) {
    if (image.type() == CV_32FC1) return image.isSubmatrix() ? image.clone() : image;
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

/// The square root of 0 for what is not positive, which is why a loop over it needs no branch.
float positiveRoot(float value) {
    return std::sqrt(value > 0.0F ? value : 0.0F);
}

float neuriteness(float xx, float xy, float yy) {
    const float root = positiveRoot(4.0F * xy * xy + (xx - yy) * (xx - yy));
    const float trace = xx + yy;
    const float lambda1 = root * 0.5F + trace * 0.5F;
    const float lambda2 = trace * 0.5F - root * 0.5F;
    const float u = lambda1 + kAlpha * lambda2;
    const float v = lambda2 + kAlpha * lambda1;
    const float stronger = std::abs(u) <= std::abs(v) ? v : u;
    return stronger > 0.0F ? stronger : 0.0F;
}

void neuritenessOfRow(const float* xx, const float* xy, const float* yy, float* out, int count) {
    for (int i = 0; i < count; ++i) out[i] = neuriteness(xx[i], xy[i], yy[i]);
}

cv::Mat ridgeResponse(const cv::Mat& image, double sigma, int border) {
    cv::Mat response(image.size(), CV_32FC1);
    internal::Hessian hessian(image, getGaussianKernel1D(0, sigma, 0),
                              getGaussianKernel1D(0, sigma, 1), border);
    int end = 0;
    for (int start = 0; start < image.rows; start = end) {
        end = start + std::min(hessian.bandRows(), image.rows - start);
        hessian.filterRows(cv::Range(start, end));
        for (int row = start; row < end; ++row) {
            const int in_band = row - start;
            neuritenessOfRow(hessian.xx.ptr<float>(in_band), hessian.xy.ptr<float>(in_band),
                             hessian.yy.ptr<float>(in_band), response.ptr<float>(row), image.cols);
        }
    }
    return response;
}

void scaleToOne(cv::Mat& response) {
    double largest = 0.0;
    cv::minMaxLoc(response, nullptr, &largest);
    const float maximum = static_cast<float>(largest);
    if (maximum > 0.0F) response.convertTo(response, CV_32F, 1.0 / static_cast<double>(maximum));
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
    cv::Mat ridges;
    for (const double sigma : config.sigmas) {
        if (sigma <= 0.0) continue;
        // In single precision: the kernel's length follows from the rounded scale.
        const auto scale = static_cast<double>(static_cast<float>(sigma) / kSqrtTwo);
        cv::Mat response = ridgeResponse(working, scale, border);
        scaleToOne(response);
        if (ridges.empty()) {
            ridges = response;
        } else {
            cv::max(ridges, response, ridges);
        }
    }
    return ridges.empty() ? cv::Mat::zeros(working.size(), CV_32FC1) : ridges;
}

cv::Mat generateBoundaryFromDilated(const cv::Mat& image) {
    internal::require(!image.empty(), "generateBoundaryFromDilated: Input image is empty");
    const cv::Mat working = toUnitFloat(image);
    const cv::Mat element =
        cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3), cv::Point(-1, -1));
    cv::Mat eroded;
    // The border's default value is the largest: the edge of the image makes no boundary.
    cv::erode(working, eroded, element, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT);
    cv::Mat& boundary = eroded;
    cv::subtract(working, eroded, boundary);
    cv::threshold(boundary, boundary, 0.5, 1.0, cv::THRESH_BINARY);
    return boundary;
}

}  // namespace vorund::RidgeFilter
