#pragma once

#include "arguments.h"
#include "terminal.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::app {

/// The defaults, over them the preset, over it the file, over them the single settings. Warnings go
/// to the terminal.
/// @throws UsageError           for a preset that is not there, and for a single setting that
/// cannot
///                              be used.
/// @throws rooms::SettingError  for the file.
rooms::Settings settingsInForce(const SettingsArguments& arguments, Terminal& terminal);

}  // namespace vorund::app
