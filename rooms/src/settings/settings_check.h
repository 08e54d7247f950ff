#pragma once

#include <yaml-cpp/yaml.h>

#include <string>
#include <vector>

#include "settings/settings_table.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// What a settings file holds beside good values. One line each.
struct Findings {
    std::vector<std::string> warnings;
    std::vector<std::string> faults;
};

/// Compares a document with the table: every key, type and range.
/// @param root      A map, or null.
/// @param settings  Receives the values; it tells which are those of inert settings.
Findings checkSettings(const YAML::Node& root, Settings& settings);

/// Sets one value of the table; what is wrong with it goes to `findings`.
void assignChecked(const Setting& setting, const YAML::Node& node, Settings& settings,
                   Findings& findings);

/// Text that may come from anywhere, fit for one line: control characters become "?".
std::string shown(const std::string& text);

/// The same, cut if it is longer than any key.
std::string brief(const std::string& text);

/// `; did you mean "KEY"?` for the key that most likely was meant, or nothing.
/// @param typed  What is not in the table, below the keys of `parent`.
std::string hint(const KeyPath& parent, const std::string& typed);

/// The setting of that path, or a null pointer.
const Setting* findSetting(const KeyPath& path);

}  // namespace vorund::rooms
