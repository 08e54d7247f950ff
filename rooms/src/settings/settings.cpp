#include "vorund/rooms/settings.h"

#include <sys/stat.h>
#include <yaml-cpp/yaml.h>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "settings/settings_check.h"

namespace vorund::rooms {
namespace {

// A hundred times what all settings need: whatever is larger is another file.
constexpr std::size_t kLargestFile = 1 << 19;

std::string listed(const std::vector<std::string>& faults) {
    std::string line;
    for (const std::string& fault : faults) line += (line.empty() ? "" : "; ") + fault;
    return line;
}

std::string readFile(const std::string& path) {
    const auto fail = [&](const std::string& cause) {
        throw SettingError(shown(path) + ": " + cause);
    };
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) fail(std::generic_category().message(errno));
    if (S_ISDIR(status.st_mode)) fail(std::generic_category().message(EISDIR));
    // A pipe could be read only once, and a device might never end.
    if (!S_ISREG(status.st_mode)) fail("is not a regular file");
    if (static_cast<std::size_t>(status.st_size) > kLargestFile) fail("is too large for settings");
    std::ifstream file(path, std::ios::binary);
    if (!file) fail(std::generic_category().message(errno));
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    file.read(text.data(), status.st_size);
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

/// The one document of a settings file: a map, or null if it holds no setting.
YAML::Node parse(const std::string& text) {
    const std::vector<YAML::Node> documents = YAML::LoadAll(text);
    if (documents.empty()) return YAML::Node(YAML::NodeType::Null);
    if (documents.size() > 1) throw SettingError("holds more than one document");
    const YAML::Node& root = documents.front();
    if (!root.IsMap() && !root.IsNull()) throw SettingError("holds no map of settings");
    return root;
}

YAML::Node parseFile(const std::string& path) {
    const std::string text = readFile(path);
    try {
        return parse(text);
    } catch (const YAML::Exception& error) {
        const std::string line = std::to_string(error.mark.line + 1);
        throw SettingError(shown(path) + ": is no YAML: " + shown(error.msg) + " in line " + line);
    } catch (const SettingError& error) {
        throw SettingError(shown(path) + ": " + error.what());
    }
}

/// A value as YAML; text that is no YAML is a value too, though one that no setting permits.
YAML::Node parseValue(const std::string& text) {
    try {
        const std::vector<YAML::Node> documents = YAML::LoadAll(text);
        if (documents.size() == 1) return documents.front();
    } catch (const YAML::Exception&) {
        return YAML::Node(text);
    }
    return YAML::Node(text);
}

/// The setting of a path that was typed with "/" between its keys.
const Setting& settingOf(const std::string& typed) {
    for (const Setting& setting : settingsTable()) {
        if (joined(setting.path) != typed) continue;
        if (setting.in_yaml) return setting;
        throw SettingError(typed + ": cannot be set");
    }
    throw SettingError(shown(typed) + ": no such setting" + hint({}, typed));
}

}  // namespace

std::vector<std::string> loadSettings(const std::string& path, Settings& settings) {
    Settings checked = settings;
    Findings findings = checkSettings(parseFile(path), checked);
    if (!findings.faults.empty()) {
        throw SettingError(shown(path) + ": " + listed(findings.faults));
    }
    // The core's values come from its own reader, so that both can never mean different things.
    Settings loaded{settings.core, checked.rooms};
    if (!loaded.core.loadFromYaml(path)) throw SettingError(shown(path) + ": cannot be loaded");
    settings = loaded;
    for (std::string& warning : findings.warnings) warning.insert(0, shown(path) + ": ");
    return findings.warnings;
}

std::vector<std::string> applySetting(const std::string& assignment, Settings& settings) {
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw SettingError(brief(assignment) + ": is not of the form KEY=VALUE");
    }
    const Setting& setting = settingOf(assignment.substr(0, equals));
    Findings findings;
    assignChecked(setting, parseValue(assignment.substr(equals + 1)), settings, findings);
    if (!findings.faults.empty()) throw SettingError(listed(findings.faults));
    return findings.warnings;
}

}  // namespace vorund::rooms
