#include "vorund/rooms/rooms.h"

#include <cstdint>
#include <stdexcept>

namespace vorund::rooms {

int Rooms::roomAt(const cv::Point& pixel) const {
    const bool inside = cv::Rect(cv::Point(0, 0), labels.size()).contains(pixel);
    return inside ? labels.at<std::int32_t>(pixel) : 0;
}

int Rooms::roomAt(const cv::Point2d& metres) const {
    const GridMap frame{labels, {}, resolution, origin};
    try {
        return roomAt(metresToPixel(frame, metres));
    } catch (const std::invalid_argument&) {
        return 0;  // Further away than pixels can be counted, or no number at all.
    }
}

}  // namespace vorund::rooms
