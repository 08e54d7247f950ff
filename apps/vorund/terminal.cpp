#include "terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "report.h"

namespace vorund::app {
Terminal::Terminal(Verbosity verbosity)
    : verbosity_(verbosity),
      file_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)),
      shows_progress_(verbosity == Verbosity::kNormal && ::isatty(STDERR_FILENO) == 1) {}

Terminal::~Terminal() {
    clearProgress();
    if (file_ >= 0) ::close(file_);
}

void Terminal::write(const std::string& text) const {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(file_, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // Nobody listens.
        done += static_cast<std::size_t>(written);
    }
}

void Terminal::warn(const std::string& text) {
    if (verbosity_ == Verbosity::kQuiet) return;
    clearProgress();
    const std::string line = errorLine("warning: " + text);
    write(line);
    warnings_.insert(line);
}

void Terminal::detail(const std::string& text) {
    if (verbosity_ == Verbosity::kVerbose) write(text + "\n");
}

void Terminal::progress(const std::string& text) {
    if (!shows_progress_) return;
    clearProgress();
    write(text);
    progress_length_ = text.size();
}

void Terminal::clearProgress() {
    if (progress_length_ == 0) return;
    // Blanks, not a control sequence: every terminal knows them.
    write('\r' + std::string(progress_length_, ' ') + '\r');
    progress_length_ = 0;
}

void Terminal::noteError(const std::string& text) {
    if (first_error_.empty()) first_error_ = text;
    detail("[ERROR] " + text);
}

}  // namespace vorund::app
