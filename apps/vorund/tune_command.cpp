#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <locale>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "interrupts.h"
#include "report.h"
#include "settings_in_force.h"
#include "silent_standard_error.h"
#include "tune_search.h"
#include "tune_state.h"
#include "vorund/debugger.h"
#include "vorund/rooms/file_output.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/rooms/score_files.h"
#include "vorund/rooms/settings.h"

namespace vorund::app {
namespace {

namespace fs = std::filesystem;

constexpr char kStateEnding[] = ".state.json";
constexpr int kDecimals = 6;

std::string figure(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(kDecimals) << value;
    return text.str();
}

/// A map with its truth.
struct Sample {
    rooms::ScoreImages images;
    rooms::GridMap map;
};

std::vector<Sample> readSamples(const TuneArguments& arguments) {
    const SilentStandardError silence(true);
    const std::string suffix =
        arguments.variant == rooms::kBareVariant ? "" : "_" + arguments.variant;
    std::vector<Sample> samples;
    for (rooms::ScoreImages& images :
         rooms::readMapsWithTruth(arguments.maps_dir, arguments.variant, arguments.options)) {
        const fs::path path = fs::path(arguments.maps_dir) / (images.name + suffix + ".png");
        rooms::GridMap map = rooms::readMap(path.string());
        samples.push_back({std::move(images), std::move(map)});
    }
    return samples;
}

std::string bytesOf(const cv::Mat& image) {
    std::string bytes;
    for (int row = 0; row < image.rows; ++row) {
        const auto* const first = reinterpret_cast<const char*>(image.ptr(row));
        bytes.append(first, static_cast<std::size_t>(image.cols) * image.elemSize());
    }
    return bytes;
}

/// What a search is about: with another one its runs have nothing in common.
std::string problemOf(const std::vector<Sample>& samples, const rooms::Settings& start) {
    std::string text = std::string(VORUND_VERSION) + "\n";
    // What is searched has the same values at the start of all searches.
    text += rooms::settingsAsYaml(withValues(valuesAt(pointOf({})), start));
    for (const Sample& sample : samples) {
        const cv::Size size = sample.map.values.size();
        text += sample.images.name + " " + std::to_string(size.width) + " x " +
                std::to_string(size.height) + " " + bytesOf(sample.map.values) +
                bytesOf(sample.images.map) + bytesOf(sample.images.truth.rooms);
    }
    return fingerprint(text);
}

using Indices = std::vector<std::size_t>;

class Tuning {
 public:
    Tuning(const TuneArguments& arguments, rooms::Settings start, std::vector<Sample> samples,
           Terminal& terminal)
        : arguments_(arguments),
          start_(std::move(start)),
          samples_(std::move(samples)),
          state_(arguments.output + kStateEnding, problemOf(samples_, start_)),
          terminal_(terminal) {
        for (std::size_t i = 0; i < samples_.size(); ++i) all_.push_back(i);
        const auto folds = static_cast<std::size_t>(arguments.folds);
        if (samples_.size() > 1 && folds > 1) folds_ = std::min(folds, samples_.size());
        state_.write();  // That it cannot be is told before the work, not after it.
    }

    TuneValues search() {
        before_ = mean(valuesAt(pointOf(start_)), all_);
        const TuneValues best = searchAmong(all_, "search");
        after_ = mean(best, all_);
        measureUnseen();
        return best;
    }

    bool isFittedToItsMaps() const { return folds_ > 0 && unseen_ < before_; }

    std::string report() const {
        std::string text = "maps: " + std::to_string(samples_.size()) +
                           "\nbefore: " + figure(before_) + "\nafter: " + figure(after_) + "\n";
        if (folds_ > 0) text += "unseen: " + figure(unseen_) + "\n";
        return text;
    }

 private:
    double mean(const TuneValues& values, const Indices& among) {
        double sum = 0.0;
        bool is_new = false;
        for (const std::size_t i : among) {
            const std::string& name = samples_[i].images.name;
            const double* known = state_.score(values, name);
            if (known == nullptr) {
                state_.add(values, name, score(samples_[i], values));
                known = state_.score(values, name);
                is_new = true;
            }
            sum += *known;
        }
        if (is_new) state_.write();
        return sum / static_cast<double>(among.size());
    }

    /// A map whose run fails counts as 0.
    double score(const Sample& sample, const TuneValues& values) {
        rooms::FlowObserver observer;
        observer.progress = [](const std::string&, int, int) { return notedInterrupt() == 0; };
        try {
            if (notedInterrupt() != 0) throw Cancelled("");
            const rooms::Rooms found =
                rooms::findRooms(sample.map, withValues(values, start_),
                                 Debugger::create(DebuggerConfig{}), observer);
            return rooms::scoreRooms(found.labels, sample.images.truth, sample.images.map).mcc_1to1;
        } catch (const Cancelled&) {
            state_.write();
            throw Interrupted(arguments_.output + ": interrupted, " + state_.path() +
                              " holds what is done; the same command goes on");
        } catch (const std::exception& error) {
            terminal_.warn(sample.images.name + ": counts as 0: " + causeOf(error));
            return 0.0;
        }
    }

    TuneValues searchAmong(const Indices& among, const std::string& title) {
        int done = 0;
        double best = -1.0;
        const auto merit = [&](const TuneValues& values) {
            const double value = mean(values, among);
            best = std::max(best, value);
            printResult(title + ", " + std::to_string(++done) + " of " +
                        std::to_string(arguments_.evaluations) + ": " + figure(value) + " (best " +
                        figure(best) + ")\n");
            return value;
        };
        return searchBest(pointOf(start_), arguments_.evaluations, merit);
    }

    /// Map i is in part i modulo their number: neighbours by name, which are often of one building,
    /// come into different parts.
    void measureUnseen() {
        double sum = 0.0;
        for (std::size_t fold = 0; fold < folds_; ++fold) {
            Indices kept;
            Indices left_out;
            for (const std::size_t i : all_) (i % folds_ == fold ? left_out : kept).push_back(i);
            const TuneValues best = searchAmong(
                kept, "without part " + std::to_string(fold + 1) + " of " + std::to_string(folds_));
            sum += mean(best, left_out) * static_cast<double>(left_out.size());
        }
        unseen_ = sum / static_cast<double>(samples_.size());
    }

    const TuneArguments& arguments_;
    rooms::Settings start_;
    std::vector<Sample> samples_;
    TuneState state_;
    Terminal& terminal_;
    Indices all_;
    std::size_t folds_ = 0;
    double before_ = 0.0;
    double after_ = 0.0;
    double unseen_ = 0.0;
};

std::string commented(const std::string& lines) {
    std::string text = "# Found by vorund tune: the mean mcc_1to1 over the maps.\n";
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) text += "# " + line + "\n";
    return text;
}

}  // namespace

void runTune(const Arguments& arguments, Terminal& terminal) {
    noteInterrupts();
    const TuneArguments& tune = arguments.tune;
    const rooms::Settings start = settingsInForce(arguments.settings, terminal);
    std::vector<Sample> samples = readSamples(tune);
    const fs::path path(tune.output);
    rooms::FileOutput output(path.has_parent_path() ? path.parent_path().string() : ".");
    Tuning tuning(tune, start, std::move(samples), terminal);
    const TuneValues best = tuning.search();
    const std::string yaml =
        commented(tuning.report()) + rooms::settingsAsYaml(withValues(best, start));
    output.write(path.filename().string(), std::vector<std::uint8_t>(yaml.begin(), yaml.end()));
    output.commit();
    if (tuning.isFittedToItsMaps()) {
        terminal.warn(tune.output +
                      ": on maps that a search was not given, what it finds does worse than the "
                      "settings before; keep those, or add maps");
    }
    std::string found;
    for (const std::string& value : best) found += value + "\n";
    printResult(found + tuning.report());
}

}  // namespace vorund::app
