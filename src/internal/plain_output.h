#pragma once

#include <string>

namespace vorund::internal {

/// Writes the text as it is to the stream of `setPlainOutput`, and flushes. One call's text never
/// mixes with another's.
void printPlain(const std::string& text);

}  // namespace vorund::internal
