#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

#include "vorund/export.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// A setting that cannot be used: what() is one line that names the key, and the permitted values.
class VORUND_EXPORT SettingError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Loads a YAML file of settings over `settings`, after checking all of it: `Config::loadFromYaml`
/// keeps a field whose value is malformed, which on a robot would go unseen. What stands under the
/// key `rooms` is for `Settings::rooms`, all the rest for `Settings::core`.
///
/// @return Warnings, one line each: keys that nobody reads, keys that are read but change no
///         result, together with the key that does.
/// @throws SettingError  if the file cannot be read or parsed, or if any value has the wrong type
///         or is out of its range (all of them told, each with what is permitted); `settings`
///         are then as they were.
VORUND_EXPORT std::vector<std::string> loadSettings(const std::string& path, Settings& settings);

/// Sets one value. The key is the path of keys in the YAML file, joined by "/", for example
/// `compute_labels_list/sigma_start` or
/// `generate_denoised_alone/binary/make_binary/threshold`.
/// @param assignment  KEY=VALUE, the value as YAML, for example `[1.0, 2.0]` for a list.
/// @return Warnings as from `loadSettings`.
/// @throws SettingError  for an unknown key, a value of the wrong type or out of its range;
///         `settings` are then as they were.
VORUND_EXPORT std::vector<std::string> applySetting(const std::string& assignment,
                                                    Settings& settings);

/// The settings in force as YAML that loads back to the same values; fields that YAML cannot set
/// stand as comments.
VORUND_EXPORT std::string settingsAsYaml(const Settings& settings);

}  // namespace vorund::rooms
