#include "reference/cuts.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "reference/room_graph.h"

namespace vorund::reference {
namespace {

using GraphProcessor::OptimalLine;

/// The search around one border.
class CutSearch {
 public:
    CutSearch(const cv::Mat& segments, const Edge& rooms) : segments_(segments), rooms_(rooms) {}

    /// The best line through the point; false if there is none.
    bool best(const cv::Point2f& center, OptimalLine& best) const {
        bool found = false;
        for (int angle = 0; angle < 180; angle += 10) {
            const double radians = angle * CV_PI / 180.0;
            const cv::Point2f direction(static_cast<float>(std::cos(radians)),
                                        static_cast<float>(std::sin(radians)));
            const cv::Point2f start = walk(center, direction);
            const cv::Point2f end = walk(center, -direction);
            const auto length = static_cast<float>(cv::norm(start - end));
            if (!isEnd(start) || !isEnd(end) || length < 5.0F) continue;
            const float weight = angle == 0 || angle == 90 ? 1.5F : 1.0F;
            if (found && length / weight >= best.score) continue;
            best = {center, start, end, static_cast<float>(angle), length, weight, length / weight};
            found = true;
        }
        return found;
    }

 private:
    /// The value under a point, or -1 outside.
    int valueAt(const cv::Point2f& point) const {
        const cv::Point pixel(static_cast<int>(std::round(point.x)),
                              static_cast<int>(std::round(point.y)));
        const bool inside =
            pixel.x >= 0 && pixel.y >= 0 && pixel.x < segments_.cols && pixel.y < segments_.rows;
        return inside ? segments_.at<int>(pixel) : -1;
    }

    bool isOpen(int value) const {
        return value == rooms_.first || value == rooms_.second || value == kLine;
    }

    bool isEnd(const cv::Point2f& point) const {
        const int value = valueAt(point);
        return value == 0 || isOpen(value);
    }

    cv::Point2f walk(const cv::Point2f& from, const cv::Point2f& direction) const {
        const double norm = cv::norm(direction);
        const cv::Point2f step(static_cast<float>(static_cast<double>(direction.x) / norm),
                               static_cast<float>(static_cast<double>(direction.y) / norm));
        cv::Point2f last = from;
        for (int i = 0; i < 200 && isOpen(valueAt(last + step)); ++i) last = last + step;
        return last;
    }

    cv::Mat segments_;
    Edge rooms_;
};

struct Sums {
    std::int64_t count = 0;
    std::int64_t x = 0;
    std::int64_t y = 0;
};

/// The border pixels of each id.
std::map<int, Sums> sumsOf(const cv::Mat& borders) {
    std::map<int, Sums> sums;
    for (int row = 0; row < borders.rows; ++row) {
        for (int col = 0; col < borders.cols; ++col) {
            Sums& sum = sums[borders.at<int>(row, col)];
            ++sum.count;
            sum.x += col;
            sum.y += row;
        }
    }
    return sums;
}

cv::Point rounded(const cv::Point2f& point) {
    return {static_cast<int>(std::lround(point.x)), static_cast<int>(std::lround(point.y))};
}

/// The pieces into which the line cuts what two rooms cover; 0 elsewhere.
std::pair<cv::Mat, int> piecesOf(const cv::Mat& labels, const Edge& rooms,
                                 const OptimalLine& line) {
    cv::Mat sides = (labels == rooms.first) | (labels == rooms.second);
    const cv::Rect whole({0, 0}, labels.size());
    for (const cv::Point& pixel : pixelsBetween(rounded(line.start), rounded(line.end))) {
        if (whole.contains(pixel)) sides.at<std::uint8_t>(pixel) = 0;
    }
    cv::Mat pieces;
    const int count = cv::connectedComponents(sides, pieces, 8, CV_32S);
    return {pieces, count};
}

/// Per piece its pixels of the first and of the second room.
using Shares = std::vector<std::array<std::int64_t, 2>>;

Shares sharesOf(const cv::Mat& labels, const cv::Mat& pieces, int count, int first) {
    Shares shares(static_cast<std::size_t>(count), {{0, 0}});
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const auto piece = static_cast<std::size_t>(pieces.at<int>(row, col));
            if (piece != 0) ++shares[piece][labels.at<int>(row, col) == first ? 0 : 1];
        }
    }
    return shares;
}

std::size_t ownerOf(const std::array<std::int64_t, 2>& share) {
    return share[1] > share[0] ? 1 : 0;
}

/// Whether the largest part of either room lies in a piece of its own.
bool bothKeepMost(const Shares& shares) {
    if (shares.size() < 2) return false;
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}}) {
        std::size_t largest = 1;
        for (std::size_t piece = 1; piece < shares.size(); ++piece) {
            if (shares[piece][room] > shares[largest][room]) largest = piece;
        }
        if (ownerOf(shares[largest]) != room) return false;
    }
    return true;
}

}  // namespace

std::vector<cv::Point> pixelsBetween(const cv::Point& from, const cv::Point& to) {
    const cv::Point size(std::abs(to.x - from.x), std::abs(to.y - from.y));
    const cv::Point step(to.x > from.x ? 1 : -1, to.y > from.y ? 1 : -1);
    std::vector<cv::Point> pixels{from};
    cv::Point done(0, 0);
    while (done != size) {
        const bool along_x = (1 + 2 * done.x) * size.y < (1 + 2 * done.y) * size.x;
        done += along_x ? cv::Point(1, 0) : cv::Point(0, 1);
        pixels.push_back(from + cv::Point(done.x * step.x, done.y * step.y));
    }
    return pixels;
}

PlainCuts cutsOf(const MergeState& rooms) {
    std::map<int, Sums> sums = sumsOf(rooms.borders);
    PlainCuts cuts;
    for (const auto& [edge, id] : rooms.border_ids) {
        const Sums& pixels = sums[id];
        if (pixels.count < 3) continue;
        const auto count = static_cast<double>(pixels.count);
        const cv::Point2f center(static_cast<float>(static_cast<double>(pixels.x) / count),
                                 static_cast<float>(static_cast<double>(pixels.y) / count));
        OptimalLine best{};
        if (CutSearch(rooms.segments, edge).best(center, best)) {
            cuts.emplace(edge, best);
        }
    }
    return cuts;
}

void straightenBorders(cv::Mat& labels, const PlainCuts& cuts) {
    for (const auto& [rooms, line] : cuts) {
        const auto [pieces, count] = piecesOf(labels, rooms, line);
        const Shares shares = sharesOf(labels, pieces, count, rooms.first);
        if (!bothKeepMost(shares)) continue;
        for (int row = 0; row < labels.rows; ++row) {
            for (int col = 0; col < labels.cols; ++col) {
                const auto piece = static_cast<std::size_t>(pieces.at<int>(row, col));
                if (piece == 0) continue;
                labels.at<int>(row, col) = ownerOf(shares[piece]) == 0 ? rooms.first : rooms.second;
            }
        }
    }
}

}  // namespace vorund::reference
