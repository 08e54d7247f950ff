#pragma once

#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

namespace vorund::internal {

/// A stream for texts that look the same whatever locale the robot's program has set.
class TextStream : public std::ostringstream {
 public:
    TextStream() { imbue(std::locale::classic()); }
};

/// A number as printf's "%f" has it in the C locale: six digits after the point.
inline std::string fixedText(double value) {
    TextStream text;
    text << std::fixed << std::setprecision(6) << value;
    return text.str();
}

}  // namespace vorund::internal
