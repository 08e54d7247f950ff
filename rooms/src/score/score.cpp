#include "vorund/rooms/score.h"

#include "score/score_areas.h"
#include "score/score_comparison.h"
#include "score/score_figures.h"
#include "score/score_overlaps.h"

namespace vorund::rooms {
namespace {

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

}  // namespace

Score scoreRooms(const cv::Mat& predicted, const Truth& truth, const cv::Mat& map,
                 std::optional<int> unreached) {
    const Comparison images = compareRooms(predicted, truth, map, unreached);
    Score score;
    addFigures(images.overlaps, cv::countNonZero(images.counted), score);
    score.unlabelled = shareOf(images.segments.numbers == 0, images.counted);
    score.cover = shareOf(images.segments.numbers > 0, largestArea(images.free));
    addRaw(images.segments, truth, score);
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
