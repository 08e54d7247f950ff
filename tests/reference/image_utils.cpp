#include "reference/image_utils.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

namespace vorund::reference {
namespace {

void require(bool condition, const char* message) {
    if (!condition) throw std::runtime_error(message);
}

/// 1 where the map is above the threshold, in single precision like the map.
cv::Mat_<float> binary(const cv::Mat& map, double threshold) {
    const auto limit = static_cast<float>(threshold);
    cv::Mat_<float> result(map.size());
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            result(row, col) = map.at<float>(row, col) > limit ? 1.0F : 0.0F;
        }
    }
    return result;
}

/// The smallest rectangle around all pixels that differ from the first one, with a margin.
cv::Rect contentOf(const cv::Mat_<float>& map, int margin) {
    cv::Point first(map.cols, map.rows);
    cv::Point last(-1, -1);
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            if (map(row, col) == map(0, 0)) continue;
            first = {std::min(first.x, col), std::min(first.y, row)};
            last = {std::max(last.x, col), std::max(last.y, row)};
        }
    }
    require(last.x >= 0, "cropSingleInfo expects a non-empty image.");
    const cv::Point top_left(std::max(first.x - margin, 0), std::max(first.y - margin, 0));
    const cv::Point bottom_right(std::min(last.x + margin, map.cols - 1),
                                 std::min(last.y + margin, map.rows - 1));
    require(top_left.x <= bottom_right.x && top_left.y <= bottom_right.y,
            "cropBackground leads to an empty image.");
    return {top_left, bottom_right + cv::Point(1, 1)};
}

double leastArea(std::vector<int> areas,
                 const Config::RemoveSmallConnectedComponentsConfig& config) {
    if (config.method == "fixed") return config.min_size;
    const std::size_t count = areas.size();
    if (config.method == "mean") {
        return std::accumulate(areas.begin(), areas.end(), 0.0) / static_cast<double>(count);
    }
    require(config.method == "median", "Invalid method in removeSmallConnectedComponents");
    std::sort(areas.begin(), areas.end());
    return (areas[(count - 1) / 2] + areas[count / 2]) / 2.0;
}

/// Regions of 1 that are large enough.
cv::Mat_<float> largeRegions(const cv::Mat_<float>& map,
                             const Config::RemoveSmallConnectedComponentsConfig& config) {
    cv::Mat_<int> regions;
    cv::Mat_<int> stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(map != 0.0, regions, stats, centroids,
                                                       config.connectivity, CV_32S);
    require(count >= 2, "removeSmallConnectedComponents expects a non-empty image.");
    std::vector<int> areas;
    for (int region = 1; region < count; ++region) areas.push_back(stats(region, cv::CC_STAT_AREA));
    const double least = leastArea(areas, config);
    cv::Mat_<float> result(map.size());
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            const int region = regions(row, col);
            const bool kept = region > 0 && areas[static_cast<std::size_t>(region - 1)] >= least;
            result(row, col) = kept ? 1.0F : 0.0F;
        }
    }
    return result;
}

}  // namespace

CleanMap denoised(const cv::Mat& raw, const Config::GenerateDenoisedAloneConfig& config) {
    const cv::Rect place = contentOf(binary(raw, config.binary_for_crop_make_binary.threshold),
                                     config.crop_single_info.padding);
    const cv::Mat floor = 1.0 - binary(raw(place), config.binary_make_binary.threshold);
    const cv::Mat walls =
        1.0 - largeRegions(floor, config.components_out_remove_small_connected_components);
    return {largeRegions(walls, config.components_in_remove_small_connected_components), place};
}

cv::Mat dilated(const cv::Mat& map, const Config::DilateBinaryConfig& config) {
    const cv::Size size(config.kernel_size, config.kernel_size);
    cv::Mat result;
    cv::dilate(map, result, cv::getStructuringElement(cv::MORPH_RECT, size), cv::Point(-1, -1),
               config.iterations, cv::BORDER_CONSTANT);
    return result;
}

cv::Mat restored(const cv::Mat& labels, const cv::Rect& place, const cv::Size& size,
                 int unreached) {
    cv::Mat result = cv::Mat::zeros(size, CV_8UC1);
    labels.copyTo(result(place));
    for (int row = 0; row < size.height; ++row) {
        for (int col = 0; col < size.width; ++col) {
            std::uint8_t& label = result.at<std::uint8_t>(row, col);
            if (label == unreached) label = 255;
        }
    }
    return result;
}

}  // namespace vorund::reference
