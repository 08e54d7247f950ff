#include "program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace vorund::test {
namespace {

struct Channel {
    int read_end = -1;
    int write_end = -1;
};

Channel openPipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe can be had");
    return {ends[0], ends[1]};
}

Channel openTerminal() {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        throw std::runtime_error("no terminal can be had");
    }
    return {master, ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

[[noreturn]] void become(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, int out, int err) {
    std::vector<std::string> words{VORUND_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    for (const auto& [name, value] : environment) ::setenv(name.c_str(), value.c_str(), 1);
    // Whoever runs the tests in the background may have it ignored.
    ::signal(SIGINT, SIG_DFL);
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    ::execv(VORUND_PROGRAM, pointers.data());
    ::_exit(127);
}

/// Appends what can be read now. Returns false at the end of the stream.
bool readSome(int file, std::string& text) {
    std::array<char, 4096> block{};
    const ssize_t count = ::read(file, block.data(), block.size());
    if (count < 0 && errno == EINTR) return true;
    if (count <= 0) return false;  // A terminal whose other side is closed gives an error.
    text.append(block.data(), static_cast<std::size_t>(count));
    return true;
}

/// Reads both streams at once, so that neither fills up and stops the program.
void readToTheEnd(int out, int err, Outcome& outcome) {
    std::array<pollfd, 2> files{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
    while (files[0].fd >= 0 || files[1].fd >= 0) {
        if (::poll(files.data(), files.size(), -1) < 0) continue;
        if (files[0].revents != 0 && !readSome(out, outcome.out)) files[0].fd = -1;
        if (files[1].revents != 0 && !readSome(err, outcome.err)) files[1].fd = -1;
    }
}

}  // namespace

Program::Program(const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment, bool terminal) {
    const Channel out = openPipe();
    const Channel err = terminal ? openTerminal() : openPipe();
    process_ = ::fork();
    if (process_ == 0) become(arguments, environment, out.write_end, err.write_end);
    ::close(out.write_end);
    ::close(err.write_end);
    out_ = out.read_end;
    err_ = err.read_end;
    if (process_ < 0) throw std::runtime_error("no process can be had");
}

Program::~Program() {
    if (!hasEnded()) {
        send(SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    ::close(out_);
    ::close(err_);
}

void Program::send(int signal) const {
    ::kill(process_, signal);
}

bool Program::hasEnded() {
    if (!ended_) ended_ = ::waitpid(process_, &wait_status_, WNOHANG) == process_;
    return ended_;
}

Outcome Program::wait() {
    Outcome outcome;
    readToTheEnd(out_, err_, outcome);
    if (!ended_) ended_ = ::waitpid(process_, &wait_status_, 0) == process_;
    outcome.status =
        WIFEXITED(wait_status_) ? WEXITSTATUS(wait_status_) : 128 + WTERMSIG(wait_status_);
    return outcome;
}

Outcome runProgram(const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& environment) {
    return Program(arguments, environment).wait();
}

}  // namespace vorund::test
