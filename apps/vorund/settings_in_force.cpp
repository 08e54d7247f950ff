#include "settings_in_force.h"

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

    rooms::Settings settings;
    std::vector<std::string> warnings;
    if (!arguments.file.empty()) warnings = rooms::loadSettings(arguments.file, settings);
    const std::vector<std::string> more = applyAll(arguments.sets, settings);
    warnings.insert(warnings.end(), more.begin(), more.end());
    for (const std::string& warning : warnings) terminal.warn(warning);
    return settings;
}

}  // namespace vorund::app
