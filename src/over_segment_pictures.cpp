#include "over_segment_pictures.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iostream>
#include <opencv2/imgproc.hpp>
#include <string>

namespace vorund::internal {
namespace {

const cv::Vec3b kBackgroundColour(64, 64, 64);

void putText(cv::Mat& picture, const std::string& text, const cv::Point& at, double scale,
             const cv::Scalar& colour, int thickness = 1) {
    cv::putText(picture, text, at, cv::FONT_HERSHEY_SIMPLEX, scale, colour, thickness, cv::LINE_8,
                false);
}

cv::Scalar grey(int level) {
    return cv::Scalar::all(level);
}

bool firstPixelOf(const cv::Mat& image, int value, cv::Point& first) {
    for (int row = 0; row < image.rows; ++row) {
        const std::uint8_t* const pixels = image.ptr<std::uint8_t>(row);
        const std::uint8_t* const found = std::find(pixels, pixels + image.cols, value);
        if (found == pixels + image.cols) continue;
        first = cv::Point(static_cast<int>(found - pixels), row);
        return true;
    }
    return false;
}

cv::Vec3b colourOf(int marker) {
    static const std::array<cv::Vec3b, 8> kColours{{{255, 0, 0},
                                                    {0, 255, 0},
                                                    {0, 0, 255},
                                                    {255, 255, 0},
                                                    {255, 0, 255},
                                                    {0, 255, 255},
                                                    {255, 128, 0},
                                                    {128, 0, 128}}};
    if (marker == 0) return {0, 0, 0};
    if (marker == 255) return kBackgroundColour;
    // Unsigned: a negative marker would leave a negative remainder.
    return kColours[static_cast<std::uint32_t>(marker) % kColours.size()];
}

cv::Scalar tintOf(int position) {
    static const std::array<cv::Scalar, 6> kTints{{{255, 160, 80},
                                                   {120, 255, 120},
                                                   {120, 120, 255},
                                                   {255, 255, 110},
                                                   {255, 120, 255},
                                                   {110, 255, 255}}};
    return kTints[static_cast<std::size_t>(position) % kTints.size()];
}

cv::Mat tintedThumbnail(const cv::Mat& mask, const cv::Size& size, int position) {
    cv::Mat small;
    cv::resize(mask, small, size, 0.0, 0.0, cv::INTER_LINEAR);
    small *= 255;
    cv::Mat colour;
    cv::cvtColor(small, colour, cv::COLOR_GRAY2BGR);
    return colour.mul(cv::Mat(size, CV_8UC3, tintOf(position)), 1.0 / 255.0);
}

std::string typeOf(int marker) {
    if (marker == 0) return "Unknown";
    return marker == 255 ? "Background" : "Foreground";
}

std::map<int, int> countPixels(const cv::Mat& markers) {
    std::map<int, int> counts;
    for (int row = 0; row < markers.rows; ++row) {
        const std::int32_t* const marker = markers.ptr<std::int32_t>(row);
        for (int col = 0; col < markers.cols; ++col) ++counts[marker[col]];
    }
    return counts;
}

}  // namespace

cv::Mat drawLocalAndGlobalLabels(const cv::Mat& seed_map, const std::map<int, int>& mapper) {
    cv::Mat bright;
    seed_map.convertTo(bright, CV_8U, 32.0);
    cv::Mat picture;
    cv::cvtColor(bright, picture, cv::COLOR_GRAY2BGR);
    for (const auto& [local, global] : mapper) {
        cv::Point first;
        if (!firstPixelOf(seed_map, local, first)) continue;
        putText(picture, std::to_string(local) + "->" + std::to_string(global), first, 0.4,
                cv::Scalar(255, 0, 0, 0));
    }
    return picture;
}

cv::Mat drawLifespans(const std::map<int, std::pair<int, int>>& lifespans, int scale_count) {
    constexpr int kRowHeight = 30;
    constexpr int kBarLeft = 450;
    constexpr int kBarWidth = 140;
    const cv::Scalar bar_colour(0, 200, 0);

    cv::Mat picture =
        cv::Mat::zeros(kRowHeight * static_cast<int>(lifespans.size()) + 50, 600, CV_8UC3);
    putText(picture, "Global Label Lifespans", {10, 25}, 0.8, grey(255), 2);
    putText(picture, "Global Label | Start Index | End Index | Duration", {10, 45}, 0.5, grey(200));
    int y = 57;
    for (const auto& [global, lifespan] : lifespans) {
        const auto [start, end] = lifespan;
        const int baseline = y + 13;
        putText(picture, "Label " + std::to_string(global), {10, baseline}, 0.5, grey(255));
        putText(picture, std::to_string(start), {150, baseline}, 0.5, grey(255));
        putText(picture, std::to_string(end), {250, baseline}, 0.5, grey(255));
        putText(picture, std::to_string(end - start + 1), {350, baseline}, 0.5, grey(255));
        cv::rectangle(picture, cv::Point(kBarLeft, y), cv::Point(kBarLeft + kBarWidth, y + 16),
                      grey(50), cv::FILLED);
        if (scale_count > 1) {
            const int left = kBarLeft + start * kBarWidth / (scale_count - 1);
            const int right = kBarLeft + end * kBarWidth / (scale_count - 1);
            cv::rectangle(picture, cv::Point(left, y + 2), cv::Point(right, y + 14), bar_colour,
                          cv::FILLED);
        }
        y += kRowHeight;
    }
    return picture;
}

bool placeThumbnail(cv::Mat& canvas, const cv::Rect& cell, const cv::Mat& thumbnail, int global) {
    if (cell.br().x > canvas.cols || cell.br().y > canvas.rows) {
        std::cerr << "Warning: Skipping seed " << global << " due to bounds violation" << std::endl;
        return false;
    }
    if (cell.x < 0 || cell.y < 0) {
        std::cerr << "Warning: ROI out of bounds for seed " << global << std::endl;
    } else {
        thumbnail.copyTo(canvas(cell));
    }
    return true;
}

cv::Mat drawSeedOverview(const std::map<int, cv::Mat>& seeds, const cv::Size& map_size) {
    constexpr int kMostColumns = 4;
    constexpr int kLargestThumbnail = 200;
    constexpr int kGap = 20;
    const int count = static_cast<int>(seeds.size());
    const int columns = std::min(count, kMostColumns);
    const int margin = count < kMostColumns ? (count + 1) * kGap : 100;
    const cv::Size thumbnail(std::min(map_size.width, kLargestThumbnail),
                             std::min(map_size.height, kLargestThumbnail));
    const int cell_height = thumbnail.height + 50;
    const int rows = (count + columns - 1) / columns;

    cv::Mat canvas =
        cv::Mat::zeros(rows * cell_height + 80, margin + columns * thumbnail.width, CV_8UC3);
    putText(canvas, "Map Initial Seeds Visualization", {10, 30}, 0.8, grey(255), 2);
    int position = 0;
    for (const auto& [global, mask] : seeds) {
        const cv::Point origin(position % columns * (thumbnail.width + kGap) + kGap,
                               position / columns * cell_height + 60);
        const cv::Rect cell(origin, thumbnail);
        const int tint = position++;
        if (!placeThumbnail(canvas, cell, tintedThumbnail(mask, thumbnail, tint), global)) continue;
        const auto pixels = static_cast<std::int64_t>(cv::sum(mask)[0]);
        putText(canvas, "Global Label " + std::to_string(global),
                origin + cv::Point(0, thumbnail.height + 15), 0.4, grey(255));
        putText(canvas, "Seeds: " + std::to_string(pixels),
                origin + cv::Point(0, thumbnail.height + 30), 0.4, grey(255));
    }
    return canvas;
}

cv::Mat drawMarkers(const cv::Mat& markers) {
    cv::Mat picture(markers.size(), CV_8UC3);
    for (int row = 0; row < markers.rows; ++row) {
        const std::int32_t* const marker = markers.ptr<std::int32_t>(row);
        cv::Vec3b* const pixel = picture.ptr<cv::Vec3b>(row);
        std::transform(marker, marker + markers.cols, pixel, colourOf);
    }
    return picture;
}

cv::Mat drawMarkerCounts(const cv::Mat& markers) {
    constexpr int kRowHeight = 25;
    const std::map<int, int> counts = countPixels(markers);
    cv::Mat picture =
        cv::Mat::zeros(kRowHeight * static_cast<int>(counts.size()) + 80, 500, CV_8UC3);
    putText(picture, "Superposed Seeds Statistics", {10, 25}, 0.7, grey(255), 2);
    putText(picture, "Label | Count | Type", {10, 50}, 0.5, grey(200));
    int baseline = 75;
    for (const auto& [marker, count] : counts) {
        const cv::Scalar colour = grey(marker == 0 ? 128 : 255);
        putText(picture, std::to_string(marker), {10, baseline}, 0.5, colour);
        putText(picture, std::to_string(count), {150, baseline}, 0.5, colour);
        putText(picture, typeOf(marker), {290, baseline}, 0.5, colour);
        baseline += kRowHeight;
    }
    return picture;
}

}  // namespace vorund::internal
