#include "flow/pictures.h"

#include <cstdint>
#include <map>

#include "flow/separators.h"
#include "vorund/graph_processor.h"

namespace vorund::rooms {
namespace {

/// Numbers of any size as bytes from 1 to `count`; 0 and `kept` stay.
cv::Mat toBytes(const cv::Mat& numbers, int count, int kept) {
    cv::Mat bytes(numbers.size(), CV_8UC1);
    for (int row = 0; row < numbers.rows; ++row) {
        const std::int32_t* const from = numbers.ptr<std::int32_t>(row);
        std::uint8_t* const to = bytes.ptr<std::uint8_t>(row);
        for (int col = 0; col < numbers.cols; ++col) {
            const bool stays = from[col] == 0 || from[col] == kept;
            to[col] = static_cast<std::uint8_t>(stays ? from[col] : 1 + (from[col] - 1) % count);
        }
    }
    return bytes;
}

cv::Mat drawCuts(const cv::Mat& labels, const cv::Mat& borders, const RoomGraph& rooms,
                 const Cuts& cuts) {
    std::map<int, GraphProcessor::OptimalLine> lines;
    for (const auto& [edge, line] : cuts) lines.emplace(rooms.border_ids.at(edge), line);
    return GraphProcessor::OptimalBorderRectifier(labels, borders, {})
        .visualizeOptimalResults(lines);
}

}  // namespace

FlowPictures drawPictures(const RoomGraph& rooms, const Cuts& cuts) {
    const cv::Mat labels = toBytes(rooms.labels, kLine - 1, kLine);
    const cv::Mat borders = toBytes(rooms.borders, kLine, 0);
    return {GraphProcessor::visualizeBorders(borders, labels),
            GraphProcessor::visualizeGraph(rooms.graph, labels.size(), labels),
            drawCuts(labels, borders, rooms, cuts)};
}

}  // namespace vorund::rooms
