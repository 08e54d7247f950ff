#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorund::internal {

/// The front of the flooding queue while the order among seeds of equal level matters: a binary
/// heap that gives its entries in the order in which `WatershedQueue` gives them, on small keys.
///
/// In a key's lower 32 bits a seed has a number up to a mask, and anything else a larger one, by
/// its age. Seeds that are equal above are equal to the heap, whatever their numbers. With keys of
/// 64 bits the level is above; with 32 bits all seeds are of one level. `kBeyond` never leaves: it
/// stands for all larger keys, which only take up places. They need not be told apart, as no step
/// of the heap lets one of them decide where a smaller key goes.
///
/// Equal seeds at the top are a tree of their own, the plain, and of two the left one rises. So
/// whatever takes the place of the top sinks along a chain: from the top to the left as long as
/// the plain goes on there, else to the right. All on the chain rise by one and the chain's end
/// falls free. The heap keeps the chain and the numbers on it apart and moves nothing.
template <class Key>
class SeedHeap {
 public:
    static constexpr Key kBeyond = ~Key{0};

    SeedHeap() : keys_(1, kBeyond) {}

    /// @param seed_mask  2^n - 1.
    void open(std::size_t capacity, Key seed_mask) {
        keys_.reserve(capacity + 1);
        seed_mask_ = seed_mask;
    }

    /// Whether nothing but `kBeyond` is left.
    bool done() const { return chained_ == 0 && keys_.front() == kBeyond; }

    void push(Key key) {
        std::size_t child = keys_.size() - 1;
        keys_.push_back(kBeyond);
        if (key == kBeyond) return;
        const Key largest_equal = largestEqual(key);
        while (child > 0) {
            const std::size_t parent = (child - 1) / 2;
            if (keys_[parent] <= largest_equal) break;
            keys_[child] = keys_[parent];
            child = parent;
        }
        keys_[child] = key;
    }

    Key pop() {
        Key top = keys_.front();
        if (chained_ == 0 && largestEqual(top) != top) {
            plain_ = largestEqual(top);
            extendChain(0);
        }
        keys_.pop_back();
        const Key last = keys_.back();
        keys_.back() = kBeyond;
        if (chained_ > 0) {
            top = popPlain(last);
        } else if (size() > 0) {
            sink(0, last);
        }
        return top;
    }

 private:
    static constexpr Key kAbove = sizeof(Key) > 4 ? ~Key{0xFFFFFFFFU} : Key{0};
    static constexpr std::size_t kMostLevels = 64;

    std::size_t size() const { return keys_.size() - 1; }

    Key largestEqual(Key key) const {
        const Key largest_seed = (key & kAbove) | seed_mask_;
        return key < largest_seed ? largest_seed : key;
    }

    Key& risen(std::size_t i) { return risen_[(first_risen_ + i) % kMostLevels]; }

    /// @param place  In the plain, below the chain's end.
    void extendChain(std::size_t place) {
        while (true) {
            places_[chained_] = place;
            risen(chained_) = keys_[place];
            ++chained_;
            const std::size_t left = 2 * place + 1;
            if (left >= size()) break;
            if (keys_[left] <= plain_) {
                place = left;
            } else if (keys_[left + 1] <= plain_) {
                place = left + 1;
            } else {
                break;
            }
        }
    }

    /// @param last  What has been the last entry, and takes the top's place.
    Key popPlain(Key last) {
        const Key top = risen(0);
        const std::size_t end = places_[chained_ - 1];
        if (last <= plain_) {
            // No greater than what is below it, it stays at the top.
            if (end == size()) last = risen(--chained_);
            risen(0) = last;
            return top;
        }
        --chained_;
        first_risen_ = (first_risen_ + 1) % kMostLevels;
        sink(end, last);
        const bool was_left = end % 2 == 1;
        if (was_left && end + 1 < size() && keys_[end + 1] <= plain_) extendChain(end + 1);
        return top;
    }

    /// From a place that is free down to its own.
    void sink(std::size_t parent, Key key) {
        Key* const keys = keys_.data();
        for (std::size_t child = 2 * parent + 1; child < size(); child = 2 * parent + 1) {
            if (largestEqual(keys[child + 1]) < keys[child]) ++child;
            if (largestEqual(keys[child]) >= key) break;
            keys[parent] = keys[child];
            parent = child;
        }
        keys[parent] = key;
    }

    /// After the last of them one `kBeyond`, in place of a right child that is missing.
    std::vector<Key> keys_;
    Key seed_mask_ = 0;

    Key plain_ = 0;  ///< The largest key equal to those of the plain.
    std::size_t chained_ =
        0;  ///< Length of the chain; 0: the top is no seed, or not looked at yet.
    std::array<std::size_t, kMostLevels> places_{};
    std::array<Key, kMostLevels> risen_{};  ///< What the chain's places hold; a ring.
    std::size_t first_risen_ = 0;
};

}  // namespace vorund::internal
