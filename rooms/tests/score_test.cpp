#include "vorund/rooms/score.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::asView;
using test::labels;
using test::labels32;
using test::MatEq;
using ::testing::DoubleNear;
using ::testing::Each;
using ::testing::Field;
using ::testing::ThrowsMessage;

constexpr double kPrecision = 1e-12;

testing::Matcher<double> near(double value) {
    return DoubleNear(value, kPrecision);
}

/// Every pixel as a square of 10 x 10, so that a cell has the area of the smallest room that
/// counts.
cv::Mat cells(const cv::Mat& grid) {
    cv::Mat large;
    cv::resize(grid, large, {}, 10.0, 10.0, cv::INTER_NEAREST);
    return large;
}

cv::Mat cells(const std::string& grid) {
    return cells(labels(grid));
}

/// Score of one drawn grid of cells against another, all of the map free.
Score scoreOf(const std::string& predicted, const std::string& truth) {
    return scoreRooms(cells(predicted), truthFromLabels(cells(truth)));
}

std::vector<double> valuesOf(const Score& score) {
    std::vector<double> values;
    for (const Figure& figure : figuresOf(score)) values.push_back(figure.value);
    return values;
}

TEST(ScoreRooms, GivesEveryFigureItsBestValueWhereTheRoomsAreTheSame) {
    const Score score = scoreOf("7 7 . 5 5 . 9 9", "1 1 . 2 2 . 3 3");
    for (const Figure& figure : figuresOf(score)) {
        const bool is_best_at_one = !figure.is_count && figure.name != "unlabelled";
        // The free cells between the rooms have no label, as in the truth.
        const double best = figure.name == "cover" ? 6.0 / 8.0 : 1.0;
        if (!is_best_at_one) continue;
        EXPECT_THAT(figure.value, near(best)) << figure.name;
    }
    EXPECT_EQ(score.n_gt, 3);
    EXPECT_EQ(score.n_pred, 3);
    EXPECT_EQ(score.over, 0);
    EXPECT_EQ(score.under, 0);
    EXPECT_EQ(score.merged_gt, 0);
    EXPECT_EQ(score.unlabelled, 0.0);
}

TEST(ScoreRooms, SeesThreeRoomsInOne) {
    const Score score = scoreOf("1 1 1 1 1 1 1 1", "1 1 . 2 2 . 3 3");
    EXPECT_EQ(score.n_pred, 1);
    EXPECT_THAT(score.recall, near(1.0));
    EXPECT_THAT(score.precision, near(1.0 / 3.0));
    // Nothing lies outside the predicted room, so that no correlation is defined.
    EXPECT_EQ(score.mcc, 0.0);
    EXPECT_EQ(score.mcc_1to1, 0.0);
    EXPECT_THAT(score.iou_gt, near(1.0 / 3.0));
    EXPECT_THAT(score.iou_seg, near(1.0 / 3.0));
    EXPECT_EQ(score.f1_50, 0.0);
    EXPECT_EQ(score.pq, 0.0);
    EXPECT_EQ(score.over, 0);
    EXPECT_EQ(score.under, 1);
    EXPECT_EQ(score.merged_gt, 3);
    EXPECT_THAT(score.cover, near(1.0));
    // The cells between the rooms count here.
    EXPECT_THAT(score.precision_raw, near(2.0 / 8.0));
}

TEST(ScoreRooms, SeesEveryRoomInHalves) {
    const Score score = scoreOf("1 2 . 3 4 . 5 6", "1 1 . 2 2 . 3 3");
    EXPECT_EQ(score.n_pred, 6);
    EXPECT_EQ(score.over, 3);
    EXPECT_THAT(score.recall, near(0.5));
    EXPECT_THAT(score.precision, near(1.0));
    // In cells: 1 right, 0 too much, 1 missing, 4 elsewhere.
    const double correlation = 4.0 / std::sqrt(1.0 * 2.0 * 4.0 * 5.0);
    EXPECT_THAT(score.mcc, near(correlation));
    EXPECT_THAT(score.mcc_1to1, near(correlation / 2.0));  // 3 of the 6 are left over.
    EXPECT_EQ(score.f1_50, 0.0);                           // An IoU of 0.5 is not above it.
}

TEST(ScoreRooms, MeasuresAMixtureOfRightAndCutRooms) {
    const Score score = scoreOf("3 3 3 5 . 4 4 4 4", "1 1 1 1 . 2 2 2 2");
    EXPECT_THAT(score.recall, near((0.75 + 1.0) / 2.0));
    EXPECT_THAT(score.recall_px, near(7.0 / 8.0));
    EXPECT_THAT(score.precision, near(1.0));
    const double cut = 3.0 * 4.0 / std::sqrt(3.0 * 4.0 * 4.0 * 5.0);
    EXPECT_THAT(score.mcc, near((cut + 1.0) / 2.0));
    EXPECT_THAT(score.mcc_1to1, near((cut + 1.0) / 3.0));
    EXPECT_THAT(score.iou_gt, near((0.75 + 1.0) / 2.0));
    EXPECT_THAT(score.iou_seg, near((0.75 + 1.0 + 0.25) / 3.0));
    EXPECT_THAT(score.iou_seg_px, near((3.0 * 0.75 + 4.0 * 1.0 + 1.0 * 0.25) / 8.0));
    EXPECT_THAT(score.f1_50, near(0.8));  // 2 of 2 found by 2 of 3.
    EXPECT_THAT(score.f1_75, near(0.4));  // 0.75 is not above 0.75: 1 of 2 by 1 of 3.
    EXPECT_THAT(score.pq, near((0.75 + 1.0) / 2.5));
    EXPECT_EQ(score.over, 1);
}

TEST(ScoreRooms, WeightsWithAreas) {
    // The first room of 1 cell is swallowed by that of 3; the room of 4 is right.
    const Score score = scoreOf("6 6 6 6 8 8 8 8", "1 2 2 2 3 3 3 3");
    EXPECT_THAT(score.precision, near((0.75 + 1.0) / 2.0));
    EXPECT_THAT(score.precision_px, near(7.0 / 8.0));
    EXPECT_THAT(score.recall_px, near(1.0));
    EXPECT_THAT(score.iou_gt, near((0.25 + 0.75 + 1.0) / 3.0));
    EXPECT_THAT(score.iou_gt_px, near((1.0 * 0.25 + 3.0 * 0.75 + 4.0 * 1.0) / 8.0));
    EXPECT_THAT(score.iou_seg_px, near((4.0 * 0.75 + 4.0 * 1.0) / 8.0));
}

TEST(ScoreRooms, GivesNothingToAnEmptyPrediction) {
    const Score score = scoreOf(". . . .", "1 1 2 2");
    EXPECT_EQ(score.n_gt, 2);
    EXPECT_EQ(score.unlabelled, 1.0);
    Score nothing;
    nothing.n_gt = 2;
    nothing.unlabelled = 1.0;
    EXPECT_EQ(valuesOf(score), valuesOf(nothing));
}

TEST(ScoreRooms, TakesPairsGreedily) {
    // 1 with 6 and 2 with 5 would leave no room over, but the largest overlap is that of 1 and 5.
    const Score score = scoreOf("5 5 5 5 6 6 6 5 5 5", "1 1 1 1 1 1 1 2 2 2");
    // In cells: 4 right, 3 too much, 3 missing, none elsewhere; room 2 and room 6 are left over.
    const double correlation = (4.0 * 0.0 - 3.0 * 3.0) / std::sqrt(7.0 * 7.0 * 3.0 * 3.0);
    EXPECT_THAT(score.mcc_1to1, near(correlation / 3.0));
}

TEST(ScoreRooms, GivesEqualOverlapsToTheSmallerLabel) {
    // Room 1 shares one cell with each of two rooms. With the one that lies within it: 1 right,
    // 1 missing, 1 elsewhere; with the other: 1 right, 1 too much, 1 missing, none elsewhere.
    const double within = 1.0 / std::sqrt(1.0 * 2.0 * 1.0 * 2.0);
    const double beyond = -1.0 / std::sqrt(2.0 * 2.0 * 1.0 * 1.0);
    const double second = 1.0 / std::sqrt(2.0 * 1.0 * 2.0 * 1.0);  // Room 2, the same either way.
    EXPECT_THAT(scoreOf("5 9 9", "1 1 2").mcc, near((within + second) / 2.0));
    EXPECT_THAT(scoreOf("9 5 5", "1 1 2").mcc, near((beyond + second) / 2.0));
    // One to one the smaller true label comes first: 1 with 5, then 2 with 9; or 1 with the 5 that
    // 2 would have needed.
    EXPECT_THAT(scoreOf("5 9 9", "1 1 2").mcc_1to1, near((within + second) / 2.0));
    EXPECT_THAT(scoreOf("9 5 5", "1 1 2").mcc_1to1, near(beyond / 3.0));
}

TEST(ScoreRooms, GivesAnEqualOverlapOfPredictedRoomsToTheSmallerTrueLabel) {
    // The predicted room shares one cell with each true one; their areas are 1 and 3.
    EXPECT_THAT(scoreOf("5 5 . .", "1 2 2 2").iou_seg, near(1.0 / 2.0));
    EXPECT_THAT(scoreOf("5 5 . .", "2 1 1 1").iou_seg, near(1.0 / 4.0));
}

TEST(ScoreRooms, CountsARoomAsSplitByPiecesOf15Percent) {
    const std::string room = "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1";
    EXPECT_EQ(scoreOf("2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 3 3 3", room).over, 1);
    EXPECT_EQ(scoreOf("2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 3 3", room).over, 0);
}

TEST(ScoreRooms, CountsRoomsAsMergedFromHalfOfThemOn) {
    const Score half = scoreOf(". 5 5 .", "1 1 2 2");
    EXPECT_EQ(half.under, 1);
    EXPECT_EQ(half.merged_gt, 2);
    const Score less = scoreOf(". . 5 5 5 .", "1 1 1 2 2 2");
    EXPECT_EQ(less.under, 0);
    EXPECT_EQ(less.merged_gt, 0);
}

TEST(ScoreRooms, TakesPiecesOfOneLabelAsOneRoom) {
    const Score score = scoreOf("4 . 4 . 8", "1 . 1 . 2");
    EXPECT_EQ(score.n_pred, 2);
    EXPECT_EQ(score.n_gt, 2);
    EXPECT_THAT(score.mcc_1to1, near(1.0));
}

/// A true room of 10 x 20 pixels, the last `count` of which belong to a predicted room 2, the
/// others to a room 1.
Score scoreWithSmallRoomOf(int count) {
    const cv::Mat truth(10, 20, CV_8UC1, cv::Scalar(1));
    cv::Mat predicted = truth.clone();
    for (int i = 200 - count; i < 200; ++i) predicted.at<std::uint8_t>(i / 20, i % 20) = 2;
    return scoreRooms(predicted, truthFromLabels(truth));
}

TEST(ScoreRooms, LeavesOutPredictedRoomsOfLessThan100CountedPixels) {
    EXPECT_EQ(scoreWithSmallRoomOf(100).n_pred, 2);
    const Score score = scoreWithSmallRoomOf(99);
    EXPECT_EQ(score.n_pred, 1);
    EXPECT_THAT(score.recall, near(101.0 / 200.0));
    EXPECT_EQ(score.unlabelled, 0.0);
}

TEST(ScoreRooms, LeavesOutRoomsOfUpTo100PixelsInTheRawFigures) {
    EXPECT_THAT(scoreWithSmallRoomOf(90).recall_raw, near(110.0 / 200.0));
    EXPECT_EQ(scoreWithSmallRoomOf(100).recall_raw, 0.0);  // Neither half is above 100.
    const Truth truth = truthFromLabels(cells("1 2 2"));
    const Score score = scoreRooms(cells("5 6 6"), truth);
    EXPECT_EQ(score.n_gt, 2);
    EXPECT_THAT(score.recall_px_raw, near(1.0));  // Of the true room 2 alone.
    EXPECT_THAT(scoreRooms(cells("5 6 ."), truth).recall_px_raw, near(0.0));
}

TEST(ScoreRooms, CountsOnlyPixelsThatAreFreeInTheMap) {
    const Truth truth = truthFromLabels(cells("1 1 1 1 2 2 2 2 3 3"));
    const cv::Mat predicted = cells("1 1 2 2 2 2 2 2 . .");
    // Furniture covers what is wrong; 250 is free, 249 is not.
    const cv::Mat map = cells("255 250 249 205 254 255 255 255 0 0");
    const Score score = scoreRooms(predicted, truth, map);
    EXPECT_EQ(score.n_gt, 2);  // Nothing of room 3 is seen.
    EXPECT_THAT(score.mcc_1to1, near(1.0));
    EXPECT_EQ(score.unlabelled, 0.0);
    EXPECT_THAT(score.recall_raw, near((0.5 + 1.0 + 0.0) / 3.0));
    EXPECT_THAT(score.precision_raw, near((1.0 + 4.0 / 6.0) / 2.0));
    EXPECT_THAT(score.recall_px_raw, near(6.0 / 10.0));
    EXPECT_THAT(score.precision_px_raw, near(6.0 / 8.0));
}

TEST(ScoreRooms, CoversTheLargestFreeAreaOfTheMap) {
    const Truth truth = truthFromLabels(cells("1 1 1 . 2 2 2 2"));
    const cv::Mat predicted = cells("4 4 4 . 5 5 5 .");
    EXPECT_THAT(scoreRooms(predicted, truth, cells("255 255 255 0 255 255 255 255")).cover,
                near(3.0 / 4.0));
    // Of two equally large ones the first.
    EXPECT_THAT(scoreRooms(predicted, truth, cells("255 255 255 0 0 255 255 255")).cover,
                near(1.0));
    EXPECT_THAT(scoreRooms(predicted, truth).cover, near(6.0 / 8.0));
}

TEST(ScoreRooms, CountsUnlabelledPixels) {
    EXPECT_THAT(scoreOf("1 1 . 2 .", "1 1 1 2 .").unlabelled, near(1.0 / 4.0));
}

TEST(ScoreRooms, TakesTheUnreachedFloorAsNoRoomIfTold) {
    const Truth truth = truthFromLabels(cells("1 1 2 2"));
    const cv::Mat predicted = cells("1 255 2 2");
    EXPECT_EQ(scoreRooms(predicted, truth).n_pred, 3);
    const Score score = scoreRooms(predicted, truth, {}, 255);
    EXPECT_EQ(score.n_pred, 2);
    EXPECT_THAT(score.unlabelled, near(1.0 / 4.0));
    EXPECT_EQ(valuesOf(score), valuesOf(scoreOf("1 . 2 2", "1 1 2 2")));
}

TEST(ScoreRooms, ReadsLabelsOfEveryDepthAndColours) {
    const Truth truth = truthFromLabels(cells("1 1 . 2 2 3"));
    const std::vector<double> expected = valuesOf(scoreRooms(cells("1 1 1 2 3 ."), truth));

    cv::Mat wide;
    cells("1 1 1 2 3 .").convertTo(wide, CV_16U, 20000.0);
    EXPECT_EQ(valuesOf(scoreRooms(wide, truth)), expected);
    EXPECT_EQ(valuesOf(scoreRooms(cells(labels32("7 7 7 70000 2000000000 .")), truth)), expected);

    // Black is no room, whatever its alpha.
    cv::Mat colours;
    cv::merge(
        std::vector<cv::Mat>{cells("9 9 9 0 0 0"), cells("0 0 0 1 0 0"), cells("0 0 0 0 1 0")},
        colours);
    EXPECT_EQ(valuesOf(scoreRooms(colours, truth)), expected);
    cv::Mat with_alpha;
    cv::merge(std::vector<cv::Mat>{colours, cells("255 0 1 2 3 4")}, with_alpha);
    EXPECT_EQ(valuesOf(scoreRooms(with_alpha, truth)), expected);
    with_alpha.convertTo(with_alpha, CV_16U, 257.0);
    EXPECT_EQ(valuesOf(scoreRooms(with_alpha, truth)), expected);
}

TEST(ScoreRooms, OrdersColoursByRedThenGreenThenBlue) {
    const auto score_of = [](const char* blue, const char* green, const char* red) {
        cv::Mat colours;
        cv::merge(std::vector<cv::Mat>{cells(blue), cells(green), cells(red)}, colours);
        return scoreRooms(colours, truthFromLabels(cells("1 1 2"))).mcc;
    };
    // Rooms of equal overlap, so that the order decides (see above).
    const double first_is_less = scoreOf("5 9 9", "1 1 2").mcc;
    const double first_is_more = scoreOf("9 5 5", "1 1 2").mcc;
    EXPECT_THAT(score_of("200 1 1", "1 1 1", "1 2 2"), near(first_is_less));
    EXPECT_THAT(score_of("1 200 200", "2 1 1", "1 1 1"), near(first_is_more));
}

TEST(ScoreRooms, TellsWideColoursApart) {
    cv::Mat colours(10, 20, CV_16UC3, cv::Scalar(256, 0, 0));
    colours.colRange(10, 20).setTo(cv::Scalar(0, 1, 0));
    EXPECT_EQ(scoreRooms(colours, truthFromLabels(cells("1 2"))).n_pred, 2);
}

TEST(ScoreRooms, TakesViewsAndLeavesTheInputsUnchanged) {
    const cv::Mat predicted = cells("1 1 2\n3 3 2\n. 4 4");
    const cv::Mat truth = cells("1 1 1\n2 2 3\n2 2 3");
    const cv::Mat map = cells("255 255 254\n0 255 255\n255 255 255");
    const std::vector<double> expected =
        valuesOf(scoreRooms(predicted, truthFromLabels(truth), map));
    const cv::Mat predicted_view = asView(predicted);
    const cv::Mat map_view = asView(map);
    const Truth view{asView(truth), asView(truth)};
    EXPECT_EQ(valuesOf(scoreRooms(predicted_view, view, map_view)), expected);
    EXPECT_THAT(predicted_view, MatEq(predicted));
    EXPECT_THAT(map_view, MatEq(map));
    EXPECT_THAT(view.rooms, MatEq(truth));
}

TEST(ScoreRooms, RejectsImagesThatDoNotFit) {
    const Truth truth = truthFromLabels(cells("1 2"));
    EXPECT_THAT([&] { scoreRooms(cells("1"), truth); },
                ThrowsMessage<std::invalid_argument>(
                    "scoreRooms: the prediction has 10 x 10 pixels, the truth 20 x 10"));
    EXPECT_THAT([&] { scoreRooms(cells("1 2"), truth, cells("1 2 3")); },
                ThrowsMessage<std::invalid_argument>(
                    "scoreRooms: the map has 30 x 10 pixels, the truth 20 x 10"));
    EXPECT_THAT([&] { scoreRooms(cells("1 2"), truth, cells(labels32("1 2"))); },
                ThrowsMessage<std::invalid_argument>("scoreRooms: the map must be CV_8UC1"));
    EXPECT_THAT(
        [&] {
            scoreRooms(cells("1 2"), {truth.rooms, cells("1")});
        },
        ThrowsMessage<std::invalid_argument>(
            "scoreRooms: the image of all true rooms has 10 x 10 pixels, the truth 20 x 10"));
    EXPECT_THAT([&] { scoreRooms({}, {}); },
                ThrowsMessage<std::invalid_argument>("scoreRooms: the truth is empty"));
}

TEST(ScoreRooms, RejectsWhatIsNoLabelImage) {
    const Truth truth = truthFromLabels(cells("1 2"));
    constexpr char kKinds[] =
        ": a label image has 8 or 16 bits and 1, 3 or 4 channels, or is CV_32SC1";
    EXPECT_THAT(
        [&] { scoreRooms(cv::Mat::zeros(10, 20, CV_32FC1), truth); },
        ThrowsMessage<std::invalid_argument>(std::string("scoreRooms: prediction") + kKinds));
    EXPECT_THAT([&] { truthFromLabels(cv::Mat::zeros(10, 20, CV_8UC2)); },
                ThrowsMessage<std::invalid_argument>(std::string("truthFromLabels") + kKinds));
    EXPECT_THAT([&] { scoreRooms(cells(labels32("1 -4")), truth); },
                ThrowsMessage<std::invalid_argument>("scoreRooms: prediction: negative label -4"));
}

TEST(ScoreRooms, RejectsATruthWithoutCountedPixels) {
    constexpr char kMessage[] = "scoreRooms: no pixel of a true room is free in the map";
    EXPECT_THAT([] { scoreOf("1 1", ". ."); }, ThrowsMessage<std::invalid_argument>(kMessage));
    EXPECT_THAT([] { scoreRooms(cells("1 1"), truthFromLabels(cells("1 .")), cells("0 255")); },
                ThrowsMessage<std::invalid_argument>(kMessage));
}

/// IoU of one room of each side.
double plainIou(const cv::Mat& a, const cv::Mat& b) {
    return cv::countNonZero(a & b) / static_cast<double>(cv::countNonZero(a | b));
}

/// For each room of one side the most pixels that it shares with one of the other side, and the
/// IoU with that one; by looking at every pair of labels.
struct PlainFigures {
    double share = 0.0;
    double iou = 0.0;
};

PlainFigures plainFigures(const cv::Mat& rooms, const cv::Mat& others) {
    PlainFigures sum;
    int count = 0;
    for (int label = 1; label <= 255; ++label) {
        const cv::Mat room = rooms == label;
        if (cv::countNonZero(room) == 0) continue;
        ++count;
        int most = 0;
        double iou = 0.0;
        for (int other = 1; other <= 255; ++other) {
            const cv::Mat candidate = others == other;
            const int shared = cv::countNonZero(room & candidate);
            if (shared <= most) continue;
            most = shared;
            iou = plainIou(room, candidate);
        }
        sum.share += most / static_cast<double>(cv::countNonZero(room));
        sum.iou += iou;
    }
    return {sum.share / count, sum.iou / count};
}

TEST(ScoreRooms, AgreesWithAPlainCountOnRandomRooms) {
    test::RandomImages random(20);
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const cv::Size size(8 + random.below(5), 8 + random.below(5));
        cv::Mat truth = random.patches(size, 6, 0);
        truth.at<std::uint8_t>(0, 0) = 1;  // There is one.
        const cv::Mat predicted = random.patches(size, 6, 0);
        cv::Mat map = random.bytes(size, 2) * 255;
        map.at<std::uint8_t>(0, 0) = 255;
        const Score score = scoreRooms(cells(predicted), truthFromLabels(cells(truth)), cells(map));

        cv::Mat counted_truth = truth & map;
        cv::Mat counted_prediction = predicted & map;
        counted_prediction.setTo(0, truth == 0);
        const PlainFigures gt = plainFigures(counted_truth, counted_prediction);
        EXPECT_THAT(score.recall, near(gt.share));
        EXPECT_THAT(score.iou_gt, near(gt.iou));
        if (score.n_pred == 0) continue;
        const PlainFigures seg = plainFigures(counted_prediction, counted_truth);
        EXPECT_THAT(score.precision, near(seg.share));
        EXPECT_THAT(score.iou_seg, near(seg.iou));
    }
}

TEST(ScoreRooms, DoesNotDependOnLabelsButForTheirOrder) {
    test::RandomImages random(3);
    for (int round = 0; round < 20; ++round) {
        const cv::Size size(12, 9);
        cv::Mat truth = random.patches(size, 9, 0);
        truth.at<std::uint8_t>(0, 0) = 1;
        const cv::Mat predicted = random.patches(size, 9, 0);
        const Score score = scoreRooms(cells(predicted), truthFromLabels(cells(truth)));
        const Score renumbered =
            scoreRooms(cells(predicted * 25), truthFromLabels(cells(truth * 20)));
        EXPECT_EQ(valuesOf(score), valuesOf(renumbered));
    }
}

TEST(FiguresOf, NamesEveryFigureOnce) {
    std::vector<std::string> names;
    for (const Figure& figure : figuresOf({})) names.push_back(figure.name);
    EXPECT_THAT(names,
                testing::ElementsAre("n_gt", "n_pred", "recall", "precision", "recall_px",
                                     "precision_px", "mcc", "mcc_1to1", "iou_gt", "iou_seg",
                                     "iou_gt_px", "iou_seg_px", "f1_50", "f1_75", "pq", "over",
                                     "under", "merged_gt", "unlabelled", "cover", "recall_raw",
                                     "precision_raw", "recall_px_raw", "precision_px_raw"));
    EXPECT_THAT(figuresOf({}), Each(Field(&Figure::value, 0.0)));
}

}  // namespace
}  // namespace vorund::rooms
