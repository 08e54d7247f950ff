#include "vorund/debugger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>

#include <map>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "support/captures.h"

namespace vorund {
namespace {

using test::ConsoleCapture;
using test::ConsoleLine;
using test::readFile;
using test::splitLines;
using test::StderrCapture;
using test::TempDir;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

constexpr char kStarted[] = "[INFO] === Floorplan Segmentation Debug Session Started ===";
constexpr char kEnded[] = "[INFO] === Floorplan Segmentation Debug Session Ended ===";

constexpr char kTimestamp[] =
    "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9][0-9][0-9]";
constexpr std::size_t kTimestampLength = 23;

DebuggerConfig configIn(const TempDir& dir, LogLevel level = LogLevel::INFO) {
    DebuggerConfig config;
    config.output_dir = dir.path();
    config.log_file = "session.log";
    config.log_level = level;
    return config;
}

/// The lines of a session log without their timestamps, each of which is checked.
std::vector<std::string> sessionLines(const std::string& path) {
    std::vector<std::string> lines;
    for (const std::string& line : splitLines(readFile(path))) {
        const std::string stamp = line.substr(0, kTimestampLength + 3);
        EXPECT_THAT(stamp, MatchesRegex("\\[" + std::string(kTimestamp) + "\\] "));
        lines.push_back(line.substr(stamp.size()));
    }
    return lines;
}

TEST(DebuggerConfig, IsQuietByDefault) {
    const DebuggerConfig config;
    EXPECT_FALSE(config.show_images);
    EXPECT_FALSE(config.save_images);
    EXPECT_EQ(config.output_dir, ".");
    EXPECT_EQ(config.log_file, "vorund.log");
    EXPECT_EQ(config.log_level, LogLevel::INFO);
}

TEST(LogLevel, HasItsTexts) {
    EXPECT_EQ(Debugger::logLevelToString(LogLevel::DEBUG), "DEBUG");
    EXPECT_EQ(Debugger::logLevelToString(LogLevel::INFO), "INFO");
    EXPECT_EQ(Debugger::logLevelToString(LogLevel::WARN), "WARN");
    EXPECT_EQ(Debugger::logLevelToString(LogLevel::ERROR), "ERROR");
    EXPECT_EQ(Debugger::logLevelToString(static_cast<LogLevel>(4)), "UNKNOWN");
    EXPECT_EQ(Debugger::logLevelToString(static_cast<LogLevel>(-1)), "UNKNOWN");
}

TEST(LogLevel, HasItsNumbers) {
    EXPECT_EQ(static_cast<int>(LogLevel::DEBUG), 0);
    EXPECT_EQ(static_cast<int>(LogLevel::INFO), 1);
    EXPECT_EQ(static_cast<int>(LogLevel::WARN), 2);
    EXPECT_EQ(static_cast<int>(LogLevel::ERROR), 3);
    EXPECT_TRUE((std::is_same<std::underlying_type_t<LogLevel>, std::int32_t>::value));
}

TEST(Timestamps, HaveTheirForms) {
    EXPECT_THAT(Debugger::getCurrentTimestamp(), MatchesRegex(kTimestamp));
    EXPECT_THAT(Debugger::getTimestampForFilename(),
                MatchesRegex("[0-9][0-9][0-9][0-9][0-1][0-9][0-3][0-9]_"
                             "[0-2][0-9][0-5][0-9][0-6][0-9]"));
}

/// Sets the time zone, and the former one at its end.
class TimeZone {
 public:
    explicit TimeZone(const std::string& zone) {
        const char* former = getenv("TZ");
        had_former_ = former != nullptr;
        if (had_former_) former_ = former;
        setenv("TZ", zone.c_str(), 1);
        tzset();
    }
    ~TimeZone() {
        if (had_former_) {
            setenv("TZ", former_.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

 private:
    bool had_former_;
    std::string former_;
};

TEST(Timestamps, AreInLocalTime) {
    std::string east;
    std::string west;
    std::string east_name;
    std::string west_name;
    {
        const TimeZone zone("EAST-14");
        east = Debugger::getCurrentTimestamp();
        east_name = Debugger::getTimestampForFilename();
    }
    {
        const TimeZone zone("WEST+12");
        west = Debugger::getCurrentTimestamp();
        west_name = Debugger::getTimestampForFilename();
    }
    // 26 hours apart, so it is never the same day.
    EXPECT_NE(east.substr(0, 10), west.substr(0, 10));
    EXPECT_NE(east_name.substr(0, 8), west_name.substr(0, 8));
}

TEST(Debugger, IsNeitherCopiedNorMoved) {
    EXPECT_FALSE(std::is_copy_constructible<Debugger>::value);
    EXPECT_FALSE(std::is_copy_assignable<Debugger>::value);
    EXPECT_FALSE(std::is_move_constructible<Debugger>::value);
    EXPECT_FALSE(std::is_move_assignable<Debugger>::value);
}

TEST(DebuggerOutputDirectory, IsMadeWithTheRightsThatEverybodyMayRead) {
    const TempDir dir;
    DebuggerConfig config = configIn(dir);
    config.output_dir = dir.file("out");
    const mode_t former = umask(0);
    const StderrCapture err;
    Debugger::create(config);
    umask(former);
    struct stat status {};
    ASSERT_EQ(stat(config.output_dir.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777U, 0755U);
    EXPECT_EQ(err.text(), "");
    // The session log is not opened yet.
    EXPECT_THAT(TempDir().names(), IsEmpty());
    EXPECT_THAT(dir.names(), ElementsAre("out"));
    EXPECT_NE(stat((config.output_dir + "/session.log").c_str(), &status), 0);
}

TEST(DebuggerOutputDirectory, IsMadeOneLevelDeepOnly) {
    const TempDir dir;
    DebuggerConfig config = configIn(dir);
    config.output_dir = dir.file("missing/out");
    const ConsoleCapture console;
    const StderrCapture err;
    const std::shared_ptr<Debugger> debugger = Debugger::create(config);
    EXPECT_EQ(err.text(), "Failed to create output directory: " + config.output_dir + "\n");
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(dir.names(), IsEmpty());
    // It stays usable.
    debugger->logInfo("still here");
    EXPECT_THAT(console.lines(), ElementsAre(ConsoleLine{"INFO", "still here"}));
}

TEST(DebuggerOutputDirectory, MayExist) {
    const TempDir dir;
    const StderrCapture err;
    dir.write("kept.txt", "kept");
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->ensureOutputDirectory();
    EXPECT_EQ(err.text(), "");
    EXPECT_EQ(readFile(dir.file("kept.txt")), "kept");
}

TEST(DebuggerOutputDirectory, MayBeARegularFile) {
    const TempDir dir;
    DebuggerConfig config = configIn(dir);
    config.output_dir = dir.write("file", "content");
    const ConsoleCapture console;
    const StderrCapture err;
    Debugger::create(config);
    EXPECT_EQ(err.text(), "");
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_EQ(readFile(config.output_dir), "content");
}

TEST(DebuggerOutputDirectory, IsMadeAgainWhenItWasRemoved) {
    const TempDir dir;
    DebuggerConfig config = configIn(dir);
    config.output_dir = dir.file("out");
    const std::shared_ptr<Debugger> debugger = Debugger::create(config);
    ASSERT_EQ(remove(config.output_dir.c_str()), 0);
    debugger->ensureOutputDirectory();
    EXPECT_THAT(dir.names(), ElementsAre("out"));
}

TEST(DebuggerLog, ReachesTheConsoleWithTheBareMessage) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir, LogLevel::DEBUG));
    debugger->logDebug("one");
    debugger->logInfo("two");
    debugger->logWarning("three");
    debugger->logError("four");
    debugger->log(LogLevel::WARN, "five");
    EXPECT_THAT(console.lines(),
                ElementsAre(ConsoleLine{"DEBUG", "one"}, ConsoleLine{"INFO", "two"},
                            ConsoleLine{"WARN", "three"}, ConsoleLine{"ERROR", "four"},
                            ConsoleLine{"WARN", "five"}));
    EXPECT_THAT(dir.names(), IsEmpty());
}

TEST(DebuggerLog, KeepsLowerLevelsOffTheConsole) {
    const TempDir dir;
    const std::vector<LogLevel> levels = {LogLevel::DEBUG, LogLevel::INFO, LogLevel::WARN,
                                          LogLevel::ERROR};
    for (const LogLevel lowest : levels) {
        const ConsoleCapture console;
        const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir, lowest));
        std::vector<ConsoleLine> expected;
        for (const LogLevel level : levels) {
            debugger->log(level, "text");
            if (level >= lowest) expected.push_back({Debugger::logLevelToString(level), "text"});
        }
        EXPECT_EQ(console.lines(), expected) << Debugger::logLevelToString(lowest);
    }
}

TEST(DebuggerLog, TakesAMessageAsItIs) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::string long_message(5000, 'x');
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->initLog();
    for (const std::string& message : {std::string("100%s %d %n"), std::string(), long_message}) {
        debugger->logInfo(message);
    }
    debugger->saveLog();
    EXPECT_THAT(console.texts("INFO"), ElementsAre("100%s %d %n", "", long_message));
    EXPECT_THAT(
        sessionLines(dir.file("session.log")),
        ElementsAre(kStarted, "[INFO] 100%s %d %n", "[INFO] ", "[INFO] " + long_message, kEnded));
}

TEST(DebuggerLog, WritesLevelsThatHaveNoNameToTheFileOnly) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir, LogLevel::DEBUG));
    debugger->initLog();
    debugger->log(static_cast<LogLevel>(4), "above");
    debugger->log(static_cast<LogLevel>(-1), "below");
    debugger->saveLog();
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(sessionLines(dir.file("session.log")),
                ElementsAre(kStarted, "[UNKNOWN] above", "[UNKNOWN] below", kEnded));
}

TEST(DebuggerSession, HoldsEveryLineWhateverTheConsoleShows) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir, LogLevel::INFO));
    debugger->initLog();
    debugger->logDebug("one");
    debugger->logInfo("two");
    debugger->logWarning("three");
    debugger->logError("four");
    // Every line is flushed: the file holds them while the session is open.
    EXPECT_THAT(sessionLines(dir.file("session.log")),
                ElementsAre(kStarted, "[DEBUG] one", "[INFO] two", "[WARN] three", "[ERROR] four"));
    debugger->saveLog();
    EXPECT_THAT(
        sessionLines(dir.file("session.log")),
        ElementsAre(kStarted, "[DEBUG] one", "[INFO] two", "[WARN] three", "[ERROR] four", kEnded));
    EXPECT_THAT(console.texts(), ElementsAre("two", "three", "four"));
}

TEST(DebuggerSession, EndsEveryLineWithANewline) {
    const TempDir dir;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->initLog();
    debugger->saveLog();
    const std::string content = readFile(dir.file("session.log"));
    ASSERT_FALSE(content.empty());
    EXPECT_EQ(content.back(), '\n');
    EXPECT_EQ(splitLines(content).size(), 2U);
}

TEST(DebuggerSession, IsWrittenOnlyWhileItIsOpen) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->logInfo("before");
    EXPECT_THAT(dir.names(), IsEmpty());
    debugger->initLog();
    debugger->logInfo("during");
    debugger->saveLog();
    debugger->logInfo("after");
    EXPECT_THAT(sessionLines(dir.file("session.log")),
                ElementsAre(kStarted, "[INFO] during", kEnded));
    EXPECT_THAT(console.texts(), ElementsAre("before", "during", "after"));
}

TEST(DebuggerSession, DoesNothingWhenSavedWithoutBeingOpened) {
    const TempDir dir;
    const ConsoleCapture console;
    const StderrCapture err;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->saveLog();
    debugger->saveLog();
    EXPECT_THAT(dir.names(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_EQ(err.text(), "");
}

TEST(DebuggerSession, IsOpenedOnce) {
    const TempDir dir;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->initLog();
    debugger->initLog();
    debugger->saveLog();
    debugger->saveLog();
    EXPECT_THAT(sessionLines(dir.file("session.log")), ElementsAre(kStarted, kEnded));
}

TEST(DebuggerSession, IsAppendedToAnExistingLog) {
    const TempDir dir;
    const ConsoleCapture console;
    dir.write("session.log", "an older line\n");
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->initLog();
    debugger->logInfo("first");
    debugger->saveLog();
    debugger->initLog();
    debugger->logInfo("second");
    debugger->saveLog();
    const std::string content = readFile(dir.file("session.log"));
    ASSERT_EQ(content.substr(0, 14), "an older line\n");
    dir.write("rest.log", content.substr(14));
    EXPECT_THAT(sessionLines(dir.file("rest.log")),
                ElementsAre(kStarted, "[INFO] first", kEnded, kStarted, "[INFO] second", kEnded));
}

TEST(DebuggerSession, EndsWithItsLastOwner) {
    const TempDir dir;
    std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    std::shared_ptr<Debugger> second_owner = debugger;
    debugger->initLog();
    debugger.reset();
    EXPECT_THAT(sessionLines(dir.file("session.log")), ElementsAre(kStarted));
    second_owner.reset();
    EXPECT_THAT(sessionLines(dir.file("session.log")), ElementsAre(kStarted, kEnded));
}

TEST(DebuggerSession, KeepsToTheConsoleWhereTheFileCannotBeOpened) {
    const TempDir dir;
    DebuggerConfig config = configIn(dir);
    config.log_file = "missing/session.log";
    const ConsoleCapture console;
    const StderrCapture err;
    const std::shared_ptr<Debugger> debugger = Debugger::create(config);
    debugger->initLog();
    const std::string failure = "Failed to open log file: " + dir.path() + "/missing/session.log\n";
    EXPECT_EQ(err.text(), failure);
    debugger->logInfo("text");
    debugger->saveLog();
    EXPECT_THAT(console.texts(), ElementsAre("text"));
    EXPECT_THAT(dir.names(), IsEmpty());

    // The session is not taken as open: a second try fails in the same way.
    debugger->initLog();
    EXPECT_EQ(err.text(), failure + failure);
}

TEST(DebuggerSession, IsOpenedOnceItsFolderExists) {
    const TempDir dir;
    DebuggerConfig config = configIn(dir);
    config.log_file = "later/session.log";
    const StderrCapture err;
    const std::shared_ptr<Debugger> debugger = Debugger::create(config);
    debugger->initLog();
    ASSERT_EQ(mkdir(dir.file("later").c_str(), 0755), 0);
    debugger->initLog();
    debugger->saveLog();
    EXPECT_THAT(sessionLines(dir.file("later/session.log")), ElementsAre(kStarted, kEnded));
}

TEST(DebuggerLog, NeverMixesTheLinesOfSeveralThreads) {
    constexpr int kThreads = 4;
    constexpr int kLines = 200;
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    debugger->initLog();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&debugger, thread] {
            const std::string name(100, static_cast<char>('a' + thread));
            for (int line = 0; line < kLines; ++line) {
                debugger->logInfo(name + std::to_string(line));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    debugger->saveLog();

    const auto check = [&](const std::vector<std::string>& lines, const std::string& prefix) {
        std::map<char, int> counts;
        for (const std::string& line : lines) {
            ASSERT_GT(line.size(), prefix.size());
            const char letter = line[prefix.size()];
            const int number = counts[letter]++;
            EXPECT_EQ(line, prefix + std::string(100, letter) + std::to_string(number));
        }
        EXPECT_EQ(counts, (std::map<char, int>{
                              {'a', kLines}, {'b', kLines}, {'c', kLines}, {'d', kLines}}));
    };
    check(console.texts(), "");
    std::vector<std::string> lines = sessionLines(dir.file("session.log"));
    ASSERT_EQ(lines.size(), 2U + kThreads * kLines);
    EXPECT_EQ(lines.front(), kStarted);
    EXPECT_EQ(lines.back(), kEnded);
    check({lines.begin() + 1, lines.end() - 1}, "[INFO] ");
}

TEST(DebuggerSession, MayBeOpenedAndClosedByAnyThread) {
    constexpr int kRounds = 100;
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = Debugger::create(configIn(dir));
    const auto run = [&debugger] {
        for (int round = 0; round < kRounds; ++round) {
            debugger->initLog();
            debugger->logInfo("text");
            debugger->saveLog();
        }
    };
    std::thread other(run);
    run();
    other.join();
    bool open = false;
    for (const std::string& line : sessionLines(dir.file("session.log"))) {
        if (line == kStarted || line == kEnded) {
            EXPECT_EQ(open, line == kEnded);
            open = line == kStarted;
        } else {
            EXPECT_EQ(line, "[INFO] text");
            EXPECT_TRUE(open);
        }
    }
    EXPECT_FALSE(open);
    EXPECT_EQ(console.texts().size(), 2U * kRounds);
}

}  // namespace
}  // namespace vorund
