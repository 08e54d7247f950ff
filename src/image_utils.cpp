#include "vorund/image_utils.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "crop_margins.h"
#include "internal/require.h"
#include "runs/pixel_runs.h"
#include "small_components.h"

namespace vorund {
namespace {

using internal::require;

constexpr double kByteToUnit = 0.00392156862745098;  // 1 / 255

cv::Mat dropAlpha(const cv::Mat& image) {
    if (image.channels() != 4) return image;
    cv::Mat colour;
    cv::cvtColor(image, colour, cv::COLOR_BGRA2BGR);
    return colour;
}

cv::Mat scaleBytes(const cv::Mat& image) {
    cv::Mat scaled;
    image.convertTo(scaled, CV_32F, kByteToUnit);
    return scaled;
}

cv::Mat toBytes(const cv::Mat& image) {
    cv::Mat bytes;
    image.convertTo(bytes, CV_8U, 255.0);
    return bytes;
}

bool anyDiffers(const cv::Mat& bytes, std::uint8_t background) {
    return cv::countNonZero(bytes != background) > 0;
}

template <class T>
void replaceValue(cv::Mat& image, T from, T to) {
    for (int row = 0; row < image.rows; ++row) {
        T* const pixels = image.ptr<T>(row);
        std::replace(pixels, pixels + std::ptrdiff_t{image.cols} * image.channels(), from, to);
    }
}

}  // namespace

cv::Mat ImageUtils::loadMapFromFileUint8(const std::string& path) {
    const cv::Mat image = cv::imread(path, cv::IMREAD_UNCHANGED);
    if (image.empty()) throw std::runtime_error("Could not read or find the image: " + path);
    return dropAlpha(image);
}

cv::Mat ImageUtils::loadMapFromFile(const std::string& path) {
    return scaleBytes(loadMapFromFileUint8(path));
}

cv::Mat ImageUtils::loadMapFromBuffer(const std::vector<std::uint8_t>& buffer) {
    cv::Mat image;
    // OpenCV throws on nothing at all. The matrix is a view of the caller's bytes.
    if (!buffer.empty()) image = cv::imdecode(cv::Mat(buffer), cv::IMREAD_UNCHANGED);
    require(!image.empty(), "Could not decode image from buffer.");
    return scaleBytes(dropAlpha(image));
}

cv::Mat ImageUtils::makeGray(const cv::Mat& image) {
    if (image.channels() == 1) return image.clone();
    require(image.channels() == 3, "Input image for makeGray must have 1 or 3 channels.");
    cv::Mat gray;
    cv::cvtColor(image, gray, cv::COLOR_BGR2GRAY);
    return gray;
}

cv::Mat ImageUtils::loadGrayMapFromFile(const std::string& path) {
    return makeGray(loadMapFromFile(path));
}

cv::Mat ImageUtils::loadGrayMapFromBuffer(const std::vector<std::uint8_t>& buffer) {
    return makeGray(loadMapFromBuffer(buffer));
}

cv::Mat ImageUtils::makeBinary(const cv::Mat& image, double threshold, double max_value) {
    require(image.type() == CV_32FC1,
            "Unsupported image type for makeBinary. Must be CV_32F or CV_32FC1.");
    cv::Mat binary;
    cv::threshold(image, binary, threshold, max_value, cv::THRESH_BINARY);
    return binary;
}

cv::Mat ImageUtils::makeInvert(const cv::Mat& image) {
    if (image.type() == CV_32FC1) return cv::Scalar(1.0) - image;
    require(image.type() == CV_8UC1,
            "Unsupported image type for makeInvert. Must be CV_32F or CV_8U.");
    return cv::Scalar(255) - image;
}

cv::Mat ImageUtils::dilateBinary(const cv::Mat& image, int kernel_size, int iterations) {
    const cv::Mat element = cv::getStructuringElement(
        cv::MORPH_RECT, cv::Size(kernel_size, kernel_size), cv::Point(-1, -1));
    cv::Mat dilated;
    // Isolated: the pixels around a view of a larger image lie beyond the map's edge as well.
    cv::dilate(image, dilated, element, cv::Point(-1, -1), iterations,
               cv::BORDER_CONSTANT | cv::BORDER_ISOLATED);
    return dilated;
}

CropInfo ImageUtils::cropSingleInfo(const cv::Mat& image, int padding) {
    constexpr char kEmpty[] = "cropSingleInfo expects a non-empty image.";
    require(!image.empty(), kEmpty);
    require(image.type() == CV_32FC1, "cropSingleInfo expects a CV_32F or CV_32FC1 image.");
    const cv::Mat bytes = toBytes(image);
    const std::uint8_t background = bytes.at<std::uint8_t>(0, 0);
    // Without this check the scans below would run past a uniform image.
    require(anyDiffers(bytes, background), kEmpty);

    int left = 0;
    while (!anyDiffers(bytes.col(left), background)) ++left;
    int right = bytes.cols - 1;
    while (!anyDiffers(bytes.col(right), background)) --right;
    int top = 0;
    while (!anyDiffers(bytes.row(top), background)) ++top;
    int bottom = bytes.rows - 1;
    while (!anyDiffers(bytes.row(bottom), background)) --bottom;

    return internal::marginsAround(cv::Rect(cv::Point(left, top), cv::Point(right + 1, bottom + 1)),
                                   bytes.size(), padding);
}

cv::Mat ImageUtils::cropBackground(const cv::Mat& image, const CropInfo& crop) {
    require(!image.empty(), "cropBackground expects a non-empty image.");
    const std::int64_t width = std::int64_t{image.cols} - crop.left - crop.right;
    const std::int64_t height = std::int64_t{image.rows} - crop.top - crop.bottom;
    require(width > 0 && height > 0, "cropBackground leads to an empty image.");
    // A negative margin reaches beyond the image; OpenCV's own check would overflow for a huge one.
    CV_Assert(crop.left >= 0 && crop.top >= 0 && crop.left + width <= image.cols &&
              crop.top + height <= image.rows);
    return image(cv::Rect(crop.left, crop.top, internal::toInt(width), internal::toInt(height)));
}

cv::Mat ImageUtils::uncropBackground(const cv::Mat& image, const CropInfo& crop,
                                     const cv::Scalar& fill) {
    const std::int64_t margin_x = std::int64_t{crop.left} + crop.right;
    const std::int64_t margin_y = std::int64_t{crop.top} + crop.bottom;
    const std::int64_t width = image.cols + margin_x;
    const std::int64_t height = image.rows + margin_y;
    const bool nothing = image.empty() && margin_x == 0 && margin_y == 0;
    if (nothing || width <= 0 || height <= 0) return cv::Mat(0, 0, image.type());

    CV_Assert(width <= std::numeric_limits<int>::max() &&
              height <= std::numeric_limits<int>::max());
    cv::Mat full(internal::toInt(height), internal::toInt(width), image.type(), fill);
    if (!image.empty()) {
        image.copyTo(full(cv::Rect(crop.left, crop.top, image.cols, image.rows)));
    }
    return full;
}

cv::Mat ImageUtils::remapBorder(const cv::Mat& image, int from_value, int to_value) {
    if (from_value == -1) {
        double largest = 0.0;
        cv::minMaxLoc(image, nullptr, &largest);
        from_value = static_cast<int>(std::clamp<double>(largest, std::numeric_limits<int>::min(),
                                                         std::numeric_limits<int>::max()));
    }
    cv::Mat result;
    if (image.type() == CV_8UC1) {
        result = image.clone();
        // Deliberately the low 8 bits: 300 is written as 44.
        replaceValue(result, static_cast<std::uint8_t>(from_value),
                     static_cast<std::uint8_t>(to_value));
    } else {
        image.convertTo(result, CV_32S);
        replaceValue(result, from_value, to_value);
    }
    return result;
}

cv::Mat ImageUtils::removeSmallConnectedComponents(
    const cv::Mat& image, const Config::RemoveSmallConnectedComponentsConfig& config) {
    const cv::Mat bytes = toBytes(image);
    internal::requireConnectivity(bytes, config.connectivity);
    const internal::PixelRuns kept =
        internal::withoutSmallComponents(internal::nonZeroPixels(bytes), config);
    return internal::drawn(kept, image.size());
}

}  // namespace vorund
