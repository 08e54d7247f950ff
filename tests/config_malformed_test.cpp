#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <string>
#include <vector>

#include "support/captures.h"
#include "vorund/config.h"

namespace vorund {
namespace {

using test::ConsoleCapture;
using test::TempDir;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;

/// What yaml-cpp says about a file that it does not load.
std::string causeOf(const std::string& path) {
    try {
        YAML::LoadFile(path);
    } catch (const YAML::Exception& exception) {
        return exception.what();
    }
    ADD_FAILURE() << path << " loads";
    return {};
}

/// Loads a file that must fail, and gives the one line that says so.
std::string failureOf(Config& config, const std::string& path) {
    const ConsoleCapture console;
    EXPECT_FALSE(config.loadFromYaml(path));
    const std::vector<std::string> errors = console.texts("ERROR");
    EXPECT_EQ(errors.size(), 1U);
    EXPECT_THAT(console.texts("WARN"), IsEmpty());
    return errors.empty() ? std::string() : errors.back();
}

/// Loads a text that has one wrongly typed value, and gives the one warning of it.
std::string warningOf(Config& config, const std::string& yaml) {
    const TempDir dir;
    const ConsoleCapture console;
    EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", yaml))) << yaml;
    EXPECT_THAT(console.texts("ERROR"), IsEmpty()) << yaml;
    const std::vector<std::string> warnings = console.texts("WARN");
    EXPECT_EQ(warnings.size(), 1U) << yaml;
    return warnings.empty() ? std::string() : warnings.back();
}

MATCHER(IsConversionWarning, "") {
    const std::string start = "YAML parsing error for a node: ";
    const std::string end = ". Using default.";
    return arg.size() > start.size() + end.size() && arg.compare(0, start.size(), start) == 0 &&
           arg.compare(arg.size() - end.size(), end.size(), end) == 0;
}

TEST(ConfigThatCannotBeLoaded, MayBeMissing) {
    const TempDir dir;
    const std::string path = dir.file("missing.yaml");
    Config config;
    EXPECT_EQ(failureOf(config, path), "Failed to load YAML file '" + path + "': " + causeOf(path));
}

TEST(ConfigThatCannotBeLoaded, MayHaveSignsOfAFormatInItsName) {
    const TempDir dir;
    const std::string path = dir.file("100%s%n.yaml");
    Config config;
    EXPECT_EQ(failureOf(config, path), "Failed to load YAML file '" + path + "': " + causeOf(path));
}

TEST(ConfigThatCannotBeLoaded, MayBeADirectory) {
    const TempDir dir;
    Config config;
    EXPECT_THAT(failureOf(config, dir.path()),
                StartsWith("Failed to load YAML file '" + dir.path() + "': "));
}

TEST(ConfigThatCannotBeLoaded, MayHaveNoName) {
    Config config;
    EXPECT_THAT(failureOf(config, ""), StartsWith("Failed to load YAML file '': "));
}

TEST(ConfigThatCannotBeLoaded, MayHaveASyntaxError) {
    const TempDir dir;
    const std::vector<std::string> texts = {"sigma_start: [1, 2\n",
                                            "a: b: c\n",
                                            "sigma_start: [1, \"open\n",
                                            "a: 1\n b: 2\n",
                                            "dilate_binary:\n\tkernel_size: 3\n",
                                            "{sigma_start: 1, : }}\n",
                                            "sigma_start: *nobody\n"};
    for (const std::string& text : texts) {
        Config config;
        const std::string path = dir.write("config.yaml", text);
        EXPECT_EQ(failureOf(config, path),
                  "Failed to load YAML file '" + path + "': " + causeOf(path))
            << text;
        EXPECT_EQ(config.sigma_start, Config{}.sigma_start) << text;
    }
}

TEST(ConfigThatCannotBeLoaded, MayBeNoMapAtAll) {
    const TempDir dir;
    Config config;
    const std::string path = dir.write("config.yaml", "only a text\n");
    EXPECT_THAT(failureOf(config, path), StartsWith("Failed to load YAML file '" + path + "': "));
}

TEST(ConfigThatCannotBeLoaded, KeepsWhatWasReadBeforeTheFailure) {
    const TempDir dir;
    const std::vector<std::string> groups = {"find_alignment_angle", "generate_denoised_alone",
                                             "dilate_binary",        "generate_ridge_map_meijering",
                                             "compute_labels_list",  "over_segment",
                                             "merge_nodes_in_place", "merge_edges_in_place"};
    for (const std::string& group : groups) {
        Config config;
        const std::string path = dir.write("config.yaml", "sigma_start: 5.5\n" + group + ": 3\n");
        EXPECT_THAT(failureOf(config, path),
                    StartsWith("Failed to load YAML file '" + path + "': "))
            << group;
        EXPECT_EQ(config.sigma_start, 5.5) << group;
    }
}

TEST(ConfigThatCannotBeLoaded, StopsAtTheGroupThatFails) {
    const TempDir dir;
    const Config defaults;
    Config config;
    failureOf(config, dir.write("config.yaml",
                                "generate_denoised_alone: {crop_single_info: {padding: 31}}\n"
                                "dilate_binary: text\n"
                                "merge_nodes_in_place: {area_threshold: 32}\n"));
    EXPECT_EQ(config.generate_denoised_alone.crop_single_info.padding, 31);
    EXPECT_EQ(config.merge_nodes_in_place.area_threshold,
              defaults.merge_nodes_in_place.area_threshold);
}

TEST(ConfigThatCannotBeLoaded, LetsTheNextFileBeLoaded) {
    const TempDir dir;
    Config config;
    failureOf(config, dir.file("missing.yaml"));
    const ConsoleCapture console;
    EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", "sigma_start: 5.5\n")));
    EXPECT_EQ(config.sigma_start, 5.5);
}

TEST(ConfigWithAWronglyTypedValue, WarnsOnceWithTheCauseAndKeepsTheField) {
    const std::string yaml = "dilate_binary: {kernel_size: large, iterations: 4}\n";
    std::string cause;
    try {
        YAML::Load(yaml)["dilate_binary"]["kernel_size"].as<int>();
    } catch (const YAML::Exception& exception) {
        cause = exception.what();
    }
    ASSERT_THAT(cause, HasSubstr("bad conversion"));

    Config config;
    config.dilate_binary.kernel_size = 77;
    EXPECT_EQ(warningOf(config, yaml),
              "YAML parsing error for a node: " + cause + ". Using default.");
    EXPECT_EQ(config.dilate_binary.kernel_size, 77);
    EXPECT_EQ(config.dilate_binary.iterations, 4);
}

TEST(ConfigWithAWronglyTypedValue, PrintsTheWarningBeforeTheValueThatIsKept) {
    const TempDir dir;
    const ConsoleCapture console;
    Config config;
    config.dilate_binary.kernel_size = 77;
    EXPECT_TRUE(
        config.loadFromYaml(dir.write("config.yaml", "dilate_binary: {kernel_size: large}\n")));
    const std::vector<test::ConsoleLine> lines = console.lines();
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        if (lines[i].level != "WARN") continue;
        EXPECT_EQ(lines[i + 1], (test::ConsoleLine{"INFO", "[Config]   kernel_size: 77"}));
        return;
    }
    ADD_FAILURE() << "no warning";
}

TEST(ConfigWithAWronglyTypedValue, KeepsADouble) {
    for (const std::string value : {"wide", "[1]", "{a: 1}", "1.5m", "''"}) {
        Config config;
        EXPECT_THAT(warningOf(config, "sigma_start: " + value + "\nsigma_step: 3\n"),
                    IsConversionWarning());
        EXPECT_EQ(config.sigma_start, Config{}.sigma_start) << value;
        EXPECT_EQ(config.sigma_step, 3.0) << value;
    }
}

TEST(ConfigWithAWronglyTypedValue, KeepsAnInteger) {
    for (const std::string value : {"3.5", "many", "[1]", "{a: 1}", "99999999999", "true"}) {
        Config config;
        EXPECT_THAT(warningOf(config, "hist_resolution: " + value + "\nsigma_step: 3\n"),
                    IsConversionWarning());
        EXPECT_EQ(config.hist_resolution, Config{}.hist_resolution) << value;
        EXPECT_EQ(config.sigma_step, 3.0) << value;
    }
}

TEST(ConfigWithAWronglyTypedValue, KeepsABoolean) {
    for (const std::string value : {"maybe", "1", "[true]", "{a: true}"}) {
        Config config;
        config.alignment = true;
        EXPECT_THAT(warningOf(config, "alignment: " + value + "\nsigma_step: 3\n"),
                    IsConversionWarning());
        EXPECT_TRUE(config.alignment) << value;
        EXPECT_EQ(config.sigma_step, 3.0) << value;
    }
}

TEST(ConfigWithAWronglyTypedValue, KeepsAString) {
    for (const std::string value : {"[reflect]", "{a: reflect}"}) {
        Config config;
        EXPECT_THAT(warningOf(config, "generate_ridge_map_meijering: {mode: " + value + "}\n"),
                    IsConversionWarning());
        EXPECT_EQ(config.generate_ridge_map_meijering.mode, "reflect");
    }
}

TEST(ConfigWithAWronglyTypedValue, KeepsAllSigmasWhereOneIsWrong) {
    for (const std::string value : {"2.5", "wide", "{a: 1}", "[1, wide, 3]", "[[1], 2]"}) {
        Config config;
        config.generate_ridge_map_meijering.sigmas = {7.0, 8.0};
        EXPECT_THAT(warningOf(config, "generate_ridge_map_meijering: {sigmas: " + value + "}\n"),
                    IsConversionWarning());
        EXPECT_THAT(config.generate_ridge_map_meijering.sigmas, ElementsAre(7.0, 8.0)) << value;
    }
}

TEST(ConfigWithAWronglyTypedValue, KeepsWeightsThatAreNoMap) {
    for (const std::string value : {"3", "[start, 1]", "text"}) {
        Config config;
        config.over_segment.generate_map_initial_seeds.weights = {{"end", 7}};
        EXPECT_THAT(warningOf(config,
                              "over_segment:\n"
                              "  generate_map_initial_seeds: {weights: " +
                                  value +
                                  "}\n"
                                  "  create_watershed_segment_skimage: {connectivity: 8}\n"),
                    IsConversionWarning());
        EXPECT_THAT(config.over_segment.generate_map_initial_seeds.weights,
                    ElementsAre(Pair("end", 7)))
            << value;
        EXPECT_EQ(config.over_segment.create_watershed_segment_skimage.connectivity, 8) << value;
    }
}

TEST(ConfigWithAWronglyTypedValue, KeepsTheWeightThatIsNoInteger) {
    Config config;
    config.over_segment.generate_map_initial_seeds.weights = {{"end", 7}, {"start", 8}};
    EXPECT_THAT(warningOf(config,
                          "over_segment:\n"
                          "  generate_map_initial_seeds: {weights: {end: heavy, start: 9}}\n"),
                IsConversionWarning());
    EXPECT_THAT(config.over_segment.generate_map_initial_seeds.weights,
                ElementsAre(Pair("end", 7), Pair("start", 9)));
}

TEST(ConfigWithAWronglyTypedValue, AddsNoWeightThatIsNoInteger) {
    Config config;
    config.over_segment.generate_map_initial_seeds.weights = {{"end", 7}};
    EXPECT_THAT(warningOf(config,
                          "over_segment:\n"
                          "  generate_map_initial_seeds: {weights: {middle: heavy, start: 9}}\n"),
                IsConversionWarning());
    EXPECT_THAT(config.over_segment.generate_map_initial_seeds.weights,
                ElementsAre(Pair("end", 7), Pair("start", 9)));
}

}  // namespace
}  // namespace vorund
