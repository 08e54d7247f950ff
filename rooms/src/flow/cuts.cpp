#include "flow/cuts.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <tuple>
#include <vector>

#include "internal/rectification.h"

namespace vorund::rooms {
namespace {

cv::Mat toBytes(const cv::Mat& image) {
    cv::Mat bytes;
    image.convertTo(bytes, CV_8U);
    return bytes;
}

/// The pixels of a straight line, each a step up, down, left or right from the last, so that they
/// part the floor even for 8-connected ways around.
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

}  // namespace

Cuts findCuts(const RoomGraph& rooms, cv::Mat* picture) {
    const cv::Mat borders = toBytes(rooms.borders);
    const cv::Mat labels = toBytes(rooms.labels);
    std::map<int, GraphProcessor::OptimalLine> lines;
    if (picture == nullptr) {
        lines = internal::rectifyBorders(borders, rooms.border_ids, labels);
    } else {
        std::tie(*picture, lines) = GraphProcessor::processOptimalBorderRectification(
            borders, rooms.border_ids, labels, "cuts");
    }
    Cuts cuts;
    for (const auto& [edge, id] : rooms.border_ids) {
        const auto line = lines.find(id);
        if (line != lines.end()) cuts.emplace(edge, line->second);
    }
    return cuts;
}

void straightenBorders(cv::Mat& labels, const Cuts& cuts) {
    for (const auto& [rooms, line] : cuts) CutPair(labels, rooms, line).apply();
}

}  // namespace vorund::rooms
