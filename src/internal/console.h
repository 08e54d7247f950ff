#pragma once

#include <string>

#include "vorund/debugger.h"

namespace vorund::internal {

/// Writes one line to the console channel "ros.vorund" of the robot's logging, whatever `level`
/// the channel lets through. Values outside `LogLevel` print nothing.
void consoleLine(LogLevel level, const std::string& text);

}  // namespace vorund::internal
