#include "flow/line_pixels.h"

#include <cstdlib>

namespace vorund::rooms {

std::vector<cv::Point> linePixels(const cv::Point& from, const cv::Point& to) {
    const int dx = std::abs(to.x - from.x);
    const int dy = std::abs(to.y - from.y);
    const int step_x = to.x > from.x ? 1 : -1;
    const int step_y = to.y > from.y ? 1 : -1;
    std::vector<cv::Point> pixels{from};
    cv::Point pixel = from;
    for (int ix = 0, iy = 0; ix < dx || iy < dy;) {
        // Towards the side on which the line lies, compared at the middles of the next steps.
        if ((1 + 2 * ix) * dy < (1 + 2 * iy) * dx) {
            pixel.x += step_x;
            ++ix;
        } else {
            pixel.y += step_y;
            ++iy;
        }
        pixels.push_back(pixel);
    }
    return pixels;
}

}  // namespace vorund::rooms
