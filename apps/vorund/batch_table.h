#pragma once

#include <string>
#include <vector>

namespace vorund::app {

/// What became of one map of a batch.
struct BatchEntry {
    std::string name;
    std::string rooms;    ///< How many; empty if it failed or was left out.
    std::string seconds;  ///< Likewise.
    std::string error;    ///< Empty if it did not fail.
    bool is_done = false;
};

/// A line of titles and one for each map. The errors stand last, each in one line.
std::string batchTable(const std::vector<BatchEntry>& entries);

}  // namespace vorund::app
