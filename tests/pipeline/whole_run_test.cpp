#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/captures.h"
#include "support/drawn_plans.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/ridge_filter.h"

namespace vorund {
namespace {

using test::asView;
using test::ConsoleCapture;
using test::ConsoleLine;
using test::DrawnPlan;
using test::MatEq;
using test::PlainCapture;
using test::TempDir;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

constexpr int kBackground = 0;
constexpr int kUnreached = 255;

/// Whole runs whose files go to a folder of their own and whose lines are caught.
class WholeRun : public ::testing::Test {
 protected:
    DebuggerConfig debuggerConfig() const {
        DebuggerConfig config;
        config.output_dir = dir_.path();
        config.log_level = LogLevel::DEBUG;
        return config;
    }

    cv::Mat segment(const cv::Mat& map, const Config& config = Config()) const {
        return FloorplanSegmenter(config, Debugger::create(debuggerConfig())).doSegment(map);
    }

    /// Segments with all pictures saved.
    cv::Mat segmentWithPictures(const cv::Mat& map) const {
        DebuggerConfig config = debuggerConfig();
        config.save_images = true;
        return FloorplanSegmenter(Config(), Debugger::create(config)).doSegment(map);
    }

    cv::Mat picture(const std::string& name) const {
        const cv::Mat image = cv::imread(dir_.file(name + ".png"), cv::IMREAD_UNCHANGED);
        EXPECT_FALSE(image.empty()) << name;
        return image;
    }

    TempDir dir_;
    ConsoleCapture console_;
    PlainCapture plain_;
};

std::set<int> roomsOf(const cv::Mat& segments) {
    std::set<int> rooms;
    for (int row = 0; row < segments.rows; ++row) {
        for (int col = 0; col < segments.cols; ++col) {
            rooms.insert(segments.at<std::uint8_t>(row, col));
        }
    }
    rooms.erase(kBackground);
    rooms.erase(kUnreached);
    return rooms;
}

/// Asserts that the points of each room share a label that no other room has.
void expectARoomEach(const DrawnPlan& plan, const cv::Mat& segments) {
    std::vector<int> labels(plan.rooms.size(), kBackground);
    for (std::size_t i = 0; i < plan.inside.size(); ++i) {
        const int label = segments.at<std::uint8_t>(plan.inside[i]);
        EXPECT_NE(label, kBackground) << plan.inside[i];
        EXPECT_NE(label, kUnreached) << plan.inside[i];
        int& label_of_room = labels[static_cast<std::size_t>(plan.room_of[i])];
        if (label_of_room == kBackground) label_of_room = label;
        EXPECT_EQ(label, label_of_room) << plan.inside[i];
    }
    EXPECT_EQ(std::set<int>(labels.begin(), labels.end()).size(), labels.size());
    EXPECT_EQ(roomsOf(segments).size(), plan.rooms.size());
}

TEST_F(WholeRun, FindsTwoRoomsThatShareADoor) {
    const DrawnPlan plan = test::twoRooms();
    const cv::Mat before = plan.map.clone();
    const cv::Mat segments = segment(plan.map);
    EXPECT_EQ(segments.type(), CV_8UC1);
    EXPECT_EQ(segments.size(), plan.map.size());
    expectARoomEach(plan, segments);
    EXPECT_THAT(plan.map, MatEq(before));
}

TEST_F(WholeRun, FindsSixRoomsAndAPieceOfTheirCorridorPerPairOfDoors) {
    const DrawnPlan plan = test::corridorWithSixRooms();
    const cv::Mat segments = segment(plan.map);
    expectARoomEach(plan, segments);
    EXPECT_EQ(roomsOf(segments).size(), 9U);
    EXPECT_EQ(console_.texts().back(), "Segment finish with 9 regions");
}

TEST_F(WholeRun, GivesWallsToTheBackground) {
    for (const DrawnPlan& plan : {test::twoRooms(), test::corridorWithSixRooms()}) {
        const cv::Mat segments = segment(plan.map);
        cv::Mat walls_with_a_label;
        cv::bitwise_and(segments != kBackground, plan.map == 1.0, walls_with_a_label);
        EXPECT_EQ(cv::countNonZero(walls_with_a_label), 0);
    }
}

TEST_F(WholeRun, GivesTheSameBytesOnASecondRun) {
    const cv::Mat map = test::corridorWithSixRooms().map;
    const Config config;
    FloorplanSegmenter segmenter(config, Debugger::create(debuggerConfig()));
    const cv::Mat first = segmenter.doSegment(map);
    const std::vector<ConsoleLine> first_lines = console_.lines();
    const std::string first_text = plain_.text();
    console_.clear();
    plain_.clear();
    EXPECT_THAT(segmenter.doSegment(map), MatEq(first));
    EXPECT_EQ(console_.lines(), first_lines);
    EXPECT_EQ(plain_.text(), first_text);
    EXPECT_THAT(segment(map), MatEq(first));
}

TEST_F(WholeRun, ReadsAViewLikeItsCopy) {
    const cv::Mat map = test::twoRooms().map;
    const cv::Mat view = asView(map);
    EXPECT_THAT(segment(view), MatEq(segment(map)));
    EXPECT_THAT(view, MatEq(map));
}

TEST_F(WholeRun, DoesNotDependOnTheWidthOfTheMargin) {
    const DrawnPlan plan = test::twoRooms();
    cv::Mat wide;
    cv::copyMakeBorder(plan.map, wide, 30, 7, 11, 40, cv::BORDER_CONSTANT, cv::Scalar(1.0));
    const cv::Mat segments = segment(wide);
    EXPECT_EQ(segments.size(), wide.size());
    EXPECT_THAT(segments(cv::Rect({11, 30}, plan.map.size())).clone(), MatEq(segment(plan.map)));
}

TEST_F(WholeRun, GivesTheSameWithAndWithoutAlignment) {
    const cv::Mat map = test::twoRooms().map;
    Config config;
    const cv::Mat skipped = segment(map, config);
    std::vector<ConsoleLine> expected = console_.lines();
    const ConsoleLine skipped_line{"INFO", "Map alignment is skipped."};
    const ConsoleLine configured_line{"WARN", "Map alignment is configured but not implemented."};
    ASSERT_THAT(expected, Contains(skipped_line));
    std::replace(expected.begin(), expected.end(), skipped_line, configured_line);
    console_.clear();
    config.alignment = true;
    EXPECT_THAT(segment(map, config), MatEq(skipped));
    EXPECT_EQ(console_.lines(), expected);
}

TEST_F(WholeRun, LogsItsStagesInOrder) {
    segment(test::twoRooms().map);
    std::vector<std::string> texts;
    for (const ConsoleLine& line : console_.lines()) {
        EXPECT_EQ(line.level, "INFO") << line.text;
        const bool is_scale = line.text.rfind("[computeLabelsList] iter: ", 0) == 0;
        const bool is_first_scale = line.text.rfind("[computeLabelsList] iter: 0, ", 0) == 0;
        if (!is_scale || is_first_scale) texts.push_back(line.text);
    }
    EXPECT_THAT(
        texts,
        ElementsAre("Starting floor plan segmentation", "Map alignment is skipped.",
                    // The walls of 12 pixels around the content, less the padding of 5.
                    "crop_info: 7, 7, 7, 7", "Generated denoised rank map and crop info",
                    StartsWith("[computeLabelsList] iter: 0, sigma: 1.000000, ncc: "),
                    "Completed over-segmentation",
                    "Starting boundary filling with second watershed", "Completed boundary filling",
                    "Final segmentation completed", "Segment finish with 2 regions"));
}

TEST_F(WholeRun, WritesItsLinesToTheSessionLogSaveThoseThatBypassTheDebugger) {
    DebuggerConfig quiet = debuggerConfig();
    quiet.log_level = LogLevel::ERROR;
    const std::shared_ptr<Debugger> debugger = Debugger::create(quiet);
    debugger->initLog();
    FloorplanSegmenter(Config(), debugger).doSegment(test::twoRooms().map);
    debugger->saveLog();
    std::vector<std::string> lines;
    constexpr std::size_t kStampLength = 26;
    for (const std::string& line : test::splitLines(test::readFile(dir_.file(quiet.log_file)))) {
        lines.push_back(line.substr(kStampLength));
    }
    EXPECT_THAT(lines, ElementsAre("[INFO] === Floorplan Segmentation Debug Session Started ===",
                                   "[INFO] Starting floor plan segmentation",
                                   "[INFO] Generated denoised rank map and crop info",
                                   "[INFO] Completed over-segmentation",
                                   "[INFO] Starting boundary filling with second watershed",
                                   "[INFO] Completed boundary filling",
                                   "[INFO] Final segmentation completed",
                                   "[INFO] Segment finish with 2 regions",
                                   "[INFO] === Floorplan Segmentation Debug Session Ended ==="));
    EXPECT_THAT(console_.texts(), Contains("Map alignment is skipped."));
    EXPECT_THAT(console_.texts(), Not(Contains("Completed over-segmentation")));
}

TEST_F(WholeRun, WritesNoPictureUnlessAsked) {
    segment(test::twoRooms().map);
    EXPECT_THAT(dir_.names(), IsEmpty());
}

TEST_F(WholeRun, WritesItsPicturesInTheOrderOfTheStages) {
    segmentWithPictures(test::twoRooms().map);
    const std::string saved = "Image saved: " + dir_.path() + "/";
    std::vector<std::string> pictures;
    for (const std::string& text : console_.texts("DEBUG")) {
        ASSERT_THAT(text, StartsWith(saved));
        // The scales and the tracking have one picture per scale or label: once each here.
        std::string name = text.substr(saved.size());
        for (const std::string series : {"40cpp_gaussian_seeds_sigma_",
                                         "50cpp_local_global_label_sigma_", "52cpp_seed_label_"}) {
            if (name.rfind(series, 0) == 0) name = series;
        }
        if (pictures.empty() || pictures.back() != name) pictures.push_back(name);
    }
    const std::vector<std::string> expected = {"10cpp_rank_binary.png",
                                               "11cpp_rank_inverted.png",
                                               "12cpp_rank_no_small_out.png",
                                               "13cpp_rank_inverted.png",
                                               "14cpp_rank_denoised.png",
                                               "20cpp_binary_dilated.png",
                                               "30cpp_ridges.png",
                                               "31cpp_boundary.png",
                                               "40cpp_gaussian_seeds_sigma_",
                                               "50cpp_local_global_label_sigma_"};
    ASSERT_GT(pictures.size(), expected.size());
    EXPECT_THAT(std::vector<std::string>(pictures.begin(),
                                         pictures.begin() + static_cast<long>(expected.size())),
                ElementsAreArray(expected));
    EXPECT_THAT(std::vector<std::string>(pictures.end() - 5, pictures.end()),
                ElementsAre("53cpp_superposed_seeds_raw.png", "54cpp_over_segmented.png",
                            "55cpp_boundary_fill_seeds.png", "56cpp_boundary_filled_segments.png",
                            "90cpp_final_segmented_map.png"));
}

TEST_F(WholeRun, WritesTheSamePicturesOnASecondRun) {
    const cv::Mat map = test::twoRooms().map;
    segmentWithPictures(map);
    std::vector<std::string> bytes;
    const std::vector<std::string> names = dir_.names();
    for (const std::string& name : names) bytes.push_back(test::readFile(dir_.file(name)));
    segmentWithPictures(map);
    EXPECT_EQ(dir_.names(), names);
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_TRUE(test::readFile(dir_.file(names[i])) == bytes[i]) << names[i];
    }
}

/// The seeds of the filling: the over-segmentation without 255, and 255 on walls.
cv::Mat plainSeeds(const cv::Mat& over_segmented, const cv::Mat& denoised) {
    cv::Mat seeds = over_segmented.clone();
    for (int row = 0; row < seeds.rows; ++row) {
        for (int col = 0; col < seeds.cols; ++col) {
            std::uint8_t& seed = seeds.at<std::uint8_t>(row, col);
            if (seed == 255) seed = 0;
            if (denoised.at<std::uint8_t>(row, col) == 255) seed = 255;
        }
    }
    return seeds;
}

TEST_F(WholeRun, FillsTheLinesBetweenRoomsAndKeepsWallsAsBackground) {
    segmentWithPictures(test::corridorWithSixRooms().map);
    const cv::Mat denoised = picture("14cpp_rank_denoised");
    const cv::Mat over_segmented = picture("54cpp_over_segmented");
    const cv::Mat filled = picture("56cpp_boundary_filled_segments");
    const cv::Mat seeds = plainSeeds(over_segmented, denoised);
    EXPECT_THAT(picture("55cpp_boundary_fill_seeds"), MatEq(seeds));
    int lines_on_floor = 0;
    for (int row = 0; row < filled.rows; ++row) {
        for (int col = 0; col < filled.cols; ++col) {
            const int result = filled.at<std::uint8_t>(row, col);
            const int seed = seeds.at<std::uint8_t>(row, col);
            if (seed == 0) {
                // A line: some room or the background floods it, as all of the floor is in reach.
                ++lines_on_floor;
                EXPECT_NE(result, kUnreached);
            } else {
                EXPECT_EQ(result, seed == 255 ? kBackground : seed);
            }
        }
    }
    EXPECT_GT(lines_on_floor, 0);
}

TEST_F(WholeRun, PutsTheCropBackAndTakesTheLargestLabelAsUnreached) {
    const DrawnPlan plan = test::twoRooms();
    const cv::Mat segments = segmentWithPictures(plan.map);
    EXPECT_THAT(picture("90cpp_final_segmented_map"), MatEq(segments));
    double largest = 0.0;
    cv::minMaxLoc(picture("54cpp_over_segmented"), nullptr, &largest);
    const cv::Mat filled = picture("56cpp_boundary_filled_segments");
    ASSERT_THAT(console_.texts(), Contains("crop_info: 7, 7, 7, 7"));
    cv::Mat expected = cv::Mat::zeros(plan.map.size(), CV_8UC1);
    for (int row = 0; row < filled.rows; ++row) {
        for (int col = 0; col < filled.cols; ++col) {
            const std::uint8_t label = filled.at<std::uint8_t>(row, col);
            expected.at<std::uint8_t>(row + 7, col + 7) =
                label == static_cast<int>(largest) ? std::uint8_t{255} : label;
        }
    }
    EXPECT_THAT(segments, MatEq(expected));
}

TEST_F(WholeRun, GivesEachStageTheImageItIsMeantFor) {
    const cv::Mat map = test::corridorWithSixRooms().map;
    segmentWithPictures(map);
    std::vector<std::string> lines;
    for (const std::string& text : console_.texts("INFO")) {
        if (text.rfind("[computeLabelsList] iter: ", 0) == 0) lines.push_back(text);
    }
    console_.clear();

    const Config config;
    FloorplanSegmenter segmenter(config, Debugger::create(debuggerConfig()));
    const cv::Mat denoised =
        segmenter.generateDenoisedAlone(map, config.generate_denoised_alone).first;
    const cv::Mat dilated = ImageUtils::dilateBinary(denoised, config.dilate_binary.kernel_size,
                                                     config.dilate_binary.iterations);
    // Ridges and boundary are those of the map before its dilation, the scales those of after.
    const cv::Mat ridges =
        RidgeFilter::generateRidgeMapMeijering(denoised, config.generate_ridge_map_meijering);
    const cv::Mat boundary = RidgeFilter::generateBoundaryFromDilated(denoised);
    console_.clear();
    const LabelsListResult scales =
        segmenter.computeLabelsList(dilated, denoised, config.compute_labels_list);
    EXPECT_EQ(console_.texts(), lines);
    const auto [rooms, largest] = segmenter.overSegment(ridges, scales, config.over_segment);

    EXPECT_THAT(picture("14cpp_rank_denoised"), MatEq(Debugger::prepareImageForSaving(denoised)));
    EXPECT_THAT(picture("20cpp_binary_dilated"), MatEq(Debugger::prepareImageForSaving(dilated)));
    EXPECT_THAT(picture("30cpp_ridges"), MatEq(Debugger::prepareImageForSaving(ridges)));
    EXPECT_THAT(picture("31cpp_boundary"), MatEq(Debugger::prepareImageForSaving(boundary)));
    EXPECT_THAT(picture("54cpp_over_segmented"), MatEq(rooms));
}

TEST_F(WholeRun, CountsNoRegionWhereNoSeedIsLeft) {
    // No label lives for that many scales.
    Config config;
    config.over_segment.generate_map_initial_seeds.filter_threshold = 100000;
    const DrawnPlan plan = test::twoRooms();
    const cv::Mat segments = segment(plan.map, config);
    EXPECT_THAT(roomsOf(segments), IsEmpty());
    // The background floods everything, so 0 is the largest label, the one that becomes 255.
    EXPECT_THAT(segments, MatEq(cv::Mat(plan.map.size(), CV_8UC1, cv::Scalar(kUnreached))));
    ASSERT_FALSE(console_.texts().empty());
    EXPECT_EQ(console_.texts().back(), "Segment finish with 0 regions");
}

TEST_F(WholeRun, DoesNotUseTheSettingsOfTheMerging) {
    const cv::Mat map = test::twoRooms().map;
    Config config;
    config.merge_nodes_in_place.area_threshold = 1000.0;
    config.merge_edges_in_place.length_threshold = 0.0;
    config.sigma_start = 55.0;
    config.sigma_step = 0.0;
    config.binary_threshold = 2.0;
    config.generate_denoised_alone.rank_make_binary.threshold = 9.0;
    EXPECT_THAT(segment(map, config), MatEq(segment(map)));
}

TEST_F(WholeRun, LetsTheExceptionsOfItsStagesPass) {
    const cv::Mat map = test::twoRooms().map;
    Config without_scales;
    without_scales.compute_labels_list.max_iter = 0;
    EXPECT_THAT([&] { segment(map, without_scales); },
                ThrowsMessage<std::runtime_error>("overSegment: labels_list is empty."));
    Config unknown_method;
    unknown_method.generate_denoised_alone.components_in_remove_small_connected_components.method =
        "all";
    EXPECT_THAT([&] { segment(map, unknown_method); },
                ThrowsMessage<std::runtime_error>("Invalid method in "
                                                  "removeSmallConnectedComponents"));
    EXPECT_THAT([&] { segment(cv::Mat(1, 1, CV_32FC1, cv::Scalar(1.0))); },
                ThrowsMessage<std::runtime_error>("cropSingleInfo expects a non-empty image."));
}

TEST_F(WholeRun, GivesTheSameAfterARunThatFailed) {
    const cv::Mat map = test::twoRooms().map;
    FloorplanSegmenter segmenter(Config(), Debugger::create(debuggerConfig()));
    const cv::Mat first = segmenter.doSegment(map);
    EXPECT_THROW(segmenter.doSegment(cv::Mat::zeros(9, 9, CV_32FC1)), std::runtime_error);
    EXPECT_THAT(segmenter.doSegment(map), MatEq(first));
}

TEST_F(WholeRun, ServesSeveralThreadsThatShareOneDebugger) {
    const std::vector<cv::Mat> maps = {test::twoRooms().map, test::corridorWithSixRooms().map};
    std::vector<cv::Mat> expected;
    for (const cv::Mat& map : maps) expected.push_back(segment(map));
    std::vector<std::string> expected_texts = console_.texts();
    std::vector<std::string> expected_plain = plain_.lines();
    console_.clear();
    plain_.clear();

    const std::shared_ptr<Debugger> debugger = Debugger::create(debuggerConfig());
    debugger->initLog();
    std::vector<cv::Mat> results(maps.size());
    std::vector<std::exception_ptr> failures(maps.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < maps.size(); ++i) {
        threads.emplace_back([&, i] {
            try {
                results[i] = FloorplanSegmenter(Config(), debugger).doSegment(maps[i]);
            } catch (...) {
                failures[i] = std::current_exception();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < maps.size(); ++i) {
        EXPECT_EQ(failures[i], nullptr);
        EXPECT_THAT(results[i], MatEq(expected[i]));
    }
    // The lines of both runs, whole, in some order.
    EXPECT_THAT(console_.texts(), testing::UnorderedElementsAreArray(expected_texts));
    std::vector<std::string> plain_lines = plain_.lines();
    std::sort(plain_lines.begin(), plain_lines.end());
    std::sort(expected_plain.begin(), expected_plain.end());
    EXPECT_EQ(plain_lines, expected_plain);
}

}  // namespace
}  // namespace vorund
