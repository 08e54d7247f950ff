#include "vorund/rooms/segment_map.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/mat_matchers.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::Throws;
using ::testing::ThrowsMessage;

/// A part of a plan. [m], y down as in the image
struct Box {
    double x;
    double y;
    double width;
    double height;
};

/// A map of the given size that is all wall except for the boxes.
GridMap mapOf(double width, double height, const std::vector<Box>& floor,
              double resolution = kWorkingResolution) {
    const auto pixels = [resolution](double metres) {
        return static_cast<int>(std::lround(metres / resolution));
    };
    GridMap map;
    map.resolution = resolution;
    map.values = cv::Mat(pixels(height), pixels(width), CV_32FC1, cv::Scalar(1.0));
    for (const Box& box : floor) {
        const cv::Point from(pixels(box.x), pixels(box.y));
        const cv::Point to(pixels(box.x + box.width), pixels(box.y + box.height));
        map.values(cv::Rect(from, to)) = cv::Scalar(0.0);
    }
    map.picture = cv::Mat(map.values.size(), CV_8UC1, cv::Scalar(0));
    map.picture.setTo(254, map.values == 0.0);
    return map;
}

/// Two rooms of 3 m x 3 m side by side, 0.7 m of wall between them, and a door of 0.7 m.
const std::vector<Box> kTwoRooms{{1.4, 1.4, 3.0, 3.0}, {5.1, 1.4, 3.0, 3.0}, {4.4, 2.8, 0.7, 0.7}};

int labelAt(const cv::Mat& labels, const GridMap& map, double x, double y) {
    return labels.at<std::uint8_t>(static_cast<int>(y / map.resolution),
                                   static_cast<int>(x / map.resolution));
}

std::set<int> labelsIn(const cv::Mat& labels) {
    return {labels.begin<std::uint8_t>(), labels.end<std::uint8_t>()};
}

class SegmentMap : public ::testing::Test {
 protected:
    FloorplanSegmenter segmenterOf(const Config& config) const {
        DebuggerConfig debug;
        debug.output_dir = dir_.path();
        return {config, Debugger::create(debug)};
    }

    cv::Mat segment(const GridMap& map, const Config& config = {}) const {
        FloorplanSegmenter segmenter = segmenterOf(config);
        return segmentMap(map, segmenter);
    }

    /// Expects a room of its own on either side of the door of `kTwoRooms`, and no label on walls.
    void expectTwoRooms(const GridMap& map, const cv::Mat& labels) const {
        ASSERT_EQ(labels.type(), CV_8UC1);
        ASSERT_EQ(labels.size(), map.values.size());
        const int left = labelAt(labels, map, 2.9, 2.9);
        const int right = labelAt(labels, map, 6.6, 2.9);
        EXPECT_NE(left, right);
        EXPECT_EQ(labelsIn(labels), (std::set<int>{0, left, right}));
        for (const double offset : {0.1, 2.9}) {
            EXPECT_EQ(labelAt(labels, map, 1.4 + offset, 1.5), left);
            EXPECT_EQ(labelAt(labels, map, 1.5, 1.4 + offset), left);
            EXPECT_EQ(labelAt(labels, map, 5.1 + offset, 4.3), right);
        }
        EXPECT_THAT(labels != 0, MatEq(map.values == 0.0)) << "all floor, and no wall";
    }

    test::ConsoleCapture console_;
    test::PlainCapture plain_;
    test::TempDir dir_;
};

class SegmentMapAtResolution : public SegmentMap, public ::testing::WithParamInterface<double> {};

TEST_P(SegmentMapAtResolution, FindsTheTwoRoomsOfAPlan) {
    const GridMap map = mapOf(9.8, 5.6, kTwoRooms, GetParam());
    expectTwoRooms(map, segment(map));
}

INSTANTIATE_TEST_SUITE_P(Resolutions, SegmentMapAtResolution,
                         ::testing::Values(0.025, 0.03, 0.05, 0.07, 0.1), [](const auto& tested) {
                             return std::to_string(std::lround(tested.param * 1000.0)) + "mm";
                         });

TEST_F(SegmentMap, GivesWhatTheCoreGivesWhereFloorKeepsFromTheEdge) {
    const GridMap map = mapOf(9.8, 5.6, kTwoRooms);
    FloorplanSegmenter segmenter = segmenterOf({});
    const cv::Mat labels = segmenter.doSegment(map.values);
    EXPECT_THAT(segmentMap(map, segmenter), MatEq(labels));
}

TEST_F(SegmentMap, FillsRoomsThatReachTheEdgeOfTheImage) {
    // The same plan without its outer walls: the rooms end with the image.
    const std::vector<Box> cut{{0.0, 0.0, 3.0, 3.0}, {3.7, 0.0, 3.0, 3.0}, {3.0, 1.4, 0.7, 0.7}};
    for (const double resolution : {0.025, 0.05, 0.1}) {
        const GridMap map = mapOf(6.7, 3.0, cut, resolution);
        const cv::Mat labels = segment(map);
        EXPECT_THAT(labels != 0, MatEq(map.values == 0.0)) << resolution;
        EXPECT_EQ(labelsIn(labels).count(255), 0U) << resolution;
        EXPECT_NE(labelAt(labels, map, 0.01, 0.01), labelAt(labels, map, 6.69, 2.99));
    }
}

TEST_F(SegmentMap, TakesAMapThatIsAllFloorForOneRoom) {
    for (const double resolution : {0.025, 0.05, 0.1}) {
        const GridMap map = mapOf(2.0, 1.0, {{0.0, 0.0, 2.0, 1.0}}, resolution);
        EXPECT_THAT(segment(map), MatEq(cv::Mat(map.values.size(), CV_8UC1, cv::Scalar(1))));
    }
    EXPECT_THAT(console_.lines(), IsEmpty()) << "without a run";
}

TEST_F(SegmentMap, RejectsAMapWithoutFloor) {
    const GridMap map = mapOf(3.0, 3.0, {});
    EXPECT_THAT([&] { segment(map); }, ThrowsMessage<MapError>("no free floor found"));
}

TEST_F(SegmentMap, RejectsAMapThatCannotBeWorkedOn) {
    EXPECT_THAT(
        [&] {
            segment(mapOf(0.5, 0.5, {{0.0, 0.0, 0.5, 0.5}}));
        },
        ThrowsMessage<MapError>("the map has 10 x 10 pixels of 0.05 m: it is smaller than 1 m^2"));
    GridMap map = mapOf(3.0, 3.0, {{1.0, 1.0, 1.0, 1.0}});
    for (const double resolution : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        map.resolution = resolution;
        EXPECT_THAT([&] { segment(map); }, ThrowsMessage<MapError>(HasSubstr("resolution")));
    }
    map.resolution = 1000.0;
    EXPECT_THAT([&] { segment(map); }, ThrowsMessage<MapError>(HasSubstr("too large")));
    EXPECT_THROW(segment(GridMap{}), std::invalid_argument);
}

TEST_F(SegmentMap, TakesANegativeZeroForFloor) {
    GridMap map = mapOf(2.0, 1.0, {{0.0, 0.0, 2.0, 1.0}});
    map.values.setTo(-0.0F);
    EXPECT_THAT(segment(map), MatEq(cv::Mat(map.values.size(), CV_8UC1, cv::Scalar(1))));
}

TEST_F(SegmentMap, RejectsValuesThatAreNone) {
    const char* message = "segmentMap: The values must be CV_32FC1, from 0 to 1.";
    for (const float bad :
         {-0.1F, 1.1F, std::nextafter(1.0F, 2.0F), -std::numeric_limits<float>::denorm_min(),
          std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN()}) {
        GridMap map = mapOf(3.0, 3.0, {{1.0, 1.0, 1.0, 1.0}});
        map.values.at<float>(59, 59) = bad;
        EXPECT_THAT([&] { segment(map); }, ThrowsMessage<std::invalid_argument>(message));
    }
    GridMap map = mapOf(3.0, 3.0, {});
    map.values.convertTo(map.values, CV_8U);
    EXPECT_THAT([&] { segment(map); }, ThrowsMessage<std::invalid_argument>(message));
}

TEST_F(SegmentMap, TellsThatTheFloorIsTooNarrowOrTooSmall) {
    const auto too_small = ThrowsMessage<MapError>(
        StartsWith("no room found: the free floor is too small or too narrow for a seed"));
    // A corridor as wide as two pixels, and a closet of 0.3 m x 0.3 m.
    EXPECT_THAT([&] { segment(mapOf(6.0, 3.0, {{1.0, 1.0, 4.0, 0.1}})); }, too_small);
    EXPECT_THAT([&] { segment(mapOf(3.0, 3.0, {{1.0, 1.0, 0.3, 0.3}})); }, too_small);
}

TEST_F(SegmentMap, TellsThatFloorIsLostAtTheWorkingResolution) {
    // A slit of one pixel of 0.025 m, which shares its working pixels with wall.
    const GridMap map = mapOf(3.0, 3.0, {{1.0, 1.0, 1.0, 0.025}}, 0.025);
    ASSERT_GT(cv::countNonZero(map.values == 0.0), 0);
    EXPECT_THAT([&] { segment(map); },
                ThrowsMessage<MapError>("no room found: the free floor is narrower than the 0.05 m "
                                        "of a pixel"));
}

TEST_F(SegmentMap, TellsThatTheFloorIsWiderThanTheScalesReach) {
    Config config;
    config.compute_labels_list.max_iter = 3;
    const GridMap map = mapOf(9.0, 9.0, {{1.0, 1.0, 7.0, 7.0}});
    EXPECT_THAT([&] { segment(map, config); },
                ThrowsMessage<MapError>("no room found: the floor is wider than the scales reach; "
                                        "raise max_iter or sigma_step in compute_labels_list"));
}

TEST_F(SegmentMap, TellsThatRawValuesHaveNoContent) {
    GridMap map = mapOf(3.0, 3.0, {});
    map.raw = true;
    map.values.setTo(0.05);  // All of it floor for the core, whose threshold is 0.1.
    EXPECT_THAT([&] { segment(map); },
                ThrowsMessage<MapError>("no room found: the map is all floor or all wall at the "
                                        "threshold of generate_denoised_alone"));
}

TEST_F(SegmentMap, TellsThatNoRegionIsLeft) {
    Config config;
    config.generate_denoised_alone.components_in_remove_small_connected_components.min_size =
        1'000'000'000;  // Every wall vanishes.
    EXPECT_THAT([&] { segment(mapOf(9.8, 5.6, kTwoRooms), config); },
                ThrowsMessage<MapError>(StartsWith(
                    "no room found: no region of floor lives long enough over the scales")));
}

TEST_F(SegmentMap, LetsOtherErrorsOfTheCorePass) {
    Config config;
    config.generate_denoised_alone.components_out_remove_small_connected_components.method = "odd";
    EXPECT_THAT(
        [&] { segment(mapOf(9.8, 5.6, kTwoRooms), config); },
        ThrowsMessage<std::runtime_error>("Invalid method in removeSmallConnectedComponents"));
    EXPECT_THAT([&] { segment(mapOf(9.8, 5.6, kTwoRooms), config); }, Not(Throws<MapError>()));
}

TEST_F(SegmentMap, GivesRawValuesToTheCoreAsTheyAre) {
    // Floor at the very edge, and walls of half the height.
    const std::vector<Box> cut{{0.0, 0.0, 3.0, 3.0}, {3.7, 0.0, 3.0, 3.0}, {3.0, 1.4, 0.7, 0.7}};
    GridMap map = mapOf(6.7, 3.0, cut);
    map.values *= 0.4;
    map.raw = true;
    FloorplanSegmenter segmenter = segmenterOf({});
    const cv::Mat labels = segmenter.doSegment(map.values);
    EXPECT_THAT(segmentMap(map, segmenter), MatEq(labels));
}

TEST_F(SegmentMap, HandsTheObserverOn) {
    const GridMap map = mapOf(9.8, 5.6, kTwoRooms);
    FloorplanSegmenter segmenter = segmenterOf({});
    std::vector<std::string> stages;
    segmentMap(map, segmenter, [&](const std::string& stage, int, int) {
        stages.push_back(stage);
        return true;
    });
    ASSERT_FALSE(stages.empty());
    EXPECT_EQ(stages.front(), kStageDenoise);
    EXPECT_EQ(stages.back(), kStageFinished);

    const auto stop = [](const std::string& stage, int, int) { return stage != kStageRidges; };
    EXPECT_THROW(segmentMap(map, segmenter, stop), Cancelled);
}

TEST_F(SegmentMap, LeavesTheMapAlone) {
    const GridMap map = mapOf(9.8, 5.6, kTwoRooms, 0.1);
    const cv::Mat values = map.values.clone();
    const cv::Mat first = segment(map);
    EXPECT_THAT(map.values, MatEq(values));
    EXPECT_THAT(segment(map), MatEq(first));
}

}  // namespace
}  // namespace vorund::rooms
