#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vorund::app {

/// A run of this program in a process of its own, whose output is collected.
class Worker {
 public:
    /// @throws std::runtime_error  if no process can be had.
    explicit Worker(const std::vector<std::string>& arguments);
    /// Ends the process if it still runs.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void send(int signal) const;

    /// Whether both its streams are at their end; `status` does not wait long then.
    bool hasEnded() const { return out_.file < 0 && err_.file < 0; }

    /// Exit status, or 128 + the number of the signal that ended it.
    int status();

    const std::string& out() const { return out_.text; }
    const std::string& err() const { return err_.text; }

    /// Reads what some workers write, until there is something, or for a moment.
    static void readOutputs(const std::vector<Worker*>& workers);

 private:
    struct Stream {
        int file = -1;  ///< -1 at its end.
        std::string text;
    };

    static void read(Stream& stream);

    pid_t process_ = -1;
    Stream out_;
    Stream err_;
    bool has_status_ = false;
    int wait_status_ = 0;
};

}  // namespace vorund::app
