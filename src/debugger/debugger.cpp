#include "vorund/debugger.h"

#include <sys/stat.h>

#include <chrono>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <opencv2/imgcodecs.hpp>

#include "debugger/windows.h"
#include "internal/console.h"
#include "internal/text.h"

namespace vorund {
namespace {

constexpr mode_t kDirectoryMode = 0755;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;

std::int64_t nanosecondsSinceEpoch() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::string formatLocalTime(std::int64_t nanoseconds, const char* pattern) {
    const std::time_t seconds = nanoseconds / kNanosecondsPerSecond;
    std::tm local{};
    tzset();  // Which localtime_r, unlike localtime, need not call.
    localtime_r(&seconds, &local);
    internal::TextStream text;
    text << std::put_time(&local, pattern);
    return text.str();
}

bool hasPixels(const cv::Mat& image) {
    return image.data != nullptr && image.total() > 0;
}

}  // namespace

std::shared_ptr<Debugger> Debugger::create(const DebuggerConfig& config) {
    return std::make_shared<Debugger>(config);
}

Debugger::Debugger(const DebuggerConfig& config)
    : show_images_(config.show_images),
      save_images_(config.save_images),
      output_dir_(config.output_dir),
      log_file_(config.log_file),
      log_level_(config.log_level) {
    ensureOutputDirectory();
}

Debugger::~Debugger() {
    try {
        if (log_initialized_) saveLog();
        if (log_stream_.is_open()) log_stream_.close();
    } catch (...) {
        // A log that cannot be ended must not end the robot's program.
    }
}

void Debugger::ensureOutputDirectory() {
    struct stat status {};
    if (stat(output_dir_.c_str(), &status) == 0) return;
    if (mkdir(output_dir_.c_str(), kDirectoryMode) != 0) {
        std::cerr << "Failed to create output directory: " << output_dir_ << std::endl;
    }
}

void Debugger::initLog() {
    const std::lock_guard<std::mutex> lock(log_mutex_);
    if (log_initialized_) return;
    const std::string path = output_dir_ + "/" + log_file_;
    // The flags of an earlier session that could not be opened or closed would block this one.
    log_stream_.clear();
    log_stream_.open(path, std::ios::out | std::ios::app);
    if (!log_stream_.is_open()) {
        std::cerr << "Failed to open log file: " << path << std::endl;
        return;
    }
    log_initialized_ = true;
    writeLogLine(LogLevel::INFO, "=== Floorplan Segmentation Debug Session Started ===");
}

void Debugger::saveLog() {
    const std::lock_guard<std::mutex> lock(log_mutex_);
    if (!log_initialized_) return;
    if (log_stream_.is_open()) {
        writeLogLine(LogLevel::INFO, "=== Floorplan Segmentation Debug Session Ended ===");
        log_stream_.close();
    }
    log_initialized_ = false;
}

void Debugger::writeLogLine(LogLevel level, const std::string& message) {
    log_stream_ << '[' << getCurrentTimestamp() << "] [" << logLevelToString(level) << "] "
                << message << std::endl;
}

void Debugger::log(LogLevel level, const std::string& message) {
    const std::lock_guard<std::mutex> lock(log_mutex_);
    if (log_initialized_ && log_stream_.is_open()) writeLogLine(level, message);
    if (log_level_ <= level) internal::consoleLine(level, message);
}

void Debugger::logDebug(const std::string& message) {
    log(LogLevel::DEBUG, message);
}
void Debugger::logInfo(const std::string& message) {
    log(LogLevel::INFO, message);
}
void Debugger::logWarning(const std::string& message) {
    log(LogLevel::WARN, message);
}
void Debugger::logError(const std::string& message) {
    log(LogLevel::ERROR, message);
}

std::string Debugger::logLevelToString(LogLevel level) {
    switch (level) {
        case LogLevel::DEBUG:
            return "DEBUG";
        case LogLevel::INFO:
            return "INFO";
        case LogLevel::WARN:
            return "WARN";
        case LogLevel::ERROR:
            return "ERROR";
    }
    return "UNKNOWN";
}

std::string Debugger::getCurrentTimestamp() {
    const std::int64_t now = nanosecondsSinceEpoch();
    internal::TextStream text;
    text << formatLocalTime(now, "%Y-%m-%d %H:%M:%S") << '.' << std::setw(3) << std::setfill('0')
         << (now / kNanosecondsPerMillisecond) % 1000;
    return text.str();
}

std::string Debugger::getTimestampForFilename() {
    return formatLocalTime(nanosecondsSinceEpoch(), "%Y%m%d_%H%M%S");
}

void Debugger::show(const std::string& window_name, const cv::Mat& image) {
    if (!show_images_ || !hasPixels(image)) return;
    const std::string cause = internal::showInWindow(window_name, image);
    if (!cause.empty()) tellOnceThatNothingIsShown(cause);
}

void Debugger::tellOnceThatNothingIsShown(const std::string& cause) {
    if (told_that_nothing_is_shown_.exchange(true)) return;
    logWarning("Images are not shown: " + cause);
}

void Debugger::write(const std::string& file_name, const cv::Mat& image, bool force) {
    if (!(force || save_images_) || !hasPixels(image)) return;
    const std::string path = output_dir_ + "/" + file_name;
    if (cv::imwrite(path, prepareImageForSaving(image))) {
        logDebug("Image saved: " + path);
    } else {
        logError("Failed to write image: " + path);
    }
}

void Debugger::showAndWrite(const std::string& name, const cv::Mat& image,
                            const std::string& file_name, bool force) {
    show(name, image);
    write(file_name.empty() ? name + ".png" : file_name, image, force);
}

cv::Mat Debugger::prepareImageForSaving(const cv::Mat& image) {
    if (image.type() != CV_32FC1 && image.type() != CV_32FC3) return image;
    cv::Mat bytes;
    image.convertTo(bytes, CV_8U, 255.0);
    return bytes;
}

}  // namespace vorund
