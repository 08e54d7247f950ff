#include "flow/room_graph.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include "flow/separators.h"
#include "internal/border_pixels.h"
#include "internal/pixel_sums.h"
#include "internal/runs.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

using internal::PixelSums;

std::size_t indexOf(std::int32_t value) {
    return static_cast<std::size_t>(value);
}

/// Fills in borders and ids.
/// @return The number of pixels by id.
std::vector<std::int64_t> findBorders(const cv::Mat& separated, FoundGraph& found) {
    found.borders = cv::Mat::zeros(separated.size(), CV_32SC1);
    internal::BorderNumbers numbers(found.border_ids);
    std::vector<std::int64_t> pixels(1, 0);
    for (int row = 0; row < separated.rows; ++row) {
        const internal::RowsAround<std::int32_t> rows(separated, row);
        std::int32_t* const border = found.borders.ptr<std::int32_t>(row);
        internal::forEachRun(rows.here, rows.cols, [&](int begin, int end, std::int32_t label) {
            if (label != kLine) return;
            for (int col = begin; col < end; ++col) {
                const internal::RoomsBeside beside = internal::roomsBeside(rows, col);
                if (!beside.areTwo()) continue;
                border[col] = numbers.of(beside);
                pixels.resize(found.border_ids.size() + 1, 0);
                ++pixels[indexOf(border[col])];
            }
        });
    }
    return pixels;
}

cv::Point centroidOf(const PixelSums& sum) {
    const cv::Point2d mean = sum.mean();
    return {static_cast<int>(std::round(mean.x)), static_cast<int>(std::round(mean.y))};
}

}  // namespace

FoundGraph findGraph(const cv::Mat& separated, int label_count) {
    FoundGraph found;
    const std::vector<std::int64_t> border_pixels = findBorders(separated, found);
    internal::NumberedSums sums(label_count);
    internal::addLabels<std::int32_t>(separated, sums);
    for (int label = 1; label < label_count; ++label) {
        if (label == kLine || sums[label].count == 0) continue;
        const auto pixels = static_cast<double>(sums[label].count);
        found.graph.addNode(
            label, {pixels * kWorkingResolution * kWorkingResolution, centroidOf(sums[label])});
    }
    for (const auto& [edge, id] : found.border_ids) {
        const auto pixels = static_cast<double>(border_pixels[indexOf(id)]);
        found.graph.addEdge(edge.first, edge.second, {pixels * kWorkingResolution});
    }
    return found;
}

}  // namespace vorund::rooms
