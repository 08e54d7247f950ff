#include "vorund/rooms/resampling.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

using test::asView;
using test::MatEq;
using ::testing::ThrowsMessage;

/// The same value everywhere but in the drawn lower right corner; large enough to be a map.
cv::Mat inCorner(const cv::Mat& drawn, const cv::Size& size, double around) {
    cv::Mat image(size, drawn.type(), cv::Scalar(around));
    drawn.copyTo(
        image(cv::Rect(size.width - drawn.cols, size.height - drawn.rows, drawn.cols, drawn.rows)));
    return image;
}

cv::Mat cornerOf(const cv::Mat& image, const cv::Size& size) {
    return image(cv::Rect({image.cols - size.width, image.rows - size.height}, size)).clone();
}

cv::Mat floorOf(const cv::Mat& values) {
    return values <= 0.5;
}

/// Straight strokes of wall, one to three pixels wide, at any angle, on floor.
cv::Mat randomWalls(cv::RNG& random, const cv::Size& size) {
    cv::Mat drawn(size, CV_8UC1, cv::Scalar(0));
    const auto point = [&] {
        return cv::Point(random.uniform(0, size.width), random.uniform(0, size.height));
    };
    for (int i = 0; i < 25; ++i) {
        cv::line(drawn, point(), point(), cv::Scalar(1), random.uniform(1, 4), cv::LINE_8);
    }
    cv::Mat values;
    drawn.convertTo(values, CV_32F);
    return values;
}

TEST(Resampling, IsTheIdentityAtTheWorkingResolution) {
    const Resampling resampling({30, 40}, 0.05);
    EXPECT_TRUE(resampling.isIdentity());
    EXPECT_EQ(resampling.workingSize(), cv::Size(30, 40));

    cv::RNG random(1);
    const cv::Mat values = randomWalls(random, {30, 40});
    EXPECT_THAT(resampling.toWorking(values), MatEq(values));

    cv::Mat labels(40, 30, CV_8UC1);
    random.fill(labels, cv::RNG::UNIFORM, 0, 256);
    EXPECT_THAT(resampling.labelsToMap(labels, values), MatEq(labels));
}

TEST(Resampling, TakesAResolutionOfSinglePrecisionAsTheWorkingOne) {
    // nav_msgs/MapMetaData holds a float: 0.05 becomes 0.0500000007.
    EXPECT_TRUE(Resampling({4000, 4000}, static_cast<double>(0.05F)).isIdentity());
}

TEST(Resampling, TakesAResolutionAsTheSameUpToHalfAPixelOverTheMap) {
    // Over 1000 pixels half a pixel is 0.025 m, 0.000025 m for each.
    EXPECT_TRUE(Resampling({1000, 500}, 0.050024).isIdentity());
    EXPECT_FALSE(Resampling({1000, 500}, 0.050026).isIdentity());
    EXPECT_TRUE(Resampling({500, 1000}, 0.049976).isIdentity());
    EXPECT_FALSE(Resampling({500, 1000}, 0.049974).isIdentity());
}

TEST(Resampling, MakesOneWorkingPixelOfFourAtHalfTheResolution) {
    const Resampling resampling({40, 42}, 0.025);
    EXPECT_FALSE(resampling.isIdentity());
    EXPECT_EQ(resampling.workingSize(), cv::Size(20, 21));

    const cv::Mat corner = test::values(
        "0   0  0 0   0 0.2\n"
        "0   0  0 1   0 0  \n"
        "0   0  0 0   0 0  \n"
        "0.5 0  0 0   1 0.7");
    const cv::Mat working = resampling.toWorking(inCorner(corner, {40, 42}, 0.0));
    EXPECT_THAT(cornerOf(working, {3, 2}), MatEq(test::values("0   1 0.2\n"
                                                              "0.5 0 1  ")));
    EXPECT_EQ(cv::countNonZero(working), 4);
}

TEST(Resampling, MakesFourWorkingPixelsOfOneAtTwiceTheResolution) {
    const Resampling resampling({10, 11}, 0.1);
    EXPECT_EQ(resampling.workingSize(), cv::Size(20, 22));

    const cv::Mat corner = test::values(
        "0   1\n"
        "0.3 0");
    const cv::Mat working = resampling.toWorking(inCorner(corner, {10, 11}, 0.0));
    EXPECT_THAT(cornerOf(working, {4, 4}), MatEq(test::values("0   0   1 1\n"
                                                              "0   0   1 1\n"
                                                              "0.3 0.3 0 0\n"
                                                              "0.3 0.3 0 0")));
    EXPECT_EQ(cv::countNonZero(working), 8);
}

TEST(Resampling, PutsEveryPixelWhereItsCentreFalls) {
    // At 0.03 m the centres lie at 15, 45, 75, 105, 135, 165 mm and so on: 0, 0, 1, 2, 2, 3.
    const Resampling resampling({34, 34}, 0.03);
    // The last centre lies at 1005 mm, in the 21st working pixel.
    EXPECT_EQ(resampling.workingSize(), cv::Size(21, 21));
    for (const auto& [col, working_col] :
         std::map<int, int>{{0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {33, 20}}) {
        cv::Mat values(34, 34, CV_32FC1, cv::Scalar(0.0));
        values.col(col) = cv::Scalar(1.0);
        cv::Mat expected(21, 21, CV_32FC1, cv::Scalar(0.0));
        expected.col(working_col) = cv::Scalar(1.0);
        EXPECT_THAT(resampling.toWorking(values), MatEq(expected)) << "column " << col;
    }
}

TEST(Resampling, TakesAWorkingPixelFromWhereItsCentreLies) {
    // At 0.07 m the pixels end at 70, 140, 210 mm; working centres lie at 25, 75, 125, 175, 225.
    const Resampling resampling({15, 15}, 0.07);
    // The map ends at 1050 mm; the last working centre in it lies at 1025 mm.
    EXPECT_EQ(resampling.workingSize(), cv::Size(21, 21));
    cv::Mat values(15, 15, CV_32FC1, cv::Scalar(0.0));
    for (int row = 0; row < values.rows; ++row) {
        values.row(row) = cv::Scalar(static_cast<double>(row) / 15.0);
    }
    const cv::Mat working = resampling.toWorking(values);
    for (const auto& [working_row, row] :
         std::map<int, int>{{0, 0}, {1, 1}, {2, 1}, {3, 2}, {4, 3}, {20, 14}}) {
        EXPECT_EQ(working.at<float>(working_row, 0), values.at<float>(row, 0))
            << "working row " << working_row;
    }
}

TEST(Resampling, ReadsViewsAndLeavesThemAlone) {
    const Resampling resampling({40, 40}, 0.025);
    cv::RNG random(2);
    const cv::Mat values = randomWalls(random, {40, 40});
    const cv::Mat view = asView(values);
    EXPECT_THAT(resampling.toWorking(view), MatEq(resampling.toWorking(values)));
    const cv::Mat labels(20, 20, CV_8UC1, cv::Scalar(3));
    EXPECT_THAT(resampling.labelsToMap(asView(labels), view),
                MatEq(resampling.labelsToMap(labels, values)));
    EXPECT_THAT(view, MatEq(values));
}

TEST(LabelsToMap, GivesLostFloorToTheNearestLabel) {
    const Resampling resampling({40, 40}, 0.025);
    // The wall of one pixel takes its working pixels whole; the floor beside it is lost.
    const cv::Mat corner = test::values(
        "0 0 0 1 0 0\n"
        "0 0 0 1 0 0");
    const cv::Mat values = inCorner(corner, {40, 40}, 1.0);
    const cv::Mat labels = inCorner(test::labels("1 . 2"), {20, 20}, 0);
    EXPECT_THAT(cornerOf(resampling.labelsToMap(labels, values), {6, 2}),
                MatEq(test::labels("1 1 1 . 2 2\n"
                                   "1 1 1 . 2 2")));
}

TEST(LabelsToMap, MeasuresTheWayOverTheFloor) {
    const Resampling resampling({40, 40}, 0.025);
    const cv::Mat corner = test::values(
        "0 0 1 1 1 1 0 0\n"
        "0 0 0 0 0 0 0 0\n"
        "0 0 0 1 0 1 0 0\n"
        "0 0 0 0 0 1 0 0");
    const cv::Mat values = inCorner(corner, {40, 40}, 1.0);
    const cv::Mat labels = inCorner(test::labels("9 . . 7\n"
                                                 "9 . . 7"),
                                    {20, 20}, 0);
    // Of the fifth column, the pixel in the third row is three steps from 7 and four from 9, the
    // one in the last row three from 9 and four from 7.
    EXPECT_THAT(cornerOf(resampling.labelsToMap(labels, values), {8, 4}),
                MatEq(test::labels("9 9 . . . . 7 7\n"
                                   "9 9 9 9 7 7 7 7\n"
                                   "9 9 9 . 7 . 7 7\n"
                                   "9 9 9 9 9 . 7 7")));
}

TEST(LabelsToMap, GivesEquallyNearFloorToTheLabelThatComesFirstInRasterOrder) {
    const Resampling resampling({40, 40}, 0.025);
    const cv::Mat corner = test::values(
        "1 1 0 0\n"
        "1 1 0 0\n"
        "0 0 0 0\n"
        "0 0 0 1");
    const cv::Mat values = inCorner(corner, {40, 40}, 1.0);
    const cv::Mat labels = inCorner(test::labels(". 7\n"
                                                 "9 ."),
                                    {20, 20}, 0);
    // The third pixel of the third row lies beside 7 (above) and 9 (left): 7 comes first.
    EXPECT_THAT(cornerOf(resampling.labelsToMap(labels, values), {4, 4}),
                MatEq(test::labels(". . 7 7\n"
                                   ". . 7 7\n"
                                   "9 9 7 7\n"
                                   "9 9 9 .")));
}

TEST(LabelsToMap, LeavesFloorThatNoLabelReaches) {
    const Resampling resampling({40, 40}, 0.025);
    // The passage meets the room only at a corner, and floor without a label is not filled up.
    const cv::Mat corner = test::values(
        "0 0 1 0 0 0\n"
        "0 0 1 1 0 0\n"
        "1 1 0 1 0 0\n"
        "1 1 0 1 0 0");
    const cv::Mat values = inCorner(corner, {40, 40}, 1.0);
    const cv::Mat labels = inCorner(test::labels("5 . .\n"
                                                 ". . ."),
                                    {20, 20}, 0);
    EXPECT_THAT(cornerOf(resampling.labelsToMap(labels, values), {6, 4}),
                MatEq(test::labels("5 5 . . . .\n"
                                   "5 5 . . . .\n"
                                   ". . . . . .\n"
                                   ". . . . . .")));
}

/// The rule of the header, put plainly: for every lost pixel the nearest labelled pixel, by a
/// search of its own from every one of them in raster order.
cv::Mat labelsToMapNaively(const cv::Mat& own_labels, const cv::Mat& lost) {
    struct Best {
        int distance = std::numeric_limits<int>::max();
        std::uint8_t label = 0;
    };
    std::vector<Best> best(lost.total());
    const cv::Rect inside({0, 0}, lost.size());
    const auto index = [&](const cv::Point& p) {
        return static_cast<std::size_t>(p.y * lost.cols + p.x);
    };
    for (int row = 0; row < lost.rows; ++row) {
        for (int col = 0; col < lost.cols; ++col) {
            const std::uint8_t label = own_labels.at<std::uint8_t>(row, col);
            if (label == 0) continue;
            std::map<std::size_t, int> distances{{index({col, row}), 0}};
            std::deque<cv::Point> queue{{col, row}};
            for (; !queue.empty(); queue.pop_front()) {
                const cv::Point from = queue.front();
                for (const cv::Point& step :
                     {cv::Point(0, -1), cv::Point(-1, 0), cv::Point(1, 0), cv::Point(0, 1)}) {
                    const cv::Point to = from + step;
                    if (!inside.contains(to) || lost.at<std::uint8_t>(to) == 0) continue;
                    if (own_labels.at<std::uint8_t>(to) != 0) continue;
                    const int distance = distances.at(index(from)) + 1;
                    if (!distances.emplace(index(to), distance).second) continue;
                    queue.push_back(to);
                    Best& at = best[index(to)];
                    if (distance < at.distance) at = {distance, label};
                }
            }
        }
    }
    cv::Mat filled = own_labels.clone();
    for (int row = 0; row < lost.rows; ++row) {
        for (int col = 0; col < lost.cols; ++col) {
            const Best& at = best[index({col, row})];
            if (at.label != 0) filled.at<std::uint8_t>(row, col) = at.label;
        }
    }
    return filled;
}

/// The parameter is the resolution in millimetres.
class ResamplingProperties : public ::testing::TestWithParam<int> {
 protected:
    static constexpr int kCases = 30;
    static constexpr int kWorking = 50;

    static bool isFiner() { return GetParam() < kWorking; }

    static Resampling resamplingOf(const cv::Mat& values) {
        return Resampling(values.size(), GetParam() / 1000.0);
    }

    /// At least 3 m x 2 m, of odd and even sizes.
    static cv::Mat map(cv::RNG& random) {
        const auto length = [&](int millimetres) {
            return millimetres / GetParam() + 1 + random.uniform(0, 9);
        };
        const int width = length(3000);
        return randomWalls(random, {width, length(2000)});
    }

    /// Where the centre of a pixel falls among pixels of another size, all in millimetres.
    static cv::Point placeOf(const cv::Point& pixel, int own, int other) {
        return {(2 * pixel.x + 1) * own / (2 * other), (2 * pixel.y + 1) * own / (2 * other)};
    }

    /// Visits each pixel of the finer of both images with the one of the coarser that holds its
    /// centre, as (own, working).
    template <class Visit>
    static void forEachPair(const cv::Size& own, const cv::Size& working, Visit visit) {
        const cv::Size finer = isFiner() ? own : working;
        for (int row = 0; row < finer.height; ++row) {
            for (int col = 0; col < finer.width; ++col) {
                const cv::Point pixel(col, row);
                if (isFiner()) {
                    visit(pixel, placeOf(pixel, GetParam(), kWorking));
                } else {
                    visit(placeOf(pixel, kWorking, GetParam()), pixel);
                }
            }
        }
    }
};

class FinerMaps : public ResamplingProperties {};
class CoarserMaps : public ResamplingProperties {};

TEST_P(ResamplingProperties, NeverJoinsFloorThatWallsSeparate) {
    cv::RNG random(3);
    for (int i = 0; i < kCases; ++i) {
        const cv::Mat values = map(random);
        const cv::Mat working = resamplingOf(values).toWorking(values);
        for (const int connectivity : {4, 8}) {
            cv::Mat own_places;
            cv::Mat working_places;
            cv::connectedComponents(floorOf(values), own_places, connectivity, CV_32S);
            ASSERT_GT(cv::connectedComponents(floorOf(working), working_places, connectivity), 2);
            std::map<int, std::set<int>> joined;  // Of a place at the working resolution.
            forEachPair(values.size(), working.size(), [&](cv::Point own, cv::Point at) {
                const int place = working_places.at<int>(at);
                if (place != 0) joined[place].insert(own_places.at<int>(own));
            });
            for (const auto& [place, own] : joined) EXPECT_EQ(own.size(), 1U) << "place " << place;
        }
    }
}

TEST_P(CoarserMaps, KeepFloorJoined) {
    cv::RNG random(8);
    for (int i = 0; i < kCases; ++i) {
        const cv::Mat values = map(random);
        const cv::Mat working = resamplingOf(values).toWorking(values);
        cv::Mat own_places;
        cv::Mat working_places;
        EXPECT_EQ(cv::connectedComponents(floorOf(values), own_places, 4),
                  cv::connectedComponents(floorOf(working), working_places, 4));
    }
}

TEST_P(ResamplingProperties, KeepsAWallOfOnePixelInOnePiece) {
    cv::RNG random(4);
    for (int i = 0; i < kCases; ++i) {
        cv::Mat drawn(map(random).size(), CV_8UC1, cv::Scalar(0));
        const cv::Point from(random.uniform(0, drawn.cols), 0);
        const cv::Point to(random.uniform(0, drawn.cols), drawn.rows - 1);
        cv::line(drawn, from, to, cv::Scalar(1), 1, cv::LINE_8);  // 8-connected
        cv::Mat values;
        drawn.convertTo(values, CV_32F);
        const Resampling resampling = resamplingOf(values);
        const cv::Mat working = resampling.toWorking(values);
        cv::Mat components;
        EXPECT_EQ(cv::connectedComponents(working > 0.5, components, 8, CV_32S), 2)
            << "background and one wall";
        const cv::Mat wall = working > 0.5;
        EXPECT_GT(cv::countNonZero(wall.row(0)), 0);
        EXPECT_GT(cv::countNonZero(wall.row(wall.rows - 1)), 0);
    }
}

TEST_P(ResamplingProperties, LabelsNoWallAndAllFloorThatARoomReaches) {
    cv::RNG random(5);
    for (int i = 0; i < kCases; ++i) {
        const cv::Mat values = map(random);
        const Resampling resampling = resamplingOf(values);
        const cv::Mat working_floor = floorOf(resampling.toWorking(values));
        cv::Mat rooms;
        const int count = cv::connectedComponents(working_floor, rooms, 4, CV_32S);
        ASSERT_LT(count, 255);
        cv::Mat labels;
        rooms.convertTo(labels, CV_8U);

        const cv::Mat own = resampling.labelsToMap(labels, values);
        EXPECT_EQ(cv::countNonZero(own & ~floorOf(values)), 0) << "a wall has a label";
        // All floor of a place where any pixel has a label has one.
        cv::Mat places;
        const int number = cv::connectedComponents(floorOf(values), places, 4, CV_32S);
        for (int place = 1; place < number; ++place) {
            const cv::Mat inside = places == place;
            const int labelled = cv::countNonZero(inside & (own != 0));
            EXPECT_TRUE(labelled == 0 || labelled == cv::countNonZero(inside));
        }
    }
}

TEST_P(CoarserMaps, LoseNoFloor) {
    cv::RNG random(6);
    const cv::Mat values = map(random);
    const Resampling resampling = resamplingOf(values);
    const cv::Mat floor = resampling.toWorking(values) == 0.0;  // 255 where there is floor
    EXPECT_THAT(resampling.labelsToMap(floor, values), MatEq(values == 0.0));
}

TEST_P(FinerMaps, FillLostFloorAsThePlainRuleDoes) {
    cv::RNG random(7);
    for (int i = 0; i < 4; ++i) {
        const cv::Mat whole = map(random);
        const int side = 1000 / GetParam() + 1;
        const cv::Mat values = whole(cv::Rect(0, 0, side, side)).clone();
        const Resampling resampling = resamplingOf(values);
        const cv::Mat working = resampling.toWorking(values);
        cv::Mat labels(working.size(), CV_8UC1);
        random.fill(labels, cv::RNG::UNIFORM, 1, 9);
        labels.setTo(0, working > 0.5);

        cv::Mat own_labels(values.size(), CV_8UC1, cv::Scalar(0));
        cv::Mat lost(values.size(), CV_8UC1, cv::Scalar(0));
        forEachPair(values.size(), working.size(), [&](cv::Point own, cv::Point at) {
            if (values.at<float>(own) > 0.5F) return;
            own_labels.at<std::uint8_t>(own) = labels.at<std::uint8_t>(at);
            if (working.at<float>(at) > 0.5F) lost.at<std::uint8_t>(own) = 1;
        });
        EXPECT_GT(cv::countNonZero(lost), 0);
        EXPECT_THAT(resampling.labelsToMap(labels, values),
                    MatEq(labelsToMapNaively(own_labels, lost)));
    }
}

std::string nameOf(const ::testing::TestParamInfo<int>& tested) {
    return std::to_string(tested.param) + "mm";
}

INSTANTIATE_TEST_SUITE_P(Resolutions, ResamplingProperties, ::testing::Values(25, 30, 40, 70, 100),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Resolutions, FinerMaps, ::testing::Values(25, 30, 40), nameOf);
INSTANTIATE_TEST_SUITE_P(Resolutions, CoarserMaps, ::testing::Values(70, 100), nameOf);

TEST(Resampling, RejectsAResolutionThatIsNone) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_THAT(
        [] {
            Resampling({100, 100}, 0.0);
        },
        ThrowsMessage<MapError>("the resolution must be positive and finite, not 0"));
    EXPECT_THAT(
        [] {
            Resampling({100, 100}, -0.05);
        },
        ThrowsMessage<MapError>("the resolution must be positive and finite, not -0.05"));
    EXPECT_THAT(
        [&] {
            Resampling({100, 100}, infinity);
        },
        ThrowsMessage<MapError>("the resolution must be positive and finite, not inf"));
    EXPECT_THROW(Resampling({100, 100}, std::numeric_limits<double>::quiet_NaN()), MapError);
}

TEST(Resampling, RejectsAMapSmallerThanASquareMetre) {
    EXPECT_THAT(Resampling({20, 20}, 0.05).workingSize(), cv::Size(20, 20));
    EXPECT_THAT(
        [] {
            Resampling({20, 19}, 0.05);
        },
        ThrowsMessage<MapError>("the map has 20 x 19 pixels of 0.05 m: it is smaller than 1 m^2"));
    EXPECT_THAT(Resampling({1, 1}, 1.0).workingSize(), cv::Size(20, 20));
    EXPECT_THROW(Resampling({1000, 1000}, 1e-12), MapError);
    EXPECT_THROW(Resampling({0, 0}, 0.05), MapError);
}

TEST(Resampling, RejectsAMapOfTooManyPixels) {
    EXPECT_EQ(Resampling({8000, 8000}, 0.05).workingSize(), cv::Size(8000, 8000));
    EXPECT_THAT(
        [] {
            Resampling({8001, 8000}, 0.05);
        },
        ThrowsMessage<MapError>("the map has 8001 x 8000 pixels of 0.05 m, at 0.05 m 8001 "
                                "x 8000: too large to be worked on"));
    EXPECT_EQ(Resampling({1, 1}, 400.0).workingSize(), cv::Size(8000, 8000));
    EXPECT_THROW(Resampling({1, 1}, 401.0), MapError);
    EXPECT_THROW(Resampling({100, 100}, 1e300), MapError);
    EXPECT_THROW(Resampling({std::numeric_limits<int>::max(), 1}, 0.05), MapError);
    EXPECT_THROW(Resampling({std::numeric_limits<int>::max(), 1}, 400.0), MapError);
}

TEST(Resampling, RejectsImagesOfAnotherTypeOrSize) {
    const Resampling resampling({40, 40}, 0.025);
    const cv::Mat values(40, 40, CV_32FC1, cv::Scalar(0.0));
    const cv::Mat labels(20, 20, CV_8UC1, cv::Scalar(0));
    EXPECT_THAT([&] { resampling.toWorking(cv::Mat(40, 40, CV_8UC1)); },
                ThrowsMessage<std::invalid_argument>(
                    "Resampling::toWorking: The values must be CV_32FC1 and of the map's size."));
    EXPECT_THAT([&] { resampling.toWorking(cv::Mat(40, 41, CV_32FC1)); },
                ThrowsMessage<std::invalid_argument>(
                    "Resampling::toWorking: The values must be CV_32FC1 and of the map's size."));
    EXPECT_THAT([&] { resampling.labelsToMap(labels, cv::Mat(20, 20, CV_32FC1)); },
                ThrowsMessage<std::invalid_argument>(
                    "Resampling::labelsToMap: The values must be CV_32FC1 and of the map's size."));
    const char* about_labels =
        "Resampling::labelsToMap: The labels must be CV_8UC1 or CV_32SC1 and of the working size.";
    EXPECT_THAT([&] { resampling.labelsToMap(cv::Mat(20, 20, CV_16UC1), values); },
                ThrowsMessage<std::invalid_argument>(about_labels));
    EXPECT_THAT([&] { resampling.labelsToMap(cv::Mat(40, 40, CV_8UC1), values); },
                ThrowsMessage<std::invalid_argument>(about_labels));
    const char* about_mask =
        "Resampling::maskToMap: The mask must be CV_8UC1 and of the working size.";
    EXPECT_THAT([&] { resampling.maskToMap(cv::Mat(20, 20, CV_32SC1), values); },
                ThrowsMessage<std::invalid_argument>(about_mask));
    EXPECT_THAT([&] { resampling.maskToMap(cv::Mat(40, 40, CV_8UC1), values); },
                ThrowsMessage<std::invalid_argument>(about_mask));
}

/// 4 m by 4 m with a wall of one pixel across, and labels on either side of it.
void expectWideLabelsAsNarrow(double resolution, int side) {
    const Resampling resampling({side, side}, resolution);
    cv::Mat values(side, side, CV_32FC1, cv::Scalar(0.0));
    values.row(side / 2).setTo(1.0);
    const cv::Mat working = resampling.toWorking(values);
    cv::Mat narrow(working.size(), CV_8UC1, cv::Scalar(7));
    narrow.rowRange(0, narrow.rows / 2).setTo(3);
    narrow.setTo(0, working > 0.5);
    cv::Mat wide;
    narrow.convertTo(wide, CV_32S, 1000.0);
    cv::Mat expected;
    resampling.labelsToMap(narrow, values).convertTo(expected, CV_32S, 1000.0);
    EXPECT_THAT(resampling.labelsToMap(wide, values), test::MatEq(expected));
}

TEST(Resampling, BringsWideLabelsBackAsNarrowOnes) {
    expectWideLabelsAsNarrow(0.025, 160);
    expectWideLabelsAsNarrow(0.05, 80);
    expectWideLabelsAsNarrow(0.1, 40);
}

TEST(Resampling, LooksAMaskUpAtTheCentresOfThePixels) {
    const Resampling finer({40, 40}, 0.025);
    cv::Mat mask(20, 20, CV_8UC1, cv::Scalar(0));
    mask.at<std::uint8_t>(3, 5) = 255;
    cv::Mat expected(40, 40, CV_8UC1, cv::Scalar(0));
    expected(cv::Rect(10, 6, 2, 2)).setTo(255);
    cv::Mat values(40, 40, CV_32FC1, cv::Scalar(0.0));
    values.at<float>(7, 11) = 1.0F;  // Wall is no part of a mask of floor.
    expected.at<std::uint8_t>(7, 11) = 0;
    EXPECT_THAT(finer.maskToMap(mask, values), test::MatEq(expected));

    // A pixel of 0.1 m has its centre at the corner of four working pixels: the lower right holds
    // it, since a pixel holds its left and its upper edge.
    const Resampling coarser({20, 20}, 0.1);
    cv::Mat wide_mask(40, 40, CV_8UC1, cv::Scalar(0));
    wide_mask.at<std::uint8_t>(7, 11) = 255;
    cv::Mat one(20, 20, CV_8UC1, cv::Scalar(0));
    one.at<std::uint8_t>(3, 5) = 255;
    const cv::Mat floor(20, 20, CV_32FC1, cv::Scalar(0.0));
    EXPECT_THAT(coarser.maskToMap(wide_mask, floor), test::MatEq(one));
}

}  // namespace
}  // namespace vorund::rooms
