#include "blocks/wide_cuts.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <vector>

#include "flow/separators.h"

namespace vorund::rooms {
namespace {

using GraphProcessor::OptimalLine;

// As in the core.
constexpr double kPi = 3.14159265358979323846;
constexpr int kMostSteps = 200;
constexpr int kAngleStep = 10;             // [degrees]
constexpr std::int64_t kFewestPixels = 3;  // Of a border that is cut.
constexpr float kShortestCut = 5.0F;       // [pixels]
constexpr float kAlignedWeight = 1.5F;

/// Cuts of a border end on its rooms; a walk leaves their windows by less than this. [pixels]
constexpr int kWindowMargin = 4;

/// In double precision: the single-precision functions differ between machines.
cv::Point2f directionOf(int degrees) {
    const double radians = static_cast<double>(static_cast<float>(degrees)) * kPi / 180.0;
    const cv::Point2f direction(static_cast<float>(std::cos(radians)),
                                static_cast<float>(std::sin(radians)));
    const double length = cv::norm(direction);
    return {static_cast<float>(static_cast<double>(direction.x) / length),
            static_cast<float>(static_cast<double>(direction.y) / length)};
}

/// The label at a point between pixels; none outside the image.
std::optional<int> labelAt(const cv::Mat& labels, const cv::Point2f& point) {
    const float x = std::round(point.x);
    const float y = std::round(point.y);
    if (!(x >= 0.0F && x < static_cast<float>(labels.cols) && y >= 0.0F &&
          y < static_cast<float>(labels.rows))) {
        return {};
    }
    return labels.at<std::int32_t>(static_cast<int>(y), static_cast<int>(x));
}

/// Straight lines through the rooms of one border.
class Chords {
 public:
    Chords(const cv::Mat& labels, const Edge& rooms) : labels_(labels), rooms_(rooms) {}

    cv::Point2f walk(const cv::Point2f& start, const cv::Point2f& step) const {
        cv::Point2f reached = start;
        for (int i = 0; i < kMostSteps; ++i) {
            const cv::Point2f next = reached + step;
            const std::optional<int> label = labelAt(labels_, next);
            if (!label || !isInside(*label)) break;
            reached = next;
        }
        return reached;
    }

    bool mayEndAt(const cv::Point2f& point) const {
        const std::optional<int> label = labelAt(labels_, point);
        return label && (*label == 0 || isInside(*label));
    }

 private:
    bool isInside(int label) const {
        return label == kLine || label == rooms_.first || label == rooms_.second;
    }

    const cv::Mat& labels_;
    Edge rooms_;
};

std::optional<OptimalLine> bestCut(const Chords& chords, const cv::Point2f& center) {
    std::optional<OptimalLine> best;
    for (int degrees = 0; degrees < 180; degrees += kAngleStep) {
        const cv::Point2f step = directionOf(degrees);
        const cv::Point2f start = chords.walk(center, step);
        const cv::Point2f end = chords.walk(center, -step);
        if (!chords.mayEndAt(start) || !chords.mayEndAt(end)) continue;
        const auto length = static_cast<float>(cv::norm(start - end));
        if (length < kShortestCut) continue;
        const float weight = degrees % 90 == 0 ? kAlignedWeight : 1.0F;
        const float score = length / weight;
        // Strictly: among equal scores the smallest angle wins.
        if (best && !(score < best->score)) continue;
        best = {center, start, end, static_cast<float>(degrees), length, weight, score};
    }
    return best;
}

/// Sums over the pixels of a border.
struct PixelSums {
    std::int64_t count = 0;
    std::int64_t x = 0;
    std::int64_t y = 0;

    cv::Point2f center() const {
        const auto mean = [this](std::int64_t sum) {
            return static_cast<float>(static_cast<double>(sum) / static_cast<double>(count));
        };
        return {mean(x), mean(y)};
    }
};

std::map<int, PixelSums> sumBorders(const cv::Mat& borders) {
    std::map<int, PixelSums> sums;
    for (int row = 0; row < borders.rows; ++row) {
        const std::int32_t* const id = borders.ptr<std::int32_t>(row);
        for (int col = 0; col < borders.cols; ++col) {
            if (id[col] == 0) continue;
            PixelSums& sum = sums[id[col]];
            ++sum.count;
            sum.x += col;
            sum.y += row;
        }
    }
    return sums;
}

/// The smallest rectangle around each room, by label.
std::vector<cv::Rect> boxesOf(const cv::Mat& labels) {
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    std::vector<cv::Rect> boxes(static_cast<std::size_t>(largest) + 1);
    for (int row = 0; row < labels.rows; ++row) {
        const std::int32_t* const label = labels.ptr<std::int32_t>(row);
        for (int col = 0; col < labels.cols;) {
            const int from = col;
            while (col < labels.cols && label[col] == label[from]) ++col;
            boxes[static_cast<std::size_t>(label[from])] |= cv::Rect(from, row, col - from, 1);
        }
    }
    return boxes;
}

OptimalLine shifted(OptimalLine line, const cv::Point& by) {
    // Whole numbers below 2^24: nothing is rounded.
    const cv::Point2f shift(by);
    line.center += shift;
    line.start += shift;
    line.end += shift;
    return line;
}

}  // namespace

Cuts findWideCuts(const RoomGraph& rooms) {
    const std::map<int, PixelSums> sums = sumBorders(rooms.borders);
    Cuts cuts;
    for (const auto& [edge, id] : rooms.border_ids) {
        const auto sum = sums.find(id);
        if (sum == sums.end() || sum->second.count < kFewestPixels) continue;
        const auto best = bestCut(Chords(rooms.labels, edge), sum->second.center());
        if (best) cuts.emplace(edge, *best);
    }
    return cuts;
}

void straightenWideBorders(cv::Mat& labels, const Cuts& cuts) {
    std::vector<cv::Rect> boxes = boxesOf(labels);
    for (const auto& [rooms, line] : cuts) {
        cv::Rect& first = boxes[static_cast<std::size_t>(rooms.first)];
        cv::Rect& second = boxes[static_cast<std::size_t>(rooms.second)];
        first |= second;
        second = first;
        const cv::Point margin(kWindowMargin, kWindowMargin);
        const cv::Rect window =
            cv::Rect(first.tl() - margin, first.br() + margin) & cv::Rect({0, 0}, labels.size());
        cv::Mat part = labels(window);
        straightenBorders(part, {{rooms, shifted(line, -window.tl())}});
    }
}

}  // namespace vorund::rooms
