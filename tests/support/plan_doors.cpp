// Chooses where doors go: first rooms to corridors, then what is still shut, then a few more.
#include <algorithm>

#include "plan_building.h"
#include "random.h"

namespace vorund::test {
namespace {

constexpr int kNarrowestDoor = 700;
constexpr int kNarrowestDoubleDoor = 1600;

int usableLength(const Wall& wall) { return wall.along.length() - 2 * kDoorGap; }

bool takesDoor(const Wall& wall) { return !wall.outer() && usableLength(wall) >= kNarrowestDoor; }

class DoorPlacer {
public:
    DoorPlacer(const std::vector<Space>& spaces, const std::vector<Wall>& walls, std::uint64_t seed)
        : spaces_(spaces),
          walls_(walls),
          random_(seed, static_cast<std::uint64_t>(Stream::kDoors)),
          reached_(spaces.size(), false),
          has_door_(walls.size(), false) {
        if (!spaces.empty()) reached_[0] = true;
    }

    void joinCorridors() {
        for (std::size_t i = 0; i < walls_.size(); ++i) {
            const Wall& wall = walls_[i];
            if (takesDoor(wall) && isCorridor(wall.before) && isCorridor(wall.behind)) open(i);
        }
    }

    void joinRoomsToCorridors() {
        for (std::size_t space = 0; space < spaces_.size(); ++space) {
            if (isCorridor(static_cast<int>(space))) continue;
            std::vector<std::size_t> choice = wallsOf(space, true);
            const bool two = spaces_[space].kind == SpaceKind::kHall && random_.chance(50);
            for (int doors = two ? 2 : 1; doors > 0 && !choice.empty(); --doors) openOne(choice);
        }
    }

    // Rooms without a corridor are entered through a neighbour.
    void joinTheRest() {
        spread();
        for (bool changed = true; changed;) {
            changed = false;
            for (std::size_t space = 0; space < spaces_.size(); ++space) {
                if (reached_[space]) continue;
                std::vector<std::size_t> choice = wallsOf(space, false);
                if (choice.empty()) continue;
                openOne(choice);
                spread();
                changed = true;
            }
        }
    }

    void addSideDoors() {
        for (std::size_t i = 0; i < walls_.size(); ++i) {
            if (takesDoor(walls_[i]) && !has_door_[i] && !isCorridor(walls_[i].before) &&
                !isCorridor(walls_[i].behind) && random_.chance(5)) {
                open(i);
            }
        }
    }

    const std::vector<Opening>& openings() const { return openings_; }
    const std::vector<bool>& reached() const { return reached_; }

private:
    const Space& space(int index) const { return spaces_[static_cast<std::size_t>(index)]; }
    bool isCorridor(int index) const { return space(index).kind == SpaceKind::kCorridor; }
    bool isHall(int index) const { return space(index).kind == SpaceKind::kHall; }
    bool isReached(int index) const { return reached_[static_cast<std::size_t>(index)]; }

    // Walls of the space that take a door to a corridor, or else to any space reached so far.
    std::vector<std::size_t> wallsOf(std::size_t space, bool to_corridor) const {
        const int self = static_cast<int>(space);
        std::vector<std::size_t> result;
        for (std::size_t i = 0; i < walls_.size(); ++i) {
            const Wall& wall = walls_[i];
            if ((wall.before != self && wall.behind != self) || !takesDoor(wall)) continue;
            const int other = wall.before == self ? wall.behind : wall.before;
            if (to_corridor ? isCorridor(other) : isReached(other)) result.push_back(i);
        }
        return result;
    }

    void openOne(std::vector<std::size_t>& choice) {
        const int last = static_cast<int>(choice.size()) - 1;
        const auto picked = choice.begin() + random_.between(0, last);
        open(*picked);
        choice.erase(picked);
    }

    int doorWidth(const Wall& wall) {
        const bool corridors = isCorridor(wall.before) && isCorridor(wall.behind);
        const bool hall = isHall(wall.before) || isHall(wall.behind);
        const int usable = usableLength(wall);
        const bool wants_two_leaves = corridors || (hall && random_.chance(60));
        if (wants_two_leaves && usable >= kNarrowestDoubleDoor) {
            return random_.between(32, std::min(40, usable / 50)) * 50;
        }
        const int roll = random_.between(1, 100);
        int width = random_.between(16, 20) * 50;
        if (roll <= 15) width = random_.between(14, 15) * 50;
        if (roll > 75) width = random_.between(21, 26) * 50;
        return std::min(width, usable);
    }

    // Half of the doors are near a corner of the room, as in most offices.
    void open(std::size_t index) {
        const Wall& wall = walls_[index];
        const int width = doorWidth(wall);
        const Span room{wall.along.low + kDoorGap, wall.along.high - kDoorGap - width};
        const bool corridors = isCorridor(wall.before) && isCorridor(wall.behind);
        int low = random_.between(room.low, room.high);
        const int roll = random_.between(1, 4);
        if (roll == 1) low = std::min(room.high, room.low + random_.between(0, 250));
        if (roll == 2) low = std::max(room.low, room.high - random_.between(0, 250));
        if (corridors) low = (room.low + room.high) / 2;
        openings_.push_back({static_cast<int>(index), {low, low + width}});
        has_door_[index] = true;
    }

    void spread() {
        for (bool changed = true; changed;) {
            changed = false;
            for (const Opening& opening : openings_) {
                const Wall& wall = walls_[static_cast<std::size_t>(opening.wall)];
                if (isReached(wall.before) == isReached(wall.behind)) continue;
                reached_[static_cast<std::size_t>(wall.before)] = true;
                reached_[static_cast<std::size_t>(wall.behind)] = true;
                changed = true;
            }
        }
    }

    const std::vector<Space>& spaces_;
    const std::vector<Wall>& walls_;
    Random random_;
    std::vector<bool> reached_;
    std::vector<bool> has_door_;
    std::vector<Opening> openings_;
};

}  // namespace

std::vector<Opening> placeDoors(const std::vector<Space>& spaces, const std::vector<Wall>& walls,
                                std::uint64_t seed, std::vector<bool>& reached) {
    DoorPlacer placer(spaces, walls, seed);
    placer.joinCorridors();
    placer.joinRoomsToCorridors();
    placer.joinTheRest();
    placer.addSideDoors();
    reached = placer.reached();
    return placer.openings();
}

Building makeBuilding(std::uint64_t seed, int width_mm, int height_mm, int glass_percent) {
    Building building{width_mm, height_mm, layOutSpaces(seed, width_mm, height_mm), {}, {}};
    std::vector<bool> reached;
    do {
        building.walls = buildWalls(building.spaces, seed, glass_percent);
        building.openings = placeDoors(building.spaces, building.walls, seed, reached);
        std::vector<Space> kept;
        for (std::size_t i = 0; i < reached.size(); ++i) {
            if (reached[i]) kept.push_back(building.spaces[i]);
        }
        building.spaces = kept;
    } while (std::find(reached.begin(), reached.end(), false) != reached.end());
    return building;
}

}  // namespace vorund::test
