#include "families/lidar.h"

#include <cstdlib>

namespace vorund::test::families {
namespace {

// The sum of twelve even throws is normal enough: standard deviation `sigma`, at most 6 of them.
int normal(Random& random, int sigma) {
    const std::uint64_t bits = random.next();
    int sum = 0;
    for (int i = 0; i < 12; ++i) sum += static_cast<int>((bits >> (5 * i)) & 31U);
    return (sum * 2 - 12 * 31) * sigma / 64;
}

PoseError between(const PoseError& a, const PoseError& b, int part, int whole) {
    const auto mix = [&](int from, int to) { return from + (to - from) * part / whole; };
    return {mix(a.x_mm, b.x_mm), mix(a.y_mm, b.y_mm), mix(a.hundredths, b.hundredths)};
}

// How far along the ray the leg is, in pixels; `most` where the ray misses it.
int pixelsToLeg(const Place& from, const Direction& direction, const Place& leg, int most,
                std::int64_t radius) {
    const std::int64_t right = leg.x - from.x, down = leg.y - from.y;
    const std::int64_t along = (right * direction.x + down * direction.y) / Turn::kOne;
    const std::int64_t aside = (right * direction.y - down * direction.x) / Turn::kOne;
    if (along <= 0 || aside > radius || aside < -radius) return most;
    return std::min(most, static_cast<int>(along >> Place::kShift));
}

// The same for a spot at every scan: a frame stays a frame. From 0 to 99.
int fixedRoll(int row, int col, std::uint64_t salt) {
    const auto spot = static_cast<std::uint64_t>(row) * 100003U + static_cast<std::uint64_t>(col);
    return Random(spot, salt).between(0, 99);
}

}  // namespace

std::vector<PoseError> driftOver(std::size_t scans, const LidarOptions& options, Random& random) {
    const auto draw = [&] {
        return PoseError{random.between(-options.drift_mm, options.drift_mm),
                         random.between(-options.drift_mm, options.drift_mm),
                         random.between(-options.drift_hundredths, options.drift_hundredths)};
    };
    std::vector<PoseError> errors;
    PoseError from = draw();
    while (errors.size() < scans) {
        const PoseError to = draw();
        for (int i = 0; i < options.drift_length; ++i) {
            errors.push_back(between(from, to, i, options.drift_length));
        }
        from = to;
    }
    return errors;
}

std::vector<Person> invitePeople(const RayField& field, const std::vector<Station>& stations,
                                 int count, Random& random) {
    const std::int64_t metre = 1000000 * Place::kSub / field.canvas().frame.pixel_um;
    const int last = static_cast<int>(stations.size()) - 1;
    std::vector<Person> people;
    for (int i = 0; i < count; ++i) {
        const int scan = random.between(0, last);
        const Place robot = stations[static_cast<std::size_t>(scan)].place;
        const auto nearRobot = [&] {
            return Place{robot.x + metre * random.between(-40, 40) / 10,
                         robot.y + metre * random.between(-40, 40) / 10};
        };
        const Place from = nearRobot();
        const bool stands = random.chance(30);
        people.push_back({scan, random.between(4, 25), from, stands ? from : nearRobot()});
    }
    return people;
}

std::vector<Place> legsAt(const RayField& field, const std::vector<Person>& people, int scan) {
    std::vector<Place> legs;
    const std::int64_t stride = 120000 * Place::kSub / field.canvas().frame.pixel_um;
    for (const Person& person : people) {
        const int part = scan - person.first_scan;
        if (part < 0 || part >= person.scans) continue;
        const std::int64_t x = person.from.x + (person.to.x - person.from.x) * part / person.scans;
        const std::int64_t y = person.from.y + (person.to.y - person.from.y) * part / person.scans;
        for (const std::int64_t side : {-stride, stride}) {
            const Place leg{x + side, y + (part % 2 == 0 ? side : -side)};
            const bool inside = insidePicture(field.clearance(), leg.row(), leg.col());
            if (inside && field.clearance().at<std::uint8_t>(leg.row(), leg.col()) > 0) {
                legs.push_back(leg);
            }
        }
    }
    return legs;
}

Lidar::Lidar(const RayField& field, const LidarOptions& options, Random& random)
    : field_(field), options_(options), random_(random), salt_(random.next()) {
    for (const int tenths : field.canvas().glass_turns) {
        panes_.push_back(directionOf(-10 * tenths));
    }
    pixel_mm_ = static_cast<int>(field.canvas().frame.pixel_um / 1000);
}

Lidar::Echo Lidar::listen(const Place& from, const Direction& direction,
                          const std::vector<Place>& legs) {
    if (random_.chance(options_.lost_permille, 1000)) return {};
    const int most = options_.range_mm / pixel_mm_;
    const auto stops = [&](std::uint8_t material, int row, int col) {
        return echoes(material, row, col, direction);
    };
    const RayField::Hit hit = field_.cast(from, direction, most, stops);
    const int free = hit.found ? hit.pixels : most;
    int nearest = free;
    for (const Place& leg : legs) {
        nearest = pixelsToLeg(from, direction, leg, nearest, 70 * Place::kSub / pixel_mm_);
    }
    if (!hit.found && nearest == free) return {};
    if (random_.chance(options_.stray_permille, 1000)) {
        // Dust and mixed echoes of edges are nearer; only a mirror makes it farther.
        const bool mirrored = random_.chance(4);
        const int farthest = mirrored ? options_.range_mm : nearest * pixel_mm_;
        return {true, random_.between(200, std::max(200, farthest))};
    }
    const int range = nearest * pixel_mm_ + normal(random_, options_.noise_mm);
    return {range > 100, range};
}

bool Lidar::echoes(std::uint8_t material, int row, int col, const Direction& direction) {
    if (material == kThing) return fixedRoll(row / 12, col / 12, salt_) >= options_.dark_percent;
    if (material < Material::kGlass) return true;
    if (fixedRoll(row / 5, col / 5, salt_ + 1) < options_.frame_percent) return true;
    const Direction pane = panes_[static_cast<std::size_t>(material - Material::kGlass)];
    const std::int64_t along =
        (std::int64_t{pane.x} * direction.x + std::int64_t{pane.y} * direction.y) / Turn::kOne;
    const bool squarely = std::abs(along) < Turn::kOne / 6;
    return random_.chance(squarely ? 80 : 3);
}

}  // namespace vorund::test::families
