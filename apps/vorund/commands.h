#pragma once

#include <stdexcept>
#include <string>

#include "arguments.h"
#include "terminal.h"

namespace vorund::app {

/// The user asked for the end of the run; what() names the map.
class Interrupted : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Finds the rooms of a map, writes the images and prints one line on standard output.
/// @throws std::runtime_error  that names the file and the cause; nothing is left behind then.
/// @throws Interrupted         likewise.
void runSegment(const Arguments& arguments, Terminal& terminal);

/// Prints the settings in force on standard output.
/// @throws std::runtime_error  that names the file and the cause.
void runConfig(const Arguments& arguments, Terminal& terminal);

}  // namespace vorund::app
