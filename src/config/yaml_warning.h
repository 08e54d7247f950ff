#pragma once

#include <string>

namespace vorund::internal {

/// Tells on the console channel that a value of the file is left out, and why.
void warnOfYamlValue(const std::string& cause);

}  // namespace vorund::internal
