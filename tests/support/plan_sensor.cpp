#include "plan_sensor.h"

#include <algorithm>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

#include "random.h"

namespace vorund::test {
namespace {

std::uint8_t& mapAt(Scene& scene, int row, int col) {
    return scene.plan.map.at<std::uint8_t>(row, col);
}
std::uint16_t& roomAt(Scene& scene, int row, int col) {
    return scene.plan.rooms.at<std::uint16_t>(row, col);
}
int groundAt(const Scene& scene, int row, int col) {
    return scene.ground.at<std::uint16_t>(row, col);
}

// Rays may leave the picture, neighbours of its rim too.
bool inPicture(const Scene& scene, const cv::Point& at) {
    return at.x >= 0 && at.y >= 0 && at.x < scene.plan.map.cols && at.y < scene.plan.map.rows;
}

// Opens a wall pixel to the room on its side; what belongs to no room is only not seen.
void openWall(Scene& scene, int row, int col) {
    const int room = groundAt(scene, row, col);
    mapAt(scene, row, col) = room > 0 ? kMapFree : kMapUnknown;
    roomAt(scene, row, col) = static_cast<std::uint16_t>(room);
}

// --- Noise -------------------------------------------------------------------------------------

bool nearDoor(const Building& building, int wall, Span part) {
    return std::any_of(building.openings.begin(), building.openings.end(),
                       [&](const Opening& opening) {
                           return opening.wall == wall && opening.along.low < part.high &&
                                  part.low < opening.along.high;
                       });
}

// Thickens the wall here and there, on the side that the laser saw.
void addBumps(Scene& scene, Random& random, int index) {
    const Wall& wall = scene.building.walls[static_cast<std::size_t>(index)];
    const int percent = scene.plan.options.noise_percent;
    const int half = static_cast<int>(drawnHalf(wall, scene.frame) / 1000);
    for (int low = wall.along.low; low < wall.along.high;) {
        const Span part{low, std::min(wall.along.high, low + random.between(80, 600))};
        low = part.high;
        const bool before = random.chance(50);
        const int out = half + random.between(0, 20 + percent);
        const bool bumps = random.chance(percent / 2);
        if (!bumps || nearDoor(scene.building, index, part)) continue;
        const Box bump = before ? wall.box(part, -out, 0) : wall.box(part, 0, out);
        scene.frame.forEachPixel(scene.frame.fine(bump), [&](int row, int col) {
            if (groundAt(scene, row, col) > 0) mapAt(scene, row, col) = kMapOccupied;
        });
    }
}

// A crack through the wall, one pixel wide: of floor in half of the cases, else not seen.
void addHole(Scene& scene, Random& random, const Wall& wall) {
    const int reach = static_cast<int>(drawnHalf(wall, scene.frame) / 1000) + 1;
    const int at = random.between(wall.along.low + kDoorGap, wall.along.high - kDoorGap);
    const bool seen = random.chance(50);
    FineBox hole = scene.frame.fine(wall.box({at, at}, -reach, reach));
    (wall.vertical ? hole.y1 : hole.x1) += scene.frame.closedLine();
    scene.frame.forEachPixel(hole, [&](int row, int col) {
        if (roomAt(scene, row, col) > 0) return;  // Floor already.
        if (seen) {
            openWall(scene, row, col);
        } else {
            mapAt(scene, row, col) = kMapUnknown;
        }
    });
}

// A laser sees the faces of a wall, not its core.
void emptyWallCores(Scene& scene) {
    const int depth = std::max(1, 80000 / scene.plan.options.resolution_um);
    const cv::Mat floor = scene.plan.rooms > 0;
    cv::Mat seen;
    cv::dilate(floor, seen, cv::getStructuringElement(
        cv::MORPH_RECT, cv::Size(2 * depth + 1, 2 * depth + 1)));
    scene.plan.map.setTo(cv::Scalar(kMapUnknown), seen == 0);
}

bool hasNeighbourIn(const Scene& scene, const cv::Mat& rooms, int row, int col) {
    const int room = groundAt(scene, row, col);
    for (const cv::Point step : {cv::Point(1, 0), {-1, 0}, {0, 1}, {0, -1}}) {
        const cv::Point next = cv::Point(col, row) + step;
        if (inPicture(scene, next) && rooms.at<std::uint16_t>(next) == room) return true;
    }
    return false;
}

// Frays the faces of the walls and sprinkles the floor, pixel by pixel.
void fray(Scene& scene, Random& random) {
    const int percent = scene.plan.options.noise_percent;
    const cv::Mat rooms = scene.plan.rooms.clone();  // What was eaten is not eaten further.
    for (int row = 0; row < rooms.rows; ++row) {
        for (int col = 0; col < rooms.cols; ++col) {
            const int ground = groundAt(scene, row, col);
            if (ground == 0) continue;
            const bool floor = rooms.at<std::uint16_t>(row, col) > 0;
            const int roll = random.between(1, 100000);
            if (floor && roll <= 3 * percent) {
                mapAt(scene, row, col) = roll % 3 == 0 ? kMapUnknown : kMapOccupied;
            } else if (!floor && roll <= 120 * percent &&
                       hasNeighbourIn(scene, rooms, row, col)) {
                openWall(scene, row, col);
            }
        }
    }
}

// --- Fans --------------------------------------------------------------------------------------

// Draws one ray from floor to far outside; ends at anything that would stop a laser. The pixels
// are Bresenham's, each beside or diagonal to the one before.
void castRay(Scene& scene, cv::Point at, const cv::Point& end, int room, bool hits) {
    const int across = std::abs(end.x - at.x), down = -std::abs(end.y - at.y);
    const cv::Point step(end.x > at.x ? 1 : -1, end.y > at.y ? 1 : -1);
    bool outside = false;
    for (int error = across + down;;) {
        if (!inPicture(scene, at)) return;
        const int ground = groundAt(scene, at.y, at.x);
        const bool floor = roomAt(scene, at.y, at.x) > 0;
        const bool stopped = floor && mapAt(scene, at.y, at.x) != kMapFree;
        if (stopped || (ground != 0 && (ground != room || outside))) return;
        outside = ground == 0;
        mapAt(scene, at.y, at.x) = kMapFree;
        roomAt(scene, at.y, at.x) = static_cast<std::uint16_t>(ground);
        if (at == end) break;
        const int twice = 2 * error;
        if (twice >= down) { error += down; at.x += step.x; }
        if (twice <= across) { error += across; at.y += step.y; }
    }
    if (hits) mapAt(scene, at.y, at.x) = kMapOccupied;
}

// Where the rays of a window start: inside the room's box that the window is in.
struct Window {
    const Wall& wall;
    Span glass;       // The part of the wall that rays pass. [mm]
    bool opens_low;   // Whether the outside is at smaller x (or y).
    int room;         // Its number.
    cv::Point pixelAt(const PlanFrame& frame, int along, int out) const {
        const int across = opens_low ? wall.at - out : wall.at + out;
        return wall.vertical ? frame.pixelOf(across, along) : frame.pixelOf(along, across);
    }
};

// Rays through the window from one place of the robot.
void castFan(Scene& scene, Random& random, const Window& window, int depth) {
    const int distance = random.between(600, std::max(600, std::min(4500, depth - 300)));
    // Not so far aside that rays run along the wall instead of through the window.
    const int from =
        random.between(std::max(window.wall.along.low + 300, window.glass.low - distance),
                       std::min(window.wall.along.high - 300, window.glass.high + distance));
    const cv::Point source = window.pixelAt(scene.frame, from, -distance);
    const int rays = random.between(5, 16);
    for (int i = 0; i < rays; ++i) {
        const int target = random.between(window.glass.low, window.glass.high);
        const int out = random.between(300, random.chance(30) ? 7000 : 2500);
        // On the line from source through target, as far out again as the ray is long.
        const int far = from + (target - from) * (distance + out) / distance;
        castRay(scene, source, window.pixelAt(scene.frame, far, out), window.room,
                random.chance(15));
    }
}

// How far the room reaches back from this wall, over the wall's whole length.
int depthBehind(const Scene& scene, const Window& window) {
    const Space& space = scene.building.spaces[static_cast<std::size_t>(window.room - 1)];
    const Box& box = space.boxes.front();
    return window.wall.vertical ? box.width() : box.height();
}

}  // namespace

void addNoise(Scene& scene) {
    const int percent = scene.plan.options.noise_percent;
    if (percent == 0) return;
    Random random(scene.plan.options.seed, static_cast<std::uint64_t>(Stream::kNoise));
    if (scene.plan.options.outside == Outside::kUnseen) emptyWallCores(scene);
    for (std::size_t i = 0; i < scene.building.walls.size(); ++i) {
        addBumps(scene, random, static_cast<int>(i));
        const Wall& wall = scene.building.walls[i];
        const bool holed = wall.along.length() > 1500 && random.chance(percent * 2 / 3);
        if (holed) addHole(scene, random, wall);
    }
    fray(scene, random);
}

void addFans(Scene& scene) {
    Random random(scene.plan.options.seed, static_cast<std::uint64_t>(Stream::kFans));
    for (const Wall& wall : scene.building.walls) {
        const int space = wall.before == kNoSpace ? wall.behind : wall.before;
        const std::size_t boxes =
            scene.building.spaces[static_cast<std::size_t>(space)].boxes.size();
        // Rooms of one box are convex, so a ray reaches its window unhindered.
        if (!wall.outer() || wall.along.length() < 1800 || boxes > 1) continue;
        if (!random.chance(scene.plan.options.fans_percent)) continue;
        const Span wide{wall.along.low + 400, wall.along.high - 400};
        const int width = std::min(wide.length(), random.between(600, 2200));
        const int low = random.between(wide.low, wide.high - width);
        const Window window{wall, {low, low + width}, wall.before == kNoSpace, space + 1};
        const int fans = random.between(1, 2);
        for (int i = 0; i < fans; ++i) castFan(scene, random, window, depthBehind(scene, window));
    }
}

}  // namespace vorund::test
