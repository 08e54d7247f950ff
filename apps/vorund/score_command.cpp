#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <locale>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "report.h"
#include "silent_standard_error.h"
#include "vorund/rooms/score_files.h"

namespace vorund::app {
namespace {

constexpr int kDecimals = 6;
constexpr int kUnreached = 255;
constexpr char kMainFigure[] = "mcc_1to1";

std::string figureLine(const std::string& name, double value, int decimals) {
    std::ostringstream line;
    line.imbue(std::locale::classic());
    line << name << ": " << std::fixed << std::setprecision(decimals) << value << "\n";
    return line.str();
}

std::string figureLines(const rooms::Score& score) {
    std::string text;
    for (const rooms::Figure& figure : rooms::figuresOf(score)) {
        text += figureLine(figure.name, figure.value, figure.is_count ? 0 : kDecimals);
    }
    return text;
}

/// Of a file that cannot be read the scoring tells.
bool hasUnreachedLabel(const std::string& path) {
    if (std::filesystem::path(path).filename() != "segments.png") return false;
    return cv::imread(path, cv::IMREAD_UNCHANGED).type() == CV_8UC1;
}

void scoreOne(const ScoreArguments& arguments) {
    rooms::Score score;
    {
        const SilentStandardError silence(true);
        rooms::ScoreOptions options = arguments.options;
        if (hasUnreachedLabel(arguments.predicted)) options.unreached = kUnreached;
        score = rooms::scoreFiles(arguments.predicted, arguments.truth, arguments.map, options);
    }
    printResult(arguments.json ? rooms::scoreJson(score) : figureLines(score));
}

std::string batchText(const std::vector<rooms::MapScore>& maps) {
    std::string text = rooms::scoreText(maps);
    for (const rooms::FigureSummary& figure : rooms::summarize(maps)) {
        if (figure.name == kMainFigure) text += figureLine(figure.name, figure.mean, kDecimals);
    }
    return text;
}

void scoreAll(const ScoreArguments& arguments) {
    std::vector<rooms::MapScore> maps;
    {
        const SilentStandardError silence(true);
        maps = rooms::scoreBatch(arguments.predicted, arguments.truth, arguments.variant,
                                 arguments.options);
    }
    printResult(arguments.json ? rooms::scoreJson(maps) : batchText(maps));
    const auto failed =
        std::count_if(maps.begin(), maps.end(), [](const auto& map) { return !map.error.empty(); });
    if (failed == 0) return;
    throw std::runtime_error(arguments.predicted + ": " + std::to_string(failed) + " of " +
                             std::to_string(maps.size()) + " maps could not be scored");
}

}  // namespace

void runScore(const ScoreArguments& arguments) {
    if (arguments.batch) {
        scoreAll(arguments);
    } else {
        scoreOne(arguments);
    }
}

}  // namespace vorund::app
