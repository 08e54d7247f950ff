#pragma once

#include <ostream>

namespace vorund::internal {

/// A number that is written as a stream of the classic locale writes it, six digits at most, in a
/// tenth of the time.
struct ShortNumber {
    float value;
};

std::ostream& operator<<(std::ostream& out, const ShortNumber& number);

}  // namespace vorund::internal
