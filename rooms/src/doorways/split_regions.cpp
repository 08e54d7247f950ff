#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <utility>

#include "doorways/find_doorways.h"
#include "flow/boxes.h"
#include "flow/separators.h"
#include "internal/runs.h"

namespace vorund::rooms {
namespace {

/// Pieces below 1 m^2 are the niche of a wall beside its door. [pixels]
constexpr int kLeastPiece = 400;

const std::array<cv::Point, 4> kSteps{{{0, -1}, {-1, 0}, {1, 0}, {0, 1}}};

bool isRegion(int label) {
    return label != 0 && label != kLine;
}

/// Tells whether what is left of a region has pieces that are large enough on both sides of a
/// doorway. Mostly it has not: the doorway lies where regions meet anyway, and they overlap by a few
/// pixels.
class Sides {
 public:
    /// @param labels  Without the pixels of doorways.
    explicit Sides(const cv::Mat& labels)
        : labels_(labels), seen_(cv::Mat::zeros(labels.size(), CV_8UC1)) {}

    /// @param line  The doorway's pixels in the region.
    bool areLarge(const FoundDoorway& doorway, int label, const std::vector<cv::Point>& line) {
        return isLarge(doorway, label, line, -1.0) && isLarge(doorway, label, line, 1.0);
    }

 private:
    bool isLarge(const FoundDoorway& doorway, int label, const std::vector<cv::Point>& line,
                 double side) {
        const cv::Point along = doorway.second_jamb - doorway.first_jamb;
        bool found = false;
        for (const cv::Point& pixel : line) {
            for (const cv::Point& step : kSteps) {
                const cv::Point beside = pixel + step;
                if (along.cross(beside - doorway.first_jamb) * side <= 0.0) continue;
                found = found || isLarge(beside, label);
            }
        }
        for (const cv::Point& pixel : reached_) seen_.at<std::uint8_t>(pixel) = 0;
        reached_.clear();
        return found;
    }

    /// Whether a piece has `kLeastPiece` pixels, unless it was looked at before.
    bool isLarge(const cv::Point& start, int label) {
        const std::size_t before = reached_.size();
        visit(start, label);
        for (std::size_t i = before; i < reached_.size(); ++i) {
            if (reached_.size() - before >= kLeastPiece) return true;
            const cv::Point pixel = reached_[i];
            for (const cv::Point& step : kSteps) visit(pixel + step, label);
        }
        return false;
    }

    void visit(const cv::Point& pixel, int label) {
        if (!cv::Rect({0, 0}, labels_.size()).contains(pixel)) return;
        std::uint8_t& seen = seen_.at<std::uint8_t>(pixel);
        if (seen != 0 || labels_.at<std::int32_t>(pixel) != label) return;
        seen = 1;
        reached_.push_back(pixel);
    }

    const cv::Mat& labels_;
    cv::Mat seen_;
    std::vector<cv::Point> reached_;
};

/// One region, from which the pixels of doorways were taken (set to 0).
class Splitting {
 public:
    /// @param part     Of the map, all of the region.
    /// @param missing  The doorways' pixels that were the region's, in `part`.
    Splitting(cv::Mat part, int label, std::vector<cv::Point> missing)
        : part_(std::move(part)), label_(label), missing_(std::move(missing)) {}

    /// @param next  The next free label; counted on.
    void apply(int& next) {
        const cv::Mat own = part_ == label_;
        const int count = cv::connectedComponents(own, pieces_, 4, CV_32S);
        nameKeptPieces(areas(count), next);
        forEachRunOfPieces([&](int row, int begin, int end, int piece) {
            const int name = names_[static_cast<std::size_t>(piece)];
            std::int32_t* const label = part_.ptr<std::int32_t>(row);
            std::fill(label + begin, label + end, name);
            for (int col = begin; name == 0 && col < end; ++col) missing_.emplace_back(col, row);
        });
        fillMissing();
    }

 private:
    template <class Visit>
    void forEachRunOfPieces(const Visit& visit) const {
        for (int row = 0; row < pieces_.rows; ++row) {
            internal::forEachRun(pieces_.ptr<std::int32_t>(row), pieces_.cols,
                                 [&](int begin, int end, std::int32_t piece) {
                                     if (piece != 0) visit(row, begin, end, piece);
                                 });
        }
    }

    std::vector<int> areas(int count) const {
        std::vector<int> pixels(static_cast<std::size_t>(count), 0);
        forEachRunOfPieces([&](int, int begin, int end, int piece) {
            pixels[static_cast<std::size_t>(piece)] += end - begin;
        });
        return pixels;
    }

    /// @param areas  By piece, 0 for what is none.
    void nameKeptPieces(const std::vector<int>& areas, int& next) {
        names_.assign(areas.size(), 0);
        if (areas.size() < 2) return;
        const auto largest = std::max_element(areas.begin(), areas.end()) - areas.begin();
        for (std::size_t piece = 1; piece < areas.size(); ++piece) {
            if (piece == static_cast<std::size_t>(largest)) {
                names_[piece] = label_;
            } else if (areas[piece] >= kLeastPiece) {
                names_[piece] = next++;
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
        for (const cv::Point& step : kSteps) {
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

/// What a doorway takes from the regions it crosses.
struct Crossing {
    const FoundDoorway* doorway;
    std::map<int, std::vector<cv::Point>> pixels;  ///< By region.
};

/// Sets the doorways' pixels to 0.
std::vector<Crossing> takeOutDoorways(cv::Mat& labels, const cv::Mat& floor,
                                      const std::vector<FoundDoorway>& doorways) {
    std::vector<Crossing> crossings;
    for (const FoundDoorway& doorway : doorways) {
        Crossing crossing{&doorway, {}};
        for (const cv::Point& pixel : doorway.pixels(floor)) {
            int& label = labels.at<std::int32_t>(pixel);
            if (!isRegion(label)) continue;
            crossing.pixels[label].push_back(pixel);
            label = 0;
        }
        crossings.push_back(std::move(crossing));
    }
    return crossings;
}

}  // namespace

void splitAtDoorways(cv::Mat& labels, const cv::Mat& floor,
                     const std::vector<FoundDoorway>& doorways) {
    const std::vector<Crossing> crossings = takeOutDoorways(labels, floor, doorways);
    Sides sides(labels);
    std::map<int, std::vector<cv::Point>> missing;
    std::set<int> parted;
    for (const Crossing& crossing : crossings) {
        for (const auto& [label, pixels] : crossing.pixels) {
            std::vector<cv::Point>& all = missing[label];
            all.insert(all.end(), pixels.begin(), pixels.end());
            if (parted.count(label) == 0 && sides.areLarge(*crossing.doorway, label, pixels)) {
                parted.insert(label);
            }
        }
    }
    for (const auto& [label, pixels] : missing) {
        if (parted.count(label) > 0) continue;
        for (const cv::Point& pixel : pixels) labels.at<std::int32_t>(pixel) = label;
    }
    if (parted.empty()) return;
    const std::vector<cv::Rect> boxes = boxesOf(labels);
    int next = std::max(static_cast<int>(boxes.size()), kLine + 1);
    for (const int label : parted) {
        std::vector<cv::Point>& pixels = missing[label];
        cv::Rect box = boxes[static_cast<std::size_t>(label)];
        for (const cv::Point& pixel : pixels) box |= cv::Rect(pixel, cv::Size(1, 1));
        for (cv::Point& pixel : pixels) pixel -= box.tl();
        Splitting(labels(box), label, std::move(pixels)).apply(next);
    }
}

}  // namespace vorund::rooms
