#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "terminal.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/rooms/score_files.h"

namespace vorund::app {

/// The program was called in a way that makes no sense; what() tells which.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Where the settings come from.
struct SettingsArguments {
    std::string preset;             ///< Name, empty for none.
    std::string file;               ///< Empty for none. Over the preset.
    std::vector<std::string> sets;  ///< KEY=VALUE, applied in this order after the file.
};

/// What is compared with what.
struct ScoreArguments {
    std::string predicted;  ///< A file, or for a batch a folder.
    std::string truth;      ///< Likewise.
    std::string map;        ///< Empty for the one beside the truth.
    bool batch = false;
    std::string variant = rooms::kBareVariant;
    rooms::ScoreOptions options;
    std::string picture;  ///< File, for a batch a folder, for pictures of the errors; or empty.
    bool json = false;
};

/// What is searched.
struct TuneArguments {
    std::string maps_dir;
    std::string output = "tuned.yaml";
    int evaluations = 60;
    int folds = 2;
    std::string variant = rooms::kBareVariant;
    rooms::ScoreOptions options;
};

enum class Command { kPrint, kSegment, kConfig, kScore, kTune };

struct Arguments {
    Command command = Command::kPrint;
    std::string text;  ///< For `kPrint`: help or version.

    SettingsArguments settings;
    std::vector<std::string> maps;  ///< Files and folders.
    std::string output_dir;
    std::string
        timings;  ///< File for the times of the stages, for several maps a folder; or empty.
    rooms::MapReadOptions reading;
    bool save_images = false;
    bool show_images = false;
    int jobs = 1;         ///< For several maps: how many at the same time.
    bool resume = false;  ///< Likewise: those with results are left out.
    Verbosity verbosity = Verbosity::kNormal;

    ScoreArguments score;
    TuneArguments tune;
};

/// @throws UsageError
Arguments parseArguments(int argc, const char* const* argv);

}  // namespace vorund::app
