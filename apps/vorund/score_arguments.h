#pragma once

#include "arguments.h"

namespace CLI {
class App;
}

namespace vorund::app {

/// Adds the command `score`, whose options go to `score`.
CLI::App& addScore(CLI::App& app, ScoreArguments& score);

}  // namespace vorund::app
