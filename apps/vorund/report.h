#pragma once

#include <exception>
#include <string>

namespace vorund::app {

/// Writes to standard output.
/// @throws std::runtime_error  if that fails, for example on a full disk.
void printResult(const std::string& text);

/// "vorund: TEXT" as one line, whatever the text holds: file names may hold line breaks.
std::string errorLine(const std::string& text);

/// What an error is about, without the places in its source that OpenCV adds.
std::string causeOf(const std::exception& error);

}  // namespace vorund::app
