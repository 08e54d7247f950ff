#include "internal/short_number.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace vorund::internal {
namespace {

constexpr int kDigits = 6;

/// The decimals that are left beside the digits before the point.
int decimalsOf(float value) {
    int decimals = kDigits - 1;
    for (float bound = 10.0F; value >= bound; bound *= 10.0F) --decimals;
    return decimals;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const ShortNumber& number) {
    // Elsewhere there are zeros in front, exponents, signs and numbers that are none.
    if (!(number.value >= 1.0F && number.value < 99999.0F)) return out << number.value;

    int decimals = decimalsOf(number.value);
    double scale = 1.0;
    for (int i = 0; i < decimals; ++i) scale *= 10.0;
    // 24 bits times 10^5 are exact in 53, so that this rounds as the stream does.
    long digits = std::lrint(static_cast<double>(number.value) * scale);
    for (; decimals > 0 && digits % 10 == 0; --decimals) digits /= 10;

    std::array<char, kDigits + 2> text;
    std::size_t begin = text.size();
    for (; begin == text.size() || digits > 0 || decimals >= 0; --decimals, digits /= 10) {
        if (decimals == 0 && begin < text.size()) text[--begin] = '.';
        text[--begin] = static_cast<char>('0' + digits % 10);
    }
    return out.write(text.data() + begin, static_cast<std::streamsize>(text.size() - begin));
}

}  // namespace vorund::internal
