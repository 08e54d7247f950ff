#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace vorund::app {

enum class Verbosity { kQuiet, kNormal, kVerbose };

/// What the program says on standard error: whole lines, and on a terminal one line of progress
/// below them that comes and goes. It is heard even while a `SilentStandardError` lives.
class Terminal {
 public:
    explicit Terminal(Verbosity verbosity);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    Verbosity verbosity() const { return verbosity_; }

    /// Not if quiet.
    void warn(const std::string& text);

    /// Whether that line stands on standard error by `warn`.
    bool hasWarned(const std::string& line) const { return warnings_.count(line) > 0; }

    /// A line of the library, if verbose.
    void detail(const std::string& text);

    /// Replaces the line of progress. Only on a terminal, and only with normal verbosity: between
    /// the library's lines it would be lost.
    void progress(const std::string& text);

    void clearProgress();

    /// Keeps what the library logs as an error: the run fails by the first of them.
    void noteError(const std::string& text);
    const std::string& firstError() const { return first_error_; }

 private:
    void write(const std::string& text) const;

    Verbosity verbosity_;
    int file_;  ///< Its own descriptor of what was standard error at the start.
    bool shows_progress_;
    std::size_t progress_length_ = 0;
    std::string first_error_;
    std::set<std::string> warnings_;
};

}  // namespace vorund::app
