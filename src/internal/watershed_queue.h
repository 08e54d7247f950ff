#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "vorund/watershed_segmenter.h"

namespace vorund::internal {

/// The flooding queue: a binary heap in one array, lowest value first, then lowest age.
///
/// Seeds all have age 0, so those of equal value are equal to the heap and leave it in the order
/// that its own steps give them. Label images depend on that order, hence no standard queue, whose
/// steps differ between libraries.
class WatershedQueue {
 public:
    bool empty() const { return items_.empty(); }

    void push(const WatershedQueueItem& item) {
        items_.push_back(item);
        std::size_t child = items_.size() - 1;
        while (child > 0) {
            const std::size_t parent = (child - 1) / 2;
            if (!before(items_[child], items_[parent])) break;
            std::swap(items_[child], items_[parent]);
            child = parent;
        }
    }

    WatershedQueueItem pop() {
        const WatershedQueueItem top = items_.front();
        items_.front() = items_.back();
        items_.pop_back();
        std::size_t parent = 0;
        for (std::size_t child = 1; child < items_.size(); child = 2 * parent + 1) {
            const std::size_t right = child + 1;
            if (right < items_.size() && before(items_[right], items_[child])) child = right;
            if (!before(items_[child], items_[parent])) break;
            std::swap(items_[child], items_[parent]);
            parent = child;
        }
        return top;
    }

 private:
    static bool before(const WatershedQueueItem& a, const WatershedQueueItem& b) {
        return a.value < b.value || (a.value == b.value && a.age < b.age);
    }

    std::vector<WatershedQueueItem> items_;
};

}  // namespace vorund::internal
