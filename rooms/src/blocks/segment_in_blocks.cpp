#include "blocks/segment_in_blocks.h"

#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "blocks/division.h"
#include "maps/core_errors.h"
#include "marker_flood/marker_flood.h"
#include "vorund/ridge_filter.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/watershed_segmenter.h"

namespace vorund::rooms {
namespace {

constexpr int kWall = 255;       // In markers.
constexpr int kUnreached = 255;  // In the result.

class Run {
 public:
    Run(const Config& config, const std::shared_ptr<Debugger>& debugger,
        const StageObserver& observer)
        : config_(config), segmenter_(config, debugger), observer_(observer) {}

    Segmented operator()(const cv::Mat& values, int most_pixels) {
        try {
            return segment(values, most_pixels);
        } catch (const std::runtime_error& error) {
            const char* const cause = causeOfNoRoom(error);
            if (cause == nullptr) throw;
            throw MapError(cause);
        }
    }

 private:
    Segmented segment(const cv::Mat& values, int most_pixels) {
        tell(kStageDenoise, 0, 1);
        const auto [walls, crop] =
            segmenter_.generateDenoisedAlone(values, config_.generate_denoised_alone);
        const cv::Mat markers = segmenter_.findSeedMarkers(walls, observer_);
        const std::vector<Block> blocks = divide(walls < 0.5, most_pixels);
        const int count = static_cast<int>(blocks.size());
        Segmented regions{cv::Mat::zeros(values.size(), CV_32SC1), count};
        cv::Mat own = regions.labels(cv::Rect({crop.left, crop.top}, walls.size()));
        for (int i = 0; i < count; ++i) {
            tell(kStageBlocks, i, count);
            const Block& block = blocks[static_cast<std::size_t>(i)];
            const cv::Mat labels = flood(walls(block.view), markers(block.view));
            cv::Mat part = own(block.core);
            labels(block.core - block.view.tl()).copyTo(part);
        }
        tell(kStageBlocks, count, count);
        tell(kStageFinished, 1, 1);
        return regions;
    }

    /// As `doSegment` does after the seeds.
    cv::Mat flood(const cv::Mat& walls, cv::Mat markers) const {
        const int connectivity = config_.over_segment.create_watershed_segment_skimage.connectivity;
        cv::Mat cost =
            RidgeFilter::generateRidgeMapMeijering(walls, config_.generate_ridge_map_meijering);
        cv::Mat labels = internal::floodFromMarkers(cost, markers, connectivity, true,
                                                    internal::Ties::kPixelOrder);
        cost = RidgeFilter::generateBoundaryFromDilated(walls);
        // Lines and what the walls have taken are flooded from the regions beside them.
        labels.setTo(0, labels == kWall);
        labels.setTo(kWall, walls == 1.0);
        labels = WatershedSegmenter::executeSkimageWatershed(cost, labels, connectivity, false);
        swapWallsAndUnreached(labels);
        return labels;
    }

    static void swapWallsAndUnreached(cv::Mat& labels) {
        for (int row = 0; row < labels.rows; ++row) {
            std::int32_t* const label = labels.ptr<std::int32_t>(row);
            for (int col = 0; col < labels.cols; ++col) {
                if (label[col] == 0) {
                    label[col] = kUnreached;
                } else if (label[col] == kWall) {
                    label[col] = 0;
                }
            }
        }
    }

    void tell(const char* stage, int done, int total) const {
        if (observer_ && !observer_(stage, done, total)) {
            throw Cancelled(std::string("findRooms: cancelled at step ") + stage + ".");
        }
    }

    const Config& config_;
    FloorplanSegmenter segmenter_;
    const StageObserver& observer_;
};

}  // namespace

Segmented segmentInBlocks(const cv::Mat& values, const Config& config,
                          const std::shared_ptr<Debugger>& debugger, int most_pixels,
                          const StageObserver& observer) {
    return Run(config, debugger, observer)(values, most_pixels);
}

}  // namespace vorund::rooms
