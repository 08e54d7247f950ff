#include "flow/separators.h"

#include <cstdint>

namespace vorund::rooms {
namespace {

bool isRoom(int label) {
    return label != 0 && label != kLine;
}

bool touchesSmallerRoom(const cv::Mat& labels, int row, int col) {
    const int own = labels.at<std::uint8_t>(row, col);
    const auto smaller = [&](int r, int c) {
        if (r < 0 || r >= labels.rows || c < 0 || c >= labels.cols) return false;
        const int other = labels.at<std::uint8_t>(r, c);
        return isRoom(other) && other < own;
    };
    return smaller(row - 1, col) || smaller(row, col - 1) || smaller(row, col + 1) ||
           smaller(row + 1, col);
}

}  // namespace

cv::Mat drawSeparators(const cv::Mat& labels) {
    cv::Mat separated = labels.clone();
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            if (isRoom(labels.at<std::uint8_t>(row, col)) && touchesSmallerRoom(labels, row, col)) {
                separated.at<std::uint8_t>(row, col) = kLine;
            }
        }
    }
    return separated;
}

}  // namespace vorund::rooms
