#pragma once

#include <atomic>
#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>

#include "vorund/export.h"

namespace vorund {

/// Severity of a log line, in rising order.
enum class LogLevel : std::int32_t { DEBUG, INFO, WARN, ERROR };

/// What a `Debugger` shows, writes and logs.
struct DebuggerConfig {
    bool show_images = false;             ///< `show` opens windows.
    bool save_images = false;             ///< `write` writes files even when not forced.
    std::string output_dir = ".";         ///< For images and the log; without a trailing separator.
    std::string log_file = "vorund.log";  ///< File name of the session log inside `output_dir`.
    LogLevel log_level = LogLevel::INFO;  ///< Lowest level that reaches the console.
};

/// The diagnostics of one run: log lines to the console channel "ros.vorund" and to a session log
/// file, stage images in windows and as files. What is switched off is a silent no-op.
///
/// `log`, `initLog` and `saveLog` may be called from any thread. `show`, `write` and
/// `showAndWrite` take no lock; windows belong to one thread at a time.
class VORUND_EXPORT Debugger {
 public:
    /// The way to make one: it is always owned by shared pointers.
    static std::shared_ptr<Debugger> create(const DebuggerConfig& config);

    /// Makes sure that the output directory exists; does not open the session log.
    explicit Debugger(const DebuggerConfig& config);

    /// Ends an open session log. Nothing escapes.
    ~Debugger();

    Debugger(const Debugger&) = delete;
    Debugger& operator=(const Debugger&) = delete;

    /// Creates `output_dir` (mode 0755, its last level only) unless something of that name exists.
    /// A failure is told on standard error and is otherwise ignored.
    void ensureOutputDirectory();

    /// Opens the session log for appending and writes its opening line. Does nothing while a
    /// session is open. A failure is told on standard error; `log` then reaches the console only.
    void initLog();

    /// Writes the closing line and closes the session log. Does nothing without an open session.
    void saveLog();

    /// Writes the line, with time and level, to an open session log whatever its level, and the
    /// bare message to the console if its level is at least `DebuggerConfig::log_level`.
    void log(LogLevel level, const std::string& message);
    void logDebug(const std::string& message);
    void logInfo(const std::string& message);
    void logWarning(const std::string& message);
    void logError(const std::string& message);

    /// "DEBUG", "INFO", "WARN", "ERROR", or "UNKNOWN" for any other value.
    static std::string logLevelToString(LogLevel level);

    /// Local time with milliseconds, as in 2024-03-05 14:07:09.042.
    static std::string getCurrentTimestamp();

    /// Local time for use in a file name, as in 20240305_140709.
    static std::string getTimestampForFilename();

    /// Whether images are shown or written without being forced. Where not, stages need not draw
    /// their pictures.
    bool takesImages() const { return show_images_ || save_images_; }

    /// Shows a non-empty image, as it is, in the window of that name, if `show_images` is set.
    /// Where no display can be had, or the window fails, nothing is shown, and the log says so
    /// once, as a warning. 32-bit integers are shown as bytes, saturated.
    void show(const std::string& window_name, const cv::Mat& image);

    /// Writes a non-empty image to `output_dir`/`file_name`, if `force` or `save_images` is set.
    /// The format follows the extension; see `prepareImageForSaving` for the pixels. A debug line
    /// tells the path, an error line a failure.
    /// @throws cv::Exception  from the encoder, for example for an unknown extension.
    void write(const std::string& file_name, const cv::Mat& image, bool force = false);

    /// `show`, then `write` to `file_name`, or to `name`.png if `file_name` is empty.
    void showAndWrite(const std::string& name, const cv::Mat& image,
                      const std::string& file_name = "", bool force = false);

    /// A 32-bit float image with one or three channels, values 0 to 1, becomes 8-bit, 0 to 255,
    /// rounded and saturated. Any other image is returned as it is, sharing its pixels.
    static cv::Mat prepareImageForSaving(const cv::Mat& image);

 private:
    void writeLogLine(LogLevel level, const std::string& message);
    void tellOnceThatNothingIsShown(const std::string& cause);

    bool show_images_;
    bool save_images_;
    std::string output_dir_;
    std::string log_file_;
    LogLevel log_level_;
    std::ofstream log_stream_;
    std::mutex log_mutex_;
    bool log_initialized_ = false;
    std::atomic<bool> told_that_nothing_is_shown_{false};
};

/// Whether a window can be shown: false where the library is built without windows
/// (`VORUND_WITH_WINDOWS`), and without an X server that answers, unless QT_QPA_PLATFORM
/// names "offscreen" or "minimal". (Other platforms are not tried: where they are missing, Qt ends
/// the process.) Never aborts and never waits for more than a few seconds. The answer is found
/// once per process.
VORUND_EXPORT bool displayAvailable();

/// Where the library writes the plain lines that it otherwise prints to `std::cout`; `nullptr`
/// silences them. Lines of several threads never mix. Safe to call from any thread; once it
/// returns the former stream is not used any more.
VORUND_EXPORT void setPlainOutput(std::ostream* stream);

}  // namespace vorund
