#include "vorund/rooms/score_files.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "maps/image_file.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

namespace fs = std::filesystem;

constexpr char kTruthMark[] = "_gt_segmentation";
constexpr char kTruthEnding[] = "_gt_segmentation.png";
constexpr char kRoomsFile[] = "rooms.png";

bool isThere(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

/// Grey as the decoder makes it, so that colours and alpha are weighed as in other programs that
/// ask it for grey.
cv::Mat readGrey(const std::string& path) {
    readImageFile(path);  // It tells the causes apart, and misses what was cut off.
    std::vector<std::uint8_t> bytes = readBytes(path);
    bytes.push_back('\n');  // The decoder of text files wants a blank after the last number too.
    const cv::Mat grey = cv::imdecode(bytes, cv::IMREAD_GRAYSCALE);
    if (grey.empty()) throw MapError(path + ": it cannot be decoded as a grey image");
    return grey;
}

std::string sizeText(const cv::Mat& image) {
    return std::to_string(image.cols) + " x " + std::to_string(image.rows) + " pixels";
}

/// NAME of NAME_gt_segmentation.png; empty for a file of another kind of name.
std::string nameOfTruth(const fs::path& path) {
    const std::string stem = path.stem().string();
    const std::size_t mark = stem.rfind(kTruthMark);
    const bool is_last = mark != std::string::npos && stem.size() - mark == sizeof(kTruthMark) - 1;
    return is_last ? stem.substr(0, mark) : "";
}

/// The map beside a truth; empty if there is none.
std::string mapBeside(const fs::path& truth_path) {
    const std::string name = nameOfTruth(truth_path);
    if (name.empty()) return "";
    const fs::path map = truth_path.parent_path() / (name + ".png");
    return isThere(map) ? map.string() : "";
}

/// @param detaching_map  Path, empty if there is none.
Truth readTruth(const std::string& path, const std::string& detaching_map,
                const ScoreOptions& options) {
    if (options.truth == TruthKind::kLabels) return truthFromLabels(readImageFile(path).pixels);
    const cv::Mat drawing = readGrey(path);
    cv::Mat map;
    if (!detaching_map.empty() && !options.keep_detached) map = readGrey(detaching_map);
    if (map.size() != drawing.size()) map.release();
    return truthFromDrawing(drawing, map, options.keep_detached);
}

void requireSize(const std::string& path, const cv::Mat& image, const Truth& truth) {
    if (image.size() == truth.rooms.size()) return;
    throw MapError(path + ": it has " + sizeText(image) + ", the truth " + sizeText(truth.rooms));
}

Score scoreFile(const std::string& path, ScoreImages& images, const ScoreOptions& options) {
    images.predicted = readImageFile(path).pixels;
    requireSize(path, images.predicted, images.truth);
    try {
        return scoreRooms(images.predicted, images.truth, images.map, options.unreached);
    } catch (const std::invalid_argument& error) {
        throw MapError(path + ": " + error.what());
    }
}

void tell(const ScoreObserver& observer, const ScoreImages& images) {
    if (observer) observer(images);
}

/// The names of the maps that have a truth, in the order of the truths' file names.
std::vector<std::string> namesOfTruths(const std::string& maps_dir) {
    std::vector<std::string> files;
    std::error_code error;
    fs::directory_iterator entry(maps_dir, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string file = entry->path().filename().string();
        if (file.front() != '.') files.push_back(file);
    }
    if (error) throw MapError(maps_dir + ": " + error.message());
    std::sort(files.begin(), files.end());
    std::vector<std::string> names;
    for (const std::string& file : files) {
        const std::string name = nameOfTruth(file);
        if (!name.empty() && file == name + kTruthEnding) names.push_back(name);
    }
    return names;
}

std::string predictionOf(const fs::path& results_dir, const std::string& name) {
    const fs::path in_folder = results_dir / name / kRoomsFile;
    if (isThere(in_folder)) return in_folder.string();
    const fs::path alone = results_dir / (name + ".png");
    if (isThere(alone)) return alone.string();
    throw MapError(results_dir.string() + ": neither " + name + "/" + kRoomsFile + " nor " + name +
                   ".png is there");
}

/// The score of a map whose prediction cannot be scored.
Score scoreOfNothing(const Truth& truth) {
    double rooms = 0.0;
    cv::minMaxLoc(truth.rooms, nullptr, &rooms);
    Score score;
    score.n_gt = static_cast<int>(rooms);
    score.unlabelled = 1.0;
    return score;
}

/// A folder of maps, in one variant.
class MapFolder {
 public:
    MapFolder(fs::path dir, const std::string& variant, const ScoreOptions& options)
        : dir_(std::move(dir)),
          suffix_(variant == kBareVariant ? "" : "_" + variant),
          options_(options) {}

    /// Nothing if the map is not there in this variant, or has another size than its truth.
    std::optional<ScoreImages> read(const std::string& name) const {
        if (!isThere(mapPath(name))) return {};
        ScoreImages images{name, {}, {}, readGrey(mapPath(name))};
        images.truth = readTruth(truthPath(name), mapBeside(truthPath(name)), options_);
        if (images.map.size() != images.truth.rooms.size()) return {};
        return images;
    }

    /// Likewise.
    std::optional<MapScore> score(const std::string& name, const fs::path& results_dir,
                                  const ScoreObserver& observer) const {
        std::optional<ScoreImages> images = read(name);
        if (!images) return {};
        MapScore score{name, {}, ""};
        try {
            score.score = scoreFile(predictionOf(results_dir, name + suffix_), *images, options_);
        } catch (const MapError& error) {
            return MapScore{name, scoreOfNothing(images->truth), error.what()};
        }
        tell(observer, *images);
        return score;
    }

 private:
    std::string mapPath(const std::string& name) const {
        return (dir_ / (name + suffix_ + ".png")).string();
    }
    std::string truthPath(const std::string& name) const {
        return (dir_ / (name + kTruthEnding)).string();
    }

    fs::path dir_;
    std::string suffix_;
    ScoreOptions options_;
};

[[noreturn]] void throwNoMap(const std::string& maps_dir, const std::string& variant) {
    throw MapError(maps_dir + ": no map of the variant \"" + variant + "\" with a truth NAME" +
                   kTruthEnding + " of its size");
}

}  // namespace

std::vector<ScoreImages> readMapsWithTruth(const std::string& maps_dir, const std::string& variant,
                                           const ScoreOptions& options) {
    const MapFolder folder(maps_dir, variant, options);
    std::vector<ScoreImages> maps;
    for (const std::string& name : namesOfTruths(maps_dir)) {
        std::optional<ScoreImages> images = folder.read(name);
        if (images) maps.push_back(std::move(*images));
    }
    if (maps.empty()) throwNoMap(maps_dir, variant);
    return maps;
}

Score scoreFiles(const std::string& predicted_path, const std::string& truth_path,
                 const std::string& map_path, const ScoreOptions& options,
                 const ScoreObserver& observer) {
    const std::string beside = mapBeside(truth_path);
    const bool is_named = !nameOfTruth(truth_path).empty();
    ScoreImages images;
    images.truth = readTruth(truth_path, is_named ? beside : map_path, options);
    const std::string counting_map = map_path.empty() ? beside : map_path;
    if (!counting_map.empty()) {
        images.map = readGrey(counting_map);
        requireSize(counting_map, images.map, images.truth);
    }
    const Score score = scoreFile(predicted_path, images, options);
    tell(observer, images);
    return score;
}

std::vector<MapScore> scoreBatch(const std::string& results_dir, const std::string& maps_dir,
                                 const std::string& variant, const ScoreOptions& options,
                                 const ScoreObserver& observer) {
    const MapFolder maps(maps_dir, variant, options);
    std::vector<MapScore> scores;
    for (const std::string& name : namesOfTruths(maps_dir)) {
        const std::optional<MapScore> score = maps.score(name, results_dir, observer);
        if (score) scores.push_back(*score);
    }
    if (scores.empty()) throwNoMap(maps_dir, variant);
    return scores;
}

}  // namespace vorund::rooms
