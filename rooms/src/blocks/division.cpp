#include "blocks/division.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

namespace vorund::rooms {
namespace {

/// Smaller ones are not cut any more, nor is less seen around them. [pixels]
constexpr int kSmallestSide = 50;
constexpr int kLeastContext = 50;

/// The position of the cut that meets least floor; the one nearest the middle among equals.
/// @param along  0: floor pixels of every column, 1: of every row.
int bestCut(const cv::Mat& floor, int along) {
    cv::Mat sums;
    cv::reduce(floor, sums, along, cv::REDUCE_SUM, CV_32S);
    const auto* const floor_at = sums.ptr<std::int32_t>();
    const int length = static_cast<int>(sums.total());
    int best = length / 2;
    for (int offset = 1; offset <= length / 6; ++offset) {
        for (const int position : {length / 2 - offset, length / 2 + offset}) {
            if (floor_at[position] < floor_at[best]) best = position;
        }
    }
    return best;
}

class Division {
 public:
    Division(const cv::Mat& floor, int most_pixels) : floor_(floor), most_pixels_(most_pixels) {
        divide(cv::Rect({0, 0}, floor.size()));
    }

    std::vector<Block> blocks() const { return blocks_; }

 private:
    void divide(const cv::Rect& core) {
        cv::Rect with_floor = cv::boundingRect(floor_(core));
        if (with_floor.empty()) return;
        with_floor += core.tl();
        const Block block = around(with_floor);
        const bool is_small = std::max(with_floor.width, with_floor.height) < 2 * kSmallestSide;
        if (is_small || std::int64_t{block.view.width} * block.view.height <= most_pixels_) {
            blocks_.push_back(block);
            return;
        }
        const bool upright = with_floor.width >= with_floor.height;
        cv::Rect first = with_floor;
        (upright ? first.width : first.height) = bestCut(floor_(with_floor), upright ? 0 : 1);
        const cv::Point step(upright ? first.width : 0, upright ? 0 : first.height);
        divide(first);
        divide({with_floor.tl() + step, with_floor.br()});
    }

    Block around(const cv::Rect& core) const {
        // Of a small core, less is seen: else blocks would be all surroundings and could not
        // shrink.
        const int context =
            std::clamp(std::max(core.width, core.height) / 2, kLeastContext, kContext);
        const cv::Rect view(core.tl() - cv::Point(context, context),
                            core.size() + cv::Size(2 * context, 2 * context));
        return {core, view & cv::Rect({0, 0}, floor_.size())};
    }

    const cv::Mat& floor_;
    int most_pixels_;
    std::vector<Block> blocks_;
};

}  // namespace

std::vector<Block> divide(const cv::Mat& floor, int most_pixels) {
    return Division(floor, most_pixels).blocks();
}

}  // namespace vorund::rooms
