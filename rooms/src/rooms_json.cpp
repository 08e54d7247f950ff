#include "vorund/rooms/rooms_json.h"

#include <yaml-cpp/yaml.h>
#include <cmath>
#include <nlohmann/json.hpp>

#include "vorund/rooms/geojson.h"
#include "vorund/rooms/polygons.h"
#include "vorund/rooms/settings.h"

namespace vorund::rooms {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;

/// Six digits after the point: micrometres. No negative zero.
double rounded(double value) {
    return std::round(value * 1e6) / 1e6 + 0.0;
}

Json toJson(const cv::Point2d& point) {
    return Json::array({rounded(point.x), rounded(point.y)});
}

Json toJson(const Place& place) {
    return {{"pixel", toJson(place.pixel)}, {"metres", toJson(place.metres)}};
}

Json mapToJson(const Rooms& rooms) {
    return {{"width", rooms.labels.cols},
            {"height", rooms.labels.rows},
            {"resolution", rooms.resolution},
            {"origin", Json::array({rooms.origin.x, rooms.origin.y, rooms.origin.yaw})}};
}

Json toJson(const Room& room) {
    return {{"label", room.label},
            {"area_m2", rounded(room.area_m2)},
            {"position", toJson(room.position)},
            {"neighbours", room.neighbours}};
}

Json toJson(const Door& door) {
    return {{"center", toJson(door.center)},
            {"start", toJson(door.start)},
            {"end", toJson(door.end)},
            {"angle_deg", rounded(door.angle)},
            {"length_m", rounded(door.length_m)},
            {"weight", rounded(door.weight)},
            {"score_m", rounded(door.score_m)}};
}

Json toJson(const Border& border) {
    return {{"rooms", Json::array({border.first, border.second})},
            {"length_m", rounded(border.length_m)},
            {"cut", border.door ? toJson(*border.door) : Json(nullptr)}};
}

Json toJson(const Doorway& doorway) {
    return {{"rooms", Json::array({doorway.first, doorway.second})},
            {"center", toJson(doorway.center)},
            {"start", toJson(doorway.start)},
            {"end", toJson(doorway.end)},
            {"width_m", rounded(doorway.width_m)},
            {"certainty", rounded(doorway.certainty)}};
}

Json toJson(const Island& island) {
    return {{"area_m2", rounded(island.area_m2)}, {"position", toJson(island.position)}};
}

template <class Record>
Json listOf(const std::vector<Record>& records) {
    Json list = Json::array();
    for (const Record& record : records) list.push_back(toJson(record));
    return list;
}

/// A value of the settings file; what reads as no number or flag is a name.
Json toJson(const YAML::Node& node) {
    if (node.IsMap()) {
        Json members = Json::object();
        for (const auto& entry : node) members[entry.first.Scalar()] = toJson(entry.second);
        return members;
    }
    if (node.IsSequence()) {
        Json list = Json::array();
        for (const YAML::Node& entry : node) list.push_back(toJson(entry));
        return list;
    }
    const Json value = Json::parse(node.Scalar(), nullptr, false);
    return value.is_discarded() ? Json(node.Scalar()) : value;
}

}  // namespace

std::string roomsAsJson(const Rooms& rooms) {
    const double pixel_area = rooms.resolution * rooms.resolution;
    const Json json{
        {"format", kFormat},
        {"map", mapToJson(rooms)},
        {"blocks", rooms.blocks},
        {"rooms", listOf(rooms.rooms)},
        {"borders", listOf(rooms.borders)},
        {"doorways", listOf(rooms.doorways)},
        {"islands", listOf(rooms.islands)},
        {"unreached_m2", rounded(static_cast<double>(rooms.unreached_pixels) * pixel_area)},
        {"settings", toJson(YAML::Load(settingsAsYaml(rooms.settings)))}};
    return json.dump(1) + "\n";
}

std::string roomsAsGeoJson(const Rooms& rooms) {
    const GridMap frame{rooms.labels, {}, rooms.resolution, rooms.origin};
    std::vector<RoomFeature> features;
    for (RoomPolygons& outline :
         roomPolygons(rooms.labels, rooms.settings.rooms.simplify / rooms.resolution)) {
        const Room& room = rooms.rooms.at(static_cast<std::size_t>(outline.label - 1));
        features.push_back(
            {std::move(outline), room.area_m2, room.position.metres, room.neighbours});
    }
    return roomsAsGeoJson(frame, features);
}

}  // namespace vorund::rooms
