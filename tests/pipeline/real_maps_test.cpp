// The stages that have a plain version, on real maps, which do not come with the project: a folder
// of PNG files with light floor that the environment variable VORUND_MAPS names.

#include <gmock/gmock.h>

#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "marker_flood/marker_flood.h"
#include "reference/denoised_map.h"
#include "reference/ridge_filter.h"
#include "reference/watershed_segmenter.h"
#include "support/captures.h"
#include "support/mat_matchers.h"
#include "vorund/vorund.h"

namespace vorund::test {
namespace {

std::vector<std::string> mapFiles() {
    const char* const folder = std::getenv("VORUND_MAPS");
    if (folder == nullptr) return {};
    std::vector<std::string> all;
    cv::glob(std::string(folder) + "/*.png", all);
    std::vector<std::string> files;
    for (const std::string& file : all) {
        if (file.find("segmentation") == std::string::npos) files.push_back(file);
    }
    return files;
}

void expectFloodsToAgree(const cv::Mat& cost, const cv::Mat& markers, const std::string& file) {
    for (const int connectivity : {4, 8}) {
        for (const bool lines : {true, false}) {
            ASSERT_THAT(internal::floodFromMarkers(cost, markers, connectivity, lines),
                        MatEq(reference::watershed(cost, markers, connectivity, lines)))
                << file << ", connectivity " << connectivity << ", lines " << lines;
        }
    }
}

TEST(RealMaps, AgreeWithThePlainVersionsStageByStage) {
    const std::vector<std::string> files = mapFiles();
    if (files.empty()) GTEST_SKIP() << "VORUND_MAPS does not name a folder with maps";
    Config config;
    config.generate_denoised_alone.crop_single_info.padding = 0;
    for (const std::string& file : files) {
        const PlainCapture plain;
        cv::Mat raw;
        cv::imread(file, cv::IMREAD_GRAYSCALE).convertTo(raw, CV_32F, -1.0 / 255.0, 1.0);
        FloorplanSegmenter segmenter(config, Debugger::create({}));
        const cv::Mat walls =
            segmenter.generateDenoisedAlone(raw, config.generate_denoised_alone).first;
        ASSERT_THAT(walls, MatEq(reference::denoisedMap(raw, config.generate_denoised_alone).map))
            << file;
        const cv::Mat ridges =
            RidgeFilter::generateRidgeMapMeijering(walls, config.generate_ridge_map_meijering);
        ASSERT_THAT(ridges, MatEq(reference::ridgeMap(walls, {2.0}, cv::BORDER_REFLECT_101)))
            << file;
        const cv::Mat boundary = RidgeFilter::generateBoundaryFromDilated(walls);
        ASSERT_THAT(boundary, MatEq(reference::boundaryMap(walls))) << file;

        cv::Mat away_from_walls;
        cv::distanceTransform(walls == 0.0, away_from_walls, cv::DIST_L2, cv::DIST_MASK_3);
        cv::Mat markers;
        cv::connectedComponents(away_from_walls > 14.0, markers, 4, CV_32S);
        markers.setTo(255, walls == 1.0);
        ASSERT_NO_FATAL_FAILURE(expectFloodsToAgree(ridges, markers, file));
        ASSERT_NO_FATAL_FAILURE(expectFloodsToAgree(boundary, markers, file));
    }
}

}  // namespace
}  // namespace vorund::test
