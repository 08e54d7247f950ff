#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vorund::internal {

/// The end of the run of equal pixels that starts at `begin` in a row of `size` pixels. Rooms and
/// walls are wide, so whole blocks are compared first.
template <class T>
int runEnd(const T* row, int begin, int size) {
    constexpr int kWordPixels = static_cast<int>(sizeof(std::uint64_t) / sizeof(T));
    constexpr int kWords = 4;
    const T value = row[begin];
    std::array<T, sizeof(std::uint64_t) / sizeof(T)> pattern;
    pattern.fill(value);
    std::uint64_t expected = 0;
    std::memcpy(&expected, pattern.data(), sizeof expected);
    const auto difference = [&](int at) {
        std::uint64_t word = 0;
        std::memcpy(&word, row + at, sizeof word);
        return word ^ expected;
    };

    int end = begin + 1;
    for (; end + kWords * kWordPixels <= size; end += kWords * kWordPixels) {
        if ((difference(end) | difference(end + kWordPixels) | difference(end + 2 * kWordPixels) |
             difference(end + 3 * kWordPixels)) != 0) {
            break;
        }
    }
    while (end + kWordPixels <= size && difference(end) == 0) end += kWordPixels;
    while (end < size && row[end] == value) ++end;
    return end;
}

/// Calls `visit(begin, end, value)` for every run of a row.
template <class T, class Visit>
void forEachRun(const T* row, int size, const Visit& visit) {
    for (int begin = 0; begin < size;) {
        const int end = runEnd(row, begin, size);
        visit(begin, end, row[begin]);
        begin = end;
    }
}

/// The first byte from `begin` on that has the value; `size` if none has.
inline int findByte(const std::uint8_t* row, int begin, int size, std::uint8_t value) {
    const void* const found =
        std::memchr(row + begin, value, static_cast<std::size_t>(size - begin));
    return found == nullptr ? size
                            : static_cast<int>(static_cast<const std::uint8_t*>(found) - row);
}

/// Calls `visit(col)` for every byte of a row that has the value.
template <class Visit>
void forEachByte(const std::uint8_t* row, int size, std::uint8_t value, const Visit& visit) {
    for (int col = findByte(row, 0, size, value); col < size;
         col = findByte(row, col + 1, size, value)) {
        visit(col);
    }
}

}  // namespace vorund::internal
