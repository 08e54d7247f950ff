#include "reference/corridors.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace vorund::reference {
namespace {

using Sides = std::pair<int, int>;  // First and last row.

bool isFloor(const cv::Mat& floor, int row, int col) {
    return row >= 0 && row < floor.rows && floor.at<std::uint8_t>(row, col) != 0;
}

/// Floor of a column between wall above and below, 1 to 4 m wide.
std::vector<Sides> narrowPlaces(const cv::Mat& floor, int col) {
    std::vector<Sides> places;
    for (int row = 0; row < floor.rows; ++row) {
        if (!isFloor(floor, row, col) || isFloor(floor, row - 1, col)) continue;
        int last = row;
        while (isFloor(floor, last + 1, col)) ++last;
        const int width = last - row + 1;
        if (width >= 20 && width <= 80) places.emplace_back(row, last);
    }
    return places;
}

/// Walks along a corridor, a column at a time. Sides in sixteenths of a pixel.
struct Walker {
    int begin;
    int seen;  // The last column where the corridor's walls were.
    int first;
    int past;
    std::map<int, Sides> sides;  // By column.

    Sides now() const { return {(first + 8) / 16, (past + 8) / 16 - 1}; }
};

bool fits(const Walker& walker, const Sides& place) {
    return std::abs(16 * place.first - walker.first) <= 48 &&
           std::abs(16 * (place.second + 1) - walker.past) <= 48;
}

bool canGoOn(const Walker& walker, const cv::Mat& floor, int col) {
    const auto [first, last] = walker.now();
    const int off_middle = (last - first + 1) / 5;
    int open = 0;
    int all = 0;
    for (int row = first + off_middle; row <= last - off_middle; ++row) {
        ++all;
        if (isFloor(floor, row, col)) ++open;
    }
    return col <= walker.seen + 300 && 10 * open >= 6 * all;
}

/// The wall that the corridor has at a column, from 3 pixels before its side to 6 behind it; -1 if
/// there is none.
int wallAt(const PlainCorridor& corridor, const cv::Mat& floor, int col, int outward) {
    const auto i = static_cast<std::size_t>(col - corridor.begin);
    const int side = outward < 0 ? corridor.firsts[i] : corridor.lasts[i];
    for (int off = -2; off <= 6; ++off) {
        const int row = side + outward * off;
        if (!isFloor(floor, row, col)) return std::clamp(row, 0, floor.rows - 1);
    }
    return -1;
}

int endOf(const PlainCorridor& corridor) {
    return corridor.begin + static_cast<int>(corridor.firsts.size());
}

bool isCorridor(const PlainCorridor& corridor, const cv::Mat& floor) {
    const int length = endOf(corridor) - corridor.begin;
    const auto middle = static_cast<std::size_t>(length / 2);
    if (length < 3 * (corridor.lasts[middle] - corridor.firsts[middle] + 1)) return false;
    std::map<int, int> walled{{-1, 0}, {1, 0}};
    for (int col = corridor.begin; col < endOf(corridor); ++col) {
        for (auto& [outward, columns] : walled) {
            if (wallAt(corridor, floor, col, outward) >= 0) ++columns;
        }
    }
    return 5 * std::min(walled[-1], walled[1]) >= 2 * length;
}

void addIfCorridor(const Walker& walker, const cv::Mat& floor, std::vector<PlainCorridor>& to) {
    PlainCorridor corridor{walker.begin, {}, {}};
    for (const auto& [col, sides] : walker.sides) {
        if (col > walker.seen) break;
        corridor.firsts.push_back(sides.first);
        corridor.lasts.push_back(sides.second);
    }
    if (isCorridor(corridor, floor)) to.push_back(corridor);
}

std::vector<PlainCorridor> walkAll(const cv::Mat& floor) {
    std::vector<PlainCorridor> corridors;
    std::vector<Walker> walkers;  // The one that set out first comes first.
    for (int col = 0; col < floor.cols; ++col) {
        const std::vector<Sides> places = narrowPlaces(floor, col);
        std::set<Sides> without_walker(places.begin(), places.end());
        std::set<Sides> occupied;
        std::vector<Walker> still_walking;
        for (Walker& walker : walkers) {
            const auto place =
                std::find_if(places.begin(), places.end(),
                             [&](const Sides& candidate) { return fits(walker, candidate); });
            if (place != places.end()) {
                walker.first += (16 * place->first - walker.first) / 8;
                walker.past += (16 * (place->second + 1) - walker.past) / 8;
                walker.seen = col;
                without_walker.erase(*place);
            } else if (!canGoOn(walker, floor, col)) {
                addIfCorridor(walker, floor, corridors);
                continue;
            }
            walker.sides[col] = walker.now();
            if (occupied.insert(walker.now()).second) still_walking.push_back(walker);
        }
        for (const Sides& place : without_walker) {
            still_walking.push_back(
                {col, col, 16 * place.first, 16 * (place.second + 1), {{col, place}}});
        }
        walkers = still_walking;
    }
    for (const Walker& walker : walkers) addIfCorridor(walker, floor, corridors);
    return corridors;
}

bool overlap(const PlainCorridor& a, const PlainCorridor& b) {
    const int begin = std::max(a.begin, b.begin);
    const int end = std::min(endOf(a), endOf(b));
    if (begin >= end) return false;
    const auto in_a = static_cast<std::size_t>((begin + end) / 2 - a.begin);
    const auto in_b = static_cast<std::size_t>((begin + end) / 2 - b.begin);
    int rows = 0;
    for (int row = a.firsts[in_a]; row <= a.lasts[in_a]; ++row) {
        if (row >= b.firsts[in_b] && row <= b.lasts[in_b]) ++rows;
    }
    return rows > 3;
}

}  // namespace

std::vector<PlainCorridor> corridorsAlongRows(const cv::Mat& floor) {
    std::map<std::tuple<int, int, int>, PlainCorridor> by_length;
    for (const PlainCorridor& corridor : walkAll(floor)) {
        by_length[{corridor.begin - endOf(corridor), corridor.begin, corridor.firsts[0]}] =
            corridor;
    }
    std::vector<PlainCorridor> kept;
    for (const auto& [order, corridor] : by_length) {
        bool is_new = true;
        for (const PlainCorridor& longer : kept) is_new = is_new && !overlap(corridor, longer);
        if (is_new) kept.push_back(corridor);
    }
    return kept;
}

std::vector<PlainCorridorGap> gapsInWalls(const PlainCorridor& corridor, const cv::Mat& floor) {
    std::vector<PlainCorridorGap> gaps;
    const int end = endOf(corridor);
    for (const int outward : {-1, 1}) {
        const auto wallIn = [&](int col) {
            if (col < corridor.begin || col >= end) return -1;
            return wallAt(corridor, floor, col, outward);
        };
        for (int left = corridor.begin; left < end; ++left) {
            if (wallIn(left) < 0) continue;
            int right = left + 1;
            while (right < end && wallIn(right) < 0) ++right;
            if (right == end || right - left - 1 < 10) continue;
            int wall = 0;
            for (int off = 0; off < 60; ++off) {
                if (wallIn(left - off) >= 0) ++wall;
                if (wallIn(right + off) >= 0) ++wall;
            }
            gaps.push_back({{left, wallIn(left)}, {right, wallIn(right)}, wall, outward});
        }
    }
    return gaps;
}

bool isInCorridor(const PlainCorridor& corridor, const cv::Point& pixel) {
    if (pixel.x < corridor.begin || pixel.x >= endOf(corridor)) return false;
    const auto i = static_cast<std::size_t>(pixel.x - corridor.begin);
    return pixel.y >= corridor.firsts[i] && pixel.y <= corridor.lasts[i];
}

}  // namespace vorund::reference
