#include "blocks/wide_lines.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "flow/separators.h"

namespace vorund::rooms {
namespace {

constexpr int kUnknown = -1;

/// By the label of a region, what it has become; 0 = removed.
using Successors = std::vector<int>;

std::size_t labelsOf(const cv::Mat& regions) {
    double largest = 0.0;
    cv::minMaxLoc(regions, nullptr, &largest);
    return std::max<std::size_t>(static_cast<std::size_t>(largest), kLine) + 1;
}

/// The smallest label of a region among the four neighbours, or `kUnknown`.
int smallestBeside(const cv::Mat& regions, int row, int col) {
    int smallest = std::numeric_limits<int>::max();
    const auto look = [&](int r, int c) {
        if (r < 0 || r >= regions.rows || c < 0 || c >= regions.cols) return;
        const int label = regions.at<std::int32_t>(r, c);
        if (label != 0 && label != kLine) smallest = std::min(smallest, label);
    };
    look(row - 1, col);
    look(row, col - 1);
    look(row, col + 1);
    look(row + 1, col);
    return smallest == std::numeric_limits<int>::max() ? kUnknown : smallest;
}

/// Regions so thin that all of them became line are no nodes of the graph: they go with the region
/// of a smaller label that made them a line.
void addThinRegions(const cv::Mat& regions, Successors& successors) {
    Successors smaller_neighbour(successors.size(), kUnknown);
    for (int row = 0; row < regions.rows; ++row) {
        const std::int32_t* const label = regions.ptr<std::int32_t>(row);
        for (int col = 0; col < regions.cols; ++col) {
            const auto region = static_cast<std::size_t>(label[col]);
            if (successors[region] != kUnknown || smaller_neighbour[region] != kUnknown) continue;
            smaller_neighbour[region] = smallestBeside(regions, row, col);
        }
    }
    for (std::size_t label = 1; label < successors.size(); ++label) {
        const int beside = smaller_neighbour[label];
        if (successors[label] != kUnknown || beside == kUnknown) continue;
        successors[label] = successors[static_cast<std::size_t>(beside)];
    }
}

Successors findSuccessors(const cv::Mat& regions, const cv::Mat& separated, const cv::Mat& merged) {
    Successors successors(labelsOf(regions), kUnknown);
    for (int row = 0; row < regions.rows; ++row) {
        const std::int32_t* const before = regions.ptr<std::int32_t>(row);
        const std::int32_t* const line = separated.ptr<std::int32_t>(row);
        const std::int32_t* const now = merged.ptr<std::int32_t>(row);
        for (int col = 0; col < regions.cols; ++col) {
            // What became of a line says nothing of its room.
            if (line[col] != kLine) successors[static_cast<std::size_t>(before[col])] = now[col];
        }
    }
    successors[0] = 0;
    successors[kLine] = 0;
    addThinRegions(regions, successors);
    return successors;
}

}  // namespace

cv::Mat assignWideLinePixels(const cv::Mat& regions, const cv::Mat& separated,
                             const cv::Mat& merged) {
    const Successors successors = findSuccessors(regions, separated, merged);
    cv::Mat labels(regions.size(), CV_32SC1);
    for (int row = 0; row < labels.rows; ++row) {
        const std::int32_t* const from = regions.ptr<std::int32_t>(row);
        std::int32_t* const to = labels.ptr<std::int32_t>(row);
        for (int col = 0; col < labels.cols; ++col) {
            to[col] = std::max(successors[static_cast<std::size_t>(from[col])], 0);
        }
    }
    return labels;
}

}  // namespace vorund::rooms
