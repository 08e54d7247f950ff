#include "vorund/config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/captures.h"

namespace vorund {
namespace {

using test::ConsoleCapture;
using test::ConsoleLine;
using test::TempDir;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Pair;

/// Every key of the file, each with a value that is not its default.
constexpr char kEveryKey[] = R"(sigma_start: 1.25
sigma_step: 0.5
binary_threshold: 0.75
area_threshold: 3.5
length_threshold: 4.5
hist_resolution: 90
alignment: true
debug:
  show_images: true
  save_images: true
find_alignment_angle:
  binary_for_crop/make_binary:
    threshold: 0.11
  crop_single_info:
    padding: 11
  binary/make_binary:
    threshold: 0.12
  components_out/remove_small_connected_components:
    method: mean
    connectivity: 8
  components_in/remove_small_connected_components:
    method: median
    min_size: 12
  rank/make_binary:
    threshold: 0.13
  compute_weighted_angle_histogram:
    resolution: 45
    canny:
      sigma: 2.5
    probabilistic_hough_line:
      threshold: 13
      line_length: 14.5
      line_gap: 1.5
  find_best_alignment_angle_from_histogram:
    window_half_size: 7
    resolution: 60
generate_denoised_alone:
  binary_for_crop/make_binary:
    threshold: 0.21
  crop_single_info:
    padding: 21
  binary/make_binary:
    threshold: 0.22
  components_out/remove_small_connected_components:
    method: median
    connectivity: 8
  components_in/remove_small_connected_components:
    method: mean
    min_size: 22
  rank/make_binary:
    threshold: 0.23
dilate_binary:
  kernel_size: 5
  iterations: 2
generate_ridge_map_meijering:
  mode: mirror
  sigmas: [0.5, 3, 4.25]
compute_labels_list:
  sigma_start: 0.25
  sigma_step: 0.125
  max_iter: 31
  background_erosion_kernel_size: 9
  generate_gaussian_seeds_skimage:
    threshold: 0.31
  create_watershed_segment_skimage:
    connectivity: 8
over_segment:
  generate_map_initial_seeds:
    method: weighted
    weights:
      start: 5
      end: 6
    filter_threshold: 41
  create_watershed_segment_skimage:
    connectivity: 8
merge_nodes_in_place:
  area_threshold: 5.5
merge_edges_in_place:
  length_threshold: 6.5
)";

/// What is printed for `kEveryKey`: the filter threshold comes before the weights, and the weights
/// in the order of the file.
const std::vector<std::string> kLinesOfEveryKey = {
    "[Config] # Control Panel",
    "[Config] sigma_start: 1.250000",
    "[Config] sigma_step: 0.500000",
    "[Config] binary_threshold: 0.750000",
    "[Config] area_threshold: 3.500000",
    "[Config] length_threshold: 4.500000",
    "[Config] hist_resolution: 90",
    "[Config] alignment: 1",
    "[Config] debug:",
    "[Config]   show_images: 1",
    "[Config]   save_images: 1",
    "[Config] # Detailed Settings",
    "[Config] find_alignment_angle:",
    "[Config]   binary_for_crop/make_binary:",
    "[Config]     threshold: 0.110000",
    "[Config]   crop_single_info:",
    "[Config]     padding: 11",
    "[Config]   binary/make_binary:",
    "[Config]     threshold: 0.120000",
    "[Config]   components_out/remove_small_connected_components:",
    "[Config]     method: mean",
    "[Config]     connectivity: 8",
    "[Config]   components_in/remove_small_connected_components:",
    "[Config]     method: median",
    "[Config]     min_size: 12",
    "[Config]   rank/make_binary:",
    "[Config]     threshold: 0.130000",
    "[Config]   compute_weighted_angle_histogram:",
    "[Config]     resolution: 45",
    "[Config]     canny:",
    "[Config]       sigma: 2.500000",
    "[Config]     probabilistic_hough_line:",
    "[Config]       threshold: 13",
    "[Config]       line_length: 14.500000",
    "[Config]       line_gap: 1.500000",
    "[Config]   find_best_alignment_angle_from_histogram:",
    "[Config]     window_half_size: 7",
    "[Config]     resolution: 60",
    "[Config] generate_denoised_alone:",
    "[Config]   binary_for_crop/make_binary:",
    "[Config]     threshold: 0.210000",
    "[Config]   crop_single_info:",
    "[Config]     padding: 21",
    "[Config]   binary/make_binary:",
    "[Config]     threshold: 0.220000",
    "[Config]   components_out/remove_small_connected_components:",
    "[Config]     method: median",
    "[Config]     connectivity: 8",
    "[Config]   components_in/remove_small_connected_components:",
    "[Config]     method: mean",
    "[Config]     min_size: 22",
    "[Config]   rank/make_binary:",
    "[Config]     threshold: 0.230000",
    "[Config] dilate_binary:",
    "[Config]   kernel_size: 5",
    "[Config]   iterations: 2",
    "[Config] generate_ridge_map_meijering:",
    "[Config]   mode: mirror",
    "[Config]   sigmas:",
    "[Config]     - 0.500000",
    "[Config]     - 3.000000",
    "[Config]     - 4.250000",
    "[Config] compute_labels_list:",
    "[Config]   sigma_start: 0.250000",
    "[Config]   sigma_step: 0.125000",
    "[Config]   max_iter: 31",
    "[Config]   background_erosion_kernel_size: 9",
    "[Config]   generate_gaussian_seeds_skimage:",
    "[Config]     threshold: 0.310000",
    "[Config]   create_watershed_segment_skimage:",
    "[Config]     connectivity: 8",
    "[Config] over_segment:",
    "[Config]   generate_map_initial_seeds:",
    "[Config]     method: weighted",
    "[Config]     filter_threshold: 41",
    "[Config]     weights:",
    "[Config]       start: 5",
    "[Config]       end: 6",
    "[Config]   create_watershed_segment_skimage:",
    "[Config]     connectivity: 8",
    "[Config] merge_nodes_in_place:",
    "[Config]   area_threshold: 5.500000",
    "[Config] merge_edges_in_place:",
    "[Config]   length_threshold: 6.500000"};

/// The headings alone: what is printed for a file that names no group.
const std::vector<std::string> kHeadings = {
    "[Config] find_alignment_angle:",
    "[Config]   binary_for_crop/make_binary:",
    "[Config]   crop_single_info:",
    "[Config]   binary/make_binary:",
    "[Config]   components_out/remove_small_connected_components:",
    "[Config]   components_in/remove_small_connected_components:",
    "[Config]   rank/make_binary:",
    "[Config]   compute_weighted_angle_histogram:",
    "[Config]     canny:",
    "[Config]     probabilistic_hough_line:",
    "[Config]   find_best_alignment_angle_from_histogram:",
    "[Config] generate_denoised_alone:",
    "[Config]   binary_for_crop/make_binary:",
    "[Config]   crop_single_info:",
    "[Config]   binary/make_binary:",
    "[Config]   components_out/remove_small_connected_components:",
    "[Config]   components_in/remove_small_connected_components:",
    "[Config]   rank/make_binary:",
    "[Config] dilate_binary:",
    "[Config] generate_ridge_map_meijering:",
    "[Config] compute_labels_list:",
    "[Config]   generate_gaussian_seeds_skimage:",
    "[Config]   create_watershed_segment_skimage:",
    "[Config] over_segment:",
    "[Config]   generate_map_initial_seeds:",
    "[Config]   create_watershed_segment_skimage:",
    "[Config] merge_nodes_in_place:",
    "[Config] merge_edges_in_place:"};

/// A configuration in which every field was loaded from `kEveryKey`.
Config loadedFromEveryKey() {
    const TempDir dir;
    const ConsoleCapture console;
    Config config;
    EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", kEveryKey)));
    return config;
}

/// Whether the text loads into `config`; nothing of what it logs reaches the terminal.
bool load(Config& config, const std::string& yaml) {
    const TempDir dir;
    const ConsoleCapture console;
    return config.loadFromYaml(dir.write("config.yaml", yaml));
}

/// One text of all lines: GoogleTest prints where two such texts differ.
std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

/// The values that a configuration holds, as the lines that loading an empty group would print:
/// one group of the file after the other, all keys of which are missing.
std::vector<std::string> valuesOf(Config config) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::string skeleton =
        "debug: {}\n"
        "find_alignment_angle: {binary_for_crop/make_binary: {}, crop_single_info: {},\n"
        "  binary/make_binary: {}, components_out/remove_small_connected_components: {},\n"
        "  components_in/remove_small_connected_components: {}, rank/make_binary: {},\n"
        "  compute_weighted_angle_histogram: {canny: {}, probabilistic_hough_line: {}},\n"
        "  find_best_alignment_angle_from_histogram: {}}\n"
        "generate_denoised_alone: {binary_for_crop/make_binary: {}, crop_single_info: {},\n"
        "  binary/make_binary: {}, components_out/remove_small_connected_components: {},\n"
        "  components_in/remove_small_connected_components: {}, rank/make_binary: {}}\n"
        "dilate_binary: {}\n"
        "generate_ridge_map_meijering: {}\n"
        "compute_labels_list: {generate_gaussian_seeds_skimage: {},\n"
        "  create_watershed_segment_skimage: {}}\n"
        "over_segment: {generate_map_initial_seeds: {}, create_watershed_segment_skimage: {}}\n"
        "merge_nodes_in_place: {}\n"
        "merge_edges_in_place: {}\n";
    EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", skeleton)));
    return console.texts("INFO");
}

TEST(ConfigLoadFromYaml, ReadsTheControlPanel) {
    const Config config = loadedFromEveryKey();
    EXPECT_EQ(config.sigma_start, 1.25);
    EXPECT_EQ(config.sigma_step, 0.5);
    EXPECT_EQ(config.binary_threshold, 0.75);
    EXPECT_EQ(config.area_threshold, 3.5);
    EXPECT_EQ(config.length_threshold, 4.5);
    EXPECT_EQ(config.hist_resolution, 90);
    EXPECT_TRUE(config.alignment);
    EXPECT_TRUE(config.debug.show_images);
    EXPECT_TRUE(config.debug.save_images);
}

TEST(ConfigLoadFromYaml, ReadsTheAlignmentGroup) {
    const Config::FindAlignmentAngleConfig group = loadedFromEveryKey().find_alignment_angle;
    EXPECT_EQ(group.binary_for_crop_make_binary.threshold, 0.11);
    EXPECT_EQ(group.crop_single_info.padding, 11);
    EXPECT_EQ(group.binary_make_binary.threshold, 0.12);
    EXPECT_EQ(group.components_out_remove_small_connected_components.method, "mean");
    EXPECT_EQ(group.components_out_remove_small_connected_components.connectivity, 8);
    EXPECT_EQ(group.components_in_remove_small_connected_components.method, "median");
    EXPECT_EQ(group.components_in_remove_small_connected_components.min_size, 12);
    EXPECT_EQ(group.rank_make_binary.threshold, 0.13);
    EXPECT_EQ(group.compute_weighted_angle_histogram.resolution, 45);
    EXPECT_EQ(group.compute_weighted_angle_histogram.canny.sigma, 2.5);
    const auto& lines = group.compute_weighted_angle_histogram.probabilistic_hough_line;
    EXPECT_EQ(lines.threshold, 13);
    EXPECT_EQ(lines.line_length, 14.5);
    EXPECT_EQ(lines.line_gap, 1.5);
    EXPECT_EQ(group.find_best_alignment_angle_from_histogram.window_half_size, 7);
    EXPECT_EQ(group.find_best_alignment_angle_from_histogram.resolution, 60);
}

TEST(ConfigLoadFromYaml, ReadsTheDenoisingGroup) {
    const Config::GenerateDenoisedAloneConfig group = loadedFromEveryKey().generate_denoised_alone;
    EXPECT_EQ(group.binary_for_crop_make_binary.threshold, 0.21);
    EXPECT_EQ(group.crop_single_info.padding, 21);
    EXPECT_EQ(group.binary_make_binary.threshold, 0.22);
    EXPECT_EQ(group.components_out_remove_small_connected_components.method, "median");
    EXPECT_EQ(group.components_out_remove_small_connected_components.connectivity, 8);
    EXPECT_EQ(group.components_in_remove_small_connected_components.method, "mean");
    EXPECT_EQ(group.components_in_remove_small_connected_components.min_size, 22);
    EXPECT_EQ(group.rank_make_binary.threshold, 0.23);
}

TEST(ConfigLoadFromYaml, ReadsTheOtherStages) {
    const Config config = loadedFromEveryKey();
    EXPECT_EQ(config.dilate_binary.kernel_size, 5);
    EXPECT_EQ(config.dilate_binary.iterations, 2);
    EXPECT_EQ(config.generate_ridge_map_meijering.mode, "mirror");
    EXPECT_THAT(config.generate_ridge_map_meijering.sigmas, ElementsAre(0.5, 3.0, 4.25));
    EXPECT_EQ(config.compute_labels_list.sigma_start, 0.25);
    EXPECT_EQ(config.compute_labels_list.sigma_step, 0.125);
    EXPECT_EQ(config.compute_labels_list.max_iter, 31);
    EXPECT_EQ(config.compute_labels_list.background_erosion_kernel_size, 9);
    EXPECT_EQ(config.compute_labels_list.generate_gaussian_seeds_skimage.threshold, 0.31);
    EXPECT_EQ(config.compute_labels_list.create_watershed_segment_skimage.connectivity, 8);
    EXPECT_EQ(config.over_segment.generate_map_initial_seeds.method, "weighted");
    EXPECT_THAT(config.over_segment.generate_map_initial_seeds.weights,
                ElementsAre(Pair("end", 6), Pair("start", 5)));
    EXPECT_EQ(config.over_segment.generate_map_initial_seeds.filter_threshold, 41);
    EXPECT_EQ(config.over_segment.create_watershed_segment_skimage.connectivity, 8);
    EXPECT_EQ(config.merge_nodes_in_place.area_threshold, 5.5);
    EXPECT_EQ(config.merge_edges_in_place.length_threshold, 6.5);
}

TEST(ConfigLoadFromYaml, PrintsEveryValueInOrder) {
    const TempDir dir;
    const ConsoleCapture console;
    Config config;
    EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", kEveryKey)));
    EXPECT_EQ(joined(console.texts()), joined(kLinesOfEveryKey));
    EXPECT_THAT(console.lines(), Each(Field(&ConsoleLine::level, "INFO")));
}

TEST(ConfigLoadFromYaml, PrintsAllHeadingsAndTheControlPanelOfAnEmptyFile) {
    for (const std::string yaml : {"", "# nothing\n", "{}\n"}) {
        const TempDir dir;
        const ConsoleCapture console;
        Config config;
        config.alignment = true;
        EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", yaml)));
        std::vector<std::string> expected = {"[Config] # Control Panel",
                                             "[Config] sigma_start: 1.000000",
                                             "[Config] sigma_step: 1.000000",
                                             "[Config] binary_threshold: 0.100000",
                                             "[Config] area_threshold: 1.000000",
                                             "[Config] length_threshold: 2.000000",
                                             "[Config] hist_resolution: 180",
                                             "[Config] alignment: 1",
                                             "[Config] debug:",
                                             "[Config] # Detailed Settings"};
        expected.insert(expected.end(), kHeadings.begin(), kHeadings.end());
        EXPECT_EQ(joined(console.texts()), joined(expected)) << yaml;
        EXPECT_THAT(console.lines(), Each(Field(&ConsoleLine::level, "INFO"))) << yaml;
    }
}

TEST(ConfigLoadFromYaml, KeepsEveryFieldThatTheFileDoesNotName) {
    const Config before = loadedFromEveryKey();
    for (const std::string yaml : {"", "{}", "other_program: {key: 1}\n", "- 1\n- 2\n"}) {
        Config config = before;
        load(config, yaml);
        EXPECT_EQ(joined(valuesOf(config)), joined(valuesOf(before))) << yaml;
    }
    // That comparison sees a field that changes.
    Config changed = before;
    changed.merge_edges_in_place.length_threshold = 9.0;
    EXPECT_NE(valuesOf(changed), valuesOf(before));
}

TEST(ConfigLoadFromYaml, KeepsAMissingGroupAndReadsTheOthers) {
    Config config;
    config.dilate_binary.kernel_size = 77;
    EXPECT_TRUE(load(config, "sigma_step: 2.5\nmerge_edges_in_place: {length_threshold: 7}\n"));
    EXPECT_EQ(config.dilate_binary.kernel_size, 77);
    EXPECT_EQ(config.sigma_step, 2.5);
    EXPECT_EQ(config.merge_edges_in_place.length_threshold, 7.0);
}

TEST(ConfigLoadFromYaml, KeepsAMissingKeyOfAGroupAndPrintsItsValue) {
    const TempDir dir;
    const ConsoleCapture console;
    Config config;
    config.dilate_binary.iterations = 77;
    EXPECT_TRUE(config.loadFromYaml(dir.write("config.yaml", "dilate_binary: {kernel_size: 9}\n")));
    EXPECT_EQ(config.dilate_binary.kernel_size, 9);
    EXPECT_EQ(config.dilate_binary.iterations, 77);
    EXPECT_THAT(console.texts(),
                testing::IsSupersetOf({"[Config]   kernel_size: 9", "[Config]   iterations: 77"}));
}

TEST(ConfigLoadFromYaml, KeepsWhatIsNullAndWarnsOfNothing) {
    const Config before = loadedFromEveryKey();
    Config config = before;
    const TempDir dir;
    const ConsoleCapture console;
    EXPECT_TRUE(config.loadFromYaml(
        dir.write("config.yaml",
                  "sigma_start: ~\nalignment:\nhist_resolution: null\n"
                  "debug:\nfind_alignment_angle: ~\n"
                  "generate_denoised_alone:\n  crop_single_info:\n"
                  "dilate_binary: {kernel_size: ~, iterations: }\n"
                  "generate_ridge_map_meijering: {mode: ~, sigmas: ~}\n"
                  "over_segment: {generate_map_initial_seeds: {weights: ~}}\n")));
    EXPECT_THAT(console.texts("WARN"), IsEmpty());
    EXPECT_THAT(console.texts("ERROR"), IsEmpty());
    EXPECT_EQ(joined(valuesOf(config)), joined(valuesOf(before)));
    EXPECT_THAT(config.over_segment.generate_map_initial_seeds.weights,
                ElementsAre(Pair("end", 6), Pair("start", 5)));
}

TEST(ConfigLoadFromYaml, IgnoresAnUnreadFieldOfEachComponentsGroup) {
    Config config;
    const Config defaults;
    const std::string all =
        "  components_out/remove_small_connected_components:\n"
        "    {method: mean, connectivity: 77, min_size: 77}\n"
        "  components_in/remove_small_connected_components:\n"
        "    {method: median, connectivity: 77, min_size: 78}\n";
    EXPECT_TRUE(load(config, "find_alignment_angle:\n" + all + "generate_denoised_alone:\n" + all));
    const auto check = [](const auto& group, const auto& group_default) {
        const auto& out = group.components_out_remove_small_connected_components;
        EXPECT_EQ(out.method, "mean");
        EXPECT_EQ(out.connectivity, 77);
        EXPECT_EQ(out.min_size,
                  group_default.components_out_remove_small_connected_components.min_size);
        const auto& in = group.components_in_remove_small_connected_components;
        EXPECT_EQ(in.method, "median");
        EXPECT_EQ(in.min_size, 78);
        EXPECT_EQ(in.connectivity,
                  group_default.components_in_remove_small_connected_components.connectivity);
    };
    check(config.find_alignment_angle, defaults.find_alignment_angle);
    check(config.generate_denoised_alone, defaults.generate_denoised_alone);
}

TEST(ConfigLoadFromYaml, TakesASlashAsPartOfAKey) {
    Config config;
    config.generate_denoised_alone.binary_for_crop_make_binary.threshold = 0.625;
    EXPECT_TRUE(load(config,
                     "generate_denoised_alone:\n  binary_for_crop:\n    make_binary:\n"
                     "      threshold: 0.3\n"));
    EXPECT_EQ(config.generate_denoised_alone.binary_for_crop_make_binary.threshold, 0.625);
}

TEST(ConfigLoadFromYaml, ReplacesTheSigmasAsAWhole) {
    Config config;
    EXPECT_TRUE(load(config, "generate_ridge_map_meijering: {sigmas: [1, 2, 3]}\n"));
    EXPECT_TRUE(load(config, "generate_ridge_map_meijering: {sigmas: [0.25]}\n"));
    EXPECT_THAT(config.generate_ridge_map_meijering.sigmas, ElementsAre(0.25));
    EXPECT_TRUE(load(config, "generate_ridge_map_meijering: {sigmas: []}\n"));
    EXPECT_THAT(config.generate_ridge_map_meijering.sigmas, IsEmpty());
}

TEST(ConfigLoadFromYaml, ReplacesWeightsByNameAndKeepsTheOthers) {
    Config config;
    config.over_segment.generate_map_initial_seeds.weights = {{"start", 1}, {"end", 2}};
    EXPECT_TRUE(load(
        config, "over_segment: {generate_map_initial_seeds: {weights: {middle: 7, end: 9}}}\n"));
    EXPECT_THAT(config.over_segment.generate_map_initial_seeds.weights,
                ElementsAre(Pair("end", 9), Pair("middle", 7), Pair("start", 1)));
}

TEST(ConfigLoadFromYaml, PrintsTheWeightsThatTheFileNamesOnly) {
    const TempDir dir;
    const ConsoleCapture console;
    Config config;
    config.over_segment.generate_map_initial_seeds.weights = {{"start", 1}, {"end", 2}};
    EXPECT_TRUE(config.loadFromYaml(dir.write(
        "config.yaml", "over_segment: {generate_map_initial_seeds: {weights: {middle: 7}}}\n")));
    const std::string weight_indentation = "[Config]       ";
    std::vector<std::string> weights;
    for (const std::string& text : console.texts()) {
        if (text.rfind(weight_indentation, 0) == 0) weights.push_back(text);
    }
    EXPECT_THAT(weights, ElementsAre("[Config]       middle: 7"));
}

TEST(Config, CopiesMemberWise) {
    const Config config = loadedFromEveryKey();
    const Config copy(config);
    EXPECT_EQ(valuesOf(copy), valuesOf(config));
    EXPECT_EQ(copy.over_segment.generate_map_initial_seeds.weights,
              config.over_segment.generate_map_initial_seeds.weights);
}

}  // namespace
}  // namespace vorund
