#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "marker_flood/level_queue.h"

namespace vorund::internal {

/// Tells whether the order of flooded pixels matters where it is not known.
///
/// Pixels of one level whose order among each other is not known form a group, and the queue gives
/// them one after the other. What they queue in their turn is again of unknown order where its
/// level is the same; so each group that leaves has a number, and what it queues belongs to it.
/// Within a group the order makes no difference to pixels of one label, nor to pixels of several
/// labels that have no pixel in common, neighbours included.
class TieGuard {
 public:
    /// @param neighbour_offsets  Ascending steps of the index, as many back as forth.
    TieGuard(std::vector<std::ptrdiff_t> neighbour_offsets, std::size_t pixel_count)
        : offsets_(std::move(neighbour_offsets)), pixel_count_(pixel_count) {}

    /// The number of the group that is leaving, from 1.
    std::uint32_t group() const { return group_; }

    /// A pixel leaves whose place in the order is known.
    void passAlone() {
        ++group_;
        is_mixed_ = false;
    }

    /// The last of `popped` entries of one level leaves. False if its place in the order may
    /// matter.
    bool pass(const LevelQueue::List& entries, std::size_t popped) {
        const LevelQueue::Entry& entry = entries[popped - 1];
        if (popped == 1 || entry.group != entries[popped - 2].group) {
            passAlone();
            first_ = popped - 1;
        }
        if (!is_mixed_ && entry.label == entries[first_].label) return true;
        std::size_t next = is_mixed_ ? popped - 1 : first_;
        is_mixed_ = true;
        bool apart = true;
        for (; next < popped; ++next) apart = stamp(entries[next]) && apart;
        return apart;
    }

 private:
    /// The group that last had to do with a pixel.
    struct Stamp {
        std::uint32_t group = 0;
        std::int32_t label = 0;
    };

    /// False if the group has reached the pixel or a neighbour with another label.
    bool stamp(const LevelQueue::Entry& entry) {
        // Neighbours may lie before the first pixel or after the last.
        const auto margin = static_cast<std::size_t>(offsets_.back());
        if (stamps_.empty()) stamps_.resize(pixel_count_ + 2 * margin);
        Stamp* const centre = &stamps_[entry.pixel + margin];
        bool apart = stampPixel(*centre, entry.label);
        for (const std::ptrdiff_t offset : offsets_) {
            apart = stampPixel(centre[offset], entry.label) && apart;
        }
        return apart;
    }

    bool stampPixel(Stamp& stamp, std::int32_t label) const {
        const bool apart = stamp.group != group_ || stamp.label == label;
        stamp = {group_, label};
        return apart;
    }

    std::vector<std::ptrdiff_t> offsets_;
    std::size_t pixel_count_ = 0;
    std::vector<Stamp> stamps_;  ///< Empty until a group has several labels.
    std::uint32_t group_ = 0;
    std::size_t first_ = 0;  ///< Of the group, among the entries of its level.
    bool is_mixed_ = false;  ///< Whether the group has several labels.
};

}  // namespace vorund::internal
