#include "worker.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace vorund::app {
namespace {

constexpr char kThisProgram[] = "/proc/self/exe";
constexpr int kCannotStart = 127;  // As shells tell it.
constexpr int kSignal = 128;
constexpr int kMomentMs = 200;

using Pipe = std::array<int, 2>;

void closePipe(const Pipe& pipe) {
    for (const int end : pipe) ::close(end);
}

[[noreturn]] void failWith(int error) {
    throw std::runtime_error("no process can be had: " + std::generic_category().message(error));
}

Pipe openPipe() {
    Pipe ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) failWith(errno);
    return ends;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

Worker::Worker(const std::vector<std::string>& arguments) {
    std::vector<std::string> words{"vorund"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    // Between fork and exec nothing may be allocated: another thread may hold the lock for ever.
    const std::vector<char*> pointers = pointersTo(words);
    const Pipe out = openPipe();
    Pipe err{};
    try {
        err = openPipe();
    } catch (const std::runtime_error&) {
        closePipe(out);
        throw;
    }
    process_ = ::fork();
    if (process_ == 0) {
        // A worker without its parent would write where a resumed run writes too.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::execv(kThisProgram, pointers.data());
        ::_exit(kCannotStart);
    }
    const int error = errno;
    ::close(out[1]);
    ::close(err[1]);
    out_.file = out[0];
    err_.file = err[0];
    if (process_ > 0) return;
    ::close(out_.file);
    ::close(err_.file);
    failWith(error);
}

Worker::~Worker() {
    if (!has_status_) {
        send(SIGKILL);
        status();
    }
    if (out_.file >= 0) ::close(out_.file);
    if (err_.file >= 0) ::close(err_.file);
}

void Worker::send(int signal) const {
    if (!has_status_) ::kill(process_, signal);
}

int Worker::status() {
    while (!has_status_ && ::waitpid(process_, &wait_status_, 0) < 0 && errno == EINTR) {
    }
    has_status_ = true;
    return WIFEXITED(wait_status_) ? WEXITSTATUS(wait_status_) : kSignal + WTERMSIG(wait_status_);
}

void Worker::read(Stream& stream) {
    std::array<char, 4096> block{};
    const ssize_t count = ::read(stream.file, block.data(), block.size());
    if (count > 0) stream.text.append(block.data(), static_cast<std::size_t>(count));
    if (count > 0 || (count < 0 && errno == EINTR)) return;
    ::close(stream.file);
    stream.file = -1;
}

void Worker::readOutputs(const std::vector<Worker*>& workers) {
    std::vector<pollfd> files;
    for (const Worker* const worker : workers) {
        files.push_back({worker->out_.file, POLLIN, 0});  // One below 0 is passed over.
        files.push_back({worker->err_.file, POLLIN, 0});
    }
    if (::poll(files.data(), files.size(), kMomentMs) <= 0) return;
    for (std::size_t i = 0; i < workers.size(); ++i) {
        if (files[2 * i].revents != 0) read(workers[i]->out_);
        if (files[2 * i + 1].revents != 0) read(workers[i]->err_);
    }
}

}  // namespace vorund::app
