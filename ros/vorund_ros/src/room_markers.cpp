#include "room_markers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <utility>

#include "map_conversion.h"
#include "vorund/rooms/geojson.h"

namespace vorund_ros {
namespace {

namespace rooms = vorund::rooms;
using visualization_msgs::Marker;
using visualization_msgs::MarkerArray;

struct Colour {
    float red, green, blue;
};

// Light, so that the numbers can be read, and far apart.
constexpr std::array<Colour, 8> kRoomColours{{{0.55F, 0.83F, 0.78F},
                                              {1.00F, 0.93F, 0.44F},
                                              {0.75F, 0.73F, 0.92F},
                                              {0.98F, 0.50F, 0.45F},
                                              {0.50F, 0.69F, 0.89F},
                                              {0.99F, 0.71F, 0.38F},
                                              {0.70F, 0.87F, 0.41F},
                                              {0.99F, 0.80F, 0.90F}}};
constexpr Colour kOutlineColour{0.25F, 0.25F, 0.30F};
constexpr Colour kNumberColour{0.05F, 0.05F, 0.05F};
constexpr Colour kDoorColour{0.10F, 0.15F, 0.65F};  // Stands out from all of the rooms.

// What lies above what, seen from above. [m]
constexpr double kFillHeight = 0.0;
constexpr double kOutlineHeight = 0.02;
constexpr double kDoorHeight = 0.04;
constexpr double kNumberHeight = 0.1;

constexpr double kOutlineWidth = 0.04;  // [m]
constexpr double kDoorWidth = 0.10;     // [m]
constexpr double kSmallestText = 0.2;   // Height of a letter. [m]
constexpr double kLargestText = 0.6;    // [m]
constexpr double kRoomSideToText = 7.0;

Marker newMarker(const FoundRooms& found, const char* name, int id, int type, Colour colour) {
    Marker marker;
    marker.header.frame_id = found.graph.header.frame_id;
    marker.ns = name;
    marker.id = id;
    marker.type = type;
    marker.action = Marker::ADD;
    marker.pose.orientation.w = 1.0;
    marker.scale.x = marker.scale.y = marker.scale.z = 1.0;
    marker.color.r = colour.red;
    marker.color.g = colour.green;
    marker.color.b = colour.blue;
    marker.color.a = 1.0F;
    return marker;
}

Marker newLines(const FoundRooms& found, const char* name, double width, Colour colour) {
    Marker marker = newMarker(found, name, 0, Marker::LINE_LIST, colour);
    marker.scale.x = width;
    return marker;
}

geometry_msgs::Point atHeight(geometry_msgs::Point point, double height) {
    point.z = height;
    return point;
}

geometry_msgs::Point cornerOf(const rooms::GridMap& frame, const cv::Point& corner) {
    const cv::Point2d metres = rooms::cornerToMetres(frame, corner);
    geometry_msgs::Point point;
    point.x = metres.x;
    point.y = metres.y;
    point.z = kFillHeight;
    return point;
}

/// For every room the number of its colour: the first that no neighbour of smaller label has.
std::vector<std::size_t> chooseColours(const vorund_msgs::RoomGraph& graph) {
    std::vector<std::size_t> colours;
    for (const vorund_msgs::Room& room : graph.rooms) {
        std::set<std::size_t> taken;
        for (const int neighbour : room.neighbours) {
            if (neighbour < room.label)
                taken.insert(colours[static_cast<std::size_t>(neighbour - 1)]);
        }
        // Not always from the first on: most rooms have few neighbours and would look the same.
        std::size_t colour = colours.size() % kRoomColours.size();
        for (std::size_t tried = 0; tried < kRoomColours.size() && taken.count(colour) > 0;
             ++tried) {
            colour = (colour + 1) % kRoomColours.size();
        }
        colours.push_back(colour);
    }
    return colours;
}

void addBlock(const rooms::GridMap& frame, const cv::Rect& block, Marker& marker) {
    const geometry_msgs::Point upper_left = cornerOf(frame, block.tl());
    const geometry_msgs::Point upper_right = cornerOf(frame, {block.br().x, block.y});
    const geometry_msgs::Point lower_left = cornerOf(frame, {block.x, block.br().y});
    const geometry_msgs::Point lower_right = cornerOf(frame, block.br());
    // Counterclockwise, so that they face up.
    for (const auto& corner :
         {lower_left, lower_right, upper_right, lower_left, upper_right, upper_left}) {
        marker.points.push_back(corner);
    }
}

void addFilledRooms(const FoundRooms& found, MarkerArray& array) {
    const rooms::GridMap frame = frameOf(found.graph.info);
    const std::vector<std::size_t> colours = chooseColours(found.graph);
    std::vector<Marker> markers;
    for (const vorund_msgs::Room& room : found.graph.rooms) {
        markers.push_back(newMarker(found, "rooms", room.label, Marker::TRIANGLE_LIST,
                                    kRoomColours[colours[markers.size()]]));
    }
    for (const RoomBlock& block : toBlocks(found.labels)) {
        addBlock(frame, block.pixels, markers[static_cast<std::size_t>(block.label - 1)]);
    }
    for (Marker& marker : markers) {
        if (!marker.points.empty()) array.markers.push_back(std::move(marker));
    }
}

void addRing(const vorund_msgs::Ring& ring, Marker& lines) {
    for (std::size_t i = 0; i < ring.corners.size(); ++i) {
        lines.points.push_back(atHeight(ring.corners[i], kOutlineHeight));
        lines.points.push_back(
            atHeight(ring.corners[(i + 1) % ring.corners.size()], kOutlineHeight));
    }
}

void addOutlines(const FoundRooms& found, MarkerArray& array) {
    Marker lines = newLines(found, "outlines", kOutlineWidth, kOutlineColour);
    for (const vorund_msgs::Room& room : found.graph.rooms) {
        for (const vorund_msgs::RoomPiece& piece : room.pieces) {
            addRing(piece.outer, lines);
            for (const vorund_msgs::Ring& hole : piece.holes) addRing(hole, lines);
        }
    }
    if (!lines.points.empty()) array.markers.push_back(std::move(lines));
}

void addNumbers(const FoundRooms& found, MarkerArray& array) {
    for (const vorund_msgs::Room& room : found.graph.rooms) {
        Marker number =
            newMarker(found, "numbers", room.label, Marker::TEXT_VIEW_FACING, kNumberColour);
        number.pose.position = atHeight(room.position, kNumberHeight);
        number.scale.z =
            std::min(kLargestText, std::max(kSmallestText, std::sqrt(room.area) / kRoomSideToText));
        const long long tenths = std::llround(room.area * 10.0);
        number.text = std::to_string(room.label) + "\n" + std::to_string(tenths / 10) + "." +
                      std::to_string(tenths % 10) + " m2";
        array.markers.push_back(std::move(number));
    }
}

void addDoors(const FoundRooms& found, MarkerArray& array) {
    Marker lines = newLines(found, "doors", kDoorWidth, kDoorColour);
    for (const vorund_msgs::Border& border : found.graph.borders) {
        if (!border.has_door) continue;
        lines.points.push_back(atHeight(border.door_start, kDoorHeight));
        lines.points.push_back(atHeight(border.door_end, kDoorHeight));
    }
    if (!lines.points.empty()) array.markers.push_back(std::move(lines));
}

using Run = std::pair<int, int>;  // First column and the one after the last.

/// The runs of a row by their columns, each with its block.
std::map<Run, RoomBlock> runsOf(const sensor_msgs::Image& labels, int row) {
    std::map<Run, RoomBlock> runs;
    const int cols = static_cast<int>(labels.width);
    int end = 0;
    for (int begin = 0; begin < cols; begin = end) {
        const int label = labelAt(labels, row, begin);
        for (end = begin + 1; end < cols && labelAt(labels, row, end) == label;) ++end;
        if (label != 0) runs[{begin, end}] = {label, cv::Rect(begin, row, end - begin, 1)};
    }
    return runs;
}

}  // namespace

std::vector<RoomBlock> toBlocks(const sensor_msgs::Image& labels) {
    std::vector<RoomBlock> blocks;
    std::map<Run, RoomBlock> open;
    for (int row = 0; row < static_cast<int>(labels.height); ++row) {
        std::map<Run, RoomBlock> runs = runsOf(labels, row);
        for (const auto& [run, block] : open) {
            const auto below = runs.find(run);
            if (below == runs.end() || below->second.label != block.label) {
                blocks.push_back(block);
            } else {
                below->second.pixels = block.pixels | below->second.pixels;
            }
        }
        open = std::move(runs);
    }
    for (const auto& [run, block] : open) blocks.push_back(block);
    return blocks;
}

MarkerArray toMarkers(const FoundRooms& found) {
    MarkerArray array;
    Marker remove_all;
    remove_all.header.frame_id = found.graph.header.frame_id;
    remove_all.action = Marker::DELETEALL;
    remove_all.pose.orientation.w = 1.0;
    array.markers.push_back(remove_all);
    addFilledRooms(found, array);
    addOutlines(found, array);
    addNumbers(found, array);
    addDoors(found, array);
    return array;
}

}  // namespace vorund_ros
