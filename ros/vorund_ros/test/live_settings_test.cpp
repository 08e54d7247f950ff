#include "live_settings.h"

#include <gmock/gmock.h>
#include <yaml-cpp/yaml.h>

#include "drawn_maps.h"

namespace vorund_ros {
namespace {

/// Applies the live values and loads the settings back from YAML, which refuses what is not
/// permitted.
void expectPermitted(const LiveSettingsConfig& live) {
    Choices choices;
    applyLive(live, choices);
    const test::TempDir folder;
    test::writeFile(folder / "settings.yaml", vorund::rooms::settingsAsYaml(choices.settings));
    vorund::rooms::Settings settings;
    EXPECT_NO_THROW(vorund::rooms::loadSettings(folder / "settings.yaml", settings));
}

TEST(LiveSettings, HaveTheDefaultsOfTheLibrary) {
    Choices choices;
    applyLive(LiveSettingsConfig::__getDefault__(), choices);
    EXPECT_EQ(choices.text(), Choices{}.text());
}

TEST(LiveSettings, StayWithinWhatIsPermitted) {
    expectPermitted(LiveSettingsConfig::__getMin__());
    expectPermitted(LiveSettingsConfig::__getMax__());
}

TEST(LiveSettings, ChangeWhatTheyAreNamedAfter) {
    LiveSettingsConfig live = LiveSettingsConfig::__getDefault__();
    live.occupied_threshold = 66;
    live.min_size = 1;
    live.seed_threshold = 0.2;
    live.detail = -1.5;
    live.open_ratio = 0.3;
    live.narrow_ratio = 0.4;
    live.least_area = 4.0;
    live.loose_part = 5.0;
    live.straight_borders = true;
    live.simplify = 0.6;
    Choices choices;
    applyLive(live, choices);
    const YAML::Node yaml = YAML::Load(vorund::rooms::settingsAsYaml(choices.settings));
    EXPECT_EQ(choices.occupied_threshold, 66);
    EXPECT_EQ(yaml["generate_denoised_alone"]["components_in/remove_small_connected_components"]
                  ["min_size"]
                      .as<int>(),
              1);
    EXPECT_DOUBLE_EQ(
        yaml["compute_labels_list"]["generate_gaussian_seeds_skimage"]["threshold"].as<double>(),
        0.2);
    EXPECT_DOUBLE_EQ(yaml["rooms"]["detail"].as<double>(), -1.5);
    EXPECT_DOUBLE_EQ(yaml["rooms"]["open_ratio"].as<double>(), 0.3);
    EXPECT_DOUBLE_EQ(yaml["rooms"]["narrow_ratio"].as<double>(), 0.4);
    EXPECT_DOUBLE_EQ(yaml["rooms"]["least_area"].as<double>(), 4.0);
    EXPECT_DOUBLE_EQ(yaml["rooms"]["loose_part"].as<double>(), 5.0);
    EXPECT_TRUE(yaml["rooms"]["straight_borders"].as<bool>());
    EXPECT_DOUBLE_EQ(yaml["rooms"]["simplify"].as<double>(), 0.6);
}

TEST(LiveSettings, StartFromTheChoicesInForce) {
    Choices choices;
    choices.occupied_threshold = 77;
    choices.settings.rooms.least_area = 2.5;
    Choices back;
    applyLive(toLive(choices), back);
    EXPECT_EQ(back.text(), choices.text());
}

}  // namespace
}  // namespace vorund_ros
