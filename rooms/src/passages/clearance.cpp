#include "passages/clearance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace vorund::rooms {
namespace {

using Distance = std::uint16_t;

int farther(Distance distance) {
    return std::min(distance + 1, int{std::numeric_limits<Distance>::max()});
}

std::int64_t square(std::int64_t value) {
    return value * value;
}

}  // namespace

Clearance::Clearance(const cv::Mat& labels, const cv::Mat& floor)
    : along_columns_(labels.size(), CV_16UC1) {
    const std::vector<Distance> outside(static_cast<std::size_t>(labels.cols), 0);
    const Distance* beside = outside.data();
    for (int row = 0; row < labels.rows; ++row) {
        const std::int32_t* const label = labels.ptr<std::int32_t>(row);
        const std::uint8_t* const is_floor = floor.ptr<std::uint8_t>(row);
        Distance* const distance = along_columns_.ptr<Distance>(row);
        for (int col = 0; col < labels.cols; ++col) {
            const bool is_wall = (label[col] == 0) | (is_floor[col] == 0);
            distance[col] = static_cast<Distance>(is_wall ? 0 : farther(beside[col]));
        }
        beside = distance;
    }
    beside = outside.data();
    for (int row = labels.rows; row-- > 0;) {
        Distance* const distance = along_columns_.ptr<Distance>(row);
        for (int col = 0; col < labels.cols; ++col) {
            distance[col] =
                static_cast<Distance>(std::min(int{distance[col]}, farther(beside[col])));
        }
        beside = distance;
    }
}

std::int64_t Clearance::largest(int row, int begin, int end, std::int64_t known) const {
    const auto root = [](std::int64_t squared) {
        return static_cast<int>(std::sqrt(static_cast<double>(squared)));
    };
    int known_root = root(known);
    for (int col = begin; col < end;) {
        const std::int64_t squared = squaredDistance(row, col, known);
        if (squared > known) {
            known = squared;
            known_root = root(known);
            ++col;
        } else {
            // No more than the root below the known one, after so many pixels.
            col += std::max(known_root - root(squared), 1);
        }
    }
    return known;
}

std::int64_t Clearance::squaredDistance(int row, int col, std::int64_t enough) const {
    const Distance* const along_column = along_columns_.ptr<Distance>(row);
    const int to_side = std::min(col + 1, along_columns_.cols - col);
    std::int64_t least = square(std::min<int>(along_column[col], to_side));
    for (int step = 1; square(step) < least && enough < least; ++step) {
        const Distance nearer = std::min(along_column[col - step], along_column[col + step]);
        least = std::min(least, square(step) + square(nearer));
    }
    return least;
}

}  // namespace vorund::rooms
