#include "vorund/rooms/geojson.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "support/label_grid.h"

namespace vorund::rooms {
namespace {

using nlohmann::json;
using test::labels32;
using ::testing::DoubleNear;
using ::testing::ThrowsMessage;

const double kPi = std::acos(-1.0);

GridMap mapOf(const cv::Mat& labels, double resolution, const Origin& origin) {
    GridMap map;
    map.values = cv::Mat::zeros(labels.size(), CV_32FC1);
    map.resolution = resolution;
    map.origin = origin;
    return map;
}

std::vector<RoomFeature> featuresOf(const cv::Mat& labels) {
    std::vector<RoomFeature> features;
    for (const RoomPolygons& room : roomPolygons(labels)) {
        features.push_back({room, 0.0, std::nullopt, {}});
    }
    return features;
}

json geometryOf(const std::string& labels, double resolution, const Origin& origin) {
    const cv::Mat image = labels32(labels);
    const std::string text = roomsAsGeoJson(mapOf(image, resolution, origin), featuresOf(image));
    return json::parse(text).at("features").at(0).at("geometry");
}

/// Positive for a counterclockwise ring.
double areaOf(const json& ring) {
    double doubled = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        doubled += ring[i - 1][0].get<double>() * ring[i][1].get<double>() -
                   ring[i][0].get<double>() * ring[i - 1][1].get<double>();
    }
    return doubled / 2.0;
}

TEST(CornerToMetres, PutsTheLowerLeftCornerOfTheImageAtTheOrigin) {
    const GridMap map = mapOf(cv::Mat::zeros(2, 4, CV_32SC1), 0.5, {10.0, 20.0, 0.0});
    EXPECT_EQ(cornerToMetres(map, {0, 2}), cv::Point2d(10.0, 20.0));
    EXPECT_EQ(cornerToMetres(map, {0, 0}), cv::Point2d(10.0, 21.0));
    EXPECT_EQ(cornerToMetres(map, {4, 1}), cv::Point2d(12.0, 20.5));
}

TEST(CornerToMetres, IsHalfAPixelFromThePixelsCentre) {
    const GridMap map = mapOf(cv::Mat::zeros(5, 7, CV_32SC1), 0.07, {-3.0, 4.2, 0.3});
    const cv::Point2d upper_left = cornerToMetres(map, {3, 2});
    const cv::Point2d lower_right = cornerToMetres(map, {4, 3});
    const cv::Point2d centre = pixelToMetres(map, {3, 2});
    EXPECT_THAT((upper_left.x + lower_right.x) / 2.0, DoubleNear(centre.x, 1e-12));
    EXPECT_THAT((upper_left.y + lower_right.y) / 2.0, DoubleNear(centre.y, 1e-12));
}

TEST(RoomsAsGeoJson, WritesExactlyThisText) {
    // The lower left pixel of two, half a metre wide: its upper edge is half a metre up.
    const cv::Mat labels = labels32(
        ".\n"
        "3");
    std::vector<RoomFeature> rooms = featuresOf(labels);
    rooms[0].area_m2 = 0.25;
    rooms[0].position = cv::Point2d(1.25, -1.75);
    rooms[0].neighbours = {4, 17};
    EXPECT_EQ(roomsAsGeoJson(mapOf(labels, 0.5, {1.0, -2.0, 0.0}), rooms),
              R"({"type":"FeatureCollection","coordinate_frame":"map","units":"m","features":[)"
              R"({"type":"Feature","id":3,"properties":{"label":3,"area_m2":0.25,)"
              R"("position":[1.25,-1.75],"neighbours":[4,17]},)"
              R"("geometry":{"type":"Polygon","coordinates":)"
              R"([[[1.0,-1.5],[1.0,-2.0],[1.5,-2.0],[1.5,-1.5],[1.0,-1.5]]]}}]})"
              "\n");
}

TEST(RoomsAsGeoJson, LeavesAnUnknownPositionOut) {
    const cv::Mat labels = labels32("1");
    const json text = json::parse(roomsAsGeoJson(mapOf(labels, 1.0, {}), featuresOf(labels)));
    const json& properties = text.at("features").at(0).at("properties");
    EXPECT_EQ(properties, json::parse(R"({"label": 1, "area_m2": 0.0, "neighbours": []})"));
}

TEST(RoomsAsGeoJson, WritesNoRoomsAsAnEmptyCollection) {
    EXPECT_EQ(json::parse(roomsAsGeoJson(mapOf(cv::Mat(), 0.05, {}), {})), json::parse(R"({
        "type": "FeatureCollection", "coordinate_frame": "map", "units": "m", "features": []})"));
}

TEST(RoomsAsGeoJson, KeepsTheOrderOfTheRooms) {
    const cv::Mat labels = labels32("1 2 3");
    std::vector<RoomFeature> rooms = featuresOf(labels);
    std::swap(rooms[0], rooms[2]);
    const json features = json::parse(roomsAsGeoJson(mapOf(labels, 1.0, {}), rooms))["features"];
    ASSERT_EQ(features.size(), 3U);
    EXPECT_EQ(features[0]["id"], 3);
    EXPECT_EQ(features[1]["id"], 2);
    EXPECT_EQ(features[2]["id"], 1);
}

TEST(RoomsAsGeoJson, WritesARoomInPiecesAsMultiPolygon) {
    const json geometry = geometryOf("1 . 1", 1.0, {});
    EXPECT_EQ(geometry, json::parse(R"({"type": "MultiPolygon", "coordinates": [
        [[[0.0, 1.0], [0.0, 0.0], [1.0, 0.0], [1.0, 1.0], [0.0, 1.0]]],
        [[[2.0, 1.0], [2.0, 0.0], [3.0, 0.0], [3.0, 1.0], [2.0, 1.0]]]]})"));
}

TEST(RoomsAsGeoJson, TurnsOuterRingsCounterclockwiseAndHolesClockwise) {
    for (const double yaw : {0.0, 1.0, kPi / 2.0, -2.5}) {
        const json geometry = geometryOf(
            "1 1 1\n"
            "1 . 1\n"
            "1 1 1",
            0.1, {5.0, -7.0, yaw});
        const json& rings = geometry.at("coordinates");
        ASSERT_EQ(rings.size(), 2U);
        EXPECT_THAT(areaOf(rings[0]), DoubleNear(0.09, 1e-5));
        EXPECT_THAT(areaOf(rings[1]), DoubleNear(-0.01, 1e-5));
        for (const json& ring : rings) EXPECT_EQ(ring.front(), ring.back());
    }
}

TEST(RoomsAsGeoJson, TurnsTheMapAboutItsOrigin) {
    // A quarter turn to the left: columns run up, rows (upwards) to the left. No residue of the
    // cosine is left, and no minus before a zero.
    const json quarter = geometryOf("1 .", 2.0, {0.0, 0.0, kPi / 2.0});
    EXPECT_EQ(quarter.dump(), R"({"coordinates":[[[-2.0,0.0],[0.0,0.0],[0.0,2.0],[-2.0,2.0],)"
                              R"([-2.0,0.0]]],"type":"Polygon"})");

    // 30 degrees: cos = sqrt(3) / 2 = 0.8660254, sin = 1 / 2. The upper left corner is at (0, 2)
    // before, the lower right one at (2, 0).
    const json sixth = geometryOf("1", 2.0, {10.0, 20.0, kPi / 6.0});
    EXPECT_EQ(sixth.at("coordinates").at(0), json::parse(R"([
        [9.0, 21.732051], [10.0, 20.0], [11.732051, 21.0], [10.732051, 22.732051],
        [9.0, 21.732051]])"));
}

TEST(RoomsAsGeoJson, RoundsToAMillionthOfAMetre) {
    const cv::Mat labels = labels32("1");
    std::vector<RoomFeature> rooms = featuresOf(labels);
    rooms[0].area_m2 = 2.0 / 3.0;
    rooms[0].position = cv::Point2d(1.23456749, -1e-9);
    const std::string text = roomsAsGeoJson(mapOf(labels, 0.1 + 0.2, {}), rooms);
    EXPECT_THAT(text, ::testing::HasSubstr(R"("area_m2":0.666667,"position":[1.234567,0.0])"));
    EXPECT_THAT(text,
                ::testing::HasSubstr("[[[0.0,0.3],[0.0,0.0],[0.3,0.0],[0.3,0.3],[0.0,0.3]]]"));
}

TEST(RoomsAsGeoJson, RejectsMapsWithoutAPlace) {
    const cv::Mat labels = labels32("1");
    const std::vector<RoomFeature> rooms = featuresOf(labels);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double resolution : {0.0, -0.05, nan}) {
        EXPECT_THAT([&] { roomsAsGeoJson(mapOf(labels, resolution, {}), rooms); },
                    ThrowsMessage<std::invalid_argument>(
                        "roomsAsGeoJson: The resolution must be positive."));
    }
    const double infinity = std::numeric_limits<double>::infinity();
    for (const Origin& origin : {Origin{nan, 0.0, 0.0}, Origin{0.0, infinity, 0.0},
                                 Origin{0.0, 0.0, nan}, Origin{1e10, 0.0, 0.0}}) {
        EXPECT_THAT([&] { roomsAsGeoJson(mapOf(labels, 0.05, origin), rooms); },
                    ThrowsMessage<std::invalid_argument>(
                        "roomsAsGeoJson: A number is not finite or too large."));
    }
}

TEST(RoomsAsGeoJson, RejectsRoomsWithoutAnOutline) {
    RoomFeature room;
    room.outline.label = 12;
    EXPECT_THAT([&] { roomsAsGeoJson(mapOf(labels32("1"), 0.05, {}), {room}); },
                ThrowsMessage<std::invalid_argument>("roomsAsGeoJson: Room 12 has no outline."));
}

}  // namespace
}  // namespace vorund::rooms
