#include "blocks/wide_flow.h"

#include <cstdint>
#include <map>

#include "flow/separators.h"

namespace vorund::rooms {
namespace {

/// Of borders: the core's pictures take a pass over the image for each. Neighbours differ mostly.
constexpr int kBorderColours = 12;

Regions segmentDivided(const WorkingMap& map, const Settings& settings,
                       const std::shared_ptr<Debugger>& debugger, const StageObserver& observer) {
    const WorkingMap::Framed framed = map.framed();
    Regions regions = segmentInBlocks(framed.values, settings.core, debugger,
                                      settings.rooms.block_pixels, observer);
    regions.labels = regions.labels(framed.own);
    requireRooms(regions.labels);
    return regions;
}

/// Numbers of any size as bytes from 1 to `count`; 0 and the value of lines stay.
cv::Mat toFewBytes(const cv::Mat& numbers, int count) {
    cv::Mat bytes(numbers.size(), CV_8UC1);
    for (int row = 0; row < numbers.rows; ++row) {
        const std::int32_t* const from = numbers.ptr<std::int32_t>(row);
        std::uint8_t* const to = bytes.ptr<std::uint8_t>(row);
        for (int col = 0; col < numbers.cols; ++col) {
            const bool stays = from[col] == 0 || from[col] == kLine;
            to[col] = static_cast<std::uint8_t>(stays ? from[col] : 1 + (from[col] - 1) % count);
        }
    }
    return bytes;
}

cv::Mat drawCuts(const cv::Mat& labels, const cv::Mat& borders, const Cuts& cuts) {
    std::map<int, GraphProcessor::OptimalLine> lines;
    for (const auto& cut : cuts) lines.emplace(static_cast<int>(lines.size()), cut.second);
    return GraphProcessor::OptimalBorderRectifier(labels, borders, {})
        .visualizeOptimalResults(lines);
}

}  // namespace

bool isDivided(const Settings& settings, const cv::Size& working_size) {
    return settings.rooms.blocks == "always" ||
           std::int64_t{working_size.width} * working_size.height > kMostPixelsInOnePiece;
}

Regions findRegions(const WorkingMap& map, const Settings& settings,
                    const std::shared_ptr<Debugger>& debugger, const StageObserver& observer) {
    if (map.isAllFloor() || !isDivided(settings, map.resampling().workingSize())) {
        try {
            FloorplanSegmenter segmenter(settings.core, debugger);
            return {map.segment(segmenter, observer), 1};
        } catch (const TooManyRooms&) {
            // In blocks, then.
        }
    }
    return segmentDivided(map, settings, debugger, observer);
}

WidePictures drawWide(const RoomGraph& rooms, const Cuts& cuts) {
    const cv::Mat labels = toFewBytes(rooms.labels, kLine - 1);
    cv::Mat borders = toFewBytes(rooms.borders, kBorderColours);
    borders.setTo(1 + (kLine - 1) % kBorderColours, borders == kLine);
    return {GraphProcessor::visualizeBorders(borders, labels),
            GraphProcessor::visualizeGraph(rooms.graph, labels.size(), labels),
            drawCuts(labels, borders, cuts)};
}

}  // namespace vorund::rooms
