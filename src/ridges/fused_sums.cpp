#include "ridges/fused_sums.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Amd64 has the instruction since 2013, but not every processor that is sold.
#if defined(__x86_64__) && !defined(__FP_FAST_FMAF)
#define VORUND_FMA_IS_OPTIONAL
#define VORUND_WITH_FMA __attribute__((target("fma")))
#else
#define VORUND_WITH_FMA
#endif
#define VORUND_INLINE inline __attribute__((always_inline))

namespace vorund::internal {
namespace {

constexpr int kPart = 256;
constexpr int kBlock = 64;  // Columns whose sums the registers hold.

struct Instruction {
    static VORUND_INLINE float fused(float a, float b, float c) { return __builtin_fmaf(a, b, c); }
};

/// The sum of two numbers, rounded to odd: of the two numbers around it the one whose last bit is
/// set, unless it is exact. Rounding that once more to single precision gives what one rounding
/// would have given (S. Boldo and G. Melquiond, Emulation of FMA and correctly rounded sums: proved
/// algorithms using rounding to odd, IEEE Transactions on Computers 57(4), 2008).
double roundedToOdd(double a, double b) {
    double sum = a + b;
    const double part = sum - a;
    const double error = (a - (sum - part)) + (b - part);
    std::int64_t bits = 0;
    std::memcpy(&bits, &sum, sizeof bits);
    const bool inexact = error < 0.0 || error > 0.0;  // Neither where it is no number.
    // The bits plus one are those of the next number away from zero.
    if (inexact && (bits & 1) == 0) bits += (error > 0.0) == (sum > 0.0) ? 1 : -1;
    std::memcpy(&sum, &bits, sizeof bits);
    return sum;
}

/// In double precision products are exact. Rounding the sum twice, to double and to single
/// precision, matters only where the first result lies in the middle between two of the second's
/// numbers, and where these are as small as to have fewer bits.
struct Computed {
    static VORUND_INLINE float fused(float a, float b, float c) {
        constexpr double kSmallestNormal = 1.1754943508222875e-38;
        const double product = static_cast<double>(a) * static_cast<double>(b);
        const double sum = product + static_cast<double>(c);
        std::uint64_t bits = 0;
        std::memcpy(&bits, &sum, sizeof bits);
        const bool middle = (bits & 0x1FFFFFFFU) == 0x10000000U;
        const bool small = std::abs(sum) < kSmallestNormal && (bits << 1U) != 0;
        if (middle || small) {
            return static_cast<float>(roundedToOdd(product, static_cast<double>(c)));
        }
        return static_cast<float>(sum);
    }
};

/// Filters `kCount` columns, whose sums stay in registers meanwhile.
template <class Fma, std::size_t kCount>
VORUND_INLINE void rowBlock(const float* values, const float* kernel, int taps, float* out) {
    float sums[kCount];
    for (std::size_t i = 0; i < kCount; ++i) sums[i] = values[i] * kernel[0];
    for (int t = 1; t < taps; ++t) {
        const float* const from = values + t;
        const float factor = kernel[t];
        for (std::size_t i = 0; i < kCount; ++i) sums[i] = Fma::fused(from[i], factor, sums[i]);
    }
    for (std::size_t i = 0; i < kCount; ++i) out[i] = sums[i];
}

bool areEqual(const float* values, int count) {
    const std::size_t pairs = static_cast<std::size_t>(count) - 1;
    return std::memcmp(values, values + 1, pairs * sizeof *values) == 0;
}

/// A block whose values are all equal has one sum, which is that of the next such block as well
/// where it has the same value: floor and walls are wide.
template <class Fma>
VORUND_INLINE void rowSums(const float* values, const float* kernel, int taps, float* sums,
                           int count) {
    const float* known = nullptr;
    float sum = 0.0F;
    for (int done = 0; done < count;) {
        if (count < kBlock) {
            rowBlock<Fma, 1>(values + done, kernel, taps, sums + done);
            ++done;
            continue;
        }
        // The last block may overlap the one before, whose sums are the same again.
        const int i = std::min(done, count - kBlock);
        if (areEqual(values + i, kBlock + taps - 1)) {
            if (known == nullptr || std::memcmp(known, values + i, sizeof *known) != 0) {
                known = values + i;
                rowBlock<Fma, 1>(known, kernel, taps, &sum);
            }
            std::fill(sums + i, sums + i + kBlock, sum);
        } else {
            rowBlock<Fma, kBlock>(values + i, kernel, taps, sums + i);
        }
        done = i + kBlock;
    }
}

/// Adds those of `kPairs` pairs of rows from the t-th on to the sums, so that a sum is fetched and
/// stored once for all of them.
template <class Fma, bool kIsOdd, int kPairs>
VORUND_INLINE void addPairs(const float* const* rows, const float* kernel, int t, int from,
                            float* __restrict__ sums, int count) {
    for (int i = 0; i < count; ++i) {
        float sum = sums[i];
        for (int p = 0; p < kPairs; ++p) {
            const float after = rows[t + p][from + i], before = rows[-t - p][from + i];
            const float both = kIsOdd ? after - before : after + before;
            sum = Fma::fused(both, kernel[t + p], sum);
        }
        sums[i] = sum;
    }
}

template <class Fma, bool kIsOdd>
VORUND_INLINE void columnPart(const float* const* rows, const float* kernel, int reach, int from,
                              float* __restrict__ sums, int count) {
    const float* const middle = rows[0] + from;
    for (int i = 0; i < count; ++i) sums[i] = kIsOdd ? 0.0F : middle[i] * kernel[0];
    int t = 1;
    for (; t + 3 <= reach; t += 4) addPairs<Fma, kIsOdd, 4>(rows, kernel, t, from, sums, count);
    for (; t <= reach; ++t) addPairs<Fma, kIsOdd, 1>(rows, kernel, t, from, sums, count);
}

template <class Fma, bool kIsOdd>
VORUND_INLINE void columnSums(const float* const* rows, const float* kernel, int reach, float* sums,
                              int count) {
    for (int from = 0; from < count; from += kPart) {
        columnPart<Fma, kIsOdd>(rows, kernel, reach, from, sums + from,
                                std::min(kPart, count - from));
    }
}

template <class Fma>
VORUND_INLINE void columnSums(const float* const* rows, const float* kernel, int reach,
                              Symmetry symmetry, float* sums, int count) {
    if (symmetry == Symmetry::kOdd) {
        columnSums<Fma, true>(rows, kernel, reach, sums, count);
    } else {
        columnSums<Fma, false>(rows, kernel, reach, sums, count);
    }
}

VORUND_WITH_FMA void rowByInstruction(const float* values, const float* kernel, int taps,
                                      float* sums, int count) {
    rowSums<Instruction>(values, kernel, taps, sums, count);
}

VORUND_WITH_FMA void columnsByInstruction(const float* const* rows, const float* kernel, int reach,
                                          Symmetry symmetry, float* sums, int count) {
    columnSums<Instruction>(rows, kernel, reach, symmetry, sums, count);
}

bool processorHasInstruction() {
#if defined(VORUND_FMA_IS_OPTIONAL)
    static const bool has = __builtin_cpu_supports("fma") != 0;
    return has;
#elif defined(__FP_FAST_FMAF)
    return true;
#else
    return false;
#endif
}

}  // namespace

void sumAlongRow(const float* values, const float* kernel, int taps, float* sums, int count) {
    (processorHasInstruction() ? rowByInstruction : sumAlongRowComputed)(values, kernel, taps, sums,
                                                                         count);
}

void sumDownColumns(const float* const* rows, const float* kernel, int reach, Symmetry symmetry,
                    float* sums, int count) {
    (processorHasInstruction() ? columnsByInstruction : sumDownColumnsComputed)(
        rows, kernel, reach, symmetry, sums, count);
}

void sumAlongRowComputed(const float* values, const float* kernel, int taps, float* sums,
                         int count) {
    rowSums<Computed>(values, kernel, taps, sums, count);
}

void sumDownColumnsComputed(const float* const* rows, const float* kernel, int reach,
                            Symmetry symmetry, float* sums, int count) {
    columnSums<Computed>(rows, kernel, reach, symmetry, sums, count);
}

}  // namespace vorund::internal
