#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vorund::internal {

/// Integers in the order of the costs, which are no NaN.
inline std::uint32_t levelOfCost(float cost) {
    const float without_negative_zero = cost + 0.0F;
    std::uint32_t bits;
    std::memcpy(&bits, &without_negative_zero, sizeof bits);
    constexpr std::uint32_t kSign = 0x80000000U;
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

/// A queue for levels that never fall: lowest level first, then first come, first served.
///
/// A radix heap: entries wait by the highest byte in which their level differs from the current
/// one, and by that byte; a list of them is divided once the current level comes to it. Lists keep
/// the order of arrival, since all entries of one level are in one list at any time.
class LevelQueue {
 public:
    struct Entry {
        Entry(std::uint32_t its_level, std::uint32_t its_pixel, std::int32_t its_label,
              std::uint32_t its_group)
            : level(its_level), pixel(its_pixel), label(its_label), group(its_group) {}

        std::uint32_t level;
        std::uint32_t pixel;
        std::int32_t label;
        std::uint32_t group;
    };
    using List = std::vector<Entry>;

    /// No level may be below that of the last entry popped. Entries are made in place, since a copy
    /// of four integers just written waits for them.
    template <class... Members>
    void push(std::uint32_t level, const Members&... members) {
        listFor(level).emplace_back(level, members...);
    }

    /// False if there is nothing left. Otherwise the next entry is the last of `popped`.
    bool pop() {
        if (popped_ == now_.size() && !climb()) return false;
        ++popped_;
        return true;
    }

    /// The entries of the current level, of which the first `poppedCount` have been popped.
    const List& now() const { return now_; }
    std::size_t poppedCount() const { return popped_; }

 private:
    static constexpr std::size_t kPlaces = 4;
    static constexpr std::size_t kNone = 256;

    List& listFor(std::uint32_t level) {
        const std::uint32_t difference = level ^ level_;
        if (difference == 0) return now_;
        const unsigned place = (difference > 0xFFU ? 1U : 0U) + (difference > 0xFFFFU ? 1U : 0U) +
                               (difference > 0xFFFFFFU ? 1U : 0U);
        const std::uint32_t byte = level >> 8 * place & 0xFFU;
        taken_[place][byte / 64] |= std::uint64_t{1} << byte % 64;
        return waiting_[place][byte];
    }

    /// To the lowest level that anything waits for.
    bool climb() {
        now_.clear();
        popped_ = 0;
        std::size_t place = 0;
        std::size_t byte = lowestTaken(0);
        while (byte == kNone && ++place < kPlaces) byte = lowestTaken(place);
        if (byte == kNone) return false;

        taken_[place][byte / 64] &= ~(std::uint64_t{1} << byte % 64);
        List& list = waiting_[place][byte];
        if (place == 0 || list.size() == 1) {
            now_.swap(list);
            level_ = now_.front().level;
            return true;
        }
        level_ = list.front().level;
        for (const Entry& entry : list) level_ = entry.level < level_ ? entry.level : level_;
        for (const Entry& entry : list) listFor(entry.level).push_back(entry);
        list.clear();
        return true;
    }

    std::size_t lowestTaken(std::size_t place) const {
        for (std::size_t word = 0; word < taken_[place].size(); ++word) {
            const std::uint64_t bits = taken_[place][word];
            if (bits != 0) return 64 * word + static_cast<std::size_t>(__builtin_ctzll(bits));
        }
        return kNone;
    }

    std::uint32_t level_ = 0;
    List now_;  ///< Of the current level.
    std::size_t popped_ = 0;
    std::array<std::array<List, 256>, kPlaces> waiting_;
    std::array<std::array<std::uint64_t, 4>, kPlaces> taken_{};
};

}  // namespace vorund::internal
