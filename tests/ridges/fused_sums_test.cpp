#include "ridges/fused_sums.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vorund::internal {
namespace {

using ::testing::ElementsAre;

/// As it is called, and as it is on a processor without the instruction.
struct Way {
    const char* name;
    decltype(&sumAlongRow) along_row;
    decltype(&sumDownColumns) down_columns;
};
void PrintTo(const Way& way, std::ostream* stream) {
    *stream << way.name;
}

class FusedSums : public ::testing::TestWithParam<Way> {
 protected:
    /// a * b + c with a kernel of two: the first product is c.
    float fused(float a, float b, float c) const {
        const float values[] = {c, a};
        const float kernel[] = {1.0F, b};
        float sum = 0.0F;
        GetParam().along_row(values, kernel, 2, &sum, 1);
        return sum;
    }
};

INSTANTIATE_TEST_SUITE_P(Ways, FusedSums,
                         ::testing::Values(Way{"called", sumAlongRow, sumDownColumns},
                                           Way{"computed", sumAlongRowComputed,
                                               sumDownColumnsComputed}));

/// Any number, also very small and very large ones; about half of them near one.
float anyFloat(std::mt19937& random) {
    auto bits = static_cast<std::uint32_t>(random());
    if (random() % 2 == 0) bits = (bits & 0x80FFFFFFU) | 0x3F000000U;
    if (random() % 2 == 0) bits &= 0xFFFF0000U;  // Short ones, for sums in the middle of two.
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof value);
    return std::isfinite(value) ? value : 1.0F;
}

std::vector<float> anyFloats(std::mt19937& random, int count) {
    std::vector<float> values;
    for (int i = 0; i < count; ++i) values.push_back(anyFloat(random));
    return values;
}

/// Also of what is no number.
bool sameBytes(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

TEST_P(FusedSums, RoundProductAndSumAtOnce) {
    // (1 + x)(1 + x) - (1 + 2x) is x^2; the product alone would lose it.
    const float x = std::ldexp(1.0F, -12);
    EXPECT_EQ(fused(1.0F + x, 1.0F + x, -(1.0F + 2.0F * x)), x * x);
}

TEST_P(FusedSums, AreNotRoundedToDoublePrecisionFirst) {
    // The floats from 1 to 2 are u = 2^-23 apart. (1 + x)(1 - x + x^2) is 1 + x^3: half of u and a
    // little more. In double precision one plus that is the middle between 1 and 1 + u.
    const float u = std::ldexp(1.0F, -23);
    const float x = std::ldexp(1.0F, -12);
    EXPECT_EQ(fused((1.0F + x) * u, (1.0F - x + x * x) * 0.5F, 1.0F), 1.0F + u);
    EXPECT_EQ(fused((1.0F + x) * u, -(1.0F - x + x * x) * 0.5F, -1.0F), -1.0F - u);
    // (1 + u)(1 - u) is 1 - u^2: a little less than the middle between 1 + u and 1 + 2u.
    EXPECT_EQ(fused((1.0F + u) * u, (1.0F - u) * 0.5F, 1.0F + u), 1.0F + u);
    EXPECT_EQ(fused((1.0F + u) * u, -(1.0F - u) * 0.5F, -1.0F - u), -1.0F - u);
}

TEST_P(FusedSums, AreExactWhereFloatsHaveFewBits) {
    // Below 2^-126 floats are s = 2^-149 apart. (1 + u)(1 - u) * s / 2 is less than half of s,
    // (1 + x)(1 - x + x^2) * s / 2 is more; in double precision either sum is the middle of two.
    const float s = std::numeric_limits<float>::denorm_min();
    const float u = std::ldexp(1.0F, -23);
    const float x = std::ldexp(1.0F, -12);
    const float root = std::ldexp(1.0F, -75);  // root * root = s / 2
    const float even = std::ldexp(s, 20);
    EXPECT_EQ(fused((1.0F + x) * root, (1.0F - x + x * x) * root, even), even + s);
    EXPECT_EQ(fused((1.0F + u) * root, (1.0F - u) * root, even + s), even + s);
}

TEST_P(FusedSums, PassOnWhatIsNoNumber) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(fused(infinity, 1.0F, 2.0F), infinity);
    EXPECT_EQ(fused(1.0F, 1.0F, -infinity), -infinity);
    EXPECT_EQ(fused(largest, 2.0F, 0.0F), infinity);
    EXPECT_EQ(fused(largest, 2.0F, -largest), largest);
    EXPECT_TRUE(std::isnan(fused(infinity, 1.0F, -infinity)));
    EXPECT_TRUE(std::isnan(fused(std::nanf(""), 1.0F, 1.0F)));
}

TEST_P(FusedSums, AgreeWithTheStandardLibraryOnAnyNumbers) {
    std::mt19937 random(1);
    for (int run = 0; run < 200000; ++run) {
        const float a = anyFloat(random), b = anyFloat(random), c = anyFloat(random);
        const float expected = std::fma(a, b, c);
        const float sum = fused(a, b, c);
        ASSERT_EQ(std::memcmp(&sum, &expected, sizeof sum), 0)
            << a << " * " << b << " + " << c << " is " << expected << ", not " << sum;
    }
}

TEST_P(FusedSums, AlongARowGoByAscendingEntries) {
    std::mt19937 random(2);
    for (const int count : {1, 7, 63, 64, 65, 127, 128, 200, 515}) {
        for (const int taps : {1, 2, 3, 9, 24}) {
            const std::vector<float> kernel = anyFloats(random, taps);
            const std::vector<float> values = anyFloats(random, count + taps - 1);
            std::vector<float> expected, sums(static_cast<std::size_t>(count));
            for (int i = 0; i < count; ++i) {
                const float* const from = values.data() + i;
                float sum = from[0] * kernel[0];
                for (int t = 1; t < taps; ++t) sum = std::fma(from[t], kernel.data()[t], sum);
                expected.push_back(sum);
            }
            GetParam().along_row(values.data(), kernel.data(), taps, sums.data(), count);
            EXPECT_TRUE(sameBytes(sums, expected)) << count << " values, " << taps << " taps";
        }
    }
}

TEST_P(FusedSums, DownColumnsGoFromTheMiddleOutwards) {
    // 1 2     1 * 3 + 10 * (1 + 6) = 73
    // 3 4     1 * 4 + 10 * (2 + 8) = 104
    // 6 8     odd: 10 * (6 - 1) = 50, 10 * (8 - 2) = 60
    const std::vector<float> high{1.0F, 2.0F}, middle{3.0F, 4.0F}, low{6.0F, 8.0F};
    const float* const rows[] = {high.data(), middle.data(), low.data()};
    const float kernel[] = {0.0F, 1.0F, 10.0F};
    std::vector<float> sums(2);
    GetParam().down_columns(rows + 1, kernel + 1, 1, Symmetry::kEven, sums.data(), 2);
    EXPECT_THAT(sums, ElementsAre(73.0F, 104.0F));
    GetParam().down_columns(rows + 1, kernel + 1, 1, Symmetry::kOdd, sums.data(), 2);
    EXPECT_THAT(sums, ElementsAre(50.0F, 60.0F));
}

float sumDownOneColumn(const float* const* rows, const float* kernel, int reach, bool odd,
                       std::size_t column) {
    float sum = odd ? 0.0F : rows[0][column] * kernel[0];
    for (int t = 1; t <= reach; ++t) {
        const float after = rows[t][column], before = rows[-t][column];
        sum = std::fma(odd ? after - before : after + before, kernel[t], sum);
    }
    return sum;
}

TEST_P(FusedSums, DownColumnsAgreeWithSingleSums) {
    std::mt19937 random(3);
    for (const std::size_t count : {1U, 5U, 255U, 256U, 257U, 600U}) {
        for (const int reach : {0, 1, 3, 4, 5, 8, 11}) {
            std::vector<std::vector<float>> images;
            std::vector<const float*> rows;
            for (int row = -reach; row <= reach; ++row) {
                images.push_back(anyFloats(random, static_cast<int>(count)));
            }
            for (const std::vector<float>& row : images) rows.push_back(row.data());
            const std::vector<float> kernel = anyFloats(random, reach + 1);
            for (const Symmetry symmetry : {Symmetry::kEven, Symmetry::kOdd}) {
                std::vector<float> expected, sums(count);
                for (std::size_t i = 0; i < count; ++i) {
                    expected.push_back(sumDownOneColumn(rows.data() + reach, kernel.data(), reach,
                                                        symmetry == Symmetry::kOdd, i));
                }
                GetParam().down_columns(rows.data() + reach, kernel.data(), reach, symmetry,
                                        sums.data(), static_cast<int>(count));
                EXPECT_TRUE(sameBytes(sums, expected)) << count << " columns, reach " << reach;
            }
        }
    }
}

}  // namespace
}  // namespace vorund::internal
