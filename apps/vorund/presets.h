#pragma once

#include <string>

namespace vorund::app {

/// The file of a preset: presets lie at a fixed place beside the program, wherever both are
/// installed.
/// @throws UsageError  that names those there are, if this one is not there.
std::string presetFile(const std::string& name);

}  // namespace vorund::app
