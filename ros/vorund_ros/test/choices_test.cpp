#include "choices.h"

#include <gmock/gmock.h>

#include "drawn_maps.h"

namespace vorund_ros {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;
using vorund::rooms::SettingError;
using XmlRpc::XmlRpcValue;

struct Read {
    Choices choices;
    std::vector<std::string> warnings;
};

Read read(XmlRpcValue& parameters) {
    Read result;
    result.choices = readChoices(parameters, result.warnings);
    return result;
}

XmlRpcValue noParameters() {
    XmlRpcValue parameters;
    parameters["live"]["least_area"] = 5.0;
    parameters["diagnostic_period"] = 1.0;
    parameters["save_path"] = "x";
    return parameters;
}

TEST(ReadChoices, GivesTheDefaultsWithoutParameters) {
    XmlRpcValue none;
    EXPECT_EQ(read(none).choices.text(), Choices{}.text());
    XmlRpcValue others = noParameters();
    const Read result = read(others);
    EXPECT_EQ(result.choices.text(), Choices{}.text());
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST(ReadChoices, TakesEveryKeyAsAParameter) {
    // Every setting that changes something, changed; as parameters it must read back.
    vorund::rooms::Settings other;
    other.core.merge_edges_in_place.length_threshold = 3.5;
    other.core.over_segment.generate_map_initial_seeds.weights = {{"start", 3}, {"end", 4}};
    other.core.over_segment.generate_map_initial_seeds.method = "weighted";
    other.core.generate_ridge_map_meijering.sigmas = {1.5, 2.5};
    other.core.generate_denoised_alone.binary_make_binary.threshold = 0.25;
    other.rooms.straight_borders = true;

    XmlRpcValue parameters;
    parameters["merge_edges_in_place"]["length_threshold"] = 3.5;
    XmlRpcValue& seeds = parameters["over_segment"]["generate_map_initial_seeds"];
    seeds["weights"]["start"] = 3;
    seeds["weights"]["end"] = 4;
    seeds["method"] = "weighted";
    parameters["generate_ridge_map_meijering"]["sigmas"][0] = 1.5;
    parameters["generate_ridge_map_meijering"]["sigmas"][1] = 2.5;
    parameters["generate_denoised_alone"]["binary"]["make_binary"]["threshold"] = 0.25;
    parameters["rooms"]["straight_borders"] = true;
    const Read result = read(parameters);
    EXPECT_EQ(vorund::rooms::settingsAsYaml(result.choices.settings),
              vorund::rooms::settingsAsYaml(other));
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST(ReadChoices, TakesAKeyWithASlashInItAsAFileHasIt) {
    XmlRpcValue parameters;
    parameters["generate_denoised_alone"]["binary/make_binary"]["threshold"] = 0.25;
    EXPECT_DOUBLE_EQ(
        read(parameters).choices.settings.core.generate_denoised_alone.binary_make_binary.threshold,
        0.25);
}

TEST(ReadChoices, LetsParametersWinOverTheFile) {
    const test::TempDir folder;
    test::writeFile(folder / "settings.yaml",
                    "merge_nodes_in_place: {area_threshold: 7.0}\n"
                    "merge_edges_in_place: {length_threshold: 8.0}\n");
    XmlRpcValue parameters;
    parameters["config"] = folder / "settings.yaml";
    parameters["merge_edges_in_place"]["length_threshold"] = 9;
    const auto core = read(parameters).choices.settings.core;
    EXPECT_DOUBLE_EQ(core.merge_nodes_in_place.area_threshold, 7.0);
    EXPECT_DOUBLE_EQ(core.merge_edges_in_place.length_threshold, 9.0);
}

TEST(ReadChoices, TellsAllFaultsInOneLine) {
    XmlRpcValue parameters;
    parameters["dilate_binary"]["iterations"] = -1;
    parameters["merge_nodes_in_place"]["area_threshold"] = "large";
    parameters["occupied_threshold"] = 0;
    EXPECT_THAT([&] { read(parameters); },
                ThrowsMessage<SettingError>(::testing::AllOf(
                    StartsWith("~dilate_binary/iterations: is -1 (permitted: "),
                    HasSubstr("; ~merge_nodes_in_place/area_threshold: is large (permitted: "),
                    HasSubstr("; ~occupied_threshold: is 0 (permitted: a whole number from 1 to "
                              "100)"))));
}

TEST(ReadChoices, NamesAFileThatCannotBeRead) {
    XmlRpcValue parameters;
    parameters["config"] = "/nowhere/settings.yaml";
    EXPECT_THAT([&] { read(parameters); },
                ThrowsMessage<SettingError>(StartsWith("/nowhere/settings.yaml: ")));
}

TEST(ReadChoices, WarnsOfParametersThatNobodyReads) {
    XmlRpcValue parameters;
    parameters["merge_edges_in_place"]["lenght_threshold"] = 1.0;
    parameters["speed"] = 3;
    EXPECT_THAT(read(parameters).warnings,
                ElementsAre("~merge_edges_in_place/lenght_threshold: no such parameter, not read",
                            "~speed: no such parameter, not read"));
}

TEST(ToYaml, QuotesTextSoThatItStaysText) {
    XmlRpcValue text("a \"b\": {c}\n");
    EXPECT_EQ(toYaml(text), R"("a \"b\": {c}\n")");
    XmlRpcValue number(0.1);
    EXPECT_EQ(toYaml(number), "0.10000000000000001");
    XmlRpcValue flag(false);
    EXPECT_EQ(toYaml(flag), "false");
}

TEST(Choices, DifferInTextForWhateverDiffers) {
    Choices other;
    other.occupied_threshold = 51;
    EXPECT_NE(other.text(), Choices{}.text());
    other = {};
    other.settings.rooms.simplify = 0.5;
    EXPECT_NE(other.text(), Choices{}.text());
}

}  // namespace
}  // namespace vorund_ros
