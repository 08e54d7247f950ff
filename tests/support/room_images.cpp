#include "support/room_images.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace vorund::test {
namespace {

constexpr std::uint8_t kLine = 255;
constexpr int kMostRooms = 254;

std::vector<std::uint8_t> shuffledLabels(RandomImages& random) {
    std::vector<std::uint8_t> labels(kMostRooms);
    std::iota(labels.begin(), labels.end(), std::uint8_t{1});
    for (int i = kMostRooms - 1; i > 0; --i) {
        std::swap(labels[static_cast<std::size_t>(i)],
                  labels[static_cast<std::size_t>(random.below(i + 1))]);
    }
    return labels;
}

/// Every pixel belongs to the nearest of the random centres.
cv::Mat_<std::uint8_t> nearestCentres(RandomImages& random, const cv::Size& size, int count) {
    const std::vector<std::uint8_t> labels = shuffledLabels(random);
    std::vector<cv::Point> centres;
    for (int i = 0; i < count; ++i) {
        const int row = random.below(size.height);
        centres.emplace_back(random.below(size.width), row);
    }
    cv::Mat_<std::uint8_t> image(size);
    for (int row = 0; row < size.height; ++row) {
        for (int col = 0; col < size.width; ++col) {
            const cv::Point pixel(col, row);
            const auto nearest = std::min_element(
                centres.begin(), centres.end(), [&pixel](const cv::Point& a, const cv::Point& b) {
                    return (a - pixel).dot(a - pixel) < (b - pixel).dot(b - pixel);
                });
            image(pixel) = labels[static_cast<std::size_t>(nearest - centres.begin())];
        }
    }
    return image;
}

void buildWalls(RandomImages& random, cv::Mat_<std::uint8_t>& image) {
    const int count = random.below(5);
    for (int i = 0; i < count; ++i) {
        const cv::Point corner(random.below(image.cols), random.below(image.rows));
        const int width = 1 + random.below(std::max(1, (image.cols - corner.x) / 3));
        const int height = 1 + random.below(std::max(1, (image.rows - corner.y) / 3));
        image(cv::Rect(corner, cv::Size(width, height))) = 0;
    }
}

bool touchesGreaterLabel(const cv::Mat_<std::uint8_t>& image, int row, int col) {
    const cv::Rect whole(0, 0, image.cols, image.rows);
    const cv::Mat_<std::uint8_t> around = image(cv::Rect(col - 1, row - 1, 3, 3) & whole);
    return std::any_of(around.begin(), around.end(),
                       [&](std::uint8_t label) { return label > image(row, col); });
}

}  // namespace

cv::Mat roomImage(RandomImages& random, const cv::Size& size, int count) {
    cv::Mat_<std::uint8_t> rooms = nearestCentres(random, size, count);
    buildWalls(random, rooms);
    cv::Mat_<std::uint8_t> image = rooms.clone();
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col) {
            if (rooms(row, col) != 0 && touchesGreaterLabel(rooms, row, col)) {
                image(row, col) = kLine;
            }
        }
    }
    // Here and there the line is thicker.
    const int count_of_blots = random.below(4);
    for (int i = 0; i < count_of_blots; ++i) {
        image(random.below(image.rows), random.below(image.cols)) = kLine;
    }
    return image;
}

}  // namespace vorund::test
