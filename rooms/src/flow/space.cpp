#include "flow/space.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vorund::rooms {
namespace {

constexpr std::int32_t kStraight = 3;
constexpr std::int32_t kDiagonal = 4;

/// One of the neighbours that a pass over the image has seen before the pixel.
struct Step {
    int down;
    int right;
    std::int32_t weight;
};

constexpr std::array<Step, 4> kForward{
    {{-1, -1, kDiagonal}, {-1, 0, kStraight}, {-1, 1, kDiagonal}, {0, -1, kStraight}}};

/// The distance at a pixel by the neighbours in `direction` (1: above and left, -1: below and
/// right).
std::int32_t relaxed(const cv::Mat& labels, const cv::Mat& distances, int row, int col,
                     int direction) {
    std::int32_t distance = distances.at<std::int32_t>(row, col);
    for (const Step& step : kForward) {
        const int r = row + direction * step.down;
        const int c = col + direction * step.right;
        const bool same = r >= 0 && r < labels.rows && c >= 0 && c < labels.cols &&
                          labels.at<std::int32_t>(r, c) == labels.at<std::int32_t>(row, col);
        const std::int32_t there = same ? distances.at<std::int32_t>(r, c) : 0;
        distance = std::min(distance, there + step.weight);
    }
    return distance;
}

}  // namespace

std::map<int, cv::Point> widestPixels(const cv::Mat& labels) {
    constexpr std::int32_t kFar = 1 << 30;
    cv::Mat distances(labels.size(), CV_32SC1, cv::Scalar(kFar));
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            distances.at<std::int32_t>(row, col) = relaxed(labels, distances, row, col, 1);
        }
    }
    for (int row = labels.rows - 1; row >= 0; --row) {
        for (int col = labels.cols - 1; col >= 0; --col) {
            distances.at<std::int32_t>(row, col) = relaxed(labels, distances, row, col, -1);
        }
    }

    std::map<int, cv::Point> widest;
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const int label = labels.at<std::int32_t>(row, col);
            if (label == 0) continue;
            const cv::Point pixel(col, row);
            cv::Point& best = widest.emplace(label, pixel).first->second;
            if (distances.at<std::int32_t>(pixel) > distances.at<std::int32_t>(best)) best = pixel;
        }
    }
    return widest;
}

}  // namespace vorund::rooms
