#include "vorund/rooms/room_fates.h"

#include <algorithm>
#include <cstddef>
#include <map>

#include "score/score_comparison.h"
#include "score/score_figures.h"

namespace vorund::rooms {
namespace {

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

/// By index of the predicted rooms, the true rooms of which they cover half.
using MostlyIn = std::map<int, std::vector<int>>;

class Fates {
 public:
    explicit Fates(const Comparison& images) : images_(images), overlaps_(images.overlaps) {
        for (const Overlap& pair : overlaps_.pairs) {
            if (shareOfTruth(pair) >= kMergedShare) mostly_in_[pair.segment].push_back(pair.truth);
        }
    }

    std::vector<RoomFate> all() const {
        std::vector<RoomFate> fates(overlaps_.truth_areas.size());
        for (std::size_t i = 0; i < fates.size(); ++i) {
            fates[i].room = labelOfTruth(static_cast<int>(i));
        }
        for (const Overlap& pair : bySize()) add(pair, fates[at(pair.truth)]);
        for (RoomFate& fate : fates) {
            if (fate.split.size() < 2) fate.split.clear();
        }
        return fates;
    }

 private:
    double shareOfTruth(const Overlap& pair) const {
        return pair.pixels / overlaps_.truth_areas[at(pair.truth)];
    }

    std::int64_t labelOfTruth(int index) const {
        return images_.rooms.labels[at(overlaps_.truth_numbers[at(index)] - 1)];
    }

    std::int64_t labelOfSegment(int index) const {
        return images_.segments.labels[at(overlaps_.segment_numbers[at(index)] - 1)];
    }

    std::vector<Overlap> bySize() const {
        std::vector<Overlap> pairs = overlaps_.pairs;
        std::stable_sort(pairs.begin(), pairs.end(),
                         [](const Overlap& a, const Overlap& b) { return a.pixels > b.pixels; });
        return pairs;
    }

    void add(const Overlap& pair, RoomFate& fate) const {
        fate.iou = std::max(fate.iou, intersectionOverUnion(pair, overlaps_));
        if (shareOfTruth(pair) >= kPieceShare) fate.split.push_back(labelOfSegment(pair.segment));
        const auto mostly = mostly_in_.find(pair.segment);
        if (shareOfTruth(pair) < kMergedShare || mostly->second.size() < 2 || fate.joined) return;
        fate.joined = labelOfSegment(pair.segment);
        for (const int other : mostly->second) {
            if (other != pair.truth) fate.joined_with.push_back(labelOfTruth(other));
        }
    }

    const Comparison& images_;
    const Overlaps& overlaps_;
    MostlyIn mostly_in_;
};

}  // namespace

std::vector<RoomFate> fatesOfRooms(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map,
                                   std::optional<int> unreached) {
    return Fates(compareRooms(predicted, truth, map, unreached)).all();
}

}  // namespace vorund::rooms
