#include "maps/working_map.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "maps/core_errors.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

/// Wider than the margin that the core leaves around a map's content by default. [pixels]
constexpr int kRim = 8;

constexpr int kTheOnlyRoom = 1;

cv::Size checkedSize(const cv::Mat& values) {
    bool usable = values.type() == CV_32FC1;
    for (int row = 0; usable && row < values.rows; ++row) {
        const float* first = values.ptr<float>(row);
        usable = std::all_of(first, first + values.cols,
                             [](float value) { return value >= 0.0F && value <= 1.0F; });
    }
    if (!usable) {
        throw std::invalid_argument("segmentMap: The values must be CV_32FC1, from 0 to 1.");
    }
    return values.size();
}

bool isAll(const cv::Mat& values, double value) {
    return cv::countNonZero(values != value) == 0;
}

bool hasFloorAtTheEdge(const cv::Mat& values) {
    const cv::Mat floor = values <= static_cast<double>(kWallThreshold);
    return cv::countNonZero(floor.row(0)) > 0 || cv::countNonZero(floor.row(floor.rows - 1)) > 0 ||
           cv::countNonZero(floor.col(0)) > 0 || cv::countNonZero(floor.col(floor.cols - 1)) > 0;
}

/// `doSegment`, with errors that a user of maps understands.
cv::Mat run(const cv::Mat& values, FloorplanSegmenter& segmenter, const StageObserver& observer) {
    try {
        return segmenter.doSegmentExact(values, observer);
    } catch (const LabelOverflow& error) {
        throw TooManyRooms(std::string("too many rooms: ") + error.what());
    } catch (const std::runtime_error& error) {
        const char* const cause = causeOfNoRoom(error);
        if (cause == nullptr) throw;
        throw MapError(cause);
    }
}

}  // namespace

WorkingMap::WorkingMap(const GridMap& map) : resampling_(checkedSize(map.values), map.resolution) {
    if (isAll(map.values, 1.0)) throw MapError("no free floor found");
    values_ = resampling_.toWorking(map.values);
    if (isAll(values_, 1.0)) {
        throw MapError("no room found: the free floor is narrower than the 0.05 m of a pixel");
    }
    all_floor_ = isAll(map.values, 0.0);
    needs_rim_ = !map.raw && hasFloorAtTheEdge(values_);
}

WorkingMap::Framed WorkingMap::framed() const {
    if (!needs_rim_) return {values_, cv::Rect({0, 0}, values_.size())};
    Framed framed{{}, cv::Rect({kRim, kRim}, values_.size())};
    cv::copyMakeBorder(values_, framed.values, kRim, kRim, kRim, kRim, cv::BORDER_CONSTANT,
                       cv::Scalar(1.0));
    return framed;
}

cv::Mat WorkingMap::segment(FloorplanSegmenter& segmenter, const StageObserver& observer) const {
    if (all_floor_) return {values_.size(), CV_8UC1, cv::Scalar(kTheOnlyRoom)};
    const Framed map = framed();
    const cv::Mat labels = run(map.values, segmenter, observer)(map.own);
    requireRooms(labels);
    return needs_rim_ ? labels.clone() : labels;
}

void requireRooms(const cv::Mat& labels) {
    const cv::Mat rooms = (labels != 0) & (labels != 255);
    if (cv::countNonZero(rooms) == 0) {
        throw MapError(
            "no room found: no region of floor lives long enough over the scales (see "
            "generate_denoised_alone and filter_threshold in over_segment)");
    }
}

}  // namespace vorund::rooms
