#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "terminal.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::app {

/// The program was called in a way that makes no sense; what() tells which.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Where the settings come from.
struct SettingsArguments {
    std::string file;               ///< Empty for none.
    std::vector<std::string> sets;  ///< KEY=VALUE, applied in this order after the file.
};

enum class Command { kPrint, kSegment, kConfig };

struct Arguments {
    Command command = Command::kPrint;
    std::string text;  ///< For `kPrint`: help or version.

    SettingsArguments settings;
    std::string map;
    std::string output_dir;
    rooms::MapReadOptions reading;
    bool save_images = false;
    bool show_images = false;
    Verbosity verbosity = Verbosity::kNormal;
};

/// @throws UsageError
Arguments parseArguments(int argc, const char* const* argv);

}  // namespace vorund::app
