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
    {"plain", 2, 0xFEDC2535C0EB165FU, 0x0CE4C9BD17BA4B0BU, 0x29CB3F2D2AC1D2C8U},
    {"plain", 6, 0xBC3B7910131DEC38U, 0x5C6C435BD25F7931U, 0x97077E70289F1B54U},
    {"offices", 1, 0xC671D2123CB20E3AU, 0xBD9FF85F1E90A0D2U, 0x752327E28BE8D85CU},
    {"homes", 1, 0x3962C99BA01EA442U, 0xE2B7FC27ADAEB721U, 0x493AF9DD786C0B9AU},
    {"shapes", 1, 0x2CD90A27174889D9U, 0x03C3103E65C1A793U, 0x414924BCBDF41002U},
    {"cubicles", 1, 0x0BF7E7C253865F1BU, 0xB16244140BABD6F7U, 0xE8E924DC87AA170BU},
    {"bends", 1, 0xB8804259733F6D3AU, 0xB4250DACE310DF24U, 0x73158020F078001FU},
    {"star", 1, 0x8A995D867884E042U, 0x51C7ECA04437F4F9U, 0xD0FE76B28D43A67CU},
    {"furnished", 1, 0x81E67706C51EA375U, 0x1E463462CFF2B396U, 0x5E374ED0A64EDD57U},
    {"mapped_home", 1, 0x0EF3D13FA9094135U, 0xFCBC9375B8C3C0EEU, 0x4AAECA0CD4B4CC58U},
    {"mapped_hall", 1, 0x70722F9F013DB4E1U, 0x25BA4E55324F4D42U, 0xD8DF10AE486040DAU},
    {"mapped_drift", 1, 0x9556FDAA8BAEB450U, 0xC82C2588CCBEF773U, 0x07FC14C4340A9DA8U},
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
