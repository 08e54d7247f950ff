#include "room_colours.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <vector>

namespace vorund::rooms {
namespace {

/// Light enough for walls and numbers to stand out.
const std::array<cv::Vec3b, 10> kColours{{
    {235, 196, 142},  // sky
    {128, 190, 255},  // apricot
    {150, 222, 160},  // mint
    {144, 152, 246},  // salmon
    {130, 232, 252},  // lemon
    {240, 172, 192},  // lilac
    {214, 218, 138},  // aqua
    {150, 196, 222},  // sand
    {120, 226, 202},  // lime
    {226, 184, 246},  // pink
}};

/// Rooms grow by this before those that meet count as neighbours. [pixels]
constexpr int kReach = 5;

using Neighbours = std::map<int, std::set<int>>;

const std::array<cv::Point, 8> kAround{
    {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}}};

/// Grows the rooms by one pixel on all sides. @return the pixels that were taken.
std::vector<cv::Point> growInPlace(cv::Mat& rooms, const std::vector<cv::Point>& edge) {
    const cv::Rect inside({0, 0}, rooms.size());
    std::vector<cv::Point> taken;
    for (const cv::Point& from : edge) {
        for (const cv::Point& step : kAround) {
            const cv::Point to = from + step;
            if (!inside.contains(to) || rooms.at<int>(to) != 0) continue;
            rooms.at<int>(to) = rooms.at<int>(from);
            taken.push_back(to);
        }
    }
    return taken;
}

void addNeighboursAt(const cv::Mat& rooms, const cv::Point& pixel, Neighbours& neighbours) {
    const cv::Rect inside({0, 0}, rooms.size());
    const int room = rooms.at<int>(pixel);
    for (const cv::Point& step : kAround) {
        if (!inside.contains(pixel + step)) continue;
        const int other = rooms.at<int>(pixel + step);
        if (other == 0 || other == room) continue;
        neighbours[room].insert(other);
        neighbours[other].insert(room);
    }
}

template <class Visit>
void forEachRoomPixel(const cv::Mat& rooms, Visit visit) {
    for (int row = 0; row < rooms.rows; ++row) {
        const int* labels = rooms.ptr<int>(row);
        for (int col = 0; col < rooms.cols; ++col) {
            if (labels[col] != 0) visit(cv::Point(col, row));
        }
    }
}

/// Every room, with those whose regions meet when each has grown by `kReach`.
Neighbours findNeighbours(const cv::Mat& rooms) {
    Neighbours neighbours;
    std::vector<cv::Point> edge;
    int last = 0;  // Rooms are wide: most pixels are of the room of the one before.
    forEachRoomPixel(rooms, [&](const cv::Point& pixel) {
        edge.push_back(pixel);
        if (rooms.at<int>(pixel) != last) neighbours[last = rooms.at<int>(pixel)];
    });
    cv::Mat grown = rooms.clone();
    for (int step = 0; step < kReach; ++step) edge = growInPlace(grown, edge);
    forEachRoomPixel(grown,
                     [&](const cv::Point& pixel) { addNeighboursAt(grown, pixel, neighbours); });
    return neighbours;
}

/// Takes away the room with the fewest neighbours left, again and again (the smaller label among
/// equals), and gives the rooms in the opposite order: so each comes after few of its neighbours,
/// on a floor plan never more than five where rooms touch only side by side.
std::vector<int> orderOfColouring(Neighbours neighbours) {
    std::vector<int> order;
    while (!neighbours.empty()) {
        const auto fewest = std::min_element(
            neighbours.begin(), neighbours.end(),
            [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); });
        for (const int other : fewest->second) neighbours[other].erase(fewest->first);
        order.push_back(fewest->first);
        neighbours.erase(fewest);
    }
    std::reverse(order.begin(), order.end());
    return order;
}

/// The colour that the fewest neighbours have, then the fewest rooms, then the first.
std::size_t bestColour(const std::vector<std::size_t>& of_neighbours,
                       const std::array<int, kColours.size()>& uses) {
    std::array<std::pair<int, int>, kColours.size()> costs{};
    for (const std::size_t colour : of_neighbours) ++costs[colour].first;
    for (std::size_t colour = 0; colour < uses.size(); ++colour) {
        costs[colour].second = uses[colour];
    }
    return static_cast<std::size_t>(std::min_element(costs.begin(), costs.end()) - costs.begin());
}

}  // namespace

RoomColours chooseColours(const cv::Mat& rooms) {
    const Neighbours neighbours = findNeighbours(rooms);
    std::map<int, std::size_t> chosen;
    std::array<int, kColours.size()> uses{};
    RoomColours colours;
    for (const int room : orderOfColouring(neighbours)) {
        std::vector<std::size_t> of_neighbours;
        for (const int other : neighbours.at(room)) {
            const auto colour = chosen.find(other);
            if (colour != chosen.end()) of_neighbours.push_back(colour->second);
        }
        const std::size_t best = bestColour(of_neighbours, uses);
        ++uses[best];
        chosen[room] = best;
        colours[room] = kColours[best];
    }
    return colours;
}

}  // namespace vorund::rooms
