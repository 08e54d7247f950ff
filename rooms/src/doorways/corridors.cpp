#include "doorways/corridors.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <tuple>
#include <utility>

#include "internal/runs.h"

namespace vorund::rooms {
namespace {

// All lengths in pixels of 0.05 m.
constexpr int kNarrowest = 20;
constexpr int kWidest = 80;
constexpr int kLongerThanWide = 3;    ///< Times.
constexpr int kWalledPercent = 40;    ///< Of its length, on each side.
constexpr int kLongestOpening = 300;  ///< A hall beside a corridor, not a corridor across a hall.
constexpr int kNarrowestGap = 10;     ///< Nobody passes through less than 0.5 m.
constexpr int kLookAlong = 60;        ///< In line with a gap: 3 m.

/// Walls of a mapped corridor wander: so much from column to column, ...
constexpr int kWander = 3;

/// ... of which the corridor follows a part, since most of it is raggedness. [1 / kFollow]
constexpr int kFollow = 8;

/// How far off a wall still is the corridor's own: niches of closed doors lie behind its side,
/// ragged wall lies before it.
constexpr int kBehind = 6;
constexpr int kBefore = 3;

/// Sides are followed in parts of a pixel.
constexpr int kParts = 16;

/// The middle of a corridor has to be open ahead: this part of it, for this share. [%]
constexpr int kMiddlePercent = 60;
constexpr int kOpenPercent = 60;

/// Goes outwards from within a corridor's side: the first row of wall, if it is the corridor's own.
std::optional<int> wallBeside(const cv::Mat& floor, const cv::Range& rows, int col, int outward) {
    const int side = outward < 0 ? rows.start : rows.end - 1;
    for (int off = 1 - kBefore; off <= kBehind; ++off) {
        const int row = side + outward * off;
        if (row < 0 || row >= floor.rows) return std::clamp(row, 0, floor.rows - 1);
        if (floor.ptr<std::uint8_t>(row)[col] == 0) return row;
    }
    return std::nullopt;
}

/// A corridor while it is followed.
class Track {
 public:
    Track(int col, const cv::Range& run)
        : begin_(col),
          last_(col),
          first_(run.start * kParts),
          past_(run.end * kParts),
          rows_{run} {}

    bool fits(const cv::Range& run) const {
        return std::abs(run.start * kParts - first_) <= kWander * kParts &&
               std::abs(run.end * kParts - past_) <= kWander * kParts;
    }

    void follow(int col, const cv::Range& run) {
        first_ += (run.start * kParts - first_) / kFollow;
        past_ += (run.end * kParts - past_) / kFollow;
        last_ = col;
        rows_.push_back(rows());
    }

    /// Past a column without its walls.
    void goOn() { rows_.push_back(rows()); }

    /// @param runs  The floor of a column.
    bool isOpenAhead(int col, const std::vector<cv::Range>& runs) const {
        if (col - last_ > kLongestOpening) return false;
        const cv::Range all = rows();
        const int margin = all.size() * (100 - kMiddlePercent) / 200;
        const cv::Range middle(all.start + margin, all.end - margin);
        int open = 0;
        for (const cv::Range& run : runs) open += (run & middle).size();
        return open * 100 >= kOpenPercent * middle.size();
    }

    /// As whole pixels.
    cv::Range rows() const {
        const auto rounded = [](int parts) { return (parts + kParts / 2) / kParts; };
        return {rounded(first_), rounded(past_)};
    }

    Corridor corridor() && {
        rows_.resize(static_cast<std::size_t>(last_ - begin_ + 1));
        return {begin_, std::move(rows_)};
    }

 private:
    int begin_;
    int last_;  ///< Column with both walls.
    int first_;
    int past_;
    std::vector<cv::Range> rows_;
};

class CorridorFinder {
 public:
    CorridorFinder(const cv::Mat& floor, const cv::Mat& columns)
        : floor_(floor), columns_(columns) {}

    std::vector<Corridor> find() {
        for (int col = 0; col < floor_.cols; ++col) visit(col);
        for (Track& track : tracks_) finish(std::move(track));
        return withoutOverlaps();
    }

 private:
    std::vector<cv::Range> runsOf(int col) const {
        std::vector<cv::Range> runs;
        internal::forEachRun(columns_.ptr<std::uint8_t>(col), columns_.cols,
                             [&](int begin, int end, std::uint8_t value) {
                                 if (value != 0) runs.emplace_back(begin, end);
                             });
        return runs;
    }

    void visit(int col) {
        const std::vector<cv::Range> runs = runsOf(col);
        std::vector<cv::Range> narrow;
        std::copy_if(runs.begin(), runs.end(), std::back_inserter(narrow), [](const auto& run) {
            return run.size() >= kNarrowest && run.size() <= kWidest;
        });
        std::vector<bool> is_followed(narrow.size(), false);
        std::vector<Track> going_on;
        for (Track& track : tracks_) {
            const auto run = std::find_if(narrow.begin(), narrow.end(),
                                          [&](const cv::Range& r) { return track.fits(r); });
            if (run != narrow.end()) {
                track.follow(col, *run);
                is_followed[static_cast<std::size_t>(run - narrow.begin())] = true;
            } else if (track.isOpenAhead(col, runs)) {
                track.goOn();
            } else {
                finish(std::move(track));
                continue;
            }
            // Of two that have come to the same place, the older one is the longer.
            const bool is_new =
                std::none_of(going_on.begin(), going_on.end(),
                             [&](const Track& other) { return other.rows() == track.rows(); });
            if (is_new) going_on.push_back(std::move(track));
        }
        for (std::size_t i = 0; i < narrow.size(); ++i) {
            if (!is_followed[i]) going_on.emplace_back(col, narrow[i]);
        }
        tracks_ = std::move(going_on);
    }

    void finish(Track&& track) {
        Corridor corridor = std::move(track).corridor();
        const int width = corridor.rows[corridor.rows.size() / 2].size();
        if (corridor.length() < kLongerThanWide * width) return;
        for (const int outward : {-1, 1}) {
            int walled = 0;
            for (int col = corridor.begin; col < corridor.end(); ++col) {
                if (wallBeside(floor_, corridor.at(col), col, outward)) ++walled;
            }
            if (walled * 100 < kWalledPercent * corridor.length()) return;
        }
        corridors_.push_back(std::move(corridor));
    }

    std::vector<Corridor> withoutOverlaps() {
        std::sort(corridors_.begin(), corridors_.end(), [](const Corridor& a, const Corridor& b) {
            const auto key = [](const Corridor& c) {
                return std::make_tuple(-c.length(), c.begin, c.rows[0].start, c.rows[0].end);
            };
            return key(a) < key(b);
        });
        std::vector<Corridor> kept;
        for (Corridor& corridor : corridors_) {
            const bool is_new = std::none_of(kept.begin(), kept.end(),
                                             [&](const auto& k) { return overlap(corridor, k); });
            if (is_new) kept.push_back(std::move(corridor));
        }
        return kept;
    }

    static bool overlap(const Corridor& a, const Corridor& b) {
        const int begin = std::max(a.begin, b.begin);
        const int end = std::min(a.end(), b.end());
        if (begin >= end) return false;
        const int middle = (begin + end) / 2;
        return (a.at(middle) & b.at(middle)).size() > kWander;
    }

    const cv::Mat& floor_;
    const cv::Mat& columns_;
    std::vector<Track> tracks_;
    std::vector<Corridor> corridors_;
};

}  // namespace

std::vector<Corridor> corridorsInRows(const cv::Mat& floor, const cv::Mat& columns) {
    return CorridorFinder(floor, columns).find();
}

std::vector<CorridorGap> gapsBeside(const Corridor& corridor, const cv::Mat& floor) {
    std::vector<CorridorGap> gaps;
    for (const int outward : {-1, 1}) {
        std::vector<std::optional<int>> walls;
        for (int col = corridor.begin; col < corridor.end(); ++col) {
            walls.push_back(wallBeside(floor, corridor.at(col), col, outward));
        }
        const auto wallsAmong = [&](int begin, int end) {
            const auto within = [&](int i) { return std::clamp(i, 0, corridor.length()); };
            return static_cast<int>(
                std::count_if(walls.begin() + within(begin), walls.begin() + within(end),
                              [](const auto& wall) { return wall.has_value(); }));
        };
        int last_wall = -1;
        for (int i = 0; i < corridor.length(); ++i) {
            const auto& wall = walls[static_cast<std::size_t>(i)];
            if (!wall) continue;
            if (last_wall >= 0 && i - last_wall - 1 >= kNarrowestGap) {
                const int left = *walls[static_cast<std::size_t>(last_wall)];
                const int outer = outward < 0 ? std::min(left, *wall) : std::max(left, *wall);
                const WallGap gap{outer, corridor.begin + last_wall + 1, corridor.begin + i,
                                  wallsAmong(last_wall + 1 - kLookAlong, last_wall + 1),
                                  wallsAmong(i, i + kLookAlong)};
                gaps.push_back({gap, left, *wall, outward});
            }
            last_wall = i;
        }
    }
    return gaps;
}

}  // namespace vorund::rooms
