#include "scale_space/binary_edges.h"

#include <algorithm>
#include <cstring>

namespace vorund::internal {
namespace {

constexpr int kWord = 8;  // Pixels that are compared at once.

bool sameWord(const std::uint8_t* a, const std::uint8_t* b) {
    return std::memcmp(a, b, kWord) == 0;
}

cv::Mat toBytes(const cv::Mat& map) {
    cv::Mat bytes;
    map.convertTo(bytes, CV_8U);
    return bytes;
}

cv::Mat transposed(const cv::Mat& image) {
    cv::Mat result;
    cv::transpose(image, result);
    return result;
}

/// The corners of one row, in order; the row above the first one counts as equal to it.
template <class Visit>
void visitCorners(const cv::Mat& image, int row, const Visit& visit) {
    if (row == 0) return;
    const std::uint8_t* const below = image.ptr<std::uint8_t>(row);
    const std::uint8_t* const above = image.ptr<std::uint8_t>(row - 1);
    int difference = below[0] - above[0];
    for (int col = 1; col < image.cols;) {
        if (difference == 0 && col + kWord <= image.cols && sameWord(below + col, above + col)) {
            col += kWord;
            continue;
        }
        const int next = below[col] - above[col];
        if (next != difference) visit(Corner{row, col, static_cast<double>(next - difference)});
        difference = next;
        ++col;
    }
}

}  // namespace

RowSteps::RowSteps(const cv::Mat& image) {
    for (int row = 0; row < image.rows; ++row) {
        begin_.push_back(steps_.size());
        const std::uint8_t* const pixels = image.ptr<std::uint8_t>(row);
        for (int col = 1; col < image.cols;) {
            if (col + kWord <= image.cols && sameWord(pixels + col, pixels + col - 1)) {
                col += kWord;
                continue;
            }
            if (pixels[col] != pixels[col - 1]) steps_.push_back(col);
            ++col;
        }
    }
    begin_.push_back(steps_.size());
}

Corners::Corners(const cv::Mat& image) : tiles_across_((image.cols + kTile - 1) / kTile) {
    const int tile_rows = (image.rows + kTile - 1) / kTile;
    std::vector<std::vector<Corner>> of_tile(static_cast<std::size_t>(tiles_across_));
    for (int tile_row = 0; tile_row < tile_rows; ++tile_row) {
        const int end = std::min((tile_row + 1) * kTile, image.rows);
        for (int row = tile_row * kTile; row < end; ++row) {
            visitCorners(image, row, [&](const Corner& corner) {
                of_tile[static_cast<std::size_t>(corner.col / kTile)].push_back(corner);
            });
        }
        for (std::vector<Corner>& tile : of_tile) {
            tile_begin_.push_back(corners_.size());
            corners_.insert(corners_.end(), tile.begin(), tile.end());
            tile.clear();
        }
    }
    tile_begin_.push_back(corners_.size());
}

BinaryEdges::BinaryEdges(const cv::Mat& map)
    : pixels(toBytes(map)),
      along_rows(pixels),
      along_columns(transposed(pixels)),
      corners(pixels) {}

}  // namespace vorund::internal
