#include "settings_in_force.h"

#include "presets.h"
#include "vorund/rooms/settings.h"

namespace vorund::app {
namespace {

std::vector<std::string> applyAll(const std::vector<std::string>& sets, rooms::Settings& settings) {
    std::vector<std::string> warnings;
    for (const std::string& set : sets) {
        try {
            for (const std::string& warning : rooms::applySetting(set, settings)) {
                warnings.push_back("--set: " + warning);
            }
        } catch (const rooms::SettingError& error) {
            throw UsageError(std::string("--set: ") + error.what());
        }
    }
    return warnings;
}

}  // namespace

rooms::Settings settingsInForce(const SettingsArguments& arguments, Terminal& terminal) {
    rooms::Settings tried;
    applyAll(arguments.sets, tried);  // Wrong usage is told before any file is looked at.

    std::vector<std::string> files;
    if (!arguments.preset.empty()) files.push_back(presetFile(arguments.preset));
    if (!arguments.file.empty()) files.push_back(arguments.file);

    rooms::Settings settings;
    std::vector<std::string> warnings;
    const auto keep = [&](const std::vector<std::string>& more) {
        warnings.insert(warnings.end(), more.begin(), more.end());
    };
    for (const std::string& file : files) keep(rooms::loadSettings(file, settings));
    keep(applyAll(arguments.sets, settings));
    for (const std::string& warning : warnings) terminal.warn(warning);
    return settings;
}

}  // namespace vorund::app
