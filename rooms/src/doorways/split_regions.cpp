#include <algorithm>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <utility>

#include "doorways/find_doorways.h"
#include "flow/boxes.h"
#include "flow/separators.h"

namespace vorund::rooms {
namespace {

/// Pieces below 1 m^2 are the niche of a wall beside its door. [pixels]
constexpr int kLeastPiece = 400;

bool isRegion(int label) {
    return label != 0 && label != kLine;
}

/// One region, from which the pixels of doorways were taken (set to 0).
class Splitting {
 public:
    /// @param part     Of the map, all of the region.
    /// @param missing  The doorways' pixels that were the region's, in `part`.
    Splitting(cv::Mat part, int label, std::vector<cv::Point> missing)
        : part_(std::move(part)), label_(label), missing_(std::move(missing)) {}

    /// @param next  The next free label; counted on.
    void apply(int& next) {
        nameKeptPieces(next);
        for (int row = 0; row < part_.rows; ++row) {
            for (int col = 0; col < part_.cols; ++col) {
                const int piece = pieces_.at<std::int32_t>(row, col);
                if (piece == 0) continue;
                const int name = names_[static_cast<std::size_t>(piece)];
                part_.at<std::int32_t>(row, col) = name;
                if (name == 0) missing_.emplace_back(col, row);
            }
        }
        fillMissing();
    }

 private:
    void nameKeptPieces(int& next) {
        cv::Mat stats;
        cv::Mat centroids;
        const cv::Mat own = part_ == label_;
        const int count = cv::connectedComponentsWithStats(own, pieces_, stats, centroids, 4, CV_32S);
        names_.assign(static_cast<std::size_t>(count), 0);
        if (count < 2) return;
        int largest = 1;
        const auto area = [&](int piece) { return stats.at<int>(piece, cv::CC_STAT_AREA); };
        for (int piece = 2; piece < count; ++piece) {
            if (area(piece) > area(largest)) largest = piece;
        }
        for (int piece = 1; piece < count; ++piece) {
            int& name = names_[static_cast<std::size_t>(piece)];
            if (piece == largest) {
                name = label_;
            } else if (area(piece) >= kLeastPiece) {
                name = next++;
            }
        }
    }

    /// Layer by layer: a pixel takes the smallest label of the pieces beside it.
    void fillMissing() {
        const std::set<int> kept(names_.begin() + 1, names_.end());
        while (!missing_.empty()) {
            std::vector<std::pair<cv::Point, int>> layer;
            std::vector<cv::Point> still_missing;
            for (const cv::Point& pixel : missing_) {
                const int label = smallestBeside(pixel, kept);
                if (label == 0) {
                    still_missing.push_back(pixel);
                } else {
                    layer.emplace_back(pixel, label);
                }
            }
            for (const auto& [pixel, label] : layer) part_.at<std::int32_t>(pixel) = label;
            if (layer.empty()) {  // Cut off from the rest by other regions.
                for (const cv::Point& pixel : still_missing) {
                    part_.at<std::int32_t>(pixel) = label_;
                }
                return;
            }
            missing_ = std::move(still_missing);
        }
    }

    int smallestBeside(const cv::Point& pixel, const std::set<int>& kept) const {
        const cv::Rect whole({0, 0}, part_.size());
        int smallest = 0;
        for (const cv::Point& step : {cv::Point(0, -1), {-1, 0}, {1, 0}, {0, 1}}) {
            const cv::Point beside = pixel + step;
            if (!whole.contains(beside)) continue;
            const int label = part_.at<std::int32_t>(beside);
            if (label == 0 || kept.count(label) == 0) continue;
            if (smallest == 0 || label < smallest) smallest = label;
        }
        return smallest;
    }

    cv::Mat part_;
    int label_;
    std::vector<cv::Point> missing_;
    cv::Mat pieces_;
    std::vector<int> names_;  ///< By piece: its label from now on; 0 for small ones.
};

}  // namespace

void splitAtDoorways(cv::Mat& labels, const cv::Mat& floor,
                     const std::vector<FoundDoorway>& doorways) {
    std::map<int, std::vector<cv::Point>> crossed;
    for (const FoundDoorway& doorway : doorways) {
        for (const cv::Point& pixel : doorway.pixels(floor)) {
            const int label = labels.at<std::int32_t>(pixel);
            if (isRegion(label)) crossed[label].push_back(pixel);
        }
    }
    if (crossed.empty()) return;
    const std::vector<cv::Rect> boxes = boxesOf(labels);
    int next = std::max(static_cast<int>(boxes.size()), kLine + 1);
    for (auto& [label, missing] : crossed) {
        const cv::Rect& box = boxes[static_cast<std::size_t>(label)];
        for (cv::Point& pixel : missing) {
            labels.at<std::int32_t>(pixel) = 0;
            pixel -= box.tl();
        }
        Splitting(labels(box), label, std::move(missing)).apply(next);
    }
}

}  // namespace vorund::rooms
