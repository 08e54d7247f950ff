// Random numbers that are the same on every machine.
#pragma once

#include <cstdint>

namespace vorund::test {

/// SplitMix64: G. Steele, D. Lea, C. Flood, "Fast Splittable Pseudorandom Number Generators",
/// OOPSLA 2014; constants as in S. Vigna's public domain reference.
/// Not from <random>: its distributions differ between standard libraries.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    /// Streams of one seed are independent: what one draws never shifts another.
    Random(std::uint64_t seed, std::uint64_t stream) : state_(mix(seed) ^ mix(~stream)) {}

    std::uint64_t next() { return mix(state_ += 0x9E3779B97F4A7C15U); }

    /// A number from `low` to `high`, both included; `low` where the range is empty.
    /// The modulo favours small numbers by less than 2^-32, which no plan can show.
    int between(int low, int high) {
        if (high <= low) return low;
        const std::int64_t count = std::int64_t{high} - low + 1;
        const std::uint64_t offset = next() % static_cast<std::uint64_t>(count);
        return static_cast<int>(low + static_cast<std::int64_t>(offset));
    }

    /// True `amount` times out of `whole`.
    bool chance(int amount, int whole = 100) { return between(1, whole) <= amount; }

private:
    static std::uint64_t mix(std::uint64_t z) {
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    std::uint64_t state_;
};

}  // namespace vorund::test
