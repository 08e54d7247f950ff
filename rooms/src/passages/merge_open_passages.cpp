#include "passages/merge_open_passages.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <queue>
#include <set>
#include <tuple>
#include <utility>

#include "passages/region_table.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

/// What is too small to be a room.
struct Smallness {
    double area;         ///< Anything below. [m^2]
    double narrow_area;  ///< What is narrower than `width`, too, below this. [m^2]
    double width;        ///< [m]

    bool holds(const Region& region) const {
        return region.area() < area || (region.area() < narrow_area && region.width() < width);
    }
};

/// A cupboard; and a gap that a robot, or a person, does not stand in, unless it is as large as a
/// corridor. [m^2, m^2, m]
constexpr Smallness kSpecks{1.0, 5.0, 0.7};

/// Smallest first, of equal ones that with the smaller label.
using SmallRegions = std::set<std::pair<std::int64_t, int>>;

void absorb(RegionTable& table, const Smallness& small) {
    SmallRegions waiting;
    const auto wait = [&](int label) {
        const Region& region = table.regions().at(label);
        if (!region.passages.empty() && small.holds(region)) waiting.emplace(region.pixels, label);
    };
    for (const auto& [label, region] : table.regions()) wait(label);
    while (!waiting.empty()) {
        const int label = waiting.begin()->second;
        waiting.erase(waiting.begin());
        const auto& passages = table.regions().at(label).passages;
        const auto widest = std::max_element(
            passages.begin(), passages.end(),
            [](const auto& a, const auto& b) { return a.second.widest() < b.second.widest(); });
        const int neighbour = widest->first;
        waiting.erase({table.regions().at(neighbour).pixels, neighbour});
        table.merge(label, neighbour);
        wait(table.survivor(neighbour));
    }
}

/// Two regions and how open their passage is.
struct Opening {
    int a;
    int b;
    std::int64_t passage;  ///< Squared clearances. [pixels^2]
    std::int64_t room;     ///< Of the roomier side.

    /// The most open comes first, of equal ones that with the smaller labels. Compared as
    /// fractions: no division, no rounding.
    bool operator<(const Opening& other) const {
        const std::int64_t own = passage * other.room;
        const std::int64_t its = other.passage * room;
        return own < its || (own == its && std::tie(other.a, other.b) < std::tie(a, b));
    }
    bool isOpen(const RoomsConfig& config) const {
        const double width = 2.0 * kWorkingResolution;
        const bool narrow = static_cast<double>(passage) * width * width <
                            config.narrow_passage * config.narrow_passage;
        const double ratio = narrow ? config.narrow_ratio : config.open_ratio;
        constexpr double kMargin = 1.0 + 1e-9;  // 0.7 * 0.7 is a little less than 0.49.
        return static_cast<double>(passage) > ratio * ratio * kMargin * static_cast<double>(room);
    }
};

std::optional<Opening> openingBetween(const RegionTable& table, int a, int b) {
    const auto of_a = table.regions().find(a);
    const auto of_b = table.regions().find(b);
    if (of_a == table.regions().end() || of_b == table.regions().end()) return std::nullopt;
    const Passage& passage = of_a->second.passages.at(b);
    return Opening{std::min(a, b), std::max(a, b), passage.clearance,
                   std::max(of_a->second.clearance, of_b->second.clearance)};
}

void joinOpen(RegionTable& table, const RoomsConfig& config) {
    std::priority_queue<Opening> waiting;
    const auto wait = [&](int label) {
        for (const auto& [other, passage] : table.regions().at(label).passages) {
            const auto opening = openingBetween(table, label, other);
            if (opening->isOpen(config)) waiting.push(*opening);
        }
    };
    for (const auto& [label, region] : table.regions()) wait(label);
    while (!waiting.empty()) {
        const Opening opening = waiting.top();
        waiting.pop();
        // Of regions that have changed since, the present opening waits as well.
        const auto now = openingBetween(table, opening.a, opening.b);
        if (!now || now->passage != opening.passage || now->room != opening.room) continue;
        table.merge(opening.a, opening.b);
        wait(table.survivor(opening.a));
    }
}

}  // namespace

void mergeOpenPassages(Regions& regions, const cv::Mat& floor,
                       const std::vector<FoundDoorway>& doorways, const RoomsConfig& config) {
    RegionTable table(regions, floor, doorways);
    absorb(table, kSpecks);
    joinOpen(table, config);
    absorb(table, {config.least_area, 0.0, 0.0});
    table.apply(regions);
}

}  // namespace vorund::rooms
