#pragma once

#include <yaml-cpp/yaml.h>

#include <functional>
#include <string>
#include <vector>

#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// The keys that lead to a value in the YAML file. A key may hold a "/" itself.
using KeyPath = std::vector<std::string>;

/// One field of `Settings` that has, or might be thought to have, a key in the YAML file.
struct Setting {
    KeyPath path;
    /// Sets the field from a YAML value. Returns false, with the field as it was, if the value has
    /// the wrong type or is not permitted.
    std::function<bool(const YAML::Node&, Settings&)> assign;
    /// The field's value as YAML that reads back to the same.
    std::function<std::string(const Settings&)> text;
    std::string permitted;  ///< Ends the sentence "permitted: ...".
    std::string inert;      ///< Why the value changes no result; empty if it does.
    bool in_yaml = true;    ///< False for a field that `Config::loadFromYaml` passes over.
};

/// All of them, in the order in which a settings file is written.
const std::vector<Setting>& settingsTable();

/// The path as it is shown and typed: its keys joined by "/".
std::string joined(const KeyPath& path);

}  // namespace vorund::rooms
