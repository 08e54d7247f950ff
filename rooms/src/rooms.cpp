#include "vorund/rooms/rooms.h"

#include <cstdint>

namespace vorund::rooms {

int Rooms::roomAt(const cv::Point& pixel) const {
    const bool inside = cv::Rect(cv::Point(0, 0), labels.size()).contains(pixel);
    return inside ? labels.at<std::int32_t>(pixel) : 0;
}

int Rooms::roomAt(const cv::Point2d& metres) const {
    const GridMap frame{labels, {}, resolution, origin};
    return roomAt(metresToPixel(frame, metres));
}

}  // namespace vorund::rooms
