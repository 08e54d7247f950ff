#include "families/drawn.h"

#include <opencv2/imgproc.hpp>

#include "families/rays.h"
#include "families/truth.h"
#include "plan_generator.h"

namespace vorund::test::families {
namespace {

cv::Mat firstDrawing(const Canvas& canvas, const DrawnLook& look) {
    const std::uint8_t around = look.solid_outside ? kMapOccupied : kMapUnknown;
    cv::Mat map(canvas.material.size(), CV_8UC1, cv::Scalar(kMapOccupied));
    map.setTo(cv::Scalar(around), canvas.material == kNothing);
    map.setTo(cv::Scalar(around), canvas.material == kInside);
    // Outdoors nothing is seen but by a ray.
    map.setTo(cv::Scalar(around), (canvas.material == kThing) & (canvas.ground == 0));
    map.setTo(cv::Scalar(kMapFree), canvas.material == kFloor);
    return map;
}

void emptyWalls(const Canvas& canvas, cv::Mat& map) {
    const int depth = std::max(1, static_cast<int>(80000 / canvas.frame.pixel_um));
    cv::Mat near;
    const cv::Mat brush = cv::getStructuringElement(cv::MORPH_RECT, {2 * depth + 1, 2 * depth + 1});
    cv::dilate(canvas.floor > 0, near, brush);
    map.setTo(cv::Scalar(kMapUnknown), ~near & (canvas.material == kWall));
}

// Where a pane gave no echo, the map shows floor.
void openHoles(const Site& site, const Canvas& canvas, DrawnSite& drawn) {
    for (const Shape& hole : site.holes) {
        forEachPixel(canvas.frame, hole, canvas.frame.pixel_um, [&](int row, int col) {
            const std::uint16_t room = canvas.ground.at<std::uint16_t>(row, col);
            if (canvas.material.at<std::uint8_t>(row, col) < kGlass || room == 0) return;
            drawn.map.at<std::uint8_t>(row, col) = kMapFree;
            drawn.rooms.at<std::uint16_t>(row, col) = room;
        });
    }
}

void fray(const Canvas& canvas, DrawnSite& drawn, int percent, Random& random) {
    const cv::Mat before = drawn.rooms.clone();  // What was eaten is not eaten further.
    for (int row = 1; row + 1 < before.rows; ++row) {
        for (int col = 1; col + 1 < before.cols; ++col) {
            const std::uint16_t room = canvas.ground.at<std::uint16_t>(row, col);
            if (room == 0) continue;
            const bool floor = before.at<std::uint16_t>(row, col) > 0;
            const auto is = [&](int r, int c) { return before.at<std::uint16_t>(r, c) == room; };
            const int beside =
                is(row - 1, col) + is(row + 1, col) + is(row, col - 1) + is(row, col + 1);
            const int roll = random.between(1, 100000);
            if (floor && roll <= (beside < 4 ? 80 : 2) * percent) {
                drawn.map.at<std::uint8_t>(row, col) = kMapOccupied;
            } else if (!floor && beside > 0 && roll <= 120 * percent) {
                drawn.map.at<std::uint8_t>(row, col) = kMapFree;
                drawn.rooms.at<std::uint16_t>(row, col) = room;
            }
        }
    }
}

// The same site once more, shifted and turned a little as by a robot that has lost its way; shown
// within some discs only.
void doubleWalls(const Site& site, const Canvas& canvas, DrawnSite& drawn, int shift_mm,
                 Random& random) {
    CanvasFrame frame = canvas.frame;
    const auto drawShift = [&] {
        const std::int64_t side = random.chance(50) ? 1000 : -1000;
        return side * random.between(shift_mm / 2, shift_mm);
    };
    frame.left += drawShift();
    frame.top += drawShift();
    frame.tenths_deg += random.between(-3, 3);
    const Canvas again = paintSite(site, frame);
    for (int i = random.between(2, 5); i > 0; --i) {
        const int radius = random.between(2500, 8000) * 1000 / static_cast<int>(frame.pixel_um);
        const int row0 = random.between(0, frame.rows), col0 = random.between(0, frame.columns);
        for (int row = 0; row < frame.rows; ++row) {
            for (int col = 0; col < frame.columns; ++col) {
                const int down = row - row0, right = col - col0;
                if (down * down + right * right > radius * radius) continue;
                const bool wall = again.material.at<std::uint8_t>(row, col) == kWall;
                const bool floor = drawn.rooms.at<std::uint16_t>(row, col) > 0;
                if (wall && floor && !random.chance(10)) {
                    drawn.map.at<std::uint8_t>(row, col) = kMapOccupied;
                }
            }
        }
    }
}

// --- Rays ---------------------------------------------------------------------------------------

struct Window {
    const PlacedBuilding* building;
    const Wall* wall;
    Span glass;
    Place place(const CanvasFrame& frame, int along, int out) const {
        const bool low_side = wall->before == kNoSpace;
        const int across = low_side ? wall->at - out : wall->at + out;
        const SitePoint point = wall->vertical ? onSite(building->pose, across, along)
                                               : onSite(building->pose, along, across);
        const SitePoint there = frame.inPicture(point);
        return {there.x * Place::kSub / frame.pixel_um, there.y * Place::kSub / frame.pixel_um};
    }
};

std::vector<Window> windowsOf(const Site& site, Random& random) {
    std::vector<Window> windows;
    for (const PlacedBuilding& placed : site.buildings) {
        for (const Wall& wall : placed.building.walls) {
            if (!wall.outer() || wall.along.length() < 1800) continue;
            const int width = random.between(400, std::min(2200, wall.along.length() - 800));
            const int low = random.between(wall.along.low + 400, wall.along.high - 400 - width);
            windows.push_back({&placed, &wall, {low, low + width}});
        }
    }
    return windows;
}

// From `from` towards `to` and on: free floor, then the window, then what is outdoors.
void drawRay(const Canvas& canvas, DrawnSite& drawn, const Place& from, const Place& to, int past,
             bool hits) {
    const std::int64_t longest =
        std::max<std::int64_t>({std::abs(to.x - from.x), std::abs(to.y - from.y), Place::kSub});
    const std::int64_t steps = longest / Place::kSub + past;
    bool outdoors = false;
    cv::Point last(-1, -1);
    for (std::int64_t i = 0; i <= steps; ++i) {
        const Place at{from.x + (to.x - from.x) * i * Place::kSub / longest,
                       from.y + (to.y - from.y) * i * Place::kSub / longest};
        if (!insidePicture(drawn.map, at.row(), at.col())) break;
        const bool indoors = canvas.ground.at<std::uint16_t>(at.row(), at.col()) > 0;
        const std::uint8_t material = canvas.material.at<std::uint8_t>(at.row(), at.col());
        if (indoors && (outdoors || material == kThing)) break;
        outdoors = outdoors || (!indoors && material == kNothing);
        if (outdoors && material == kThing) break;
        if (!indoors || material != kFloor)
            drawn.map.at<std::uint8_t>(at.row(), at.col()) = kMapFree;
        last = {at.col(), at.row()};
    }
    if (hits && outdoors && last.x >= 0) drawn.map.at<std::uint8_t>(last) = kMapOccupied;
}

void castFans(const Site& site, const Canvas& canvas, DrawnSite& drawn, int count, Random& random) {
    const std::vector<Window> windows = windowsOf(site, random);
    if (windows.empty()) return;
    for (int fan = 0; fan < count; ++fan) {
        const Window& window = windows[static_cast<std::size_t>(
            random.between(0, static_cast<int>(windows.size()) - 1))];
        const int distance = random.between(500, 2200);
        const int along =
            random.between(window.glass.low - distance / 2, window.glass.high + distance / 2);
        const Place from = window.place(canvas.frame, along, -distance);
        const bool indoors = insidePicture(canvas.floor, from.row(), from.col()) &&
                             canvas.floor.at<std::uint16_t>(from.row(), from.col()) > 0;
        for (int rays = indoors ? random.between(5, 30) : 0; rays > 0; --rays) {
            const int through = random.between(window.glass.low, window.glass.high);
            const Place to = window.place(canvas.frame, through, 0);
            const int past_mm = random.between(300, random.chance(30) ? 9000 : 3000);
            drawRay(canvas, drawn, from, to,
                    past_mm * 1000 / static_cast<int>(canvas.frame.pixel_um), random.chance(20));
        }
    }
}

// --- Half explored ------------------------------------------------------------------------------

cv::Mat seenFrom(const Canvas& canvas, const DrawnLook& look, Random& random) {
    const RayField field(canvas);
    cv::Mat seen = cv::Mat::zeros(canvas.material.size(), CV_8UC1);
    const int most = static_cast<int>(1000 * look.station_range_mm / canvas.frame.pixel_um);
    std::vector<cv::Point> standable;
    cv::findNonZero((field.clearance() > 4) & (canvas.floor > 0), standable);
    for (int i = 0; i < look.stations && !standable.empty(); ++i) {
        const cv::Point at = standable[static_cast<std::size_t>(
            random.between(0, static_cast<int>(standable.size()) - 1))];
        const Place from = middleOf(at.y, at.x);
        for (int angle = 0; angle < 36000; angle += 12) {
            const Direction direction = directionOf(angle);
            const auto always = [](std::uint8_t, int, int) { return true; };
            const RayField::Hit hit = field.cast(from, direction, most, always);
            for (int step = 0; step <= (hit.found ? hit.pixels + 1 : most); ++step) {
                const Place on = from.moved(direction, step);
                if (!insidePicture(seen, on.row(), on.col())) break;
                seen.at<std::uint8_t>(on.row(), on.col()) = 255;
            }
        }
    }
    return seen;
}

void hideUnseen(const Canvas& canvas, const DrawnLook& look, DrawnSite& drawn, int room_count,
                Random& random) {
    const cv::Mat seen = seenFrom(canvas, look, random);
    drawn.map.setTo(cv::Scalar(kMapUnknown), ~seen);
    drawn.rooms.setTo(cv::Scalar(0), ~seen);
    const cv::Mat free = drawn.map == kMapFree;
    cv::Mat shown = drawn.rooms.clone();
    shown.setTo(cv::Scalar(0), ~free);
    drawn.rooms =
        roomsSeen(shown, free, canvas.floor, room_count, static_cast<int>(canvas.frame.pixel_um));
}

}  // namespace

DrawnSite drawSite(const Site& site, const Canvas& canvas, const DrawnLook& look, Random& random) {
    DrawnSite drawn{firstDrawing(canvas, look), canvas.floor.clone()};
    if (look.hollow_walls && !look.solid_outside) emptyWalls(canvas, drawn.map);
    openHoles(site, canvas, drawn);
    if (look.doubled_mm > 0) doubleWalls(site, canvas, drawn, look.doubled_mm, random);
    if (look.fray_percent > 0) fray(canvas, drawn, look.fray_percent, random);
    castFans(site, canvas, drawn, look.fans, random);
    if (look.stations > 0) {
        hideUnseen(canvas, look, drawn, static_cast<int>(site.rooms.size()), random);
    }
    return drawn;
}

}  // namespace vorund::test::families
