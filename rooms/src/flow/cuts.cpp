#include "flow/cuts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "flow/boxes.h"
#include "flow/line_pixels.h"
#include "flow/separators.h"
#include "internal/pixel_sums.h"
#include "internal/straight_cut.h"

namespace vorund::rooms {
namespace {

using GraphProcessor::OptimalLine;

/// Cuts of a border end on its rooms; a walk leaves their windows by less than this. [pixels]
constexpr int kWindowMargin = 4;

cv::Point rounded(const cv::Point2f& point) {
    return {static_cast<int>(std::lround(point.x)), static_cast<int>(std::lround(point.y))};
}

/// One pair of rooms that share a border, cut along a line.
class CutPair {
 public:
    CutPair(cv::Mat& labels, const Edge& rooms, const GraphProcessor::OptimalLine& line)
        : rooms_(rooms) {
        const cv::Mat first = labels == rooms.first;
        const cv::Mat second = labels == rooms.second;
        cv::Mat sides = first | second;
        const cv::Rect whole(cv::Point(0, 0), labels.size());
        for (const cv::Point& pixel : linePixels(rounded(line.start), rounded(line.end))) {
            if (whole.contains(pixel)) sides.at<std::uint8_t>(pixel) = 0;
        }
        count_ = cv::connectedComponents(sides, pieces_, 8, CV_32S);
        labels_ = labels;
    }

    /// Gives every piece to the room that most of it belongs to; the line's pixels stay. Nothing
    /// is done unless each room's largest part lies in a piece that becomes its own.
    void apply() {
        const std::vector<std::array<std::int64_t, 2>> pixels = countPixels();
        const auto owner = [&](std::size_t piece) {
            return pixels[piece][1] > pixels[piece][0] ? 1U : 0U;
        };
        for (const std::size_t room : {0U, 1U}) {
            std::size_t largest = 1;
            for (std::size_t piece = 1; piece < pixels.size(); ++piece) {
                if (pixels[piece][room] > pixels[largest][room]) largest = piece;
            }
            if (largest >= pixels.size() || owner(largest) != room) return;
        }
        for (int row = 0; row < labels_.rows; ++row) {
            for (int col = 0; col < labels_.cols; ++col) {
                const auto piece = static_cast<std::size_t>(pieces_.at<std::int32_t>(row, col));
                if (piece == 0) continue;
                labels_.at<std::int32_t>(row, col) =
                    owner(piece) == 0 ? rooms_.first : rooms_.second;
            }
        }
    }

 private:
    /// Per piece, its pixels in the first and in the second room.
    std::vector<std::array<std::int64_t, 2>> countPixels() const {
        std::vector<std::array<std::int64_t, 2>> pixels(static_cast<std::size_t>(count_), {{0, 0}});
        for (int row = 0; row < labels_.rows; ++row) {
            for (int col = 0; col < labels_.cols; ++col) {
                const auto piece = static_cast<std::size_t>(pieces_.at<std::int32_t>(row, col));
                const int label = labels_.at<std::int32_t>(row, col);
                if (piece != 0) ++pixels[piece][label == rooms_.first ? 0 : 1];
            }
        }
        return pixels;
    }

    Edge rooms_;
    cv::Mat labels_;
    cv::Mat pieces_;
    int count_ = 0;
};

/// By id.
internal::NumberedSums sumBorders(const RoomGraph& rooms) {
    int largest = 0;
    for (const auto& border : rooms.border_ids) largest = std::max(largest, border.second);
    internal::NumberedSums sums(largest + 1);
    internal::addLabels<std::int32_t>(rooms.borders, sums);
    return sums;
}

cv::Rect boxIn(const cv::Mat& labels, int label) {
    const cv::Mat room = labels == label;
    return cv::boundingRect(room);
}

OptimalLine shifted(OptimalLine line, const cv::Point& by) {
    // Whole numbers below 2^24: nothing is rounded.
    const cv::Point2f shift(by);
    line.start += shift;
    line.end += shift;
    return line;
}

}  // namespace

Cuts findCuts(const RoomGraph& rooms) {
    internal::NumberedSums sums = sumBorders(rooms);
    Cuts cuts;
    for (const auto& [edge, id] : rooms.border_ids) {
        if (sums[id].count < internal::kFewestPixels) continue;
        const internal::Floor<std::int32_t> floor(rooms.labels, kLine, edge);
        const cv::Point2f center(sums[id].mean());
        const auto best = internal::bestOf(internal::straightCuts(floor, center));
        if (best) cuts.emplace(edge, *best);
    }
    return cuts;
}

void straightenBorders(cv::Mat& labels, const Cuts& cuts) {
    std::vector<cv::Rect> boxes = boxesOf(labels);
    const cv::Rect whole({0, 0}, labels.size());
    const cv::Point margin(kWindowMargin, kWindowMargin);
    for (const auto& [rooms, line] : cuts) {
        cv::Rect& first = boxes[static_cast<std::size_t>(rooms.first)];
        cv::Rect& second = boxes[static_cast<std::size_t>(rooms.second)];
        const cv::Rect both = first | second;
        const cv::Rect window = cv::Rect(both.tl() - margin, both.br() + margin) & whole;
        cv::Mat part = labels(window);
        CutPair(part, rooms, shifted(line, -window.tl())).apply();
        // Anew, and not both around both: from room to room that would become the whole map.
        first = boxIn(part, rooms.first) + window.tl();
        second = boxIn(part, rooms.second) + window.tl();
    }
}

}  // namespace vorund::rooms
