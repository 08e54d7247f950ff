#include "choices.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <locale>
#include <set>
#include <sstream>

namespace vorund_ros {
namespace {

namespace rooms = vorund::rooms;
using XmlRpc::XmlRpcValue;

constexpr int kMostPercent = 100;

bool isOwn(const std::string& name) {
    constexpr std::array<const char*, 6> kOwn{kConfigParameter,   kOccupiedThresholdParameter,
                                              kSavePathParameter, kDebugDirectoryParameter,
                                              kLiveGroup,         "diagnostic_period"};
    return std::find(kOwn.begin(), kOwn.end(), name) != kOwn.end();
}

/// Adds the keys of all settings below a node, joined by "/". Groups stand over several lines; a
/// map within a line is a value.
void addKeys(const YAML::Node& node, const std::string& prefix, std::set<std::string>& keys) {
    for (const auto& entry : node) {
        const std::string key = prefix + entry.first.Scalar();
        const bool is_group =
            entry.second.IsMap() && entry.second.Style() != YAML::EmitterStyle::Flow;
        if (is_group) {
            addKeys(entry.second, key + "/", keys);
        } else {
            keys.insert(key);
        }
    }
}

const std::set<std::string>& settingKeys() {
    static const std::set<std::string> keys = [] {
        std::set<std::string> found;
        addKeys(YAML::Load(rooms::settingsAsYaml(rooms::Settings{})), "", found);
        return found;
    }();
    return keys;
}

std::string numberText(double number) {
    if (number != number) return ".nan";
    constexpr int kEnoughDigits = 17;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(kEnoughDigits);
    text << number;
    return text.str();
}

std::string quoted(const std::string& text) {
    YAML::Emitter emitter;
    emitter << YAML::DoubleQuoted << text;
    return emitter.c_str();
}

template <class Container, class ToText>
std::string listed(Container& container, const ToText& toText) {
    std::string text;
    for (auto& element : container) text += (text.empty() ? "" : ", ") + toText(element);
    return text;
}

/// Goes through the parameters and applies those that are settings.
class Applier {
 public:
    Applier(rooms::Settings& settings, std::vector<std::string>& warnings)
        : settings_(settings), warnings_(warnings) {}

    void group(XmlRpcValue& values, const std::string& prefix) {
        for (auto& [name, value] : values) {
            if (prefix.empty() && isOwn(name)) continue;
            const std::string key = prefix + name;
            if (settingKeys().count(key) > 0) {
                apply(key, value);
            } else if (value.getType() == XmlRpcValue::TypeStruct) {
                group(value, key + "/");
            } else {
                warnings_.push_back("~" + key + ": no such parameter, not read");
            }
        }
    }

    std::vector<std::string> faults;

 private:
    void apply(const std::string& key, XmlRpcValue& value) {
        try {
            for (const std::string& warning :
                 rooms::applySetting(key + "=" + toYaml(value), settings_)) {
                warnings_.push_back("~" + warning);
            }
        } catch (const rooms::SettingError& error) {
            faults.push_back(std::string("~") + error.what());
        }
    }

    rooms::Settings& settings_;
    std::vector<std::string>& warnings_;
};

void readThreshold(XmlRpcValue& value, Choices& choices, std::vector<std::string>& faults) {
    if (value.getType() == XmlRpcValue::TypeInt) {
        const int percent = value;
        if (percent >= 1 && percent <= kMostPercent) {
            choices.occupied_threshold = percent;
            return;
        }
    }
    faults.push_back(std::string("~") + kOccupiedThresholdParameter + ": is " + toYaml(value) +
                     " (permitted: a whole number from 1 to 100)");
}

void loadConfig(XmlRpcValue& value, Choices& choices, std::vector<std::string>& warnings) {
    if (value.getType() != XmlRpcValue::TypeString) {
        throw rooms::SettingError(std::string("~") + kConfigParameter + ": is no path");
    }
    const std::string& path = value;
    if (path.empty()) return;
    for (const std::string& warning : rooms::loadSettings(path, choices.settings)) {
        warnings.push_back(warning);
    }
}

}  // namespace

std::string Choices::text() const {
    return "vorund: " VORUND_ROS_LIBRARY_VERSION "\n" + std::string(kOccupiedThresholdParameter) +
           ": " + std::to_string(occupied_threshold) + "\n" + rooms::settingsAsYaml(settings);
}

Choices readChoices(XmlRpcValue& parameters, std::vector<std::string>& warnings) {
    Choices choices;
    if (parameters.getType() != XmlRpcValue::TypeStruct) return choices;
    if (parameters.hasMember(kConfigParameter)) {
        loadConfig(parameters[kConfigParameter], choices, warnings);
    }
    Applier applier(choices.settings, warnings);
    applier.group(parameters, "");
    if (parameters.hasMember(kOccupiedThresholdParameter)) {
        readThreshold(parameters[kOccupiedThresholdParameter], choices, applier.faults);
    }
    if (!applier.faults.empty()) {
        std::string line;
        for (const std::string& fault : applier.faults) line += (line.empty() ? "" : "; ") + fault;
        throw rooms::SettingError(line);
    }
    return choices;
}

std::string toYaml(XmlRpcValue& value) {
    switch (value.getType()) {
        case XmlRpcValue::TypeBoolean:
            return static_cast<bool&>(value) ? "true" : "false";
        case XmlRpcValue::TypeInt:
            return std::to_string(static_cast<int&>(value));
        case XmlRpcValue::TypeDouble:
            return numberText(static_cast<double&>(value));
        case XmlRpcValue::TypeString:
            return quoted(value);
        case XmlRpcValue::TypeArray: {
            std::string text;
            for (int i = 0; i < value.size(); ++i) text += (i > 0 ? ", " : "") + toYaml(value[i]);
            return "[" + text + "]";
        }
        case XmlRpcValue::TypeStruct:
            return "{" +
                   listed(value,
                          [](auto& member) {
                              return quoted(member.first) + ": " + toYaml(member.second);
                          }) +
                   "}";
        default:
            return "~";
    }
}

}  // namespace vorund_ros
