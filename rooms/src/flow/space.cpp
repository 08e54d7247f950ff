#include "flow/space.h"

#include <algorithm>
#include <cstdint>

#include "internal/runs.h"

namespace vorund::rooms {
namespace {

constexpr std::int32_t kStraight = 3;
constexpr std::int32_t kDiagonal = 4;

/// A row of labels or distances and where its neighbour is, which a pass has seen before; null for
/// the first row of a pass.
struct Rows {
    const std::int32_t* labels;
    const std::int32_t* labels_before;
    std::int32_t* distances;
    const std::int32_t* distances_before;
};

/// Lowers the distances of a row by those of the row before it and of the pixels before them.
/// @param step  1: from the left, -1: from the right.
void relax(const Rows& rows, int cols, int step) {
    const int first = step > 0 ? 0 : cols - 1;
    const int end = step > 0 ? cols : -1;
    for (int col = first; col != end; col += step) {
        const std::int32_t label = rows.labels[col];
        if (label == 0) continue;
        std::int32_t distance = rows.distances[col];
        const auto look = [&](const std::int32_t* labels, const std::int32_t* distances, int at,
                              std::int32_t weight) {
            const bool same = labels != nullptr && at >= 0 && at < cols && labels[at] == label;
            distance = std::min(distance, (same ? distances[at] : 0) + weight);
        };
        look(rows.labels_before, rows.distances_before, col - 1, kDiagonal);
        look(rows.labels_before, rows.distances_before, col, kStraight);
        look(rows.labels_before, rows.distances_before, col + 1, kDiagonal);
        look(rows.labels, rows.distances, col - step, kStraight);
        rows.distances[col] = distance;
    }
}

cv::Mat chamferDistances(const cv::Mat& labels) {
    constexpr std::int32_t kFar = 1 << 30;
    cv::Mat distances(labels.size(), CV_32SC1, cv::Scalar(kFar));
    const auto pass = [&](int row, int before, int step) {
        const bool has_before = before >= 0 && before < labels.rows;
        relax(
            {labels.ptr<std::int32_t>(row), has_before ? labels.ptr<std::int32_t>(before) : nullptr,
             distances.ptr<std::int32_t>(row),
             has_before ? distances.ptr<std::int32_t>(before) : nullptr},
            labels.cols, step);
    };
    for (int row = 0; row < labels.rows; ++row) pass(row, row - 1, 1);
    for (int row = labels.rows - 1; row >= 0; --row) pass(row, row + 1, -1);
    return distances;
}

}  // namespace

std::map<int, cv::Point> widestPixels(const cv::Mat& labels) {
    const cv::Mat distances = chamferDistances(labels);
    std::map<int, cv::Point> widest;
    for (int row = 0; row < labels.rows; ++row) {
        const std::int32_t* const distance = distances.ptr<std::int32_t>(row);
        internal::forEachRun(labels.ptr<std::int32_t>(row), labels.cols,
                             [&](int begin, int end, std::int32_t label) {
                                 if (label == 0) return;
                                 const std::int32_t* const largest =
                                     std::max_element(distance + begin, distance + end);
                                 const cv::Point pixel(static_cast<int>(largest - distance), row);
                                 cv::Point& best = widest.emplace(label, pixel).first->second;
                                 if (*largest > distances.at<std::int32_t>(best)) best = pixel;
                             });
    }
    return widest;
}

}  // namespace vorund::rooms
