#include "families/drive.h"

#include <cstdlib>

namespace vorund::test::families {
namespace {

constexpr int kClearanceMm = 180;  // Of the robot's middle.

// Every fourth pixel both ways, which is enough to find the way.
class Lattice {
 public:
    explicit Lattice(const RayField& field)
        : cols_(field.clearance().cols / kStep), rows_(field.clearance().rows / kStep) {
        const int pixel_mm = static_cast<int>(field.canvas().frame.pixel_um / 1000);
        for (int node = 0; node < cols_ * rows_; ++node) {
            const cv::Point at = pixelOf(node);
            const bool indoors = field.canvas().floor.at<std::uint16_t>(at) > 0;
            const int clear = field.clearance().at<std::uint8_t>(at) * pixel_mm;
            open_.push_back(indoors && clear >= kClearanceMm);
        }
    }

    static constexpr int kStep = 4;
    int size() const { return cols_ * rows_; }
    bool isOpen(int node) const { return open_[static_cast<std::size_t>(node)]; }
    cv::Point pixelOf(int node) const {
        return {node % cols_ * kStep + kStep / 2, node / cols_ * kStep + kStep / 2};
    }

    // The way from `from` to the nearest node with `wanted`, both included; empty if there is none.
    std::vector<int> wayToNearest(int from, const std::vector<bool>& wanted) {
        came_from_.assign(open_.size(), -1);
        came_from_[static_cast<std::size_t>(from)] = from;
        queue_.assign(1, from);
        for (std::size_t head = 0; head < queue_.size(); ++head) {
            const int node = queue_[head];
            if (wanted[static_cast<std::size_t>(node)]) return wayBack(node);
            for (const int step :
                 {-cols_, -1, 1, cols_, -cols_ - 1, 1 - cols_, cols_ - 1, cols_ + 1}) {
                const int next = node + step;
                const bool wraps = std::abs(next % cols_ - node % cols_) > 1;
                if (next < 0 || next >= size() || wraps || !isOpen(next)) continue;
                int& known = came_from_[static_cast<std::size_t>(next)];
                if (known >= 0) continue;
                known = node;
                queue_.push_back(next);
            }
        }
        return {};
    }

 private:
    std::vector<int> wayBack(int node) const {
        std::vector<int> way{node};
        while (came_from_[static_cast<std::size_t>(way.back())] != way.back()) {
            way.push_back(came_from_[static_cast<std::size_t>(way.back())]);
        }
        return {way.rbegin(), way.rend()};
    }

    int cols_, rows_;
    std::vector<bool> open_;
    std::vector<int> came_from_, queue_;
};

// The places of each room where the robot can stand; entry 0 stays empty.
std::vector<std::vector<int>> placesByRoom(const Lattice& lattice, const RayField& field,
                                           const Site& site) {
    std::vector<std::vector<int>> places(site.rooms.size() + 1);
    for (int node = 0; node < lattice.size(); ++node) {
        if (!lattice.isOpen(node)) continue;
        const int room = field.canvas().floor.at<std::uint16_t>(lattice.pixelOf(node));
        places[static_cast<std::size_t>(room)].push_back(node);
    }
    return places;
}

std::size_t roomWithMostDoors(const Site& site) {
    std::vector<int> doors(site.rooms.size() + 1, 0);
    for (const SiteDoor& door : site.doors) {
        ++doors[static_cast<std::size_t>(door.room_a)];
        ++doors[static_cast<std::size_t>(door.room_b)];
    }
    return static_cast<std::size_t>(std::max_element(doors.begin() + 1, doors.end()) -
                                    doors.begin());
}

int oneOf(const std::vector<int>& nodes, Random& random) {
    return nodes[static_cast<std::size_t>(random.between(0, static_cast<int>(nodes.size()) - 1))];
}

std::vector<bool> chooseGoals(const Lattice& lattice, const Site& site,
                              const std::vector<std::vector<int>>& places, int visited_percent,
                              Random& random) {
    std::vector<bool> goals(static_cast<std::size_t>(lattice.size()), false);
    for (std::size_t room = 1; room < places.size(); ++room) {
        const bool corridor = site.rooms[room - 1].kind == SpaceKind::kCorridor;
        const bool visited = random.chance(visited_percent);
        if (places[room].empty() || (!visited && !corridor)) continue;
        const int count = 1 + static_cast<int>(places[room].size()) / (corridor ? 800 : 2000);
        for (int i = 0; i < count; ++i) {
            goals[static_cast<std::size_t>(oneOf(places[room], random))] = true;
        }
    }
    return goals;
}

// Of sixteen, the direction nearest to (dx, dy).
int headingOf(const cv::Point& step) {
    int best = 0;
    std::int64_t most = INT64_MIN;
    for (int heading = 0; heading < 36000; heading += 2250) {
        const Direction direction = directionOf(heading);
        const std::int64_t along =
            std::int64_t{direction.x} * step.x + std::int64_t{direction.y} * step.y;
        if (along > most) {
            most = along;
            best = heading;
        }
    }
    return best;
}

std::vector<Station> stationsAlong(const std::vector<int>& way, const Lattice& lattice,
                                   int distance_px, const DrivePlan& plan, Random& random) {
    const int length = static_cast<int>(way.size()) * Lattice::kStep;
    const int distance = std::max(distance_px, length / plan.most_scans);
    const auto every = static_cast<std::size_t>(std::max(1, distance / Lattice::kStep));
    std::vector<Station> stations;
    for (std::size_t i = 0; i < way.size(); i += every) {
        const cv::Point at = lattice.pixelOf(way[i]);
        const std::size_t ahead = std::min(i + 4, way.size() - 1);
        const std::size_t behind = i < 4 ? 0 : i - 4;
        const cv::Point step = lattice.pixelOf(way[ahead]) - lattice.pixelOf(way[behind]);
        Station station{middleOf(at.y, at.x), headingOf(step) + random.between(-600, 600)};
        station.place.x += random.between(-60000, 60000);
        station.place.y += random.between(-60000, 60000);
        stations.push_back(station);
    }
    return stations;
}

}  // namespace

std::vector<Station> driveThrough(const RayField& field, const Site& site, const DrivePlan& plan,
                                  Random& random) {
    Lattice lattice(field);
    const std::vector<std::vector<int>> places = placesByRoom(lattice, field, site);
    const std::size_t start = roomWithMostDoors(site);
    if (places[start].empty()) return {};
    std::vector<bool> goals = chooseGoals(lattice, site, places, plan.visited_percent, random);
    std::vector<int> way{oneOf(places[start], random)};
    for (;;) {
        goals[static_cast<std::size_t>(way.back())] = false;
        const std::vector<int> leg = lattice.wayToNearest(way.back(), goals);
        if (leg.empty()) break;
        way.insert(way.end(), leg.begin() + 1, leg.end());
    }
    const int pixel_mm = static_cast<int>(field.canvas().frame.pixel_um / 1000);
    return stationsAlong(way, lattice, plan.scan_distance_mm / pixel_mm, plan, random);
}

}  // namespace vorund::test::families
