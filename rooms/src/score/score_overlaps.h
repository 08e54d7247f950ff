#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace vorund::rooms {

/// The rooms of a label image, numbered without gaps.
struct NumberedRooms {
    cv::Mat numbers;  ///< `CV_32SC1`: 0 = no room, then 1, 2, 3, ... by ascending label.
    int count = 0;
    std::vector<std::int64_t> labels;  ///< That of number i is labels[i - 1]; see `RoomFate`.
};

/// @param labels   As for `scoreRooms`.
/// @param no_room  A label that stands for no room, besides 0.
/// @throws std::invalid_argument  naming the image by `what`, if its type is another one or if a
///         label is negative.
NumberedRooms numberRooms(const cv::Mat& labels, const char* what, std::optional<int> no_room = {});

/// The pixels that a true room and a predicted one have in common.
struct Overlap {
    int truth = 0;    ///< Index of the true room.
    int segment = 0;  ///< Index of the predicted room.
    double pixels = 0.0;
};

/// The rooms of both sides that count, by index, in the order of their numbers. Areas are whole
/// numbers of pixels; as doubles, since they go into quotients.
struct Overlaps {
    std::vector<double> truth_areas;
    std::vector<double> segment_areas;
    std::vector<int> truth_numbers;    ///< By index.
    std::vector<int> segment_numbers;  ///< By index.
    std::vector<Overlap> pairs;        ///< With common pixels, by truth, then by segment.
};

/// The smallest areas of rooms that count. [pixels]
struct LeastAreas {
    int truth = 1;
    int segment = 1;
};

/// Counts the pixels of the mask.
/// @param counted  `CV_8UC1`: pixels other than 0 count.
Overlaps countOverlaps(const NumberedRooms& truth, const NumberedRooms& segments,
                       const cv::Mat& counted, const LeastAreas& least);

/// The room of the other side that one shares most pixels with.
struct Partner {
    int index = -1;  ///< -1 if it shares none with any.
    double pixels = 0.0;
};

/// By index of the true rooms; of equal overlaps the first counts.
std::vector<Partner> partnersOfTruth(const Overlaps& overlaps);

/// By index of the predicted rooms; of equal overlaps the first counts.
std::vector<Partner> partnersOfSegments(const Overlaps& overlaps);

}  // namespace vorund::rooms
