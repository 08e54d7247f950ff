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
    {"plain", 2, 0xF17D65C273E66DF3U, 0x2CD8BE3DCC7E0173U, 0xC7B45A0357DE51C9U},
    {"plain", 6, 0x7ED232E34F65970AU, 0x088C04BD7820E07CU, 0xD0FD35C428E5539FU},
    {"offices", 1, 0x5A9662ED63F88717U, 0x6A2536EBCA33D977U, 0xEB035A7CE46CF479U},
    {"homes", 1, 0x0A23D2B7A3B14386U, 0xBF4A59BFCC03FE74U, 0x67C24F117AB0D36FU},
    {"shapes", 1, 0xA62989643D468FF7U, 0xA9122373ACA0FC66U, 0x591BBE3407279D3FU},
    {"cubicles", 1, 0xED460E090C211DE6U, 0x48012973180BDDCAU, 0xC20672715605343DU},
    {"bends", 1, 0x4F8CAD045C04F1AEU, 0xF3EDA919C9BF521CU, 0xE8ACB516ED883394U},
    {"star", 1, 0x4EFE500C048FEBC3U, 0xC17CDCFB94721A45U, 0x02E5856836D04364U},
    {"furnished", 1, 0xC26C871C91652D66U, 0x2C02A868F21FE241U, 0xC2523A160F8942FDU},
    {"mapped_home", 1, 0x541D801F918F0873U, 0x38DBDA8146406F17U, 0x0366593D57BFCA99U},
    {"mapped_hall", 1, 0x46453F95B5F14056U, 0x8A86BD054C3DF643U, 0x669F62A919A2EDDBU},
    {"mapped_drift", 1, 0x5F34D8562136DDB5U, 0x9D02E834808DA39FU, 0x3DBEF109E429CE73U},
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
