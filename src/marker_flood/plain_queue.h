#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>

#include "internal/watershed_queue.h"

namespace vorund::internal {

/// The flooding queue for costs and images of any kind: the heap alone. See `FloodQueue`.
class PlainQueue {
 public:
    using Cost = double;
    struct Item {
        Item(double its_level, std::int64_t its_pixel, std::int32_t its_label,
             std::uint32_t its_group)
            : level(its_level), pixel(its_pixel), label(its_label), group(its_group) {}

        double level;
        std::int64_t pixel;
        std::int32_t label;
        std::uint32_t group;
        std::int64_t source = 0;  ///< The seed's pixel.
    };
    static constexpr std::uint32_t kSeeds = 0;

    explicit PlainQueue(const cv::Mat& markers) : markers_(markers.clone()) {}

    static double level(double cost) { return cost; }

    void announceSeeds(const std::int32_t* /*markers*/, const double* /*costs*/, int /*count*/) {}
    void announceActive(const Item& /*seed*/) {}
    bool start(std::size_t /*most_seeds*/) { return true; }
    void pushSeed(double level, std::int64_t pixel) { queue_.push({level, 0, pixel, pixel}); }

    void push(double level, std::int64_t pixel, const Item& from, bool /*repeated*/) {
        queue_.push({level, static_cast<std::int32_t>(age_++), pixel, from.source});
    }

    bool pop(Item& item) {
        if (queue_.empty()) return false;
        const WatershedQueueItem top = queue_.pop();
        const std::int32_t label = markers_.ptr<std::int32_t>()[top.source];
        item = Item(top.value, top.index, label, top.age == 0 ? kSeeds : kSeeds + 1);
        item.source = top.source;
        return true;
    }

    bool isInOrder() const { return true; }

 private:
    cv::Mat markers_;
    WatershedQueue queue_;
    std::int64_t age_ = 1;
};

}  // namespace vorund::internal
