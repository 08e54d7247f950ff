#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "interrupts.h"
#include "report.h"
#include "run_times.h"
#include "segment_outputs.h"
#include "settings_in_force.h"
#include "silent_standard_error.h"
#include "summary.h"
#include "vorund/debugger.h"
#include "vorund/rooms/file_output.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/map_reader.h"
#include "window.h"

namespace vorund::app {
namespace {

constexpr char kDebugDirectory[] = "debug";

void stopIfInterrupted(const std::string& map) {
    if (notedInterrupt() != 0) throw Interrupted(map + ": interrupted, nothing is written");
}

rooms::GridMap readMap(const Arguments& arguments) {
    const SilentStandardError silence(arguments.verbosity != Verbosity::kVerbose);
    try {
        return rooms::readMap(arguments.maps.front(), arguments.reading);
    } catch (const rooms::MapError&) {
        throw;  // Names the file itself.
    } catch (const std::exception& error) {
        throw std::runtime_error(arguments.maps.front() + ": " + causeOf(error));
    }
}

DebuggerConfig debuggerConfig(const Arguments& arguments, const Config& config,
                              rooms::FileOutput& output, Terminal& terminal) {
    DebuggerConfig debugger;
    debugger.save_images = arguments.save_images || config.debug.save_images;
    debugger.show_images = arguments.show_images || config.debug.show_images;
    const std::string hindrance = debugger.show_images ? whyNothingCanBeShown() : "";
    if (!hindrance.empty()) {
        terminal.warn(hindrance + ": no images are shown");
        debugger.show_images = false;
    }
    if (debugger.save_images) debugger.output_dir = output.openDirectory(kDebugDirectory);
    return debugger;
}

StageObserver progress(Terminal& terminal) {
    return [&terminal](const std::string& stage, int done, int total) {
        const bool counts = total > 1 && done > 0;
        terminal.progress(stage + (counts ? " " + std::to_string(done) : "") + " ...");
        return notedInterrupt() == 0 && terminal.firstError().empty();
    };
}

struct Result {
    rooms::Rooms rooms;
    RunImages images;
};

/// The debugger, and with it the log file, is closed when this returns.
Result segment(const rooms::GridMap& map, const rooms::Settings& settings,
               const DebuggerConfig& diagnostics, Terminal& terminal, RunTimes& times) {
    // On a full disk the encoder has its say too.
    const bool hides_encoder =
        diagnostics.save_images && terminal.verbosity() != Verbosity::kVerbose;
    const SilentStandardError silence(hides_encoder);
    const std::shared_ptr<Debugger> debugger = Debugger::create(diagnostics);
    if (diagnostics.save_images) debugger->initLog();
    Result result;
    rooms::FlowObserver observer;
    observer.progress = progress(terminal);
    keepImages(observer, result.images);
    times.follow(observer);
    result.rooms = rooms::findRooms(map, settings, debugger, observer);
    terminal.clearProgress();
    return result;
}

/// Fails by what the library logged as an error: that an image of a stage could not be written.
void failIfErrorsWereLogged(const std::string& output_dir, const DebuggerConfig& diagnostics,
                            const Terminal& terminal) {
    std::string error = terminal.firstError();
    if (error.empty()) return;
    // The place that the user would find it in, not the temporary one.
    const std::size_t place = error.find(diagnostics.output_dir);
    if (diagnostics.save_images && place != std::string::npos) {
        error.replace(place, diagnostics.output_dir.size(), output_dir + "/" + kDebugDirectory);
    }
    throw std::runtime_error(output_dir + ": " + error);
}

Result segmentOrFail(const Arguments& arguments, const rooms::GridMap& map,
                     const rooms::Settings& settings, const DebuggerConfig& diagnostics,
                     Terminal& terminal, RunTimes& times) {
    Result result;
    try {
        result = segment(map, settings, diagnostics, terminal, times);
    } catch (const Cancelled&) {
        stopIfInterrupted(arguments.maps.front());  // Else an error was logged.
    } catch (const std::exception& error) {
        throw std::runtime_error(arguments.maps.front() + ": " + causeOf(error));
    }
    failIfErrorsWereLogged(arguments.output_dir, diagnostics, terminal);
    return result;
}

double megapixelsOf(const rooms::GridMap& map) {
    constexpr double kPixels = 1e6;
    return static_cast<double>(map.values.total()) / kPixels;
}

}  // namespace

void runSegment(const Arguments& arguments, Terminal& terminal) {
    RunTimes times;
    noteInterrupts();
    if (arguments.resume) {
        throw UsageError("--resume has a meaning for several maps or a folder only");
    }
    std::optional<TimesFile> times_file;
    if (!arguments.timings.empty()) times_file.emplace(arguments.timings, arguments.output_dir);
    const rooms::Settings settings = settingsInForce(arguments.settings, terminal);
    const rooms::GridMap map = readMap(arguments);
    times.begin(kStagePrepare);
    // Before the long computation, so that a directory that cannot be written to is told at once.
    rooms::FileOutput output(arguments.output_dir);
    const DebuggerConfig diagnostics = debuggerConfig(arguments, settings.core, output, terminal);
    const Result result = segmentOrFail(arguments, map, settings, diagnostics, terminal, times);
    times.begin(kStageWrite);
    writeResults(map, result.rooms, result.images, output);
    if (times_file) times_file->write(times.asJson(megapixelsOf(map)));
    stopIfInterrupted(arguments.maps.front());
    output.commit();
    if (times_file) times_file->commit();
    printResult(summaryLine(result.rooms, times.seconds()));
    if (diagnostics.show_images) showUntilKey(paintRooms(map, result.rooms));
}

}  // namespace vorund::app
