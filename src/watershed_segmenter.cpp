#include "vorund/watershed_segmenter.h"

#include <opencv2/imgproc.hpp>
#include <string>

#include "internal/require.h"
#include "internal/text.h"
#include "marker_flood/marker_flood.h"
#include "vorund/image_utils.h"

namespace vorund {
namespace {

using internal::require;

/// The four images of one scale, in the order in which they come about.
struct SeedSteps {
    cv::Mat blurred;
    cv::Mat inverted;
    cv::Mat components;
    cv::Mat marked;
};

void putCaption(cv::Mat& panel, const std::string& text, const cv::Point& quadrant, int grey) {
    cv::putText(panel, text, quadrant + cv::Point(10, 20), cv::FONT_HERSHEY_SIMPLEX, 0.5,
                cv::Scalar(grey), 1, cv::LINE_8, false);
}

/// The four steps side by side, two by two.
cv::Mat drawSeedSteps(const SeedSteps& steps, double sigma) {
    const int cols = steps.marked.cols;
    const int rows = steps.marked.rows;
    cv::Mat panel = cv::Mat::zeros(2 * rows, 2 * cols, CV_8UC1);
    const auto draw = [&](const cv::Mat& image, double scale, const cv::Point& quadrant) {
        cv::Mat part = panel(cv::Rect(quadrant, cv::Size(cols, rows)));
        image.convertTo(part, CV_8U, scale);
    };
    const cv::Point top_left(0, 0);
    const cv::Point top_right(cols, 0);
    const cv::Point bottom_left(0, rows);
    const cv::Point bottom_right(cols, rows);
    draw(steps.blurred, 255.0, top_left);
    draw(steps.inverted, 1.0, top_right);
    draw(steps.components, 32.0, bottom_left);
    draw(steps.marked, 32.0, bottom_right);
    putCaption(panel, "1. Gaussian Blur sigma=" + internal::fixedText(sigma), top_left, 0);
    putCaption(panel, "2. Binary Threshold", top_right, 255);
    putCaption(panel, "3. Connected Components (x32)", bottom_left, 255);
    putCaption(panel, "4. Background Marked (x32)", bottom_right, 0);
    return panel;
}

/// The labels with 0 and 255 swapped, as bytes.
/// @throws std::runtime_error  if there are others than those of bytes.
cv::Mat withBackgroundAndLinesSwapped(const cv::Mat& labels) {
    cv::Mat bytes(labels.size(), CV_8UC1);
    std::uint32_t all = 0;
    for (int row = 0; row < labels.rows; ++row) {
        const std::int32_t* const label = labels.ptr<std::int32_t>(row);
        std::uint8_t* const out = bytes.ptr<std::uint8_t>(row);
        for (int col = 0; col < labels.cols; ++col) {
            const auto value = static_cast<std::uint32_t>(label[col]);
            all |= value;
            const auto byte = static_cast<std::uint8_t>(value);
            out[col] = byte == 0 || byte == 255 ? static_cast<std::uint8_t>(~byte) : byte;
        }
    }
    require(all <= 255, "createWatershedSegmentSkimage: Label values exceed uint8 range.");
    return bytes;
}

}  // namespace

GaussianSeedsResult WatershedSegmenter::generateGaussianSeedsSkimage(
    const cv::Mat& image, const cv::Mat& mask, double sigma,
    const Config::GenerateGaussianSeedsSkimageConfig& config, std::shared_ptr<Debugger> debugger) {
    SeedSteps steps;
    // Isolated: the pixels around a view of a larger image lie beyond the map's edge.
    cv::GaussianBlur(image, steps.blurred, cv::Size(0, 0), sigma, 0.0,
                     cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
    ImageUtils::makeBinary(steps.blurred, config.threshold, 1.0)
        .convertTo(steps.inverted, CV_8U, 255.0);
    steps.inverted = cv::Scalar(255) - steps.inverted;
    const int ncc = cv::connectedComponents(steps.inverted, steps.components, 4, CV_32S) - 1;
    // Saturates: seeds from the 255th on become background, which later stages count on.
    steps.components.convertTo(steps.marked, CV_8U);
    // OpenCV refuses a mask that is smaller.
    const cv::Mat covering = mask(cv::Rect(cv::Point(0, 0), steps.marked.size()));
    for (int row = 0; row < steps.marked.rows; ++row) {
        const std::uint8_t* const background = covering.ptr<std::uint8_t>(row);
        std::uint8_t* const label = steps.marked.ptr<std::uint8_t>(row);
        for (int col = 0; col < steps.marked.cols; ++col) {
            if (background[col] != 0) label[col] = 255;
        }
    }

    if (debugger && debugger->takesImages()) {
        debugger->write("40cpp_gaussian_seeds_sigma_" + internal::fixedText(sigma) + ".png",
                        drawSeedSteps(steps, sigma), false);
    }
    return {steps.marked, ncc};
}

cv::Mat WatershedSegmenter::executeSkimageWatershed(const cv::Mat& image, cv::Mat& markers,
                                                    int connectivity, bool watershed_line) {
    return internal::floodFromMarkers(image, markers, connectivity, watershed_line);
}

cv::Mat WatershedSegmenter::createWatershedSegmentSkimage(
    const cv::Mat& src_image, cv::Mat& markers,
    const Config::CreateWatershedSegmentSkimageConfig& config) {
    require(!src_image.empty() && !markers.empty(),
            "createWatershedSegmentSkimage: Input images are empty.");
    require(src_image.size() == markers.size(),
            "createWatershedSegmentSkimage: Image and markers must have same size.");
    require(src_image.type() == CV_32FC1 && markers.type() == CV_32SC1,
            "createWatershedSegmentSkimage: Unsupported src_image or markers format. Expected "
            "CV_32FC1 or CV_32S.");

    return withBackgroundAndLinesSwapped(
        executeSkimageWatershed(src_image, markers, config.connectivity, true));
}

}  // namespace vorund
