#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vorund::app {

inline const CLI::Validator& notEmpty() {
    static const CLI::Validator validator(
        [](std::string& text) { return text.empty() ? std::string("must not be empty") : ""; }, "");
    return validator;
}

}  // namespace vorund::app
