#include "cleaning/clutter.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "cleaning/wall_continuation.h"
#include "runs/run_components.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

using internal::PixelRuns;
using internal::RunComponents;

/// Partitions are thinner, most furniture is thicker. [m]
constexpr double kThicknessOfBlocks = 0.5;

/// They have no direction. [m]
constexpr double kLargestSpeck = 0.25;

void paint(const PixelRuns& pixels, const RunComponents& parts, const std::vector<bool>& chosen,
           float value, cv::Mat& values) {
    std::size_t run = 0;
    pixels.visit([&](int row, const internal::PixelRun& where) {
        if (!chosen[static_cast<std::size_t>(parts.label_of_run[run++]) - 1]) return;
        float* const pixel = values.ptr<float>(row);
        std::fill(pixel + where.begin, pixel + where.end, value);
    });
}

void closeSmallFloor(cv::Mat& values, double threshold, double least_area) {
    const PixelRuns floor = internal::pixelsNotAbove(values, threshold);
    const RunComponents parts = internal::connectRuns(floor, 4);
    std::vector<bool> chosen;
    for (const int pixels : internal::areasOf(floor, parts)) {
        chosen.push_back(pixels * kWorkingResolution * kWorkingResolution < least_area);
    }
    const bool is_all = std::find(chosen.begin(), chosen.end(), false) == chosen.end();
    if (!is_all) paint(floor, parts, chosen, 1.0F, values);
}

/// A part of the wall.
struct Part {
    cv::Rect box;
    PartShape shape;

    bool isWithin(double side) const {
        constexpr double kMargin = 1e-9;  // A side of 6 pixels is one of 0.3 m.
        return std::max(box.width, box.height) * kWorkingResolution <= side + kMargin;
    }
};

std::vector<Part> partsOf(const PixelRuns& pixels, const RunComponents& components) {
    std::vector<Part> parts(static_cast<std::size_t>(components.count));
    std::size_t run = 0;
    pixels.visit([&](int row, const internal::PixelRun& where) {
        Part& part = parts[static_cast<std::size_t>(components.label_of_run[run++]) - 1];
        part.box |= cv::Rect(where.begin, row, where.end - where.begin, 1);
        part.shape.add(row, where);
    });
    return parts;
}

/// Whether a square of that thickness fits into a part of the wall.
bool isBlock(const PixelRuns& walls, const RunComponents& parts, int label, const cv::Rect& box) {
    cv::Mat part = cv::Mat::zeros(box.size(), CV_8UC1);
    for (int row = box.y; row < box.y + box.height; ++row) {
        for (std::size_t run = walls.rowBegin(row); run < walls.rowBegin(row + 1); ++run) {
            if (parts.label_of_run[run] != label) continue;
            std::uint8_t* const pixel = part.ptr<std::uint8_t>(row - box.y) - box.x;
            std::fill(pixel + walls[run].begin, pixel + walls[run].end, std::uint8_t{1});
        }
    }
    const int side = cvRound(kThicknessOfBlocks / kWorkingResolution);
    cv::erode(part, part, cv::Mat::ones(side, side, CV_8U), cv::Point(-1, -1), 1,
              cv::BORDER_CONSTANT, cv::Scalar(0));
    return cv::countNonZero(part) > 0;
}

void takeOutLooseParts(cv::Mat& values, double threshold, const RoomsConfig& config) {
    const cv::Mat mask = values > threshold;
    const PixelRuns walls = internal::nonZeroPixels(mask);
    const RunComponents components = internal::connectRuns(walls, 8);
    const std::vector<Part> parts = partsOf(walls, components);
    const cv::Rect map({0, 0}, values.size());
    std::vector<bool> chosen;
    for (const Part& part : parts) {
        const int label = static_cast<int>(chosen.size()) + 1;
        const bool is_loose =
            part.isWithin(config.loose_part) ||
            (part.isWithin(config.loose_block) && isBlock(walls, components, label, part.box));
        const bool is_speck = part.isWithin(kLargestSpeck);
        const bool is_around_all = part.box == map;
        chosen.push_back(is_loose && !is_around_all &&
                         (is_speck || !continuesWall(mask, part.shape, config.wall_line)));
    }
    paint(walls, components, chosen, 0.0F, values);
}

}  // namespace

cv::Mat withoutClutter(const cv::Mat& values, double threshold, const RoomsConfig& config) {
    cv::Mat cleaned = values.clone();
    closeSmallFloor(cleaned, threshold, config.closed_floor);
    takeOutLooseParts(cleaned, threshold, config);
    return cleaned;
}

}  // namespace vorund::rooms
