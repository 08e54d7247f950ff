#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <string>

#include "room_colours.h"
#include "score/score_comparison.h"
#include "vorund/rooms/room_fates.h"

namespace vorund::rooms {
namespace {

/// Blue, green, red. Told apart by the colour-blind too.
const cv::Vec3b kJoinedColour(60, 200, 245);
const cv::Vec3b kSplitColour(225, 145, 70);
const cv::Vec3b kMissedColour(40, 75, 225);
const cv::Vec3b kRightColour(215, 225, 205);  // In the legend; rooms differ in shade.
const cv::Vec3b kOutline(70, 70, 70);
const cv::Scalar kInk(30, 30, 30);

constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;
constexpr double kTextScale = 0.4;
constexpr int kLegendLine = 20;  // [pixels], as below
constexpr int kLegendSwatch = 12;
constexpr int kLegendWidth = 120;

enum class Fate { kRight, kMissed, kSplit, kJoined };

Fate fateOf(const RoomFate& room) {
    if (room.joined) return Fate::kJoined;
    if (!room.split.empty()) return Fate::kSplit;
    return room.isMissed() ? Fate::kMissed : Fate::kRight;
}

cv::Vec3b colourOf(Fate fate) {
    switch (fate) {
        case Fate::kMissed:
            return kMissedColour;
        case Fate::kSplit:
            return kSplitColour;
        case Fate::kJoined:
            return kJoinedColour;
        default:
            return kRightColour;
    }
}

/// Halfway to a light grey.
cv::Vec3b muted(const cv::Vec3b& colour) {
    constexpr int kLight = 230;
    cv::Vec3b mixed;
    for (int i = 0; i < 3; ++i) mixed[i] = static_cast<std::uint8_t>((colour[i] + kLight) / 2);
    return mixed;
}

/// Colours shine through, dark pixels of the map only darken them.
cv::Vec3b shaded(const cv::Vec3b& colour, int grey) {
    cv::Vec3b mixed;
    for (int i = 0; i < 3; ++i) {
        mixed[i] = static_cast<std::uint8_t>(colour[i] * (255 + 2 * grey) / (3 * 255));
    }
    return mixed;
}

/// Whether the pixel's right or lower neighbour is in another room.
bool isEdge(const cv::Mat& rooms, int row, int col) {
    const int room = rooms.at<int>(row, col);
    return (row + 1 < rooms.rows && rooms.at<int>(row + 1, col) != room) ||
           (col + 1 < rooms.cols && rooms.at<int>(row, col + 1) != room);
}

/// A true room by its number.
struct Painted {
    Fate fate = Fate::kRight;
    cv::Vec3b colour;
    std::string label;
};

class Picture {
 public:
    Picture(const Comparison& images, const std::vector<RoomFate>& fates, const cv::Mat& map)
        : images_(images), map_(map) {
        const RoomColours colours = chooseColours(images.rooms.numbers);
        const auto& numbers = images.overlaps.truth_numbers;
        for (std::size_t i = 0; i < fates.size(); ++i) {
            const Fate fate = fateOf(fates[i]);
            ++counts_[static_cast<std::size_t>(fate)];
            const bool is_right = fate == Fate::kRight;
            painted_[numbers[i]] = {fate, is_right ? muted(colours.at(numbers[i])) : colourOf(fate),
                                    std::to_string(fates[i].room)};
        }
    }

    cv::Mat draw() const {
        const cv::Size size = images_.rooms.numbers.size();
        const int width = std::max(size.width, kLegendWidth);
        const int lines = static_cast<int>(counts_.size()) + 1;
        cv::Mat picture(size.height + lines * kLegendLine, width, CV_8UC3, cv::Scalar::all(255));
        drawRooms(picture);
        drawLabels(picture);
        drawLegend(picture, size.height + kLegendLine / 2);
        return picture;
    }

 private:
    int greyAt(int row, int col) const {
        return map_.empty() ? 255 : static_cast<int>(map_.at<std::uint8_t>(row, col));
    }

    cv::Vec3b colourAt(int row, int col) const {
        const int grey = greyAt(row, col);
        const auto room = painted_.find(images_.rooms.numbers.at<int>(row, col));
        const bool is_room = room != painted_.end();
        if (isEdge(images_.rooms.numbers, row, col)) return kOutline;
        if (!is_room) return cv::Vec3b::all(static_cast<std::uint8_t>(255 - (255 - grey) / 3));
        if (room->second.fate != Fate::kRight && isEdge(images_.segments.numbers, row, col)) {
            return kOutline;
        }
        return shaded(room->second.colour, grey);
    }

    void drawRooms(cv::Mat& picture) const {
        for (int row = 0; row < images_.rooms.numbers.rows; ++row) {
            for (int col = 0; col < images_.rooms.numbers.cols; ++col) {
                picture.at<cv::Vec3b>(row, col) = colourAt(row, col);
            }
        }
    }

    void drawLabels(cv::Mat& picture) const {
        for (const auto& [number, room] : painted_) {
            if (room.fate == Fate::kRight) continue;
            cv::Mat inside;
            cv::copyMakeBorder(images_.rooms.numbers == number, inside, 1, 1, 1, 1,
                               cv::BORDER_CONSTANT, cv::Scalar(0));
            cv::Mat distances;
            cv::distanceTransform(inside, distances, cv::DIST_L2, cv::DIST_MASK_5);
            cv::Point roomiest;
            cv::minMaxLoc(distances, nullptr, nullptr, nullptr, &roomiest);
            const cv::Size text = cv::getTextSize(room.label, kFont, kTextScale, 1, nullptr);
            write(picture, room.label,
                  roomiest - cv::Point(1 + text.width / 2, 1 - text.height / 2));
        }
    }

    static void write(cv::Mat& picture, const std::string& text, const cv::Point& at) {
        cv::putText(picture, text, at, kFont, kTextScale, kInk, 1, cv::LINE_AA);
    }

    void drawLegend(cv::Mat& picture, int top) const {
        constexpr std::array<const char*, 4> kNames{"right", "missed", "split", "joined"};
        for (std::size_t i = 0; i < counts_.size(); ++i) {
            const int y = top + static_cast<int>(i) * kLegendLine;
            const cv::Rect swatch(8, y, kLegendSwatch, kLegendSwatch);
            picture(swatch).setTo(colourOf(static_cast<Fate>(i)));
            cv::rectangle(picture, swatch, kOutline);
            write(picture, kNames[i] + (": " + std::to_string(counts_[i])),
                  {8 + kLegendSwatch + 6, y + kLegendSwatch - 1});
        }
    }

    const Comparison& images_;
    cv::Mat map_;
    std::map<int, Painted> painted_;
    std::array<int, 4> counts_{};
};

}  // namespace

cv::Mat drawFates(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map,
                  std::optional<int> unreached) {
    const std::vector<RoomFate> fates = fatesOfRooms(predicted, truth, map, unreached);
    return Picture(compareRooms(predicted, truth, map, unreached), fates, map).draw();
}

}  // namespace vorund::rooms
