#include "room_messages.h"

#include <limits>
#include <stdexcept>

#include "map_conversion.h"
#include "vorund/rooms/geojson.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/rooms/polygons.h"

namespace vorund_ros {
namespace {

namespace rooms = vorund::rooms;

constexpr char kEncoding[] = "mono16";
constexpr std::size_t kPixelBytes = 2;

geometry_msgs::Point toPoint(const cv::Point2d& metres) {
    geometry_msgs::Point point;
    point.x = metres.x;
    point.y = metres.y;
    return point;
}

vorund_msgs::Ring toRing(const rooms::GridMap& frame, const rooms::Ring& ring) {
    vorund_msgs::Ring message;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {  // The last corner repeats the first.
        message.corners.push_back(toPoint(rooms::cornerToMetres(frame, ring[i])));
    }
    return message;
}

vorund_msgs::RoomPiece toPiece(const rooms::GridMap& frame, const rooms::Polygon& polygon) {
    vorund_msgs::RoomPiece piece;
    piece.outer = toRing(frame, polygon.outer);
    for (const rooms::Ring& hole : polygon.holes) piece.holes.push_back(toRing(frame, hole));
    return piece;
}

vorund_msgs::Room toRoom(const rooms::Room& room) {
    vorund_msgs::Room message;
    message.label = room.label;
    message.area = room.area_m2;
    message.position = toPoint(room.position.metres);
    message.neighbours.assign(room.neighbours.begin(), room.neighbours.end());
    return message;
}

vorund_msgs::Border toBorder(const rooms::Border& border) {
    vorund_msgs::Border message;
    message.first = border.first;
    message.second = border.second;
    message.length = border.length_m;
    message.has_door = border.door.has_value();
    if (border.door) {
        message.door_start = toPoint(border.door->start.metres);
        message.door_center = toPoint(border.door->center.metres);
        message.door_end = toPoint(border.door->end.metres);
        message.door_width = border.door->length_m;
    }
    return message;
}

sensor_msgs::Image toImage(const cv::Mat& labels, const std_msgs::Header& header) {
    sensor_msgs::Image image;
    image.header = header;
    image.height = static_cast<std::uint32_t>(labels.rows);
    image.width = static_cast<std::uint32_t>(labels.cols);
    image.encoding = kEncoding;
    image.is_bigendian = false;
    image.step = static_cast<std::uint32_t>(kPixelBytes * image.width);
    image.data.reserve(labels.total() * kPixelBytes);
    for (int row = 0; row < labels.rows; ++row) {
        for (int col = 0; col < labels.cols; ++col) {
            const auto label = static_cast<std::uint32_t>(labels.at<std::int32_t>(row, col));
            image.data.push_back(static_cast<std::uint8_t>(label & 0xFFU));
            image.data.push_back(static_cast<std::uint8_t>(label >> 8U));
        }
    }
    return image;
}

void addOutlines(const rooms::Rooms& found, vorund_msgs::RoomGraph& graph) {
    const rooms::GridMap frame{found.labels, {}, found.resolution, found.origin};
    const double tolerance = found.settings.rooms.simplify / found.resolution;
    for (const rooms::RoomPolygons& outline : rooms::roomPolygons(found.labels, tolerance)) {
        auto& pieces = graph.rooms.at(static_cast<std::size_t>(outline.label - 1)).pieces;
        for (const rooms::Polygon& piece : outline.pieces) pieces.push_back(toPiece(frame, piece));
    }
}

bool hasLabelsUpTo(const sensor_msgs::Image& labels, std::size_t count) {
    for (int row = 0; row < static_cast<int>(labels.height); ++row) {
        for (int col = 0; col < static_cast<int>(labels.width); ++col) {
            if (static_cast<std::size_t>(labelAt(labels, row, col)) > count) return false;
        }
    }
    return true;
}

bool hasRoomsInOrder(const vorund_msgs::RoomGraph& graph) {
    const int count = static_cast<int>(graph.rooms.size());
    int expected = 1;
    for (const vorund_msgs::Room& room : graph.rooms) {
        if (room.label != expected++) return false;
        for (const int neighbour : room.neighbours) {
            if (neighbour < 1 || neighbour > count) return false;
        }
    }
    for (const vorund_msgs::Border& border : graph.borders) {
        if (border.first < 1 || border.second > count || border.first >= border.second)
            return false;
    }
    return true;
}

}  // namespace

FoundRooms toMessages(const rooms::Rooms& found, const nav_msgs::OccupancyGrid& map,
                      const std::string& map_hash) {
    if (found.rooms.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw rooms::MapError("too many rooms: " + std::to_string(found.rooms.size()) +
                              ", at most 65535 can be numbered");
    }
    FoundRooms result;
    vorund_msgs::RoomGraph& graph = result.graph;
    graph.header = map.header;
    graph.info = map.info;
    graph.map_hash = map_hash;
    for (const rooms::Room& room : found.rooms) graph.rooms.push_back(toRoom(room));
    addOutlines(found, graph);
    for (const rooms::Border& border : found.borders) graph.borders.push_back(toBorder(border));
    graph.unreached_area =
        static_cast<double>(found.unreached_pixels) * found.resolution * found.resolution;
    graph.cells_are_labels = found.rooms.size() <= static_cast<std::size_t>(kMostCellLabels);
    result.labels = toImage(found.labels, map.header);
    return result;
}

nav_msgs::OccupancyGrid toCells(const FoundRooms& found) {
    nav_msgs::OccupancyGrid grid;
    grid.header = found.graph.header;
    grid.info = found.graph.info;
    const int rows = static_cast<int>(found.labels.height);
    const int cols = static_cast<int>(found.labels.width);
    grid.data.reserve(found.labels.data.size() / kPixelBytes);
    for (int row = rows - 1; row >= 0; --row) {
        for (int col = 0; col < cols; ++col) {
            const int label = labelAt(found.labels, row, col);
            const int cell = label == 0 ? -1 : (label - 1) % kMostCellLabels + 1;
            grid.data.push_back(static_cast<std::int8_t>(cell));
        }
    }
    return grid;
}

int labelAt(const sensor_msgs::Image& labels, int row, int col) {
    const std::size_t at =
        static_cast<std::size_t>(row) * labels.step + static_cast<std::size_t>(col) * kPixelBytes;
    return labels.data[at] | labels.data[at + 1] << 8;
}

int roomAt(const FoundRooms& found, const geometry_msgs::Point& point) {
    const rooms::GridMap frame = frameOf(found.graph.info);
    try {
        const cv::Point pixel = rooms::metresToPixel(frame, {point.x, point.y});
        const bool inside = cv::Rect(0, 0, static_cast<int>(found.labels.width),
                                     static_cast<int>(found.labels.height))
                                .contains(pixel);
        return inside ? labelAt(found.labels, pixel.y, pixel.x) : 0;
    } catch (const std::invalid_argument&) {
        return 0;  // Further away than pixels can be counted, or no number at all.
    }
}

bool isConsistent(const FoundRooms& found) {
    const sensor_msgs::Image& image = found.labels;
    const nav_msgs::MapMetaData& info = found.graph.info;
    constexpr std::uint32_t kMostSide = std::numeric_limits<std::int32_t>::max() / kPixelBytes;
    if (image.width == 0 || image.height == 0 || image.width > kMostSide ||
        image.height > kMostSide)
        return false;
    return image.width == info.width && image.height == info.height &&
           image.encoding == kEncoding && !image.is_bigendian &&
           image.step == kPixelBytes * image.width &&
           image.data.size() == static_cast<std::size_t>(image.step) * image.height &&
           hasRoomsInOrder(found.graph) && hasLabelsUpTo(image, found.graph.rooms.size());
}

}  // namespace vorund_ros
