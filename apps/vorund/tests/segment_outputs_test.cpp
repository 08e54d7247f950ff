#include <cstdint>
#include <nlohmann/json.hpp>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

using Json = nlohmann::json;

constexpr double kPixelArea = 0.05 * 0.05;  // [m^2]

class SegmentOutputs : public CliTest {
 protected:
    Json json(const std::string& name) const { return Json::parse(readFile(out() + "/" + name)); }
};

/// Two rooms, and in the wall below them a closet of 0.525 m^2 without a door.
cv::Mat twoRoomsAndACloset() {
    cv::Mat map;
    cv::copyMakeBorder(twoRooms(), map, 0, 30, 0, 0, cv::BORDER_CONSTANT, cv::Scalar(0));
    map(cv::Rect(60, 85, 14, 15)) = 254;
    return map;
}

TEST_F(SegmentOutputs, AreTheFilesOfOneRun) {
    ASSERT_EQ(segment(image("map.png", twoRooms())).status, 0);
    EXPECT_THAT(names(out()),
                ElementsAre("borders.png", "cuts.png", "graph.png", "rooms.geojson", "rooms.json",
                            "rooms.png", "rooms_color.png", "segments.png", "segments_color.png"));
}

TEST_F(SegmentOutputs, NumberTheRoomsInReadingOrder) {
    ASSERT_EQ(segment(image("map.png", twoRooms())).status, 0);
    const cv::Mat rooms = result("rooms.png");
    ASSERT_EQ(rooms.type(), CV_8UC1);
    ASSERT_EQ(rooms.size(), cv::Size(140, 80));
    EXPECT_EQ(rooms.at<std::uint8_t>(40, 38), 1);
    EXPECT_EQ(rooms.at<std::uint8_t>(40, 102), 2);
    EXPECT_EQ(rooms.at<std::uint8_t>(2, 2), 0);
    EXPECT_EQ(cv::countNonZero(rooms > 2), 0);
}

TEST_F(SegmentOutputs, HoldPicturesForPeople) {
    ASSERT_EQ(segment(image("map.png", twoRooms())).status, 0);
    for (const char* name : {"rooms_color.png", "borders.png", "cuts.png", "graph.png"}) {
        EXPECT_EQ(result(name).type(), CV_8UC3) << name;
    }
    EXPECT_EQ(result("rooms_color.png").size(), cv::Size(140, 80));
}

TEST_F(SegmentOutputs, TellOfRoomsAndBorders) {
    ASSERT_EQ(segment(image("map.png", twoRooms())).status, 0);
    const Json rooms = json("rooms.json");
    EXPECT_EQ(rooms["format"], 1);
    EXPECT_EQ(rooms["map"]["width"], 140);
    EXPECT_EQ(rooms["map"]["height"], 80);
    const cv::Mat labels = result("rooms.png");
    ASSERT_EQ(rooms["rooms"].size(), 2U);
    for (int label = 1; label <= 2; ++label) {
        const Json& room = rooms["rooms"][static_cast<std::size_t>(label - 1)];
        EXPECT_EQ(room["label"], label);
        EXPECT_NEAR(room["area_m2"].get<double>(), cv::countNonZero(labels == label) * kPixelArea,
                    1e-6);
    }
    ASSERT_EQ(rooms["borders"].size(), 1U);
    EXPECT_EQ(rooms["borders"][0]["rooms"], (Json{1, 2}));
    EXPECT_EQ(rooms["islands"], Json::array());
}

TEST_F(SegmentOutputs, HoldTheOutlinesInMetres) {
    ASSERT_EQ(segment(image("map.png", twoRooms())).status, 0);
    const Json outlines = json("rooms.geojson");
    EXPECT_EQ(outlines["type"], "FeatureCollection");
    ASSERT_EQ(outlines["features"].size(), 2U);
    EXPECT_EQ(outlines["features"][0]["id"], 1);
    EXPECT_EQ(outlines["features"][1]["id"], 2);
    // All of the map lies within 7 m x 4 m.
    for (const Json& point : outlines["features"][1]["geometry"]["coordinates"][0]) {
        EXPECT_GE(point[0].get<double>(), 0.0);
        EXPECT_LE(point[0].get<double>(), 7.0);
        EXPECT_GE(point[1].get<double>(), 0.0);
        EXPECT_LE(point[1].get<double>(), 4.0);
    }
}

TEST_F(SegmentOutputs, HaveTheSameBytesOnEveryRun) {
    const std::string map = image("map.png", twoRoomsAndACloset());
    ASSERT_EQ(segment(map).status, 0);
    const std::string again = folder_.file("again");
    ASSERT_EQ(runProgram({"segment", map, "--out", again}).status, 0);
    ASSERT_EQ(names(again), names(out()));
    for (const std::string& name : names(again)) {
        EXPECT_TRUE(readFile(again + "/" + name) == readFile(out() + "/" + name)) << name;
    }
}

TEST_F(SegmentOutputs, TellOfOneRoomAndOfIslandsInOneLine) {
    const cv::Mat one_room = twoRooms()(cv::Rect(0, 0, 68, 80));
    cv::Mat closed;
    cv::copyMakeBorder(one_room, closed, 0, 0, 0, 2, cv::BORDER_CONSTANT, cv::Scalar(0));
    EXPECT_THAT(segment(image("one.png", closed)).out,
                MatchesRegex("1 room, 70 x 80 pixels \\(3.5 m x 4.0 m\\), [0-9.]+ s\n"));
    EXPECT_THAT(segment(image("island.png", twoRoomsAndACloset()),
                        {"--set", "rooms/clear_clutter=false"})
                    .out,
                MatchesRegex("2 rooms, 1 island removed, 140 x 110 pixels \\(7.0 m x 5.5 m\\), "
                             "[0-9.]+ s\n"));
    const Json islands = json("rooms.json")["islands"];
    ASSERT_EQ(islands.size(), 1U);
    EXPECT_LE(islands[0]["area_m2"].get<double>(), 14 * 15 * kPixelArea);
}

TEST_F(SegmentOutputs, FollowTheSettingsOfRooms) {
    const std::string map = image("map.png", twoRooms());
    ASSERT_EQ(segment(map).status, 0);
    EXPECT_EQ(json("rooms.json")["settings"]["rooms"]["straight_borders"], false);
    ASSERT_EQ(segment(map, {"--straight-borders"}).status, 0);
    const std::string by_option = readFile(out() + "/rooms.json");
    EXPECT_EQ(Json::parse(by_option)["settings"]["rooms"]["straight_borders"], true);
    const std::string file = folder_.write("settings.yaml", "rooms: {straight_borders: true}");
    ASSERT_EQ(segment(map, {"--config", file}).status, 0);
    EXPECT_EQ(readFile(out() + "/rooms.json"), by_option);
}

TEST_F(SegmentOutputs, TellOfBlocks) {
    // A room of 15 m x 15 m, and blocks of 10 m x 10 m with what is seen around them.
    cv::Mat map(340, 340, CV_8UC1, cv::Scalar(0));
    map(cv::Rect(20, 20, 300, 300)) = 254;
    ASSERT_EQ(segment(image("map.png", map)).status, 0);
    EXPECT_EQ(json("rooms.json")["blocks"], 1);
    EXPECT_THAT(segment(image("map.png", map),
                        {"--set", "rooms/blocks=always", "--set", "rooms/block_pixels=40000"})
                    .out,
                MatchesRegex("1 room, found in [0-9]+ blocks, 340 x 340 pixels .17.0 m x 17.0 m., "
                             "[0-9.]+ s\n"));
    EXPECT_GE(json("rooms.json")["blocks"], 4);
    const cv::Mat segments = result("segments.png");
    EXPECT_EQ(segments.type(), CV_8UC1) << "one region needs no more";
    EXPECT_EQ(cv::countNonZero(segments == 1), 300 * 300);
}

TEST_F(SegmentOutputs, HaveManyRegionsIn16Bits) {
    // 18 x 18 rooms of 1.5 m x 1.5 m with doors of 0.7 m.
    cv::Mat map(18 * 34 + 20, 18 * 34 + 20, CV_8UC1, cv::Scalar(0));
    for (int row = 0; row < 18; ++row) {
        for (int col = 0; col < 18; ++col) {
            const cv::Point corner(10 + 34 * col, 10 + 34 * row);
            map(cv::Rect(corner, cv::Size(30, 30))) = 254;
            if (col > 0) map(cv::Rect(corner.x - 4, corner.y + 8, 4, 14)) = 254;
            if (row > 0) map(cv::Rect(corner.x + 8, corner.y - 4, 14, 4)) = 254;
        }
    }
    // Nothing joins the pieces of wall between four doors to the rest: they are no clutter here.
    ASSERT_EQ(segment(image("map.png", map), {"--set", "rooms/clear_clutter=false"}).status, 0);
    EXPECT_EQ(json("rooms.json")["rooms"].size(), 324U);
    for (const std::string name : {"segments.png", "rooms.png"}) {
        const cv::Mat labels = result(name);
        EXPECT_EQ(labels.type(), CV_16UC1) << name;
        EXPECT_EQ(cv::countNonZero(labels), cv::countNonZero(map)) << name;
    }
    EXPECT_EQ(cv::countNonZero(result("segments.png") == 255), 0) << "that is unreached floor";
}

TEST_F(SegmentOutputs, JoinRoomsAsTheSettingsSay) {
    // The door is 0.7 m wide: nothing parts the rooms if borders above 0.3 m are open, nor if the
    // smallest opening is no doorway.
    const std::string map = image("map.png", twoRooms());
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--set", "rooms/merging=passes", "--set",
                                   "merge_edges_in_place/length_threshold=0.3"},
          std::vector<std::string>{"--set", "rooms/narrow_ratio=0"}}) {
        EXPECT_THAT(segment(map, options).out, ::testing::StartsWith("1 room, "));
        EXPECT_EQ(cv::countNonZero(result("rooms.png") > 1), 0);
    }
}

}  // namespace
}  // namespace vorund::test
