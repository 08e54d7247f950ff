#include "flow/separators.h"

#include <cstdint>

namespace vorund::rooms {
namespace {

bool touchesSmallerRoom(const cv::Mat& labels, int row, int col) {
    const int own = labels.at<std::int32_t>(row, col);
    const auto smaller = [&](int r, int c) {
        if (r < 0 || r >= labels.rows || c < 0 || c >= labels.cols) return false;
        const int other = labels.at<std::int32_t>(r, c);
        return other != 0 && other < own;
    };
    return smaller(row - 1, col) || smaller(row, col - 1) || smaller(row, col + 1) ||
           smaller(row + 1, col);
}

}  // namespace

cv::Mat linesBetween(const cv::Mat& labels) {
    cv::Mat lines = cv::Mat::zeros(labels.size(), CV_8UC1);
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            if (touchesSmallerRoom(labels, row, col)) lines.at<std::uint8_t>(row, col) = kLine;
        }
    }
    return lines;
}

cv::Mat drawSeparators(const cv::Mat& labels) {
    cv::Mat rooms;
    labels.convertTo(rooms, CV_32S);
    rooms.setTo(0, labels == kLine);
    cv::Mat separated = labels.clone();
    separated.setTo(kLine, linesBetween(rooms));
    return separated;
}

}  // namespace vorund::rooms
