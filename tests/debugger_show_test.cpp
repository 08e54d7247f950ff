#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <sstream>
#include <string>

#include "support/captures.h"
#include "support/drawn_plans.h"
#include "vorund/debugger.h"
#include "vorund/floorplan_segmenter.h"

// Whether there is a display is found once per process, so each case shows its windows in a process
// of its own, which says on standard error what it saw.
namespace vorund {
namespace {

using ::testing::ExitedWithCode;

void setVariable(const char* name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name);
    } else {
        setenv(name, value.c_str(), 1);
    }
}

bool windowIsOpen(const std::string& name) {
    try {
        return cv::getWindowProperty(name, cv::WND_PROP_AUTOSIZE) >= 0.0;
    } catch (const cv::Exception&) {
        return false;  // Some window systems throw where no window was ever opened.
    }
}

/// Shows images by two debuggers in the given surroundings, reports, and ends the process.
[[noreturn]] void showAndReport(const std::string& display, const std::string& platform) {
    setVariable("DISPLAY", display);
    setVariable("QT_QPA_PLATFORM", platform);
    setVariable("WAYLAND_DISPLAY", "");
    const test::ConsoleCapture console;
    DebuggerConfig config;
    config.show_images = true;
    const cv::Mat image(20, 30, CV_32FC1, cv::Scalar(0.5));
    for (const std::string name : {"first", "second"}) {
        const std::shared_ptr<Debugger> debugger = Debugger::create(config);
        debugger->show(name, cv::Mat());
        debugger->show(name, image);
        debugger->show(name, image);
        debugger->showAndWrite(name, image);
    }
    std::cerr << "available " << displayAvailable() << displayAvailable() << ", warnings "
              << console.texts("WARN").size() << ", other lines "
              << console.lines().size() - console.texts("WARN").size() << ", windows "
              << windowIsOpen("first") + windowIsOpen("second") << "." << std::endl;
    std::_Exit(0);
}

class DebuggerShowDeathTest : public ::testing::Test {
 protected:
    // The child starts anew: a window system must not be entered after a fork.
    void SetUp() override { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

constexpr char kNothingShown[] = "available 00, warnings 2, other lines 0, windows 0\\.";

TEST_F(DebuggerShowDeathTest, ShowsNothingAndSaysSoOnceWithoutADisplay) {
    EXPECT_EXIT(showAndReport("", ""), ExitedWithCode(0), kNothingShown);
}

TEST_F(DebuggerShowDeathTest, ShowsNothingWhereTheDisplayDoesNotExist) {
    EXPECT_EXIT(showAndReport(":7654", ""), ExitedWithCode(0), kNothingShown);
    EXPECT_EXIT(showAndReport("127.0.0.1:7654", ""), ExitedWithCode(0), kNothingShown);
    EXPECT_EXIT(showAndReport("no display", ""), ExitedWithCode(0), kNothingShown);
}

TEST_F(DebuggerShowDeathTest, ShowsNothingWhereThePlatformNeedsTheDisplay) {
    EXPECT_EXIT(showAndReport("", "xcb"), ExitedWithCode(0), kNothingShown);
}

/// A port that takes connections and never answers; the display of that port.
std::string silentServer() {
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    void* const raw = &address;
    if (bind(server, static_cast<sockaddr*>(raw), length) != 0 || listen(server, 5) != 0 ||
        getsockname(server, static_cast<sockaddr*>(raw), &length) != 0) {
        std::cerr << "cannot listen" << std::endl;
        std::_Exit(1);
    }
    constexpr int kFirstDisplayPort = 6000;
    return "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - kFirstDisplayPort);
}

TEST_F(DebuggerShowDeathTest, ShowsNothingWhereTheServerNeverAnswers) {
    EXPECT_EXIT(showAndReport(silentServer(), ""), ExitedWithCode(0), kNothingShown);
}

TEST_F(DebuggerShowDeathTest, GoesOnWithAPlatformThatNeedsNoDisplay) {
    EXPECT_EXIT(showAndReport("", "offscreen"), ExitedWithCode(0),
                "(available 00, warnings 2, other lines 0, windows 0\\.)|"
                "(available 11, warnings 0, other lines 0, windows 2\\.)");
}

bool isInstalled(const std::string& program) {
    const char* const path = getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (access((folder + "/" + program).c_str(), X_OK) == 0) return true;
    }
    return false;
}

/// Starts a display server that ends with this process, and gives its display.
std::string startDisplayServer() {
    int ends[2];
    if (pipe(ends) != 0) std::_Exit(1);
    if (fork() == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        close(ends[0]);
        execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(ends[1]).c_str(), "-screen", "0",
               "320x240x24", "-nolisten", "tcp", static_cast<char*>(nullptr));
        std::_Exit(1);
    }
    close(ends[1]);
    std::string number;
    for (char digit = 0; read(ends[0], &digit, 1) == 1 && digit != '\n';) number += digit;
    return ":" + number;
}

TEST_F(DebuggerShowDeathTest, OpensOneWindowPerNameOnADisplay) {
    if (!isInstalled("Xvfb")) GTEST_SKIP() << "Xvfb is not installed.";
    EXPECT_EXIT(showAndReport(startDisplayServer(), ""), ExitedWithCode(0),
                "available 11, warnings 0, other lines 0, windows 2\\.");
}

/// Shows nothing that it should not on a display that is there.
[[noreturn]] void keepQuietAndReport(const std::string& display) {
    setVariable("DISPLAY", display);
    setVariable("QT_QPA_PLATFORM", "");
    setVariable("WAYLAND_DISPLAY", "");
    const test::ConsoleCapture console;
    DebuggerConfig config;
    const cv::Mat image(20, 30, CV_8UC1, cv::Scalar(5));
    Debugger::create(config)->show("not shown", image);
    config.show_images = true;
    Debugger::create(config)->show("empty", cv::Mat(0, 5, CV_8UC1));
    Debugger::create(config)->showAndWrite("empty", cv::Mat());
    std::cerr << "lines " << console.lines().size() << ", windows "
              << windowIsOpen("not shown") + windowIsOpen("empty") << "." << std::endl;
    std::_Exit(0);
}

TEST_F(DebuggerShowDeathTest, OpensNoWindowForAnEmptyImageOrWhenSwitchedOff) {
    if (!isInstalled("Xvfb")) GTEST_SKIP() << "Xvfb is not installed.";
    EXPECT_EXIT(keepQuietAndReport(startDisplayServer()), ExitedWithCode(0),
                "lines 0, windows 0\\.");
}

/// Segments a map with windows, and names the stages that have none.
[[noreturn]] void segmentAndReport(const std::string& display) {
    setVariable("DISPLAY", display);
    setVariable("QT_QPA_PLATFORM", "");
    setVariable("WAYLAND_DISPLAY", "");
    const test::ConsoleCapture console;
    const test::PlainCapture plain;
    DebuggerConfig config;
    config.show_images = true;
    FloorplanSegmenter(Config(), Debugger::create(config)).doSegment(test::twoRooms().map);
    std::string missing;
    for (const std::string name :
         {"rank_cropped", "10cpp_rank_binary", "11cpp_rank_inverted", "12cpp_rank_no_small_out",
          "13cpp_rank_inverted", "14cpp_rank_denoised", "20cpp_binary_dilated", "30cpp_ridges",
          "31cpp_boundary", "54cpp_over_segmented", "55cpp_boundary_fill_seeds",
          "56cpp_boundary_filled_segments", "90cpp_final_segmented_map"}) {
        if (!windowIsOpen(name)) missing += " " + name;
    }
    std::cerr << "missing:" << missing << "." << std::endl;
    std::_Exit(0);
}

TEST_F(DebuggerShowDeathTest, OpensAWindowForEveryStageOfARun) {
    if (!isInstalled("Xvfb")) GTEST_SKIP() << "Xvfb is not installed.";
    EXPECT_EXIT(segmentAndReport(startDisplayServer()), ExitedWithCode(0), "missing:\\.");
}

}  // namespace
}  // namespace vorund
