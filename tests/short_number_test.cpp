#include "internal/short_number.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "internal/text.h"

namespace vorund::internal {
namespace {

std::string textOf(float value) {
    TextStream out;
    out << ShortNumber{value};
    return out.str();
}

std::string streamed(float value) {
    TextStream out;
    out << value;
    return out.str();
}

TEST(ShortNumber, HasSixDigitsAndNoZerosBehindThePoint) {
    EXPECT_EQ(textOf(1.0F), "1");
    EXPECT_EQ(textOf(1.5F), "1.5");
    EXPECT_EQ(textOf(170.0F), "170");
    EXPECT_EQ(textOf(20.03125F), "20.0312") << "a half goes to the even digit";
    EXPECT_EQ(textOf(20.09375F), "20.0938");
    EXPECT_EQ(textOf(12345.678F), "12345.7");
    EXPECT_EQ(textOf(100.0F), "100");
    EXPECT_EQ(textOf(9.9999999F), "10");
    EXPECT_EQ(textOf(9.999999F), "10");
    EXPECT_EQ(textOf(99.99999F), "100");
}

TEST(ShortNumber, IsLeftToTheStreamWhereItIsLarge) {
    for (const float value : {0.0F, -0.0F, -3.25F, 0.1F, 1e-30F, 99999.0F, 99999.96F, 1e5F, 1e30F,
                              std::numeric_limits<float>::infinity(), std::nanf("")}) {
        EXPECT_EQ(textOf(value), streamed(value));
    }
}

TEST(ShortNumber, IsWhatTheStreamWrites) {
    std::mt19937 random(5);
    for (int i = 0; i < 200000; ++i) {
        // Every exponent from 2^-2 to 2^18.
        const auto bits =
            static_cast<std::uint32_t>(((125U + random() % 20U) << 23U) | (random() & 0x7FFFFFU));
        float value = 0.0F;
        std::memcpy(&value, &bits, sizeof value);
        ASSERT_EQ(textOf(value), streamed(value));
    }
    for (int i = 0; i < 100000; ++i) {
        // Numbers that end in a half of the last digit are exact in few bits.
        const float value = static_cast<float>(random() % 3200000U) / 32.0F;
        ASSERT_EQ(textOf(value), streamed(value));
    }
}

}  // namespace
}  // namespace vorund::internal
