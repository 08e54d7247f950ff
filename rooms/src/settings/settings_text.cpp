#include <algorithm>
#include <cstddef>

#include "settings/settings_table.h"
#include "vorund/rooms/settings.h"

namespace vorund::rooms {
namespace {

std::string indent(std::size_t levels) {
    return std::string(2 * levels, ' ');
}

/// The heading lines of the groups that `path` opens after the setting before it.
std::string headings(const KeyPath& path, const KeyPath& before) {
    const std::size_t groups = path.size() - 1;
    const std::size_t groups_before = before.empty() ? 0 : before.size() - 1;
    std::size_t level = 0;
    while (level < std::min(groups, groups_before) && path[level] == before[level]) ++level;
    std::string text;
    for (; level < groups; ++level) text += indent(level) + path[level] + ":\n";
    return text;
}

}  // namespace

std::string settingsAsYaml(const Settings& settings) {
    std::string text;
    KeyPath before;
    for (const Setting& setting : settingsTable()) {
        const KeyPath& path = setting.path;
        text += headings(path, before) + indent(path.size() - 1);
        if (setting.in_yaml) {
            text += path.back() + ": " + setting.text(settings) + "\n";
        } else {
            text += "# " + path.back() + ": " + setting.text(settings) + " (not read from YAML)\n";
        }
        before = path;
    }
    return text;
}

}  // namespace vorund::rooms
