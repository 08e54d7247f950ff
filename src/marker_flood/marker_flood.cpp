#include "marker_flood/marker_flood.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "internal/require.h"
#include "marker_flood/flood.h"
#include "marker_flood/flood_queue.h"
#include "marker_flood/pixel_order_queue.h"
#include "marker_flood/plain_queue.h"

namespace vorund::internal {
namespace {

/// False as well if one of them is not a number.
template <class Cost>
bool areFloats(const cv::Mat& floats, const cv::Mat& costs) {
    const float* const rounded = floats.ptr<float>();
    const Cost* const cost = costs.ptr<Cost>();
    const std::size_t count = costs.total() * static_cast<std::size_t>(costs.channels());
    std::int32_t unequal = 0;
    for (std::size_t i = 0; i < count; ++i) {
        unequal |= static_cast<Cost>(rounded[i]) == cost[i] ? 0 : 1;
    }
    return unequal == 0;
}

/// As `convertTo`, which takes 32-bit integers through single precision on ARM64.
cv::Mat toDoubles(const cv::Mat& image) {
    cv::Mat doubles;
    if (image.depth() != CV_32S) {
        image.convertTo(doubles, CV_64F);
        return doubles;
    }
    doubles.create(image.rows, image.cols, CV_64FC(image.channels()));
    for (int row = 0; row < image.rows; ++row) {
        const std::int32_t* const from = image.ptr<std::int32_t>(row);
        std::copy(from, from + image.cols * image.channels(), doubles.ptr<double>(row));
    }
    return doubles;
}

/// The costs without gaps between rows: as `CV_32F` if they are all numbers that floats hold, else
/// as `CV_64F`.
cv::Mat costsOf(const cv::Mat& image) {
    cv::Mat floats;
    if (image.depth() == CV_32F && image.isContinuous()) {
        floats = image;
    } else {
        image.convertTo(floats, CV_32F);
    }
    if (image.depth() <= CV_16S || image.depth() == CV_32F) {
        return areFloats<float>(floats, floats) ? floats : toDoubles(image);
    }
    const cv::Mat doubles = toDoubles(image);
    return areFloats<double>(floats, doubles) ? floats : doubles;
}

/// Floods with a heap that serves no further than it seems to be needed, then further.
template <class State, std::size_t kNeighbours>
void floodFloats(const cv::Mat& costs, cv::Mat& labels, bool watershed_line, Ties ties) {
    if (ties == Ties::kPixelOrder) {
        PixelOrderQueue queue;
        Flood<PixelOrderQueue, State, kNeighbours>(costs, labels, watershed_line, queue)
            .run(labels);
        return;
    }
    using LowestQueue = FloodQueue<std::uint32_t>;
    using Queue = FloodQueue<std::uint64_t>;
    const auto offsets = neighbourOffsets<kNeighbours>(labels.cols);
    const TieGuard guard({offsets.begin(), offsets.end()}, labels.total());

    LowestQueue lowest(guard, 0);
    if (Flood<LowestQueue, State, kNeighbours>(costs, labels, watershed_line, lowest).run(labels)) {
        return;
    }
    for (const std::uint32_t heap_level : {lowest.currentLevel(), Queue::kHighest}) {
        Queue queue(guard, heap_level);
        if (Flood<Queue, State, kNeighbours>(costs, labels, watershed_line, queue).run(labels)) {
            return;
        }
    }
}

template <std::size_t kNeighbours>
void flood(const cv::Mat& costs, cv::Mat& labels, bool watershed_line, Ties ties) {
    // The fast queues have indices of 32 bits.
    if (costs.depth() != CV_32F || labels.total() > std::numeric_limits<std::int32_t>::max()) {
        PlainQueue queue(labels);
        Flood<PlainQueue, std::int32_t, kNeighbours>(costs, labels, watershed_line, queue)
            .run(labels);
        return;
    }
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    if (largest <= std::numeric_limits<std::int16_t>::max()) {
        floodFloats<std::int16_t, kNeighbours>(costs, labels, watershed_line, ties);
    } else {
        floodFloats<std::int32_t, kNeighbours>(costs, labels, watershed_line, ties);
    }
}

}  // namespace

cv::Mat floodFromMarkers(const cv::Mat& image, const cv::Mat& markers, int connectivity,
                         bool watershed_line, Ties ties) {
    const cv::Mat costs = costsOf(image);
    require(connectivity == 4 || connectivity == 8,
            "executeSkimageWatershed: Connectivity must be 4 or 8.");
    require(markers.size() == image.size() && (markers.empty() || markers.type() == CV_32SC1),
            "executeSkimageWatershed: Markers must be CV_32S and of the image's size.");
    cv::Mat labels = markers.clone();
    if (labels.empty()) return labels;
    if (connectivity == 4) {
        flood<4>(costs, labels, watershed_line, ties);
    } else {
        flood<8>(costs, labels, watershed_line, ties);
    }
    return labels;
}

}  // namespace vorund::internal
