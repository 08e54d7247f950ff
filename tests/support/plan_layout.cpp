// Lays out corridors and rooms.
//
//     +----+------+---+--------+     A building is one or more wings, each a corridor with a strip
//     |    |      |   |        |     of rooms on one or both sides. Spines run across the wings
//     +----+------+---+---+    |     and join their corridors. A corridor may end at a room that
//     |   corridor        |end |     takes its breadth ("end room"), and wings after the first may
//     +-----+ s +---+-----+room|     be shorter, which gives the outline its recesses.
//     |     | p |   |     |    |
//     +-----+ i +---+-----+----+     Everything here has the longer side along x; tall buildings
//     |     | n |     |   |          are laid out lying and then transposed.
//     +-----+ e +-----+---+
//     |   corridor        |
//     +------+-----+------+
//     |      |     |      |
//     +------+-----+------+
#include <algorithm>
#include <numeric>

#include "plan_building.h"
#include "random.h"

namespace vorund::test {
namespace {

constexpr std::int64_t kSquareMetre = 1000000;  // [mm^2]
constexpr int kNarrowestCorridorPlan = 5200;    // Below, a corridor would leave no room a depth.
constexpr int kNarrowestTwoSided = 8600;        // Below, rooms lie on one side of the corridor.
constexpr int kShortestCell = 2600;             // Less than that is added to the last cell.

struct Wing {
    int y0, y1;       // Whole wing.
    Span corridor_y;  // From middle to middle of its walls.
    Span corridor_x, top_x, bottom_x;
};

struct Draft {
    Random random;
    std::vector<Space> spaces;
    void add(SpaceKind kind, const Box& box) { spaces.push_back({kind, {box}}); }
};

SpaceKind kindByArea(const Box& box) {
    const std::int64_t area = std::int64_t{box.width()} * box.height();
    if (area < 7 * kSquareMetre) return SpaceKind::kSmall;
    return area > 42 * kSquareMetre ? SpaceKind::kHall : SpaceKind::kOffice;
}

int widthForArea(int square_metres, int depth, int shortest, int longest) {
    const std::int64_t width = square_metres * kSquareMetre / depth;
    return static_cast<int>(std::clamp<std::int64_t>(width, shortest, std::max(shortest, longest)));
}

// The parts of `span` that no box covers at the heights `y`; the boxes are sorted by x.
std::vector<Span> gaps(Span span, Span y, const std::vector<Box>& boxes) {
    std::vector<Span> result;
    for (const Box& box : boxes) {
        if (!box.overlaps({span.low, y.low, span.high, y.high})) continue;
        if (box.x0 > span.low) result.push_back({span.low, box.x0});
        span.low = box.x1;
    }
    if (span.length() > 0) result.push_back(span);
    return result;
}

// --- Strips of rooms ---------------------------------------------------------------------------

int cellWidth(Random& random, int depth) {
    const int roll = random.between(1, 100);
    if (roll <= 9) return widthForArea(random.between(50, 135), depth, 5000, depth * 5 / 2);
    if (roll <= 27) return random.between(1700, kShortestCell);
    return random.between(kShortestCell, widthForArea(38, depth, 2800, 6500));
}

// One cell of a strip: a room, or one behind the other. The front one lies at the corridor.
void addCell(Draft& draft, const Box& cell, bool corridor_above) {
    const int depth = cell.height();
    const bool narrow = cell.width() <= kShortestCell;
    const bool splits = narrow ? depth > 4200 && draft.random.chance(70)
                               : depth > 6000 && cell.width() < 5000 && draft.random.chance(25);
    if (!splits) return draft.add(kindByArea(cell), cell);
    const int back = draft.random.between(1800, std::min(depth - 1900, depth / 2));
    const int cut = corridor_above ? cell.y1 - back : cell.y0 + back;
    const Box upper{cell.x0, cell.y0, cell.x1, cut};
    const Box lower{cell.x0, cut, cell.x1, cell.y1};
    draft.add(kindByArea(upper), upper);
    draft.add(kindByArea(lower), lower);
}

void fillStrip(Draft& draft, const Box& strip, bool corridor_above) {
    const int largest = widthForArea(40, strip.height(), kShortestCell, 8000);
    const bool may_have_courts = strip.width() > 16000;
    int x = strip.x0;
    while (x < strip.x1) {
        int width = std::min(cellWidth(draft.random, strip.height()), strip.x1 - x);
        const int rest = strip.x1 - x - width;
        if (rest > 0 && rest < kShortestCell) {
            width = width + rest > largest && width + rest >= 2 * kShortestCell
                        ? (width + rest) / 2
                        : width + rest;
        }
        const Box cell{x, strip.y0, x + width, strip.y1};
        const bool court = may_have_courts && width < 6000 && draft.random.chance(5);
        if (!court) addCell(draft, cell, corridor_above);
        x += width;
    }
}

void fillStrips(Draft& draft, const std::vector<Wing>& wings, const std::vector<Box>& spines) {
    for (const Wing& wing : wings) {
        const Span top{wing.y0, wing.corridor_y.low};
        const Span bottom{wing.corridor_y.high, wing.y1};
        if (top.length() > 0) {
            for (const Span x : gaps(wing.top_x, top, spines)) {
                fillStrip(draft, {x.low, top.low, x.high, top.high}, false);
            }
        }
        if (bottom.length() > 0) {
            for (const Span x : gaps(wing.bottom_x, bottom, spines)) {
                fillStrip(draft, {x.low, bottom.low, x.high, bottom.high}, true);
            }
        }
    }
}

// --- Wings, spines, end rooms ------------------------------------------------------------------

// The corridor's breadth from middle to middle of its walls, which are up to 0.2 m thick.
int corridorBreadth(Random& random) { return random.between(1800, 2700); }

Span corridorWithin(Random& random, int y0, int y1) {
    if (y1 - y0 < kNarrowestTwoSided) {
        const int breadth = random.between(1800, 2000);
        return random.chance(50) ? Span{y0, y0 + breadth} : Span{y1 - breadth, y1};
    }
    const int breadth = corridorBreadth(random);
    const int depths = y1 - y0 - breadth;
    const int top = std::max(2800, depths * random.between(42, 58) / 100);
    const int low = y0 + std::min(top, depths - 2800);
    return {low, low + breadth};
}

std::vector<Wing> planWings(Random& random, int length, int breadth) {
    const int fewest = (breadth + 17999) / 18000;
    const int count = random.between(fewest, std::max(fewest, breadth / 10500));
    std::vector<Wing> wings;
    for (int i = 0; i < count; ++i) {
        const int y0 = wings.empty() ? 0 : wings.back().y1;
        const int shift = random.between(-breadth / count / 16, breadth / count / 16);
        const int y1 = i + 1 == count ? breadth : breadth / count * (i + 1) + shift;
        const Span all{0, length};
        wings.push_back({y0, y1, corridorWithin(random, y0, y1), all, all, all});
    }
    return wings;
}

// A short side corridor that turns the only corridor into an L or a T.
std::vector<Box> planBranch(Random& random, const Wing& wing, int length) {
    const bool two_sided = wing.y0 < wing.corridor_y.low && wing.corridor_y.high < wing.y1;
    if (!two_sided || length < 14000 || !random.chance(55)) return {};
    const int breadth = corridorBreadth(random);
    const int places[] = {0, length * random.between(30, 60) / 100, length - breadth};
    const int x = places[random.between(0, 2)];
    const bool down = random.chance(50);
    return {{x, down ? wing.corridor_y.low : wing.y0, x + breadth,
             down ? wing.y1 : wing.corridor_y.high}};
}

std::vector<Box> planSpines(Random& random, const std::vector<Wing>& wings, int length) {
    if (wings.size() == 1) return planBranch(random, wings.front(), length);
    const int count = std::max(1, length / 45000);
    std::vector<Box> spines;
    for (int i = 0; i < count; ++i) {
        const int breadth = corridorBreadth(random);
        int x = length / count * i + length / count * random.between(35, 60) / 100;
        if (count == 1 && random.chance(50)) x = random.chance(50) ? 0 : length - breadth;
        spines.push_back(
            {x, wings.front().corridor_y.low, x + breadth, wings.back().corridor_y.high});
    }
    return spines;
}

// Shortens some wings where no spine is; the first keeps the building's length.
void trimWings(Random& random, std::vector<Wing>& wings, const std::vector<Box>& spines,
               int length) {
    for (std::size_t i = 1; i < wings.size(); ++i) {
        const int cut = length * random.between(10, 35) / 100;
        const int place = random.between(1, 100);
        Span all{0, length};
        if (place <= 35 && length - cut - spines.back().x1 >= 7000) all.high -= cut;
        if (place > 65 && spines.front().x0 - cut >= 7000) all.low += cut;
        wings[i].corridor_x = wings[i].top_x = wings[i].bottom_x = all;
    }
}

// Puts a room across the end of the wing's corridor, and often of its strips too.
void addEndRoom(Draft& draft, Wing& wing, const std::vector<Box>& spines, bool at_low_end) {
    const std::vector<Span> pieces = gaps(wing.corridor_x, wing.corridor_y, spines);
    if (pieces.empty()) return;
    const Span piece = at_low_end ? pieces.front() : pieces.back();
    const bool free_end = at_low_end ? piece.low == wing.corridor_x.low
                                     : piece.high == wing.corridor_x.high;
    if (!free_end || piece.length() < 13000 || !draft.random.chance(40)) return;

    const int reach = draft.random.between(1, 3);  // Both strips, or only that above or below.
    const Span y{reach == 3 ? wing.corridor_y.low : wing.y0,
                 reach == 2 ? wing.corridor_y.high : wing.y1};
    const int width = widthForArea(draft.random.between(18, 110), y.length(), 3600, 7500);
    const int cut = at_low_end ? piece.low + width : piece.high - width;
    const Box room = at_low_end ? Box{piece.low, y.low, cut, y.high}
                                : Box{cut, y.low, piece.high, y.high};
    for (const Box& spine : spines) {
        if (room.overlaps(spine)) return;
    }
    draft.add(kindByArea(room), room);
    const auto shorten = [&](Span& span) { (at_low_end ? span.low : span.high) = cut; };
    shorten(wing.corridor_x);
    if (reach != 3) shorten(wing.top_x);
    if (reach != 2) shorten(wing.bottom_x);
}

// --- Corridors ---------------------------------------------------------------------------------

bool touch(const Box& a, const Box& b) { return a.grown(1).overlaps(b); }

// Long pieces of corridor are cut in two, for a fire door between them.
std::vector<Box> corridorPieces(Random& random, const std::vector<Wing>& wings,
                                const std::vector<Box>& spines) {
    std::vector<Box> pieces;
    for (const Wing& wing : wings) {
        const Span y = wing.corridor_y;
        for (const Span x : gaps(wing.corridor_x, y, spines)) {
            const int cut = x.low + x.length() * random.between(40, 60) / 100;
            const bool cuts = x.length() > 26000 && random.chance(50);
            if (cuts) pieces.push_back({x.low, y.low, cut, y.high});
            pieces.push_back({cuts ? cut : x.low, y.low, x.high, y.high});
        }
    }
    return pieces;
}

// Pieces that open into a spine share its space; behind a fire door they are a space of their own.
void addCorridors(Draft& draft, const std::vector<Wing>& wings, const std::vector<Box>& spines) {
    std::vector<Box> boxes = spines;
    const std::vector<Box> pieces = corridorPieces(draft.random, wings, spines);
    boxes.insert(boxes.end(), pieces.begin(), pieces.end());
    std::vector<std::size_t> group(boxes.size());
    std::iota(group.begin(), group.end(), std::size_t{0});
    for (std::size_t piece = spines.size(); piece < boxes.size(); ++piece) {
        for (std::size_t spine = 0; spine < spines.size(); ++spine) {
            if (!touch(boxes[spine], boxes[piece]) || !draft.random.chance(70)) continue;
            const std::size_t from = group[piece];
            std::replace(group.begin(), group.end(), from, group[spine]);
        }
    }
    std::vector<Space> corridors;
    for (std::size_t id = 0; id < boxes.size(); ++id) {
        Space corridor{SpaceKind::kCorridor, {}};
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            if (group[i] == id) corridor.boxes.push_back(boxes[i]);
        }
        if (!corridor.boxes.empty()) corridors.push_back(corridor);
    }
    // First, since doors are placed from there.
    draft.spaces.insert(draft.spaces.begin(), corridors.begin(), corridors.end());
}

void layOutWings(Draft& draft, int length, int breadth) {
    std::vector<Wing> wings = planWings(draft.random, length, breadth);
    const std::vector<Box> spines = planSpines(draft.random, wings, length);
    trimWings(draft.random, wings, spines, length);
    for (Wing& wing : wings) {
        addEndRoom(draft, wing, spines, true);
        addEndRoom(draft, wing, spines, false);
    }
    addCorridors(draft, wings, spines);
    fillStrips(draft, wings, spines);
}

}  // namespace

std::vector<Space> layOutSpaces(std::uint64_t seed, int width_mm, int height_mm) {
    const int length = std::max(width_mm, height_mm);
    const int breadth = std::min(width_mm, height_mm);
    Draft draft{Random(seed, static_cast<std::uint64_t>(Stream::kLayout)), {}};
    if (breadth < kNarrowestCorridorPlan) {
        const Box whole{0, 0, length, breadth};
        const bool one_room = std::int64_t{length} * breadth < 14 * kSquareMetre;
        if (one_room) draft.add(kindByArea(whole), whole);
        for (Box row = whole; !one_room && row.x0 < row.x1;) {
            const int width = std::min(draft.random.between(3000, 5500), row.width());
            const bool last = row.width() - width < 3000;
            const Box room{row.x0, 0, last ? length : row.x0 + width, breadth};
            draft.add(kindByArea(room), room);
            row.x0 = room.x1;
        }
    } else {
        layOutWings(draft, length, breadth);
    }
    if (height_mm > width_mm) {
        for (Space& space : draft.spaces) {
            for (Box& box : space.boxes) box = box.transposed();
        }
    }
    return draft.spaces;
}

}  // namespace vorund::test
