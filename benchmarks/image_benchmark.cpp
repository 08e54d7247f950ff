// Load, denoise, dilate, ridges and boundary.

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "reference/floorplan_segmenter.h"
#include "reference/image_utils.h"
#include "reference/ridge_filter.h"
#include "stage.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/ridge_filter.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::bench {
namespace {

/// A map as a PNG file, removed at the end.
class MapFile {
 public:
    explicit MapFile(const cv::Mat& picture)
        : path_(std::filesystem::temp_directory_path() /
                ("vorund-benchmark-" + std::to_string(::getpid()) + ".png")) {
        if (!cv::imwrite(path_.string(), picture)) {
            throw std::runtime_error(path_.string() + ": cannot be written");
        }
    }
    ~MapFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    MapFile(const MapFile&) = delete;
    MapFile& operator=(const MapFile&) = delete;

    std::string path() const { return path_.string(); }

 private:
    std::filesystem::path path_;
};

Work load(int side, Kind kind) {
    const auto file = std::make_shared<MapFile>(enlarged(tileOf(side, kind).map.picture, side));
    return {[file] { rooms::readMap(file->path()); }, {}};
}

Work denoise(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const cv::Mat map = enlarged(tileOf(side, kind).map.values, side);
    return {[=] {
                FloorplanSegmenter(config, Debugger::create({}))
                    .generateDenoisedAlone(map, config.generate_denoised_alone);
            },
            {}};
}

Work denoisePlainly(int side, Kind kind) {
    const Config config = settingsOf(kind).core;
    const cv::Mat map = enlarged(tileOf(side, kind).map.values, side);
    return {[=] { reference::denoised(map, config.generate_denoised_alone); }, {}};
}

/// A stage that has nothing but the denoised map and the settings.
template <class Stage>
Preparation onDenoised(Stage stage) {
    return [stage](int side, Kind kind) -> Work {
        const Config config = settingsOf(kind).core;
        const cv::Mat map = enlarged(tileOf(side, kind).denoised, side);
        return {[=] { stage(map, config); }, {}};
    };
}

}  // namespace

void addImageStages() {
    addStage("load", load, {});
    addStage("denoise", denoise, denoisePlainly);
    addStage("dilate", onDenoised([](const cv::Mat& map, const Config& config) {
                 ImageUtils::dilateBinary(map, config.dilate_binary.kernel_size,
                                          config.dilate_binary.iterations);
             }),
             onDenoised([](const cv::Mat& map, const Config& config) {
                 reference::dilated(map, config.dilate_binary);
             }));
    addStage("ridges", onDenoised([](const cv::Mat& map, const Config& config) {
                 RidgeFilter::generateRidgeMapMeijering(map, config.generate_ridge_map_meijering);
             }),
             onDenoised([](const cv::Mat& map, const Config& config) {
                 reference::ridgeMap(map, config.generate_ridge_map_meijering);
             }));
    addStage("boundary", onDenoised([](const cv::Mat& map, const Config&) {
                 RidgeFilter::generateBoundaryFromDilated(map);
             }),
             onDenoised([](const cv::Mat& map, const Config&) { reference::boundaryMap(map); }));
}

}  // namespace vorund::bench
