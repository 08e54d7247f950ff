#include "flow/separators.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vorund::rooms {
namespace {

constexpr std::int32_t kNoRoom = std::numeric_limits<std::int32_t>::max();

/// Labels as they are compared: what is no room is greater than all rooms.
struct AllAreRooms {
    static std::int32_t rank(std::int32_t label) { return label == 0 ? kNoRoom : label; }
    static std::uint8_t drawn(bool is_line, std::int32_t) { return is_line ? kLine : 0; }
};

struct LinesAreNone {
    static std::int32_t rank(std::int32_t label) {
        return label == 0 || label == kLine ? kNoRoom : label;
    }
    static std::int32_t drawn(bool is_line, std::int32_t label) { return is_line ? kLine : label; }
};

/// A row of the image, with the rows beside it; past an edge the row itself, which makes no line.
template <class Labels>
struct Rows {
    const std::int32_t* above;
    const std::int32_t* here;
    const std::int32_t* below;

    Rows(const cv::Mat& labels, int row)
        : above(labels.ptr<std::int32_t>(std::max(row - 1, 0))),
          here(labels.ptr<std::int32_t>(row)),
          below(labels.ptr<std::int32_t>(std::min(row + 1, labels.rows - 1))) {}

    auto drawn(int col, int left, int right) const {
        const std::int32_t beside =
            std::min(std::min(Labels::rank(above[col]), Labels::rank(below[col])),
                     std::min(Labels::rank(here[left]), Labels::rank(here[right])));
        const std::int32_t own = Labels::rank(here[col]);
        return Labels::drawn((beside < own) & (own != kNoRoom), here[col]);
    }
};

template <class Labels, class T>
cv::Mat draw(const cv::Mat& labels, int type) {
    cv::Mat image(labels.size(), type);
    if (labels.empty()) return image;
    const int last = labels.cols - 1;
    for (int row = 0; row < labels.rows; ++row) {
        const Rows<Labels> rows(labels, row);
        T* const out = image.ptr<T>(row);
        out[0] = rows.drawn(0, 0, std::min(1, last));
        // Without a branch, and inner columns alone, so that the compiler takes many at a time.
        for (int col = 1; col < last; ++col) out[col] = rows.drawn(col, col - 1, col + 1);
        out[last] = rows.drawn(last, std::max(last - 1, 0), last);
    }
    return image;
}

}  // namespace

cv::Mat linesBetween(const cv::Mat& labels) {
    return draw<AllAreRooms, std::uint8_t>(labels, CV_8UC1);
}

cv::Mat drawSeparators(const cv::Mat& labels) {
    return draw<LinesAreNone, std::int32_t>(labels, CV_32SC1);
}

}  // namespace vorund::rooms
