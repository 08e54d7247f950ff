#include "polygons/room_pieces.h"

#include <array>

namespace vorund::rooms {
namespace {

/// Needs a rim without rooms.
void flood(const cv::Mat_<int>& labels, const cv::Point& seed, int id, cv::Mat_<int>& ids) {
    static const std::array<cv::Point, 4> kSteps{{{1, 0}, {0, -1}, {-1, 0}, {0, 1}}};
    const int label = labels(seed);
    std::vector<cv::Point> open{seed};
    ids(seed) = id;
    while (!open.empty()) {
        const cv::Point pixel = open.back();
        open.pop_back();
        for (const cv::Point& step : kSteps) {
            const cv::Point next = pixel + step;
            if (labels(next) != label || ids(next) != 0) continue;
            ids(next) = id;
            open.push_back(next);
        }
    }
}

}  // namespace

RoomPieces findPieces(const cv::Mat& labels) {
    cv::Mat_<int> rimmed;
    // Isolated: the image may be a view, and what lies around it is not the rim.
    cv::copyMakeBorder(labels, rimmed, 1, 1, 1, 1, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
                       cv::Scalar(0));
    RoomPieces pieces{cv::Mat_<int>(rimmed.size(), 0), {0}};
    for (int row = 1; row <= labels.rows; ++row) {
        for (int col = 1; col <= labels.cols; ++col) {
            if (rimmed(row, col) == 0 || pieces.ids(row, col) != 0) continue;
            const int id = static_cast<int>(pieces.labels.size());
            pieces.labels.push_back(rimmed(row, col));
            flood(rimmed, {col, row}, id, pieces.ids);
        }
    }
    return pieces;
}

}  // namespace vorund::rooms
