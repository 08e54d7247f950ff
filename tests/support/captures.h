#pragma once

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// Catches what the library says, and gives a test its own folder. Each object catches from its
/// construction to its destruction and then puts everything back as it was.
namespace vorund::test {

/// One line on the console channel: "DEBUG", "INFO", "WARN", "ERROR" or "FATAL", and the text.
struct ConsoleLine {
    std::string level;
    std::string text;
};

bool operator==(const ConsoleLine& a, const ConsoleLine& b);
bool operator!=(const ConsoleLine& a, const ConsoleLine& b);
std::ostream& operator<<(std::ostream& stream, const ConsoleLine& line);

/// Catches the lines of the channel "ros.vorund", of every level, and keeps them off the terminal.
/// Lines may come from any thread.
class ConsoleCapture {
 public:
    ConsoleCapture();
    ~ConsoleCapture();
    ConsoleCapture(const ConsoleCapture&) = delete;
    ConsoleCapture& operator=(const ConsoleCapture&) = delete;

    /// All lines so far, in the order in which they came.
    std::vector<ConsoleLine> lines() const;

    /// The texts of all lines so far.
    std::vector<std::string> texts() const;

    /// The texts of the lines of one level so far.
    std::vector<std::string> texts(const std::string& level) const;

    /// Forgets the lines so far.
    void clear();

 private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Catches the plain lines of the library by `setPlainOutput`; afterwards they go to std::cout.
class PlainCapture {
 public:
    PlainCapture();
    ~PlainCapture();
    PlainCapture(const PlainCapture&) = delete;
    PlainCapture& operator=(const PlainCapture&) = delete;

    std::string text() const;

    /// `text()` cut at its newlines.
    std::vector<std::string> lines() const;

    void clear();

 private:
    std::ostringstream stream_;
};

/// Catches what is written to one of the standard streams of C++. It does not see what is written
/// past them, to the file descriptor.
class StreamCapture {
 public:
    explicit StreamCapture(std::ostream& stream);
    ~StreamCapture();
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;

    std::string text() const;

    /// `text()` cut at its newlines.
    std::vector<std::string> lines() const;

    void clear();

 private:
    std::ostream& stream_;
    std::ostringstream caught_;
    std::streambuf* former_;
};

/// Catches std::cerr.
class StderrCapture : public StreamCapture {
 public:
    StderrCapture();
};

/// Catches std::cout.
class StdoutCapture : public StreamCapture {
 public:
    StdoutCapture();
};

/// An empty folder of its own, removed with all it holds at the end.
class TempDir {
 public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// Absolute, without a trailing separator.
    const std::string& path() const { return path_; }

    /// The path of something in the folder, whether or not it exists.
    std::string file(const std::string& name) const { return path_ + "/" + name; }

    /// Writes a file into the folder and gives its path.
    std::string write(const std::string& name, const std::string& content) const;

    /// The names of all that is in the folder itself, sorted.
    std::vector<std::string> names() const;

 private:
    std::string path_;
};

/// The bytes of a file.
/// @throws std::runtime_error  if it cannot be read.
std::string readFile(const std::string& path);

/// The text cut at its newlines; what follows the last newline is a line if it is not empty.
std::vector<std::string> splitLines(const std::string& text);

}  // namespace vorund::test
