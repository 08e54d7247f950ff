#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "marker_flood/level_queue.h"
#include "marker_flood/seed_heap.h"
#include "marker_flood/tie_guard.h"

namespace vorund::internal {

/// The flooding queue for levels of 32 bits. Floods end with the labels that `WatershedQueue` gives
/// them, though not every item leaves in that order.
///
/// All seeds have age 0, so that the order among those of one level is the heap's own. It shows in
/// the labels only where seeds of several labels share a level: what seeds of one label and level
/// queue leaves in one go at each level, in whatever order, and floods the same pixels. And even
/// with several labels it seldom matters but at the lowest level, that of plains without a ridge.
/// So the heap serves as far as the order may matter; beyond, any queue does that is ordered by
/// level and age.
///
/// @tparam HeapKey  32 bits: the heap serves at the lowest level only.
template <class HeapKey>
class FloodQueue {
 public:
    using Cost = float;
    using Item = LevelQueue::Entry;
    static constexpr std::uint32_t kSeeds = 0;  ///< The group of all seeds.
    static constexpr std::uint32_t kHighest = ~std::uint32_t{0};

    /// @param heap_level  With 64 bits: the heap serves up to this level where it may be needed.
    FloodQueue(TieGuard guard, std::uint32_t heap_level)
        : last_heap_level_(heap_level), guard_(std::move(guard)) {}

    static std::uint32_t level(float cost) { return levelOfCost(cost); }

    /// All seeds, before any is pushed. @param markers  > 0 where there is one.
    void announceSeeds(const std::int32_t* markers, const float* costs, int count) {
        float lowest = std::numeric_limits<float>::infinity();
        for (int i = 0; i < count; ++i) {
            if (markers[i] > 0 && costs[i] < lowest) lowest = costs[i];
        }
        lowest_ = std::min(lowest_, level(lowest));
    }

    /// The seeds that are not inert, in the order of their pixels. An inert seed changes nothing
    /// when it leaves the queue.
    void announceActive(const Item& seed) { seeds_.push_back(seed); }

    /// False if there is no need to push the seeds.
    bool start(std::size_t most_seeds) {
        in_heap_ = findLastHeapLevel();
        for (const Item& seed : seeds_) {
            if (in_heap_ && seed.level <= last_heap_level_) continue;
            levels_.push(seed.level, seed.pixel, seed.label, seed.group);
        }
        if (!in_heap_) return false;
        while (seed_mask_ < seeds_.size()) seed_mask_ = 2 * seed_mask_ + 1;
        heap_.open(most_seeds, static_cast<HeapKey>(seed_mask_));
        return true;
    }

    /// In the order of their pixels.
    void pushSeed(std::uint32_t level, std::uint32_t pixel) {
        std::size_t number = 0;
        if (next_seed_ < seeds_.size() && seeds_[next_seed_].pixel == pixel) number = ++next_seed_;
        heap_.push(level > last_heap_level_ ? heap_.kBeyond : heapKey(level, number));
    }

    /// @param repeated  The pixel has been pushed with the label before: that item comes first and
    ///                  leaves nothing to this one.
    void push(std::uint32_t level, std::uint32_t pixel, const Item& from, bool repeated) {
        if (in_heap_) {
            if (level < last_heap_level_) {
                queued_.emplace_back(level, pixel, from.label, guard_.group());
                heap_.push(heapKey(level, seed_mask_ + queued_.size()));
                return;
            }
            heap_.push(heap_.kBeyond);
        }
        if (!repeated) levels_.push(level, pixel, from.label, guard_.group());
    }

    /// False if nothing is left, or if the order of what is left is not known and may matter.
    bool pop(Item& item) {
        if (in_heap_ && popFromHeap(item)) {
            guard_.passAlone();
            return true;
        }
        if (!levels_.pop()) return false;
        item = levels_.now()[levels_.poppedCount() - 1];
        is_in_order_ = guard_.pass(levels_.now(), levels_.poppedCount());
        return is_in_order_;
    }

    /// Whether the labels can be relied on. If not, the heap is needed up to `currentLevel` at
    /// least.
    bool isInOrder() const { return is_in_order_; }
    std::uint32_t currentLevel() const { return levels_.now().front().level; }

 private:
    static constexpr bool kAtAllLevels = sizeof(HeapKey) > 4;

    static HeapKey heapKey(std::uint32_t level, std::uint64_t number) {
        return static_cast<HeapKey>(kAtAllLevels ? std::uint64_t{level} << 32 | number : number);
    }

    bool popFromHeap(Item& item) {
        while (!heap_.done()) {
            const std::size_t number = static_cast<std::uint32_t>(heap_.pop());
            if (number == 0) continue;
            item = number <= seed_mask_ ? seeds_[number - 1] : queued_[number - seed_mask_ - 1];
            return true;
        }
        in_heap_ = false;
        return false;
    }

    /// Lowers the last level to one that needs the heap. False if there is none.
    bool findLastHeapLevel() {
        if (!kAtAllLevels) last_heap_level_ = lowest_;
        std::vector<Item> seeds;
        for (const Item& seed : seeds_) {
            if (seed.level <= last_heap_level_) seeds.push_back(seed);
        }
        std::sort(seeds.begin(), seeds.end(),
                  [](const Item& a, const Item& b) { return a.level < b.level; });
        for (std::size_t i = seeds.size(); i-- > 1;) {
            if (seeds[i].level != seeds[i - 1].level) continue;
            if (seeds[i].label == seeds[i - 1].label) continue;
            last_heap_level_ = seeds[i].level;
            return true;
        }
        return false;
    }

    std::vector<Item> seeds_;  ///< Those that are not inert; numbered from 1 in the heap.
    std::size_t next_seed_ = 0;
    std::uint32_t lowest_ = kHighest;
    std::uint32_t last_heap_level_;
    std::uint64_t seed_mask_ = 1;
    SeedHeap<HeapKey> heap_;
    bool in_heap_ = false;
    std::vector<Item> queued_;  ///< Items in the heap that are not seeds.
    LevelQueue levels_;
    TieGuard guard_;
    bool is_in_order_ = true;
};

}  // namespace vorund::internal
