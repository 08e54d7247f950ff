#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

namespace vorund::internal {

/// `printf` into a string.
[[gnu::format(printf, 1, 2)]] inline std::string format(const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    // One more than the text: a string holds a terminating zero of its own.
    std::vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

}  // namespace vorund::internal
