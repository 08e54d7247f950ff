#include "small_components.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

#include "internal/plain_output.h"
#include "internal/require.h"
#include "internal/text.h"
#include "runs/run_components.h"

namespace vorund::internal {
namespace {

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

PixelRuns withoutSmallComponents(const PixelRuns& pixels,
                                 const Config::RemoveSmallConnectedComponentsConfig& config) {
    require(pixels.size() > 0, "removeSmallConnectedComponents expects a non-empty image.");
    const RunComponents components = connectRuns(pixels, config.connectivity);
    const std::vector<int> areas = areasOf(pixels, components);
    const double threshold = areaThreshold(areas, config);
    TextStream line;
    line << "removeSmallConnectedComponents: threshold_area: " << threshold << '\n';
    printPlain(line.str());

    PixelRuns kept(pixels.rows());
    for (int row = 0; row < pixels.rows(); ++row) {
        for (std::size_t i = pixels.rowBegin(row); i < pixels.rowBegin(row + 1); ++i) {
            const auto component = static_cast<std::size_t>(components.label_of_run[i]) - 1;
            if (areas[component] >= threshold) kept.add(pixels[i].begin, pixels[i].end);
        }
        kept.closeRow();
    }
    return kept;
}

void requireConnectivity(const cv::Mat& bytes, int connectivity) {
    if (bytes.channels() == 1 && (connectivity == 4 || connectivity == 8)) return;
    cv::Mat labels;
    cv::connectedComponents(bytes, labels, connectivity, CV_32S);
}

cv::Mat drawn(const PixelRuns& pixels, const cv::Size& size) {
    cv::Mat image = cv::Mat::zeros(size, CV_32FC1);
    pixels.visit([&](int row, const PixelRun& run) {
        float* const values = image.ptr<float>(row);
        std::fill(values + run.begin, values + run.end, 1.0F);
    });
    return image;
}

}  // namespace vorund::internal
