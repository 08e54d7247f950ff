#include "reference/watershed_segmenter.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <set>
#include <utility>
#include <vector>

namespace vorund::reference {
namespace {

struct Item {
    double value;
    int age;
    cv::Point pixel;
    cv::Point seed;
};

/// "Greater" in (value, age): two seeds of the same value are neither greater nor smaller.
bool greater(const Item& a, const Item& b) {
    return a.value > b.value || (a.value == b.value && a.age > b.age);
}

/// The smallest item first. Written out, because the order among equal items is that of this heap.
class Heap {
 public:
    bool empty() const { return items_.empty(); }

    void push(const Item& item) {
        items_.push_back(item);
        std::size_t child = items_.size() - 1;
        while (child > 0 && greater(items_[(child - 1) / 2], items_[child])) {
            std::swap(items_[(child - 1) / 2], items_[child]);
            child = (child - 1) / 2;
        }
    }

    Item pop() {
        const Item smallest = items_.front();
        items_.front() = items_.back();
        items_.pop_back();
        std::size_t parent = 0;
        while (2 * parent + 1 < items_.size()) {
            std::size_t child = 2 * parent + 1;
            if (child + 1 < items_.size() && greater(items_[child], items_[child + 1])) ++child;
            if (!greater(items_[parent], items_[child])) break;
            std::swap(items_[parent], items_[child]);
            parent = child;
        }
        return smallest;
    }

 private:
    std::vector<Item> items_;
};

std::vector<cv::Point> neighbourOffsets(int connectivity) {
    std::vector<cv::Point> offsets;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            const int steps = std::abs(dx) + std::abs(dy);
            if (steps == 1 || (steps == 2 && connectivity == 8)) offsets.emplace_back(dx, dy);
        }
    }
    return offsets;
}

class Flood {
 public:
    Flood(const cv::Mat& image, const cv::Mat& markers, int connectivity, bool lines)
        : output_(markers.clone()),
          offsets_(neighbourOffsets(connectivity)),
          lines_(lines),
          hand_on_once_(lines && connectivity == 8) {
        image.convertTo(cost_, CV_64F);
        open_ = cv::Mat_<uchar>::zeros(image.size());
        for (int row = 1; row + 1 < image.rows; ++row) {
            for (int col = 1; col + 1 < image.cols; ++col) open_(row, col) = 1;
        }
    }

    cv::Mat run() {
        for (int row = 0; row < output_.rows; ++row) {
            for (int col = 0; col < output_.cols; ++col) {
                const cv::Point seed(col, row);
                if (output_(seed) > 0) heap_.push({cost_(seed), 0, seed, seed});
            }
        }
        while (!heap_.empty()) {
            const Item item = heap_.pop();
            if (!lines_ || settle(item)) queueNeighbours(item);
        }
        return output_;
    }

 private:
    bool isOpen(const cv::Point& pixel) const {
        // Only pixels inside the frame are open, so a neighbour of a frame pixel that would lie in
        // the next row (a flattened index runs over the edge) is a frame pixel, which is closed.
        return cv::Rect(cv::Point(0, 0), open_.size()).contains(pixel) && open_(pixel) == 1;
    }

    bool touchesAnotherLabel(const Item& item) const {
        return std::any_of(offsets_.begin(), offsets_.end(), [&](const cv::Point& offset) {
            const cv::Point neighbour = item.pixel + offset;
            return isOpen(neighbour) && output_(neighbour) > 0 &&
                   output_(neighbour) != output_(item.seed);
        });
    }

    /// Labels the pixel or makes it part of a line. False if the item is done with.
    bool settle(const Item& item) {
        if (output_(item.pixel) > 0 && item.pixel != item.seed) return false;
        if (open_(item.pixel) == 1) {
            if (touchesAnotherLabel(item)) {
                open_(item.pixel) = 0;
            } else {
                output_(item.pixel) = output_(item.seed);
                return true;
            }
        }
        if (!hand_on_once_) return true;
        const std::pair<int, int> place{item.pixel.y, item.pixel.x};
        return handed_on_.insert({place, output_(item.seed)}).second;
    }

    void queueNeighbours(const Item& item) {
        for (const cv::Point& offset : offsets_) {
            const cv::Point neighbour = item.pixel + offset;
            if (!isOpen(neighbour) || output_(neighbour) > 0) continue;
            if (!lines_) output_(neighbour) = output_(item.pixel);
            heap_.push({std::max(cost_(neighbour), item.value), age_, neighbour, item.seed});
            ++age_;
        }
    }

    cv::Mat_<double> cost_;
    cv::Mat_<int> output_;
    cv::Mat_<uchar> open_;
    std::vector<cv::Point> offsets_;
    bool lines_;
    bool hand_on_once_;
    std::set<std::pair<std::pair<int, int>, int>> handed_on_;
    Heap heap_;
    int age_ = 1;
};

/// Gives the 4-connected region of `floor` around `start` the label.
void fillRegion(const cv::Mat_<uchar>& floor, cv::Mat_<int>& regions, const cv::Point& start,
                int label) {
    std::vector<cv::Point> to_visit{start};
    regions(start) = label;
    while (!to_visit.empty()) {
        const cv::Point pixel = to_visit.back();
        to_visit.pop_back();
        for (const cv::Point& offset : neighbourOffsets(4)) {
            const cv::Point next = pixel + offset;
            if (!cv::Rect(cv::Point(0, 0), floor.size()).contains(next)) continue;
            if (floor(next) == 0 || regions(next) != 0) continue;
            regions(next) = label;
            to_visit.push_back(next);
        }
    }
}

}  // namespace

Seeds gaussianSeeds(const cv::Mat& image, const cv::Mat& mask, double sigma, double threshold) {
    cv::Mat_<float> blurred;
    cv::GaussianBlur(image.clone(), blurred, cv::Size(0, 0), sigma, 0.0, cv::BORDER_REPLICATE);
    const cv::Mat_<uchar> floor(
        cv::Mat(blurred <= static_cast<double>(static_cast<float>(threshold))));

    cv::Mat_<int> regions(image.size(), 0);
    Seeds seeds{cv::Mat::zeros(image.size(), CV_8UC1), 0};
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            if (floor(row, col) != 0 && regions(row, col) == 0) {
                fillRegion(floor, regions, cv::Point(col, row), ++seeds.count);
            }
            const bool background = mask.at<uchar>(row, col) != 0;
            const int label = background ? 255 : std::min(regions(row, col), 255);
            seeds.labels.at<uchar>(row, col) = static_cast<uchar>(label);
        }
    }
    return seeds;
}

cv::Mat watershed(const cv::Mat& image, const cv::Mat& markers, int connectivity, bool lines) {
    return Flood(image, markers, connectivity, lines).run();
}

cv::Mat watershedSegment(const cv::Mat& image, const cv::Mat& markers, int connectivity) {
    const cv::Mat_<int> flooded = watershed(image, markers, connectivity, true);
    cv::Mat_<uchar> result(flooded.size());
    for (int row = 0; row < flooded.rows; ++row) {
        for (int col = 0; col < flooded.cols; ++col) {
            const int label = flooded(row, col);
            const int swapped = label == 0 ? 255 : label == 255 ? 0 : label;
            result(row, col) = static_cast<uchar>(swapped);
        }
    }
    return result;
}

}  // namespace vorund::reference
