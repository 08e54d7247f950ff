#include "reference/records.h"

#include <algorithm>
#include <array>

namespace vorund::reference {
namespace {

constexpr int kStraight = 3;
constexpr int kDiagonal = 4;

/// One of the neighbours that a pass over the image has seen before the pixel.
struct Step {
    int down;
    int right;
    int weight;
};

constexpr std::array<Step, 4> kForward{
    {{-1, -1, kDiagonal}, {-1, 0, kStraight}, {-1, 1, kDiagonal}, {0, -1, kStraight}}};

/// The distance at a pixel by the neighbours in `direction` (1: above and left, -1: below and
/// right).
int lowered(const cv::Mat& labels, const cv::Mat& distances, int row, int col, int direction) {
    int distance = distances.at<int>(row, col);
    for (const Step& step : kForward) {
        const int r = row + direction * step.down;
        const int c = col + direction * step.right;
        const bool same = r >= 0 && r < labels.rows && c >= 0 && c < labels.cols &&
                          labels.at<int>(r, c) == labels.at<int>(row, col);
        distance = std::min(distance, (same ? distances.at<int>(r, c) : 0) + step.weight);
    }
    return distance;
}

cv::Mat spaceAround(const cv::Mat& labels) {
    constexpr int kFar = 1 << 30;
    cv::Mat distances(labels.size(), CV_32SC1, cv::Scalar(kFar));
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            distances.at<int>(row, col) = lowered(labels, distances, row, col, 1);
        }
    }
    for (int row = labels.rows - 1; row >= 0; --row) {
        for (int col = labels.cols - 1; col >= 0; --col) {
            distances.at<int>(row, col) = lowered(labels, distances, row, col, -1);
        }
    }
    return distances;
}

}  // namespace

std::map<int, int> numberInPlace(cv::Mat& labels) {
    std::map<int, int> numbers{{0, 0}};
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            int& label = labels.at<int>(row, col);
            const int next = static_cast<int>(numbers.size());
            label = numbers.emplace(label, next).first->second;
        }
    }
    return numbers;
}

std::map<int, cv::Point> widestPixels(const cv::Mat& labels) {
    const cv::Mat space = spaceAround(labels);
    std::map<int, cv::Point> widest;
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const int label = labels.at<int>(row, col);
            if (label == 0) continue;
            const cv::Point pixel(col, row);
            cv::Point& best = widest.emplace(label, pixel).first->second;
            if (space.at<int>(pixel) > space.at<int>(best)) best = pixel;
        }
    }
    return widest;
}

}  // namespace vorund::reference
