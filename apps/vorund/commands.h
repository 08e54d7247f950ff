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

/// Finds the rooms of a map, writes the results and prints one line on standard output; for several
/// maps see `runBatch`.
/// @throws std::runtime_error  that names the file and the cause; nothing is left behind then.
/// @throws Interrupted         likewise.
void runSegment(const Arguments& arguments, Terminal& terminal);

/// Does `runSegment` for each of several maps, in a process of its own, and prints a table on
/// standard output. A map that fails does not stop the others.
/// @throws UsageError          before anything is done: two maps have the same name.
/// @throws std::runtime_error  if a folder cannot be read, and at the end if maps failed.
/// @throws Interrupted         with the results of finished maps in place.
void runBatch(const Arguments& arguments, Terminal& terminal);

/// Prints how well label images agree with the truth.
/// @throws std::runtime_error  that names the file and the cause; for a batch at the end, if there
///         are maps that could not be scored.
void runScore(const ScoreArguments& arguments);

/// Searches settings for maps with their truths, and writes them as YAML.
/// @throws std::runtime_error  that names the file and the cause, before anything is searched
///                             where it can be told then.
/// @throws Interrupted         what was tried is in the state file.
void runTune(const Arguments& arguments, Terminal& terminal);

/// Prints the settings in force on standard output.
/// @throws std::runtime_error  that names the file and the cause.
void runConfig(const Arguments& arguments, Terminal& terminal);

}  // namespace vorund::app
