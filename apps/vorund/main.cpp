#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>

#include "arguments.h"
#include "commands.h"
#include "console.h"
#include "interrupts.h"
#include "map_list.h"
#include "report.h"
#include "terminal.h"

namespace vorund::app {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;
constexpr int kSignal = 128;  // As shells count: 130 after Ctrl-C.

/// A program may be started without one of its standard streams. The next file it opens would take
/// the place, and messages would go into it.
void fillStandardStreams() {
    int file = ::open("/dev/null", O_RDWR);
    while (file >= 0 && file <= STDERR_FILENO) file = ::open("/dev/null", O_RDWR);
    if (file >= 0) ::close(file);
}

void run(const Arguments& arguments) {
    if (arguments.command == Command::kPrint) {
        printResult(arguments.text);
        return;
    }
    // One thread: the whole machine is for the robot, and results are the same on all.
    cv::setNumThreads(1);
    if (arguments.verbosity != Verbosity::kVerbose) {
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    }
    Terminal terminal(arguments.verbosity);
    const Console console(terminal);
    switch (arguments.command) {
        case Command::kConfig:
            return runConfig(arguments, terminal);
        case Command::kTune:
            return runTune(arguments, terminal);
        case Command::kScore:
            return runScore(arguments.score);
        default:
            return isBatch(arguments.maps) ? runBatch(arguments, terminal)
                                           : runSegment(arguments, terminal);
    }
}

int runProgram(int argc, const char* const* argv) {
    fillStandardStreams();
    try {
        run(parseArguments(argc, argv));
        return kSuccess;
    } catch (const UsageError& error) {
        std::cerr << errorLine(std::string(error.what()) + " (see vorund --help)");
        return kWrongUsage;
    } catch (const Interrupted& error) {
        std::cerr << errorLine(error.what());
        return kSignal + notedInterrupt();
    } catch (const std::exception& error) {
        std::cerr << errorLine(causeOf(error));
        return kFailure;
    }
}

}  // namespace
}  // namespace vorund::app

int main(int argc, char** argv) {
    return vorund::app::runProgram(argc, argv);
}
