#include "settings/settings_check.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace vorund::rooms {
namespace {

bool startsWith(const KeyPath& path, const KeyPath& start) {
    return path.size() > start.size() && std::equal(start.begin(), start.end(), path.begin());
}

bool isGroup(const KeyPath& path) {
    const auto& table = settingsTable();
    return std::any_of(table.begin(), table.end(),
                       [&](const Setting& setting) { return startsWith(setting.path, path); });
}

/// What stands where a value is not permitted.
std::string valueText(const YAML::Node& node) {
    if (node.IsMap()) return "is a map";
    if (node.IsSequence()) return "is a list";
    if (!node.IsScalar() || node.Scalar().empty()) return "has no value";
    return "is " + brief(node.Scalar());
}

class Check {
 public:
    explicit Check(Settings& settings) : settings_(settings) {}

    void group(const YAML::Node& node, const KeyPath& path) {
        if (node.IsNull()) return;
        if (!node.IsMap()) {
            findings.faults.push_back(joined(path) + ": is a group, not a value");
            return;
        }
        std::set<std::string> seen;
        for (const auto& entry : node) {
            if (!entry.first.IsScalar()) {
                findings.warnings.push_back(prefix(path) + "a key that is no name, not read");
            } else if (!seen.insert(entry.first.Scalar()).second) {
                findings.faults.push_back(below(path, entry.first.Scalar()) + ": stands twice");
            } else {
                key(entry.first.Scalar(), entry.second, path);
            }
        }
    }

    Findings findings;

 private:
    static std::string prefix(const KeyPath& group) {
        return group.empty() ? "" : joined(group) + ": ";
    }

    static std::string below(const KeyPath& parent, const std::string& name) {
        return (parent.empty() ? "" : joined(parent) + "/") + brief(name);
    }

    void key(const std::string& name, const YAML::Node& value, const KeyPath& parent) {
        KeyPath path = parent;
        path.push_back(name);
        if (const Setting* const setting = findSetting(path)) {
            one(*setting, value);
        } else if (isGroup(path)) {
            group(value, path);
        } else {
            findings.warnings.push_back(below(parent, name) + ": no such setting, not read" +
                                        hint(parent, name));
        }
    }

    void one(const Setting& setting, const YAML::Node& value) {
        if (!setting.in_yaml) {
            findings.warnings.push_back(joined(setting.path) + ": not read from YAML");
        } else if (value.IsNull()) {
            findings.warnings.push_back(joined(setting.path) + ": has no value, stays as it is");
        } else {
            assignChecked(setting, value, settings_, findings);
        }
    }

    Settings& settings_;
};

}  // namespace

Findings checkSettings(const YAML::Node& root, Settings& settings) {
    Check check(settings);
    check.group(root, {});
    return check.findings;
}

void assignChecked(const Setting& setting, const YAML::Node& node, Settings& settings,
                   Findings& findings) {
    const std::string key = joined(setting.path);
    if (!setting.assign(node, settings)) {
        findings.faults.push_back(key + ": " + valueText(node) +
                                  " (permitted: " + setting.permitted + ")");
    } else if (!setting.inert.empty() && setting.text(settings) != setting.text(Settings{})) {
        findings.warnings.push_back(key + ": changes no result: " + setting.inert);
    }
}

std::string shown(const std::string& text) {
    std::string line = text;
    const auto is_control = [](char letter) {
        return static_cast<unsigned char>(letter) < ' ' || letter == '\x7f';
    };
    std::replace_if(line.begin(), line.end(), is_control, '?');
    return line;
}

std::string brief(const std::string& text) {
    constexpr std::size_t kLongest = 60;
    return text.size() > kLongest ? shown(text.substr(0, kLongest)) + "..." : shown(text);
}

const Setting* findSetting(const KeyPath& path) {
    for (const Setting& setting : settingsTable()) {
        if (setting.path == path) return &setting;
    }
    return nullptr;
}

}  // namespace vorund::rooms
