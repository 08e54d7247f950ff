#include "blocks/find_regions.h"

#include <cstdint>

namespace vorund::rooms {
namespace {

/// From this size on 8 bits mostly do not hold a map's regions, which is seen late, and one piece
/// is slow.
constexpr std::int64_t kFewestPixelsOfDivided = 4'000'000;

bool isDivided(const Settings& settings, const cv::Size& working_size) {
    return settings.rooms.blocks == "always" ||
           std::int64_t{working_size.width} * working_size.height >= kFewestPixelsOfDivided;
}

Segmented segmentDivided(const WorkingMap& map, const Settings& settings,
                         const std::shared_ptr<Debugger>& debugger, const StageObserver& observer) {
    const WorkingMap::Framed framed = map.framed();
    Segmented regions = segmentInBlocks(framed.values, settings.core, debugger,
                                        settings.rooms.block_pixels, observer);
    regions.labels = regions.labels(framed.own);
    requireRooms(regions.labels);
    return regions;
}

}  // namespace

Segmented findRegions(const WorkingMap& map, const Settings& settings,
                      const std::shared_ptr<Debugger>& debugger, const StageObserver& observer) {
    if (map.isAllFloor() || !isDivided(settings, map.resampling().workingSize())) {
        try {
            FloorplanSegmenter segmenter(settings.core, debugger);
            return {map.segment(segmenter, observer), 1};
        } catch (const TooManyRooms&) {
            // In blocks, then.
        }
    }
    return segmentDivided(map, settings, debugger, observer);
}

}  // namespace vorund::rooms
