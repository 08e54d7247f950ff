#include "vorund/floorplan_segmenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/captures.h"
#include "support/drawn_plans.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/watershed_segmenter.h"

namespace vorund {
namespace {

using test::asView;
using test::ConsoleCapture;
using test::ConsoleLine;
using test::labels;
using test::MatEq;
using test::PlainCapture;
using test::TempDir;
using test::values;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

constexpr char kTypeMessage[] =
    "generateDenoisedAlone: Input raw_image must be a single-channel 32-bit float.";

/// A segmenter of its own, whose lines are caught.
class FloorplanSegmenterTest : public ::testing::Test {
 protected:
    FloorplanSegmenterTest() : segmenter_(Config(), debugger(false)) {}

    std::shared_ptr<Debugger> debugger(bool save_images) const {
        DebuggerConfig config;
        config.output_dir = dir_.path();
        config.save_images = save_images;
        config.log_level = LogLevel::DEBUG;
        return Debugger::create(config);
    }

    TempDir dir_;
    ConsoleCapture console_;
    PlainCapture plain_;
    FloorplanSegmenter segmenter_;
};

TEST_F(FloorplanSegmenterTest, NeedsADebugger) {
    EXPECT_THAT([] { FloorplanSegmenter(Config(), nullptr); },
                ThrowsMessage<std::runtime_error>("FloorplanSegmenter: debugger cannot be null"));
}

TEST_F(FloorplanSegmenterTest, KeepsACopyOfItsConfigurationAndAShareOfItsDebugger) {
    Config config;
    std::shared_ptr<Debugger> shared = debugger(false);
    FloorplanSegmenter segmenter(config, shared);
    EXPECT_EQ(shared.use_count(), 2);
    config.alignment = true;
    segmenter.doSegment(test::twoRooms().map);
    EXPECT_THAT(console_.texts(), testing::Contains("Map alignment is skipped."));
    EXPECT_EQ(shared.use_count(), 2);
}

class GenerateDenoisedAlone : public FloorplanSegmenterTest {
 protected:
    /// Settings that remove nothing and keep no margin.
    static Config::GenerateDenoisedAloneConfig plainConfig() {
        Config::GenerateDenoisedAloneConfig config;
        config.crop_single_info.padding = 0;
        config.components_out_remove_small_connected_components = {"fixed", 4, 1};
        config.components_in_remove_small_connected_components = {"fixed", 8, 1};
        return config;
    }
};

TEST_F(GenerateDenoisedAlone, RejectsAnImageOfAnotherType) {
    for (const cv::Mat& image :
         {cv::Mat(9, 9, CV_8UC1, cv::Scalar(1)), cv::Mat(9, 9, CV_32FC3, cv::Scalar(1)),
          cv::Mat(9, 9, CV_64FC1, cv::Scalar(1)), cv::Mat(), cv::Mat(0, 9, CV_32FC1)}) {
        EXPECT_THAT([&] { segmenter_.generateDenoisedAlone(image, {}); },
                    ThrowsMessage<std::runtime_error>(kTypeMessage));
        EXPECT_THAT([&] { segmenter_.doSegment(image); },
                    ThrowsMessage<std::runtime_error>(kTypeMessage));
    }
}

TEST_F(GenerateDenoisedAlone, RejectsAMapWithoutContent) {
    for (const double value : {0.0, 1.0}) {
        EXPECT_THAT(
            [&] {
                segmenter_.generateDenoisedAlone(cv::Mat(9, 9, CV_32FC1, cv::Scalar(value)), {});
            },
            ThrowsMessage<std::runtime_error>("cropSingleInfo expects a non-empty image."));
    }
}

TEST_F(GenerateDenoisedAlone, RejectsACropThatLeavesNothing) {
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.crop_single_info.padding = -2;
    EXPECT_THAT(
        [&] { segmenter_.generateDenoisedAlone(values("1 1 1 1\n1 0 0 1\n1 1 1 1"), config); },
        ThrowsMessage<std::runtime_error>("cropBackground leads to an empty image."));
}

TEST_F(GenerateDenoisedAlone, GivesTheCropOfTheContentAsABinaryMap) {
    const cv::Mat raw = values(
        "0.9 0.9 0.9 0.9 0.9 0.9\n"
        "0.9 0.9 0.9 0.9 0.9 0.9\n"
        "0.9 0.9 0.1 0.0 0.9 0.9\n"
        "0.9 0.9 0.4 0.05 0.9 0.9\n"
        "0.9 0.9 0.9 0.9 0.9 0.9");
    const cv::Mat before = raw.clone();
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.crop_single_info.padding = 1;
    config.binary_for_crop_make_binary.threshold = 0.1;
    config.binary_make_binary.threshold = 0.1;
    const auto [denoised, crop] = segmenter_.generateDenoisedAlone(raw, config);
    EXPECT_THAT(denoised, MatEq(values("1 1 1 1\n1 0 0 1\n1 1 0 1\n1 1 1 1")));
    EXPECT_EQ(crop.left, 1);
    EXPECT_EQ(crop.top, 1);
    EXPECT_EQ(crop.right, 1);
    EXPECT_EQ(crop.bottom, 0);
    EXPECT_THAT(raw, MatEq(before));
    EXPECT_THAT(segmenter_.generateDenoisedAlone(asView(raw), config).first, MatEq(denoised));
}

TEST_F(GenerateDenoisedAlone, CropsByOneThresholdAndDividesByAnother) {
    // 0.3 is content for the crop, and floor only by the second threshold.
    const cv::Mat raw = values(
        "1 1 1 1 1 1\n"
        "1 0.3 0.3 0.6 1 1\n"
        "1 1 1 1 1 1");
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.binary_for_crop_make_binary.threshold = 0.7;
    config.binary_make_binary.threshold = 0.5;
    EXPECT_THAT(segmenter_.generateDenoisedAlone(raw, config).first, MatEq(values("0 0 1")));
    config.binary_for_crop_make_binary.threshold = 0.5;
    config.binary_make_binary.threshold = 0.2;
    EXPECT_THAT([&] { segmenter_.generateDenoisedAlone(raw, config); },
                ThrowsMessage<std::runtime_error>(
                    "removeSmallConnectedComponents expects a non-empty image."));
}

TEST_F(GenerateDenoisedAlone, RemovesSmallFloorFirstAndThenSmallWalls) {
    const cv::Mat raw = values(
        "1 1 1 1 1 1 1 1 1\n"
        "1 0 0 0 0 0 1 0 1\n"
        "1 0 1 0 1 0 1 0 1\n"
        "1 0 0 0 1 0 1 1 1\n"
        "1 1 1 1 1 0 1 0 1\n"
        "1 1 1 1 1 1 1 1 1");
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.crop_single_info.padding = 1;
    config.components_out_remove_small_connected_components = {"fixed", 4, 3};
    config.components_in_remove_small_connected_components = {"fixed", 8, 2};
    // The floor regions of two and one pixel go; so does the single pixel of wall.
    EXPECT_THAT(segmenter_.generateDenoisedAlone(raw, config).first,
                MatEq(values("1 1 1 1 1 1 1 1 1\n"
                             "1 0 0 0 0 0 1 1 1\n"
                             "1 0 0 0 1 0 1 1 1\n"
                             "1 0 0 0 1 0 1 1 1\n"
                             "1 1 1 1 1 0 1 1 1\n"
                             "1 1 1 1 1 1 1 1 1")));
    EXPECT_THAT(plain_.lines(), ElementsAre("removeSmallConnectedComponents: threshold_area: 3",
                                            "removeSmallConnectedComponents: threshold_area: 2"));
}

TEST_F(GenerateDenoisedAlone, UsesTheConnectivityOfEachRemoval) {
    const cv::Mat raw = values(
        "1 1 1 1 1 1\n"
        "1 0 0 0 0 1\n"
        "1 0 1 0 0 1\n"
        "1 0 0 1 0 1\n"
        "1 0 0 0 0 1\n"
        "1 1 1 1 1 1");
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.crop_single_info.padding = 1;
    config.components_in_remove_small_connected_components = {"fixed", 8, 2};
    EXPECT_THAT(segmenter_.generateDenoisedAlone(raw, config).first, MatEq(raw));
    config.components_in_remove_small_connected_components = {"fixed", 4, 2};
    EXPECT_EQ(cv::countNonZero(segmenter_.generateDenoisedAlone(raw, config).first),
              cv::countNonZero(raw) - 2);

    const cv::Mat inverted = 1.0 - raw;
    config.components_in_remove_small_connected_components = {"fixed", 8, 1};
    config.components_out_remove_small_connected_components = {"fixed", 8, 2};
    EXPECT_THAT(segmenter_.generateDenoisedAlone(inverted, config).first, MatEq(inverted));
    config.components_out_remove_small_connected_components = {"fixed", 4, 2};
    EXPECT_EQ(cv::countNonZero(segmenter_.generateDenoisedAlone(inverted, config).first),
              cv::countNonZero(inverted) + 2);
}

TEST_F(GenerateDenoisedAlone, DoesNotUseTheRankThreshold) {
    const test::DrawnPlan plan = test::twoRooms();
    Config::GenerateDenoisedAloneConfig config;
    const cv::Mat first = segmenter_.generateDenoisedAlone(plan.map, config).first;
    for (const double threshold : {-1.0, 0.0, 0.99, 7.0}) {
        config.rank_make_binary.threshold = threshold;
        EXPECT_THAT(segmenter_.generateDenoisedAlone(plan.map, config).first, MatEq(first));
    }
}

TEST_F(GenerateDenoisedAlone, TellsTheCropOnTheConsolePastTheDebugger) {
    DebuggerConfig quiet;
    quiet.output_dir = dir_.path();
    quiet.log_level = LogLevel::ERROR;
    const std::shared_ptr<Debugger> debugger = Debugger::create(quiet);
    debugger->initLog();
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.crop_single_info.padding = 1;
    FloorplanSegmenter(Config(), debugger)
        .generateDenoisedAlone(
            values("1 1 1 1 1\n1 1 1 1 1\n1 1 1 0 1\n1 1 1 1 1\n1 1 1 1 1\n1 1 1 1 1"), config);
    EXPECT_THAT(console_.lines(), ElementsAre(ConsoleLine{"INFO", "crop_info: 2, 1, 0, 2"}));
    EXPECT_THAT(test::readFile(dir_.file("vorund.log")), testing::Not(HasSubstr("crop_info")));
}

TEST_F(GenerateDenoisedAlone, WritesItsFivePictures) {
    const cv::Mat raw = values(
        "1 1 1 1 1 1\n"
        "1 0 0 0 1 1\n"
        "1 0 1 0 1 1\n"
        "1 0 0 0 1 0\n"
        "1 1 1 1 1 1");
    Config::GenerateDenoisedAloneConfig config = plainConfig();
    config.components_out_remove_small_connected_components = {"fixed", 4, 2};
    config.components_in_remove_small_connected_components = {"fixed", 8, 2};
    FloorplanSegmenter(Config(), debugger(true)).generateDenoisedAlone(raw, config);

    const std::string saved = "Image saved: " + dir_.path() + "/";
    EXPECT_THAT(
        console_.texts(),
        ElementsAre("crop_info: 1, 1, 0, 1", saved + "10cpp_rank_binary.png",
                    saved + "11cpp_rank_inverted.png", saved + "12cpp_rank_no_small_out.png",
                    saved + "13cpp_rank_inverted.png", saved + "14cpp_rank_denoised.png"));
    const auto picture = [&](const std::string& name) {
        return cv::imread(dir_.file(name), cv::IMREAD_UNCHANGED);
    };
    EXPECT_THAT(picture("10cpp_rank_binary.png"),
                MatEq(labels("0 0 0 255 255\n0 255 0 255 255\n0 0 0 255 0")));
    EXPECT_THAT(picture("11cpp_rank_inverted.png"),
                MatEq(labels("255 255 255 0 0\n255 0 255 0 0\n255 255 255 0 255")));
    EXPECT_THAT(picture("12cpp_rank_no_small_out.png"),
                MatEq(labels("255 255 255 0 0\n255 0 255 0 0\n255 255 255 0 0")));
    EXPECT_THAT(picture("13cpp_rank_inverted.png"),
                MatEq(labels("0 0 0 255 255\n0 255 0 255 255\n0 0 0 255 255")));
    EXPECT_THAT(picture("14cpp_rank_denoised.png"),
                MatEq(labels("0 0 0 255 255\n0 0 0 255 255\n0 0 0 255 255")));
}

class ComputeLabelsList : public FloorplanSegmenterTest {
 protected:
    cv::Mat map_ = test::twoRooms().map;
    Config::ComputeLabelsListConfig config_;
};

TEST_F(ComputeLabelsList, HoldsTheSeedsOfEveryScaleUntilNoneIsLeft) {
    config_.sigma_start = 2.0;
    config_.sigma_step = 1.5;
    const LabelsListResult result = segmenter_.computeLabelsList(map_, map_, config_);
    const std::size_t count = result.sigma_list.size();
    ASSERT_GE(count, 3U);
    ASSERT_EQ(result.labels_list.size(), count);
    ASSERT_EQ(result.ncc_list.size(), count);
    EXPECT_THAT(result.extra_list, IsEmpty());

    cv::Mat mask;
    map_.convertTo(mask, CV_8U);
    double sigma = 2.0;
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(result.sigma_list[i], sigma);
        const GaussianSeedsResult seeds = WatershedSegmenter::generateGaussianSeedsSkimage(
            map_, mask, sigma, config_.generate_gaussian_seeds_skimage, nullptr);
        EXPECT_THAT(result.labels_list[i], MatEq(seeds.labels));
        EXPECT_EQ(result.ncc_list[i], seeds.ncc);
        EXPECT_EQ(result.ncc_list[i] <= 0, i + 1 == count) << i;
        sigma += 1.5;
    }
}

TEST_F(ComputeLabelsList, TellsEveryScaleOnTheConsolePastTheDebugger) {
    DebuggerConfig quiet;
    quiet.output_dir = dir_.path();
    quiet.log_level = LogLevel::ERROR;
    config_.sigma_start = 2.0;
    config_.sigma_step = 0.25;
    config_.max_iter = 3;
    const LabelsListResult result = FloorplanSegmenter(Config(), Debugger::create(quiet))
                                        .computeLabelsList(map_, map_, config_);
    ASSERT_EQ(result.ncc_list.size(), 3U);
    const auto line = [&](const std::string& start, std::size_t i) {
        return ConsoleLine{"INFO", "[computeLabelsList] " + start +
                                       ", ncc: " + std::to_string(result.ncc_list[i])};
    };
    EXPECT_THAT(console_.lines(), ElementsAre(line("iter: 0, sigma: 2.000000", 0),
                                              line("iter: 1, sigma: 2.250000", 1),
                                              line("iter: 2, sigma: 2.500000", 2)));
}

TEST_F(ComputeLabelsList, EndsAfterTheMostScales) {
    config_.max_iter = 2;
    const LabelsListResult result = segmenter_.computeLabelsList(map_, map_, config_);
    EXPECT_THAT(result.sigma_list, ElementsAre(1.0, 2.0));
    EXPECT_GT(result.ncc_list.back(), 0);
}

TEST_F(ComputeLabelsList, IsOneScaleWithoutAStep) {
    config_.sigma_start = 3.0;
    config_.sigma_step = 0.0;
    for (const int max_iter : {-5, 0, 1, 50}) {
        config_.max_iter = max_iter;
        const LabelsListResult result = segmenter_.computeLabelsList(map_, map_, config_);
        EXPECT_THAT(result.sigma_list, ElementsAre(3.0)) << max_iter;
        EXPECT_EQ(result.labels_list.size(), 1U);
        EXPECT_EQ(result.ncc_list.size(), 1U);
    }
}

TEST_F(ComputeLabelsList, IsEmptyWithoutIterations) {
    for (const int max_iter : {0, -1}) {
        config_.max_iter = max_iter;
        const LabelsListResult result = segmenter_.computeLabelsList(map_, map_, config_);
        EXPECT_THAT(result.sigma_list, IsEmpty());
        EXPECT_THAT(result.labels_list, IsEmpty());
        EXPECT_THAT(result.ncc_list, IsEmpty());
        EXPECT_THAT([&] { segmenter_.overSegment(map_, result, {}); },
                    ThrowsMessage<std::runtime_error>("overSegment: labels_list is empty."));
    }
    EXPECT_THAT(console_.lines(), IsEmpty());
}

TEST_F(ComputeLabelsList, KeepsAFirstScaleWithoutSeeds) {
    const cv::Mat wall(20, 20, CV_32FC1, cv::Scalar(1.0));
    const LabelsListResult result = segmenter_.computeLabelsList(wall, wall, config_);
    EXPECT_THAT(result.ncc_list, ElementsAre(0));
    EXPECT_THAT(result.sigma_list, ElementsAre(1.0));
    ASSERT_EQ(result.labels_list.size(), 1U);
    EXPECT_THAT(result.labels_list[0], MatEq(cv::Mat(20, 20, CV_8UC1, cv::Scalar(255))));
}

TEST_F(ComputeLabelsList, LeavesItsInputAsItIsAndReadsViews) {
    config_.max_iter = 3;
    const cv::Mat before = map_.clone();
    const LabelsListResult result = segmenter_.computeLabelsList(map_, map_, config_);
    EXPECT_THAT(map_, MatEq(before));
    const LabelsListResult of_views =
        segmenter_.computeLabelsList(asView(map_), asView(map_), config_);
    ASSERT_EQ(of_views.labels_list.size(), result.labels_list.size());
    for (std::size_t i = 0; i < result.labels_list.size(); ++i) {
        EXPECT_THAT(of_views.labels_list[i], MatEq(result.labels_list[i]));
        for (std::size_t j = 0; j < i; ++j) {
            EXPECT_NE(result.labels_list[i].data, result.labels_list[j].data);
        }
    }
}

TEST_F(ComputeLabelsList, DoesNotUseErosionAndConnectivity) {
    config_.max_iter = 3;
    const LabelsListResult result = segmenter_.computeLabelsList(map_, map_, config_);
    config_.background_erosion_kernel_size = -7;
    config_.create_watershed_segment_skimage.connectivity = 5;
    const LabelsListResult other = segmenter_.computeLabelsList(map_, map_, config_);
    for (std::size_t i = 0; i < result.labels_list.size(); ++i) {
        EXPECT_THAT(other.labels_list.at(i), MatEq(result.labels_list[i]));
    }
}

TEST_F(ComputeLabelsList, WritesAPictureOfEveryScale) {
    config_.max_iter = 2;
    FloorplanSegmenter(Config(), debugger(true)).computeLabelsList(map_, map_, config_);
    EXPECT_THAT(dir_.names(), ElementsAre("40cpp_gaussian_seeds_sigma_1.000000.png",
                                          "40cpp_gaussian_seeds_sigma_2.000000.png"));
}

using OverSegment = FloorplanSegmenterTest;

/// `before` as `overSegment` renumbers it: the background, 255, becomes 0, and 0 becomes one more
/// than the number of seeds, in 8 bits.
cv::Mat renumbered(const cv::Mat& before, int ncc) {
    cv::Mat after = before.clone();
    for (int row = 0; row < after.rows; ++row) {
        for (int col = 0; col < after.cols; ++col) {
            std::uint8_t& pixel = after.at<std::uint8_t>(row, col);
            if (pixel == 255) {
                pixel = 0;
            } else if (pixel == 0) {
                pixel = static_cast<std::uint8_t>((ncc + 1) % 256);
            }
        }
    }
    return after;
}

TEST_F(OverSegment, RenumbersTheSeedMapsOfItsCaller) {
    const cv::Mat map = test::twoRooms().map;
    const LabelsListResult result = segmenter_.computeLabelsList(map, map, {});
    std::vector<cv::Mat> before;
    for (const cv::Mat& image : result.labels_list) before.push_back(image.clone());
    segmenter_.overSegment(map, result, {});
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_THAT(result.labels_list[i], MatEq(renumbered(before[i], result.ncc_list[i]))) << i;
    }
}

TEST_F(OverSegment, WrapsTheLabelOfTheBackgroundInEightBits) {
    const LabelsListResult one_scale{{1.0}, {labels("0 255 7\n254 1 0")}, {255}, {}};
    EXPECT_THROW(segmenter_.overSegment(cv::Mat::zeros(2, 3, CV_32FC1), one_scale, {}),
                 std::runtime_error);
    EXPECT_THAT(one_scale.labels_list[0], MatEq(labels("0 0 7\n254 1 0")));
    const LabelsListResult more{{1.0}, {labels("0 255 7\n254 1 0")}, {300}, {}};
    EXPECT_THROW(segmenter_.overSegment(cv::Mat::zeros(2, 3, CV_32FC1), more, {}),
                 std::runtime_error);
    EXPECT_THAT(more.labels_list[0], MatEq(labels("45 0 7\n254 1 45")));
}

TEST_F(OverSegment, GivesItsLabelsWithTheLargestOfThem) {
    const cv::Mat map = test::twoRooms().map;
    const LabelsListResult result = segmenter_.computeLabelsList(map, map, {});
    const cv::Mat before = map.clone();
    const auto [segments, largest] = segmenter_.overSegment(map, result, {});
    EXPECT_EQ(segments.type(), CV_8UC1);
    EXPECT_EQ(segments.size(), map.size());
    int expected = 0;
    for (int row = 0; row < segments.rows; ++row) {
        for (int col = 0; col < segments.cols; ++col) {
            expected = std::max<int>(expected, segments.at<std::uint8_t>(row, col));
        }
    }
    EXPECT_EQ(largest, expected);
    EXPECT_THAT(map, MatEq(before));
}

TEST_F(OverSegment, RejectsAnEmptyList) {
    EXPECT_THAT([&] { segmenter_.overSegment(cv::Mat::zeros(2, 2, CV_32FC1), {}, {}); },
                ThrowsMessage<std::runtime_error>("overSegment: labels_list is empty."));
}

TEST_F(OverSegment, LetsTheExceptionsOfItsStepsPass) {
    const cv::Mat map = test::twoRooms().map;
    Config::OverSegmentConfig config;
    config.create_watershed_segment_skimage.connectivity = 5;
    const LabelsListResult result = segmenter_.computeLabelsList(map, map, {});
    EXPECT_THROW(segmenter_.overSegment(map, result, config), std::runtime_error);
}

}  // namespace
}  // namespace vorund
