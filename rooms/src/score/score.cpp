#include "vorund/rooms/score.h"

#include <stdexcept>

#include "score/score_areas.h"
#include "score/score_figures.h"
#include "score/score_overlaps.h"

namespace vorund::rooms {
namespace {

constexpr int kLeastSegment = 100;  // [pixels], 0.25 m^2 at 0.05 m per pixel
constexpr LeastAreas kLeastRawAreas{101, 101};

void addRaw(const NumberedRooms& segments, const Truth& truth, Score& score) {
    const NumberedRooms rooms = numberRooms(truth.all_rooms, "scoreRooms: truth");
    const cv::Mat everywhere(segments.numbers.size(), CV_8UC1, cv::Scalar(255));
    Score raw;
    addShares(countOverlaps(rooms, segments, everywhere, kLeastRawAreas), raw);
    score.recall_raw = raw.recall;
    score.precision_raw = raw.precision;
    score.recall_px_raw = raw.recall_px;
    score.precision_px_raw = raw.precision_px;
}

double shareOf(const cv::Mat& part, const cv::Mat& whole) {
    return ratio(cv::countNonZero(part & whole), cv::countNonZero(whole));
}

std::string sizeText(const cv::Mat& image) {
    return std::to_string(image.cols) + " x " + std::to_string(image.rows);
}

void requireSize(const cv::Mat& image, const char* what, const cv::Mat& truth) {
    if (image.size() == truth.size()) return;
    throw std::invalid_argument(std::string("scoreRooms: the ") + what + " has " + sizeText(image) +
                                " pixels, the truth " + sizeText(truth));
}

void requireFitting(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map) {
    if (truth.rooms.empty()) throw std::invalid_argument("scoreRooms: the truth is empty");
    requireSize(predicted, "prediction", truth.rooms);
    requireSize(truth.all_rooms, "image of all true rooms", truth.rooms);
    if (map.empty()) return;
    requireSize(map, "map", truth.rooms);
    if (map.type() != CV_8UC1) throw std::invalid_argument("scoreRooms: the map must be CV_8UC1");
}

cv::Mat freeIn(const cv::Mat& map, const cv::Size& size) {
    if (map.empty()) return cv::Mat(size, CV_8UC1, cv::Scalar(255));
    return map >= kLeastFreeGrey;
}

}  // namespace

Score scoreRooms(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map,
                 std::optional<int> unreached) {
    requireFitting(predicted, truth, map);
    const NumberedRooms segments = numberRooms(predicted, "scoreRooms: prediction", unreached);
    const NumberedRooms rooms = numberRooms(truth.rooms, "scoreRooms: truth");
    const cv::Mat free = freeIn(map, truth.rooms.size());
    const cv::Mat counted = free & (rooms.numbers > 0);
    const int all_pixels = cv::countNonZero(counted);
    if (all_pixels == 0) {
        throw std::invalid_argument("scoreRooms: no pixel of a true room is free in the map");
    }

    const Overlaps overlaps = countOverlaps(rooms, segments, counted, {1, kLeastSegment});
    Score score;
    addFigures(overlaps, all_pixels, score);
    score.unlabelled = shareOf(segments.numbers == 0, counted);
    score.cover = shareOf(segments.numbers > 0, largestArea(free));
    addRaw(segments, truth, score);
    return score;
}

std::vector<Figure> figuresOf(const Score& score) {
    return {{"n_gt", static_cast<double>(score.n_gt), true},
            {"n_pred", static_cast<double>(score.n_pred), true},
            {"recall", score.recall, false},
            {"precision", score.precision, false},
            {"recall_px", score.recall_px, false},
            {"precision_px", score.precision_px, false},
            {"mcc", score.mcc, false},
            {"mcc_1to1", score.mcc_1to1, false},
            {"iou_gt", score.iou_gt, false},
            {"iou_seg", score.iou_seg, false},
            {"iou_gt_px", score.iou_gt_px, false},
            {"iou_seg_px", score.iou_seg_px, false},
            {"f1_50", score.f1_50, false},
            {"f1_75", score.f1_75, false},
            {"pq", score.pq, false},
            {"over", static_cast<double>(score.over), true},
            {"under", static_cast<double>(score.under), true},
            {"merged_gt", static_cast<double>(score.merged_gt), true},
            {"unlabelled", score.unlabelled, false},
            {"cover", score.cover, false},
            {"recall_raw", score.recall_raw, false},
            {"precision_raw", score.precision_raw, false},
            {"recall_px_raw", score.recall_px_raw, false},
            {"precision_px_raw", score.precision_px_raw, false}};
}

}  // namespace vorund::rooms
