#include "families/truth.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace vorund::test::families {
namespace {

constexpr std::int64_t kSquareDm = 10000000000;  // [um^2]

struct RoomExtent {
    int floor = 0, seen = 0;
    int low_row = INT32_MAX, high_row = -1, low_col = INT32_MAX, high_col = -1;
};

std::vector<RoomExtent> extentsOf(const cv::Mat& seen, const cv::Mat& floor, int room_count) {
    std::vector<RoomExtent> extents(static_cast<std::size_t>(room_count) + 1);
    for (int row = 0; row < floor.rows; ++row) {
        const std::uint16_t* floors = floor.ptr<std::uint16_t>(row);
        for (int col = 0; col < floor.cols; ++col) ++extents[floors[col]].floor;
    }
    for (int row = 0; row < seen.rows; ++row) {
        const std::uint16_t* rooms = seen.ptr<std::uint16_t>(row);
        for (int col = 0; col < seen.cols; ++col) {
            RoomExtent& own = extents[rooms[col]];
            ++own.seen;
            own.low_row = std::min(own.low_row, row);
            own.high_row = std::max(own.high_row, row);
            own.low_col = std::min(own.low_col, col);
            own.high_col = std::max(own.high_col, col);
        }
    }
    return extents;
}

cv::Mat largestPiece(const cv::Mat& mask) {
    cv::Mat pieces, stats, centres;
    const int count = cv::connectedComponentsWithStats(mask, pieces, stats, centres, 8, CV_32S);
    int largest = 0;
    for (int i = 1; i < count; ++i) {
        const bool larger = largest == 0 || stats.at<int>(i, cv::CC_STAT_AREA) >
                                                stats.at<int>(largest, cv::CC_STAT_AREA);
        if (larger) largest = i;
    }
    return largest == 0 ? cv::Mat(cv::Mat::zeros(mask.size(), CV_8UC1))
                        : cv::Mat(pieces == largest);
}

// The room's free pixels and the gaps between them, as far as `open` allows.
cv::Mat closedRoom(const cv::Mat& own, const cv::Mat& open, int reach) {
    cv::Mat closed;
    const cv::Mat brush = cv::getStructuringElement(cv::MORPH_RECT, {2 * reach + 1, 2 * reach + 1});
    cv::morphologyEx(own, closed, cv::MORPH_CLOSE, brush);
    return closed & (own | open);
}

}  // namespace

cv::Mat roomsSeen(const cv::Mat& seen, const cv::Mat& free, const cv::Mat& floor, int room_count,
                  int pixel_um) {
    const std::vector<RoomExtent> extents = extentsOf(seen, floor, room_count);
    const std::int64_t pixel_square_um = std::int64_t{pixel_um} * pixel_um;
    const int reach = std::max(1, 200000 / pixel_um);
    cv::Mat rooms = cv::Mat::zeros(seen.size(), CV_16UC1);
    for (int room = 1; room <= room_count; ++room) {
        const RoomExtent& own = extents[static_cast<std::size_t>(room)];
        const bool large = own.seen * pixel_square_um >= kLeastSquareDm * kSquareDm;
        const bool counts = large && own.seen * 100 >= own.floor * kLeastSharePercent;
        if (!counts) continue;
        const cv::Rect around(own.low_col, own.low_row, own.high_col - own.low_col + 1,
                              own.high_row - own.low_row + 1);
        // What is free is another's, and so are gaps that were given away before.
        const cv::Mat open = ~free(around) & (rooms(around) == 0);
        const cv::Mat piece = largestPiece(closedRoom(seen(around) == room, open, reach));
        rooms(around).setTo(cv::Scalar(room), piece);
    }
    return rooms;
}

std::vector<int> renumber(cv::Mat& rooms, int room_count) {
    std::vector<int> numbers(static_cast<std::size_t>(room_count) + 1, 0);
    for (int row = 0; row < rooms.rows; ++row) {
        const std::uint16_t* own = rooms.ptr<std::uint16_t>(row);
        for (int col = 0; col < rooms.cols; ++col) numbers[own[col]] = 1;
    }
    numbers[0] = 0;
    int count = 0;
    for (int& number : numbers) {
        if (number > 0) number = ++count;
    }
    for (int row = 0; row < rooms.rows; ++row) {
        std::uint16_t* own = rooms.ptr<std::uint16_t>(row);
        for (int col = 0; col < rooms.cols; ++col) {
            own[col] = static_cast<std::uint16_t>(numbers[own[col]]);
        }
    }
    return numbers;
}

}  // namespace vorund::test::families
