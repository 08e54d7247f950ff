#include "flow/line_pixels.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "flow/separators.h"

namespace vorund::rooms {
namespace {

constexpr int kUnknown = -1;

/// For each label of `doSegment`, what its room has become; 0 = removed.
using Successors = std::array<int, 256>;

/// The smallest room label among the four neighbours, or 255.
int smallestBeside(const cv::Mat& segmented, int row, int col) {
    int smallest = kLine;
    const auto look = [&](int r, int c) {
        if (r < 0 || r >= segmented.rows || c < 0 || c >= segmented.cols) return;
        const int label = segmented.at<std::uint8_t>(r, c);
        if (label != 0) smallest = std::min(smallest, label);
    };
    look(row - 1, col);
    look(row, col - 1);
    look(row, col + 1);
    look(row + 1, col);
    return smallest;
}

Successors findSuccessors(const cv::Mat& segmented, const cv::Mat& merged) {
    const cv::Mat separated = drawSeparators(segmented);
    Successors successors;
    successors.fill(kUnknown);
    // A room so thin that all of it became line is no node of the graph: it goes with the room of a
    // smaller label that made it a line.
    Successors smaller_neighbour;
    smaller_neighbour.fill(kUnknown);
    for (int row = 0; row < segmented.rows; ++row) {
        for (int col = 0; col < segmented.cols; ++col) {
            const std::size_t before = segmented.at<std::uint8_t>(row, col);
            const int now = merged.at<std::int32_t>(row, col);
            // What became of a line says nothing of its room: it may have been a border of two
            // others that became one, or gone with an island that touched it.
            if (separated.at<std::uint8_t>(row, col) != kLine) successors[before] = now;
            if (smaller_neighbour[before] == kUnknown) {
                smaller_neighbour[before] = smallestBeside(segmented, row, col);
            }
        }
    }
    for (std::size_t label = 1; label < kLine; ++label) {
        if (successors[label] != kUnknown || smaller_neighbour[label] == kUnknown) continue;
        successors[label] = successors[static_cast<std::size_t>(smaller_neighbour[label])];
    }
    return successors;
}

}  // namespace

cv::Mat assignLinePixels(const cv::Mat& segmented, const cv::Mat& merged) {
    Successors successors = findSuccessors(segmented, merged);
    successors[0] = 0;
    successors[kLine] = 0;
    cv::Mat labels(merged.size(), CV_32SC1);
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            labels.at<std::int32_t>(row, col) =
                std::max(successors[segmented.at<std::uint8_t>(row, col)], 0);
        }
    }
    return labels;
}

}  // namespace vorund::rooms
