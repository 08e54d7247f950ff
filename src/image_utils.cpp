#include "vorund/image_utils.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "internal/plain_output.h"
#include "internal/require.h"
#include "internal/text.h"

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

/// Sizes and margins are added in 64 bits and brought back here: any margin may come from a file.
int toInt(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(),
                                                     std::numeric_limits<int>::max()));
}

/// What is cut off in front of content that starts at `position`.
int marginBefore(int position, int padding) {
    return toInt(std::max<std::int64_t>(0, std::int64_t{position} - padding));
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

/// Areas of the regions in label order, without the background.
std::vector<int> regionAreas(const cv::Mat& stats) {
    std::vector<int> areas;
    for (int label = 1; label < stats.rows; ++label) {
        areas.push_back(stats.at<int>(label, cv::CC_STAT_AREA));
    }
    return areas;
}

double mean(const std::vector<int>& areas) {
    double sum = 0.0;
    for (const int area : areas) sum += area;
    return sum / static_cast<double>(areas.size());
}

double median(std::vector<int> areas) {
    std::sort(areas.begin(), areas.end());
    const std::size_t middle = areas.size() / 2;
    if (areas.size() % 2 == 1) return areas[middle];
    return (areas[middle - 1] + areas[middle]) / 2.0;
}

double areaThreshold(const std::vector<int>& areas,
                     const Config::RemoveSmallConnectedComponentsConfig& config) {
    if (config.method == "fixed") return config.min_size;
    if (config.method == "mean") return mean(areas);
    if (config.method == "median") return median(areas);
    throw std::runtime_error("Invalid method in removeSmallConnectedComponents");
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

    return {marginBefore(left, padding), marginBefore(top, padding),
            marginBefore(bytes.cols - 1 - right, padding),
            marginBefore(bytes.rows - 1 - bottom, padding)};
}

cv::Mat ImageUtils::cropBackground(const cv::Mat& image, const CropInfo& crop) {
    require(!image.empty(), "cropBackground expects a non-empty image.");
    const std::int64_t width = std::int64_t{image.cols} - crop.left - crop.right;
    const std::int64_t height = std::int64_t{image.rows} - crop.top - crop.bottom;
    require(width > 0 && height > 0, "cropBackground leads to an empty image.");
    // A negative margin reaches beyond the image; OpenCV's own check would overflow for a huge one.
    CV_Assert(crop.left >= 0 && crop.top >= 0 && crop.left + width <= image.cols &&
              crop.top + height <= image.rows);
    return image(cv::Rect(crop.left, crop.top, toInt(width), toInt(height)));
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
    cv::Mat full(toInt(height), toInt(width), image.type(), fill);
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
    constexpr char kEmpty[] = "removeSmallConnectedComponents expects a non-empty image.";
    require(!image.empty(), kEmpty);
    cv::Mat regions;
    cv::Mat stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(toBytes(image), regions, stats, centroids,
                                                       config.connectivity, CV_32S);
    require(count >= 2, kEmpty);

    const double threshold = areaThreshold(regionAreas(stats), config);
    internal::TextStream line;
    line << "removeSmallConnectedComponents: threshold_area: " << threshold << '\n';
    internal::printPlain(line.str());

    std::vector<float> value_of_region(static_cast<std::size_t>(count), 0.0F);
    for (int region = 1; region < count; ++region) {
        const bool kept = stats.at<int>(region, cv::CC_STAT_AREA) >= threshold;
        value_of_region[static_cast<std::size_t>(region)] = kept ? 1.0F : 0.0F;
    }
    cv::Mat kept(image.size(), CV_32FC1);
    for (int row = 0; row < kept.rows; ++row) {
        const int* const region = regions.ptr<int>(row);
        float* const value = kept.ptr<float>(row);
        for (int col = 0; col < kept.cols; ++col) {
            value[col] = value_of_region[static_cast<std::size_t>(region[col])];
        }
    }
    return kept;
}

}  // namespace vorund
