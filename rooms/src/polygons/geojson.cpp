#include "vorund/rooms/geojson.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace vorund::rooms {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kDigits = 1e6;

/// Above it the doubles are too far apart for kDigits.
constexpr double kLargest = 1e9;

/// The map's pose, its sine and cosine worked out once for all corners.
class CornerFrame {
 public:
    explicit CornerFrame(const GridMap& map)
        : origin_(map.origin),
          resolution_(map.resolution),
          rows_(map.values.rows),
          cos_yaw_(std::cos(map.origin.yaw)),
          sin_yaw_(std::sin(map.origin.yaw)) {}

    cv::Point2d toMetres(const cv::Point& corner) const {
        const double along_x = corner.x * resolution_;
        const double along_y = (static_cast<double>(rows_) - corner.y) * resolution_;
        return {origin_.x + cos_yaw_ * along_x - sin_yaw_ * along_y,
                origin_.y + sin_yaw_ * along_x + cos_yaw_ * along_y};
    }

 private:
    Origin origin_;
    double resolution_;
    int rows_;
    double cos_yaw_;
    double sin_yaw_;
};

[[noreturn]] void reject(const std::string& fault) {
    throw std::invalid_argument("roomsAsGeoJson: " + fault);
}

double rounded(double value) {
    // Negated, so that NaN fails too.
    if (!(std::abs(value) < kLargest)) reject("A number is not finite or too large.");
    // Plus 0: a minus is not wanted before a zero.
    return std::round(value * kDigits) / kDigits + 0.0;
}

Json pointAsJson(const cv::Point2d& point) {
    return Json::array({rounded(point.x), rounded(point.y)});
}

Json ringAsJson(const CornerFrame& frame, const Ring& ring) {
    Json corners = Json::array();
    for (const cv::Point& corner : ring) corners.push_back(pointAsJson(frame.toMetres(corner)));
    return corners;
}

Json ringsAsJson(const CornerFrame& frame, const Polygon& polygon) {
    Json rings = Json::array();
    rings.push_back(ringAsJson(frame, polygon.outer));
    for (const Ring& hole : polygon.holes) rings.push_back(ringAsJson(frame, hole));
    return rings;
}

Json geometryAsJson(const CornerFrame& frame, const std::vector<Polygon>& pieces) {
    Json geometry;
    geometry["type"] = pieces.size() == 1 ? "Polygon" : "MultiPolygon";
    if (pieces.size() == 1) {
        geometry["coordinates"] = ringsAsJson(frame, pieces.front());
        return geometry;
    }
    Json& polygons = geometry["coordinates"] = Json::array();
    for (const Polygon& piece : pieces) polygons.push_back(ringsAsJson(frame, piece));
    return geometry;
}

Json propertiesAsJson(const RoomFeature& room) {
    Json properties;
    properties["label"] = room.outline.label;
    properties["area_m2"] = rounded(room.area_m2);
    if (room.position) properties["position"] = pointAsJson(*room.position);
    properties["neighbours"] = room.neighbours;
    return properties;
}

Json featureAsJson(const CornerFrame& frame, const RoomFeature& room) {
    if (room.outline.pieces.empty()) {
        reject("Room " + std::to_string(room.outline.label) + " has no outline.");
    }
    Json feature;
    feature["type"] = "Feature";
    feature["id"] = room.outline.label;
    feature["properties"] = propertiesAsJson(room);
    feature["geometry"] = geometryAsJson(frame, room.outline.pieces);
    return feature;
}

}  // namespace

cv::Point2d cornerToMetres(const GridMap& map, const cv::Point& corner) {
    return CornerFrame(map).toMetres(corner);
}

std::string roomsAsGeoJson(const GridMap& map, const std::vector<RoomFeature>& rooms) {
    if (!(map.resolution > 0.0)) reject("The resolution must be positive.");
    const CornerFrame frame(map);
    Json collection;
    collection["type"] = "FeatureCollection";
    collection["coordinate_frame"] = "map";
    collection["units"] = "m";
    Json& features = collection["features"] = Json::array();
    for (const RoomFeature& room : rooms) features.push_back(featureAsJson(frame, room));
    return collection.dump() + "\n";
}

}  // namespace vorund::rooms
