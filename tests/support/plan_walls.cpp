// Finds the walls: wherever two boxes of different spaces touch, and along the outline.
#include <algorithm>
#include <tuple>

#include "plan_building.h"
#include "random.h"

namespace vorund::test {
namespace {

struct OwnedBox {
    Box box;
    int space;
};

std::vector<OwnedBox> allBoxes(const std::vector<Space>& spaces, bool transposed) {
    std::vector<OwnedBox> result;
    for (std::size_t i = 0; i < spaces.size(); ++i) {
        for (const Box& box : spaces[i].boxes) {
            result.push_back({transposed ? box.transposed() : box, static_cast<int>(i)});
        }
    }
    return result;
}

Span common(const Box& a, const Box& b) {
    return {std::max(a.y0, b.y0), std::min(a.y1, b.y1)};
}

// What is left of the box's side once the covered parts are taken away.
std::vector<Span> uncovered(const Box& box, std::vector<Span> covered) {
    std::sort(covered.begin(), covered.end(),
              [](const Span& a, const Span& b) { return a.low < b.low; });
    std::vector<Span> result;
    int from = box.y0;
    for (const Span& part : covered) {
        if (part.low > from) result.push_back({from, part.low});
        from = part.high;
    }
    if (from < box.y1) result.push_back({from, box.y1});
    return result;
}

// The vertical walls at the right of each box, and those at its left that face the outside.
std::vector<Wall> wallsAlongY(const std::vector<OwnedBox>& boxes) {
    std::vector<Wall> walls;
    for (const OwnedBox& own : boxes) {
        std::vector<Span> right, left;
        for (const OwnedBox& other : boxes) {
            const Span touching = common(own.box, other.box);
            if (touching.length() <= 0) continue;
            if (other.box.x1 == own.box.x0) left.push_back(touching);
            if (other.box.x0 != own.box.x1) continue;
            right.push_back(touching);
            if (other.space == own.space) continue;
            walls.push_back({true, own.box.x1, touching, own.space, other.space, 0});
        }
        for (const Span& part : uncovered(own.box, right)) {
            walls.push_back({true, own.box.x1, part, own.space, kNoSpace, 0});
        }
        for (const Span& part : uncovered(own.box, left)) {
            walls.push_back({true, own.box.x0, part, kNoSpace, own.space, 0});
        }
    }
    return walls;
}

// Corridors consist of several boxes; a wall that runs past two of them is still one wall.
std::vector<Wall> merged(std::vector<Wall> walls) {
    const auto key = [](const Wall& wall) {
        return std::tuple(wall.vertical, wall.at, wall.before, wall.behind, wall.along.low);
    };
    std::sort(walls.begin(), walls.end(),
              [&](const Wall& a, const Wall& b) { return key(a) < key(b); });
    std::vector<Wall> result;
    for (const Wall& wall : walls) {
        const bool continues = !result.empty() && result.back().vertical == wall.vertical &&
                               result.back().at == wall.at && result.back().before == wall.before &&
                               result.back().behind == wall.behind &&
                               result.back().along.high == wall.along.low;
        if (continues) {
            result.back().along.high = wall.along.high;
        } else {
            result.push_back(wall);
        }
    }
    return result;
}

bool besideCorridor(const std::vector<Space>& spaces, const Wall& wall) {
    const auto isCorridor = [&](int space) {
        return spaces[static_cast<std::size_t>(space)].kind == SpaceKind::kCorridor;
    };
    return isCorridor(wall.before) || isCorridor(wall.behind);
}

}  // namespace

std::vector<Wall> buildWalls(const std::vector<Space>& spaces, std::uint64_t seed,
                             int glass_percent) {
    std::vector<Wall> walls = wallsAlongY(allBoxes(spaces, false));
    std::vector<Wall> lying = wallsAlongY(allBoxes(spaces, true));
    for (Wall& wall : lying) wall.vertical = false;
    walls.insert(walls.end(), lying.begin(), lying.end());
    walls = merged(walls);

    Random random(seed, static_cast<std::uint64_t>(Stream::kGlass));
    const int outer = random.between(5, 7) * 50;
    const int corridor = random.between(2, 4) * 50;
    const int partition = random.between(2, 3) * 50;
    for (Wall& wall : walls) {
        const bool glass = random.chance(glass_percent);  // Drawn for all, to keep the order.
        if (wall.outer()) {
            wall.thickness_mm = outer;
        } else if (!glass) {
            wall.thickness_mm = besideCorridor(spaces, wall) ? corridor : partition;
        }
    }
    return walls;
}

}  // namespace vorund::test
