#pragma once

#include <stdexcept>

namespace vorund::internal {

/// Throws `std::runtime_error` with the message unless the condition holds.
inline void require(bool condition, const char* message) {
    if (!condition) throw std::runtime_error(message);
}

}  // namespace vorund::internal
