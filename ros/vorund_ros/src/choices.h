// Everything besides the map that decides on the rooms, and where it comes from.
#pragma once

#include <xmlrpcpp/XmlRpcValue.h>

#include <string>
#include <vector>

#include "map_conversion.h"
#include "vorund/rooms/settings.h"

namespace vorund_ros {

struct Choices {
    vorund::rooms::Settings settings;
    int occupied_threshold = kOccupiedThreshold;  ///< [percent]

    /// In full, with the version of the libraries: equal for choices that give equal rooms.
    std::string text() const;
};

/// Names of the node's private parameters that are no settings.
inline constexpr char kConfigParameter[] = "config";
inline constexpr char kOccupiedThresholdParameter[] = "occupied_threshold";
inline constexpr char kSavePathParameter[] = "save_path";
inline constexpr char kDebugDirectoryParameter[] = "debug_dir";
inline constexpr char kLiveGroup[] = "live";  ///< What dynamic_reconfigure keeps there.

/// Reads the settings file that the parameter `config` names, if it does, and sets the settings
/// that are parameters over it; a setting's parameter is named as its key.
/// @param parameters  The node's private ones, as one structure. (Not const, since its type has no
///                    const access.) A setting may stand below groups or have a "/" in its name.
/// @param warnings    Of the settings, and of parameters that nobody reads; one line each.
/// @throws vorund::rooms::SettingError  telling all faults in one line.
Choices readChoices(XmlRpc::XmlRpcValue& parameters, std::vector<std::string>& warnings);

/// A parameter's value as YAML text that reads back to it.
std::string toYaml(XmlRpc::XmlRpcValue& value);

}  // namespace vorund_ros
