#pragma once

#include <algorithm>
#include <opencv2/core.hpp>

#include "vorund/graph.h"
#include "vorund/graph_processor.h"

/// Where rooms meet, in label images of 8 bits and of 32.
namespace vorund::internal {

/// The rows around one row of a label image. Past an edge the edge itself is taken once more:
/// that adds no value that is not there already.
template <class T>
struct RowsAround {
    const T* above;
    const T* here;
    const T* below;
    int cols;

    RowsAround(const cv::Mat& map, int row)
        : above(map.ptr<T>(std::max(row - 1, 0))),
          here(map.ptr<T>(row)),
          below(map.ptr<T>(std::min(row + 1, map.rows - 1))),
          cols(map.cols) {}

    /// Calls `visit` with the values around a pixel, the pixel's own among them.
    template <class Visit>
    void forEachAround(int col, const Visit& visit) const {
        const int left = std::max(col - 1, 0);
        const int right = std::min(col + 1, cols - 1);
        for (const T* row : {above, here, below}) {
            visit(row[left]);
            visit(row[col]);
            visit(row[right]);
        }
    }
};

/// The rooms around a line's pixel, as far as a border is concerned.
struct RoomsBeside {
    int first = 0;  ///< 0 = none.
    int second = 0;
    bool more = false;

    void add(int room) {
        if (room == first || room == second) return;
        if (first == 0) {
            first = room;
        } else if (second == 0) {
            second = room;
        } else {
            more = true;
        }
    }
    bool areTwo() const { return second != 0 && !more; }
};

template <class T>
RoomsBeside roomsBeside(const RowsAround<T>& rows, int col) {
    const int centre = rows.here[col];
    RoomsBeside rooms;
    rows.forEachAround(col, [&](int value) {
        if (value != 0 && value != centre) rooms.add(value);
    });
    return rooms;
}

/// Numbers pairs of rooms as they come.
class BorderNumbers {
 public:
    explicit BorderNumbers(BorderIds& ids) : ids_(ids) {}

    int of(const RoomsBeside& rooms) {
        const Edge edge(rooms.first, rooms.second);
        // The next pixel of a border mostly follows at once.
        if (last_ == ids_.end() || !(last_->first == edge)) {
            last_ = ids_.emplace(edge, static_cast<int>(ids_.size()) + 1).first;
        }
        return last_->second;
    }

 private:
    BorderIds& ids_;
    BorderIds::iterator last_ = ids_.end();
};

}  // namespace vorund::internal
