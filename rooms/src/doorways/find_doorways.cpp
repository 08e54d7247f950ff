#include "doorways/find_doorways.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <tuple>
#include <utility>

#include "doorways/corridors.h"
#include "doorways/level_floor.h"
#include "doorways/wall_gaps.h"
#include "flow/line_pixels.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

/// Doorways do not lie nearer to each other than half the narrower one, or this. [pixels]
constexpr int kApart = 8;

/// How far beside a gap the space is looked at: 1 m; the wall's own raggedness is left out.
/// [pixels]
constexpr int kNearest = 2;
constexpr int kFarthest = 20;

/// A doorway is at most this part of the width of the narrower space beside it ...
constexpr int kWiderPercent = 85;

/// ... and if no wall of 0.3 m goes on beyond one of its ends, as in the corner of a room, it opens
/// into something long: a corridor, a row of cubicles. Furniture against a wall makes such gaps,
/// too. [pixels, %]
constexpr int kGoesOn = 6;
constexpr int kLongerPercent = 20;

/// A gap in a corridor's wall leads into a space that is wider along the wall. One that is as wide
/// as the space is no gap in a wall: there the corridor opens into a hall or another corridor.
constexpr int kWiderThanOpeningPercent = 95;

struct Candidate {
    FoundDoorway doorway;
    WallGap gap;
    bool upright;        ///< Across a column.
    std::size_t turned;  ///< In which of the turned maps.
};

int pixelsOf(double metres) {
    return static_cast<int>(std::lround(metres / kWorkingResolution));
}

void addGaps(const LevelFloor& level, std::size_t turned, const RoomsConfig& config,
             std::vector<Candidate>& candidates) {
    const GapLimits limits{pixelsOf(config.widest_doorway), pixelsOf(config.jamb)};
    for (const bool upright : {false, true}) {
        const auto toMap = [&](int along, int across) {
            return level.toMap(upright ? cv::Point(across, along) : cv::Point(along, across));
        };
        const cv::Mat floor = upright != 0 ? cv::Mat(level.floor().t()) : level.floor();
        for (const WallGap& gap : gapsInRows(floor, limits)) {
            const FoundDoorway doorway{toMap(gap.begin - 1, gap.row), toMap(gap.end, gap.row),
                                       gap.width(), gap.wall()};
            candidates.push_back({doorway, gap, upright, turned});
        }
    }
}

/// Narrowest first.
bool comesFirst(const Candidate& a, const Candidate& b) {
    const auto key = [](const Candidate& c) {
        return std::make_tuple(c.gap.width(), c.turned, c.upright, c.gap.row, c.gap.begin);
    };
    return key(a) < key(b);
}

bool areNear(const FoundDoorway& a, const FoundDoorway& b) {
    const cv::Point doubled = a.first_jamb + a.second_jamb - b.first_jamb - b.second_jamb;
    const int apart = std::max(2 * kApart, std::min(a.width, b.width));
    return doubled.ddot(doubled) < apart * apart;  // Of maps as long as 800 m no int holds it.
}

std::vector<Candidate> narrowestOfEachPlace(std::vector<Candidate> candidates) {
    std::sort(candidates.begin(), candidates.end(), comesFirst);
    std::vector<Candidate> kept;
    for (const Candidate& candidate : candidates) {
        const bool is_new = std::none_of(kept.begin(), kept.end(), [&](const Candidate& other) {
            return areNear(candidate.doorway, other.doorway);
        });
        if (is_new) kept.push_back(candidate);
    }
    return kept;
}

/// How wide the space beside a gap is at most within 1 m, along the gap: what can be reached from
/// the gap straight ahead. [pixels]
int widthBeside(const cv::Mat& floor, const WallGap& gap, int step) {
    int widest = 0;
    for (int off = kNearest; off <= kFarthest; ++off) {
        const int row = gap.row + step * off;
        if (row < 0 || row >= floor.rows) break;
        const std::uint8_t* const pixels = floor.ptr<std::uint8_t>(row);
        int width = 0;
        for (int col = gap.begin; col < gap.end; ++col) {
            if (pixels[col] == 0) continue;
            int begin = col;
            while (begin > 0 && pixels[begin - 1] != 0) --begin;
            while (col < floor.cols && pixels[col] != 0) ++col;
            width = std::max(width, col - begin);
        }
        if (width == 0) break;
        widest = std::max(widest, width);
    }
    return widest;
}

bool leadsSomewhere(const WallGap& gap, const cv::Mat& floor) {
    const int above = widthBeside(floor, gap, -1);
    const int below = widthBeside(floor, gap, 1);
    const bool goes_on = std::min(gap.wall_left, gap.wall_right) >= kGoesOn;
    return gap.width() * 100 <= kWiderPercent * std::min(above, below) &&
           (goes_on || gap.width() * 100 <= kLongerPercent * std::max(above, below));
}

/// The turned map with all gaps closed, so that each is measured in the space it lies in and not in
/// what lies beyond the next. Rows first, then columns as rows.
std::array<cv::Mat, 2> withoutGaps(const cv::Mat& level, std::size_t turned,
                                   const std::vector<Candidate>& candidates) {
    cv::Mat closed = level.clone();
    for (const Candidate& candidate : candidates) {
        if (candidate.turned != turned) continue;
        const WallGap& gap = candidate.gap;
        const cv::Range across(gap.row, gap.row + 1);
        const cv::Range along(gap.begin, gap.end);
        cv::Mat line = candidate.upright ? closed(along, across) : closed(across, along);
        line = 0;
    }
    cv::Mat upright;
    cv::transpose(closed, upright);
    return {closed, upright};
}

cv::Point flipped(const cv::Point& pixel) {
    return {pixel.y, pixel.x};
}

/// What opens beside the corridors of a level floor; in the first place those along its rows, in
/// the second those along its columns, seen as rows.
class CorridorOpenings {
 public:
    explicit CorridorOpenings(const LevelFloor& level) {
        const std::array<cv::Mat, 2> floors = {level.floor(), level.columns()};
        for (const std::size_t upright : {0U, 1U}) {
            corridors_[upright] = corridorsInRows(floors[upright], floors[1 - upright]);
        }
        for (const std::size_t upright : {0U, 1U}) {
            for (const Corridor& corridor : corridors_[upright]) {
                for (const CorridorGap& gap : gapsBeside(corridor, floors[upright])) {
                    if (!isAcrossLongerOne(corridor, gap, 1 - upright)) {
                        gaps_[upright].push_back(gap);
                    }
                }
            }
        }
    }

    /// @param closed  The level floor without the gaps of doorways, and its columns as rows; those of
    ///                corridors are closed in it, too.
    std::vector<FoundDoorway> intoWiderSpaces(const LevelFloor& level,
                                              std::array<cv::Mat, 2>& closed) const {
        close(closed);
        std::vector<FoundDoorway> openings;
        for (const std::size_t upright : {0U, 1U}) {
            for (const CorridorGap& gap : gaps_[upright]) {
                const int beyond = widthBeside(closed[upright], gap.gap, gap.outward);
                if (gap.gap.width() * 100 > kWiderThanOpeningPercent * beyond) continue;
                const auto toMap = [&](const cv::Point& end) {
                    return level.toMap(upright != 0 ? flipped(end) : end);
                };
                openings.push_back(
                    {toMap(gap.left()), toMap(gap.right()), gap.gap.width(), gap.gap.wall()});
            }
        }
        return openings;
    }

 private:
    /// Two niches opposite each other look like a corridor across the one they lie at.
    bool isAcrossLongerOne(const Corridor& own, const CorridorGap& gap, std::size_t other) const {
        const cv::Point middle = flipped((gap.left() + gap.right()) / 2);
        return std::any_of(corridors_[other].begin(), corridors_[other].end(),
                           [&](const Corridor& corridor) {
                               return corridor.length() > own.length() && corridor.holds(middle);
                           });
    }

    void close(std::array<cv::Mat, 2>& closed) const {
        for (const std::size_t upright : {0U, 1U}) {
            for (const CorridorGap& gap : gaps_[upright]) {
                for (const cv::Point& pixel : linePixels(gap.left(), gap.right())) {
                    closed[upright].at<std::uint8_t>(pixel) = 0;
                    closed[1 - upright].at<std::uint8_t>(flipped(pixel)) = 0;
                }
            }
        }
    }

    std::array<std::vector<Corridor>, 2> corridors_;
    std::array<std::vector<CorridorGap>, 2> gaps_;
};

/// Those in a place of their own.
void addOpenings(const std::vector<FoundDoorway>& openings, std::vector<FoundDoorway>& doorways) {
    const std::size_t before = doorways.size();
    for (const FoundDoorway& opening : openings) {
        const auto end = doorways.begin() + static_cast<std::ptrdiff_t>(before);
        const bool is_new = std::none_of(doorways.begin(), end, [&](const FoundDoorway& doorway) {
            return areNear(opening, doorway);
        });
        if (is_new) doorways.push_back(opening);
    }
}

}  // namespace

std::vector<cv::Point> FoundDoorway::pixels(const cv::Mat& floor) const {
    std::vector<cv::Point> line = linePixels(first_jamb, second_jamb);
    const cv::Rect whole({0, 0}, floor.size());
    line.erase(std::remove_if(line.begin(), line.end(),
                              [&](const cv::Point& pixel) {
                                  return !whole.contains(pixel) ||
                                         floor.at<std::uint8_t>(pixel) == 0;
                              }),
               line.end());
    return line;
}

std::vector<LinkingDoorway> linkingDoorways(const cv::Mat& labels, const cv::Mat& floor,
                                            const std::vector<FoundDoorway>& doorways,
                                            const RoomsConfig& config) {
    const cv::Rect whole({0, 0}, labels.size());
    std::vector<LinkingDoorway> linking;
    for (const FoundDoorway& doorway : doorways) {
        if (doorway.width > pixelsOf(config.widest_doorway)) continue;
        std::map<int, int> pixels;  // By room.
        for (const cv::Point& pixel : doorway.pixels(floor)) {
            for (const cv::Point& step : {cv::Point(0, -1), {-1, 0}, {1, 0}, {0, 1}}) {
                if (!whole.contains(pixel + step)) continue;
                const int room = labels.at<std::int32_t>(pixel + step);
                if (room != 0) ++pixels[room];
            }
        }
        if (pixels.size() < 2) continue;
        std::vector<std::pair<int, int>> most;
        for (const auto& [room, count] : pixels) most.emplace_back(-count, room);
        std::sort(most.begin(), most.end());
        linking.push_back({doorway, Edge(most[0].second, most[1].second)});
    }
    return linking;
}

std::vector<FoundDoorway> findDoorways(const cv::Mat& floor, const RoomsConfig& config) {
    if (floor.empty()) return {};
    std::vector<LevelFloor> turned;
    std::vector<Candidate> candidates;
    for (const Direction& direction : wallDirections(floor)) {
        turned.emplace_back(floor, direction);
        addGaps(turned.back(), turned.size() - 1, config, candidates);
    }
    candidates = narrowestOfEachPlace(std::move(candidates));
    std::vector<std::array<cv::Mat, 2>> closed;
    for (std::size_t i = 0; i < turned.size(); ++i) {
        closed.push_back(withoutGaps(turned[i].floor(), i, candidates));
    }
    std::vector<FoundDoorway> doorways;
    for (const Candidate& candidate : candidates) {
        if (leadsSomewhere(candidate.gap, closed[candidate.turned][candidate.upright ? 1 : 0])) {
            doorways.push_back(candidate.doorway);
        }
    }
    if (config.corridors) {
        for (std::size_t i = 0; i < turned.size(); ++i) {
            const CorridorOpenings openings(turned[i]);
            addOpenings(openings.intoWiderSpaces(turned[i], closed[i]), doorways);
        }
    }
    return doorways;
}

}  // namespace vorund::rooms
