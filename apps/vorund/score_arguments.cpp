#include "score_arguments.h"

#include <CLI/CLI.hpp>

#include "option_checks.h"

namespace vorund::app {
namespace {

constexpr char kFooter[] =
    "One pair of files: a line NAME: VALUE for each figure. A batch: a table of all maps, then "
    "the\n"
    "line mcc_1to1: VALUE with the mean; the exit status is 1 if a map could not be scored, which\n"
    "counts as 0.\n"
    "The label 255 of an 8-bit image called segments.png is floor that no room reached, and "
    "counts\n"
    "as no room. In all other images, such as rooms.png, every label but 0 is a room.\n"
    "Exit status: 0 success, 1 failure, 2 wrong usage.";

constexpr char kPng[] = ".png";

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

const char* fault(const ScoreArguments& score, bool has_truth_kind, bool has_variant) {
    if (score.batch && !score.map.empty()) return "--map has no meaning with --batch";
    if (score.batch && has_truth_kind) {
        return "--truth has no meaning with --batch: all truths are drawings there";
    }
    if (!score.batch && !score.picture.empty() && !endsWith(score.picture, kPng)) {
        return "--picture must name a PNG file (.png)";
    }
    if (!score.batch && has_variant) return "--variant has no meaning without --batch";
    return nullptr;
}

void addFiles(CLI::App& command, ScoreArguments& score) {
    command
        .add_option("PREDICTED", score.predicted,
                    "label image; with --batch the folder with NAME/rooms.png or NAME.png")
        ->required()
        ->check(notEmpty());
    command
        .add_option("TRUTH", score.truth,
                    "image of the true rooms; with --batch the folder with NAME.png and "
                    "NAME_gt_segmentation.png")
        ->required()
        ->check(notEmpty());
    command
        .add_option("--map", score.map,
                    "map whose free pixels count; else NAME.png beside NAME_gt_segmentation.png")
        ->check(notEmpty())
        ->type_name("MAP");
}

}  // namespace

CLI::App& addScore(CLI::App& app, ScoreArguments& score) {
    CLI::App& command = *app.add_subcommand("score", "Compare rooms with the true ones");
    command.footer(kFooter);
    addFiles(command, score);
    CLI::Option* const kind =
        command
            .add_option_function<std::string>(
                "--truth",
                [&score](const std::string& name) {
                    score.options.truth =
                        name == "labels" ? rooms::TruthKind::kLabels : rooms::TruthKind::kDrawing;
                },
                "what the truth is: a drawing with thin lines between rooms, or a label image")
            ->check(CLI::IsMember({"drawing", "labels"}))
            ->type_name("KIND");
    command.add_flag("--batch", score.batch, "score all maps of a folder");
    CLI::Option* const variant =
        command
            .add_option("--variant", score.variant,
                        "of a batch: the maps NAME_V.png instead of NAME.png, which is \"bare\"")
            ->check(notEmpty())
            ->type_name("V");
    command.add_flag("--keep-detached", score.options.keep_detached,
                     "count true rooms off the largest free area of the map too");
    command
        .add_option("--picture", score.picture,
                    "write a PNG that shows which true rooms are right, missed (red), split "
                    "(blue) and joined (yellow), with their numbers; with --batch the folder in "
                    "which that of NAME.png goes to NAME.png, that of a variant to NAME_V.png")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--json", score.json,
                     "print the figures as JSON, and what became of each true room: missed, split "
                     "and joined, with the labels of the rooms concerned");
    command.callback([&score, kind, variant] {
        const char* const cause = fault(score, kind->count() > 0, variant->count() > 0);
        if (cause != nullptr) throw UsageError(cause);
    });
    return command;
}

}  // namespace vorund::app
