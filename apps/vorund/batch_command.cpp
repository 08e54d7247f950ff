#include <signal.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "batch_table.h"
#include "commands.h"
#include "interrupts.h"
#include "map_list.h"
#include "report.h"
#include "settings_in_force.h"
#include "summary.h"
#include "vorund/rooms/file_output.h"
#include "worker.h"

namespace vorund::app {
namespace {

constexpr char kLinePrefix[] = "vorund: ";
constexpr char kWarningPrefix[] = "vorund: warning: ";

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

/// What is the same for all maps of a batch.
std::vector<std::string> commonOptions(const Arguments& arguments) {
    std::vector<std::string> options;
    if (!arguments.settings.preset.empty()) {
        options.push_back("--preset=" + arguments.settings.preset);
    }
    if (!arguments.settings.file.empty()) options.push_back("--config=" + arguments.settings.file);
    for (const std::string& set : arguments.settings.sets) options.push_back("--set=" + set);
    options.emplace_back("--set=debug/show_images=false");
    if (arguments.reading.free) {
        const bool is_white = *arguments.reading.free == rooms::FreeColour::kWhite;
        options.emplace_back(is_white ? "--free=white" : "--free=black");
    }
    if (arguments.reading.values == rooms::PixelValues::kRaw) options.emplace_back("--values=raw");
    if (arguments.save_images) options.emplace_back("--save-images");
    if (arguments.verbosity == Verbosity::kQuiet) options.emplace_back("--quiet");
    if (arguments.verbosity == Verbosity::kVerbose) options.emplace_back("--verbose");
    return options;
}

class Batch {
 public:
    Batch(const Arguments& arguments, std::vector<NamedMap> maps, Terminal& terminal)
        : arguments_(arguments),
          options_(commonOptions(arguments)),
          maps_(std::move(maps)),
          terminal_(terminal) {
        for (const NamedMap& map : maps_) entries_.push_back({map.name, "", "", "", false});
    }

    /// Returns early when interrupted.
    void run() {
        std::size_t next = 0;
        while (notedInterrupt() == 0 && (next < maps_.size() || !runs_.empty())) {
            const auto jobs = static_cast<std::size_t>(arguments_.jobs);
            while (next < maps_.size() && runs_.size() < jobs) start(next++);
            showProgress();
            awaitOutput();
            takeEnded();
        }
        terminal_.clearProgress();
        for (const Run& run : runs_) run.worker->send(SIGTERM);
        while (!runs_.empty()) {
            awaitOutput();
            takeEnded();
        }
    }

    const std::vector<BatchEntry>& entries() const { return entries_; }

    std::size_t countDone() const {
        return static_cast<std::size_t>(
            std::count_if(entries_.begin(), entries_.end(),
                          [](const BatchEntry& entry) { return entry.is_done; }));
    }

 private:
    struct Run {
        std::size_t index;
        std::unique_ptr<Worker> worker;
    };

    std::string directoryOf(const NamedMap& map) const {
        return (std::filesystem::path(arguments_.output_dir) / map.name).string();
    }

    std::string timesFileOf(const NamedMap& map) const {
        return (std::filesystem::path(arguments_.timings) / (map.name + ".json")).string();
    }

    bool hasResults(const NamedMap& map) const {
        std::error_code ignored;
        return std::filesystem::exists(directoryOf(map) + "/rooms.json", ignored);
    }

    void start(std::size_t index) {
        const NamedMap& map = maps_[index];
        if (arguments_.resume && hasResults(map)) {
            entries_[index].is_done = true;
            return;
        }
        // A file name must not look like an option.
        const std::string path = startsWith(map.path, "-") ? "./" + map.path : map.path;
        std::vector<std::string> words{"segment", path, "--out=" + directoryOf(map)};
        if (!arguments_.timings.empty()) words.push_back("--timings=" + timesFileOf(map));
        words.insert(words.end(), options_.begin(), options_.end());
        try {
            runs_.push_back({index, std::make_unique<Worker>(words)});
        } catch (const std::runtime_error& error) {
            entries_[index].error = error.what();
        }
    }

    void showProgress() {
        const auto finished = std::count_if(
            entries_.begin(), entries_.end(),
            [](const BatchEntry& entry) { return entry.is_done || !entry.error.empty(); });
        std::string text =
            std::to_string(finished) + " of " + std::to_string(maps_.size()) + " maps done ...";
        if (text == progress_) return;
        terminal_.progress(text);
        progress_ = text;
    }

    void awaitOutput() {
        std::vector<Worker*> workers;
        for (const Run& run : runs_) workers.push_back(run.worker.get());
        if (!workers.empty()) Worker::readOutputs(workers);
    }

    void takeEnded() {
        for (auto run = runs_.begin(); run != runs_.end();) {
            if (run->worker->hasEnded()) {
                take(*run->worker, entries_[run->index]);
                run = runs_.erase(run);
            } else {
                ++run;
            }
        }
    }

    void take(Worker& worker, BatchEntry& entry) {
        const int status = worker.status();
        const std::string error = passOn(worker.err(), entry.name);
        const std::optional<Summary> summary = parseSummary(worker.out());
        if (status == 0 && summary) {
            entry.rooms = summary->rooms;
            entry.seconds = summary->seconds;
            entry.is_done = true;
            return;
        }
        entry.error = error.empty() ? "ended with status " + std::to_string(status) : error;
    }

    /// Passes on what a worker says of its own map. @return its error, or nothing.
    std::string passOn(const std::string& text, const std::string& name) {
        std::string error;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (startsWith(line, kWarningPrefix)) {
                // Of the settings all workers say the same, and this process has said it.
                if (terminal_.hasWarned(line + "\n")) continue;
                terminal_.warn(name + ": " + line.substr(sizeof(kWarningPrefix) - 1));
                progress_.clear();
            } else if (startsWith(line, kLinePrefix)) {
                error = line.substr(sizeof(kLinePrefix) - 1);
            } else {
                terminal_.detail(name + ": " + line);
            }
        }
        return error;
    }

    const Arguments& arguments_;
    std::vector<std::string> options_;
    std::vector<NamedMap> maps_;
    Terminal& terminal_;
    std::vector<BatchEntry> entries_;
    std::vector<Run> runs_;
    std::string progress_;
};

}  // namespace

void runBatch(const Arguments& arguments, Terminal& terminal) {
    if (arguments.show_images)
        throw UsageError("--show-images has a meaning for a single map only");
    noteInterrupts();
    std::vector<NamedMap> maps = findMaps(arguments.maps);
    settingsInForce(arguments.settings, terminal);
    // Workers come and go: none of them may take a directory away from another one. It goes at
    // the end if nothing is in it.
    const rooms::FileOutput directory(arguments.output_dir);
    std::optional<rooms::FileOutput> times_directory;
    if (!arguments.timings.empty()) times_directory.emplace(arguments.timings);
    Batch batch(arguments, std::move(maps), terminal);
    batch.run();
    const std::string all = std::to_string(batch.entries().size());
    const std::size_t done = batch.countDone();
    if (notedInterrupt() != 0) {
        throw Interrupted(arguments.output_dir + ": interrupted, " + std::to_string(done) + " of " +
                          all + " maps are done");
    }
    printResult(batchTable(batch.entries()));
    if (done == batch.entries().size()) return;
    throw std::runtime_error(arguments.output_dir + ": " +
                             std::to_string(batch.entries().size() - done) + " of " + all +
                             " maps failed");
}

}  // namespace vorund::app
