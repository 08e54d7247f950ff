#pragma once

#include "terminal.h"

namespace vorund::app {

/// Sends what the library logs to the robot's console, and what it prints, to the terminal, while
/// the object lives. Standard output stays free for results.
class Console {
 public:
    explicit Console(Terminal& terminal);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
};

}  // namespace vorund::app
