#include "arguments.h"

#include <CLI/CLI.hpp>

#include "option_checks.h"
#include "score_arguments.h"
#include "tune_arguments.h"

namespace vorund::app {
namespace {

constexpr char kDescription[] = "Divides a robot's floor map into rooms.";
constexpr char kStatuses[] =
    "Exit status: 0 success, 1 failure (one line on standard error tells the file and the cause),\n"
    "2 wrong usage, 130 or 143 interrupted.";

constexpr int kMostJobs = 1024;

/// What the options that need a second look were given.
struct Raw {
    std::string free;
    std::string values = "map";
    std::string detail;
    bool straight_borders = false;
    bool verbose = false;
    bool quiet = false;
    bool version = false;
};

void addSettings(CLI::App& command, SettingsArguments& settings, std::string& detail) {
    command
        .add_option("--preset", settings.preset,
                    "settings for a kind of building that the defaults fit less well: home, office "
                    "or warehouse; --config and --set go over it")
        ->check(notEmpty())
        ->type_name("NAME");
    command.add_option("--config", settings.file, "YAML file of settings")
        ->check(notEmpty())
        ->type_name("FILE");
    command
        .add_option("--detail", detail,
                    "-2 to 2: few large rooms to many small ones, 0 as the settings say (the "
                    "setting rooms/detail)")
        ->check(CLI::Range(-2.0, 2.0))
        ->type_name("NUMBER");
    // One value each: a map may follow.
    command
        .add_option("--set", settings.sets,
                    "one setting, for example dilate_binary/iterations=2; may stand several times")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("KEY=VALUE");
}

void addMapsAndOutput(CLI::App& command, Arguments& arguments) {
    command
        .add_option("MAP", arguments.maps,
                    "map_server YAML file, or an image at 0.05 m per pixel with light floor; "
                    "several of them, or folders of them, are a batch: the results of NAME.png go "
                    "to DIR/NAME, a YAML file and its image are one map, *_gt_segmentation* is "
                    "left out")
        ->required()
        ->check(notEmpty());
    command
        .add_option("--out", arguments.output_dir,
                    "directory for the results: rooms.png (0 no room, else the room's label), "
                    "rooms.json, rooms.geojson (outlines in metres), pictures of the rooms, their "
                    "borders, graph and cuts, and what was found before rooms were merged: "
                    "segments.png (0 background, 1 to 254 rooms, 255 floor that no room reached)")
        ->required()
        ->check(notEmpty())
        ->type_name("DIR");
}

void addReading(CLI::App& command, Raw& raw) {
    command.add_option("--free", raw.free, "which end of the grey scale is floor: white or black")
        ->check(CLI::IsMember({"white", "black"}))
        ->type_name("COLOUR");
    command
        .add_option("--values", raw.values,
                    "map: pixels are floor, wall or unknown by the map's thresholds; raw: they are "
                    "the values to segment, walls high")
        ->check(CLI::IsMember({"map", "raw"}))
        ->type_name("KIND");
}

void addBatch(CLI::App& command, Arguments& arguments) {
    command.add_option("--jobs", arguments.jobs, "of a batch: maps at the same time")
        ->check(CLI::Range(1, kMostJobs))
        ->type_name("N");
    command.add_flag("--resume", arguments.resume,
                     "of a batch: leave out maps whose DIR/NAME/rooms.json is there");
}

void addSegment(CLI::App& app, Arguments& arguments, Raw& raw) {
    CLI::App& command = *app.add_subcommand("segment", "Find the rooms of a map");
    addMapsAndOutput(command, arguments);
    addSettings(command, arguments.settings, raw.detail);
    command.add_flag("--straight-borders", raw.straight_borders,
                     "draw the borders between rooms along their straight cuts (the setting "
                     "rooms/straight_borders)");
    addReading(command, raw);
    command.add_flag("--save-images", arguments.save_images,
                     "keep the image of every stage and a log in DIR/debug");
    command.add_flag("--show-images", arguments.show_images,
                     "show the image of every stage and wait for a key at the end");
    command
        .add_option("--timings", arguments.timings,
                    "write the seconds of every stage there, as JSON; for a batch the folder in "
                    "which those of NAME.png go to NAME.json")
        ->check(notEmpty())
        ->type_name("FILE");
    addBatch(command, arguments);
    CLI::Option* const quiet =
        command.add_flag("--quiet", raw.quiet, "tell errors alone on standard error");
    command.add_flag("--verbose", raw.verbose, "tell all that the library says")->excludes(quiet);
}

Verbosity verbosity(const Raw& raw) {
    if (raw.quiet) return Verbosity::kQuiet;
    return raw.verbose ? Verbosity::kVerbose : Verbosity::kNormal;
}

rooms::MapReadOptions readOptions(const Raw& raw) {
    rooms::MapReadOptions options;
    if (raw.values == "raw") {
        if (!raw.free.empty()) {
            throw UsageError("--free has no meaning with --values raw: walls are high there");
        }
        options.values = rooms::PixelValues::kRaw;
    }
    if (raw.free == "white") options.free = rooms::FreeColour::kWhite;
    if (raw.free == "black") options.free = rooms::FreeColour::kBlack;
    return options;
}

}  // namespace

Arguments parseArguments(int argc, const char* const* argv) {
    Arguments arguments;
    Raw raw;
    CLI::App app(kDescription, "vorund");
    app.footer(kStatuses);
    app.require_subcommand(0, 1);
    app.add_flag("--version", raw.version, "print the version and exit");
    addSegment(app, arguments, raw);
    CLI::App& config = *app.add_subcommand("config", "Print the settings in force as YAML");
    addSettings(config, arguments.settings, raw.detail);
    CLI::App& score = addScore(app, arguments.score);
    CLI::App& tune = addTune(app, arguments.tune);
    addSettings(tune, arguments.settings, raw.detail);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        arguments.text = app.help();
        return arguments;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    if (raw.version) {
        arguments.text = "vorund " VORUND_VERSION "\n";
        return arguments;
    }
    if (app.get_subcommands().empty())
        throw UsageError("a command is needed: segment, score, tune or config");
    arguments.command = Command::kSegment;
    if (app.got_subcommand(&config)) arguments.command = Command::kConfig;
    if (app.got_subcommand(&score)) arguments.command = Command::kScore;
    if (app.got_subcommand(&tune)) arguments.command = Command::kTune;
    if (raw.straight_borders) arguments.settings.sets.emplace_back("rooms/straight_borders=true");
    if (!raw.detail.empty()) arguments.settings.sets.push_back("rooms/detail=" + raw.detail);
    arguments.reading = readOptions(raw);
    arguments.verbosity = verbosity(raw);
    return arguments;
}

}  // namespace vorund::app
