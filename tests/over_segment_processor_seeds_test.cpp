#include "vorund/over_segment_processor.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/over_segment_processor.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/pictures.h"
#include "support/random_images.h"

namespace vorund::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::ThrowsMessage;

using Mapper = std::map<int, int>;
using Mappers = std::vector<Mapper>;
using Lifespans = std::map<int, std::pair<int, int>>;
using Seeds = std::map<int, cv::Mat>;

Config::GenerateMapInitialSeedsConfig method(const std::string& name, int filter_threshold = 0) {
    Config::GenerateMapInitialSeedsConfig config;
    config.method = name;
    config.filter_threshold = filter_threshold;
    return config;
}

Config::GenerateMapInitialSeedsConfig weighted(const std::map<std::string, int>& weights) {
    Config::GenerateMapInitialSeedsConfig config = method("weighted");
    config.weights = weights;
    return config;
}

Seeds initialSeeds(const Lifespans& spans, const Mappers& mappers, const std::vector<cv::Mat>& maps,
                   const Config::GenerateMapInitialSeedsConfig& config,
                   const std::shared_ptr<Debugger>& debugger = nullptr) {
    return OverSegmentProcessor::generateMapInitialSeeds(spans, mappers, maps, config, debugger);
}

cv::Mat superpose(const Seeds& seeds, const std::vector<cv::Mat>& maps,
                  const std::shared_ptr<Debugger>& debugger = nullptr) {
    return OverSegmentProcessor::superposeMapInitialSeeds(seeds, maps, debugger);
}

// generateMapInitialSeeds

/// One label that lives on all of the scales, as local label 1, 2, ... in a map of that value.
struct Life {
    explicit Life(int scale_count) {
        for (int scale = 0; scale < scale_count; ++scale) {
            mappers.push_back({{scale + 1, 9}});
            cv::Mat map = cv::Mat::zeros(1, scale_count, CV_8UC1);
            map.at<uchar>(0, scale) = static_cast<uchar>(scale + 1);
            maps.push_back(map);
        }
    }

    /// The scale from which the label's seed is cut, or -1 if it gets none.
    int chosenScale(int start, int end, const Config::GenerateMapInitialSeedsConfig& config) const {
        const Seeds seeds = initialSeeds({{9, {start, end}}}, mappers, maps, config);
        if (seeds.empty()) return -1;
        std::vector<cv::Point> pixels;
        cv::findNonZero(seeds.at(9), pixels);
        return pixels.size() == 1 ? pixels[0].x : -2;
    }

    Mappers mappers;
    std::vector<cv::Mat> maps;
};

TEST(GenerateMapInitialSeeds, CutsTheRegionOutOfTheChosenScale) {
    const Seeds seeds =
        initialSeeds({{1, {0, 1}}, {2, {0, 1}}}, {{{3, 2}, {4, 1}}, {{1, 1}, {2, 2}}, {}},
                     {labels("4 4 4 . 3 3\n"
                             "4 4 4 . 3 255"),
                      labels(". 1 . . 2 .\n"
                             ". . . . . 255"),
                      labels(". . . . . .\n"
                             ". . . . . 255")},
                     method("start"));
    EXPECT_THAT(seeds, ElementsAre(Pair(1, MatEq(labels("1 1 1 . . .\n"
                                                        "1 1 1 . . ."))),
                                   Pair(2, MatEq(labels(". . . . 1 1\n"
                                                        ". . . . 1 .")))));
}

TEST(GenerateMapInitialSeeds, ChoosesTheScaleByTheMethod) {
    const Life life(6);
    EXPECT_EQ(life.chosenScale(1, 4, method("start")), 1);
    EXPECT_EQ(life.chosenScale(1, 4, method("end")), 4);
    EXPECT_EQ(life.chosenScale(1, 4, method("middle")), 2);
    EXPECT_EQ(life.chosenScale(1, 5, method("middle")), 3);
    EXPECT_EQ(life.chosenScale(3, 3, method("middle")), 3);
}

TEST(GenerateMapInitialSeeds, WeighsStartAndEnd) {
    const Life life(10);
    EXPECT_EQ(life.chosenScale(0, 4, weighted({{"start", 1}, {"end", 3}})), 3);
    EXPECT_EQ(life.chosenScale(0, 4, weighted({{"start", 3}, {"end", 1}})), 1);
    EXPECT_EQ(life.chosenScale(2, 7, weighted({{"start", 1}, {"end", 1}})), 4);  // 9 / 2
    EXPECT_EQ(life.chosenScale(2, 7, weighted({{"start", 0}, {"end", 5}})), 7);
}

TEST(GenerateMapInitialSeeds, TakesAMissingWeightForOne) {
    const Life life(10);
    EXPECT_EQ(life.chosenScale(2, 7, weighted({})), 4);
    EXPECT_EQ(life.chosenScale(0, 8, weighted({{"end", 3}})), 6);
    EXPECT_EQ(life.chosenScale(0, 8, weighted({{"start", 3}})), 2);
    EXPECT_EQ(life.chosenScale(2, 7, weighted({{"middle", 40}})), 4);
}

TEST(GenerateMapInitialSeeds, TakesTheStartWeightForOneIfTheWeightsCancelOut) {
    const Life life(10);
    EXPECT_EQ(life.chosenScale(2, 7, weighted({{"start", -1}, {"end", 1}})), 4);  // 9 / 2
    EXPECT_EQ(life.chosenScale(2, 6, weighted({{"start", 0}, {"end", 0}})), 2);
    EXPECT_EQ(life.chosenScale(0, 8, weighted({{"start", -3}, {"end", 3}})), 6);
    // Then the divisor is 0 all the same.
    EXPECT_EQ(life.chosenScale(2, 6, weighted({{"start", 1}, {"end", -1}})), 0);
    EXPECT_EQ(life.chosenScale(2, 6, weighted({{"end", -1}})), 0);
}

TEST(GenerateMapInitialSeeds, KeepsTheChosenScaleWithinTheList) {
    const Life life(5);
    EXPECT_EQ(life.chosenScale(1, 3, weighted({{"start", -1}, {"end", 2}})), 4);  // 5
    EXPECT_EQ(life.chosenScale(1, 4, weighted({{"start", 2}, {"end", -1}})), 0);  // -2
    EXPECT_EQ(life.chosenScale(-3, 2, method("start")), 0);
    EXPECT_EQ(life.chosenScale(2, 99, method("end")), 4);
}

TEST(GenerateMapInitialSeeds, CutsOffTheFractionOfTheChosenScale) {
    const Life life(5);
    EXPECT_EQ(life.chosenScale(0, 7, weighted({{"start", 1}, {"end", 1}})), 3);
    EXPECT_EQ(life.chosenScale(0, 7, weighted({{"start", -1}, {"end", -1}})), 3);
}

TEST(GenerateMapInitialSeeds, DropsLabelsThatLiveForFewerStepsThanTheThreshold) {
    const Life life(6);
    EXPECT_EQ(life.chosenScale(2, 2, method("start", 0)), 2);
    EXPECT_EQ(life.chosenScale(2, 2, method("start", 1)), -1);
    EXPECT_EQ(life.chosenScale(2, 3, method("start", 1)), 2);
    EXPECT_EQ(life.chosenScale(2, 4, method("start", 3)), -1);
    EXPECT_EQ(life.chosenScale(2, 5, method("start", 3)), 2);
    EXPECT_EQ(life.chosenScale(2, 2, method("start", -1)), 2);
}

TEST(GenerateMapInitialSeeds, RejectsAnUnknownMethodIfALabelNeedsOne) {
    const Life life(3);
    EXPECT_THAT(
        [&] { life.chosenScale(0, 1, method("Start")); },
        ThrowsMessage<std::runtime_error>("generateMapInitialSeeds: Unknown method: Start"));
    EXPECT_THAT([&] { life.chosenScale(0, 1, method("")); },
                ThrowsMessage<std::runtime_error>("generateMapInitialSeeds: Unknown method: "));
    EXPECT_EQ(life.chosenScale(0, 1, method("Start", 2)), -1);
    EXPECT_THAT(initialSeeds({}, life.mappers, life.maps, method("Start")), IsEmpty());
}

TEST(GenerateMapInitialSeeds, TakesTheSmallestOfSeveralLocalLabels) {
    EXPECT_THAT(initialSeeds({{7, {0, 0}}}, {{{2, 6}, {3, 7}, {4, 7}}}, {labels("2 3 4 3")},
                             method("start")),
                ElementsAre(Pair(7, MatEq(labels(". 1 . 1")))));
}

TEST(GenerateMapInitialSeeds, SkipsALabelThatTheChosenScaleDoesNotHold) {
    EXPECT_THAT(initialSeeds({{7, {0, 2}}, {8, {0, 2}}}, {{{1, 7}}, {{1, 8}}, {{1, 7}}},
                             {labels("1"), labels("1"), labels("1")}, method("middle")),
                ElementsAre(Pair(8, MatEq(labels("1")))));
}

TEST(GenerateMapInitialSeeds, SkipsALocalLabelOfMinusOne) {
    EXPECT_THAT(
        initialSeeds({{7, {0, 0}}}, {{{-1, 7}, {3, 7}}}, {labels("3 255")}, method("start")),
        IsEmpty());
}

TEST(GenerateMapInitialSeeds, FindsNoPixelOfALocalLabelThatIsNoByte) {
    // 511 and -2 have the low bits of 255 and 254.
    EXPECT_THAT(initialSeeds({{7, {0, 0}}, {8, {0, 0}}}, {{{-2, 8}, {511, 7}}}, {labels("254 255")},
                             method("start")),
                ElementsAre(Pair(7, MatEq(labels(". ."))), Pair(8, MatEq(labels(". .")))));
}

TEST(GenerateMapInitialSeeds, LetsSeedsOfDifferentScalesOverlap) {
    const Seeds seeds = initialSeeds({{1, {0, 0}}, {2, {1, 1}}}, {{{1, 1}}, {{1, 2}}},
                                     {labels("1 1 . 255"), labels(". 1 1 255")}, method("start"));
    EXPECT_THAT(seeds,
                ElementsAre(Pair(1, MatEq(labels("1 1 . ."))), Pair(2, MatEq(labels(". 1 1 .")))));
}

TEST(GenerateMapInitialSeeds, GivesNothingForEmptyLists) {
    const Life life(2);
    const Lifespans spans{{9, {0, 1}}};
    EXPECT_THAT(initialSeeds(spans, life.mappers, {}, method("start")), IsEmpty());
    EXPECT_THAT(initialSeeds(spans, {}, life.maps, method("start")), IsEmpty());
    EXPECT_THAT(initialSeeds({}, life.mappers, life.maps, method("start")), IsEmpty());
}

TEST(GenerateMapInitialSeeds, LeavesItsInputsAsTheyAreAndAcceptsViews) {
    const cv::Mat fine = labels(
        "7 7 7 . 8\n"
        "7 7 . . 8");
    const cv::Mat coarse = labels(
        "1 1 . . .\n"
        "1 . . . 2");
    const std::vector<cv::Mat> views{asView(fine), asView(coarse)};
    EXPECT_THAT(initialSeeds({{1, {0, 1}}, {2, {0, 1}}}, {{{7, 1}, {8, 2}}, {{1, 1}, {2, 2}}},
                             views, method("end")),
                ElementsAre(Pair(1, MatEq(labels("1 1 . . .\n"
                                                 "1 . . . ."))),
                            Pair(2, MatEq(labels(". . . . .\n"
                                                 ". . . . 1")))));
    EXPECT_THAT(views, ElementsAre(MatEq(fine), MatEq(coarse)));
}

void expectSameSeeds(const Seeds& seeds, const Seeds& expected) {
    ASSERT_EQ(seeds.size(), expected.size());
    for (const auto& [label, mask] : expected) {
        ASSERT_EQ(seeds.count(label), 1U) << label;
        ASSERT_THAT(seeds.at(label), MatEq(mask)) << label;
    }
}

TEST(GenerateMapInitialSeeds, AgreesWithThePlainVersionOnRandomLists) {
    RandomImages random(73);
    for (int run = 0; run < 300; ++run) {
        const cv::Size size = random.size(8);
        std::vector<cv::Mat> maps;
        Mappers mappers;
        for (int scale = 1 + random.below(6); scale > 0; --scale) {
            maps.push_back(random.bytes(size, 6));
            mappers.emplace_back();
            for (int local = 1; local < 6; ++local) {
                if (random.below(3) != 0) mappers.back()[local] = 1 + random.below(5);
            }
        }
        for (const char* const name : {"start", "end", "middle", "weighted"}) {
            auto config = method(name, random.below(4) - 1);
            config.weights = {{"start", random.below(7) - 3}, {"end", random.below(7) - 3}};
            const Lifespans spans = reference::lifespans(mappers);
            ASSERT_NO_FATAL_FAILURE(
                expectSameSeeds(initialSeeds(spans, mappers, maps, config),
                                reference::initialSeeds(spans, mappers, maps, config)))
                << "run " << run << ", " << name;
        }
    }
}

const char* const kSeedsPicture = "52cpp_map_initial_seeds_visualization.png";

/// So many labels, each with a rectangle of its own as its seed.
struct Patches {
    Patches(int count, const cv::Size& size) {
        maps = {cv::Mat::zeros(size, CV_8UC1)};
        mappers.resize(1);
        for (int label = 1; label <= count; ++label) {
            const cv::Rect patch((label - 1) % 8 * 10 + 2, (label - 1) / 8 * 10 + 2, 7, 6);
            maps[0](patch) = label;
            mappers[0][label] = label;
            spans[label] = {0, 0};
        }
    }
    Lifespans spans;
    Mappers mappers;
    std::vector<cv::Mat> maps;
};

cv::Size seedsPictureSize(int count, const cv::Size& map_size) {
    const TempDir folder;
    const Patches patches(count, map_size);
    initialSeeds(patches.spans, patches.mappers, patches.maps, method("start"),
                 savingDebugger(folder));
    const cv::Mat picture = readPicture(folder, kSeedsPicture);
    EXPECT_EQ(picture.type(), CV_8UC3);
    return picture.size();
}

TEST(GenerateMapInitialSeeds, LaysItsPictureOutInUpToFourColumns) {
    const cv::Size small(90, 70);
    // Rows of 70 + 50 pixels and 80 for the title; a margin of 20 per seed and 20 more.
    EXPECT_EQ(seedsPictureSize(1, small), cv::Size(40 + 90, 120 + 80));
    EXPECT_EQ(seedsPictureSize(3, small), cv::Size(80 + 3 * 90, 120 + 80));
    // From four seeds on, four columns and a margin of 100.
    EXPECT_EQ(seedsPictureSize(4, small), cv::Size(100 + 4 * 90, 120 + 80));
    EXPECT_EQ(seedsPictureSize(5, small), cv::Size(100 + 4 * 90, 2 * 120 + 80));
    EXPECT_EQ(seedsPictureSize(8, small), cv::Size(100 + 4 * 90, 2 * 120 + 80));
    EXPECT_EQ(seedsPictureSize(9, small), cv::Size(100 + 4 * 90, 3 * 120 + 80));
}

TEST(GenerateMapInitialSeeds, ShrinksLargeMapsInItsPicture) {
    EXPECT_EQ(seedsPictureSize(1, cv::Size(200, 199)), cv::Size(40 + 200, 249 + 80));
    EXPECT_EQ(seedsPictureSize(1, cv::Size(200, 200)), cv::Size(40 + 200, 250 + 80));
    EXPECT_EQ(seedsPictureSize(1, cv::Size(350, 260)), cv::Size(40 + 200, 250 + 80));
    EXPECT_EQ(seedsPictureSize(1, cv::Size(90, 260)), cv::Size(40 + 90, 250 + 80));
    EXPECT_EQ(seedsPictureSize(5, cv::Size(350, 260)), cv::Size(100 + 4 * 200, 2 * 250 + 80));
}

TEST(GenerateMapInitialSeeds, DrawsEachSeedInItsCellInOneOfSixTints) {
    const TempDir folder;
    const StderrCapture errors;
    const Patches patches(8, cv::Size(90, 70));
    const Seeds seeds = initialSeeds(patches.spans, patches.mappers, patches.maps, method("start"),
                                     savingDebugger(folder));
    EXPECT_EQ(errors.text(), "");
    const cv::Mat picture = readPicture(folder, kSeedsPicture);
    std::vector<cv::Vec3b> tints;
    for (int position = 0; position < 8; ++position) {
        const cv::Rect cell(position % 4 * 110 + 20, position / 4 * 120 + 60, 90, 70);
        const cv::Mat thumbnail = picture(cell);
        const cv::Vec3b tint = thumbnail.at<cv::Vec3b>(4, position * 10 + 5);
        EXPECT_NE(tint, cv::Vec3b());
        cv::Mat tinted;
        cv::inRange(thumbnail, tint, tint, tinted);
        EXPECT_THAT(tinted, MatEq(seeds.at(position + 1) * 255)) << "position " << position;
        tints.push_back(tint);
    }
    for (int position = 0; position < 6; ++position) {
        for (int other = 0; other < position; ++other) {
            EXPECT_NE(tints[static_cast<std::size_t>(position)],
                      tints[static_cast<std::size_t>(other)]);
        }
    }
    EXPECT_EQ(tints[6], tints[0]);
    EXPECT_EQ(tints[7], tints[1]);
}

TEST(GenerateMapInitialSeeds, WritesATitleAndACaptionPerSeedOntoItsPicture) {
    const TempDir folder;
    const Patches patches(2, cv::Size(90, 70));
    initialSeeds(patches.spans, patches.mappers, patches.maps, method("start"),
                 savingDebugger(folder));
    cv::Mat drawn = drawnPixels(readPicture(folder, kSeedsPicture));
    EXPECT_GT(cv::countNonZero(drawn.rowRange(0, 60)), 0);
    drawn(cv::Rect(20, 60, 90, 70)) = 0;
    drawn(cv::Rect(130, 60, 90, 70)) = 0;
    EXPECT_GT(cv::countNonZero(drawn(cv::Rect(20, 60, 90, 120))), 0);
    EXPECT_GT(cv::countNonZero(drawn(cv::Rect(130, 60, 90, 120))), 0);
}

TEST(GenerateMapInitialSeeds, WritesEverySeedToAFileOfItsOwn) {
    const TempDir folder;
    const Seeds seeds =
        initialSeeds({{3, {0, 0}}, {12, {0, 0}}}, {{{1, 3}, {2, 12}}}, {labels("1 1 2\n. . 2")},
                     method("start"), savingDebugger(folder));
    ASSERT_THAT(folder.names(),
                ElementsAre(kSeedsPicture, "52cpp_seed_label_12.png", "52cpp_seed_label_3.png"));
    EXPECT_THAT(readPicture(folder, "52cpp_seed_label_3.png"), MatEq(labels("1 1 .\n. . .")));
    EXPECT_THAT(readPicture(folder, "52cpp_seed_label_12.png"), MatEq(labels(". . 1\n. . 1")));
}

TEST(GenerateMapInitialSeeds, WritesNothingWithoutASeedOrUnlessAsked) {
    const TempDir folder;
    const Life life(3);
    const Lifespans spans{{9, {0, 1}}};
    initialSeeds(spans, life.mappers, life.maps, method("start", 5), savingDebugger(folder));
    initialSeeds(spans, life.mappers, life.maps, method("start"), idleDebugger(folder));
    EXPECT_THAT(folder.names(), IsEmpty());
}

// superposeMapInitialSeeds

TEST(SuperposeMapInitialSeeds, LetsTheSmallerLabelWinWhereSeedsOverlap) {
    const cv::Mat map = labels("1 1 1 1 255");
    EXPECT_THAT(superpose({{3, labels("1 1 . . .")}, {7, labels(". 1 1 . .")}}, {map}),
                MatEq(labels32("3 3 7 . .")));
}

TEST(SuperposeMapInitialSeeds, MakesBackgroundOfZerosThatNoSeedCovers) {
    // A pixel of another region, or of background, is left to be flooded.
    EXPECT_THAT(superpose({{4, labels("1 . 1 . .")}}, {labels("8 8 . . 255"), labels("9 9 9 9 9")}),
                MatEq(labels32("4 . 4 255 .")));
}

TEST(SuperposeMapInitialSeeds, IgnoresASeedOfLabel255) {
    EXPECT_THAT(superpose({{255, labels("1 1 1")}, {300, labels(". 1 .")}}, {labels("5 5 .")}),
                MatEq(labels32(". 300 255")));
}

TEST(SuperposeMapInitialSeeds, CountsOnlyOnesOfAMask) {
    EXPECT_THAT(superpose({{2, labels("1 2 255")}}, {labels("5 5 5")}), MatEq(labels32("2 . .")));
}

TEST(SuperposeMapInitialSeeds, FillsTheBackgroundAloneWithoutSeeds) {
    EXPECT_THAT(superpose({}, {labels(". 1\n255 .")}), MatEq(labels32("255 .\n. 255")));
    EXPECT_THAT(superpose({}, {labels(".")}), MatEq(labels32("255")));
}

TEST(SuperposeMapInitialSeeds, RejectsAnEmptyList) {
    EXPECT_THAT(
        [] {
            superpose({{1, labels("1")}}, {});
        },
        ThrowsMessage<std::runtime_error>(
            "superposeMapInitialSeeds: labels_map_list_in is empty."));
}

TEST(SuperposeMapInitialSeeds, LeavesItsInputsAsTheyAreAndAcceptsViews) {
    const cv::Mat mask = labels("1 . 1\n. 1 .");
    const cv::Mat map = labels("1 . 2\n. . 3");
    const cv::Mat mask_view = asView(mask);
    const cv::Mat map_view = asView(map);
    EXPECT_THAT(superpose({{6, mask_view}}, {map_view}), MatEq(labels32("6 255 6\n255 6 .")));
    EXPECT_THAT(mask_view, MatEq(mask));
    EXPECT_THAT(map_view, MatEq(map));
}

TEST(SuperposeMapInitialSeeds, AgreesWithThePlainVersionOnRandomSeeds) {
    RandomImages random(74);
    for (int run = 0; run < 300; ++run) {
        const cv::Size size = random.size(10);
        const cv::Mat map = random.bytes(size, 3);
        Seeds seeds;
        for (int count = random.below(6); count > 0; --count) {
            seeds[252 + random.below(8)] = random.bytes(size, 3);
        }
        ASSERT_THAT(superpose(seeds, {map}), MatEq(reference::superposedSeeds(seeds, map)))
            << "run " << run;
    }
}

TEST(SuperposeMapInitialSeeds, WritesThreePictures) {
    const TempDir folder;
    superpose({{1, labels("1 .")}}, {labels(". .")}, savingDebugger(folder));
    EXPECT_THAT(folder.names(),
                ElementsAre("53cpp_superposed_seeds_raw.png", "53cpp_superposed_seeds_stats.png",
                            "53cpp_superposed_seeds_visualization.png"));
}

TEST(SuperposeMapInitialSeeds, WritesNoPictureUnlessAsked) {
    const TempDir folder;
    superpose({{1, labels("1 .")}}, {labels(". .")}, idleDebugger(folder));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(SuperposeMapInitialSeeds, ColoursLabelsByTheirRemainderModuloEight) {
    const TempDir folder;
    Seeds seeds;
    for (int label = 1; label <= 9; ++label) {
        seeds[label] = cv::Mat::zeros(1, 12, CV_8UC1);
        seeds[label].at<uchar>(0, label - 1) = 1;
    }
    seeds[263] = labels(". . . . . . . . . 1 . .");  // 263 is 7 modulo 8.
    superpose(seeds, {labels("1 1 1 1 1 1 1 1 1 1 1 .")}, savingDebugger(folder));

    const std::vector<cv::Vec3b> expected{
        {0, 255, 0},   {0, 0, 255}, {255, 255, 0}, {255, 0, 255}, {0, 255, 255}, {255, 128, 0},
        {128, 0, 128}, {255, 0, 0}, {0, 255, 0},   {128, 0, 128}, {0, 0, 0},     {64, 64, 64}};
    cv::Mat colours(1, 12, CV_8UC3);
    for (int col = 0; col < 12; ++col) {
        colours.at<cv::Vec3b>(0, col) = expected[static_cast<std::size_t>(col)];
    }
    EXPECT_THAT(readPicture(folder, "53cpp_superposed_seeds_visualization.png"), MatEq(colours));
}

TEST(SuperposeMapInitialSeeds, WritesTheRawResultInEightBits) {
    const TempDir folder;
    superpose({{3, labels("1 . . .")}, {300, labels(". 1 . .")}}, {labels("1 1 1 .")},
              savingDebugger(folder));
    EXPECT_THAT(readPicture(folder, "53cpp_superposed_seeds_raw.png"),
                MatEq(labels("3 255 . 255")));
}

TEST(SuperposeMapInitialSeeds, WritesARowOfStatisticsPerValue) {
    const TempDir folder;
    const std::string name = "53cpp_superposed_seeds_stats.png";
    // 0, 255 and two labels.
    superpose({{3, labels("1 . . .")}, {4, labels(". 1 . .")}}, {labels("1 1 1 .")},
              savingDebugger(folder));
    const cv::Mat four = readPicture(folder, name);
    EXPECT_EQ(four.type(), CV_8UC3);
    EXPECT_EQ(four.size(), cv::Size(500, 25 * 4 + 80));
    EXPECT_TRUE(hasPixel(four, {255, 255, 255}));
    EXPECT_TRUE(hasPixel(four, {200, 200, 200}));
    EXPECT_TRUE(hasPixel(four, {128, 128, 128}));

    // The same values, counted otherwise.
    superpose({{3, labels("1 1 . . .")}, {4, labels(". . 1 . .")}}, {labels("1 1 1 1 .")},
              savingDebugger(folder));
    const cv::Mat other = readPicture(folder, name);
    EXPECT_EQ(other.size(), four.size());
    EXPECT_THAT(other, Not(MatEq(four)));

    // 255 alone: no row of unknown pixels.
    superpose({}, {labels(". .")}, savingDebugger(folder));
    const cv::Mat one = readPicture(folder, name);
    EXPECT_EQ(one.size(), cv::Size(500, 25 + 80));
    EXPECT_FALSE(hasPixel(one, {128, 128, 128}));
}

}  // namespace
}  // namespace vorund::test
