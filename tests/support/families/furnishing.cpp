#include "families/furnishing.h"

#include <algorithm>

namespace vorund::test::families {
namespace {

constexpr int kFace = 150;  // Of a wall, from its middle.

// Furnishes one building, in its own millimetres.
class Furnisher {
 public:
    Furnisher(Site& site, const PlacedBuilding& placed, Random& random)
        : site_(site), placed_(placed), random_(random) {
        for (const Opening& opening : building().openings) {
            const Span zone{opening.along.low - 150, opening.along.high + 150};
            taken_.push_back(wallOf(opening).box(zone, -1000, 1000));
        }
        door_zones_ = taken_;
    }

    void addDesks(int percent) {
        for (const Furnishing& thing : furnish(building(), random_.next(), percent)) {
            if (!narrows(thing.box)) put(thing.box, thing.hollow);
        }
    }

    void addDividers(int percent) {
        for (const Space& space : building().spaces) {
            const Box& box = space.boxes.front();
            const bool large = std::min(box.width(), box.height()) >= 3000;
            if (space.kind == SpaceKind::kCorridor || !large || !random_.chance(percent)) continue;
            divide(box);
        }
    }

    void addClutter(int percent) {
        for (const Space& space : building().spaces) {
            for (const Box& box : space.boxes) {
                const int m2 = box.width() / 100 * (box.height() / 100) / 100;
                const int per_m2 = space.kind == SpaceKind::kCorridor ? 14 : 5;
                for (int i = 0; i < 1 + m2 / per_m2; ++i) {
                    if (random_.chance(percent)) addPiece(box, space.kind);
                }
            }
        }
    }

    // Along both faces of all walls, and now and then a leg or a cable on the floor.
    void addMess(int percent) {
        for (const Wall& wall : building().walls) {
            for (const bool behind : {false, true}) {
                if ((behind ? wall.behind : wall.before) == kNoSpace) continue;
                lineWall(wall, behind, percent);
            }
        }
        for (const Space& space : building().spaces) {
            for (const Box& box : space.boxes) strewLegs(box, percent);
        }
    }

 private:
    const Building& building() const { return placed_.building; }
    const Wall& wallOf(const Opening& opening) const {
        return building().walls[static_cast<std::size_t>(opening.wall)];
    }

    void put(const Box& box, bool hollow, bool round = false, int tenths_deg = 0) {
        site_.things.push_back({shapeOf(placed_.pose, box, round, tenths_deg), hollow, false});
        taken_.push_back(box);
    }

    bool isFree(const Box& box) const {
        return std::none_of(taken_.begin(), taken_.end(),
                            [&](const Box& other) { return other.overlaps(box); });
    }

    bool beforeDoor(const Box& box) const {
        return std::any_of(door_zones_.begin(), door_zones_.end(),
                           [&](const Box& zone) { return zone.overlaps(box); });
    }

    void lineWall(const Wall& wall, bool behind, int percent) {
        for (int low = wall.along.low + 200; low < wall.along.high - 200;) {
            const int high = std::min(wall.along.high - 150, low + random_.between(60, 900));
            const int face = wall.thickness_mm / 2;
            const int out = face + random_.between(30, random_.chance(30) ? 500 : 160);
            const Span part{low, high};
            const Box box = behind ? wall.box(part, 0, out) : wall.box(part, -out, 0);
            low = high + random_.between(0, 900);
            if (!random_.chance(percent) || beforeDoor(box)) continue;
            const bool half_open = random_.chance(25);  // A shelf of which the posts are seen.
            if (!half_open) {
                put(box, true);
                continue;
            }
            const Span ends[] = {{part.low, part.low + 40}, {part.high - 40, part.high}};
            for (const Span& end : ends) {
                put(behind ? wall.box(end, out - 60, out) : wall.box(end, -out, 60 - out), false);
            }
        }
    }

    void strewLegs(const Box& room, int percent) {
        const int m2 = room.width() / 100 * (room.height() / 100) / 100;
        for (int i = 0; i < m2 / 2; ++i) {
            const int x = random_.between(room.x0 + 300, room.x1 - 300);
            const int y = random_.between(room.y0 + 300, room.y1 - 300);
            const int size = random_.between(25, 90);
            const Box leg{x, y, x + size, y + size};
            if (random_.chance(percent / 2) && !beforeDoor(leg)) put(leg, false);
        }
    }

    bool narrows(const Box& box) const {
        return std::any_of(passages_.begin(), passages_.end(),
                           [&](const Box& passage) { return passage.overlaps(box); });
    }

    // A long shelf across the longer side of the room, from one wall almost to the other.
    void divide(const Box& room) {
        const bool upright = room.width() >= room.height();
        const Box lying = upright ? room : room.transposed();
        const int depth = random_.between(6, 10) * 50;
        const int x =
            random_.between(lying.x0 + lying.width() / 3, lying.x0 + lying.width() * 2 / 3 - depth);
        const int gap = random_.between(18, 32) * 50;
        const bool at_low_wall = random_.chance(50);
        const Box shelf{x, lying.y0 + (at_low_wall ? 0 : gap), x + depth,
                        lying.y1 - (at_low_wall ? gap : 0)};
        const Box place = upright ? shelf : shelf.transposed();
        if (!isFree(place)) return;
        put(place, true);
        const Box passage =
            Box{x, at_low_wall ? shelf.y1 : lying.y0, x + depth, at_low_wall ? lying.y1 : shelf.y0}
                .grown(500);
        passages_.push_back(upright ? passage : passage.transposed());
        taken_.push_back(passages_.back());
    }

    void addPiece(const Box& room, SpaceKind kind) {
        const int roll = kind == SpaceKind::kCorridor ? 100 : random_.between(1, 100);
        if (roll <= 20) return addAtWall(room, {1500, 2200}, {800, 1000});  // A sofa.
        if (roll <= 32) return addAtWall(room, {1900, 2100}, {900, 1800});  // A bed.
        if (roll <= 60) return addAtWall(room, {400, 1600}, {350, 600});    // A cupboard.
        if (roll <= 80) return addFreely(room, {500, 1400}, true);          // Round table, pillar.
        if (roll <= 90) return addFreely(room, {300, 1200}, false);         // Boxes.
        addAtWall(room, {250, 450}, {250, 450});                            // A bin, a plant.
    }

    void addAtWall(const Box& room, Span length, Span depth) {
        const int size = random_.between(length.low, length.high);
        const int reach = random_.between(depth.low, depth.high) + kFace;
        const bool along_x = random_.chance(50), low_side = random_.chance(50);
        const Box own = along_x ? room : room.transposed();
        if (own.width() < size + 2 * kFace || own.height() < reach + 1100) return;
        const int x = random_.between(own.x0 + kFace, own.x1 - kFace - size);
        const Box lying = low_side ? Box{x, own.y0, x + size, own.y0 + reach}
                                   : Box{x, own.y1 - reach, x + size, own.y1};
        const Box place = along_x ? lying : lying.transposed();
        if (isFree(place.grown(300))) put(place, true);
    }

    void addFreely(const Box& room, Span size, bool round) {
        const int side = random_.between(size.low, size.high);
        const int other = round ? side : random_.between(size.low, size.high);
        const int clear = 900;  // To pass along the walls.
        if (room.width() < side + 2 * clear || room.height() < other + 2 * clear) return;
        const int x = random_.between(room.x0 + clear, room.x1 - clear - side);
        const int y = random_.between(room.y0 + clear, room.y1 - clear - other);
        const Box place{x, y, x + side, y + other};
        const int turn = random_.between(-450, 450);
        if (isFree(place.grown(400))) put(place, random_.chance(70), round, round ? 0 : turn);
    }

    Site& site_;
    const PlacedBuilding& placed_;
    Random& random_;
    std::vector<Box> taken_;
    std::vector<Box> door_zones_;
    std::vector<Box> passages_;  // Beside dividers.
};

// Around each building, up to 10 m away.
void furnishOutdoors(Site& site, const PlacedBuilding& placed, int percent, Random& random) {
    Box around{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    for (const Space& space : placed.building.spaces) {
        for (const Box& box : space.boxes) {
            around = {std::min(around.x0, box.x0), std::min(around.y0, box.y0),
                      std::max(around.x1, box.x1), std::max(around.y1, box.y1)};
        }
    }
    const Box wide = around.grown(10000);
    const int count = (wide.width() + wide.height()) / 1000 * percent / 50;
    for (int i = 0; i < count; ++i) {
        const int x = random.between(wide.x0, wide.x1), y = random.between(wide.y0, wide.y1);
        const int length = random.between(3, 40) * 100, depth = random.between(2, 12) * 100;
        const bool tree = random.chance(40);
        const Box box{x, y, x + (tree ? 300 : length), y + (tree ? 300 : depth)};
        const int turn = random.between(-900, 900);
        site.things.push_back({shapeOf(placed.pose, box, tree, turn), false, true});
    }
}

}  // namespace

void furnishSite(Site& site, const FurnishingAmounts& amounts, Random& random) {
    for (const PlacedBuilding& placed : site.buildings) {
        Furnisher furnisher(site, placed, random);
        furnisher.addDividers(amounts.dividers);
        if (amounts.desks > 0) furnisher.addDesks(amounts.desks);
        furnisher.addClutter(amounts.clutter);
        if (amounts.mess > 0) furnisher.addMess(amounts.mess);
        if (amounts.outdoors > 0) furnishOutdoors(site, placed, amounts.outdoors, random);
    }
}

void crackWalls(Site& site, int percent, Random& random) {
    for (const PlacedBuilding& placed : site.buildings) {
        for (const Wall& wall : placed.building.walls) {
            if (wall.outer() || !random.chance(percent)) continue;
            const int rarest = random.between(4, 30) * 100;
            for (int low = wall.along.low + 350;;) {
                low += random.between(100, rarest);
                const int width = random.between(40, 400);
                if (low + width > wall.along.high - 350) break;
                const int thickness = std::max(wall.thickness_mm, 50) + 40;
                site.paint(Brush::kOpen,
                           wallShape(placed.pose, wall, {low, low + width}, thickness));
                low += width;
            }
        }
    }
}

}  // namespace vorund::test::families
