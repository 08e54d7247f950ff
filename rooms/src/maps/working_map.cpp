#include "maps/working_map.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "cleaning/clutter.h"
#include "maps/core_errors.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

/// Wider than the margin that the core leaves around a map's content by default. [pixels]
constexpr int kRim = 8;

constexpr int kTheOnlyRoom = 1;

bool hasFloorAtTheEdge(const cv::Mat& values) {
    const auto hasFloor = [](const cv::Mat& line) {
        return cv::countNonZero(line <= static_cast<double>(kWallThreshold)) > 0;
    };
    return hasFloor(values.row(0)) || hasFloor(values.row(values.rows - 1)) ||
           hasFloor(values.col(0)) || hasFloor(values.col(values.cols - 1));
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

template <class T>
bool hasRoom(const cv::Mat& labels) {
    for (int row = 0; row < labels.rows; ++row) {
        const T* const first = labels.ptr<T>(row);
        if (std::any_of(first, first + labels.cols,
                        [](T label) { return label != 0 && label != 255; })) {
            return true;
        }
    }
    return false;
}

}  // namespace

/// By their bits: as whole numbers, floats above 1 and no numbers are greater than 1, and those
/// below 0, but for the negative zero, are between the least number and 0. Comparing floats would
/// take a branch for each.
WorkingMap::Found WorkingMap::findIn(const cv::Mat& values) {
    constexpr std::int32_t kOne = 0x3F800000;
    constexpr std::int32_t kNegativeZero = std::numeric_limits<std::int32_t>::min();
    std::int32_t not_one = 0;
    std::int32_t not_zero = 0;
    std::int32_t unusable = 0;
    for (int row = 0; row < values.rows; ++row) {
        const float* const value = values.ptr<float>(row);
        for (int col = 0; col < values.cols; ++col) {
            std::int32_t bits = 0;
            std::memcpy(&bits, value + col, sizeof bits);
            not_one |= bits ^ kOne;
            not_zero |= bits & std::numeric_limits<std::int32_t>::max();
            const bool is_usable = (bits >= 0 && bits <= kOne) || bits == kNegativeZero;
            unusable |= is_usable ? 0 : 1;
        }
    }
    return {not_one != 0, not_zero != 0, unusable != 0};
}

WorkingMap::Found WorkingMap::findUsable(const cv::Mat& values) {
    const Found found = values.type() == CV_32FC1 ? findIn(values) : Found{true, true, true};
    if (found.unusable) {
        throw std::invalid_argument("segmentMap: The values must be CV_32FC1, from 0 to 1.");
    }
    return found;
}

WorkingMap::WorkingMap(const GridMap& map) : WorkingMap(map, findUsable(map.values)) {}

WorkingMap::WorkingMap(const GridMap& map, const Found& found)
    : resampling_(map.values.size(), map.resolution), own_values_(map.values) {
    if (!found.other_than_wall) throw MapError("no free floor found");
    values_ = resampling_.isIdentity() ? map.values : resampling_.toWorking(map.values);
    if (!resampling_.isIdentity() && !findIn(values_).other_than_wall) {
        throw MapError("no room found: the free floor is narrower than the 0.05 m of a pixel");
    }
    all_floor_ = !found.other_than_floor;
    needs_rim_ = !map.raw && hasFloorAtTheEdge(values_);
}

WorkingMap::WorkingMap(const GridMap& map, const Settings& settings) : WorkingMap(map) {
    wall_threshold_ = settings.core.generate_denoised_alone.binary_make_binary.threshold;
    if (!settings.rooms.clear_clutter || all_floor_) return;
    const cv::Mat before = values_;
    values_ = withoutClutter(before, wall_threshold_, settings.rooms);
    if (resampling_.isIdentity()) {
        own_values_ = values_;
    } else {
        const cv::Mat cleared =
            resampling_.maskToMap(values_ < before, cv::Mat::zeros(map.values.size(), CV_32FC1));
        own_values_ = map.values.clone();
        own_values_.setTo(0.0, cleared);
    }
    all_floor_ = !findIn(values_).other_than_floor;
    needs_rim_ = !map.raw && hasFloorAtTheEdge(values_);
}

cv::Mat WorkingMap::floor() const {
    return values_ <= wall_threshold_;
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
    if (labels.type() == CV_8UC1 ? hasRoom<std::uint8_t>(labels) : hasRoom<std::int32_t>(labels)) {
        return;
    }
    throw MapError(
        "no room found: no region of floor lives long enough over the scales (see "
        "generate_denoised_alone and filter_threshold in over_segment)");
}

}  // namespace vorund::rooms
