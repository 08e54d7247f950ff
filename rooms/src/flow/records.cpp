#include "flow/records.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <tuple>
#include <vector>

#include "flow/separators.h"
#include "flow/space.h"
#include "internal/runs.h"
#include "vorund/graph_processor.h"

namespace vorund::rooms {
namespace {

/// The rooms of a label image, numbered from 1 in reading order of their first pixels.
class Numbering {
 public:
    /// Writes the numbers into the image.
    explicit Numbering(cv::Mat& labels) : measures_(1) {
        for (int row = 0; row < labels.rows; ++row) {
            std::int32_t* const pixels = labels.ptr<std::int32_t>(row);
            internal::forEachRun(pixels, labels.cols, [&](int begin, int end, std::int32_t label) {
                if (label == 0) return;
                const std::int32_t number = numberOf(label);
                measures_[static_cast<std::size_t>(number)].add(row, begin, end);
                if (number == label) return;
                std::fill(pixels + begin, pixels + end, number);
            });
        }
    }

    int count() const { return static_cast<int>(measures_.size()) - 1; }

    /// 0 for a label that does not occur.
    int ofLabel(int label) const {
        const auto index = static_cast<std::size_t>(label);
        return index < numbers_.size() ? numbers_[index] : 0;
    }

    std::int64_t pixels(int number) const { return measureOf(number).pixels; }

    cv::Rect box(int number) const {
        const Measure& measure = measureOf(number);
        return {cv::Point(measure.left, measure.top), cv::Point(measure.right, measure.bottom)};
    }

 private:
    struct Measure {
        std::int64_t pixels = 0;
        int left = std::numeric_limits<int>::max();
        int right = 0;
        int top = 0;
        int bottom = 0;

        void add(int row, int begin, int end) {
            if (pixels == 0) top = row;
            bottom = row + 1;
            left = std::min(left, begin);
            right = std::max(right, end);
            pixels += end - begin;
        }
    };

    std::int32_t numberOf(std::int32_t label) {
        const auto index = static_cast<std::size_t>(label);
        if (index >= numbers_.size()) numbers_.resize(index + 1, 0);
        if (numbers_[index] == 0) {
            numbers_[index] = count() + 1;
            measures_.emplace_back();
        }
        return numbers_[index];
    }

    const Measure& measureOf(int number) const {
        return measures_[static_cast<std::size_t>(number)];
    }

    std::vector<std::int32_t> numbers_;  ///< By label.
    std::vector<Measure> measures_;      ///< By number.
};

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

void addRooms(const Numbering& numbering, const std::vector<cv::Point>& widest,
              const Places& places, Rooms& rooms) {
    for (int number = 1; number <= numbering.count(); ++number) {
        const cv::Point& pixel = widest[static_cast<std::size_t>(number)];
        const std::int64_t pixels = numbering.pixels(number);
        const double area = static_cast<double>(pixels) * rooms.resolution * rooms.resolution;
        rooms.rooms.push_back(
            {number, pixels, area, places.atPixel(pixel), numbering.box(number), {}});
        rooms.graph.addNode(number, {area, pixel});
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

void addBorders(const FoundRooms& found, const Numbering& numbering, const Places& places,
                Rooms& rooms) {
    std::map<Edge, Border> borders;
    for (const auto& [edge, data] : found.graph.edges()) {
        // A room of a coarser map may be too small to hold the centre of any of its pixels.
        const Edge renamed(numbering.ofLabel(edge.first), numbering.ofLabel(edge.second));
        if (renamed.first == 0) continue;
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

void addDoorways(const FoundRooms& found, const Numbering& numbering, const Places& places,
                 Rooms& rooms) {
    for (const auto& [doorway, between] : found.doorways) {
        const Edge renamed(numbering.ofLabel(between.first), numbering.ofLabel(between.second));
        if (renamed.first == 0) continue;
        const cv::Point2d first(doorway.first_jamb);
        const cv::Point2d second(doorway.second_jamb);
        rooms.doorways.push_back(
            {renamed.first, renamed.second, places.atWorkingPixel((first + second) / 2.0),
             places.atWorkingPixel(first), places.atWorkingPixel(second),
             doorway.width * kWorkingResolution,
             static_cast<double>(doorway.wall) / (doorway.wall + doorway.width)});
    }
    std::stable_sort(rooms.doorways.begin(), rooms.doorways.end(),
                     [](const Doorway& a, const Doorway& b) {
                         return std::tie(a.first, a.second) < std::tie(b.first, b.second);
                     });
}

}  // namespace

void fillRecords(const FoundRooms& found, Rooms& rooms) {
    rooms.labels = found.labels;
    const Numbering numbering(rooms.labels);
    rooms.lines = linesBetween(rooms.labels);
    const std::vector<cv::Point> widest = widestPixels(rooms.labels, numbering.count() + 1);
    const Places places(rooms, found.scale);
    addRooms(numbering, widest, places, rooms);
    addBorders(found, numbering, places, rooms);
    addDoorways(found, numbering, places, rooms);
    for (const RemovedIsland& island : found.islands) {
        rooms.islands.push_back({island.area, places.atWorkingPixel(island.position)});
    }
}

}  // namespace vorund::rooms
