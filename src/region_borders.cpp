#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "internal/border_pixels.h"
#include "internal/require.h"
#include "internal/runs.h"
#include "vorund/graph_processor.h"

namespace vorund::GraphProcessor {
namespace {

using internal::require;

/// Steps to the eight neighbours; the first four are the 4-neighbours.
constexpr std::array<std::array<int, 2>, 8> kNeighbourSteps{
    {{-1, 0}, {0, -1}, {0, 1}, {1, 0}, {-1, -1}, {-1, 1}, {1, -1}, {1, 1}}};

using Rows = internal::RowsAround<std::uint8_t>;

bool touches(const Rows& rows, int col, int room) {
    bool found = false;
    rows.forEachAround(col, [&](int value) { found |= value == room; });
    return found;
}

/// Calls `visit(row, col)` for the pixels of an 8-bit image that have the value, in raster order.
template <class Visit>
void forEachPixel(const cv::Mat& map, int value, const Visit& visit) {
    if (value < 0 || value > std::numeric_limits<std::uint8_t>::max()) return;
    for (int row = 0; row < map.rows; ++row) {
        internal::forEachByte(map.ptr<std::uint8_t>(row), map.cols,
                              static_cast<std::uint8_t>(value), [&](int col) { visit(row, col); });
    }
}

int countNonZeroBeside(const cv::Mat& map, int row, int col) {
    const auto isSet = [&](int r, int c) {
        const bool inside = r >= 0 && r < map.rows && c >= 0 && c < map.cols;
        return inside && map.ptr<std::uint8_t>(r)[c] != 0 ? 1 : 0;
    };
    return isSet(row - 1, col) + isSet(row, col - 1) + isSet(row, col + 1) + isSet(row + 1, col);
}

void requireByteMap(const cv::Mat& map, const char* empty_message, const char* type_message) {
    require(!map.empty(), empty_message);
    require(map.type() == CV_8UC1, type_message);
}

}  // namespace

cv::Mat extractCellAndPad(const cv::Mat& map, const cv::Point& point) {
    require(!map.empty(), "extractCellAndPad: Input map is empty.");
    const int left = std::max(point.x - 1, 0);
    const int right = std::min(point.x + 1, map.cols - 1);
    const int top = std::max(point.y - 1, 0);
    const int bottom = std::min(point.y + 1, map.rows - 1);
    const cv::Mat part = map(cv::Rect(cv::Point(left, top), cv::Point(right + 1, bottom + 1)));
    cv::Mat cell;
    // Isolated: the rest of the map is not taken for the padding.
    cv::copyMakeBorder(part, cell, point.y == 0 ? 1 : 0, point.y == map.rows - 1 ? 1 : 0,
                       point.x == 0 ? 1 : 0, point.x == map.cols - 1 ? 1 : 0,
                       cv::BORDER_CONSTANT | cv::BORDER_ISOLATED, cv::Scalar(0));
    return cell;
}

template <class T>
std::set<int> allCellNeighborsImpl(const cv::Mat& cell, int connectivity) {
    const T centre = cell.at<T>(1, 1);
    std::set<int> neighbours;
    for (std::size_t i = 0; i < static_cast<std::size_t>(connectivity); ++i) {
        const auto [down, right] = kNeighbourSteps[i];
        const T value = cell.at<T>(1 + down, 1 + right);
        if (value != 0 && value != centre) neighbours.insert(static_cast<int>(value));
    }
    return neighbours;
}

template VORUND_EXPORT std::set<int> allCellNeighborsImpl<int>(const cv::Mat&, int);
template VORUND_EXPORT std::set<int> allCellNeighborsImpl<short>(const cv::Mat&, int);
template VORUND_EXPORT std::set<int> allCellNeighborsImpl<unsigned short>(const cv::Mat&, int);

std::set<int> allCellNeighbors(const cv::Mat& cell, int connectivity) {
    require(cell.rows == 3 && cell.cols == 3, "allCellNeighbors: Input cell must be 3x3.");
    require(connectivity == 4 || connectivity == 8,
            "allCellNeighbors: Connectivity must be 4 or 8.");
    switch (cell.type()) {
        case CV_8UC1:
            return allCellNeighborsImpl<unsigned char>(cell, connectivity);
        case CV_8SC1:
            return allCellNeighborsImpl<signed char>(cell, connectivity);
        case CV_16UC1:
            return allCellNeighborsImpl<unsigned short>(cell, connectivity);
        case CV_16SC1:
            return allCellNeighborsImpl<short>(cell, connectivity);
        case CV_32SC1:
            return allCellNeighborsImpl<int>(cell, connectivity);
        default:
            throw std::runtime_error("allCellNeighbors: Unsupported cell data type.");
    }
}

cv::Mat excludeEndPoints(const cv::Mat& map, bool flag) {
    require(!map.empty() && map.type() == CV_8UC1,
            "excludeEndPoints: Input map must be a non-empty CV_8U image.");
    cv::Mat result = map.clone();
    for (int row = 0; row < map.rows; ++row) {
        const std::uint8_t* const pixels = map.ptr<std::uint8_t>(row);
        for (int col = 0; col < map.cols; ++col) {
            if (pixels[col] == 0) continue;
            const bool is_end = countNonZeroBeside(map, row, col) == 1;
            if (is_end != flag) result.ptr<std::uint8_t>(row)[col] = 0;
        }
    }
    return result;
}

cv::Mat extractRegionBorders(const cv::Mat& map, int u, int v) {
    requireByteMap(map, "extractRegionBorders: Input map is empty.",
                   "extractRegionBorders: Input map must be of type CV_8UC1.");
    cv::Mat borders = cv::Mat::zeros(map.size(), CV_8UC1);
    if (u == 0 || u == v) return borders;
    forEachPixel(map, v, [&](int row, int col) {
        if (touches(Rows(map, row), col, u)) borders.ptr<std::uint8_t>(row)[col] = 255;
    });
    return borders;
}

CommonBordersResult extractCommonBorders(const cv::Mat& map, int border_value) {
    requireByteMap(map, "extractCommonBorders: Input map is empty.",
                   "extractCommonBorders: Input map must be of type CV_8UC1.");
    CommonBordersResult result{cv::Mat::zeros(map.size(), CV_8UC1), {}};
    internal::BorderNumbers numbers(result.border_ids);
    forEachPixel(map, border_value, [&](int row, int col) {
        const internal::RoomsBeside rooms = internal::roomsBeside(Rows(map, row), col);
        if (!rooms.areTwo()) return;  // A wall with one room beside it, or a junction.
        result.borders_map.ptr<std::uint8_t>(row)[col] =
            static_cast<std::uint8_t>(numbers.of(rooms));
    });
    return result;
}

}  // namespace vorund::GraphProcessor
