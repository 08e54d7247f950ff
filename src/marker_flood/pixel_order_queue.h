#pragma once

#include <cstddef>
#include <cstdint>

#include "marker_flood/level_queue.h"

namespace vorund::internal {

/// The flooding queue in which seeds of one level leave in the order of their pixels, whatever
/// their labels. It needs no heap, so that inert seeds cost nothing, and never fails.
class PixelOrderQueue {
 public:
    using Cost = float;
    using Item = LevelQueue::Entry;
    static constexpr std::uint32_t kSeeds = 0;

    static std::uint32_t level(float cost) { return levelOfCost(cost); }

    void announceSeeds(const std::int32_t* /*markers*/, const float* /*costs*/, int /*count*/) {}
    void announceActive(const Item& seed) {
        levels_.push(seed.level, seed.pixel, seed.label, seed.group);
    }
    bool start(std::size_t /*most_seeds*/) { return false; }
    void pushSeed(std::uint32_t /*level*/, std::uint32_t /*pixel*/) {}

    void push(std::uint32_t level, std::uint32_t pixel, const Item& from, bool repeated) {
        if (!repeated) levels_.push(level, pixel, from.label, kSeeds + 1);
    }

    bool pop(Item& item) {
        if (!levels_.pop()) return false;
        item = levels_.now()[levels_.poppedCount() - 1];
        return true;
    }

    bool isInOrder() const { return true; }

 private:
    LevelQueue levels_;
};

}  // namespace vorund::internal
