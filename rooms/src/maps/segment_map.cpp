#include "vorund/rooms/segment_map.h"

#include "maps/working_map.h"

namespace vorund::rooms {

cv::Mat segmentMap(const GridMap& map, FloorplanSegmenter& segmenter,
                   const StageObserver& observer) {
    const WorkingMap working(map);
    return working.resampling().labelsToMap(working.segment(segmenter, observer), map.values);
}

}  // namespace vorund::rooms
