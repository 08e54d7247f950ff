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

cv::Mat toUnitFloat(const cv::Mat& image) {
    // Filters must not see what lies around a part of a larger image.
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

/// Written without a branch, so that several pixels are computed at once. The maximum also takes a
/// discriminant that is no number for 0.
inline void computeEigenvalues(float a, float b, float c, float& lambda1, float& lambda2) {
    const float discriminant = 4.0F * b * b + (a - c) * (a - c);
    const float root = std::sqrt(std::max(0.0F, discriminant));
    const float trace = a + c;
    lambda1 = root * 0.5F + trace * 0.5F;
    lambda2 = trace * 0.5F - root * 0.5F;
}

/// The neuriteness of one scale, strip by strip of rows: all that a strip needs fits a cache, while
/// whole images of five derivatives would be written to memory and read again.
class RidgeScale {
 public:
    RidgeScale(const cv::Mat& image, double sigma, int border)
        : image_(image),
          border_(border),
          smooth_(getGaussianKernel1D(0, sigma, 0)),
          derive_(getGaussianKernel1D(0, sigma, 1)) {}

    cv::Mat response() {
        cv::Mat response(image_.size(), CV_32FC1);
        for (int begin = 0; begin < image_.rows; begin += kStrip) {
            const int end = std::min(begin + kStrip, image_.rows);
            findDerivatives(begin, end);
            for (int row = begin; row < end; ++row) {
                neuriteness(row - begin, response.ptr<float>(row));
            }
        }
        return response;
    }

 private:
    static constexpr int kStrip = 128;  // Rows.

    /// The derivatives of the image are filtered again, hence the rows around the strip. OpenCV's
    /// filters see what lies around a part of an image, and at its edges repeat it as in the whole.
    void findDerivatives(int begin, int end) {
        const int radius = smooth_.rows / 2;
        const int first = std::max(begin - radius, 0);
        const int last = std::min(end + radius, image_.rows);
        filter(image_.rowRange(first, last), x_, derive_, smooth_);
        filter(image_.rowRange(first, last), y_, smooth_, derive_);
        const cv::Mat x = x_.rowRange(begin - first, end - first);
        filter(x, xx_, derive_, smooth_);
        filter(x, xy_, smooth_, derive_);
        filter(y_.rowRange(begin - first, end - first), yy_, smooth_, derive_);
    }

    void filter(const cv::Mat& source, cv::Mat& filtered, const cv::Mat& row_kernel,
                const cv::Mat& column_kernel) const {
        cv::sepFilter2D(source, filtered, CV_32F, row_kernel, column_kernel, cv::Point(-1, -1), 0.0,
                        border_);
    }

    void neuriteness(int row, float* out) const {
        const float* const xx = xx_.ptr<float>(row);
        const float* const xy = xy_.ptr<float>(row);
        const float* const yy = yy_.ptr<float>(row);
        const int cols = image_.cols;
        for (int col = 0; col < cols; ++col) {
            float lambda1 = 0.0F;
            float lambda2 = 0.0F;
            computeEigenvalues(xx[col], xy[col], yy[col], lambda1, lambda2);
            const float u = lambda1 + kAlpha * lambda2;
            const float v = lambda2 + kAlpha * lambda1;
            const float stronger = std::abs(u) <= std::abs(v) ? v : u;
            out[col] = std::max(0.0F, stronger);
        }
    }

    const cv::Mat& image_;
    int border_;
    cv::Mat smooth_;
    cv::Mat derive_;
    cv::Mat x_;
    cv::Mat y_;
    cv::Mat xx_;
    cv::Mat xy_;
    cv::Mat yy_;
};

/// Scales the response to a maximum of 1 and puts the larger of it and the ridges, if there are
/// some, into these. No response is negative.
void addScaled(cv::Mat response, cv::Mat& ridges) {
    double largest = 0.0;
    cv::minMaxLoc(response, nullptr, &largest);
    const float maximum = static_cast<float>(largest);
    if (maximum > 0.0F) response *= 1.0 / static_cast<double>(maximum);
    if (ridges.empty()) {
        ridges = response;
    } else {
        cv::max(ridges, response, ridges);
    }
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
    computeEigenvalues(a, b, c, lambda1, lambda2);
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
        addScaled(RidgeScale(working, scale, border).response(), ridges);
    }
    return ridges.empty() ? cv::Mat(cv::Mat::zeros(working.size(), CV_32FC1)) : ridges;
}

cv::Mat generateBoundaryFromDilated(const cv::Mat& image) {
    internal::require(!image.empty(), "generateBoundaryFromDilated: Input image is empty");
    const cv::Mat working = toUnitFloat(image);
    const cv::Mat element =
        cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3), cv::Point(-1, -1));
    cv::Mat eroded;
    // The border's default value is the largest: the edge of the image makes no boundary.
    cv::erode(working, eroded, element, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT);
    cv::Mat boundary(working.size(), CV_32FC1);
    for (int row = 0; row < boundary.rows; ++row) {
        const float* const value = working.ptr<float>(row);
        const float* const smallest = eroded.ptr<float>(row);
        float* const out = boundary.ptr<float>(row);
        const int cols = boundary.cols;
        for (int col = 0; col < cols; ++col) {
            out[col] = value[col] - smallest[col] > 0.5F ? 1.0F : 0.0F;
        }
    }
    return boundary;
}

}  // namespace vorund::RidgeFilter
