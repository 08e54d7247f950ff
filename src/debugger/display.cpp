#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>

#include "vorund/debugger.h"

namespace vorund {
namespace {

constexpr std::chrono::seconds kAnswerTimeout{3};

using XcbConnect = void* (*)(const char* display, int* screen);
using XcbConnectionHasError = int (*)(void* connection);

/// The X client library, at run time alone: without windows nobody needs it.
struct Xcb {
    XcbConnect connect = nullptr;
    XcbConnectionHasError has_error = nullptr;
};

Xcb loadXcb() {
    Xcb xcb;
    void* const library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return xcb;
    xcb.connect = reinterpret_cast<XcbConnect>(dlsym(library, "xcb_connect"));
    xcb.has_error =
        reinterpret_cast<XcbConnectionHasError>(dlsym(library, "xcb_connection_has_error"));
    return xcb;
}

/// In the child process: connects to the display and writes one byte, 'y' or 'n'.
[[noreturn]] void answerFor(const Xcb& xcb, int write_end) {
    void* const connection = xcb.connect(nullptr, nullptr);
    const char answer = xcb.has_error(connection) == 0 ? 'y' : 'n';
    const bool written = write(write_end, &answer, 1) == 1;
    // Not exit: the handlers that would run belong to the parent.
    _exit(written ? 0 : 1);
}

bool readAnswer(int read_end) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + kAnswerTimeout;
    pollfd waiting{read_end, POLLIN, 0};
    int ready = 0;
    do {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        ready = poll(&waiting, 1, std::max(static_cast<int>(left.count()), 0));
    } while (ready < 0 && errno == EINTR);
    char answer = 'n';
    return ready == 1 && read(read_end, &answer, 1) == 1 && answer == 'y';
}

/// Whether the X server of $DISPLAY accepts a client.
///
/// A server may take the connection and then never speak, and a client waits for it for ever. So a
/// child process asks, and is killed when it takes too long.
bool xServerAnswers() {
    if (std::getenv("DISPLAY") == nullptr) return false;
    const Xcb xcb = loadXcb();
    if (xcb.connect == nullptr || xcb.has_error == nullptr) return false;

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    const pid_t child = fork();
    if (child == 0) answerFor(xcb, ends[1]);
    close(ends[1]);
    const bool answered = child > 0 && readAnswer(ends[0]);
    close(ends[0]);
    if (child > 0) {
        kill(child, SIGKILL);
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
    }
    return answered;
}

bool findDisplay() {
    // Qt, on which OpenCV's windows are built in Debian, takes its platforms from this list; with
    // none, or without any that works, it aborts the process.
    const char* const variable = std::getenv("QT_QPA_PLATFORM");
    const std::string platforms = variable == nullptr ? "" : variable;
    for (const char* const headless : {"offscreen", "minimal"}) {
        if (platforms.find(headless) == 0) return true;
    }
    const bool uses_x = platforms.empty() || platforms.find("xcb") != std::string::npos;
    return uses_x && xServerAnswers();
}

}  // namespace

bool displayAvailable() {
    static const bool available = findDisplay();
    return available;
}

}  // namespace vorund
