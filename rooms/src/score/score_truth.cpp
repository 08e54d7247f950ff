#include <cstddef>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <vector>

#include "score/score_areas.h"
#include "score/score_overlaps.h"
#include "vorund/rooms/score.h"

namespace vorund::rooms {
namespace {

/// Lines are smoothed: beside them the drawing is a little darker than white.
constexpr int kMostLineGrey = 250;
/// Below a true room there are only gaps in walls, rays through windows and the like. [pixels]
constexpr int kLeastRoom = 500;
constexpr int kLeastRawRoom = 101;

void require(bool holds, const char* message) {
    if (!holds) throw std::invalid_argument(message);
}

/// By the area's number, whether more than half of it lies on the mask.
std::vector<bool> areMostlyOn(const cv::Mat& mask, const Areas& areas) {
    std::vector<long long> pixels(areas.sizes.size(), 0);
    for (int row = 0; row < mask.rows; ++row) {
        const int* const numbers = areas.numbers.ptr<int>(row);
        for (int col = 0; col < mask.cols; ++col) {
            if (mask.at<unsigned char>(row, col) != 0) {
                ++pixels[static_cast<std::size_t>(numbers[col])];
            }
        }
    }
    std::vector<bool> mostly(areas.sizes.size());
    for (std::size_t i = 0; i < mostly.size(); ++i) mostly[i] = 2 * pixels[i] > areas.sizes[i];
    return mostly;
}

/// The kept areas, numbered anew without gaps.
cv::Mat roomsOf(const Areas& areas, const std::vector<bool>& kept) {
    std::vector<int> renumbered(kept.size(), 0);
    int count = 0;
    for (std::size_t i = 1; i < kept.size(); ++i) {
        if (kept[i]) renumbered[i] = ++count;
    }
    cv::Mat rooms = areas.numbers.clone();
    for (int& room : cv::Mat_<int>(rooms)) room = renumbered[static_cast<std::size_t>(room)];
    return rooms;
}

std::vector<bool> areAtLeast(int least, const Areas& areas) {
    std::vector<bool> large;
    for (const int size : areas.sizes) large.push_back(size >= least);
    return large;
}

}  // namespace

Truth truthFromDrawing(const cv::Mat& drawing, const cv::Mat& map, bool keep_detached) {
    require(!drawing.empty(), "truthFromDrawing: the drawing is empty");
    require(drawing.type() == CV_8UC1, "truthFromDrawing: the drawing must be CV_8UC1");
    require(map.empty() || map.type() == CV_8UC1, "truthFromDrawing: the map must be CV_8UC1");
    require(map.empty() || map.size() == drawing.size(),
            "truthFromDrawing: drawing and map differ in size");
    const Areas areas = findAreas(drawing > kMostLineGrey);
    std::vector<bool> kept = areAtLeast(kLeastRoom, areas);
    if (!keep_detached && !map.empty()) {
        const std::vector<bool> attached = areMostlyOn(largestArea(map >= kLeastFreeGrey), areas);
        for (std::size_t i = 0; i < kept.size(); ++i) kept[i] = kept[i] && attached[i];
    }
    return {roomsOf(areas, kept), roomsOf(areas, areAtLeast(kLeastRawRoom, areas))};
}

Truth truthFromLabels(const cv::Mat& labels) {
    const cv::Mat rooms = numberRooms(labels, "truthFromLabels").numbers;
    return {rooms, rooms};
}

}  // namespace vorund::rooms
