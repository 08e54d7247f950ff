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
using ::testing::Pair;
using ::testing::ThrowsMessage;

using Mapper = std::map<int, int>;
using Mappers = std::vector<Mapper>;
using Lifespans = std::map<int, std::pair<int, int>>;

std::vector<double> scales(std::size_t count) {
    std::vector<double> sigmas;
    for (std::size_t i = 0; i < count; ++i) sigmas.push_back(1.0 + 0.5 * static_cast<double>(i));
    return sigmas;
}

/// With the printed lines kept off the terminal.
Mappers globalLabels(const std::vector<cv::Mat>& maps,
                     const std::shared_ptr<Debugger>& debugger = nullptr) {
    const PlainCapture printed;
    return OverSegmentProcessor::findConsistentGlobalLabels(scales(maps.size()), maps, debugger);
}

Lifespans lifespans(const Mappers& mappers, const std::shared_ptr<Debugger>& debugger = nullptr) {
    return OverSegmentProcessor::findLifespans(mappers, debugger);
}

// findConsistentGlobalLabels

TEST(FindConsistentGlobalLabels, NumbersTheLabelsOfTheSecondToLastMapAfresh) {
    // The last map only starts the walk: that its region is the 5 of the first one is not seen.
    const Mappers mappers = globalLabels({labels("2 . 5 5 7 255"), labels("255 255 1 1 255 255")});
    EXPECT_THAT(mappers, ElementsAre(Mapper{{2, 1}, {5, 2}, {7, 3}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, HandsALabelOnToTheRegionUnderItsFirstPixel) {
    const Mappers mappers =
        globalLabels({labels("255 3 3 . 4 4 . 5 255"), labels("255 1 1 1 1 1 . 2 255"),
                      labels("255 1 1 1 1 1 1 1 255")});
    EXPECT_THAT(mappers,
                ElementsAre(Mapper{{3, 1}, {4, 3}, {5, 2}}, Mapper{{1, 1}, {2, 2}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, TakesTheFirstPixelInRasterOrderThatIsNotOverZero) {
    // Region 1 begins in the top row at the right, over 4; more of it lies over 3, further left.
    // Its very first pixel lies over 0 and does not count.
    const Mappers mappers = globalLabels({labels("255 . . . 4\n"
                                                 "255 3 3 3 ."),
                                          labels("255 . . 1 1\n"
                                                 "255 1 1 1 1"),
                                          labels("255 . . . .\n"
                                                 "255 . . . .")});
    EXPECT_THAT(mappers[0], ElementsAre(Pair(3, 2), Pair(4, 1)));
}

TEST(FindConsistentGlobalLabels, Gives255ToARegionThatSeveralRunInto) {
    const Mappers mappers = globalLabels({labels("3 3 3 . 4 255"),    //
                                          labels("1 . 2 . 3 255"),    //
                                          labels(". . . . . 255")});  //
    EXPECT_THAT(mappers,
                ElementsAre(Mapper{{3, 255}, {4, 3}}, Mapper{{1, 1}, {2, 2}, {3, 3}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, HandsOn255LikeAnyOtherLabel) {
    const Mappers mappers = globalLabels({labels("6 6 . 7 8 255"),    //
                                          labels("3 3 3 3 4 255"),    //
                                          labels("1 . 2 . . 255"),    //
                                          labels(". . . . . 255")});  //
    EXPECT_THAT(mappers, ElementsAre(Mapper{{6, 255}, {7, 4}, {8, 3}}, Mapper{{3, 255}, {4, 3}},
                                     Mapper{{1, 1}, {2, 2}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, SharesARegionAmongThreeAsAmongTwo) {
    const Mappers mappers = globalLabels({labels("9 9 9 9 9 255"),    //
                                          labels("1 . 2 . 3 255"),    //
                                          labels(". . . . . 255")});  //
    EXPECT_THAT(mappers[0], ElementsAre(Pair(9, 255)));
}

TEST(FindConsistentGlobalLabels, EndsALabelThatRunsIntoBackground) {
    // 1 runs into 255 and ends; 4 has no predecessor although it lies under 1 further on.
    const Mappers mappers = globalLabels({labels("255 4 . 5 255"),  //
                                          labels("1 1 . 2 255"),    //
                                          labels(". . . . 255")});  //
    EXPECT_THAT(mappers, ElementsAre(Mapper{{4, 3}, {5, 2}}, Mapper{{1, 1}, {2, 2}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, TakesTheLargestValueForBackgroundEvenIfItIsNot255) {
    const Mappers mappers = globalLabels({labels("1 . 2 . 3"), labels(". . . . .")});
    EXPECT_THAT(mappers, ElementsAre(Mapper{{1, 1}, {2, 2}}, Mapper{}));
    // A region that runs into that value ends as over background.
    EXPECT_THAT(globalLabels({labels("1 . 3 . 3"), labels("1 . 2 . 9"), labels(". . . . .")}),
                ElementsAre(Mapper{{1, 1}}, Mapper{{1, 1}, {2, 2}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, GivesEmptyMapsWhereThereIsNoLabel) {
    EXPECT_THAT(globalLabels({labels(". 255"), labels("255 255"), labels(". .")}),
                ElementsAre(IsEmpty(), IsEmpty(), IsEmpty()));
    EXPECT_THAT(globalLabels({labels("."), labels("255")}), ElementsAre(IsEmpty(), IsEmpty()));
}

TEST(FindConsistentGlobalLabels, StartsAfreshBelowAMapWithoutLabels) {
    EXPECT_THAT(globalLabels(
                    {labels("1 2 255"), labels("255 . 255"), labels("1 . 255"), labels(". . 255")}),
                ElementsAre(Mapper{{1, 2}, {2, 3}}, Mapper{}, Mapper{{1, 1}}, Mapper{}));
}

TEST(FindConsistentGlobalLabels, DoesNotSkip255InItsCount) {
    // 200 regions end over background, and 200 new ones appear: the 55th of those is the 255th.
    cv::Mat coarse(1, 400, CV_8UC1, cv::Scalar(255));
    cv::Mat fine = coarse.clone();
    Mapper expected;
    for (int label = 1; label <= 200; ++label) {
        coarse.at<uchar>(0, label - 1) = static_cast<uchar>(label);
        fine.at<uchar>(0, 199 + label) = static_cast<uchar>(label);
        expected[label] = 200 + label;
    }
    const cv::Mat last(1, 400, CV_8UC1, cv::Scalar(255));
    EXPECT_EQ(globalLabels({fine, coarse, last})[0], expected);
}

TEST(FindConsistentGlobalLabels, AcceptsALastMapOfTwoValuesButNotOfThree) {
    EXPECT_THAT(globalLabels({labels("1 2 255"), labels("1 1 255")}),
                ElementsAre(Mapper{{1, 1}, {2, 2}}, IsEmpty()));
    const auto message = ThrowsMessage<std::runtime_error>(
        "findConsistentGlobalLabels: last_frame_labels.size() > 2");
    EXPECT_THAT([] { globalLabels({labels("1 2 255"), labels("1 . 255")}); }, message);
    EXPECT_THAT([] { globalLabels({labels("1 2 255"), labels("1 2 255")}); }, message);
}

TEST(FindConsistentGlobalLabels, RejectsEmptyOrUnequalLists) {
    const auto message = ThrowsMessage<std::runtime_error>(
        "findConsistentGlobalLabels: Input lists are empty or have mismatched sizes.");
    const auto find = [](const std::vector<double>& sigmas, const std::vector<cv::Mat>& maps) {
        OverSegmentProcessor::findConsistentGlobalLabels(sigmas, maps, nullptr);
    };
    const cv::Mat map = labels("1 255");
    EXPECT_THAT([&] { find({}, {}); }, message);
    EXPECT_THAT([&] { find({1.0, 2.0}, {}); }, message);
    EXPECT_THAT([&] { find({}, {map, map}); }, message);
    EXPECT_THAT([&] { find({1.0, 2.0, 3.0}, {map, map}); }, message);
    EXPECT_THAT([&] { find({1.0, 2.0}, {map}); }, message);
}

TEST(FindConsistentGlobalLabels, RejectsASingleMap) {
    const auto message = ThrowsMessage<std::runtime_error>(
        "findConsistentGlobalLabels: labels_map_list_in.size() == 1");
    EXPECT_THAT([] { globalLabels({labels("1 255")}); }, message);
    EXPECT_THAT([] { globalLabels({labels("1 2 3")}); }, message);
}

TEST(FindConsistentGlobalLabels, FailsForARegionThatLiesWhollyOverZeros) {
    EXPECT_THAT(
        [] {
            globalLabels({labels(". . 2 255"), labels("1 1 2 255"), labels(". . . 255")});
        },
        ThrowsMessage<std::runtime_error>("findConsistentGlobalLabels: new_m == 0"));
}

TEST(FindConsistentGlobalLabels, PrintsItsResult) {
    const PlainCapture printed;
    OverSegmentProcessor::findConsistentGlobalLabels(
        scales(3), {labels("3 3 3 . 4 255"), labels("1 . 2 . 3 255"), labels(". . . . . 255")},
        nullptr);
    EXPECT_EQ(printed.text(),
              "Debug: mappers contents:\n"
              "  mapper[0]:\n"
              "    local_label 3 -> global_label 255\n"
              "    local_label 4 -> global_label 3\n"
              "  mapper[1]:\n"
              "    local_label 1 -> global_label 1\n"
              "    local_label 2 -> global_label 2\n"
              "    local_label 3 -> global_label 3\n"
              "  mapper[2]:\n");
}

TEST(FindConsistentGlobalLabels, PrintsToStandardOutputUnlessToldOtherwise) {
    const StdoutCapture printed;
    OverSegmentProcessor::findConsistentGlobalLabels(scales(2), {labels("1 255"), labels(". 255")},
                                                     nullptr);
    EXPECT_EQ(printed.text(),
              "Debug: mappers contents:\n"
              "  mapper[0]:\n"
              "    local_label 1 -> global_label 1\n"
              "  mapper[1]:\n");
}

TEST(FindConsistentGlobalLabels, PrintsNothingWhenItFails) {
    const PlainCapture printed;
    EXPECT_THROW(OverSegmentProcessor::findConsistentGlobalLabels(
                     scales(3), {labels(". 255"), labels("1 255"), labels(". 255")}, nullptr),
                 std::runtime_error);
    EXPECT_EQ(printed.text(), "");
}

/// Two rooms that merge, large enough for their captions.
std::vector<cv::Mat> roomMaps() {
    cv::Mat last = cv::Mat::zeros(50, 120, CV_8UC1);
    last.row(49) = 255;
    cv::Mat coarse = last.clone();
    coarse(cv::Rect(5, 15, 40, 20)) = 1;
    coarse(cv::Rect(60, 25, 40, 15)) = 2;
    cv::Mat fine = last.clone();
    fine(cv::Rect(2, 12, 45, 25)) = 7;
    fine(cv::Rect(55, 20, 50, 25)) = 8;
    return {fine, coarse, last};
}

cv::Mat captionedMap(const cv::Mat& map,
                     const std::vector<std::pair<std::string, cv::Point>>& captions) {
    cv::Mat grey;
    map.convertTo(grey, CV_8U, 32.0);
    cv::Mat picture;
    cv::cvtColor(grey, picture, cv::COLOR_GRAY2BGR);
    for (const auto& [text, position] : captions) {
        cv::putText(picture, text, position, cv::FONT_HERSHEY_SIMPLEX, 0.4, cv::Scalar(255, 0, 0));
    }
    return picture;
}

TEST(FindConsistentGlobalLabels, WritesAPictureOfEveryMapWithLabels) {
    const TempDir folder;
    std::vector<cv::Mat> maps = roomMaps();
    // In front one without labels, so without a picture.
    maps.insert(maps.begin(), cv::Mat(maps[0].size(), CV_8UC1, cv::Scalar(255)));
    globalLabels(maps, savingDebugger(folder));
    const std::string fine = "50cpp_local_global_label_sigma_1.500000.png";
    const std::string coarse = "50cpp_local_global_label_sigma_2.000000.png";
    ASSERT_THAT(folder.names(), ElementsAre(fine, coarse));
    EXPECT_THAT(readPicture(folder, fine),
                MatEq(captionedMap(maps[1], {{"7->1", {2, 12}}, {"8->2", {55, 20}}})));
    EXPECT_THAT(readPicture(folder, coarse),
                MatEq(captionedMap(maps[2], {{"1->1", {5, 15}}, {"2->2", {60, 25}}})));
}

TEST(FindConsistentGlobalLabels, WritesNoPictureUnlessAsked) {
    const TempDir folder;
    const Mappers mappers = globalLabels(roomMaps(), idleDebugger(folder));
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_EQ(mappers, globalLabels(roomMaps()));
}

TEST(FindConsistentGlobalLabels, LeavesItsInputsAsTheyAreAndAcceptsViews) {
    std::vector<cv::Mat> views;
    for (const cv::Mat& map : roomMaps()) views.push_back(asView(map));
    EXPECT_EQ(globalLabels(views), globalLabels(roomMaps()));
    for (std::size_t i = 0; i < views.size(); ++i) EXPECT_THAT(views[i], MatEq(roomMaps()[i]));
}

/// What comes of it: the mappers as text, or the message of the failure.
template <class Find>
std::string outcome(const Find& find) {
    try {
        return ::testing::PrintToString(find());
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

/// Patches on zeros and background; the last map is of one value.
std::vector<cv::Mat> randomSeedMaps(RandomImages& random) {
    const cv::Size size = random.size(9) + cv::Size(2, 2);
    std::vector<cv::Mat> maps;
    for (int scale = 1 + random.below(5); scale > 0; --scale) {
        maps.push_back(random.patches(size, 1 + random.below(5), random.below(4) == 0 ? 0 : 255));
        if (random.below(2) == 0) maps.back().row(0).setTo(0);
        if (random.below(3) != 0) maps.back().row(size.height - 1).setTo(255);
    }
    maps.push_back(cv::Mat(size, CV_8UC1, cv::Scalar(255)));
    return maps;
}

TEST(FindConsistentGlobalLabels, AgreesWithThePlainVersionOnRandomMaps) {
    RandomImages random(71);
    int failures = 0;
    for (int run = 0; run < 500; ++run) {
        const std::vector<cv::Mat> maps = randomSeedMaps(random);
        const std::string expected = outcome([&] { return reference::globalLabels(maps); });
        ASSERT_EQ(outcome([&] { return globalLabels(maps); }), expected) << "run " << run;
        if (expected == "findConsistentGlobalLabels: new_m == 0") ++failures;
    }
    // Both outcomes occur often enough to mean something.
    EXPECT_GT(failures, 20);
    EXPECT_LT(failures, 300);
}

// findLifespans

TEST(FindLifespans, GivesTheFirstAndLastScaleOfEachLabel) {
    EXPECT_THAT(lifespans({{{1, 4}, {2, 1}}, {{1, 1}}, {{5, 1}, {6, 2}}, {}}),
                ElementsAre(Pair(1, Pair(0, 2)), Pair(2, Pair(2, 2)), Pair(4, Pair(0, 0))));
}

TEST(FindLifespans, LeavesOutTheAmbiguousLabel) {
    EXPECT_THAT(lifespans({{{1, 255}, {2, 3}}, {{1, 255}}}), ElementsAre(Pair(3, Pair(0, 0))));
    EXPECT_THAT(lifespans({{{1, 255}}, {{1, 255}, {2, 255}}}), IsEmpty());
}

TEST(FindLifespans, DoesNotCareForGapsOrForSeveralLocalLabels) {
    EXPECT_THAT(lifespans({{{1, 7}}, {}, {{1, 7}, {2, 7}}}), ElementsAre(Pair(7, Pair(0, 2))));
}

TEST(FindLifespans, RejectsAnEmptyListButNotEmptyMaps) {
    EXPECT_THAT([] { lifespans({}); },
                ThrowsMessage<std::runtime_error>("findLifespans: mappers is empty"));
    EXPECT_THAT(lifespans({{}}), IsEmpty());
}

TEST(FindLifespans, AgreesWithThePlainVersionOnRandomMappers) {
    RandomImages random(72);
    for (int run = 0; run < 300; ++run) {
        Mappers mappers(static_cast<std::size_t>(1 + random.below(6)));
        for (Mapper& mapper : mappers) {
            for (int entry = random.below(5); entry > 0; --entry) {
                mapper[random.below(8)] = random.below(5) == 0 ? 255 : 1 + random.below(6);
            }
        }
        ASSERT_EQ(lifespans(mappers), reference::lifespans(mappers)) << "run " << run;
    }
}

const char* const kLifespansPicture = "51cpp_lifespans_visualization.png";

void write(cv::Mat& picture, const std::string& text, int x, int y, double scale, int thickness) {
    cv::putText(picture, text, cv::Point(x, y), cv::FONT_HERSHEY_SIMPLEX, scale,
                cv::Scalar::all(255), thickness);
}

TEST(FindLifespans, WritesATableWithABarPerLabel) {
    const TempDir folder;
    // Label 1 lives from scale 0 to 2 of 4, label 12 at scale 1 alone.
    lifespans({{{1, 1}}, {{1, 1}, {2, 12}}, {{1, 1}}, {}}, savingDebugger(folder));
    ASSERT_THAT(folder.names(), ElementsAre(kLifespansPicture));
    const cv::Mat picture = readPicture(folder, kLifespansPicture);
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), cv::Size(600, 30 * 2 + 50));

    cv::Mat drawn = cv::Mat::zeros(picture.size(), CV_8UC1);
    write(drawn, "Global Label Lifespans", 10, 25, 0.8, 2);
    cv::Mat title = drawn.clone();
    write(drawn, "Global Label | Start Index | End Index | Duration", 10, 45, 0.5, 1);
    cv::Mat header = drawn - title;
    int y = 57;
    const std::vector<std::vector<std::string>> rows{{"Label 1", "0", "2", "3"},
                                                     {"Label 12", "1", "1", "1"}};
    for (const std::vector<std::string>& row : rows) {
        write(drawn, row[0], 10, y + 13, 0.5, 1);
        write(drawn, row[1], 150, y + 13, 0.5, 1);
        write(drawn, row[2], 250, y + 13, 0.5, 1);
        write(drawn, row[3], 350, y + 13, 0.5, 1);
        cv::rectangle(drawn, cv::Point(450, y), cv::Point(590, y + 16), cv::Scalar(255),
                      cv::FILLED);
        y += 30;
    }
    EXPECT_THAT(drawnPixels(picture), MatEq(drawn));

    cv::Mat level(picture.size(), CV_8UC3, cv::Scalar::all(0));
    cv::Mat of_title = level.clone();
    picture.copyTo(of_title, title & ~header);
    EXPECT_TRUE(hasPixel(of_title, {255, 255, 255}));
    cv::Mat of_header = level.clone();
    picture.copyTo(of_header, header);
    EXPECT_TRUE(hasPixel(of_header, {200, 200, 200}));
}

TEST(FindLifespans, DrawsEachLifeOverItsGreyBar) {
    const TempDir folder;
    lifespans({{{1, 1}}, {{1, 1}, {2, 12}}, {{1, 1}}, {}}, savingDebugger(folder));
    const cv::Mat picture = readPicture(folder, kLifespansPicture);
    // 140 pixels for three steps: scale 1 at 46, scale 2 at 93.
    cv::Mat life = cv::Mat::zeros(picture.size(), CV_8UC1);
    cv::rectangle(life, cv::Point(450, 57 + 2), cv::Point(450 + 93, 57 + 14), 255, cv::FILLED);
    cv::rectangle(life, cv::Point(450 + 46, 87 + 2), cv::Point(450 + 46, 87 + 14), 255, cv::FILLED);
    for (const int y : {57, 87}) {
        for (int row = y; row <= y + 16; ++row) {
            for (int col = 450; col <= 590; ++col) {
                const bool grey = picture.at<cv::Vec3b>(row, col) == cv::Vec3b(50, 50, 50);
                ASSERT_EQ(grey, life.at<uchar>(row, col) == 0) << "row " << row << ", col " << col;
            }
        }
    }
}

TEST(FindLifespans, DrawsNoLifeForASingleScale) {
    const TempDir folder;
    lifespans({{{1, 1}}}, savingDebugger(folder));
    const cv::Mat picture = readPicture(folder, kLifespansPicture);
    ASSERT_EQ(picture.size(), cv::Size(600, 80));
    const cv::Mat bar(17, 141, CV_8UC3, cv::Scalar::all(50));
    EXPECT_THAT(picture(cv::Rect(450, 57, 141, 17)), MatEq(bar));
}

TEST(FindLifespans, WritesNoPictureWithoutALifeOrUnlessAsked) {
    const TempDir folder;
    lifespans({{{1, 255}}, {}}, savingDebugger(folder));
    lifespans({{{1, 1}}, {}}, idleDebugger(folder));
    EXPECT_THAT(folder.names(), IsEmpty());
}

}  // namespace
}  // namespace vorund::test
