#include "tune_arguments.h"

#include <CLI/CLI.hpp>

#include "option_checks.h"

namespace vorund::app {
namespace {

constexpr int kMostEvaluations = 100'000;
constexpr int kMostFolds = 100;

constexpr char kFooter[] =
    "Searched are rooms/open_ratio, rooms/narrow_ratio, rooms/least_area, rooms/loose_part,\n"
    "rooms/wall_line and compute_labels_list/generate_gaussian_seeds_skimage/threshold, from the\n"
    "settings given on. What is made larger is the mean mcc_1to1 (see vorund score) over the "
    "maps.\n"
    "Then the same search is made again, each time with a part of the maps left out, and what it\n"
    "finds is measured on those: the figure \"unseen\" tells what to expect on other maps, which "
    "is\n"
    "less. If it is not above \"before\", the maps are too few or too unlike: keep the settings.\n"
    "All that was tried is kept in FILE.state.json: an interrupted search goes on from there when\n"
    "it is started again, and one with more --evaluations, too.\n"
    "Exit status: 0 success, 1 failure, 2 wrong usage, 130 or 143 interrupted.";

}  // namespace

CLI::App& addTune(CLI::App& app, TuneArguments& tune) {
    CLI::App& command =
        *app.add_subcommand("tune", "Search settings for your own maps with their true rooms");
    command.footer(kFooter);
    command
        .add_option("MAPS_DIR", tune.maps_dir,
                    "folder with maps NAME.png at 0.05 m per pixel, floor light, and drawings of "
                    "their true rooms NAME_gt_segmentation.png")
        ->required()
        ->check(notEmpty());
    command.add_option("--out", tune.output, "YAML file for what is found; written at the end")
        ->check(notEmpty())
        ->capture_default_str()
        ->type_name("FILE");
    command
        .add_option("--evaluations", tune.evaluations,
                    "most settings that a search tries; each is a run over the maps")
        ->check(CLI::Range(1, kMostEvaluations))
        ->capture_default_str()
        ->type_name("N");
    command
        .add_option("--folds", tune.folds,
                    "into how many parts the maps are divided for the figure \"unseen\", each left "
                    "out once; as many as there are maps or more: one at a time; 0: no such figure")
        ->check(CLI::Range(0, kMostFolds))
        ->capture_default_str()
        ->type_name("N");
    command
        .add_option("--variant", tune.variant,
                    "the maps NAME_V.png instead of NAME.png, which is \"bare\"")
        ->check(notEmpty())
        ->type_name("V");
    command.add_flag("--keep-detached", tune.options.keep_detached,
                     "count true rooms off the largest free area of the map too");
    return command;
}

}  // namespace vorund::app
