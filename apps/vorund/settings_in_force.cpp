#include "settings_in_force.h"

#include "vorund/rooms/settings.h"

namespace vorund::app {
namespace {

std::vector<std::string> applyAll(const std::vector<std::string>& sets, Config& config) {
    std::vector<std::string> warnings;
    for (const std::string& set : sets) {
        try {
            for (const std::string& warning : rooms::applySetting(set, config)) {
                warnings.push_back("--set: " + warning);
            }
        } catch (const rooms::SettingError& error) {
            throw UsageError(std::string("--set: ") + error.what());
        }
    }
    return warnings;
}

}  // namespace

Config settingsInForce(const SettingsArguments& arguments, Terminal& terminal) {
    Config tried;
    applyAll(arguments.sets, tried);  // Wrong usage is told before any file is looked at.

    Config config;
    std::vector<std::string> warnings;
    if (!arguments.file.empty()) warnings = rooms::loadSettings(arguments.file, config);
    const std::vector<std::string> more = applyAll(arguments.sets, config);
    warnings.insert(warnings.end(), more.begin(), more.end());
    for (const std::string& warning : warnings) terminal.warn(warning);
    return config;
}

}  // namespace vorund::app
