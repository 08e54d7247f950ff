#include "reference/open_passages.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace vorund::reference {
namespace {

constexpr double kResolution = 0.05;
constexpr double kMargin = 1e-9;

/// What widths are measured on.
struct Space {
    cv::Mat distances;                         ///< To walls and doorways, squared. [pixels^2]
    std::map<std::pair<int, int>, int> doors;  ///< By row and column of their pixels, and of those
                                               ///< beside: half a door's width, squared.
};

/// How wide things are at present.
struct Widths {
    std::map<int, int> of_room;    ///< Squared clearances. [pixels^2]
    std::map<int, int> of_border;  ///< By id.
    std::map<int, int> of_doors;   ///< Of the widest doorway on a border, by id; not of all ids.

    int widest(int id) const {
        const auto door = of_doors.find(id);
        return std::max(of_border.at(id), door == of_doors.end() ? 0 : door->second);
    }
};

Space spaceOf(const MergeState& rooms, const cv::Mat& floor,
              const std::vector<PlainDoorway>& doorways) {
    Space space;
    cv::Mat open = (rooms.segments != 0) & (floor != 0);
    for (const PlainDoorway& doorway : doorways) {
        for (const cv::Point& pixel : floorIn(doorway, floor)) {
            open.at<std::uint8_t>(pixel) = 0;
            for (const cv::Point& step : {cv::Point(0, 0), {0, -1}, {-1, 0}, {1, 0}, {0, 1}}) {
                int& door = space.doors[{pixel.y + step.y, pixel.x + step.x}];
                door = std::max(door, doorway.width * doorway.width / 4);
            }
        }
    }
    space.distances = squaredDistances(open);
    return space;
}

Widths widthsOf(const MergeState& rooms, const Space& space) {
    const cv::Mat& distances = space.distances;
    Widths widths;
    for (int row = 0; row < distances.rows; ++row) {
        for (int col = 0; col < distances.cols; ++col) {
            const int distance = distances.at<int>(row, col);
            int& room = widths.of_room[rooms.segments.at<int>(row, col)];
            room = std::max(room, distance);
            int& border = widths.of_border[rooms.borders.at<int>(row, col)];
            border = std::max(border, distance);
        }
    }
    for (const auto& [place, width] : space.doors) {
        const cv::Point pixel(place.second, place.first);
        if (!cv::Rect({0, 0}, rooms.borders.size()).contains(pixel)) continue;
        int& door = widths.of_doors[rooms.borders.at<int>(pixel)];
        door = std::max(door, width);
    }
    return widths;
}

double metres(int squared_clearance) {
    return 2.0 * std::sqrt(static_cast<double>(squared_clearance)) * kResolution;
}

long pixelsOf(const MergeState& rooms, int label) {
    return std::lround(rooms.graph.nodes.at(label).area / (kResolution * kResolution));
}

void replaceAll(cv::Mat& image, int former, int now) {
    for (int& value : cv::Mat_<int>(image)) {
        if (value == former) value = now;
    }
}

void join(MergeState& rooms, int a, int b) {
    const long difference = pixelsOf(rooms, a) - pixelsOf(rooms, b);
    const bool a_is_kept = difference > 0 || (difference == 0 && a < b);
    const int kept = a_is_kept ? a : b;
    const int gone = a_is_kept ? b : a;
    const int line = rooms.border_ids.at(Edge(a, b));
    for (int row = 0; row < rooms.borders.rows; ++row) {
        for (int col = 0; col < rooms.borders.cols; ++col) {
            if (rooms.borders.at<int>(row, col) == line) rooms.segments.at<int>(row, col) = kept;
        }
    }
    replaceAll(rooms.segments, gone, kept);
    replaceAll(rooms.borders, line, 0);
    rooms.border_ids.erase(Edge(a, b));
    for (const int other : rooms.graph.adjacency.at(gone)) {
        if (other == kept) continue;
        const int id = rooms.border_ids.at(Edge(gone, other));
        rooms.border_ids.erase(Edge(gone, other));
        const auto [known, is_new] = rooms.border_ids.emplace(Edge(kept, other), id);
        const int smaller = std::min(known->second, id);
        replaceAll(rooms.borders, known->second, smaller);
        replaceAll(rooms.borders, id, smaller);
        known->second = smaller;
    }
    rooms.graph = mergedNodes(rooms.graph, kept, gone);
}

using IsSmall = std::function<bool(double area, double width)>;

void absorb(MergeState& rooms, const Space& space, const IsSmall& is_small) {
    while (true) {
        const Widths widths = widthsOf(rooms, space);
        std::optional<int> smallest;
        for (const auto& [label, data] : rooms.graph.nodes) {
            const double area = static_cast<double>(pixelsOf(rooms, label)) / 400.0;
            if (rooms.graph.adjacency.at(label).empty()) continue;
            if (!is_small(area, metres(widths.of_room.at(label)))) continue;
            if (!smallest || pixelsOf(rooms, label) < pixelsOf(rooms, *smallest)) smallest = label;
        }
        if (!smallest) return;
        int widest = -1;
        std::optional<int> neighbour;
        for (const int other : rooms.graph.adjacency.at(*smallest)) {
            const int width = widths.widest(rooms.border_ids.at(Edge(*smallest, other)));
            if (width <= widest) continue;
            widest = width;
            neighbour = other;
        }
        join(rooms, *smallest, *neighbour);
    }
}

bool isOpen(int passage, int room, const rooms::RoomsConfig& config) {
    const bool is_narrow = metres(passage) < config.narrow_passage - kMargin;
    const double ratio = is_narrow ? config.narrow_ratio : config.open_ratio;
    return metres(passage) > ratio * metres(room) + kMargin;
}

void joinOpen(MergeState& rooms, const Space& space, const rooms::RoomsConfig& config) {
    while (true) {
        const Widths widths = widthsOf(rooms, space);
        std::optional<Edge> most_open;
        std::int64_t best_passage = 0;
        std::int64_t best_room = 1;
        for (const auto& [edge, id] : rooms.border_ids) {
            const int passage = widths.of_border.at(id);
            const int room =
                std::max(widths.of_room.at(edge.first), widths.of_room.at(edge.second));
            if (!isOpen(passage, room, config)) continue;
            if (most_open && passage * best_room <= best_passage * room) continue;
            most_open = edge;
            best_passage = passage;
            best_room = room;
        }
        if (!most_open) return;
        join(rooms, most_open->first, most_open->second);
    }
}

}  // namespace

cv::Mat squaredDistances(const cv::Mat& floor) {
    const auto isWall = [&](int row, int col) {
        const bool is_outside = row < 0 || row >= floor.rows || col < 0 || col >= floor.cols;
        return is_outside || floor.at<std::uint8_t>(row, col) == 0;
    };
    cv::Mat vertical = cv::Mat::zeros(floor.rows, floor.cols, CV_32SC1);
    for (int row = 0; row < floor.rows; ++row) {
        for (int col = 0; col < floor.cols; ++col) {
            int& distance = vertical.at<int>(row, col);
            while (!isWall(row - distance, col) && !isWall(row + distance, col)) ++distance;
        }
    }
    cv::Mat squared = cv::Mat::zeros(floor.rows, floor.cols, CV_32SC1);
    for (int row = 0; row < floor.rows; ++row) {
        for (int col = 0; col < floor.cols; ++col) {
            const int outside = std::min(col + 1, floor.cols - col);
            int nearest = outside * outside;
            for (int other = 0; other < floor.cols; ++other) {
                const int up = vertical.at<int>(row, other);
                nearest = std::min(nearest, (other - col) * (other - col) + up * up);
            }
            squared.at<int>(row, col) = nearest;
        }
    }
    return squared;
}

void mergeOpenPassages(MergeState& rooms, const cv::Mat& floor,
                       const std::vector<PlainDoorway>& doorways,
                       const rooms::RoomsConfig& config) {
    const Space space = spaceOf(rooms, floor, doorways);
    absorb(rooms, space, [](double area, double width) {
        return area < 1.0 || (area < 5.0 && width < 0.7 - kMargin);
    });
    joinOpen(rooms, space, config);
    absorb(rooms, space, [&](double area, double) { return area < config.least_area - kMargin; });
}

}  // namespace vorund::reference
