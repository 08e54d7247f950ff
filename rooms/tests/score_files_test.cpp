#include "vorund/rooms/score_files.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/label_grid.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

namespace fs = std::filesystem;

using test::labels;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

/// Every pixel as a square of 25 x 25: a cell of a drawing is large enough for a room.
cv::Mat cells(const std::string& grid) {
    cv::Mat large;
    cv::resize(labels(grid), large, {}, 25.0, 25.0, cv::INTER_NEAREST);
    return large;
}

constexpr char kTruth[] = "255 0 255 255 0 255";
constexpr char kMap[] = "255 255 255 255 0 255";  // The last room cannot be reached.
constexpr char kRooms[] = "1 . 2 2 . .";

class ScoreFilesTest : public ::testing::Test {
 protected:
    std::string put(const std::string& name, const cv::Mat& image) const {
        const std::string path = dir_.file(name);
        fs::create_directories(fs::path(path).parent_path());
        EXPECT_TRUE(cv::imwrite(path, image)) << path;
        return path;
    }

    std::string put(const std::string& name, const std::string& grid) const {
        return put(name, cells(grid));
    }

    std::vector<MapScore> batch(const std::string& variant = kBareVariant,
                                const ScoreOptions& options = {}) const {
        return scoreBatch(dir_.file("results"), dir_.file("maps"), variant, options);
    }

    test::TempDir dir_;
};

TEST_F(ScoreFilesTest, UsesTheMapBesideTheTruth) {
    const std::string predicted = put("rooms.png", kRooms);
    const std::string truth = put("office_gt_segmentation.png", kTruth);
    EXPECT_EQ(scoreFiles(predicted, truth).n_gt, 3);  // There is no map yet.
    put("office.png", kMap);
    const Score score = scoreFiles(predicted, truth);
    EXPECT_EQ(score.n_gt, 2);
    EXPECT_DOUBLE_EQ(score.mcc_1to1, 1.0);
    EXPECT_DOUBLE_EQ(score.cover, 3.0 / 4.0);
    EXPECT_DOUBLE_EQ(score.recall_raw, 2.0 / 3.0);
}

TEST_F(ScoreFilesTest, KeepsDetachedRoomsIfTold) {
    put("office.png", kMap);
    ScoreOptions options;
    options.keep_detached = true;
    const Score score = scoreFiles(put("rooms.png", kRooms),
                                   put("office_gt_segmentation.png", kTruth), "", options);
    EXPECT_EQ(score.n_gt, 3);
    EXPECT_DOUBLE_EQ(score.recall, 2.0 / 3.0);
}

TEST_F(ScoreFilesTest, CountsPixelsByTheGivenMapAndDetachesByTheOneBesideTheTruth) {
    put("office.png", kMap);
    // Furniture cuts the first room off and fills half of the second.
    const std::string furnished = put("furnished.png", "255 0 255 0 0 255");
    const Score score = scoreFiles(put("rooms.png", "1 . 2 3 . ."),
                                   put("office_gt_segmentation.png", kTruth), furnished);
    EXPECT_EQ(score.n_gt, 2);
    EXPECT_EQ(score.n_pred, 2);
    EXPECT_DOUBLE_EQ(score.mcc_1to1, 1.0);
}

TEST_F(ScoreFilesTest, DetachesByTheGivenMapIfTheTruthHasANameOfItsOwn) {
    put("plan.png", kTruth);
    const std::string predicted = put("rooms.png", kRooms);
    EXPECT_EQ(scoreFiles(predicted, dir_.file("plan.png")).n_gt, 3);
    EXPECT_EQ(scoreFiles(predicted, dir_.file("plan.png"), put("map.png", kMap)).n_gt, 2);
}

TEST_F(ScoreFilesTest, DetachesNothingByAMapOfAnotherSize) {
    put("office.png", "255 255");
    const Score score = scoreFiles(put("rooms.png", kRooms),
                                   put("office_gt_segmentation.png", kTruth), put("map.png", kMap));
    EXPECT_EQ(score.n_gt, 3);
}

TEST_F(ScoreFilesTest, TakesTheTruthAsLabels) {
    ScoreOptions options;
    options.truth = TruthKind::kLabels;
    const Score score =
        scoreFiles(put("rooms.png", "3 . 3 3 . ."), put("truth.png", "1 . 1 2 . 2"), "", options);
    EXPECT_EQ(score.n_gt, 2);
    EXPECT_DOUBLE_EQ(score.precision, 2.0 / 3.0);
}

TEST_F(ScoreFilesTest, PassesTheLabelOfTheUnreachedFloorOn) {
    ScoreOptions options;
    options.unreached = 255;
    const std::string truth = put("truth.png", kTruth);
    const std::string predicted = put("rooms.png", "1 . 2 2 . 255");
    EXPECT_EQ(scoreFiles(predicted, truth).n_pred, 3);
    EXPECT_EQ(scoreFiles(predicted, truth, "", options).n_pred, 2);
}

TEST_F(ScoreFilesTest, ReadsColoursAlphaAndWideLabels) {
    cv::Mat map;
    cv::cvtColor(cells(kMap), map, cv::COLOR_GRAY2BGRA);
    for (cv::Vec4b& pixel : cv::Mat_<cv::Vec4b>(map)) pixel[3] = 7;  // As good as transparent.
    put("office.png", map);
    cv::Mat truth;
    cv::cvtColor(cells(kTruth), truth, cv::COLOR_GRAY2BGR);
    const std::string truth_path = put("office_gt_segmentation.png", truth);
    cv::Mat wide;
    cells(kRooms).convertTo(wide, CV_16U, 30000.0);
    EXPECT_DOUBLE_EQ(scoreFiles(put("wide.png", wide), truth_path).mcc_1to1, 1.0);
    cv::Mat colours;
    cv::applyColorMap(cells(kRooms) * 100, colours, cv::COLORMAP_HOT);
    colours.setTo(cv::Scalar::all(0), cells(kRooms) == 0);
    EXPECT_DOUBLE_EQ(scoreFiles(put("colours.png", colours), truth_path).mcc_1to1, 1.0);
}

TEST_F(ScoreFilesTest, ReadsTextFilesWithoutAClosingNewline) {
    const std::string map = dir_.write(
        "map.pgm", "P2\n20 30\n255\n" + [] {
            std::string pixels;
            for (int i = 0; i < 600; ++i) pixels += i == 0 ? "254" : " 254";
            return pixels;
        }());
    const cv::Mat room(30, 20, CV_8UC1, cv::Scalar(255));
    EXPECT_EQ(scoreFiles(put("rooms.png", room), put("truth.png", room), map).n_gt, 1);
}

TEST_F(ScoreFilesTest, TellsWhichFileDoesNotFit) {
    const std::string truth = put("truth.png", kTruth);
    const std::string small = put("small.png", "255 255");
    EXPECT_THAT(
        [&] { scoreFiles(small, truth); },
        ThrowsMessage<MapError>(small + ": it has 50 x 25 pixels, the truth 150 x 25 pixels"));
    EXPECT_THAT(
        [&] { scoreFiles(truth, truth, small); },
        ThrowsMessage<MapError>(small + ": it has 50 x 25 pixels, the truth 150 x 25 pixels"));
    const std::string missing = dir_.file("missing.png");
    EXPECT_THAT([&] { scoreFiles(missing, truth); },
                ThrowsMessage<MapError>(missing + ": No such file or directory"));
    EXPECT_THAT([&] { scoreFiles(truth, missing); },
                ThrowsMessage<MapError>(missing + ": No such file or directory"));
    const std::string broken = dir_.write("broken.png", "no image");
    EXPECT_THAT([&] { scoreFiles(truth, truth, broken); },
                ThrowsMessage<MapError>(broken + ": it cannot be decoded as an image"));
    const std::string dark = put("dark.png", "0 0 0 0 0 0");
    EXPECT_THAT([&] { scoreFiles(truth, dark); },
                ThrowsMessage<MapError>(
                    truth + ": scoreRooms: no pixel of a true room is free in the map"));
}

class ScoreBatchTest : public ScoreFilesTest {
 protected:
    void putMap(const std::string& name) const {
        put("maps/" + name + ".png", kMap);
        put("maps/" + name + "_gt_segmentation.png", kTruth);
    }
};

TEST_F(ScoreBatchTest, ReadsBothLayoutsInTheOrderOfTheTruths) {
    putMap("b");
    putMap("a_2");
    putMap("a");
    put("results/a.png", kRooms);
    put("results/b/rooms.png", kRooms);
    put("results/b.png", ". . 2 . . .");  // Less than the file in the folder.
    put("results/a_2/other.png", ". . 2 . . .");
    put("results/a_2.png", kRooms);
    std::vector<std::string> names;
    for (const MapScore& map : batch()) {
        names.push_back(map.name);
        EXPECT_EQ(map.error, "");
        EXPECT_DOUBLE_EQ(map.score.mcc_1to1, 1.0) << map.name;
    }
    // "a_2_gt..." stands before "a_gt...".
    EXPECT_THAT(names, ElementsAre("a_2", "a", "b"));
}

TEST_F(ScoreBatchTest, GivesAMapWithoutPredictionNothing) {
    putMap("a");
    const std::vector<MapScore> maps = batch();
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].error, dir_.file("results") + ": neither a/rooms.png nor a.png is there");
    EXPECT_EQ(maps[0].score.n_gt, 2);
    EXPECT_EQ(maps[0].score.n_pred, 0);
    EXPECT_EQ(maps[0].score.mcc_1to1, 0.0);
    EXPECT_EQ(maps[0].score.cover, 0.0);
    EXPECT_EQ(maps[0].score.unlabelled, 1.0);
}

TEST_F(ScoreBatchTest, GivesAPredictionThatCannotBeUsedNothing) {
    putMap("a");
    putMap("b");
    const std::string small = put("results/a.png", "1 2");
    const std::string broken = dir_.write("results/b.png", "no image");
    const std::vector<MapScore> maps = batch();
    ASSERT_EQ(maps.size(), 2U);
    EXPECT_EQ(maps[0].error, small + ": it has 50 x 25 pixels, the truth 150 x 25 pixels");
    EXPECT_EQ(maps[1].error, broken + ": it cannot be decoded as an image");
    EXPECT_EQ(maps[0].score.recall_raw, 0.0);
    EXPECT_EQ(maps[1].score.unlabelled, 1.0);
}

TEST_F(ScoreBatchTest, ScoresAVariantAndLeavesOutMapsWithoutIt) {
    putMap("a");
    putMap("b");
    putMap("c");
    put("maps/a_furnitures.png", "255 255 255 0 0 255");
    put("maps/c_furnitures.png", "255 255");  // Another size than the truth.
    put("results/a.png", kRooms);
    put("results/a_furnitures/rooms.png", "1 . 2 9 . .");
    const std::vector<MapScore> maps = batch("furnitures");
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].name, "a");
    EXPECT_EQ(maps[0].score.n_pred, 2);
    EXPECT_DOUBLE_EQ(maps[0].score.mcc_1to1, 1.0);
}

TEST_F(ScoreBatchTest, PassesTheOptionsOn) {
    putMap("a");
    put("results/a.png", kRooms);
    ScoreOptions options;
    options.keep_detached = true;
    EXPECT_EQ(batch(kBareVariant, options).at(0).score.n_gt, 3);
    options.truth = TruthKind::kLabels;  // White is one room then.
    EXPECT_EQ(batch(kBareVariant, options).at(0).score.n_gt, 1);
}

TEST_F(ScoreBatchTest, RejectsAFolderWithoutMaps) {
    const std::string maps = dir_.file("maps");
    EXPECT_THAT([&] { batch(); }, ThrowsMessage<MapError>(maps + ": No such file or directory"));
    put("maps/a.png", kMap);
    put("maps/.a.png", kMap);  // Hidden files are left alone.
    put("maps/.a_gt_segmentation.png", kTruth);
    put("maps/a_gt_segmentation.bmp", kTruth);
    EXPECT_THAT([&] { batch(); },
                ThrowsMessage<MapError>(maps + ": no map of the variant \"bare\" with a truth "
                                               "NAME_gt_segmentation.png of its size"));
}

TEST_F(ScoreBatchTest, RejectsAMapOrATruthThatCannotBeRead) {
    putMap("a");
    const std::string truth = dir_.write("maps/a_gt_segmentation.png", "no image");
    EXPECT_THAT([&] { batch(); },
                ThrowsMessage<MapError>(truth + ": it cannot be decoded as an image"));
    putMap("a");
    const std::string map = dir_.write("maps/a.png", "no image");
    EXPECT_THAT([&] { batch(); },
                ThrowsMessage<MapError>(map + ": it cannot be decoded as an image"));
}

/// Two maps of which the second has no prediction.
std::vector<MapScore> twoMaps() {
    Score good;
    good.n_gt = 4;
    good.n_pred = 5;
    good.mcc = 0.8;
    good.mcc_1to1 = 0.5;
    good.cover = 0.25;
    Score none;
    none.n_gt = 2;
    none.unlabelled = 1.0;
    return {{"ground floor", good, ""}, {"attic", none, "attic.png: missing"}};
}

TEST(Summarize, GivesMeanAndDeviationOfTheSample) {
    const std::vector<FigureSummary> summaries = summarize(twoMaps());
    ASSERT_EQ(summaries.size(), figuresOf({}).size());
    EXPECT_EQ(summaries[0].name, "n_gt");
    EXPECT_DOUBLE_EQ(summaries[0].mean, 3.0);
    EXPECT_DOUBLE_EQ(summaries[0].deviation, std::sqrt(2.0));
    EXPECT_EQ(summaries[7].name, "mcc_1to1");
    EXPECT_DOUBLE_EQ(summaries[7].mean, 0.25);
    EXPECT_DOUBLE_EQ(summaries[7].deviation, std::sqrt(2.0 * 0.25 * 0.25));
}

TEST(Summarize, GivesASingleMapNoDeviation) {
    const std::vector<FigureSummary> summaries = summarize({twoMaps()[0]});
    EXPECT_DOUBLE_EQ(summaries[0].mean, 4.0);
    EXPECT_EQ(summaries[0].deviation, 0.0);
}

TEST(Summarize, RejectsABatchWithoutMaps) {
    EXPECT_THAT([] { summarize({}); },
                ThrowsMessage<std::invalid_argument>("summarize: there are no maps"));
}

TEST(ScoreText, WritesATable) {
    EXPECT_EQ(scoreText(twoMaps()),
              "map                mcc  mcc_1to1    recall precision    iou_gt   iou_seg     f1_50 "
              "    f1_75        pq      n_gt    n_pred      over     under merged_gt unlabelled\n"
              "ground floor     0.800     0.500     0.000     0.000     0.000     0.000     0.000 "
              "    0.000     0.000         4         5         0         0         0      0.000\n"
              "attic            0.000     0.000     0.000     0.000     0.000     0.000     0.000 "
              "    0.000     0.000         2         0         0         0         0      1.000  "
              "attic.png: missing\n"
              "mean             0.400     0.250     0.000     0.000     0.000     0.000     0.000 "
              "    0.000     0.000     3.000     2.500     0.000     0.000     0.000      0.500\n"
              "std              0.566     0.354     0.000     0.000     0.000     0.000     0.000 "
              "    0.000     0.000     1.414     3.536     0.000     0.000     0.000      0.707\n");
}

TEST(ScoreText, ListsTheFiguresOfOneMap) {
    const std::string text = scoreText(twoMaps()[0].score);
    EXPECT_THAT(text, StartsWith("n_gt                     4\n"
                                 "n_pred                   5\n"
                                 "recall               0.000\n"));
    EXPECT_THAT(text, HasSubstr("\nmcc_1to1             0.500\n"));
    EXPECT_THAT(text, HasSubstr("\nprecision_px_raw     0.000\n"));
}

TEST(ScoreJson, WritesAllFiguresOfOneMap) {
    const auto json = nlohmann::ordered_json::parse(scoreJson(twoMaps()[0].score));
    std::vector<std::string> keys;
    for (const auto& item : json.items()) keys.push_back(item.key());
    std::vector<std::string> names;
    for (const Figure& figure : figuresOf({})) names.push_back(figure.name);
    EXPECT_EQ(keys, names);
    EXPECT_TRUE(json["n_gt"].is_number_integer());
    EXPECT_EQ(json["n_gt"], 4);
    EXPECT_EQ(json["mcc"], 0.8);  // To the last digit.
    EXPECT_TRUE(json["recall"].is_number_float());
}

TEST(ScoreJson, WritesMapsAndSummaryInTheirOrder) {
    const std::string text = scoreJson(twoMaps());
    EXPECT_THAT(text, StartsWith("{\n \"maps\": {\n  \"ground floor\": {\n   \"n_gt\": 4,\n"));
    EXPECT_EQ(text.back(), '\n');
    const auto json = nlohmann::ordered_json::parse(text);
    EXPECT_EQ(std::next(json["maps"].begin()).key(), "attic");
    EXPECT_FALSE(json["maps"]["ground floor"].contains("error"));
    EXPECT_EQ(json["maps"]["attic"]["error"], "attic.png: missing");
    EXPECT_EQ(json["summary"]["maps"], 2);
    EXPECT_EQ(json["summary"]["missing"], 1);
    EXPECT_EQ(json["summary"]["n_gt"], (std::vector<double>{3.0, std::sqrt(2.0)}));
    EXPECT_EQ(json["summary"].size(), 2 + figuresOf({}).size());
}

TEST(ScoreJson, IsValidForFileNamesThatAreNotUtf8) {
    std::vector<MapScore> maps = twoMaps();
    maps[0].name = "caf\xE9";
    const auto json = nlohmann::ordered_json::parse(scoreJson(maps));
    EXPECT_EQ(json["maps"].begin().key(), "caf\xEF\xBF\xBD");
}

}  // namespace
}  // namespace vorund::rooms
