// A client that names everything in the public headers with its exact type, linked against the
// shared library: a name that changes does not compile, and one that is not exported does not link.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "vorund/vorund.h"
#include "vorund/yaml_value.h"

namespace {

using vorund::Config;
using vorund::CropInfo;
using vorund::Debugger;
using vorund::DebuggerConfig;
using vorund::FloorplanSegmenter;
using vorund::GaussianSeedsResult;
using vorund::ImageUtils;
using vorund::LabelsListResult;
using vorund::LogLevel;
using vorund::OverSegmentProcessor;
using vorund::StageObserver;
using vorund::WatershedQueueItem;
using vorund::WatershedSegmenter;

using DebuggerPtr = std::shared_ptr<Debugger>;
using Mappers = std::vector<std::map<int, int>>;
using Lifespans = std::map<int, std::pair<int, int>>;

/// Whether a function has exactly this type; it is also looked up by the linker.
template <class Expected, class Actual>
bool hasType(Actual function) {
    static_assert(std::is_same<Expected, Actual>::value, "another type");
    return function != nullptr;
}

/// Picks one of several overloads by its exact type.
template <class Expected>
bool hasOverload(Expected function) {
    return function != nullptr;
}

template <class Expected, class Actual>
constexpr bool kIs = std::is_same<Expected, Actual>::value;

TEST(PublicNames, OfTheConfiguration) {
    EXPECT_TRUE((hasType<bool (Config::*)(const std::string&)>(&Config::loadFromYaml)));
    const Config::DebugConfig debug{false, true};
    EXPECT_TRUE(debug.save_images);
    const Config::MakeBinaryConfig binary{0.5};
    EXPECT_EQ(binary.threshold, 0.5);
    const Config::CropSingleInfoConfig crop{3};
    EXPECT_EQ(crop.padding, 3);
    const Config::DilateBinaryConfig dilate{5, 2};
    EXPECT_EQ(dilate.kernel_size * dilate.iterations, 10);
    const Config::RemoveSmallConnectedComponentsConfig remove{"mean", 8, 7};
    EXPECT_EQ(remove.method, "mean");
    EXPECT_EQ(remove.connectivity + remove.min_size, 15);
    const Config::GenerateRidgeMapMeijeringConfig ridges{"wrap", {1.0, 2.0}};
    EXPECT_EQ(ridges.mode, "wrap");
    EXPECT_EQ(ridges.sigmas.size(), 2U);
    const Config::GenerateGaussianSeedsSkimageConfig seeds{0.25};
    EXPECT_EQ(seeds.threshold, 0.25);
    const Config::CreateWatershedSegmentSkimageConfig watershed{8};
    EXPECT_EQ(watershed.connectivity, 8);
    const Config::ComputeLabelsListConfig scales{1.0, 2.0, 3, 4, seeds, watershed};
    EXPECT_EQ(scales.background_erosion_kernel_size, 4);
    const Config::GenerateMapInitialSeedsConfig initial{"end", {{"start", 1}}, 2};
    EXPECT_EQ(initial.filter_threshold, 2);
    const Config::OverSegmentConfig over_segment{initial, watershed};
    EXPECT_EQ(over_segment.generate_map_initial_seeds.weights.at("start"), 1);
    EXPECT_EQ(Config::MergeNodesInPlaceConfig{2.5}.area_threshold, 2.5);
    EXPECT_EQ(Config::MergeEdgesInPlaceConfig{2.5}.length_threshold, 2.5);
}

TEST(PublicNames, OfTheGroupsOfTheConfiguration) {
    using Denoise = Config::GenerateDenoisedAloneConfig;
    using Remove = Config::RemoveSmallConnectedComponentsConfig;
    const Denoise denoise{{0.1}, {2}, {0.3}, {"fixed", 4, 5}, {"mean", 8, 6}, {0.7}};
    EXPECT_EQ(denoise.binary_for_crop_make_binary.threshold, 0.1);
    EXPECT_EQ(denoise.crop_single_info.padding, 2);
    EXPECT_EQ(denoise.binary_make_binary.threshold, 0.3);
    EXPECT_EQ(denoise.components_out_remove_small_connected_components.min_size, 5);
    EXPECT_EQ(denoise.components_in_remove_small_connected_components.min_size, 6);
    EXPECT_EQ(denoise.rank_make_binary.threshold, 0.7);

    using Align = Config::FindAlignmentAngleConfig;
    EXPECT_TRUE((kIs<double, decltype(Align::ComputeWeightedAngleHistogramConfig().canny.sigma)>));
    EXPECT_TRUE((kIs<int, decltype(Align::ComputeWeightedAngleHistogramConfig()
                                       .probabilistic_hough_line.threshold)>));
    EXPECT_TRUE((kIs<double, decltype(Align::ComputeWeightedAngleHistogramConfig()
                                          .probabilistic_hough_line.line_length)>));
    EXPECT_TRUE((kIs<double, decltype(Align::ComputeWeightedAngleHistogramConfig()
                                          .probabilistic_hough_line.line_gap)>));
    EXPECT_TRUE((kIs<int, decltype(Align::ComputeWeightedAngleHistogramConfig::resolution)>));
    EXPECT_TRUE(
        (kIs<int, decltype(Align::FindBestAlignmentAngleFromHistogramConfig::window_half_size)>));
    EXPECT_TRUE((kIs<int, decltype(Align::FindBestAlignmentAngleFromHistogramConfig::resolution)>));
    EXPECT_TRUE((kIs<Config::MakeBinaryConfig, decltype(Align::binary_for_crop_make_binary)>));
    EXPECT_TRUE((kIs<Config::CropSingleInfoConfig, decltype(Align::crop_single_info)>));
    EXPECT_TRUE((kIs<Config::MakeBinaryConfig, decltype(Align::binary_make_binary)>));
    EXPECT_TRUE((kIs<Remove, decltype(Align::components_out_remove_small_connected_components)>));
    EXPECT_TRUE((kIs<Remove, decltype(Align::components_in_remove_small_connected_components)>));
    EXPECT_TRUE((kIs<Config::MakeBinaryConfig, decltype(Align::rank_make_binary)>));

    EXPECT_TRUE((kIs<double, decltype(Config::sigma_start)>));
    EXPECT_TRUE((kIs<double, decltype(Config::sigma_step)>));
    EXPECT_TRUE((kIs<double, decltype(Config::binary_threshold)>));
    EXPECT_TRUE((kIs<double, decltype(Config::area_threshold)>));
    EXPECT_TRUE((kIs<double, decltype(Config::length_threshold)>));
    EXPECT_TRUE((kIs<int, decltype(Config::hist_resolution)>));
    EXPECT_TRUE((kIs<bool, decltype(Config::alignment)>));
    EXPECT_TRUE((kIs<Config::DebugConfig, decltype(Config::debug)>));
    EXPECT_TRUE((kIs<Align, decltype(Config::find_alignment_angle)>));
    EXPECT_TRUE((kIs<Denoise, decltype(Config::generate_denoised_alone)>));
    EXPECT_TRUE((kIs<Config::DilateBinaryConfig, decltype(Config::dilate_binary)>));
    EXPECT_TRUE((kIs<Config::GenerateRidgeMapMeijeringConfig,
                     decltype(Config::generate_ridge_map_meijering)>));
    EXPECT_TRUE((kIs<Config::ComputeLabelsListConfig, decltype(Config::compute_labels_list)>));
    EXPECT_TRUE((kIs<Config::OverSegmentConfig, decltype(Config::over_segment)>));
    EXPECT_TRUE((kIs<Config::MergeNodesInPlaceConfig, decltype(Config::merge_nodes_in_place)>));
    EXPECT_TRUE((kIs<Config::MergeEdgesInPlaceConfig, decltype(Config::merge_edges_in_place)>));
}

TEST(PublicNames, OfTheYamlValues) {
    EXPECT_EQ(vorund::getYamlValue<double>(YAML::Load("2.5"), 1.0), 2.5);
    EXPECT_EQ(vorund::getYamlValue<int>(YAML::Load("2"), 1), 2);
    EXPECT_EQ(vorund::getYamlValue<bool>(YAML::Load("true"), false), true);
    EXPECT_EQ(vorund::getYamlValue<std::string>(YAML::Load("a"), "b"), "a");
    EXPECT_EQ(vorund::getYamlValue<std::vector<double>>(YAML::Load("[2]"), {}).size(), 1U);
    EXPECT_TRUE((hasType<int (*)(const YAML::Node&, const int&)>(&vorund::getYamlValue<int>)));
}

TEST(PublicNames, OfTheDebugger) {
    static_assert(kIs<std::int32_t, std::underlying_type_t<LogLevel>>, "32 bits");
    const DebuggerConfig config{false, false, ".", "a.log", LogLevel::WARN};
    EXPECT_EQ(config.log_level, LogLevel::WARN);
    EXPECT_EQ(config.log_file, "a.log");
    EXPECT_TRUE((hasType<DebuggerPtr (*)(const DebuggerConfig&)>(&Debugger::create)));
    EXPECT_TRUE((std::is_constructible<Debugger, const DebuggerConfig&>::value));
    for (const auto function :
         {&Debugger::ensureOutputDirectory, &Debugger::initLog, &Debugger::saveLog}) {
        EXPECT_TRUE((hasType<void (Debugger::*)()>(function)));
    }
    EXPECT_TRUE((hasType<void (Debugger::*)(LogLevel, const std::string&)>(&Debugger::log)));
    for (const auto function :
         {&Debugger::logDebug, &Debugger::logInfo, &Debugger::logWarning, &Debugger::logError}) {
        EXPECT_TRUE((hasType<void (Debugger::*)(const std::string&)>(function)));
    }
    EXPECT_TRUE((hasType<std::string (*)(LogLevel)>(&Debugger::logLevelToString)));
    EXPECT_TRUE((hasType<std::string (*)()>(&Debugger::getCurrentTimestamp)));
    EXPECT_TRUE((hasType<std::string (*)()>(&Debugger::getTimestampForFilename)));
    EXPECT_TRUE((hasType<void (Debugger::*)(const std::string&, const cv::Mat&)>(&Debugger::show)));
    EXPECT_TRUE(
        (hasType<void (Debugger::*)(const std::string&, const cv::Mat&, bool)>(&Debugger::write)));
    EXPECT_TRUE(
        (hasType<void (Debugger::*)(const std::string&, const cv::Mat&, const std::string&, bool)>(
            &Debugger::showAndWrite)));
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&)>(&Debugger::prepareImageForSaving)));
    EXPECT_TRUE((hasType<bool (*)()>(&vorund::displayAvailable)));
    EXPECT_TRUE((hasType<void (*)(std::ostream*)>(&vorund::setPlainOutput)));
}

TEST(PublicNames, OfTheSegmenter) {
    const LabelsListResult scales{{1.0}, {cv::Mat()}, {0}, {}};
    EXPECT_EQ(scales.sigma_list.size(), 1U);
    EXPECT_EQ(scales.labels_list.size(), 1U);
    EXPECT_EQ(scales.ncc_list.size(), 1U);
    EXPECT_EQ(scales.extra_list.size(), 0U);
    EXPECT_TRUE((std::is_constructible<FloorplanSegmenter, const Config&, DebuggerPtr>::value));
    EXPECT_TRUE((hasOverload<cv::Mat (FloorplanSegmenter::*)(const cv::Mat&)>(
        &FloorplanSegmenter::doSegment)));
    EXPECT_TRUE((hasOverload<cv::Mat (FloorplanSegmenter::*)(const cv::Mat&, const StageObserver&)>(
        &FloorplanSegmenter::doSegment)));
    EXPECT_TRUE((hasType<std::pair<cv::Mat, CropInfo> (FloorplanSegmenter::*)(
                     const cv::Mat&, const Config::GenerateDenoisedAloneConfig&)>(
        &FloorplanSegmenter::generateDenoisedAlone)));
    EXPECT_TRUE((hasOverload<LabelsListResult (FloorplanSegmenter::*)(
                     const cv::Mat&, const cv::Mat&, const Config::ComputeLabelsListConfig&)>(
        &FloorplanSegmenter::computeLabelsList)));
    EXPECT_TRUE((hasType<std::pair<cv::Mat, int> (FloorplanSegmenter::*)(
                     const cv::Mat&, const LabelsListResult&, const Config::OverSegmentConfig&)>(
        &FloorplanSegmenter::overSegment)));
    EXPECT_TRUE((kIs<std::function<bool(const std::string&, int, int)>, StageObserver>));
    EXPECT_TRUE((std::is_base_of<std::runtime_error, vorund::Cancelled>::value));
}

/// The type information of `Cancelled` is the library's: what it throws is caught by its name here.
TEST(PublicNames, OfTheExceptionThatCancels) {
    FloorplanSegmenter segmenter(Config(), Debugger::create({}));
    EXPECT_THROW(segmenter.doSegment(cv::Mat::zeros(3, 3, CV_32FC1),
                                     [](const std::string&, int, int) { return false; }),
                 vorund::Cancelled);
}

TEST(PublicNames, OfTheImageUtilities) {
    const CropInfo crop{1, 2, 3, 4};
    EXPECT_EQ(crop.left + 10 * crop.top + 100 * crop.right + 1000 * crop.bottom, 4321);
    EXPECT_TRUE((kIs<std::int32_t, decltype(CropInfo::left)>));
    for (const auto function : {&ImageUtils::loadMapFromFileUint8, &ImageUtils::loadMapFromFile,
                                &ImageUtils::loadGrayMapFromFile}) {
        EXPECT_TRUE((hasType<cv::Mat (*)(const std::string&)>(function)));
    }
    for (const auto function :
         {&ImageUtils::loadMapFromBuffer, &ImageUtils::loadGrayMapFromBuffer}) {
        EXPECT_TRUE((hasType<cv::Mat (*)(const std::vector<std::uint8_t>&)>(function)));
    }
    for (const auto function : {&ImageUtils::makeGray, &ImageUtils::makeInvert}) {
        EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&)>(function)));
    }
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&, double, double)>(&ImageUtils::makeBinary)));
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&, int, int)>(&ImageUtils::dilateBinary)));
    EXPECT_TRUE((hasType<CropInfo (*)(const cv::Mat&, int)>(&ImageUtils::cropSingleInfo)));
    EXPECT_TRUE(
        (hasType<cv::Mat (*)(const cv::Mat&, const CropInfo&)>(&ImageUtils::cropBackground)));
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&, const CropInfo&, const cv::Scalar&)>(
        &ImageUtils::uncropBackground)));
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&, int, int)>(&ImageUtils::remapBorder)));
    EXPECT_TRUE(
        (hasType<cv::Mat (*)(const cv::Mat&, const Config::RemoveSmallConnectedComponentsConfig&)>(
            &ImageUtils::removeSmallConnectedComponents)));
}

TEST(PublicNames, OfTheRidges) {
    EXPECT_TRUE((hasType<int (*)(const std::string&)>(&vorund::RidgeFilter::getCvBorderType)));
    EXPECT_TRUE(
        (hasType<cv::Mat (*)(int, double, int)>(&vorund::RidgeFilter::getGaussianKernel1D)));
    EXPECT_TRUE((hasType<void (*)(float, float, float, float&, float&)>(
        &vorund::RidgeFilter::computeEigenvalues2x2Sorted)));
    EXPECT_TRUE(
        (hasType<cv::Mat (*)(const cv::Mat&, const Config::GenerateRidgeMapMeijeringConfig&)>(
            &vorund::RidgeFilter::generateRidgeMapMeijering)));
    EXPECT_TRUE(
        (hasType<cv::Mat (*)(const cv::Mat&)>(&vorund::RidgeFilter::generateBoundaryFromDilated)));
}

TEST(PublicNames, OfTheWatershed) {
    const WatershedQueueItem item{0.5, 1, 2, 3};
    EXPECT_TRUE((kIs<double, decltype(WatershedQueueItem::value)>));
    EXPECT_TRUE((kIs<std::int32_t, decltype(WatershedQueueItem::age)>));
    EXPECT_TRUE((kIs<std::int64_t, decltype(WatershedQueueItem::index)>));
    EXPECT_TRUE((kIs<std::int64_t, decltype(WatershedQueueItem::source)>));
    EXPECT_EQ(item.age + item.index + item.source, 6);
    const GaussianSeedsResult seeds{cv::Mat(), 4};
    EXPECT_EQ(seeds.ncc, 4);
    EXPECT_TRUE((hasType<GaussianSeedsResult (*)(const cv::Mat&, const cv::Mat&, double,
                                                 const Config::GenerateGaussianSeedsSkimageConfig&,
                                                 DebuggerPtr)>(
        &WatershedSegmenter::generateGaussianSeedsSkimage)));
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&, cv::Mat&, int, bool)>(
        &WatershedSegmenter::executeSkimageWatershed)));
    EXPECT_TRUE((hasType<cv::Mat (*)(const cv::Mat&, cv::Mat&,
                                     const Config::CreateWatershedSegmentSkimageConfig&)>(
        &WatershedSegmenter::createWatershedSegmentSkimage)));
}

TEST(PublicNames, OfTheTracking) {
    EXPECT_TRUE(
        (hasType<Mappers (*)(const std::vector<double>&, const std::vector<cv::Mat>&, DebuggerPtr)>(
            &OverSegmentProcessor::findConsistentGlobalLabels)));
    EXPECT_TRUE((
        hasType<Lifespans (*)(const Mappers&, DebuggerPtr)>(&OverSegmentProcessor::findLifespans)));
    EXPECT_TRUE((hasType<std::map<int, cv::Mat> (*)(
                     const Lifespans&, const Mappers&, const std::vector<cv::Mat>&,
                     const Config::GenerateMapInitialSeedsConfig&, DebuggerPtr)>(
        &OverSegmentProcessor::generateMapInitialSeeds)));
    EXPECT_TRUE(
        (hasType<cv::Mat (*)(const std::map<int, cv::Mat>&, const std::vector<cv::Mat>&,
                             DebuggerPtr)>(&OverSegmentProcessor::superposeMapInitialSeeds)));
}

}  // namespace
