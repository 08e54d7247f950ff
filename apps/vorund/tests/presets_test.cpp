#include <nlohmann/json.hpp>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kPresets[]{"home", "office", "warehouse"};

class Presets : public CliTest {
 protected:
    Outcome config(std::vector<std::string> options) const {
        options.insert(options.begin(), "config");
        return runProgram(options);
    }
};

TEST_F(Presets, LoadWithoutWarnings) {
    for (const std::string preset : kPresets) {
        const Outcome outcome = config({"--preset", preset});
        EXPECT_EQ(outcome.status, 0) << preset;
        EXPECT_EQ(outcome.err, "") << preset;
        EXPECT_THAT(outcome.out, HasSubstr("open_ratio: ")) << preset;
    }
}

TEST_F(Presets, GiveWayToTheFileAndToSingleSettings) {
    const std::string file = folder_.write("own.yaml", "rooms: {least_area: 3.25}\n");
    const std::string with_file = config({"--preset", "home", "--config", file}).out;
    EXPECT_THAT(with_file, HasSubstr("least_area: 3.25\n"));
    EXPECT_THAT(config({"--preset", "home", "--set", "rooms/least_area=3.5"}).out,
                HasSubstr("least_area: 3.5\n"));
    // What the file leaves out stays as the preset has it.
    std::string expected = config({"--preset", "home"}).out;
    const std::size_t line = expected.find("  least_area: ");
    expected.replace(line, expected.find('\n', line) - line, "  least_area: 3.25");
    EXPECT_EQ(with_file, expected);
}

TEST_F(Presets, ThatAreNotThereAreWrongUsage) {
    for (const char* const name : {"castle", "../home", "home.yaml"}) {
        const Outcome outcome = config({"--preset", name});
        EXPECT_EQ(outcome.status, 2) << name;
        EXPECT_EQ(outcome.err, std::string("vorund: --preset: no preset ") + name +
                                   " (there are: home, office, warehouse) (see vorund --help)\n");
    }
    EXPECT_EQ(config({"--preset", ""}).status, 2);
}

TEST_F(Presets, AreInForceForAMapAndForABatch) {
    image("a.png", twoRooms());
    image("b.png", twoRooms());
    const std::string in_force = config({"--preset", "home", "--detail", "-1"}).out;
    EXPECT_THAT(in_force, HasSubstr("detail: -1.0\n"));
    for (const bool is_batch : {false, true}) {
        const std::string map = is_batch ? folder_.path() : folder_.file("a.png");
        EXPECT_EQ(segment(map, {"--preset", "home", "--detail", "-1"}).status, 0);
        const std::string json = readFile(out() + (is_batch ? "/b" : "") + "/rooms.json");
        const auto settings = nlohmann::json::parse(json).at("settings");
        EXPECT_EQ(settings.at("rooms").at("detail").dump(), "-1.0") << settings;
        std::filesystem::remove_all(out());
    }
}

TEST_F(Presets, LeaveTheDetailToItsOption) {
    EXPECT_THAT(config({"--detail=0.5"}).out, HasSubstr("detail: 0.5\n"));
    for (const char* const wrong : {"3", "-2.5", "much", ""}) {
        const Outcome outcome = config({std::string("--detail=") + wrong});
        EXPECT_EQ(outcome.status, 2) << wrong;
        EXPECT_THAT(outcome.err, AllOf(StartsWith("vorund: "), HasSubstr("--detail"))) << wrong;
    }
}

}  // namespace
}  // namespace vorund::test
