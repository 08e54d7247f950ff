#include "flow/boxes.h"

#include <cstdint>

#include "internal/runs.h"

namespace vorund::rooms {

std::vector<cv::Rect> boxesOf(const cv::Mat& labels) {
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    std::vector<cv::Rect> boxes(static_cast<std::size_t>(largest) + 1);
    for (int row = 0; row < labels.rows; ++row) {
        internal::forEachRun(labels.ptr<std::int32_t>(row), labels.cols,
                             [&](int begin, int end, std::int32_t label) {
                                 boxes[static_cast<std::size_t>(label)] |=
                                     cv::Rect(begin, row, end - begin, 1);
                             });
    }
    return boxes;
}

}  // namespace vorund::rooms
