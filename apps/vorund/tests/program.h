#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace vorund::test {

/// What a program left behind.
struct Outcome {
    int status = -1;  ///< Exit status, or 128 + the number of the signal that ended it.
    std::string out;  ///< Standard output.
    std::string err;  ///< Standard error.
};

/// The program `vorund` of this build, started in a process of its own.
class Program {
 public:
    /// @param environment  Variables set beside those of the test.
    /// @param terminal     Whether its standard error is a terminal instead of a pipe.
    explicit Program(const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment = {},
                     bool terminal = false);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void send(int signal) const;

    /// Whether it has ended; does not wait.
    bool hasEnded();

    /// Waits for its end.
    Outcome wait();

 private:
    pid_t process_ = -1;
    int out_ = -1;
    int err_ = -1;
    int wait_status_ = 0;
    bool ended_ = false;
};

Outcome runProgram(const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& environment = {});

}  // namespace vorund::test
