#include "flow/records.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include "flow/space.h"
#include "internal/runs.h"
#include "vorund/graph_processor.h"

namespace vorund::rooms {
namespace {

/// New numbers from 1, in reading order of the first pixels.
std::map<int, int> numberRooms(const cv::Mat& labels) {
    std::map<int, int> numbers;
    for (int row = 0; row < labels.rows; ++row) {
        internal::forEachRun(labels.ptr<std::int32_t>(row), labels.cols,
                             [&](int, int, std::int32_t label) {
                                 if (label != 0)
                                     numbers.emplace(label, static_cast<int>(numbers.size()) + 1);
                             });
    }
    return numbers;
}

cv::Mat renumbered(const cv::Mat& labels, const std::map<int, int>& numbers) {
    cv::Mat result(labels.size(), CV_32SC1);
    for (int row = 0; row < labels.rows; ++row) {
        std::int32_t* const to = result.ptr<std::int32_t>(row);
        internal::forEachRun(labels.ptr<std::int32_t>(row), labels.cols,
                             [&](int begin, int end, std::int32_t label) {
                                 std::fill(to + begin, to + end,
                                           label == 0 ? 0 : numbers.at(label));
                             });
    }
    return result;
}

/// Points of the map in both its coordinates.
class Places {
 public:
    Places(const Rooms& rooms, double scale)
        : frame_{rooms.labels, {}, rooms.resolution, rooms.origin}, scale_(scale) {}

    Place atPixel(const cv::Point2d& pixel) const { return {pixel, pixelToMetres(frame_, pixel)}; }

    /// The same point from its pixel at the working resolution.
    Place atWorkingPixel(const cv::Point2d& pixel) const {
        return atPixel({(pixel.x + 0.5) * scale_ - 0.5, (pixel.y + 0.5) * scale_ - 0.5});
    }

 private:
    GridMap frame_;
    double scale_;
};

void addRooms(const Places& places, Rooms& rooms) {
    const std::map<int, cv::Point> widest = widestPixels(rooms.labels);
    for (const auto& [label, pixel] : widest) {
        rooms.rooms.push_back({label, 0, 0.0, places.atPixel(pixel), cv::Rect(pixel, pixel), {}});
    }
    for (int row = 0; row < rooms.labels.rows; ++row) {
        internal::forEachRun(rooms.labels.ptr<std::int32_t>(row), rooms.labels.cols,
                             [&](int begin, int end, std::int32_t label) {
                                 if (label == 0) return;
                                 Room& room = rooms.rooms[static_cast<std::size_t>(label - 1)];
                                 room.pixel_count += end - begin;
                                 room.box |= cv::Rect(begin, row, end - begin, 1);
                             });
    }
    for (Room& room : rooms.rooms) {
        room.area_m2 = static_cast<double>(room.pixel_count) * rooms.resolution * rooms.resolution;
        rooms.graph.addNode(room.label, {room.area_m2, cv::Point(room.position.pixel)});
    }
}

Door doorOf(const GraphProcessor::OptimalLine& line, const Places& places) {
    const auto length = static_cast<double>(line.effective_length);
    const auto weight = static_cast<double>(line.direction_weight);
    return {places.atWorkingPixel(line.center),  places.atWorkingPixel(line.start),
            places.atWorkingPixel(line.end),     static_cast<double>(line.angle),
            length * kWorkingResolution,         weight,
            length / weight * kWorkingResolution};
}

void addBorders(const FoundRooms& found, const std::map<int, int>& numbers, const Places& places,
                Rooms& rooms) {
    std::map<Edge, Border> borders;
    for (const auto& [edge, data] : found.graph.edges()) {
        // A room of a coarser map may be too small to hold the centre of any of its pixels.
        if (numbers.count(edge.first) == 0 || numbers.count(edge.second) == 0) continue;
        const Edge renamed(numbers.at(edge.first), numbers.at(edge.second));
        Border border{renamed.first, renamed.second, data.length, std::nullopt};
        const auto cut = found.cuts.find(edge);
        if (cut != found.cuts.end()) border.door = doorOf(cut->second, places);
        borders.emplace(renamed, border);
    }
    for (const auto& [edge, border] : borders) {
        rooms.borders.push_back(border);
        rooms.graph.addEdge(edge.first, edge.second, {border.length_m});
    }
    for (Room& room : rooms.rooms) {
        const std::set<int>& neighbours = rooms.graph.getNeighbors(room.label);
        room.neighbours.assign(neighbours.begin(), neighbours.end());
    }
}

}  // namespace

void fillRecords(const FoundRooms& found, Rooms& rooms) {
    const std::map<int, int> numbers = numberRooms(found.labels);
    rooms.labels = renumbered(found.labels, numbers);
    const Places places(rooms, found.scale);
    addRooms(places, rooms);
    addBorders(found, numbers, places, rooms);
    for (const RemovedIsland& island : found.islands) {
        rooms.islands.push_back({island.area, places.atWorkingPixel(island.position)});
    }
}

}  // namespace vorund::rooms
