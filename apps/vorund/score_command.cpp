#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <locale>
#include <map>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "report.h"
#include "silent_standard_error.h"
#include "vorund/rooms/file_output.h"
#include "vorund/rooms/room_fates.h"
#include "vorund/rooms/score_files.h"

namespace vorund::app {
namespace {

namespace fs = std::filesystem;

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
    if (fs::path(path).filename() != "segments.png") return false;
    return cv::imread(path, cv::IMREAD_UNCHANGED).type() == CV_8UC1;
}

/// What became of the true rooms, and pictures of it, if they are asked for.
class Fates {
 public:
    explicit Fates(const ScoreArguments& arguments) : arguments_(arguments) {
        if (arguments.picture.empty()) return;
        const fs::path path(arguments.picture);
        const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
        output_.emplace(arguments.batch ? arguments.picture : folder.string());
    }

    rooms::ScoreObserver observer(std::optional<int> unreached) {
        return [this, unreached](const rooms::ScoreImages& images) {
            if (arguments_.json) {
                by_map_[images.name] =
                    rooms::fatesOfRooms(images.predicted, images.truth, images.map, unreached);
            }
            if (!output_) return;
            output_->writeImage(
                fileOf(images.name),
                rooms::drawFates(images.predicted, images.truth, images.map, unreached));
        };
    }

    void commit() {
        if (output_) output_->commit();
    }

    const std::map<std::string, std::vector<rooms::RoomFate>>& byMap() const { return by_map_; }

 private:
    std::string fileOf(const std::string& map) const {
        if (!arguments_.batch) return fs::path(arguments_.picture).filename().string();
        const bool is_bare = arguments_.variant == rooms::kBareVariant;
        return map + (is_bare ? "" : "_" + arguments_.variant) + ".png";
    }

    const ScoreArguments& arguments_;
    std::optional<rooms::FileOutput> output_;
    std::map<std::string, std::vector<rooms::RoomFate>> by_map_;
};

void scoreOne(const ScoreArguments& arguments) {
    Fates fates(arguments);
    rooms::Score score;
    {
        const SilentStandardError silence(true);
        rooms::ScoreOptions options = arguments.options;
        if (hasUnreachedLabel(arguments.predicted)) options.unreached = kUnreached;
        score = rooms::scoreFiles(arguments.predicted, arguments.truth, arguments.map, options,
                                  fates.observer(options.unreached));
    }
    fates.commit();
    printResult(arguments.json ? rooms::scoreJson(score, fates.byMap().at(""))
                               : figureLines(score));
}

std::string batchText(const std::vector<rooms::MapScore>& maps) {
    std::string text = rooms::scoreText(maps);
    for (const rooms::FigureSummary& figure : rooms::summarize(maps)) {
        if (figure.name == kMainFigure) text += figureLine(figure.name, figure.mean, kDecimals);
    }
    return text;
}

void scoreAll(const ScoreArguments& arguments) {
    Fates fates(arguments);
    std::vector<rooms::MapScore> maps;
    {
        const SilentStandardError silence(true);
        maps = rooms::scoreBatch(arguments.predicted, arguments.truth, arguments.variant,
                                 arguments.options, fates.observer({}));
    }
    fates.commit();
    printResult(arguments.json ? rooms::scoreJson(maps, fates.byMap()) : batchText(maps));
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
