#include "score/score_areas.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>

namespace vorund::rooms {

Areas findAreas(const cv::Mat& mask) {
    Areas areas;
    const int found = cv::connectedComponents(mask, areas.numbers, 8, CV_32S);
    // OpenCV's numbers depend on its version: it may scan in blocks of pixels, or in stripes.
    std::vector<int> renumbered(static_cast<std::size_t>(found), 0);
    areas.sizes.assign(1, 0);
    for (int row = 0; row < mask.rows; ++row) {
        int* const numbers = areas.numbers.ptr<int>(row);
        for (int col = 0; col < mask.cols; ++col) {
            if (numbers[col] == 0) continue;
            int& number = renumbered[static_cast<std::size_t>(numbers[col])];
            if (number == 0) {
                number = static_cast<int>(areas.sizes.size());
                areas.sizes.push_back(0);
            }
            numbers[col] = number;
            ++areas.sizes[static_cast<std::size_t>(number)];
        }
    }
    return areas;
}

cv::Mat largestArea(const cv::Mat& mask) {
    const Areas areas = findAreas(mask);
    const auto largest = std::max_element(areas.sizes.begin(), areas.sizes.end());
    if (*largest == 0) return cv::Mat::zeros(mask.size(), CV_8UC1);
    return areas.numbers == static_cast<int>(largest - areas.sizes.begin());
}

}  // namespace vorund::rooms
