#include "blocks/division.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

namespace vorund::rooms {
namespace {

/// Smaller ones are not cut any more, nor is less seen around them: where a view ends behind a
/// door, a seed reaches through it, and that must not come near the core. [pixels] With both,
/// blocks of 40,000 pixels can be had.
constexpr int kSmallestSide = 50;
constexpr int kLeastContext = 50;

/// Floor less wide on either side parts compartments, which number about as many as the core finds
/// seeds at the scale at which doors close. [pixels]
constexpr int kHalfDoorway = 10;

/// Of 254 that the core tells apart: regions come and go over the scales, and a block that turns
/// out to have too many has been worked on in vain.
constexpr int kMostCompartments = 130;

/// Floor pixels of every column (`along` 0) or row (`along` 1) of a part of the map.
cv::Mat floorAcross(const cv::Mat& part, int along) {
    cv::Mat sums;
    cv::reduce(part, sums, along, cv::REDUCE_SUM, CV_32S);
    return sums;
}

/// The position of the cut that meets least floor; the one nearest the middle among equals.
int bestCut(const cv::Mat& floor_of_line) {
    const auto* const floor = floor_of_line.ptr<std::int32_t>();
    const int length = static_cast<int>(floor_of_line.total());
    int best = length / 2;
    for (int offset = 1; offset <= length / 6; ++offset) {
        for (const int position : {length / 2 - offset, length / 2 + offset}) {
            if (floor[position] < floor[best]) best = position;
        }
    }
    return best;
}

}  // namespace

Division::Division(const cv::Mat& floor, int most_pixels)
    : floor_(floor), most_pixels_(most_pixels) {}

std::vector<Block> Division::blocks() const {
    std::vector<Block> blocks;
    divide(cv::Rect({0, 0}, floor_.size()), blocks);
    return blocks;
}

std::vector<Block> Division::halves(const Block& block) const {
    std::vector<Block> halves;
    for (const cv::Rect& half : cut(block.core)) halves.push_back(around(half));
    return halves;
}

void Division::divide(const cv::Rect& core, std::vector<Block>& blocks) const {
    cv::Rect with_floor = cv::boundingRect(floor_(core));
    if (with_floor.empty()) return;
    with_floor += core.tl();
    const Block block = around(with_floor);
    const std::vector<cv::Rect> halves = fits(block) ? std::vector<cv::Rect>() : cut(with_floor);
    if (halves.empty()) blocks.push_back(block);
    for (const cv::Rect& half : halves) divide(half, blocks);
}

std::vector<cv::Rect> Division::cut(const cv::Rect& core) const {
    const bool upright = core.width >= core.height;
    if (std::max(core.width, core.height) < 2 * kSmallestSide) return {};
    cv::Rect first = core;
    (upright ? first.width : first.height) = bestCut(floorAcross(floor_(core), upright ? 0 : 1));
    const cv::Point step(upright ? first.width : 0, upright ? 0 : first.height);
    return {first, {core.tl() + step, core.br()}};
}

Block Division::around(const cv::Rect& core) const {
    // Of a small core, less is seen: else blocks would be all surroundings and could not shrink.
    const int context = std::clamp(std::max(core.width, core.height) / 2, kLeastContext, kContext);
    const cv::Rect view(core.tl() - cv::Point(context, context),
                        core.size() + cv::Size(2 * context, 2 * context));
    return {core, view & cv::Rect({0, 0}, floor_.size())};
}

bool Division::fits(const Block& block) const {
    return std::int64_t{block.view.width} * block.view.height <= most_pixels_ &&
           countCompartments(block.view) <= kMostCompartments;
}

int Division::countCompartments(const cv::Rect& view) const {
    const cv::Mat doorway(2 * kHalfDoorway + 1, 2 * kHalfDoorway + 1, CV_8UC1, cv::Scalar(1));
    cv::Mat wide;
    cv::erode(floor_(view), wide, doorway, cv::Point(-1, -1), 1,
              cv::BORDER_CONSTANT | cv::BORDER_ISOLATED);
    cv::Mat compartments;
    return cv::connectedComponents(wide, compartments, 4, CV_32S) - 1;
}

}  // namespace vorund::rooms
