#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vorund::internal {

/// Pairs of a pixel and a positive label, in one flat table with room beside each.
class PixelLabelSet {
 public:
    /// False if the pair is there already.
    bool insert(std::uint64_t pixel, std::int32_t label) {
        if (2 * count_ >= slots_.size()) grow();
        Slot& slot = find({pixel, label});
        if (slot.label != 0) return false;
        slot = {pixel, label};
        ++count_;
        return true;
    }

 private:
    struct Slot {
        std::uint64_t pixel = 0;
        std::int32_t label = 0;  ///< 0: a free slot.
    };

    /// Its slot, or the free one that it should have.
    Slot& find(const Slot& wanted) {
        const std::size_t last = slots_.size() - 1;
        // Fibonacci hashing, by the upper half of the product.
        const std::uint64_t mixed =
            (wanted.pixel * 31 + static_cast<std::uint64_t>(wanted.label)) * 0x9E3779B97F4A7C15U;
        std::size_t place = static_cast<std::size_t>(mixed >> 32) & last;
        while (slots_[place].label != 0 &&
               (slots_[place].pixel != wanted.pixel || slots_[place].label != wanted.label)) {
            place = (place + 1) & last;
        }
        return slots_[place];
    }

    void grow() {
        std::vector<Slot> former(slots_.empty() ? kFirstSize : 2 * slots_.size());
        former.swap(slots_);
        for (const Slot& slot : former) {
            if (slot.label != 0) find(slot) = slot;
        }
    }

    static constexpr std::size_t kFirstSize = 256;

    std::vector<Slot> slots_;  ///< A power of two of them, at most half of them taken.
    std::size_t count_ = 0;
};

}  // namespace vorund::internal
