#include "vorund/rooms/room_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "room_colours.h"

namespace vorund::rooms {
namespace {

constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;
constexpr int kHaloWidth = 3;          // What it adds to a stroke. [pixels]
constexpr double kSmallestText = 0.3;  // Digits seven pixels high.
constexpr double kLargestText = 1.5;
constexpr double kTextStep = 0.05;
/// Larger text has thicker strokes: one more pixel from each of these scales on.
constexpr std::array<double, 2> kThickerFrom{0.7, 1.3};
const cv::Scalar kInk(60, 40, 40);
const cv::Scalar kHalo(255, 255, 255);

constexpr std::uint8_t kUnreachedShade = 225;
constexpr std::uint8_t kHatchShade = 165;
constexpr int kHatchPeriod = 8;  // [pixels]

void require(bool condition, const char* message) {
    if (!condition) throw std::invalid_argument(message);
}

cv::Vec3b hatch(int row, int col) {
    const bool is_line = (row + col) % kHatchPeriod < 2;
    return cv::Vec3b::all(is_line ? kHatchShade : kUnreachedShade);
}

/// A light colour becomes darker where the map is.
cv::Vec3b shaded(const cv::Vec3b& colour, int shade) {
    const auto part = [shade](int channel) {
        return static_cast<std::uint8_t>((channel * shade + 127) / 255);
    };
    return {part(colour[0]), part(colour[1]), part(colour[2])};
}

/// @param labels  Of the rooms and of the floor that none reached.
/// @param rooms   Of the rooms alone.
cv::Mat paintRooms(const cv::Mat& picture, const cv::Mat& labels, const cv::Mat& rooms) {
    const RoomColours colours = chooseColours(rooms);
    cv::Mat painted;
    cv::cvtColor(picture, painted, cv::COLOR_GRAY2BGR);
    for (int row = 0; row < rooms.rows; ++row) {
        for (int col = 0; col < rooms.cols; ++col) {
            if (labels.at<int>(row, col) == 0) continue;
            const int room = rooms.at<int>(row, col);
            const cv::Vec3b colour = room == 0 ? hatch(row, col) : colours.at(room);
            painted.at<cv::Vec3b>(row, col) = shaded(colour, picture.at<std::uint8_t>(row, col));
        }
    }
    return painted;
}

/// The smallest rectangle around each room.
std::map<int, cv::Rect> roomBoxes(const cv::Mat& rooms) {
    std::map<int, cv::Rect> boxes;
    for (int row = 0; row < rooms.rows; ++row) {
        const int* labels = rooms.ptr<int>(row);
        for (int col = 0; col < rooms.cols;) {
            const int first = col;
            while (col < rooms.cols && labels[col] == labels[first]) ++col;
            if (labels[first] != 0) boxes[labels[first]] |= cv::Rect(first, row, col - first, 1);
        }
    }
    return boxes;
}

struct Spot {
    cv::Point centre;
    double radius;  ///< Distance to the nearest pixel outside the room. [pixels]
};

/// Of some points the nearest to the middle of them all, then the first.
cv::Point mostCentral(const std::vector<cv::Point>& points) {
    long long sum_x = 0;
    long long sum_y = 0;
    for (const cv::Point& point : points) {
        sum_x += point.x;
        sum_y += point.y;
    }
    const auto count = static_cast<long long>(points.size());
    const long long middle_x = sum_x / count;
    const long long middle_y = sum_y / count;
    const auto distance = [=](const cv::Point& point) {
        const long long x = point.x - middle_x;
        const long long y = point.y - middle_y;
        return x * x + y * y;
    };
    return *std::min_element(
        points.begin(), points.end(),
        [&](const cv::Point& a, const cv::Point& b) { return distance(a) < distance(b); });
}

/// Where a room has most space around it. Much of a long room's middle is about equally good: of
/// all that is, the most central point.
Spot roomiestSpot(const cv::Mat& rooms, int room, const cv::Rect& box) {
    constexpr double kAboutAsGood = 0.95;
    cv::Mat inside;
    cv::copyMakeBorder(rooms(box) == room, inside, 1, 1, 1, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    cv::Mat distances;
    cv::distanceTransform(inside, distances, cv::DIST_L2, cv::DIST_MASK_5);
    double most = 0.0;
    cv::minMaxLoc(distances, nullptr, &most);
    std::vector<cv::Point> good;
    cv::findNonZero(distances >= kAboutAsGood * most, good);
    const cv::Point best = mostCentral(good);
    const double radius = static_cast<double>(distances.at<float>(best));
    return {best + box.tl() - cv::Point(1, 1), radius};
}

struct TextSize {
    double scale;
    int thickness;
    cv::Size size;  ///< Of the ink. [pixels]
};

TextSize textSize(const std::string& text, int steps) {
    const double scale = steps * kTextStep;
    int thickness = 1;
    for (const double from : kThickerFrom) thickness += scale >= from ? 1 : 0;
    return {scale, thickness, cv::getTextSize(text, kFont, scale, thickness, nullptr)};
}

/// Whether the text with its halo lies within the circle.
bool fits(const TextSize& text, double radius) {
    constexpr double kMargin = 2.0;  // Halo and smoothed edges.
    const double width = text.size.width / 2.0 + kMargin;
    const double height = text.size.height / 2.0 + kMargin;
    return width * width + height * height < radius * radius;
}

void drawNumber(cv::Mat& painted, int room, const Spot& spot) {
    const std::string text = std::to_string(room);
    const int smallest = static_cast<int>(std::lround(kSmallestText / kTextStep));
    int steps = static_cast<int>(std::lround(kLargestText / kTextStep));
    while (steps >= smallest && !fits(textSize(text, steps), spot.radius)) --steps;
    if (steps < smallest) return;
    const TextSize chosen = textSize(text, steps);
    const cv::Point origin(spot.centre.x - chosen.size.width / 2,
                           spot.centre.y + chosen.size.height / 2);
    cv::putText(painted, text, origin, kFont, chosen.scale, kHalo, chosen.thickness + kHaloWidth,
                cv::LINE_AA);
    cv::putText(painted, text, origin, kFont, chosen.scale, kInk, chosen.thickness, cv::LINE_AA);
}

}  // namespace

cv::Mat drawRooms(const cv::Mat& picture, const cv::Mat& labels, int unreached) {
    require(!picture.empty() && picture.type() == CV_8UC1,
            "drawRooms: The picture must be CV_8UC1 and not empty.");
    require(labels.type() == CV_8UC1 || labels.type() == CV_32SC1,
            "drawRooms: The labels must be CV_8UC1 or CV_32SC1.");
    require(labels.size() == picture.size(),
            "drawRooms: The labels must be of the picture's size.");
    cv::Mat all;
    labels.convertTo(all, CV_32S);
    cv::Mat rooms = all.clone();
    rooms.setTo(0, all == unreached);
    cv::Mat painted = paintRooms(picture, all, rooms);
    for (const auto& [room, box] : roomBoxes(rooms)) {
        drawNumber(painted, room, roomiestSpot(rooms, room, box));
    }
    return painted;
}

}  // namespace vorund::rooms
