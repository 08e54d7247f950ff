// What the flow gives for generated plans, held by hashes: the same on every machine, with every
// processor and at every level of optimisation.
//
// The hashes tell that something changed, not whether it is right. When a default or the flow
// changes on purpose, first see that reference_test agrees, then renew the table: the test prints
// it as it would have to be. They are never renewed since one machine gives others than another.

#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <opencv2/core.hpp>
#include <ostream>
#include <sstream>
#include <string>

#include "flow/flow_run.h"
#include "support/families/plan_families.h"
#include "support/plan_generator.h"
#include "vorund/rooms/rooms_json.h"

namespace vorund::rooms {
namespace {

/// FNV-1a (Fowler, Noll, Vo).
std::uint64_t hashOf(const std::uint8_t* bytes, std::size_t count, std::uint64_t hash) {
    for (std::size_t i = 0; i < count; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3U;
    return hash;
}

constexpr std::uint64_t kHashOfNothing = 0xCBF29CE484222325U;

std::uint64_t hashOf(const cv::Mat& image) {
    std::uint64_t hash = kHashOfNothing;
    for (int row = 0; row < image.rows; ++row) {
        hash = hashOf(image.ptr<std::uint8_t>(row),
                      static_cast<std::size_t>(image.cols) * image.elemSize(), hash);
    }
    return hash;
}

std::uint64_t hashOf(const std::string& text) {
    std::uint64_t hash = kHashOfNothing;
    for (const char letter : text) {
        const auto byte = static_cast<std::uint8_t>(letter);
        hash = hashOf(&byte, 1, hash);
    }
    return hash;
}

/// A plan, and what its rooms hash to.
struct Expected {
    const char* family;  ///< Of the plan families, or "plain".
    std::uint64_t seed;
    std::uint64_t labels;    ///< Of the label image's numbers, 32 bits each.
    std::uint64_t json;      ///< Of rooms.json.
    std::uint64_t polygons;  ///< Of rooms.geojson.
};
void PrintTo(const Expected& expected, std::ostream* stream) {
    *stream << expected.family;
}

// clang-format off
constexpr Expected kTable[] = {
    {"plain", 2, 0xF17D65C273E66DF3U, 0xB7FC6DDD521EE8ADU, 0xC7B45A0357DE51C9U},
    {"plain", 6, 0x1DCCF7ECF48A1A74U, 0xC00943D74D2D40D6U, 0xFF39A7ECB71FEB66U},
    {"offices", 1, 0x5A9662ED63F88717U, 0x7F142F01C16CC57FU, 0xEB035A7CE46CF479U},
    {"homes", 1, 0x0A23D2B7A3B14386U, 0xD77ABB70C46E8844U, 0x67C24F117AB0D36FU},
    {"shapes", 1, 0x9BD5CE022B89BCF3U, 0x8E9A1A81F29F4E41U, 0xC6DD35B8897C2A21U},
    {"cubicles", 1, 0x0F590D3801518952U, 0xE938F0E403BDA5B7U, 0x026A33E4C13FF670U},
    {"bends", 1, 0x510E46CC8633CE1BU, 0xFF01D712C5263EFCU, 0x6AB5FD62086519E5U},
    {"star", 1, 0x4EFE500C048FEBC3U, 0xFC9BDA04887BE41CU, 0x02E5856836D04364U},
    {"furnished", 1, 0xC26C871C91652D66U, 0xA50B32145E6617E0U, 0xC2523A160F8942FDU},
    {"mapped_home", 1, 0x541D801F918F0873U, 0x1C637E39B27125ECU, 0x0366593D57BFCA99U},
    {"mapped_hall", 1, 0x46453F95B5F14056U, 0x79A7FB8327DEEDA2U, 0x669F62A919A2EDDBU},
    {"mapped_drift", 1, 0x3BC049D1FD413D0FU, 0xD0E7ED43015D75A5U, 0xE9C99FAB76275F04U},
};
// clang-format on

cv::Mat planOf(const Expected& expected) {
    if (expected.family != std::string("plain")) {
        return test::makeFamilyPlan(expected.family, expected.seed).map;
    }
    test::PlanOptions options;
    options.seed = expected.seed;
    options.width_mm = 20000;
    options.height_mm = 14000;
    options.furniture_percent = 60;
    options.rotation_tenths_deg = 170;
    return test::makePlan(options).map;
}

std::string rowOf(const Expected& row) {
    std::ostringstream text;
    text << "{\"" << row.family << "\", " << row.seed << std::hex << std::uppercase
         << std::setfill('0');
    for (const std::uint64_t hash : {row.labels, row.json, row.polygons}) {
        text << ", 0x" << std::setw(16) << hash << "U";
    }
    return text.str() + "},";
}

class SameBytes : public FindRooms, public ::testing::WithParamInterface<Expected> {};

TEST_P(SameBytes, OnEveryMachine) {
    const Expected& expected = GetParam();
    const cv::Mat walls = planOf(expected) != test::kMapFree;
    GridMap map = mapOf(walls);
    map.origin = {-12.3, 4.5, 0.25};
    Settings settings;
    settings.rooms.simplify = 0.1;
    const Rooms rooms = find(map, settings);
    ASSERT_FALSE(rooms.rooms.empty());
    const Expected found{expected.family, expected.seed, hashOf(rooms.labels),
                         hashOf(roomsAsJson(rooms)), hashOf(roomsAsGeoJson(rooms))};
    EXPECT_EQ(rowOf(found), rowOf(expected));
}

INSTANTIATE_TEST_SUITE_P(Plans, SameBytes, ::testing::ValuesIn(kTable));

}  // namespace
}  // namespace vorund::rooms
