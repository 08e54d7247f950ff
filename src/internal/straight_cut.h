#pragma once

#include <array>
#include <cmath>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "vorund/graph.h"
#include "vorund/graph_processor.h"

/// Straight cuts through a border, for label images of 8 bits and of 32.
namespace vorund::internal {

inline constexpr int kMostSteps = 200;
inline constexpr int kAngleStep = 10;          // [degrees]
inline constexpr float kShortestCut = 5.0F;    // [pixels]
inline constexpr float kAlignedWeight = 1.5F;  // Horizontal and vertical cuts count as shorter.
inline constexpr int kFewestPixels = 3;        // Of a border that is cut.

/// In double precision: the single-precision functions differ between machines.
inline cv::Point2f directionOf(float angle) {
    constexpr double kPi = 3.14159265358979323846;
    const double radians = static_cast<double>(angle) * kPi / 180.0;
    return {static_cast<float>(std::cos(radians)), static_cast<float>(std::sin(radians))};
}

/// Halves are rounded away from zero: -0.5 is outside, and so is what is no number.
inline bool roundsInto(float coordinate, int size) {
    return coordinate > -0.5F && coordinate < static_cast<float>(size) - 0.5F;
}

/// Of a coordinate that rounds into an image; what is left over from whole pixels is exact.
inline int rounded(float coordinate) {
    const int whole = static_cast<int>(coordinate);
    return coordinate - static_cast<float>(whole) >= 0.5F ? whole + 1 : whole;
}

/// Where a walk across the two rooms of a border may go.
/// @tparam T  Type of a label.
template <class T>
class Floor {
 public:
    Floor(const cv::Mat& segments, int line, const Edge& rooms)
        : segments_(segments), line_(line), rooms_(rooms) {}

    cv::Point2f walk(const cv::Point2f& start, const cv::Point2f& direction) const {
        const double length = cv::norm(direction);
        if (length < 1e-6) return start;
        const cv::Point2f step(static_cast<float>(static_cast<double>(direction.x) / length),
                               static_cast<float>(static_cast<double>(direction.y) / length));
        cv::Point2f reached = start;
        for (int i = 0; i < kMostSteps; ++i) {
            const cv::Point2f next = reached + step;
            if (!holds(next) || !isFloor(labelAt(next))) break;
            reached = next;
        }
        return reached;
    }

    bool isEnd(const cv::Point2f& point) const {
        if (!holds(point)) return false;
        const int label = labelAt(point);
        return label == 0 || isFloor(label);
    }

 private:
    bool holds(const cv::Point2f& point) const {
        return roundsInto(point.x, segments_.cols) && roundsInto(point.y, segments_.rows);
    }

    int labelAt(const cv::Point2f& point) const {
        return segments_.ptr<T>(rounded(point.y))[rounded(point.x)];
    }

    bool isFloor(int label) const {
        return label == line_ || label == rooms_.first || label == rooms_.second;
    }

    const cv::Mat& segments_;
    int line_;
    Edge rooms_;
};

/// The cuts through a point from wall to wall, by ascending angle.
template <class T>
std::vector<GraphProcessor::OptimalLine> straightCuts(const Floor<T>& floor,
                                                      const cv::Point2f& center) {
    static const std::array<cv::Point2f, 180 / kAngleStep> kDirections = [] {
        std::array<cv::Point2f, 180 / kAngleStep> made;
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] = directionOf(static_cast<float>(static_cast<int>(i) * kAngleStep));
        }
        return made;
    }();
    std::vector<GraphProcessor::OptimalLine> cuts;
    int angle = -kAngleStep;
    for (const cv::Point2f& direction : kDirections) {
        angle += kAngleStep;
        const cv::Point2f start = floor.walk(center, direction);
        const cv::Point2f end = floor.walk(center, -direction);
        const auto length = static_cast<float>(cv::norm(start - end));
        if (length < kShortestCut || !floor.isEnd(start) || !floor.isEnd(end)) continue;
        const float weight = angle % 90 == 0 ? kAlignedWeight : 1.0F;
        cuts.push_back(
            {center, start, end, static_cast<float>(angle), length, weight, length / weight});
    }
    return cuts;
}

/// Of equal scores the smallest angle wins.
inline std::optional<GraphProcessor::OptimalLine> bestOf(
    const std::vector<GraphProcessor::OptimalLine>& cuts) {
    std::optional<GraphProcessor::OptimalLine> best;
    for (const GraphProcessor::OptimalLine& cut : cuts) {
        if (!best || cut.score < best->score) best = cut;
    }
    return best;
}

}  // namespace vorund::internal
