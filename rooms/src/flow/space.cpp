#include "flow/space.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "internal/runs.h"

namespace vorund::rooms {
namespace {

constexpr int kStraight = 3;
constexpr int kDiagonal = 4;

/// The part of a row that belongs to a room.
struct Run {
    int begin;
    int end;
    std::int32_t label;
};

/// The runs of all rooms, row by row.
class RoomRuns {
 public:
    explicit RoomRuns(const cv::Mat& labels) {
        for (int row = 0; row < labels.rows; ++row) {
            rows_.push_back(runs_.size());
            internal::forEachRun(labels.ptr<std::int32_t>(row), labels.cols,
                                 [&](int begin, int end, std::int32_t label) {
                                     if (label != 0) runs_.push_back({begin, end, label});
                                 });
        }
        rows_.push_back(runs_.size());
    }

    const Run* begin(int row) const { return runs_.data() + rows_[static_cast<std::size_t>(row)]; }
    const Run* end(int row) const { return begin(row + 1); }

 private:
    std::vector<Run> runs_;
    std::vector<std::size_t> rows_;
};

/// Chamfer distances, row by row: first from what lies above or beside, then from what lies below,
/// too.
///
/// A shortest way to another row may always take its vertical steps first, so that within a row
/// only the ends of the room's own run count, and no pixel has to wait for its neighbour. What is
/// no room has distance 0. Where rooms touch, a pixel's distance never helps one of the other room:
/// that is as near as the step itself.
/// @tparam Distance  Holds `kMost` and a step.
/// @tparam kMost     No less than any distance there is.
template <class Distance, int kMost>
class Space {
 public:
    Space(const cv::Mat& labels, int count)
        : runs_(labels),
          rows_(labels.rows),
          from_above_(labels.size(), cv::traits::Type<Distance>::value),
          rising_(static_cast<std::size_t>(labels.cols)),
          beside_(static_cast<std::size_t>(labels.cols) + 2),
          here_(beside_.size()) {
        for (int i = 0; i < labels.cols; ++i) {
            rising_[static_cast<std::size_t>(i)] =
                static_cast<Distance>(std::min(kStraight * (i + 1), kMost));
        }
        falling_.assign(rising_.rbegin(), rising_.rend());
        widest_.assign(static_cast<std::size_t>(count), {0, cv::Point(-1, -1)});
    }

    std::vector<cv::Point> widest() {
        for (int row = 0; row < rows_; ++row) {
            startRow();
            for (const Run& run : runsOf(row)) measureToEnds(run);
            lowerBy(row, row - 1);
            std::copy(here(), here() + cols(), from_above_.ptr<Distance>(row));
        }
        startRow();
        for (int row = rows_ - 1; row >= 0; --row) {
            startRow();
            for (const Run& run : runsOf(row)) {
                const Distance* const above = from_above_.ptr<Distance>(row);
                std::copy(above + run.begin, above + run.end, here() + run.begin);
            }
            lowerBy(row, row + 1);
            for (const Run& run : runsOf(row)) takeWidest(row, run);
        }
        std::vector<cv::Point> pixels;
        for (const Widest& room : widest_) pixels.push_back(room.pixel);
        return pixels;
    }

 private:
    struct Widest {
        Distance distance;
        cv::Point pixel;
    };

    struct Row {
        const Run* first;
        const Run* last;
        const Run* begin() const { return first; }
        const Run* end() const { return last; }
    };

    /// None in the rows above and below the image.
    Row runsOf(int row) const {
        if (row < 0 || row >= rows_) return {nullptr, nullptr};
        return {runs_.begin(row), runs_.end(row)};
    }

    int cols() const { return static_cast<int>(rising_.size()); }

    /// The distances of the row, with a 0 on either side.
    Distance* here() { return here_.data() + 1; }

    /// What was the row is now the row beside.
    void startRow() {
        here_.swap(beside_);
        std::fill(here_.begin(), here_.end(), Distance{0});
    }

    void measureToEnds(const Run& run) {
        const int size = run.end - run.begin;
        const int half = size / 2;
        std::copy(rising_.begin(), rising_.begin() + half, here() + run.begin);
        std::copy(falling_.end() - (size - half), falling_.end(), here() + run.begin + half);
    }

    /// Lowers the distances of a row by those of the row beside.
    void lowerBy(int row, int beside) {
        const Row runs = runsOf(row);
        if (runs.first == runs.last) return;
        lower(runs.first->begin, (runs.last - 1)->end);
        const Row others = runsOf(beside);
        const Run* other = others.first;
        for (const Run& run : runs) {
            while (other != others.last && other->end < run.begin) ++other;
            for (const Run* next = other; next != others.last && next->begin <= run.end; ++next) {
                if (next->label != run.label) touch(run, *next);
            }
        }
    }

    void lower(int begin, int end) {
        Distance* const own = here();
        const Distance* const other = beside_.data() + 1;
        for (int col = begin; col < end; ++col) {
            const auto straight = static_cast<Distance>(other[col] + kStraight);
            const auto diagonal =
                static_cast<Distance>(std::min(other[col - 1], other[col + 1]) + kDiagonal);
            own[col] = std::min(own[col], std::min(straight, diagonal));
        }
    }

    /// Lowers the distances of a run where it touches another room in the row beside.
    void touch(const Run& run, const Run& other) {
        const auto lowerTo = [&](int step, int begin, int end) {
            for (int col = std::max(begin, run.begin); col < std::min(end, run.end); ++col) {
                here()[col] = std::min(here()[col], static_cast<Distance>(step));
            }
        };
        lowerTo(kDiagonal, other.begin - 1, other.end + 1);
        lowerTo(kStraight, other.begin, other.end);
    }

    /// Rows come from the last to the first: of equals in two rows the later one is the first.
    void takeWidest(int row, const Run& run) {
        Widest& room = widest_[static_cast<std::size_t>(run.label)];
        // No pixel of a run is further from its ends than the middle.
        if (kStraight * ((run.end - run.begin + 1) / 2) < room.distance) return;
        const Distance* const begin = here() + run.begin;
        const Distance* const end = here() + run.end;
        Distance most = 0;
        for (const Distance* distance = begin; distance != end; ++distance) {
            most = std::max(most, *distance);
        }
        if (most < room.distance || (most == room.distance && row == room.pixel.y)) return;
        const auto offset = static_cast<int>(std::find(begin, end, most) - begin);
        room = {most, cv::Point(run.begin + offset, row)};
    }

    RoomRuns runs_;
    int rows_;
    cv::Mat from_above_;
    std::vector<Distance> rising_;   ///< Distances from the beginning of a run.
    std::vector<Distance> falling_;  ///< Distances to the end of a run, which is the vector's.
    std::vector<Distance> beside_;
    std::vector<Distance> here_;
    std::vector<Widest> widest_;
};

}  // namespace

std::vector<cv::Point> widestPixels(const cv::Mat& labels, int count) {
    // No pixel is further from the edges than half the shorter side.
    constexpr int kMost = 30000;
    const bool is_huge = std::min(labels.rows, labels.cols) > 2 * (kMost / kStraight) - 2;
    if (is_huge) return widestPixelsOfHuge(labels, count);
    return Space<std::int16_t, kMost>(labels, count).widest();
}

std::vector<cv::Point> widestPixelsOfHuge(const cv::Mat& labels, int count) {
    return Space<std::int32_t, 1 << 30>(labels, count).widest();
}

}  // namespace vorund::rooms
