#include "reference/denoised_map.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <opencv2/imgproc.hpp>

namespace vorund::reference {
namespace {

cv::Mat bytesOf(const cv::Mat& image) {
    cv::Mat bytes;
    image.convertTo(bytes, CV_8U, 255.0);
    return bytes;
}

double areaThreshold(std::vector<int> areas,
                     const Config::RemoveSmallConnectedComponentsConfig& config) {
    if (config.method == "fixed") return config.min_size;
    const auto count = static_cast<double>(areas.size());
    if (config.method == "mean") return std::accumulate(areas.begin(), areas.end(), 0.0) / count;
    std::sort(areas.begin(), areas.end());
    const std::size_t half = areas.size() / 2;
    return areas.size() % 2 == 1 ? areas[half] : (areas[half - 1] + areas[half]) / 2.0;
}

}  // namespace

CropInfo contentMargins(const cv::Mat& image) {
    const cv::Mat bytes = bytesOf(image);
    cv::Mat content = bytes != bytes.at<uchar>(0, 0);
    const cv::Rect box = cv::boundingRect(content);
    return {box.x, box.y, image.cols - box.x - box.width, image.rows - box.y - box.height};
}

cv::Mat largeRegions(const cv::Mat& image,
                     const Config::RemoveSmallConnectedComponentsConfig& config,
                     double& threshold) {
    cv::Mat labels;
    cv::Mat stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(bytesOf(image), labels, stats, centroids,
                                                       config.connectivity, CV_32S);
    std::vector<int> areas;
    for (int label = 1; label < count; ++label) {
        areas.push_back(stats.at<int>(label, cv::CC_STAT_AREA));
    }
    threshold = areaThreshold(areas, config);
    cv::Mat large = cv::Mat::zeros(image.size(), CV_32FC1);
    for (int label = 1; label < count; ++label) {
        if (areas[static_cast<std::size_t>(label) - 1] >= threshold) {
            large.setTo(1.0, labels == label);
        }
    }
    return large;
}

DenoisedMap denoisedMap(const cv::Mat& raw_image,
                        const Config::GenerateDenoisedAloneConfig& config) {
    cv::Mat content;
    cv::threshold(raw_image, content, config.binary_for_crop_make_binary.threshold, 1.0,
                  cv::THRESH_BINARY);
    DenoisedMap result{cv::Mat(), contentMargins(content), {0.0, 0.0}};
    const CropInfo& crop = result.crop;
    const cv::Rect kept(crop.left, crop.top, raw_image.cols - crop.left - crop.right,
                        raw_image.rows - crop.top - crop.bottom);
    cv::Mat walls;
    cv::threshold(raw_image(kept), walls, config.binary_make_binary.threshold, 1.0,
                  cv::THRESH_BINARY);
    const cv::Mat floor = largeRegions(
        1.0 - walls, config.components_out_remove_small_connected_components, result.thresholds[0]);
    result.map = largeRegions(1.0 - floor, config.components_in_remove_small_connected_components,
                              result.thresholds[1]);
    return result;
}

}  // namespace vorund::reference
