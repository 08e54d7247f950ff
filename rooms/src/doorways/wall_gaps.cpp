#include "doorways/wall_gaps.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <tuple>
#include <utility>

#include "internal/runs.h"

namespace vorund::rooms {
namespace {

// All lengths in pixels of 0.05 m.
constexpr int kNarrowest = 10;    ///< Nobody passes through less than 0.5 m.
constexpr int kThickest = 10;     ///< Of a wall with a doorway in it: 0.5 m.
constexpr int kSeenEdgeOn = 7;    ///< Floor on both sides of a wall within 0.35 m of its middle.
constexpr int kLookAlong = 60;    ///< In line with a gap: 3 m.
constexpr int kWiderPercent = 85; ///< Of the floor beside the wall, most that the gap may be.

/// Floor of a row.
struct Run {
    int begin;
    int end;
    int width() const { return end - begin; }
};

class GapFinder {
 public:
    GapFinder(const cv::Mat& floor, const GapLimits& limits) : floor_(floor), limits_(limits) {
        runs_.resize(static_cast<std::size_t>(floor.rows));
        for (int row = 0; row < floor.rows; ++row) {
            std::vector<Run>& runs = runs_[static_cast<std::size_t>(row)];
            internal::forEachRun(floor.ptr<std::uint8_t>(row), floor.cols,
                                 [&](int begin, int end, std::uint8_t value) {
                                     if (value != 0) runs.push_back({begin, end});
                                 });
        }
    }

    std::vector<WallGap> find() {
        std::vector<WallGap> gaps;
        for (const std::vector<WallGap>& together : openingsTogether()) {
            WallGap gap = narrowestInTheMiddle(together);
            if (std::max(jamb(gap, gap.begin - 1, -1), jamb(gap, gap.end, 1)) < limits_.jamb) {
                continue;
            }
            gap.wall_left = wallInLine(gap, gap.begin - 1, -1);
            gap.wall_right = wallInLine(gap, gap.end, 1);
            if (2 * gap.wall() >= gap.width()) gaps.push_back(gap);
        }
        std::sort(gaps.begin(), gaps.end(), [](const WallGap& a, const WallGap& b) {
            return std::make_pair(a.row, a.begin) < std::make_pair(b.row, b.begin);
        });
        return gaps;
    }

 private:
    /// Openings that overlap from row to row, each list by row.
    std::vector<std::vector<WallGap>> openingsTogether() const {
        std::vector<std::vector<WallGap>> groups;
        std::vector<std::size_t> above;  // Of the openings of the row above, their groups.
        std::vector<Run> runs_above;
        for (int row = 0; row < floor_.rows; ++row) {
            std::vector<std::size_t> here;
            std::vector<Run> runs_here;
            for (const Run& run : runs_[static_cast<std::size_t>(row)]) {
                if (!isOpening(row, run)) continue;
                std::size_t group = groups.size();
                for (std::size_t i = 0; i < runs_above.size(); ++i) {
                    if (runs_above[i].begin >= run.end || run.begin >= runs_above[i].end) continue;
                    if (group == groups.size()) {
                        group = above[i];
                    } else if (above[i] != group) {
                        const std::size_t joined = above[i];
                        groups[group].insert(groups[group].end(), groups[joined].begin(),
                                             groups[joined].end());
                        groups[joined].clear();
                        std::replace(above.begin(), above.end(), joined, group);
                        std::replace(here.begin(), here.end(), joined, group);
                    }
                }
                if (group == groups.size()) groups.emplace_back();
                groups[group].push_back({row, run.begin, run.end, 0, 0});
                here.push_back(group);
                runs_here.push_back(run);
            }
            above = std::move(here);
            runs_above = std::move(runs_here);
        }
        groups.erase(std::remove_if(groups.begin(), groups.end(),
                                    [](const auto& group) { return group.empty(); }),
                     groups.end());
        return groups;
    }

    bool isOpening(int row, const Run& run) const {
        if (run.width() < kNarrowest || run.width() > limits_.widest) return false;
        if (run.begin == 0 || run.end == floor_.cols) return false;
        const int up = rowsUntilWider(row, run, -1);
        if (up == 0) return false;
        const int down = rowsUntilWider(row, run, 1);
        return down != 0 && up + down - 1 <= kThickest;
    }

    /// After how many rows the floor is wide; 0 if the wall is too thick or there is no way.
    int rowsUntilWider(int row, const Run& run, int step) const {
        const int begin = run.begin + run.width() / 4;
        const int end = run.end - run.width() / 4;
        for (int rows = 1; rows <= kThickest; ++rows) {
            const int widest = widestRun(row + step * rows, begin, end);
            if (widest == 0) return 0;
            if (run.width() * 100 <= widest * kWiderPercent) return rows;
        }
        return 0;
    }

    /// Of those that reach into the columns; 0 if none does.
    int widestRun(int row, int begin, int end) const {
        if (row < 0 || row >= floor_.rows) return 0;
        const std::vector<Run>& runs = runs_[static_cast<std::size_t>(row)];
        auto run = std::partition_point(runs.begin(), runs.end(),
                                        [&](const Run& r) { return r.end <= begin; });
        int widest = 0;
        for (; run != runs.end() && run->begin < end; ++run) widest = std::max(widest, run->width());
        return widest;
    }

    static WallGap narrowestInTheMiddle(const std::vector<WallGap>& openings) {
        int narrowest = openings.front().width();
        int rows = 0;
        for (const WallGap& opening : openings) {
            narrowest = std::min(narrowest, opening.width());
            rows += opening.row;
        }
        const int count = static_cast<int>(openings.size());
        const auto fromMiddle = [&](const WallGap& opening) {
            // A ragged jamb may make the middle a pixel wider.
            const int wider = opening.width() > narrowest + 1 ? 1 : 0;
            return std::make_tuple(wider, std::abs(opening.row * count - rows), opening.row,
                                   opening.begin);
        };
        return *std::min_element(
            openings.begin(), openings.end(),
            [&](const WallGap& a, const WallGap& b) { return fromMiddle(a) < fromMiddle(b); });
    }

    bool isFloor(int row, int col) const {
        return row >= 0 && row < floor_.rows && floor_.ptr<std::uint8_t>(row)[col] != 0;
    }

    bool isWallEdgeOn(int row, int col) const {
        if (row < 0 || row >= floor_.rows || isFloor(row, col)) return false;
        bool above = false;
        bool below = false;
        for (int off = 1; off <= kSeenEdgeOn; ++off) {
            above = above || isFloor(row - off, col);
            below = below || isFloor(row + off, col);
        }
        return above && below;
    }

    /// How far wall goes on, edge on, from a column.
    int jamb(const WallGap& gap, int col, int step) const {
        int length = 0;
        while (length < limits_.jamb && col >= 0 && col < floor_.cols &&
               isWallEdgeOn(gap.row, col)) {
            ++length;
            col += step;
        }
        return length;
    }

    /// Columns with wall edge on in line with the gap, give or take a pixel.
    int wallInLine(const WallGap& gap, int col, int step) const {
        int columns = 0;
        for (int i = 0; i < kLookAlong && col >= 0 && col < floor_.cols; ++i, col += step) {
            if (isWallEdgeOn(gap.row, col) || isWallEdgeOn(gap.row - 1, col) ||
                isWallEdgeOn(gap.row + 1, col)) {
                ++columns;
            }
        }
        return columns;
    }

    const cv::Mat& floor_;
    GapLimits limits_;
    std::vector<std::vector<Run>> runs_;  ///< By row.
};

}  // namespace

std::vector<WallGap> gapsInRows(const cv::Mat& floor, const GapLimits& limits) {
    return GapFinder(floor, limits).find();
}

}  // namespace vorund::rooms
