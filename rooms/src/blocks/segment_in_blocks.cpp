#include "blocks/segment_in_blocks.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "blocks/block_seeds.h"
#include "blocks/joining.h"
#include "maps/core_errors.h"
#include "vorund/ridge_filter.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/watershed_segmenter.h"

namespace vorund::rooms {
namespace {

constexpr int kWall = 255;       // In markers.
constexpr int kUnreached = 255;  // In the result.

/// Floor of the denoised map, and where it lies in the map.
struct Floor {
    cv::Mat floor;  ///< `CV_8UC1`: 1 = floor, 0 = wall.
    cv::Rect place;
};

class Run {
 public:
    Run(const Config& config, const std::shared_ptr<Debugger>& debugger,
        const StageObserver& observer)
        : config_(config), segmenter_(config, debugger), observer_(observer) {}

    Regions operator()(const cv::Mat& values, int most_pixels) {
        tell(kStageDenoise, 0, 1);
        const Floor map = denoise(values);
        findAllSeeds(map.floor, most_pixels);
        const int blocks = static_cast<int>(done_.size());
        cv::Mat markers = joinSeeds(done_, map.floor.size());
        done_.clear();
        const cv::Mat filled = flood(map.floor, markers);
        markers.release();
        Regions regions{cv::Mat::zeros(values.size(), CV_32SC1), blocks};
        cv::Mat part = regions.labels(map.place);
        filled.copyTo(part);
        tell(kStageFinished, 1, 1);
        return regions;
    }

 private:
    Floor denoise(const cv::Mat& values) {
        try {
            const auto [walls, crop] =
                segmenter_.generateDenoisedAlone(values, config_.generate_denoised_alone);
            Floor map{{}, cv::Rect({crop.left, crop.top}, walls.size())};
            cv::threshold(walls, map.floor, 0.5, 1.0, cv::THRESH_BINARY_INV);
            map.floor.convertTo(map.floor, CV_8U);
            return map;
        } catch (const std::runtime_error& error) {
            const char* const cause = causeOfNoRoom(error);
            if (cause == nullptr) throw;
            throw MapError(cause);
        }
    }

    void findAllSeeds(const cv::Mat& floor, int most_pixels) {
        const Division division(floor, most_pixels);
        std::vector<Block> blocks = division.blocks();
        // The last comes first, so that the halves of a block take its place in the order.
        std::reverse(blocks.begin(), blocks.end());
        while (!blocks.empty()) {
            const Block block = blocks.back();
            const auto tellBlocks = [&] {
                tell(kStageBlocks, static_cast<int>(done_.size()),
                     static_cast<int>(done_.size() + blocks.size()));
            };
            try {
                done_.push_back(
                    {block, findSeeds(floor, block.view, config_, segmenter_, tellBlocks)});
                blocks.pop_back();
            } catch (const LabelOverflow& error) {
                const std::vector<Block> halves = division.halves(block);
                if (halves.empty()) throw MapError(std::string("too many rooms: ") + error.what());
                blocks.pop_back();
                blocks.insert(blocks.end(), halves.rbegin(), halves.rend());
            }
        }
        tell(kStageBlocks, static_cast<int>(done_.size()), static_cast<int>(done_.size()));
    }

    /// As `doSegment` does after the seeds.
    cv::Mat flood(const cv::Mat& floor, cv::Mat& markers) const {
        const int connectivity = config_.over_segment.create_watershed_segment_skimage.connectivity;
        cv::Mat walls = 1 - floor;
        walls.convertTo(walls, CV_32F);

        tell(kStageRidges, 0, 1);
        cv::Mat cost =
            RidgeFilter::generateRidgeMapMeijering(walls, config_.generate_ridge_map_meijering);
        tell(kStageOverSegment, 0, 1);
        markers = WatershedSegmenter::executeSkimageWatershed(cost, markers, connectivity, true);

        tell(kStageFill, 0, 1);
        cost.release();
        cost = RidgeFilter::generateBoundaryFromDilated(walls);
        // Lines and what the walls have taken are flooded from the regions beside them.
        markers.setTo(0, markers == kWall);
        markers.setTo(kWall, floor == 0);
        cv::Mat filled =
            WatershedSegmenter::executeSkimageWatershed(cost, markers, connectivity, false);
        swapWallsAndUnreached(filled);
        return filled;
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
    std::vector<SeededBlock> done_;
};

}  // namespace

Regions segmentInBlocks(const cv::Mat& values, const Config& config,
                        const std::shared_ptr<Debugger>& debugger, int most_pixels,
                        const StageObserver& observer) {
    return Run(config, debugger, observer)(values, most_pixels);
}

}  // namespace vorund::rooms
