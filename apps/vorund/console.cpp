#include "console.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/logger.h>
#include <ros/console.h>

#include <iostream>

#include "vorund/debugger.h"

namespace vorund::app {
namespace {

class TerminalAppender : public log4cxx::AppenderSkeleton {
 public:
    explicit TerminalAppender(Terminal& terminal) : terminal_(terminal) {}

    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        std::string text;
        log4cxx::helpers::Transcoder::encode(event->getRenderedMessage(), text);
        const int level = event->getLevel()->toInt();
        if (level >= log4cxx::Level::ERROR_INT) {
            terminal_.noteError(text);
        } else if (level >= log4cxx::Level::WARN_INT) {
            terminal_.warn(text);
        } else {
            terminal_.detail("[INFO] " + text);
        }
    }
    void close() override {}
    bool requiresLayout() const override { return false; }

 private:
    Terminal& terminal_;
};

log4cxx::LoggerPtr channel() {
    return log4cxx::Logger::getLogger("ros.vorund");
}

}  // namespace

Console::Console(Terminal& terminal) {
    ros::console::initialize();
    const log4cxx::LoggerPtr logger = channel();
    // What the robot's own set-up of the console asks for would go to standard output.
    logger->setAdditivity(false);
    logger->removeAllAppenders();
    logger->addAppender(log4cxx::AppenderPtr(new TerminalAppender(terminal)));
    const bool verbose = terminal.verbosity() == Verbosity::kVerbose;
    logger->setLevel(verbose ? log4cxx::Level::getInfo() : log4cxx::Level::getWarn());
    ros::console::notifyLoggerLevelsChanged();
    setPlainOutput(verbose ? &std::cerr : nullptr);
}

Console::~Console() {
    channel()->removeAllAppenders();
    setPlainOutput(nullptr);
}

}  // namespace vorund::app
