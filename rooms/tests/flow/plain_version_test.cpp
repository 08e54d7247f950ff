// The way from a map to its rooms gives the same as its plain version.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "flow_run.h"
#include "reference/find_rooms.h"
#include "reference/graph_processor.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/varied_plans.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

namespace fs = std::filesystem;

using reference::PlainRooms;
using reference::regionGraph;
using test::MatEq;

/// Sums of areas and lengths may be made in another order.
constexpr double kRounding = 1e-9;

void expectGraph(const reference::RegionGraph& graph, const reference::RegionGraph& plain) {
    EXPECT_EQ(graph.adjacency, plain.adjacency);
    ASSERT_EQ(graph.nodes.size(), plain.nodes.size());
    for (const auto& [label, data] : graph.nodes) {
        EXPECT_NEAR(data.area, plain.nodes.at(label).area, kRounding) << "room " << label;
    }
    ASSERT_EQ(graph.edges.size(), plain.edges.size());
    for (const auto& [edge, data] : graph.edges) {
        EXPECT_NEAR(data.length, plain.edges.at(edge).length, kRounding);
    }
}

void expectCuts(const Rooms& rooms, const PlainRooms& plain) {
    std::map<Edge, Border> borders;
    for (const Border& border : rooms.borders) {
        borders.emplace(Edge(border.first, border.second), border);
    }
    ASSERT_EQ(borders.size(), plain.merged.graph.edges.size());
    for (const auto& [edge, data] : plain.merged.graph.edges) {
        const Edge numbered(plain.numbers.at(edge.first), plain.numbers.at(edge.second));
        SCOPED_TRACE(std::to_string(numbered.first) + " and " + std::to_string(numbered.second));
        const Border& border = borders.at(numbered);
        EXPECT_NEAR(border.length_m, data.length, kRounding);
        const auto cut = plain.cuts.find(edge);
        ASSERT_EQ(border.door.has_value(), cut != plain.cuts.end());
        if (!border.door) continue;
        EXPECT_EQ(border.door->start.pixel, cv::Point2d(cut->second.start));
        EXPECT_EQ(border.door->end.pixel, cv::Point2d(cut->second.end));
        EXPECT_EQ(border.door->angle, static_cast<double>(cut->second.angle));
        EXPECT_EQ(border.door->weight, static_cast<double>(cut->second.direction_weight));
    }
}

void expectIslands(const Rooms& rooms, const PlainRooms& plain) {
    ASSERT_EQ(rooms.islands.size(), plain.islands.size());
    for (std::size_t i = 0; i < plain.islands.size(); ++i) {
        EXPECT_EQ(rooms.islands[i].area_m2, plain.islands[i].area);
        EXPECT_EQ(rooms.islands[i].position.pixel, cv::Point2d(plain.islands[i].position));
    }
}

void expectSame(const Rooms& rooms, const Told& told, const PlainRooms& plain) {
    EXPECT_THAT(told.segmented, MatEq(plain.segmented));
    ASSERT_FALSE(told.intermediate.empty());
    const RoomGraph& merged = told.intermediate.back();
    EXPECT_THAT(merged.labels, MatEq(plain.merged.segments));
    EXPECT_THAT(merged.borders, MatEq(plain.merged.borders));
    EXPECT_EQ(merged.border_ids, plain.merged.border_ids);
    expectGraph(regionGraph(merged.graph), plain.merged.graph);
    // Centres are rounded with every merge, so that here the order shows.
    if (rooms.settings.rooms.merging == "passes") {
        EXPECT_EQ(regionGraph(merged.graph), plain.merged.graph);
    }
    EXPECT_THAT(rooms.labels, MatEq(plain.labels));
    expectCuts(rooms, plain);
    expectIslands(rooms, plain);
}

/// Those under which maps are run; the others are for the pipeline alone.
std::vector<test::NamedConfig> mainConfigs() {
    std::vector<test::NamedConfig> configs = test::variedConfigs();
    configs.resize(2);
    return configs;
}

using PlanAndConfig = std::tuple<test::VariedPlan, test::NamedConfig>;

class PlainFlowOnPlans : public FindRooms, public ::testing::WithParamInterface<PlanAndConfig> {};

TEST_P(PlainFlowOnPlans, GivesTheSameRooms) {
    const auto& [plan, config] = GetParam();
    const GridMap map = mapOf(test::workingMap(test::makePlan(plan.options)));
    Settings settings;
    settings.core = config.config;
    settings.rooms.straight_borders = plan.options.seed % 2 == 0;
    Told told;
    const Rooms rooms = find(map, settings, observerOf(told));
    const PlainRooms plain = reference::findRooms(map.values, settings);
    EXPECT_GE(plain.merged.graph.nodes.size(), 1U);
    expectSame(rooms, told, plain);
}

std::string nameOf(const ::testing::TestParamInfo<PlanAndConfig>& info) {
    return std::get<0>(info.param).family + "_" + std::get<1>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Generated, PlainFlowOnPlans,
                         ::testing::Combine(::testing::ValuesIn(test::variedPlans()),
                                            ::testing::ValuesIn(mainConfigs())),
                         nameOf);

class PlainFlow : public FindRooms {
 protected:
    /// Whatever thresholds merging has, rooms come together in the same order.
    static Settings merging(double area_threshold, double length_threshold) {
        Settings settings = byPasses();
        settings.core.merge_nodes_in_place.area_threshold = area_threshold;
        settings.core.merge_edges_in_place.length_threshold = length_threshold;
        return settings;
    }
};

TEST_F(PlainFlow, MergesTheSameRooms) {
    test::PlanOptions options;
    options.seed = 11;
    options.width_mm = 15000;
    options.height_mm = 11000;
    options.furniture_percent = 60;
    const GridMap map = mapOf(test::workingMap(test::makePlan(options)));
    std::vector<std::size_t> counts;
    for (const Settings& settings :
         {merging(0.0, 1000.0), merging(4.0, 1.2), merging(12.0, 0.6), merging(0.5, 0.0)}) {
        Told told;
        const Rooms rooms = find(map, settings, observerOf(told));
        expectSame(rooms, told, reference::findRooms(map.values, settings));
        counts.push_back(rooms.rooms.size());
    }
    EXPECT_GT(counts[0], counts[1]);
    EXPECT_GT(counts[1], counts[2]);
    EXPECT_EQ(counts[3], 1U);
}

TEST_F(PlainFlow, MergesTheSameRoomsByPassages) {
    test::PlanOptions options;
    options.seed = 11;
    options.width_mm = 15000;
    options.height_mm = 11000;
    options.furniture_percent = 60;
    const GridMap map = mapOf(test::workingMap(test::makePlan(options)));
    std::vector<std::size_t> counts;
    for (const double ratio : {1.0, 0.5, 0.0}) {
        for (const bool clear_clutter : {false, true}) {
            Settings settings;
            settings.rooms.open_ratio = ratio;
            settings.rooms.narrow_ratio = ratio;
            settings.rooms.doorways = ratio > 0.0;  // They are no open passages at any ratio.
            settings.rooms.clear_clutter = clear_clutter;
            Told told;
            const Rooms rooms = find(map, settings, observerOf(told));
            expectSame(rooms, told, reference::findRooms(map.values, settings));
            counts.push_back(rooms.rooms.size());
        }
    }
    EXPECT_GT(counts[1], counts[5]);
    EXPECT_EQ(counts[5], 1U) << "all that is open is joined";
}

TEST_F(PlainFlow, RemovesTheSameIslandsAndPutsTheSameRimAround) {
    // Two rooms that reach the edge of the image, a closet without a door, and a double one.
    cv::Mat walls(120, 160, CV_8UC1, cv::Scalar(255));
    walls(cv::Rect(0, 0, 78, 80)) = 0;
    walls(cv::Rect(82, 0, 78, 80)) = 0;
    walls(cv::Rect(78, 30, 4, 14)) = 0;
    walls(cv::Rect(10, 90, 14, 16)) = 0;
    walls(cv::Rect(60, 90, 14, 16)) = 0;
    walls(cv::Rect(77, 90, 14, 16)) = 0;
    walls(cv::Rect(74, 94, 3, 5)) = 0;
    const GridMap map = mapOf(walls);
    Settings by_passages;
    by_passages.rooms.clear_clutter = false;
    Settings by_passes = byPasses();
    by_passes.core.merge_nodes_in_place.area_threshold = 2.0;
    for (const Settings& settings : {by_passes, by_passages}) {
        Told told;
        const Rooms rooms = find(map, settings, observerOf(told));
        EXPECT_EQ(rooms.rooms.size(), 2U);
        EXPECT_GE(rooms.islands.size(), 2U);
        expectSame(rooms, told, reference::findRooms(map.values, settings));
    }
}

TEST_F(PlainFlow, FindsTheSameRoomsInNoise) {
    int divided = 0;
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        test::RandomImages random(seed);
        const cv::Size size(60 + random.below(60), 60 + random.below(60));
        const cv::Mat map = (random.patches(size, 25, 1) & 3) == 1;
        Settings settings = seed % 2 == 0 ? byPasses() : Settings{};
        settings.core.generate_denoised_alone.components_in_remove_small_connected_components
            .min_size = 10;
        settings.rooms.straight_borders = random.below(2) == 0;
        Told told;
        try {
            const Rooms rooms = find(mapOf(map), settings, observerOf(told));
            expectSame(rooms, told, reference::findRooms(mapOf(map).values, settings));
            if (rooms.rooms.size() > 1) ++divided;
        } catch (const MapError&) {
            EXPECT_THROW(reference::findRooms(mapOf(map).values, settings), std::runtime_error);
        }
    }
    EXPECT_GE(divided, 20);
}

/// The maps of a folder outside of this project, without the true rooms.
std::vector<std::string> realMaps() {
    std::vector<std::string> paths;
    const char* const folder = std::getenv("VORUND_MAPS");
    if (folder == nullptr || !fs::is_directory(folder)) return paths;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != ".png") continue;
        if (name.find("_gt_segmentation") == std::string::npos) paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

TEST_F(PlainFlow, FindsTheSameRoomsOnRealMaps) {
    const std::vector<std::string> paths = realMaps();
    if (paths.empty()) GTEST_SKIP() << "VORUND_MAPS does not name a folder of maps";
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const GridMap map = readMap(path);
        for (const test::NamedConfig& config : mainConfigs()) {
            Settings settings;
            settings.core = config.config;
            Told told;
            const Rooms rooms = find(map, settings, observerOf(told));
            expectSame(rooms, told, reference::findRooms(map.values, settings));
        }
    }
}

}  // namespace
}  // namespace vorund::rooms
