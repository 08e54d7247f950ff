#include "support/captures.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>
#include <ros/console.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <mutex>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <utility>

#include "vorund/debugger.h"

namespace vorund::test {

#if defined(__SANITIZE_THREAD__)
namespace {

/// The thread sanitizer does not see how the threads inside OpenCV wait for each other, so there
/// are none: what it reports is about our own.
const bool kOpenCvHasOneThread = [] {
    cv::setNumThreads(1);
    return true;
}();

}  // namespace
#endif

namespace {

constexpr char kChannel[] = "ros.vorund";

std::string levelName(const log4cxx::LevelPtr& level) {
    switch (level->toInt()) {
        case log4cxx::Level::DEBUG_INT:
            return "DEBUG";
        case log4cxx::Level::INFO_INT:
            return "INFO";
        case log4cxx::Level::WARN_INT:
            return "WARN";
        case log4cxx::Level::ERROR_INT:
            return "ERROR";
        case log4cxx::Level::FATAL_INT:
            return "FATAL";
        default:
            return "UNKNOWN";
    }
}

/// The lines caught so far. It outlives the appender, which log4cxx may keep for a while.
class Lines {
 public:
    void add(ConsoleLine line) {
        const std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(std::move(line));
    }
    void clear() {
        const std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
    }
    std::vector<ConsoleLine> get() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }

 private:
    mutable std::mutex mutex_;
    std::vector<ConsoleLine> lines_;
};

class LinesAppender : public log4cxx::AppenderSkeleton {
 public:
    explicit LinesAppender(std::shared_ptr<Lines> lines) : lines_(std::move(lines)) {}

    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        std::string text;
        log4cxx::helpers::Transcoder::encode(event->getRenderedMessage(), text);
        lines_->add({levelName(event->getLevel()), text});
    }
    void close() override {}
    bool requiresLayout() const override { return false; }

 private:
    std::shared_ptr<Lines> lines_;
};

}  // namespace

bool operator==(const ConsoleLine& a, const ConsoleLine& b) {
    return a.level == b.level && a.text == b.text;
}

bool operator!=(const ConsoleLine& a, const ConsoleLine& b) {
    return !(a == b);
}

std::ostream& operator<<(std::ostream& stream, const ConsoleLine& line) {
    return stream << "[" << line.level << "] " << line.text;
}

struct ConsoleCapture::State {
    std::shared_ptr<Lines> lines = std::make_shared<Lines>();
    log4cxx::LoggerPtr logger;
    log4cxx::LevelPtr former_level;
    log4cxx::AppenderPtr appender;
};

ConsoleCapture::ConsoleCapture() : state_(std::make_unique<State>()) {
    // First, because it configures log4cxx anew.
    ros::console::initialize();
    state_->logger = log4cxx::Logger::getLogger(kChannel);
    state_->former_level = state_->logger->getLevel();
    state_->appender = log4cxx::AppenderPtr(new LinesAppender(state_->lines));
    state_->logger->addAppender(state_->appender);
    state_->logger->setAdditivity(false);
    ros::console::set_logger_level(kChannel, ros::console::levels::Debug);
    ros::console::notifyLoggerLevelsChanged();
}

ConsoleCapture::~ConsoleCapture() {
    state_->logger->removeAppender(state_->appender);
    state_->logger->setAdditivity(true);
    state_->logger->setLevel(state_->former_level);
    ros::console::notifyLoggerLevelsChanged();
}

std::vector<ConsoleLine> ConsoleCapture::lines() const {
    return state_->lines->get();
}

std::vector<std::string> ConsoleCapture::texts() const {
    std::vector<std::string> texts;
    for (const ConsoleLine& line : lines()) texts.push_back(line.text);
    return texts;
}

std::vector<std::string> ConsoleCapture::texts(const std::string& level) const {
    std::vector<std::string> texts;
    for (const ConsoleLine& line : lines()) {
        if (line.level == level) texts.push_back(line.text);
    }
    return texts;
}

void ConsoleCapture::clear() {
    state_->lines->clear();
}

PlainCapture::PlainCapture() {
    setPlainOutput(&stream_);
}

PlainCapture::~PlainCapture() {
    setPlainOutput(&std::cout);
}

std::string PlainCapture::text() const {
    return stream_.str();
}

std::vector<std::string> PlainCapture::lines() const {
    return splitLines(text());
}

void PlainCapture::clear() {
    stream_.str("");
}

StreamCapture::StreamCapture(std::ostream& stream)
    : stream_(stream), former_(stream.rdbuf(caught_.rdbuf())) {}

StreamCapture::~StreamCapture() {
    stream_.rdbuf(former_);
}

std::string StreamCapture::text() const {
    return caught_.str();
}

std::vector<std::string> StreamCapture::lines() const {
    return splitLines(text());
}

void StreamCapture::clear() {
    caught_.str("");
}

StderrCapture::StderrCapture() : StreamCapture(std::cerr) {}

StdoutCapture::StdoutCapture() : StreamCapture(std::cout) {}

TempDir::TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "vorund-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("TempDir: cannot make " + name);
    path_ = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::write(const std::string& name, const std::string& content) const {
    std::ofstream stream(file(name), std::ios::binary);
    stream << content;
    stream.close();
    if (!stream) throw std::runtime_error("TempDir: cannot write " + file(name));
    return file(name);
}

std::vector<std::string> TempDir::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error("readFile: cannot open " + path);
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace vorund::test
