#pragma once

#include "arguments.h"

namespace CLI {
class App;
}

namespace vorund::app {

/// Adds the command `tune`, whose options go to `tune`; those for settings are added by the caller.
CLI::App& addTune(CLI::App& app, TuneArguments& tune);

}  // namespace vorund::app
