#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "internal/require.h"
#include "marker_flood/pixel_label_set.h"

namespace vorund::internal {

/// Neighbours as steps of the flattened index, in the order in which they are queued.
template <std::size_t kNeighbours>
std::array<std::ptrdiff_t, kNeighbours> neighbourOffsets(std::ptrdiff_t cols) {
    if constexpr (kNeighbours == 4) {
        return {-cols, -1, 1, cols};
    } else {
        return {-cols - 1, -cols, -cols + 1, -1, 1, cols - 1, cols, cols + 1};
    }
}

/// One flooding; pixels are addressed by their flattened index.
/// @tparam State  A signed integer that holds the labels.
template <class Queue, class State, std::size_t kNeighbours>
class Flood {
 public:
    /// @param costs   In as many rows and columns as the markers, without gaps.
    Flood(const cv::Mat& costs, const cv::Mat& markers, bool watershed_line, Queue& queue)
        : queue_(queue),
          offsets_(neighbourOffsets<kNeighbours>(markers.cols)),
          costs_(costs.ptr<typename Queue::Cost>()),
          watershed_line_(watershed_line) {
        // Closed pixels before the first row and after the last: all pixels have their neighbours.
        const auto margin = static_cast<std::size_t>(markers.cols) + 1;
        storage_.assign(markers.total() + 2 * margin, kClosed);
        states_ = storage_.data() + margin;
        readMarkers(markers);
        queueSeeds(markers);
    }

    /// Labels whatever the flood reaches. False if it cannot be relied on; nothing is changed then.
    bool run(cv::Mat& labels) {
        Item item(Level(), Pixel(), 0, Queue::kSeeds);
        while (queue_.pop(item)) {
            if (!watershed_line_ || settle(item)) queueNeighbours(item);
        }
        if (queue_.isInOrder()) writeLabels(labels);
        return queue_.isInOrder();
    }

 private:
    using Item = typename Queue::Item;
    using Level = decltype(Item::level);
    using Pixel = decltype(Item::pixel);

    /// Of what is never flooded: the frame, and lines. A seed that is closed keeps its marker.
    static constexpr State kClosed = std::numeric_limits<State>::min();

    static bool isUnlabelled(State state) { return state <= 0 && state != kClosed; }

    /// The outermost frame of pixels stays closed.
    void readMarkers(const cv::Mat& markers) {
        for (int row = 1; row < markers.rows - 1; ++row) {
            const std::int32_t* const marker = markers.ptr<std::int32_t>(row);
            State* const states = states_ + std::ptrdiff_t{row} * markers.cols;
            for (int col = 1; col < markers.cols - 1; ++col) {
                states[col] = marker[col] > 0 ? static_cast<State>(marker[col]) : State{0};
            }
        }
    }

    void writeLabels(cv::Mat& labels) const {
        for (int row = 1; row < labels.rows - 1; ++row) {
            const State* const states = states_ + std::ptrdiff_t{row} * labels.cols;
            std::int32_t* const label = labels.ptr<std::int32_t>(row);
            for (int col = 1; col < labels.cols - 1; ++col) {
                if (states[col] > 0) label[col] = states[col];
            }
        }
    }

    void queueSeeds(const cv::Mat& markers) {
        std::vector<State> active(static_cast<std::size_t>(markers.cols));
        for (int row = 0; row < markers.rows; ++row) {
            const std::int32_t* const marker = markers.ptr<std::int32_t>(row);
            const std::ptrdiff_t first = std::ptrdiff_t{row} * markers.cols;
            queue_.announceSeeds(marker, costs_ + first, markers.cols);
            findActive(first, active);
            const bool in_frame = row == 0 || row == markers.rows - 1;
            findActiveInFrame(marker, first, in_frame ? 1 : std::max(markers.cols - 1, 1), active);
            for (int col = 0; col < markers.cols; ++col) {
                if (active[static_cast<std::size_t>(col)] == 0) continue;
                queue_.announceActive(Item(Queue::level(costs_[first + col]),
                                           static_cast<Pixel>(first + col), marker[col],
                                           Queue::kSeeds));
            }
        }
        if (!queue_.start(markers.total())) return;
        std::ptrdiff_t pixel = 0;
        for (int row = 0; row < markers.rows; ++row) {
            const std::int32_t* const marker = markers.ptr<std::int32_t>(row);
            for (int col = 0; col < markers.cols; ++col, ++pixel) {
                if (marker[col] <= 0) continue;
                queue_.pushSeed(Queue::level(costs_[pixel]), static_cast<Pixel>(pixel));
            }
        }
    }

    /// Not 0 for seeds of the row that could flood something, or touch another label.
    void findActive(std::ptrdiff_t first, std::vector<State>& active) {
        const State* const states = states_ + first;
        State* const out = active.data();
        const auto cols = static_cast<std::ptrdiff_t>(active.size());
        for (std::ptrdiff_t col = 0; col < cols; ++col) {
            const State label = states[col];
            State other = 0;
            for (const std::ptrdiff_t offset : offsets_) {
                const State state = states[col + offset];
                other = state == kClosed || state == label ? other : State{1};
            }
            out[col] = label > 0 ? other : State{0};
        }
    }

    /// The same for those of a row's ends or of a whole row that are in the frame: their state is
    /// not their label.
    void findActiveInFrame(const std::int32_t* marker, std::ptrdiff_t first, std::ptrdiff_t step,
                           std::vector<State>& active) {
        for (std::size_t col = 0; col < active.size(); col += static_cast<std::size_t>(step)) {
            const State* const state = states_ + first + static_cast<std::ptrdiff_t>(col);
            for (const std::ptrdiff_t offset : offsets_) {
                if (marker[col] > 0 && state[offset] != kClosed && state[offset] != marker[col]) {
                    active[col] = 1;
                }
            }
        }
    }

    bool touchesAnotherLabel(const State* state, std::int32_t label) const {
        for (const std::ptrdiff_t offset : offsets_) {
            if (state[offset] > 0 && state[offset] != label) return true;
        }
        return false;
    }

    /// Line mode: labels the item's pixel, or makes it part of a line. False if the item is to be
    /// dropped.
    bool settle(const Item& item) {
        State* const state = states_ + static_cast<std::ptrdiff_t>(item.pixel);
        if (*state > 0 && item.group != Queue::kSeeds) return false;
        if (*state != kClosed) {
            if (!touchesAnotherLabel(state, item.label)) {
                *state = static_cast<State>(item.label);
                return true;
            }
            *state = kClosed;
        }
        // A line pixel hands its label on. With 8 neighbours lines lie side by side and would hand
        // labels to and fro, ever more often; once per label is enough and bounds the queue.
        if constexpr (kNeighbours == 4) return true;
        return handed_on_.insert(static_cast<std::uint64_t>(item.pixel), item.label);
    }

    void queueNeighbours(const Item& item) {
        const auto label = static_cast<State>(item.label);
        for (const std::ptrdiff_t offset : offsets_) {
            const std::ptrdiff_t neighbour = static_cast<std::ptrdiff_t>(item.pixel) + offset;
            State& state = states_[neighbour];
            if (!isUnlabelled(state)) continue;
            const bool repeated = state == -label;
            state = static_cast<State>(watershed_line_ ? -label : label);
            // The flood level never goes down along a path.
            const Level level = Queue::level(costs_[neighbour]);
            queue_.push(level < item.level ? item.level : level, static_cast<Pixel>(neighbour),
                        item, repeated);
            require(age_ < std::numeric_limits<std::int32_t>::max(),
                    "executeSkimageWatershed: The queue has taken 2^31 items.");
            ++age_;
        }
    }

    Queue& queue_;
    std::array<std::ptrdiff_t, kNeighbours> offsets_;
    const typename Queue::Cost* costs_;
    bool watershed_line_;
    std::vector<State> storage_;
    /// > 0: the pixel's label. `kClosed`. Otherwise it has none yet, and was last queued with the
    /// label `-state`, if that is not 0.
    State* states_ = nullptr;
    PixelLabelSet handed_on_;
    std::int32_t age_ = 1;
};

}  // namespace vorund::internal
