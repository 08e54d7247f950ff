// The table of families, and how a plan of one is made.
#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "families/drawn.h"
#include "families/plan_families.h"
#include "families/recipes.h"
#include "families/truth.h"

namespace vorund::test {
namespace families {
namespace {

std::uint64_t numberOf(const std::string& name) {
    std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
    for (const char letter : name) {
        hash = (hash ^ static_cast<std::uint8_t>(letter)) * 0x100000001B3U;
    }
    return hash;
}

const Family& familyOf(const std::string& name) {
    for (const Family& family : allFamilies()) {
        if (family.info.name == name) return family;
    }
    throw std::invalid_argument("makeFamilyPlan: There is no family \"" + name + "\".");
}

// Straight, nearly straight or any.
int drawRotation(Random& random) {
    const int roll = random.between(1, 100);
    if (roll <= 35) return 900 * random.between(0, 3);
    return roll <= 60 ? random.between(-40, 40) : random.between(0, 3599);
}

std::vector<Door> doorsIn(const Site& site, const CanvasFrame& frame) {
    std::vector<Door> doors;
    for (const SiteDoor& door : site.doors) {
        doors.push_back({frame.pixelOf(door.a), frame.pixelOf(door.b), door.room_a, door.room_b,
                         door.width_mm});
    }
    return doors;
}

// Unknown specks within the seen become free, unless more than half of what is around them isn't.
void fillSpecks(cv::Mat& map) {
    cv::Mat free, around;
    cv::bitwise_and(map == kMapFree, cv::Scalar(1), free);
    cv::boxFilter(free, around, CV_8U, {5, 5}, {-1, -1}, false, cv::BORDER_CONSTANT);
    map.setTo(cv::Scalar(kMapFree), (map == kMapUnknown) & (around > 12));
}

void restyle(cv::Mat& map, LidarStyle style) {
    if (style == LidarStyle::kPlain) return;
    const cv::Mat brush = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
    cv::Mat near;
    if (style == LidarStyle::kOutlined) {
        fillSpecks(map);
        cv::dilate(map == kMapFree, near, brush);
        near &= map == kMapUnknown;
    } else {
        cv::dilate(map == kMapOccupied, near, brush);
    }
    map.setTo(cv::Scalar(kMapOccupied), near);
}

DrawnSite mapWithLidar(const Site& site, const CanvasFrame& frame, const Recipe& recipe,
                       Random& random) {
    const Canvas canvas = paintSite(site, halved(frame));
    const RayField field(canvas);
    const std::vector<Station> stations = driveThrough(field, site, recipe.drive, random);
    MappedSite mapped = mapSite(field, stations, recipe.lidar, random);
    restyle(mapped.map, recipe.style);
    const cv::Mat free = mapped.map == kMapFree;
    mapped.ground.setTo(cv::Scalar(0), ~free);
    const Canvas coarse = paintSite(site, frame);
    return {mapped.map,
            roomsSeen(mapped.ground, free, coarse.floor, static_cast<int>(site.rooms.size()),
                      static_cast<int>(frame.pixel_um))};
}

// Furnishes a copy of the empty site and shows it.
DrawnSite show(Site site, const Family& family, const CanvasFrame& frame, Random& random) {
    Recipe recipe;
    family.cook(recipe, random);
    furnishSite(site, recipe.furniture, random);
    if (!family.info.mapped) {
        return drawSite(site, paintSite(site, frame), recipe.look, random);
    }
    crackWalls(site, recipe.cracked_percent, random);
    addWindows(site, recipe.windows_percent, random);
    return mapWithLidar(site, frame, recipe, random);
}

void keepTruth(FamilyPlan& plan, int room_count) {
    plan.rooms_of_floor = renumber(plan.rooms, room_count);
    for (Door door : plan.floor_doors) {
        door.room_a = plan.rooms_of_floor[static_cast<std::size_t>(door.room_a)];
        door.room_b = plan.rooms_of_floor[static_cast<std::size_t>(door.room_b)];
        if (door.room_a > 0 && door.room_b > 0) plan.doors.push_back(door);
    }
}

bool showsEnough(const cv::Mat& rooms, int room_count) {
    cv::Mat copy = rooms.clone();
    const std::vector<int> numbers = renumber(copy, room_count);
    return *std::max_element(numbers.begin(), numbers.end()) >= std::min(3, room_count);
}

void checkOptions(const FamilyOptions& options) {
    if (options.resolution_um >= 20000 && options.resolution_um <= 200000) return;
    throw std::invalid_argument(
        "makeFamilyPlan: resolution_um must be 20000 to 200000 um, but is " +
        std::to_string(options.resolution_um) + ".");
}

}  // namespace
}  // namespace families

const std::vector<FamilyInfo>& planFamilies() {
    static const std::vector<FamilyInfo> infos = [] {
        std::vector<FamilyInfo> result;
        for (const families::Family& family : families::allFamilies()) {
            result.push_back(family.info);
        }
        return result;
    }();
    return infos;
}

FamilyPlan makeFamilyPlan(const std::string& name, std::uint64_t seed,
                          const FamilyOptions& options) {
    using namespace families;
    const Family& family = familyOf(name);
    checkOptions(options);
    Random layout(seed, numberOf(name)), turn(seed, numberOf(name) + 1);
    const int drawn_rotation = drawRotation(turn);
    const int rotation = options.rotation_tenths_deg.value_or(drawn_rotation);
    const Site site = family.layOut(layout);
    const int room_count = static_cast<int>(site.rooms.size());
    const int margin = family.margin_mm, phase = turn.between(0, 49) * 1000;
    const CanvasFrame frame = frameOf(site, rotation, options.resolution_um, margin, phase);

    FamilyPlan plan{name, seed, options.resolution_um, rotation, {}, {}, {}, {}, {}, {}};
    plan.floor = paintSite(site, frame).floor;
    plan.floor_doors = doorsIn(site, frame);
    // A robot may be shut in by furniture, or see next to nothing: then it tries again.
    constexpr std::uint64_t kAttempts = 4;
    for (std::uint64_t attempt = 0; attempt < kAttempts; ++attempt) {
        Random look(seed, numberOf(name) + 2 + attempt);
        DrawnSite shown = show(site, family, frame, look);
        plan.map = shown.map;
        plan.rooms = shown.rooms;
        if (showsEnough(plan.rooms, room_count)) break;
    }
    keepTruth(plan, room_count);
    return plan;
}

}  // namespace vorund::test
