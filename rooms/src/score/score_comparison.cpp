#include "score/score_comparison.h"

#include <stdexcept>
#include <string>

namespace vorund::rooms {
namespace {

constexpr int kLeastSegment = 100;  // [pixels], 0.25 m^2 at 0.05 m per pixel

std::string sizeText(const cv::Mat& image) {
    return std::to_string(image.cols) + " x " + std::to_string(image.rows);
}

void requireSize(const cv::Mat& image, const char* what, const cv::Mat& truth) {
    if (image.size() == truth.size()) return;
    throw std::invalid_argument(std::string("scoreRooms: the ") + what + " has " + sizeText(image) +
                                " pixels, the truth " + sizeText(truth));
}

void requireFitting(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map) {
    if (truth.rooms.empty()) throw std::invalid_argument("scoreRooms: the truth is empty");
    requireSize(predicted, "prediction", truth.rooms);
    requireSize(truth.all_rooms, "image of all true rooms", truth.rooms);
    if (map.empty()) return;
    requireSize(map, "map", truth.rooms);
    if (map.type() != CV_8UC1) throw std::invalid_argument("scoreRooms: the map must be CV_8UC1");
}

cv::Mat freeIn(const cv::Mat& map, const cv::Size& size) {
    if (map.empty()) return cv::Mat(size, CV_8UC1, cv::Scalar(255));
    return map >= kLeastFreeGrey;
}

}  // namespace

Comparison compareRooms(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map,
                        std::optional<int> unreached) {
    requireFitting(predicted, truth, map);
    Comparison images;
    images.segments = numberRooms(predicted, "scoreRooms: prediction", unreached);
    images.rooms = numberRooms(truth.rooms, "scoreRooms: truth");
    images.free = freeIn(map, truth.rooms.size());
    images.counted = images.free & (images.rooms.numbers > 0);
    if (cv::countNonZero(images.counted) == 0) {
        throw std::invalid_argument("scoreRooms: no pixel of a true room is free in the map");
    }
    images.overlaps =
        countOverlaps(images.rooms, images.segments, images.counted, {1, kLeastSegment});
    return images;
}

}  // namespace vorund::rooms
