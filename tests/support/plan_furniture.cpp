// Furnishes the rooms.
#include <algorithm>

#include "plan_building.h"
#include "random.h"

namespace vorund::test {
namespace {

constexpr int kLeg = 50;         // Side of a table or chair leg. [mm]
constexpr int kPassage = 550;    // Kept free between two things.
constexpr int kDoorZone = 1000;  // Kept free on either side of a door.
constexpr int kWallHalf = 175;   // No wall is thicker on one side of its middle.

class Furnisher {
public:
    Furnisher(const Building& building, std::uint64_t seed, int percent)
        : building_(building),
          random_(seed, static_cast<std::uint64_t>(Stream::kFurniture)),
          percent_(percent) {
        for (const Opening& opening : building.openings) {
            const Span zone{opening.along.low - 100, opening.along.high + 100};
            taken_.push_back(wallOf(opening).box(zone, -kDoorZone, kDoorZone));
        }
    }

    std::vector<Furnishing> furnish() {
        for (const Opening& opening : building_.openings) openLeaf(opening);
        for (std::size_t i = 0; i < building_.spaces.size(); ++i) furnishSpace(static_cast<int>(i));
        return things_;
    }

private:
    const Wall& wallOf(const Opening& opening) const {
        return building_.walls[static_cast<std::size_t>(opening.wall)];
    }

    // A door that stands open at a right angle, unless it would be in the way of another.
    void openLeaf(const Opening& opening) {
        const bool single = opening.along.length() <= 1300;
        if (!single || !random_.chance(percent_ / 3)) return;
        const int thickness = 40;
        const bool low_hinge = random_.chance(50);
        const Span leaf = low_hinge ? Span{opening.along.low - thickness, opening.along.low}
                                    : Span{opening.along.high, opening.along.high + thickness};
        const int reach = opening.along.length();
        const bool before = random_.chance(50);
        const Box box = wallOf(opening).box(leaf, before ? -reach : 0, before ? 0 : reach);
        const bool blocks = std::any_of(
            building_.openings.begin(), building_.openings.end(), [&](const Opening& other) {
                return &other != &opening &&
                       wallOf(other).box(other.along, -600, 600).overlaps(box);
            });
        if (!blocks) things_.push_back({box});
    }

    void furnishSpace(int index) {
        const Space& space = building_.spaces[static_cast<std::size_t>(index)];
        const std::vector<const Wall*> walls = wallsOf(index);
        const Box& box = space.boxes.front();
        const int area_m2 = static_cast<int>(std::int64_t{box.width()} * box.height() / 1000000);
        if (space.kind == SpaceKind::kHall) placeTables(box);
        if (space.kind == SpaceKind::kOffice) {
            for (int i = 0; i < area_m2 / 5; ++i) {
                if (random_.chance(percent_)) placeDesk(walls, index);
            }
        }
        const int per_shelf_m2 = space.kind == SpaceKind::kCorridor ? 16 : 6;
        for (int i = 0; i < 1 + area_m2 / per_shelf_m2; ++i) {
            if (random_.chance(percent_)) placeShelf(walls, index);
        }
    }

    std::vector<const Wall*> wallsOf(int space) const {
        std::vector<const Wall*> result;
        for (const Wall& wall : building_.walls) {
            if (wall.before == space || wall.behind == space) result.push_back(&wall);
        }
        return result;
    }

    // Whether nothing is in the way; if so, the place is taken.
    bool take(const Box& place, int passage) {
        const Box wide = place.grown(passage);
        const auto clashes = [&](const Box& other) { return other.overlaps(wide); };
        if (std::any_of(taken_.begin(), taken_.end(), clashes)) return false;
        taken_.push_back(place);
        return true;
    }

    bool inside(const Box& place, int space) const {
        const auto& boxes = building_.spaces[static_cast<std::size_t>(space)].boxes;
        return std::any_of(boxes.begin(), boxes.end(), [&](const Box& box) {
            return box.x0 <= place.x0 && place.x1 <= box.x1 && box.y0 <= place.y0 &&
                   place.y1 <= box.y1;
        });
    }

    // A free place for a thing of that size with its back to a wall of the space.
    bool takeAtWall(const std::vector<const Wall*>& walls, int space, int length, int depth,
                    const Wall*& wall, Span& along) {
        for (int attempt = 0; attempt < 12; ++attempt) {
            wall = walls[static_cast<std::size_t>(
                random_.between(0, static_cast<int>(walls.size()) - 1))];
            const Span free{wall->along.low + kWallHalf, wall->along.high - kWallHalf - length};
            if (free.length() < 0) continue;
            int low = random_.between(free.low, free.high);
            if (random_.chance(30)) low = random_.chance(50) ? free.low : free.high;
            along = {low, low + length};
            const Box place = boxAt(*wall, space, along, 0, depth);
            if (inside(place, space) && take(place, kPassage)) return true;
        }
        return false;
    }

    // The box from `from` to `to` millimetres into the space, seen from the middle of its wall.
    static Box boxAt(const Wall& wall, int space, Span along, int from, int to) {
        return wall.behind == space ? wall.box(along, from, to) : wall.box(along, -to, -from);
    }

    void placeShelf(const std::vector<const Wall*>& walls, int space) {
        const int length = random_.between(12, 40) * 50;
        const int depth = kWallHalf + random_.between(5, 9) * 50;
        const Wall* wall = nullptr;
        Span along;
        if (!takeAtWall(walls, space, length, depth, wall, along)) return;
        things_.push_back({boxAt(*wall, space, along, 0, depth), true});
    }

    // Four legs, often a chest of drawers instead of one pair, and a chair in front.
    void placeDesk(const std::vector<const Wall*>& walls, int space) {
        const int length = random_.between(24, 36) * 50;
        const int top = kWallHalf + 800;
        const Wall* wall = nullptr;
        Span along;
        if (!takeAtWall(walls, space, length, top + 600, wall, along)) return;
        addLegs(boxAt(*wall, space, along, kWallHalf, top));
        if (random_.chance(50)) {
            const Span chest{along.low, along.low + 400};
            things_.push_back({boxAt(*wall, space, chest, kWallHalf + 100, top), true});
        }
        const int chair = random_.between(along.low + 450, along.high - 500);
        const int gap = random_.between(-150, 100);
        addLegs(boxAt(*wall, space, {chair, chair + 450}, top + gap, top + gap + 450));
    }

    void placeTables(const Box& hall) {
        const int width = random_.between(24, 36) * 50, depth = 800;
        for (int y = hall.y0 + 1300; y + depth + 1200 <= hall.y1; y += 2700) {
            for (int x = hall.x0 + 1200; x + width + 1100 <= hall.x1; x += width + 1100) {
                const Box table{x, y, x + width, y + depth};
                if (!random_.chance(percent_) || !take(table.grown(450), 0)) continue;
                addLegs(table);
                addChairs(table);
            }
        }
    }

    void addChairs(const Box& table) {
        for (int x = table.x0 + 100; x + 450 <= table.x1; x += 650) {
            const int above = table.y0 - random_.between(250, 450);
            const int below = table.y1 - random_.between(0, 200);
            if (random_.chance(70)) addLegs({x, above, x + 420, above + 420});
            if (random_.chance(70)) addLegs({x, below, x + 420, below + 420});
        }
    }

    void addLegs(const Box& top) {
        for (const int x : {top.x0, top.x1 - kLeg}) {
            for (const int y : {top.y0, top.y1 - kLeg}) {
                things_.push_back({{x, y, x + kLeg, y + kLeg}});
            }
        }
    }

    const Building& building_;
    Random random_;
    int percent_;
    std::vector<Box> taken_;  // Door zones and the places of things.
    std::vector<Furnishing> things_;
};

}  // namespace

std::vector<Furnishing> furnish(const Building& building, std::uint64_t seed, int percent) {
    if (percent == 0) return {};
    return Furnisher(building, seed, percent).furnish();
}

}  // namespace vorund::test
