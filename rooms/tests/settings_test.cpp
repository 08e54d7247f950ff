#include "vorund/rooms/settings.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <limits>
#include <locale>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/captures.h"

namespace vorund::rooms {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A value of its own for every setting, permitted and not the default.
constexpr char kChangedYaml[] = R"(sigma_start: 1.25
sigma_step: 1.5
binary_threshold: 0.11
area_threshold: 1.75
length_threshold: 2.25
hist_resolution: 181
alignment: true
debug:
  show_images: true
  save_images: true
find_alignment_angle:
  binary_for_crop/make_binary:
    threshold: 0.12
  crop_single_info:
    padding: 6
  binary/make_binary:
    threshold: 0.13
  components_out/remove_small_connected_components:
    method: mean
    connectivity: 8
    # min_size: 101 (not read from YAML)
  components_in/remove_small_connected_components:
    method: median
    # connectivity: 4 (not read from YAML)
    min_size: 102
  rank/make_binary:
    threshold: 0.14
  compute_weighted_angle_histogram:
    resolution: 182
    canny:
      sigma: 1.125
    probabilistic_hough_line:
      threshold: 11
      line_length: 21.5
      line_gap: 3.5
  find_best_alignment_angle_from_histogram:
    window_half_size: 3
    resolution: 183
generate_denoised_alone:
  binary_for_crop/make_binary:
    threshold: 0.15
  crop_single_info:
    padding: 7
  binary/make_binary:
    threshold: 0.16
  components_out/remove_small_connected_components:
    method: median
    connectivity: 8
    # min_size: 103 (not read from YAML)
  components_in/remove_small_connected_components:
    method: mean
    # connectivity: 4 (not read from YAML)
    min_size: 104
  rank/make_binary:
    threshold: 0.17
dilate_binary:
  kernel_size: 5
  iterations: 2
generate_ridge_map_meijering:
  mode: mirror
  sigmas: [3.0, 4.5]
compute_labels_list:
  sigma_start: 1.375
  sigma_step: 1.625
  max_iter: 201
  background_erosion_kernel_size: 9
  generate_gaussian_seeds_skimage:
    threshold: 0.05
  create_watershed_segment_skimage:
    connectivity: 8
over_segment:
  generate_map_initial_seeds:
    method: weighted
    weights: {end: 2, start: 3}
    filter_threshold: 4
  create_watershed_segment_skimage:
    connectivity: 8
merge_nodes_in_place:
  area_threshold: 1.875
merge_edges_in_place:
  length_threshold: 2.125
rooms:
  simplify: 0.25
  straight_borders: true
  blocks: always
  block_pixels: 123456
  merging: passes
  open_ratio: 0.25
  narrow_ratio: 0.375
  narrow_passage: 1.125
  least_area: 2.25
  doorways: false
  corridors: false
  widest_doorway: 2.75
  jamb: 0.625
  detail: -0.5
  clear_clutter: false
  loose_part: 1.5
  loose_block: 1.625
  wall_line: 0.875
  closed_floor: 4.5
)";

Config changedConfig() {
    Config config;
    config.sigma_start = 1.25;
    config.sigma_step = 1.5;
    config.binary_threshold = 0.11;
    config.area_threshold = 1.75;
    config.length_threshold = 2.25;
    config.hist_resolution = 181;
    config.alignment = true;
    config.debug = {true, true};

    auto& alignment = config.find_alignment_angle;
    alignment.binary_for_crop_make_binary = {0.12};
    alignment.crop_single_info = {6};
    alignment.binary_make_binary = {0.13};
    alignment.components_out_remove_small_connected_components = {"mean", 8, 101};
    alignment.components_in_remove_small_connected_components = {"median", 4, 102};
    alignment.rank_make_binary = {0.14};
    alignment.compute_weighted_angle_histogram = {182, {1.125}, {11, 21.5, 3.5}};
    alignment.find_best_alignment_angle_from_histogram = {3, 183};

    auto& denoised = config.generate_denoised_alone;
    denoised.binary_for_crop_make_binary = {0.15};
    denoised.crop_single_info = {7};
    denoised.binary_make_binary = {0.16};
    denoised.components_out_remove_small_connected_components = {"median", 8, 103};
    denoised.components_in_remove_small_connected_components = {"mean", 4, 104};
    denoised.rank_make_binary = {0.17};

    config.dilate_binary = {5, 2};
    config.generate_ridge_map_meijering = {"mirror", {3.0, 4.5}};
    config.compute_labels_list = {1.375, 1.625, 201, 9, {0.05}, {8}};
    config.over_segment = {{"weighted", {{"end", 2}, {"start", 3}}, 4}, {8}};
    config.merge_nodes_in_place = {1.875};
    config.merge_edges_in_place = {2.125};
    return config;
}

Settings changedSettings() {
    RoomsConfig rooms;
    rooms.simplify = 0.25;
    rooms.straight_borders = true;
    rooms.blocks = "always";
    rooms.block_pixels = 123456;
    rooms.merging = "passes";
    rooms.open_ratio = 0.25;
    rooms.narrow_ratio = 0.375;
    rooms.narrow_passage = 1.125;
    rooms.least_area = 2.25;
    rooms.doorways = false;
    rooms.corridors = false;
    rooms.widest_doorway = 2.75;
    rooms.jamb = 0.625;
    rooms.detail = -0.5;
    rooms.clear_clutter = false;
    rooms.loose_part = 1.5;
    rooms.loose_block = 1.625;
    rooms.wall_line = 0.875;
    rooms.closed_floor = 4.5;
    return {changedConfig(), rooms};
}

using Keys = std::vector<std::string>;

/// The paths of all values of a document: what `weights` holds is one value.
void collectKeys(const YAML::Node& node, const Keys& above, std::set<Keys>& keys) {
    for (const auto& entry : node) {
        Keys path = above;
        path.push_back(entry.first.as<std::string>());
        if (entry.second.IsMap() && path.back() != "weights") {
            collectKeys(entry.second, path, keys);
        } else {
            EXPECT_TRUE(keys.insert(path).second) << "stands twice: " << path.back();
        }
    }
}

std::set<Keys> keysOf(const YAML::Node& root) {
    std::set<Keys> keys;
    collectKeys(root, {}, keys);
    return keys;
}

class SettingsTest : public ::testing::Test {
 protected:
    /// Loads settings from a file of that content; gives the warnings without the file's name.
    std::vector<std::string> load(const std::string& yaml) {
        const std::string path = folder_.write("settings.yaml", yaml);
        std::vector<std::string> warnings = loadSettings(path, settings_);
        for (std::string& warning : warnings) {
            EXPECT_THAT(warning, StartsWith(path + ": "));
            warning.erase(0, path.size() + 2);
        }
        return warnings;
    }

    /// Why settings of that content are refused, without the file's name.
    std::string fault(const std::string& yaml) {
        const std::string before = settingsAsYaml(settings_);
        const std::string text = faultOf(folder_.write("settings.yaml", yaml));
        EXPECT_EQ(settingsAsYaml(settings_), before) << "changed although refused";
        return text;
    }

    std::string faultOf(const std::string& path) {
        try {
            loadSettings(path, settings_);
        } catch (const SettingError& error) {
            const std::string text = error.what();
            EXPECT_THAT(text, StartsWith(path + ": "));
            EXPECT_EQ(text.find('\n'), std::string::npos) << "more than one line";
            return text.substr(std::min(text.size(), path.size() + 2));
        }
        return "nothing is wrong";
    }

    Settings settings_;
    test::TempDir folder_;

 private:
    test::ConsoleCapture console_;  // `Config::loadFromYaml` tells every value.
};

using SettingsAsYaml = SettingsTest;
using LoadSettings = SettingsTest;
using ApplySetting = SettingsTest;
using DefaultYaml = SettingsTest;

TEST_F(SettingsAsYaml, WritesEveryFieldUnderItsKey) {
    EXPECT_EQ(settingsAsYaml(changedSettings()), kChangedYaml);
}

TEST_F(SettingsAsYaml, LoadsBackToTheSameSettings) {
    const std::string path = folder_.write("settings.yaml", settingsAsYaml(changedSettings()));
    Settings config;
    loadSettings(path, config);
    // The four fields that no file sets.
    config.core.find_alignment_angle.components_out_remove_small_connected_components.min_size =
        101;
    config.core.find_alignment_angle.components_in_remove_small_connected_components.connectivity =
        4;
    config.core.generate_denoised_alone.components_out_remove_small_connected_components.min_size =
        103;
    config.core.generate_denoised_alone.components_in_remove_small_connected_components
        .connectivity = 4;
    EXPECT_EQ(settingsAsYaml(config), kChangedYaml);
}

TEST_F(SettingsAsYaml, KeepsEveryBitOfANumber) {
    const std::vector<double> awkward{0.1 + 0.2,
                                      1.0 / 3.0,
                                      1e-7,
                                      123456789012345680.0,
                                      5e-324,
                                      1.0e300,
                                      0.10000000149011612,
                                      1.7976931348623157e308,
                                      kInfinity,
                                      -kInfinity,
                                      -2.5};
    Settings written;
    written.core.generate_ridge_map_meijering.sigmas = awkward;
    Settings read;
    ASSERT_TRUE(read.core.loadFromYaml(folder_.write("settings.yaml", settingsAsYaml(written))));
    EXPECT_EQ(read.core.generate_ridge_map_meijering.sigmas, awkward);
}

TEST_F(SettingsAsYaml, WritesNumbersWithoutNeedlessDigits) {
    settings_.core.generate_ridge_map_meijering.sigmas = {0.1, 20, 1e6, 0.30000000000000004};
    EXPECT_THAT(settingsAsYaml(settings_),
                HasSubstr("  sigmas: [0.1, 20.0, 1000000.0, 0.30000000000000004]\n"));
}

TEST_F(SettingsAsYaml, QuotesNamesThatWouldReadAsSomethingElse) {
    for (const std::string name : {"", "null", "~", "a: b", "# no", "two\nlines", "\"", "12"}) {
        Settings written;
        written.core.generate_ridge_map_meijering.mode = name;
        written.core.over_segment.generate_map_initial_seeds.weights[name] = 7;
        Settings read;
        ASSERT_TRUE(
            read.core.loadFromYaml(folder_.write("settings.yaml", settingsAsYaml(written))));
        EXPECT_EQ(read.core.generate_ridge_map_meijering.mode, name);
        EXPECT_EQ(read.core.over_segment.generate_map_initial_seeds.weights,
                  written.core.over_segment.generate_map_initial_seeds.weights);
    }
}

struct CommaForPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(SettingsAsYaml, WritesTheSameWhateverTheLocale) {
    const std::locale former = std::locale::global(std::locale({}, new CommaForPoint));
    const std::string text = settingsAsYaml(changedSettings());
    std::locale::global(former);
    EXPECT_EQ(text, kChangedYaml);
}

TEST_F(DefaultYaml, HoldsTheDefaultOfEverySetting) {
    Settings loaded = changedSettings();
    EXPECT_THAT(loadSettings(VORUND_DEFAULT_YAML, loaded), IsEmpty());
    // What no file sets is as it was.
    Settings expected;
    expected.core.find_alignment_angle.components_out_remove_small_connected_components.min_size =
        101;
    expected.core.find_alignment_angle.components_in_remove_small_connected_components
        .connectivity = 4;
    auto& denoised = expected.core.generate_denoised_alone;
    denoised.components_out_remove_small_connected_components.min_size = 103;
    denoised.components_in_remove_small_connected_components.connectivity = 4;
    EXPECT_EQ(settingsAsYaml(loaded), settingsAsYaml(expected));
}

TEST_F(DefaultYaml, HoldsTheKeysThatAreWrittenAndNoOthers) {
    EXPECT_EQ(keysOf(YAML::LoadFile(VORUND_DEFAULT_YAML)), keysOf(YAML::Load(kChangedYaml)));
}

TEST_F(LoadSettings, SetsEveryField) {
    load(kChangedYaml);
    Settings expected = changedSettings();
    expected.core.find_alignment_angle.components_out_remove_small_connected_components.min_size =
        100;
    expected.core.find_alignment_angle.components_in_remove_small_connected_components
        .connectivity = 8;
    auto& denoised = expected.core.generate_denoised_alone;
    denoised.components_out_remove_small_connected_components.min_size = 100;
    denoised.components_in_remove_small_connected_components.connectivity = 8;
    EXPECT_EQ(settingsAsYaml(settings_), settingsAsYaml(expected));
}

TEST_F(LoadSettings, LeavesWhatTheFileDoesNotName) {
    settings_ = changedSettings();
    EXPECT_THAT(load("dilate_binary: {iterations: 9}"), IsEmpty());
    Settings expected = changedSettings();
    expected.core.dilate_binary.iterations = 9;
    EXPECT_EQ(settingsAsYaml(settings_), settingsAsYaml(expected));
}

TEST_F(LoadSettings, TakesAFileWithoutSettings) {
    for (const char* yaml : {"", "# nothing\n", "---\n", "dilate_binary:\n"}) {
        EXPECT_THAT(load(yaml), IsEmpty()) << yaml;
    }
    EXPECT_EQ(settingsAsYaml(settings_), settingsAsYaml(Settings{}));
}

TEST_F(LoadSettings, ReplacesTheWeightsThatTheFileNames) {
    load("over_segment: {generate_map_initial_seeds: {weights: {start: 5}}}");
    EXPECT_EQ(settings_.core.over_segment.generate_map_initial_seeds.weights,
              (std::map<std::string, int>{{"end", 1}, {"start", 5}}));
}

TEST_F(LoadSettings, RefusesWhatIsNoSettingsFile) {
    EXPECT_EQ(faultOf(folder_.file("missing.yaml")), "No such file or directory");
    EXPECT_EQ(faultOf(folder_.path()), "Is a directory");
    EXPECT_EQ(faultOf(folder_.write("file", "") + "/settings.yaml"), "Not a directory");
    EXPECT_EQ(fault("just a text"), "holds no map of settings");
    EXPECT_EQ(fault("- a\n- list\n"), "holds no map of settings");
    EXPECT_EQ(fault("alignment: true\n---\nalignment: false\n"), "holds more than one document");
    EXPECT_THAT(fault("dilate_binary: [1"), StartsWith("is no YAML: "));
    EXPECT_THAT(fault("dilate_binary:\n\tkernel_size: 3"),
                AllOf(StartsWith("is no YAML: "), EndsWith(" in line 2")));
    EXPECT_THAT(fault("dilate_binary: *unknown"), StartsWith("is no YAML: "));
    EXPECT_THAT(fault(std::string(10000, '[')), StartsWith("is no YAML: "));
    EXPECT_EQ(fault("#" + std::string(1 << 20, ' ')), "is too large for settings");
}

TEST_F(LoadSettings, RefusesAPipeInsteadOfWaitingForIt) {
    const std::string pipe = folder_.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(faultOf(pipe), "is not a regular file");
}

TEST_F(LoadSettings, RefusesAGroupThatIsAValue) {
    EXPECT_EQ(fault("dilate_binary: 3"), "dilate_binary: is a group, not a value");
    EXPECT_EQ(fault("compute_labels_list: [1, 2]"), "compute_labels_list: is a group, not a value");
    EXPECT_EQ(fault("over_segment: {generate_map_initial_seeds: start}"),
              "over_segment/generate_map_initial_seeds: is a group, not a value");
}

TEST_F(LoadSettings, RefusesAKeyThatStandsTwice) {
    EXPECT_EQ(fault("alignment: true\nalignment: true\n"), "alignment: stands twice");
    EXPECT_EQ(fault("dilate_binary: {iterations: 1}\ndilate_binary: {kernel_size: 5}\n"),
              "dilate_binary: stands twice");
    EXPECT_EQ(fault("dilate_binary: {iterations: 1, iterations: 1}"),
              "dilate_binary/iterations: stands twice");
}

TEST_F(LoadSettings, TellsEveryFaultInOneLine) {
    EXPECT_EQ(
        fault("dilate_binary: {kernel_size: big, iterations: 1.5}\n"
              "generate_ridge_map_meijering: {mode: wrap, sigmas: [1.0, .nan]}\n"
              "compute_labels_list: {max_iter: {a: 1}, sigma_start: \"\"}\n"),
        "dilate_binary/kernel_size: is big (permitted: a whole number from 1 to 101); "
        "dilate_binary/iterations: is 1.5 (permitted: a whole number from 0 to 100); "
        "generate_ridge_map_meijering/mode: is wrap (permitted: reflect, mirror, constant, "
        "nearest; OpenCV's separable filter refuses wrap); "
        "generate_ridge_map_meijering/sigmas: is a list (permitted: a list of 1 to 16 numbers "
        "from 0.1 to 50); "
        "compute_labels_list/max_iter: is a map (permitted: a whole number from 2 to 1000); "
        "compute_labels_list/sigma_start: has no value (permitted: a number from 0.1 to 100)");
}

TEST_F(LoadSettings, CutsALongValueAndHidesItsLineBreaks) {
    EXPECT_EQ(fault("alignment: \"a\\nb" + std::string(1000, 'x') + "\""),
              "alignment: is a?b" + std::string(57, 'x') + "... (permitted: true or false)");
}

TEST_F(LoadSettings, SetsTheGoodValuesOfAFileWithWarnings) {
    EXPECT_THAT(load("unknown: 1\ndilate_binary: {iterations: 9}"),
                ElementsAre("unknown: no such setting, not read"));
    EXPECT_EQ(settings_.core.dilate_binary.iterations, 9);
}

TEST_F(LoadSettings, NamesTheKeyThatWasMeant) {
    EXPECT_THAT(load("dilate_binery: {iterations: 9}"),
                ElementsAre("dilate_binery: no such setting, not read; did you mean "
                            "\"dilate_binary\"?"));
    EXPECT_THAT(load("dilate_binary: {iteration: 9}"),
                ElementsAre("dilate_binary/iteration: no such setting, not read; did you mean "
                            "\"iterations\"?"));
    EXPECT_THAT(load("kernel_size: 9"),
                ElementsAre("kernel_size: no such setting, not read; did you mean "
                            "\"dilate_binary/kernel_size\"?"));
    EXPECT_THAT(load("walls: {anything: 1}"), ElementsAre("walls: no such setting, not read"));
}

TEST_F(LoadSettings, TellsOfTwoLevelsWhereTheKeyHoldsASlash) {
    EXPECT_THAT(load("generate_denoised_alone: {binary: {make_binary: {threshold: 0.5}}}"),
                ElementsAre("generate_denoised_alone/binary: no such setting, not read; did you "
                            "mean \"binary/make_binary\"?"));
}

TEST_F(LoadSettings, WarnsOfFieldsThatNoFileSets) {
    EXPECT_THAT(load("generate_denoised_alone:\n"
                     "  components_out/remove_small_connected_components: {min_size: 9}\n"
                     "  components_in/remove_small_connected_components: {connectivity: 4}\n"),
                ElementsAre("generate_denoised_alone/components_out/"
                            "remove_small_connected_components/min_size: not read from YAML",
                            "generate_denoised_alone/components_in/"
                            "remove_small_connected_components/connectivity: not read from YAML"));
}

TEST_F(LoadSettings, WarnsOfAKeyWithoutValue) {
    settings_.core.dilate_binary.iterations = 9;
    EXPECT_THAT(load("dilate_binary: {iterations: }"),
                ElementsAre("dilate_binary/iterations: has no value, stays as it is"));
    EXPECT_EQ(settings_.core.dilate_binary.iterations, 9);
}

TEST_F(LoadSettings, WarnsOfAKeyThatIsNoName) {
    EXPECT_THAT(load("[1, 2]: 3"), ElementsAre("a key that is no name, not read"));
    EXPECT_THAT(load("dilate_binary: {{a: 1}: 3}"),
                ElementsAre("dilate_binary: a key that is no name, not read"));
}

TEST_F(LoadSettings, WarnsOfChangedValuesThatChangeNoResult) {
    // `debug` counts; the other groups of the changed file hold values that count and others.
    EXPECT_THAT(
        load("sigma_start: 2\nsigma_step: 2\nbinary_threshold: 0.2\narea_threshold: 2\n"
             "length_threshold: 3\nhist_resolution: 90\nalignment: true\n"
             "debug: {save_images: true}\n"
             "generate_denoised_alone: {rank/make_binary: {threshold: 0.2}}\n"
             "compute_labels_list:\n"
             "  background_erosion_kernel_size: 5\n"
             "  create_watershed_segment_skimage: {connectivity: 8}\n"),
        ElementsAre(
            "sigma_start: changes no result: set compute_labels_list/sigma_start instead",
            "sigma_step: changes no result: set compute_labels_list/sigma_step instead",
            "binary_threshold: changes no result: set "
            "generate_denoised_alone/binary/make_binary/threshold instead",
            "area_threshold: changes no result: set merge_nodes_in_place/area_threshold instead",
            "length_threshold: changes no result: set merge_edges_in_place/length_threshold "
            "instead",
            "hist_resolution: changes no result: maps are not aligned",
            "alignment: changes no result: maps are not aligned",
            "generate_denoised_alone/rank/make_binary/threshold: changes no result: no stage uses "
            "it",
            "compute_labels_list/background_erosion_kernel_size: changes no result: no stage uses "
            "it",
            "compute_labels_list/create_watershed_segment_skimage/connectivity: changes no result: "
            "set over_segment/create_watershed_segment_skimage/connectivity instead"));
}

TEST_F(LoadSettings, WarnsOfEveryChangedValueForTheAlignment) {
    YAML::Node alignment_alone;
    alignment_alone["find_alignment_angle"] = YAML::Load(kChangedYaml)["find_alignment_angle"];
    const std::vector<std::string> warnings = load(YAML::Dump(alignment_alone));
    EXPECT_EQ(warnings.size(), keysOf(alignment_alone).size());
    for (const std::string& warning : warnings) {
        EXPECT_THAT(warning, EndsWith(": changes no result: maps are not aligned"));
    }
}

TEST_F(LoadSettings, SaysNothingOfDefaultsThatChangeNoResult) {
    EXPECT_THAT(load(settingsAsYaml(Settings{})), IsEmpty());
}

TEST_F(ApplySetting, SetsOneValue) {
    EXPECT_THAT(applySetting("generate_denoised_alone/binary/make_binary/threshold=0.5", settings_),
                IsEmpty());
    Settings expected;
    expected.core.generate_denoised_alone.binary_make_binary.threshold = 0.5;
    EXPECT_EQ(settingsAsYaml(settings_), settingsAsYaml(expected));
}

TEST_F(ApplySetting, TakesListsAndMaps) {
    applySetting("generate_ridge_map_meijering/sigmas=[1.5, 2]", settings_);
    EXPECT_THAT(settings_.core.generate_ridge_map_meijering.sigmas, ElementsAre(1.5, 2.0));
    applySetting("over_segment/generate_map_initial_seeds/weights={end: 4}", settings_);
    EXPECT_EQ(settings_.core.over_segment.generate_map_initial_seeds.weights,
              (std::map<std::string, int>{{"end", 4}, {"start", 1}}));
}

TEST_F(ApplySetting, WarnsOfAValueThatChangesNoResult) {
    EXPECT_THAT(applySetting("alignment=true", settings_),
                ElementsAre("alignment: changes no result: maps are not aligned"));
    EXPECT_TRUE(settings_.core.alignment);
}

struct Refused {
    std::string assignment;
    std::string message;
};

TEST_F(ApplySetting, RefusesWhatIsNoSetting) {
    const std::vector<Refused> cases{
        {"", ": is not of the form KEY=VALUE"},
        {"alignment", "alignment: is not of the form KEY=VALUE"},
        {"=3", "=3: is not of the form KEY=VALUE"},
        {"foo=3", "foo: no such setting"},
        {"kernel_size=3",
         "kernel_size: no such setting; did you mean \"dilate_binary/kernel_size\"?"},
        {"dilate_binary/kernal_size=3",
         "dilate_binary/kernal_size: no such setting; did you mean \"dilate_binary/kernel_size\"?"},
        {"dilate_binary=3",
         "dilate_binary: no such setting; did you mean \"dilate_binary/kernel_size\"?"},
        {"generate_denoised_alone/components_out/remove_small_connected_components/min_size=3",
         "generate_denoised_alone/components_out/remove_small_connected_components/min_size: "
         "cannot be set"},
    };
    for (const Refused& refused : cases) {
        EXPECT_THAT([&] { applySetting(refused.assignment, settings_); },
                    ThrowsMessage<SettingError>(refused.message));
    }
    EXPECT_EQ(settingsAsYaml(settings_), settingsAsYaml(Settings{}));
}

/// What one setting takes and what it does not.
struct Range {
    std::string key;
    std::vector<std::string> good;
    std::vector<std::string> bad;
};

class SettingRanges : public ::testing::TestWithParam<Range> {};

TEST_P(SettingRanges, HoldAtBothEnds) {
    for (const std::string& value : GetParam().good) {
        Settings config;
        EXPECT_NO_THROW(applySetting(GetParam().key + "=" + value, config)) << value;
    }
    for (const std::string& value : GetParam().bad) {
        Settings config;
        EXPECT_THAT([&] { applySetting(GetParam().key + "=" + value, config); },
                    ThrowsMessage<SettingError>(HasSubstr("(permitted: ")))
            << value;
        EXPECT_EQ(settingsAsYaml(config), settingsAsYaml(Settings{})) << "changed by " << value;
    }
}

const std::vector<std::string> kNoNumbers{"", "~", "abc", "1,5", "[1.0]", "{a: 1}", "true"};

/// The bad values, and those that are no number at all.
Range range(const std::string& key, const std::vector<std::string>& good,
            std::vector<std::string> bad) {
    bad.insert(bad.end(), kNoNumbers.begin(), kNoNumbers.end());
    return {key, good, bad};
}

Range real(const std::string& key, const std::vector<std::string>& good,
           std::vector<std::string> bad) {
    bad.insert(bad.end(), {".nan", ".inf", "-.inf", "1e999", "-1"});
    return range(key, good, bad);
}

Range whole(const std::string& key, const std::vector<std::string>& good,
            std::vector<std::string> bad) {
    bad.insert(bad.end(), {"2.5", ".nan", "99999999999", "-1"});
    return range(key, good, bad);
}

Range threshold(const std::string& key) {
    return real(key, {"0", "0.999"}, {"0.9991", "1"});
}

Range connectivity(const std::string& key) {
    return whole(key, {"4", "8"}, {"0", "5", "6", "7", "9"});
}

Range componentMethod(const std::string& key) {
    return {key, {"fixed", "mean", "median"}, {"Median", "", "~", "start", "[mean]"}};
}

Range flag(const std::string& key) {
    return {key, {"true", "false"}, {"", "~", "2", "maybe", "[true]"}};
}

/// The ranges of one of the two groups that denoise.
std::vector<Range> denoising(const std::string& group) {
    const std::string out = group + "/components_out/remove_small_connected_components";
    const std::string in = group + "/components_in/remove_small_connected_components";
    return {threshold(group + "/binary_for_crop/make_binary/threshold"),
            threshold(group + "/binary/make_binary/threshold"),
            threshold(group + "/rank/make_binary/threshold"),
            whole(group + "/crop_single_info/padding", {"0", "10000"}, {"10001"}),
            componentMethod(out + "/method"),
            connectivity(out + "/connectivity"),
            componentMethod(in + "/method"),
            whole(in + "/min_size", {"0", "1000000000"}, {"1000000001"})};
}

std::vector<Range> controlPanel() {
    return {real("sigma_start", {"0.1", "100"}, {"0", "0.09", "100.1"}),
            real("sigma_step", {"0", "0.1", "10"}, {"0.09", "10.1"}),
            threshold("binary_threshold"),
            real("area_threshold", {"0", "1e6"}, {"1e6001"}),
            real("length_threshold", {"0", "1e6"}, {"1000000.1"}),
            whole("hist_resolution", {"1", "36000"}, {"0", "36001"}),
            flag("alignment"),
            flag("debug/show_images"),
            flag("debug/save_images")};
}

std::vector<Range> alignment() {
    const std::string histogram = "find_alignment_angle/compute_weighted_angle_histogram";
    const std::string lines = histogram + "/probabilistic_hough_line";
    const std::string best = "find_alignment_angle/find_best_alignment_angle_from_histogram";
    return {whole(histogram + "/resolution", {"1", "36000"}, {"0", "36001"}),
            real(histogram + "/canny/sigma", {"0.1", "100"}, {"0", "100.1"}),
            whole(lines + "/threshold", {"0", "1000000000"}, {"1000000001"}),
            real(lines + "/line_length", {"0", "1e6"}, {"1000000.1"}),
            real(lines + "/line_gap", {"0", "1e6"}, {"1000000.1"}),
            whole(best + "/window_half_size", {"0", "36000"}, {"36001"}),
            whole(best + "/resolution", {"1", "36000"}, {"0", "36001"})};
}

std::vector<Range> stages() {
    const std::string seeds = "over_segment/generate_map_initial_seeds";
    return {
        whole("dilate_binary/kernel_size", {"1", "101"}, {"0", "102"}),
        whole("dilate_binary/iterations", {"0", "100"}, {"101"}),
        {"generate_ridge_map_meijering/mode",
         {"reflect", "mirror", "constant", "nearest"},
         {"wrap", "Reflect", "", "~", "1"}},
        {"generate_ridge_map_meijering/sigmas",
         {"[0.1]", "[50]", "[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16]"},
         {"[]", "", "2.0", "[0]", "[-1]", "[50.1]", "[.nan]", "[.inf]", "[a]", "[[1]]", "[~]",
          "[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17]"}},
        real("compute_labels_list/sigma_start", {"0.1", "100"}, {"0", "0.09", "100.1"}),
        real("compute_labels_list/sigma_step", {"0", "0.1", "10"}, {"0.09", "10.1"}),
        whole("compute_labels_list/max_iter", {"2", "1000"}, {"0", "1", "1001"}),
        whole("compute_labels_list/background_erosion_kernel_size", {"1", "101"}, {"0", "102"}),
        real("compute_labels_list/generate_gaussian_seeds_skimage/threshold", {"0", "0.5"},
             {"0.51", "1"}),
        connectivity("compute_labels_list/create_watershed_segment_skimage/connectivity"),
        {seeds + "/method",
         {"start", "end", "middle", "weighted"},
         {"Start", "median", "", "~", "[start]"}},
        {seeds + "/weights",
         {"{start: 0, end: 0}", "{start: 1000}", "{end: 1000}", "{}"},
         {"{start: -1}", "{end: 1001}", "{start: 1.5}", "{start: ~}", "{middle: 1}",
          "{start: 1, start: 1}", "{[1]: 1}", "[1, 1]", "3", "", "~"}},
        whole(seeds + "/filter_threshold", {"0", "1000"}, {"1001"}),
        connectivity("over_segment/create_watershed_segment_skimage/connectivity"),
        real("merge_nodes_in_place/area_threshold", {"0", "1e6"}, {"1000000.1"}),
        real("merge_edges_in_place/length_threshold", {"0", "1e6"}, {"1000000.1"}),
        real("rooms/simplify", {"0", "0.05", "10"}, {"10.1"}),
        flag("rooms/straight_borders"),
        {"rooms/blocks", {"auto", "always"}, {"", "~", "never", "Auto", "1"}},
        whole("rooms/block_pixels", {"40000", "64000000"}, {"0", "39999", "64000001"}),
        {"rooms/merging", {"passages", "passes"}, {"", "~", "none", "Passes", "1"}},
        real("rooms/open_ratio", {"0", "1"}, {"1.01"}),
        real("rooms/narrow_ratio", {"0", "1"}, {"1.01"}),
        real("rooms/narrow_passage", {"0", "1e6"}, {"1000000.1"}),
        real("rooms/least_area", {"0", "1e6"}, {"1000000.1"}),
        flag("rooms/doorways"),
        flag("rooms/corridors"),
        real("rooms/widest_doorway", {"0", "1e6"}, {"1000000.1"}),
        real("rooms/jamb", {"0", "1e6"}, {"1000000.1"}),
        range("rooms/detail", {"-2", "0", "1.5", "2"}, {"-2.1", "2.1", ".nan", ".inf"}),
        flag("rooms/clear_clutter"),
        real("rooms/loose_part", {"0", "1e6"}, {"1000000.1"}),
        real("rooms/loose_block", {"0", "1e6"}, {"1000000.1"}),
        real("rooms/wall_line", {"0", "1"}, {"1.01"}),
        real("rooms/closed_floor", {"0", "1e6"}, {"1000000.1"}),
    };
}

std::vector<Range> allRanges() {
    std::vector<Range> all;
    for (const std::vector<Range>& part :
         {controlPanel(), denoising("find_alignment_angle"), alignment(),
          denoising("generate_denoised_alone"), stages()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

std::string testName(const ::testing::TestParamInfo<Range>& info) {
    std::string name = info.param.key;
    for (char& letter : name) {
        if (letter == '/') letter = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Key, SettingRanges, ::testing::ValuesIn(allRanges()), testName);

TEST_F(DefaultYaml, HoldsNoKeyWhoseRangeIsUntested) {
    std::set<std::string> tested;
    for (const Range& range : allRanges()) tested.insert(range.key);
    for (const Keys& path : keysOf(YAML::LoadFile(VORUND_DEFAULT_YAML))) {
        std::string key = path.front();
        for (auto next = path.begin() + 1; next != path.end(); ++next) key += "/" + *next;
        EXPECT_EQ(tested.count(key), 1U) << key;
    }
}

}  // namespace
}  // namespace vorund::rooms
