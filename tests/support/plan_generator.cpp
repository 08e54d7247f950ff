#include "plan_generator.h"

#include <algorithm>
#include <stdexcept>

#include "plan_building.h"
#include "plan_frame.h"
#include "plan_sensor.h"

namespace vorund::test {
namespace {

constexpr std::int64_t kMostPixels = 64000000;

void checkRange(const char* member, const char* unit, int value, int low, int high) {
    if (value >= low && value <= high) return;
    throw std::invalid_argument(std::string("makePlan: ") + member + " must be " +
                                std::to_string(low) + " to " + std::to_string(high) + unit +
                                ", but is " + std::to_string(value) + ".");
}

void checkOptions(const PlanOptions& options) {
    checkRange("width_mm", " mm", options.width_mm, 2000, 300000);
    checkRange("height_mm", " mm", options.height_mm, 2000, 300000);
    checkRange("resolution_um", " um", options.resolution_um, 10000, 200000);
    checkRange("margin_mm", " mm", options.margin_mm, 300, 50000);
    checkRange("furniture_percent", "", options.furniture_percent, 0, 100);
    checkRange("noise_percent", "", options.noise_percent, 0, 100);
    checkRange("fans_percent", "", options.fans_percent, 0, 100);
    checkRange("glass_percent", "", options.glass_percent, 0, 100);
    const PlanFrame frame(options);
    if (frame.columns() * frame.rows() > kMostPixels) {
        throw std::invalid_argument("makePlan: The picture would have " +
                                    std::to_string(frame.columns()) + " x " +
                                    std::to_string(frame.rows()) +
                                    " pixels; 64 million are allowed.");
    }
}

void layFloor(Scene& scene) {
    for (std::size_t i = 0; i < scene.building.spaces.size(); ++i) {
        const auto number = static_cast<std::uint16_t>(i + 1);
        for (const Box& box : scene.building.spaces[i].boxes) {
            scene.frame.forEachPixel(scene.frame.fine(box), [&](int row, int col) {
                scene.ground.at<std::uint16_t>(row, col) = number;
            });
        }
    }
    scene.ground.copyTo(scene.plan.rooms);
    scene.plan.map.setTo(cv::Scalar(kMapFree), scene.ground > 0);
}

// The wall's part over its full drawn thickness, longer by `beyond` micrometres at either end.
FineBox acrossWall(const PlanFrame& frame, const Wall& wall, Span part, std::int64_t beyond) {
    FineBox box = frame.fine(wall.box(part, 0, 0));
    const std::int64_t half = drawnHalf(wall, frame);
    const std::int64_t by_x = wall.vertical ? half : beyond;
    const std::int64_t by_y = wall.vertical ? beyond : half;
    return {box.x0 - by_x, box.y0 - by_y, box.x1 + by_x, box.y1 + by_y};
}

void raiseWalls(Scene& scene) {
    for (const Wall& wall : scene.building.walls) {
        // Longer by half the thickness, which closes the corners where two walls end.
        const FineBox box =
            acrossWall(scene.frame, wall, wall.along, drawnHalf(wall, scene.frame));
        scene.frame.forEachPixel(box, [&](int row, int col) {
            scene.plan.map.at<std::uint8_t>(row, col) = kMapOccupied;
            scene.plan.rooms.at<std::uint16_t>(row, col) = 0;
        });
    }
}

// The doorway's floor goes to the room on whose side of the wall's middle it is.
void openDoor(Scene& scene, const Opening& opening) {
    const Wall& wall = scene.building.walls[static_cast<std::size_t>(opening.wall)];
    const FineBox box = acrossWall(scene.frame, wall, opening.along, 0);
    scene.frame.forEachPixel(box, [&](int row, int col) {
        scene.plan.map.at<std::uint8_t>(row, col) = kMapFree;
        scene.plan.rooms.at<std::uint16_t>(row, col) = scene.ground.at<std::uint16_t>(row, col);
    });
    const Box line = wall.box(opening.along, 0, 0);
    scene.plan.doors.push_back({scene.frame.pixelOf(line.x0, line.y0),
                                scene.frame.pixelOf(line.x1, line.y1),
                                std::min(wall.before, wall.behind) + 1,
                                std::max(wall.before, wall.behind) + 1, opening.along.length()});
}

// Things are drawn at least a pixel wide, and only where they stand on floor.
void placeFurnishing(Scene& scene, const Furnishing& thing) {
    const std::int64_t line = scene.frame.closedLine();
    FineBox box = scene.frame.fine(thing.box);
    box.x1 = std::max(box.x1, box.x0 + line);
    box.y1 = std::max(box.y1, box.y0 + line);
    const auto paint = [&](const FineBox& part, std::uint8_t value) {
        scene.frame.forEachPixel(part, [&](int row, int col) {
            if (scene.plan.rooms.at<std::uint16_t>(row, col) == 0) return;
            scene.plan.map.at<std::uint8_t>(row, col) = value;
        });
    };
    paint(box, kMapOccupied);
    if (!thing.hollow || scene.plan.options.outside == Outside::kSolid) return;
    paint({box.x0 + line, box.y0 + line, box.x1 - line, box.y1 - line}, kMapUnknown);
}

}  // namespace

std::int64_t drawnHalf(const Wall& wall, const PlanFrame& frame) {
    const std::int64_t thickness = std::int64_t{1000} * wall.thickness_mm;
    return (std::max(thickness, frame.closedLine()) + 1) / 2;
}

Plan makePlan(const PlanOptions& options) {
    checkOptions(options);
    const PlanFrame frame(options);
    const Building building = makeBuilding(options.seed, options.width_mm, options.height_mm,
                                           options.glass_percent);
    const cv::Size size(static_cast<int>(frame.columns()), static_cast<int>(frame.rows()));
    const std::uint8_t around = options.outside == Outside::kUnseen ? kMapUnknown : kMapOccupied;
    Scene scene{building, frame, cv::Mat::zeros(size, CV_16UC1),
                {cv::Mat(size, CV_8UC1, cv::Scalar(around)), {}, {}, options}};
    layFloor(scene);
    raiseWalls(scene);
    for (const Opening& opening : building.openings) openDoor(scene, opening);
    for (const Furnishing& thing : furnish(building, options.seed, options.furniture_percent)) {
        placeFurnishing(scene, thing);
    }
    addNoise(scene);
    addFans(scene);
    return scene.plan;
}

}  // namespace vorund::test
