#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/border_rectifier.h"
#include "reference/graph_processor.h"
#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"
#include "vorund/graph_processor.h"

namespace vorund::test {
namespace {

using GraphProcessor::OptimalBorderRectifier;
using GraphProcessor::OptimalLine;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Lines = std::map<int, OptimalLine>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
const cv::Vec3b kRed(0, 0, 255);
const cv::Vec3b kGreen(0, 255, 0);
const cv::Vec3b kYellow(0, 255, 255);
const cv::Vec3b kWhite(255, 255, 255);

/// Two rooms, 1 on the left and 2 on the right, with a vertical line of 9 between them and walls
/// around. From the line it is `half_width` pixels to the walls at either side; the line has
/// 2 * `half_height` + 1 pixels.
cv::Mat twoRooms(int half_width, int half_height) {
    cv::Mat image = cv::Mat::zeros(2 * half_height + 3, 2 * half_width + 3, CV_8UC1);
    cv::Mat inside = image(cv::Rect(1, 1, image.cols - 2, image.rows - 2));
    inside.setTo(2);
    inside.colRange(0, half_width).setTo(1);
    inside.col(half_width).setTo(9);
    return image;
}

/// Two rooms in a band along the diagonal, with a vertical line of 9 between them.
cv::Mat diagonalBand() {
    cv::Mat image = cv::Mat::zeros(41, 41, CV_8UC1);
    for (int row = 0; row < 41; ++row) {
        for (int col = 0; col < 41; ++col) {
            if (std::abs(row - col) > 5) continue;
            image.at<uchar>(row, col) = col < 20 ? 1 : (col == 20 ? 9 : 2);
        }
    }
    return image;
}

/// The rectifier of a label image whose lines are of its largest value.
OptimalBorderRectifier rectifier(const cv::Mat& segments, int border_value = 9) {
    const auto found = GraphProcessor::extractCommonBorders(segments, border_value);
    return {segments, found.borders_map, found.border_ids};
}

OptimalBorderRectifier withoutBorders(const cv::Mat& segments) {
    return {segments, cv::Mat::zeros(segments.size(), CV_8UC1), {}};
}

Lines quietLines(OptimalBorderRectifier rectifier) {
    const PlainCapture printed;
    return rectifier.processOptimalRectification();
}

std::string printedBy(OptimalBorderRectifier rectifier) {
    const PlainCapture printed;
    rectifier.processOptimalRectification();
    return printed.text();
}

std::pair<cv::Mat, Lines> quietRectification(const cv::Mat& segments, int border_value = 9,
                                             const std::string& name = "") {
    const PlainCapture printed;
    const auto found = GraphProcessor::extractCommonBorders(segments, border_value);
    return GraphProcessor::processOptimalBorderRectification(found.borders_map, found.border_ids,
                                                             segments, name);
}

OptimalLine line(const cv::Point2f& start, const cv::Point2f& end, float weight) {
    return {(start + end) / 2.0F, start, end, 0.0F, 10.0F, weight, 10.0F / weight};
}

bool sameLine(const OptimalLine& a, const OptimalLine& b) {
    return a.center == b.center && a.start == b.start && a.end == b.end && a.angle == b.angle &&
           a.effective_length == b.effective_length && a.direction_weight == b.direction_weight &&
           a.score == b.score;
}

std::string text(const OptimalLine& line) {
    std::ostringstream stream;
    stream.precision(std::numeric_limits<float>::max_digits10);
    stream << line.center << " " << line.start << " " << line.end << " " << line.angle << " "
           << line.effective_length << " " << line.direction_weight << " " << line.score;
    return stream.str();
}

/// Whether the point is the expected one up to the rounding of single precision.
::testing::AssertionResult isNear(const cv::Point2f& point, const cv::Point2f& expected) {
    if (cv::norm(point - expected) < 1e-3) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << point << " instead of " << expected;
}

int countColour(const cv::Mat& picture, const cv::Vec3b& colour) {
    cv::Mat same;
    cv::inRange(picture, colour, colour, same);
    return cv::countNonZero(same);
}

// findBorderLabelInSegments

TEST(FindBorderLabelInSegments, IsTheLargestValue) {
    EXPECT_EQ(withoutBorders(labels("1 9 2")).findBorderLabelInSegments(), 9);
    EXPECT_EQ(withoutBorders(labels("1 255 2")).findBorderLabelInSegments(), 255);
    EXPECT_EQ(withoutBorders(labels(". .")).findBorderLabelInSegments(), 0);
    EXPECT_EQ(withoutBorders(labels("7")).findBorderLabelInSegments(), 7);
}

TEST(FindBorderLabelInSegments, DoesNotSeeWhatLiesAroundAView) {
    EXPECT_EQ(withoutBorders(asView(labels("1 2\n2 1"))).findBorderLabelInSegments(), 2);
}

TEST(FindBorderLabelInSegments, IsComputedAnewAtEveryCall) {
    cv::Mat segments = labels("1 255 2\n1 9 255");
    const OptimalBorderRectifier rectifier = withoutBorders(segments);
    EXPECT_EQ(rectifier.findBorderLabelInSegments(), 255);
    segments.at<uchar>(0, 1) = 0;
    EXPECT_EQ(rectifier.findBorderLabelInSegments(), 255);
    segments.at<uchar>(1, 2) = 0;
    EXPECT_EQ(rectifier.findBorderLabelInSegments(), 9);
    segments.at<uchar>(0, 0) = 30;
    EXPECT_EQ(rectifier.findBorderLabelInSegments(), 30);
    segments.at<uchar>(0, 2) = 255;
    EXPECT_EQ(rectifier.findBorderLabelInSegments(), 255);
}

TEST(FindBorderLabelInSegments, IsAskedByEveryTestOfAPixel) {
    cv::Mat segments = labels("1 9 2 255");
    const OptimalBorderRectifier rectifier = withoutBorders(segments);
    EXPECT_FALSE(rectifier.isValidSegmentationPoint(cv::Point2f(1, 0), 1, 2));
    EXPECT_EQ(rectifier.extendToValidBoundary(cv::Point2f(0, 0), cv::Point2f(1, 0), 1, 2),
              cv::Point2f(0, 0));
    segments.at<uchar>(0, 3) = 0;
    EXPECT_TRUE(rectifier.isValidSegmentationPoint(cv::Point2f(1, 0), 1, 2));
    EXPECT_EQ(rectifier.extendToValidBoundary(cv::Point2f(0, 0), cv::Point2f(1, 0), 1, 2),
              cv::Point2f(2, 0));
}

// getDirectionWeight

TEST(GetDirectionWeight, FavoursHorizontalAndVerticalCuts) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1"));
    for (const float angle : {0.0F, 90.0F, 180.0F, -90.0F, -180.0F, 270.0F, 360.0F, 1890.0F}) {
        EXPECT_EQ(rectifier.getDirectionWeight(angle), 1.5F) << angle;
    }
    for (int angle = 10; angle < 180; angle += 10) {
        if (angle == 90) continue;
        EXPECT_EQ(rectifier.getDirectionWeight(static_cast<float>(angle)), 1.0F) << angle;
        EXPECT_EQ(rectifier.getDirectionWeight(static_cast<float>(angle - 180)), 1.0F) << angle;
        EXPECT_EQ(rectifier.getDirectionWeight(static_cast<float>(angle + 360)), 1.0F) << angle;
    }
}

TEST(GetDirectionWeight, AllowsAThousandthOfADegree) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1"));
    for (const float angle : {0.0005F, 89.9995F, 90.0005F, 179.9995F, -0.0005F, 180.0005F}) {
        EXPECT_EQ(rectifier.getDirectionWeight(angle), 1.5F) << angle;
    }
    for (const float angle : {0.002F, 89.998F, 90.002F, 179.998F, -0.002F, 180.002F, 45.0F}) {
        EXPECT_EQ(rectifier.getDirectionWeight(angle), 1.0F) << angle;
    }
}

TEST(GetDirectionWeight, EndsForEveryNumber) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1"));
    for (const float angle : {1e6F, 1e30F, -1e30F, kInfinity, -kInfinity, kNan}) {
        const float weight = rectifier.getDirectionWeight(angle);
        EXPECT_TRUE(weight == 1.0F || weight == 1.5F) << angle;
    }
}

// isValidSegmentationPoint, isValidSegmentation

TEST(IsValidSegmentationPoint, AllowsBackgroundBothRoomsAndLines) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels(". 1 2 3 9"));
    const auto valid = [&](float x) {
        return rectifier.isValidSegmentationPoint(cv::Point2f(x, 0), 1, 2);
    };
    EXPECT_TRUE(valid(0));
    EXPECT_TRUE(valid(1));
    EXPECT_TRUE(valid(2));
    EXPECT_FALSE(valid(3));
    EXPECT_TRUE(valid(4));
}

TEST(IsValidSegmentationPoint, RoundsAndRejectsWhatLiesOutside) {
    const OptimalBorderRectifier rectifier = withoutBorders(asView(labels("1 3\n3 1\n9 1")));
    const auto valid = [&](float x, float y) {
        return rectifier.isValidSegmentationPoint(cv::Point2f(x, y), 1, 2);
    };
    EXPECT_TRUE(valid(0.4F, 0.4F));
    EXPECT_FALSE(valid(0.6F, 0.4F));
    EXPECT_FALSE(valid(0.4F, 0.6F));
    EXPECT_TRUE(valid(0.6F, 0.6F));
    EXPECT_TRUE(valid(-0.4F, -0.4F));
    EXPECT_TRUE(valid(1.4F, 2.4F));
    EXPECT_FALSE(valid(-0.6F, 0.0F));
    EXPECT_FALSE(valid(0.0F, -0.6F));
    EXPECT_FALSE(valid(1.6F, 1.0F));
    EXPECT_FALSE(valid(1.0F, 2.6F));
}

TEST(IsValidSegmentationPoint, RoundsHalvesAwayFromZero) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("3 1 3 9"));
    EXPECT_TRUE(rectifier.isValidSegmentationPoint(cv::Point2f(0.5F, 0), 1, 2));
    EXPECT_FALSE(rectifier.isValidSegmentationPoint(cv::Point2f(1.5F, 0), 1, 2));
    EXPECT_TRUE(rectifier.isValidSegmentationPoint(cv::Point2f(2.5F, 0), 1, 2));
    EXPECT_FALSE(rectifier.isValidSegmentationPoint(cv::Point2f(3.5F, 0), 1, 2));
    EXPECT_FALSE(rectifier.isValidSegmentationPoint(cv::Point2f(3.0F, -0.5F), 1, 2));
}

TEST(IsValidSegmentationPoint, RejectsWhatIsNoPlace) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1"));
    for (const float x : {1e20F, -1e20F, 4294967296.0F, kInfinity, -kInfinity, kNan}) {
        EXPECT_FALSE(rectifier.isValidSegmentationPoint(cv::Point2f(x, 0), 1, 2)) << x;
        EXPECT_FALSE(rectifier.isValidSegmentationPoint(cv::Point2f(0, x), 1, 2)) << x;
    }
}

TEST(IsValidSegmentation, AsksForBothEnds) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels(". 1 2 3 9"));
    const auto valid = [&](float x1, float x2) {
        return rectifier.isValidSegmentation(cv::Point2f(x1, 0), cv::Point2f(x2, 0), 1, 2);
    };
    EXPECT_TRUE(valid(0, 4));
    // What lies between does not count.
    EXPECT_TRUE(valid(2, 4));
    EXPECT_FALSE(valid(3, 1));
    EXPECT_FALSE(valid(1, 3));
    EXPECT_FALSE(valid(-1, 1));
    EXPECT_FALSE(valid(1, 5));
}

// extendToValidBoundary

TEST(ExtendToValidBoundary, WalksOverBothRoomsAndLines) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels(". 1 1 9 2 2 ."));
    const auto end = [&](float x, float direction) {
        return rectifier.extendToValidBoundary(cv::Point2f(x, 0), cv::Point2f(direction, 0), 1, 2);
    };
    EXPECT_EQ(end(3, 1), cv::Point2f(5, 0));
    EXPECT_EQ(end(3, -1), cv::Point2f(1, 0));
}

TEST(ExtendToValidBoundary, StopsBeforeOtherRoomsAndBackground) {
    EXPECT_EQ(withoutBorders(labels("1 1 3 1 9"))
                  .extendToValidBoundary(cv::Point2f(0, 0), cv::Point2f(1, 0), 1, 2),
              cv::Point2f(1, 0));
    EXPECT_EQ(withoutBorders(labels("1 1 . 1 9"))
                  .extendToValidBoundary(cv::Point2f(0, 0), cv::Point2f(1, 0), 1, 2),
              cv::Point2f(1, 0));
}

TEST(ExtendToValidBoundary, StopsAtTheRimOfTheImage) {
    const OptimalBorderRectifier rectifier = withoutBorders(asView(labels("1 1 1\n1 1 1\n1 1 1")));
    const cv::Point2f middle(1, 1);
    EXPECT_EQ(rectifier.extendToValidBoundary(middle, cv::Point2f(1, 0), 1, 2), cv::Point2f(2, 1));
    EXPECT_EQ(rectifier.extendToValidBoundary(middle, cv::Point2f(-1, 0), 1, 2), cv::Point2f(0, 1));
    EXPECT_EQ(rectifier.extendToValidBoundary(middle, cv::Point2f(0, 1), 1, 2), cv::Point2f(1, 2));
    EXPECT_EQ(rectifier.extendToValidBoundary(middle, cv::Point2f(0, -1), 1, 2), cv::Point2f(1, 0));
}

TEST(ExtendToValidBoundary, KeepsTheFractionOfItsStart) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1 1 1 1"));
    // 3.4 still rounds to 3, 4.4 is outside.
    EXPECT_TRUE(
        isNear(rectifier.extendToValidBoundary(cv::Point2f(0.4F, 0.25F), cv::Point2f(1, 0), 1, 2),
               cv::Point2f(3.4F, 0.25F)));
}

TEST(ExtendToValidBoundary, TakesStepsOfOnePixelWhateverTheDirectionsLength) {
    const OptimalBorderRectifier rectifier =
        withoutBorders(cv::Mat(10, 10, CV_8UC1, cv::Scalar(1)));
    for (const float scale : {1e-4F, 0.01F, 1.0F, 70.0F}) {
        // 0.6 and 0.8 a step: after 11 steps y = 8.8, the twelfth is outside.
        EXPECT_TRUE(isNear(rectifier.extendToValidBoundary(cv::Point2f(0, 0),
                                                           cv::Point2f(3 * scale, 4 * scale), 1, 2),
                           cv::Point2f(6.6F, 8.8F)))
            << scale;
    }
}

TEST(ExtendToValidBoundary, StaysWithoutADirection) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1 1 1 1"));
    const cv::Point2f start(0.3F, 0.1F);
    EXPECT_EQ(rectifier.extendToValidBoundary(start, cv::Point2f(0, 0), 1, 2), start);
    EXPECT_EQ(rectifier.extendToValidBoundary(start, cv::Point2f(5e-7F, 5e-7F), 1, 2), start);
    EXPECT_TRUE(isNear(rectifier.extendToValidBoundary(start, cv::Point2f(2e-6F, 0), 1, 2),
                       cv::Point2f(3.3F, 0.1F)));
}

TEST(ExtendToValidBoundary, StaysWhereTheFirstStepIsOut) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels(". 1 ."));
    EXPECT_EQ(rectifier.extendToValidBoundary(cv::Point2f(1, 0), cv::Point2f(1, 0), 1, 2),
              cv::Point2f(1, 0));
}

TEST(ExtendToValidBoundary, StaysFarOutside) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1 1 1"));
    for (const float x : {-50.0F, 50.0F, 1e20F, -1e20F}) {
        const cv::Point2f start(x, 0);
        EXPECT_EQ(rectifier.extendToValidBoundary(start, cv::Point2f(0, 1), 1, 2), start) << x;
    }
}

TEST(ExtendToValidBoundary, WalksAtMost200Steps) {
    const OptimalBorderRectifier rectifier =
        withoutBorders(cv::Mat(1, 500, CV_8UC1, cv::Scalar(1)));
    const cv::Point2f right(1, 0);
    EXPECT_EQ(rectifier.extendToValidBoundary(cv::Point2f(10, 0), right, 1, 2),
              cv::Point2f(210, 0));
    EXPECT_EQ(rectifier.extendToValidBoundary(cv::Point2f(299, 0), right, 1, 2),
              cv::Point2f(499, 0));
    EXPECT_EQ(rectifier.extendToValidBoundary(cv::Point2f(300, 0), right, 1, 2),
              cv::Point2f(499, 0));
}

TEST(ExtendToValidBoundary, DoesNotUseMaxSteps) {
    const OptimalBorderRectifier rectifier =
        withoutBorders(cv::Mat(1, 500, CV_8UC1, cv::Scalar(1)));
    for (const int max_steps : {-1, 0, 3, 200, 1000}) {
        EXPECT_EQ(
            rectifier.extendToValidBoundary(cv::Point2f(10, 0), cv::Point2f(1, 0), 1, 2, max_steps),
            cv::Point2f(210, 0));
    }
}

// extractBorderPixels, getBorderCenterPoint

TEST(ExtractBorderPixels, ListsThemByRows) {
    const cv::Mat borders = asView(labels(". 1 2\n1 . 1\n. 2 1"));
    const OptimalBorderRectifier rectifier(cv::Mat::zeros(3, 3, CV_8UC1), borders, {});
    EXPECT_THAT(rectifier.extractBorderPixels(1),
                ElementsAre(cv::Point(1, 0), cv::Point(0, 1), cv::Point(2, 1), cv::Point(2, 2)));
    EXPECT_THAT(rectifier.extractBorderPixels(2), ElementsAre(cv::Point(2, 0), cv::Point(1, 2)));
    // 257 and -255 have the low bits of 1.
    for (const int id : {3, 257, -255}) {
        EXPECT_THAT(rectifier.extractBorderPixels(id), IsEmpty()) << id;
    }
}

TEST(GetBorderCenterPoint, IsTheMean) {
    const OptimalBorderRectifier rectifier = withoutBorders(labels("1"));
    EXPECT_EQ(rectifier.getBorderCenterPoint({{4, 7}}), cv::Point2f(4, 7));
    EXPECT_EQ(rectifier.getBorderCenterPoint({{4, 7}, {5, 7}}), cv::Point2f(4.5F, 7));
    EXPECT_EQ(rectifier.getBorderCenterPoint({{0, 0}, {1, 3}, {1, 4}, {0, 0}}),
              cv::Point2f(0.5F, 1.75F));
}

TEST(GetBorderCenterPoint, IsNegativeWithoutPixels) {
    EXPECT_LT(withoutBorders(labels("1")).getBorderCenterPoint({}).x, 0.0F);
}

// calculateEffectiveLength

TEST(CalculateEffectiveLength, MeasuresFromWallToWall) {
    const OptimalBorderRectifier rectifier = ::vorund::test::rectifier(twoRooms(6, 4));
    const cv::Point2f center(7, 5);
    EXPECT_NEAR(rectifier.calculateEffectiveLength(center, 0.0F, 1), 12.0F, 1e-3F);
    EXPECT_NEAR(rectifier.calculateEffectiveLength(center, 90.0F, 1), 8.0F, 1e-3F);
    // 4.5 / sin(50°) = 5.9: five steps to either side.
    EXPECT_NEAR(rectifier.calculateEffectiveLength(center, 50.0F, 1), 10.0F, 1e-3F);
    EXPECT_NEAR(rectifier.calculateEffectiveLength(center, 130.0F, 1), 10.0F, 1e-3F);
}

TEST(CalculateEffectiveLength, TurnsClockwiseAsYPointsDown) {
    // Room 1 reaches only to the right and down.
    cv::Mat segments = cv::Mat::zeros(9, 9, CV_8UC1);
    for (int i = 0; i < 9; ++i) segments.at<uchar>(i, i) = 1;
    const OptimalBorderRectifier rectifier(segments, cv::Mat::zeros(9, 9, CV_8UC1),
                                           {{Edge(1, 2), 1}});
    const cv::Point2f center(4, 4);
    EXPECT_GT(rectifier.calculateEffectiveLength(center, 45.0F, 1), 9.0F);
    EXPECT_LT(rectifier.calculateEffectiveLength(center, 135.0F, 1), 1.0F);
}

TEST(CalculateEffectiveLength, IsZeroForAnUnknownBorder) {
    const OptimalBorderRectifier rectifier = ::vorund::test::rectifier(twoRooms(6, 4));
    for (const int id : {-1, 0, 2, 257}) {
        EXPECT_EQ(rectifier.calculateEffectiveLength(cv::Point2f(7, 5), 0.0F, id), 0.0F) << id;
    }
}

TEST(CalculateEffectiveLength, IsZeroFromAThirdRoomOrOutside) {
    const cv::Mat segments = labels("3 3 3 3 3 1 9 2");
    const OptimalBorderRectifier rectifier = ::vorund::test::rectifier(segments);
    EXPECT_EQ(rectifier.calculateEffectiveLength(cv::Point2f(2, 0), 0.0F, 1), 0.0F);
    EXPECT_EQ(rectifier.calculateEffectiveLength(cv::Point2f(30, 0), 0.0F, 1), 0.0F);
}

TEST(CalculateEffectiveLength, TakesTheLastPairOfAnIdThatIsGivenTwice) {
    const OptimalBorderRectifier rectifier(labels("1 1 1 9 2 2 9 3 3"), labels(". . . 1 . . 1 . ."),
                                           {{Edge(1, 2), 1}, {Edge(2, 3), 1}});
    // Room 1 stops the walk, room 3 does not: from 3 to 8. With 1 and 2 it would be from 0 to 6.
    EXPECT_EQ(rectifier.calculateEffectiveLength(cv::Point2f(6, 0), 0.0F, 1), 5.0F);
}

// processOptimalRectification

TEST(ProcessOptimalRectification, FindsTheBestCutAndTellsHow) {
    // The line has its middle at column 7, row 5. Steps that stay inside: at most 6.5 columns and
    // 4.5 rows from there, so that 10° and 20° are as long as 0°, 80° and 70° as 90°, and so on.
    OptimalBorderRectifier rectifier = ::vorund::test::rectifier(twoRooms(6, 4));
    const PlainCapture printed;
    const Lines lines = rectifier.processOptimalRectification();
    EXPECT_EQ(printed.text(),
              "\n=== 开始优化边界重整分析 ===\n"
              "\n处理边界 1\n"
              "  中心点: (7, 5)\n"
              "  搜索最优角度...\n"
              "  ✓ 最优角度: 90°\n"
              "    有效长度: 8 像素\n"
              "    方向权重: 1.5\n"
              "    总得分: 5.33333\n"
              "  详细得分信息（每10度）:\n"
              "    角度 0°: 原长=12, 惩罚=1.5, 调整长度=8\n"
              "    角度 10°: 原长=12, 惩罚=1, 调整长度=12\n"
              "    角度 20°: 原长=12, 惩罚=1, 调整长度=12\n"
              "    角度 30°: 原长=14, 惩罚=1, 调整长度=14\n"
              "    角度 40°: 原长=14, 惩罚=1, 调整长度=14\n"
              "    角度 50°: 原长=10, 惩罚=1, 调整长度=10\n"
              "    角度 60°: 原长=10, 惩罚=1, 调整长度=10\n"
              "    角度 70°: 原长=8, 惩罚=1, 调整长度=8\n"
              "    角度 80°: 原长=8, 惩罚=1, 调整长度=8\n"
              "    角度 90°: 原长=8, 惩罚=1.5, 调整长度=5.33333\n"
              "    角度 100°: 原长=8, 惩罚=1, 调整长度=8\n"
              "    角度 110°: 原长=8, 惩罚=1, 调整长度=8\n"
              "    角度 120°: 原长=10, 惩罚=1, 调整长度=10\n"
              "    角度 130°: 原长=10, 惩罚=1, 调整长度=10\n"
              "    角度 140°: 原长=14, 惩罚=1, 调整长度=14\n"
              "    角度 150°: 原长=14, 惩罚=1, 调整长度=14\n"
              "    角度 160°: 原长=12, 惩罚=1, 调整长度=12\n"
              "    角度 170°: 原长=12, 惩罚=1, 调整长度=12\n"
              "成功重整 1 条边界\n"
              "\n=== 优化边界重整完成 ===\n");
    ASSERT_EQ(lines.size(), 1U);
    const OptimalLine& best = lines.at(1);
    EXPECT_EQ(best.center, cv::Point2f(7, 5));
    EXPECT_TRUE(isNear(best.start, cv::Point2f(7, 9)));
    EXPECT_TRUE(isNear(best.end, cv::Point2f(7, 1)));
    EXPECT_EQ(best.angle, 90.0F);
    EXPECT_FLOAT_EQ(best.effective_length, 8.0F);
    EXPECT_EQ(best.direction_weight, 1.5F);
    EXPECT_FLOAT_EQ(best.score, 8.0F / 1.5F);
}

TEST(ProcessOptimalRectification, TakesTheSmallerAngleAmongEqualScores) {
    const Lines lines = quietLines(rectifier(twoRooms(4, 4)));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines.at(1).angle, 0.0F);
    EXPECT_EQ(lines.at(1).direction_weight, 1.5F);
    EXPECT_EQ(lines.at(1).start, cv::Point2f(9, 5));
    EXPECT_EQ(lines.at(1).end, cv::Point2f(1, 5));
}

TEST(ProcessOptimalRectification, TakesASlantingCutThatIsMoreThanAThirdShorter) {
    const Lines lines = quietLines(rectifier(diagonalBand()));
    ASSERT_EQ(lines.size(), 1U);
    // Straight up or along it is 10 pixels, that is 6.7 after the division. At 130° and 140° row
    // and column differ by 1.4 more with each step, so that the fourth leaves the band: 6 pixels.
    EXPECT_FLOAT_EQ(lines.at(1).effective_length, 6.0F);
    EXPECT_EQ(lines.at(1).direction_weight, 1.0F);
}

TEST(ProcessOptimalRectification, SkipsBordersOfOneOrTwoPixels) {
    for (const auto& [grid, count] : std::vector<std::pair<std::string, std::string>>{
             {"1 1 1 9 2 2 2", "1"}, {"1 1 1 9 2 2 2\n1 1 1 9 2 2 2", "2"}}) {
        EXPECT_EQ(printedBy(rectifier(labels(grid))),
                  "\n=== 开始优化边界重整分析 ===\n"
                  "\n处理边界 1\n"
                  "  跳过：边界像素点不足(" +
                      count +
                      ")\n"
                      "成功重整 0 条边界\n"
                      "\n=== 优化边界重整完成 ===\n");
        EXPECT_THAT(quietLines(rectifier(labels(grid))), IsEmpty());
    }
}

TEST(ProcessOptimalRectification, TakesABorderOfThreePixels) {
    const Lines lines =
        quietLines(rectifier(labels("1 1 1 9 2 2 2\n"
                                    "1 1 1 9 2 2 2\n"
                                    "1 1 1 9 2 2 2")));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines.at(1).angle, 0.0F);
    EXPECT_EQ(lines.at(1).effective_length, 6.0F);
    EXPECT_EQ(lines.at(1).score, 4.0F);
}

TEST(ProcessOptimalRectification, SkipsABorderWithoutPixelsInTheImage) {
    const cv::Mat segments = twoRooms(6, 4);
    OptimalBorderRectifier rectifier(segments, cv::Mat::zeros(segments.size(), CV_8UC1),
                                     {{Edge(1, 2), 300}});
    EXPECT_THAT(printedBy(rectifier), HasSubstr("\n处理边界 300\n  跳过：边界像素点不足(0)\n"));
}

TEST(ProcessOptimalRectification, FindsNoCutWhereAllAreShorterThanFivePixels) {
    // Two steps to either side at most: 4 pixels.
    EXPECT_EQ(printedBy(rectifier(twoRooms(2, 1))),
              "\n=== 开始优化边界重整分析 ===\n"
              "\n处理边界 1\n"
              "  中心点: (3, 2)\n"
              "  搜索最优角度...\n"
              "  ✗ 未找到有效的重整方案\n"
              "成功重整 0 条边界\n"
              "\n=== 优化边界重整完成 ===\n");
    EXPECT_THAT(quietLines(rectifier(twoRooms(2, 1))), IsEmpty());
}

TEST(ProcessOptimalRectification, LeavesOutOnlyTheCutsThatAreTooShort) {
    // Two rows to either side: upright cuts have 4 pixels.
    const std::string printed = printedBy(rectifier(twoRooms(4, 2)));
    EXPECT_THAT(printed, HasSubstr("    角度 0°: 原长=8, 惩罚=1.5, 调整长度=5.33333\n"));
    EXPECT_THAT(printed, Not(HasSubstr("    角度 90°")));
    EXPECT_THAT(printed, HasSubstr("  ✓ 最优角度: 0°\n"));
}

TEST(ProcessOptimalRectification, FindsNoCutFromACentreInAThirdRoom) {
    // The border runs around three sides of room 3.
    cv::Mat segments(21, 21, CV_8UC1, cv::Scalar(1));
    segments(cv::Rect(4, 4, 13, 13)).setTo(9);
    segments(cv::Rect(5, 5, 11, 11)).setTo(2);
    segments(cv::Rect(6, 6, 9, 9)).setTo(3);
    const auto found = GraphProcessor::extractCommonBorders(segments, 9);
    const OptimalBorderRectifier rectifier(segments, found.borders_map, found.border_ids);
    EXPECT_THAT(printedBy(rectifier), HasSubstr("  中心点: (10, 10)\n"
                                                "  搜索最优角度...\n"
                                                "  ✗ 未找到有效的重整方案\n"
                                                "成功重整 0 条边界\n"));
}

TEST(ProcessOptimalRectification, PrintsACentreWithItsFraction) {
    // Four rows: the middle is at 2.5.
    cv::Mat segments = cv::Mat::zeros(6, 9, CV_8UC1);
    cv::Mat inside = segments(cv::Rect(1, 1, 7, 4));
    inside.setTo(1);
    inside.colRange(4, 7).setTo(2);
    inside.col(3).setTo(9);
    EXPECT_THAT(printedBy(rectifier(segments)), HasSubstr("\n  中心点: (4, 2.5)\n"));
}

TEST(ProcessOptimalRectification, GoesThroughTheBordersByIdAndOnAfterASkippedOne) {
    const cv::Mat segments = labels(
        "1 9 5 5 5 5 5\n"
        "9 9 5 5 5 5 5\n"
        "5 5 5 5 5 5 5\n"
        "9 9 9 9 9 9 9\n"
        "3 3 3 3 3 3 3\n"
        "3 3 3 3 3 3 3");
    // {1, 5} comes before {3, 5}, but has the greater id.
    cv::Mat borders = cv::Mat::zeros(segments.size(), CV_8UC1);
    borders.row(3).setTo(2);
    borders.at<uchar>(0, 1) = 7;
    const OptimalBorderRectifier rectifier(segments, borders, {{Edge(1, 5), 7}, {Edge(3, 5), 2}});
    const std::string printed = printedBy(rectifier);
    EXPECT_LT(printed.find("处理边界 2\n"), printed.find("处理边界 7\n"));
    EXPECT_THAT(printed, HasSubstr("\n处理边界 7\n  跳过：边界像素点不足(1)\n成功重整 1 条边界\n"));
    const Lines lines = quietLines(rectifier);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines.begin()->first, 2);
}

TEST(ProcessOptimalRectification, PrintsOnlyItsFrameWithoutBorders) {
    EXPECT_EQ(printedBy(withoutBorders(labels("1 1"))),
              "\n=== 开始优化边界重整分析 ===\n"
              "成功重整 0 条边界\n"
              "\n=== 优化边界重整完成 ===\n");
}

// processOptimalBorderRectification

TEST(ProcessOptimalBorderRectification, PrintsTheSearchAndTheStatistics) {
    // The line between 1 and 2 is cut at 90° as above; that between 2 and 3 in the other direction.
    cv::Mat segments = cv::Mat::zeros(11, 30, CV_8UC1);
    twoRooms(6, 4).copyTo(segments(cv::Rect(0, 0, 15, 11)));
    cv::Mat other = twoRooms(4, 4);
    other.setTo(3, other == 1);
    other.setTo(4, other == 2);
    other.copyTo(segments(cv::Rect(16, 0, 11, 11)));

    const auto found = GraphProcessor::extractCommonBorders(segments, 9);
    ASSERT_EQ(found.border_ids.size(), 2U);
    const PlainCapture printed;
    const auto [picture, lines] = GraphProcessor::processOptimalBorderRectification(
        found.borders_map, found.border_ids, segments, "any");
    const std::string text = printed.text();
    EXPECT_EQ(text.rfind("开始优化边界重整处理...\n"
                         "\n=== 开始优化边界重整分析 ===\n"
                         "\n处理边界 1\n"
                         "  中心点: (7, 5)\n",
                         0),
              0U)
        << text;
    const std::string end =
        "成功重整 2 条边界\n"
        "\n=== 优化边界重整完成 ===\n"
        "\n优化边界重整统计:\n"
        "边界 1: 角度 90, 长度 8, 权重 1.5, 得分 5.33333\n"
        "边界 2: 角度 0, 长度 8, 权重 1.5, 得分 5.33333\n"
        "\n方向分布:\n"
        "水平/垂直对齐: 2 条\n"
        "接近水平/垂直: 0 条\n"
        "其他角度: 0 条\n"
        "\n平均统计:\n"
        "  平均有效长度: 8\n"
        "  平均方向权重: 1.5\n"
        "优化边界重整处理完成！\n";
    EXPECT_THAT(text, ::testing::EndsWith(end));
    EXPECT_EQ(lines.size(), 2U);
    EXPECT_EQ(picture.type(), CV_8UC3);
    EXPECT_EQ(picture.size(), segments.size());
}

TEST(ProcessOptimalBorderRectification, CountsASlantingCutAsAligned) {
    const cv::Mat segments = diagonalBand();
    const auto found = GraphProcessor::extractCommonBorders(segments, 9);
    const PlainCapture printed;
    GraphProcessor::processOptimalBorderRectification(found.borders_map, found.border_ids, segments,
                                                      "");
    EXPECT_THAT(printed.text(), HasSubstr("长度 6, 权重 1, 得分 6\n"
                                          "\n方向分布:\n"
                                          "水平/垂直对齐: 1 条\n"
                                          "接近水平/垂直: 0 条\n"
                                          "其他角度: 0 条\n"
                                          "\n平均统计:\n"
                                          "  平均有效长度: 6\n"
                                          "  平均方向权重: 1\n"));
}

TEST(ProcessOptimalBorderRectification, GivesMeansOfZeroWithoutLines) {
    const cv::Mat segments = labels("1 9 2");
    const auto found = GraphProcessor::extractCommonBorders(segments, 9);
    const PlainCapture printed;
    const auto result = GraphProcessor::processOptimalBorderRectification(
        found.borders_map, found.border_ids, segments, "");
    EXPECT_THAT(result.second, IsEmpty());
    EXPECT_THAT(printed.text(), HasSubstr("成功重整 0 条边界\n"
                                          "\n=== 优化边界重整完成 ===\n"
                                          "\n优化边界重整统计:\n"
                                          "\n方向分布:\n"
                                          "水平/垂直对齐: 0 条\n"
                                          "接近水平/垂直: 0 条\n"
                                          "其他角度: 0 条\n"));
    EXPECT_THAT(printed.text(), ::testing::EndsWith("\n平均统计:\n"
                                                    "  平均有效长度: 0\n"
                                                    "  平均方向权重: 0\n"
                                                    "优化边界重整处理完成！\n"));
}

TEST(ProcessOptimalBorderRectification, ReturnsThePictureAndLinesOfTheRectifier) {
    RandomImages random(51);
    const cv::Mat segments = roomImage(random, cv::Size(60, 50), 12);
    const auto [picture, lines] = quietRectification(segments, 255);
    const OptimalBorderRectifier rectifier = ::vorund::test::rectifier(segments, 255);
    const Lines expected = quietLines(rectifier);
    ASSERT_EQ(lines.size(), expected.size());
    ASSERT_FALSE(lines.empty());
    for (const auto& [id, line] : expected) EXPECT_TRUE(sameLine(lines.at(id), line)) << id;
    EXPECT_THAT(picture, MatEq(rectifier.visualizeOptimalResults(expected)));
}

TEST(ProcessOptimalBorderRectification, DoesNotUseItsName) {
    const cv::Mat segments = twoRooms(6, 4);
    EXPECT_THAT(quietRectification(segments, 9, "one").first,
                MatEq(quietRectification(segments, 9, "../another.png").first));
}

TEST(ProcessOptimalBorderRectification, LeavesItsInputsAloneAndReadsViews) {
    const cv::Mat segments = twoRooms(6, 4);
    const auto found = GraphProcessor::extractCommonBorders(segments, 9);
    const cv::Mat view = asView(segments);
    const cv::Mat borders = asView(found.borders_map);
    const PlainCapture printed;
    const auto [picture, lines] =
        GraphProcessor::processOptimalBorderRectification(borders, found.border_ids, view, "");
    EXPECT_THAT(view, MatEq(segments));
    EXPECT_THAT(borders, MatEq(found.borders_map));
    const auto expected = quietRectification(segments);
    EXPECT_THAT(picture, MatEq(expected.first));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(sameLine(lines.at(1), expected.second.at(1)));
}

TEST(ProcessOptimalBorderRectification, PassesOnThatTheRoomsCannotBeShown) {
    const PlainCapture printed;
    EXPECT_THAT(
        [] { GraphProcessor::processOptimalBorderRectification(cv::Mat(), {}, cv::Mat(), ""); },
        ::testing::ThrowsMessage<std::runtime_error>(
            "visualizeSegments: Input must be a non-empty CV_32S or CV_8UC1 image"));
}

// visualizeOptimalResults

TEST(VisualizeOptimalResults, DrawsBordersCutsAndCentresOverTheRooms) {
    // Large enough that the legend leaves the middle free.
    const cv::Mat segments = twoRooms(300, 300);
    const OptimalBorderRectifier rectifier = ::vorund::test::rectifier(segments);
    const cv::Mat picture =
        rectifier.visualizeOptimalResults({{1, line({200, 400}, {400, 400}, 1.5F)}});
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), segments.size());
    EXPECT_EQ(picture.at<cv::Vec3b>(500, 301), kRed);
    EXPECT_EQ(picture.at<cv::Vec3b>(400, 220), kGreen);
    EXPECT_EQ(picture.at<cv::Vec3b>(400, 380), kGreen);
    EXPECT_EQ(picture.at<cv::Vec3b>(400, 300), kWhite);
    const cv::Mat rooms = GraphProcessor::visualizeSegments(segments, -1);
    EXPECT_EQ(picture.at<cv::Vec3b>(550, 100), rooms.at<cv::Vec3b>(550, 100));
    EXPECT_EQ(picture.at<cv::Vec3b>(550, 500), rooms.at<cv::Vec3b>(550, 500));
}

TEST(VisualizeOptimalResults, ColoursCutsByTheirWeights) {
    const OptimalBorderRectifier rectifier = withoutBorders(twoRooms(300, 300));
    const cv::Mat picture =
        rectifier.visualizeOptimalResults({{1, line({100, 400}, {500, 400}, 0.9F)},
                                           {2, line({100, 430}, {500, 430}, 0.89F)},
                                           {3, line({100, 460}, {500, 460}, 0.7F)},
                                           {4, line({100, 490}, {500, 490}, 0.69F)},
                                           {5, line({100, 520}, {500, 520}, 1.0F)}});
    EXPECT_EQ(picture.at<cv::Vec3b>(400, 150), kGreen);
    EXPECT_EQ(picture.at<cv::Vec3b>(430, 150), kYellow);
    EXPECT_EQ(picture.at<cv::Vec3b>(460, 150), kYellow);
    EXPECT_EQ(picture.at<cv::Vec3b>(520, 150), kGreen);
    const cv::Vec3b orange = picture.at<cv::Vec3b>(490, 150);
    EXPECT_EQ(orange[0], 0);
    EXPECT_GT(orange[1], 100);
    EXPECT_LT(orange[1], 200);
    EXPECT_EQ(orange[2], 255);
}

TEST(VisualizeOptimalResults, DrawsALegend) {
    const cv::Mat segments(400, 400, CV_8UC1, cv::Scalar(9));
    const OptimalBorderRectifier rectifier = withoutBorders(segments);
    const cv::Mat picture = rectifier.visualizeOptimalResults({});
    // All lines, hence black: what is not comes from the legend.
    const int texts = 5;
    EXPECT_GT(countColour(picture, kRed), 50);
    EXPECT_GT(countColour(picture, kGreen), 50);
    EXPECT_GT(countColour(picture, kYellow), 50);
    EXPECT_GT(cv::countNonZero(picture.reshape(1)), texts * 50);
}

TEST(VisualizeOptimalResults, DrawsNothingButTheLegendAboveTheRoomsWithoutResults) {
    const cv::Mat segments = twoRooms(300, 300);
    const cv::Mat picture = withoutBorders(segments).visualizeOptimalResults({});
    EXPECT_THAT(picture.rowRange(300, 600),
                MatEq(GraphProcessor::visualizeSegments(segments, -1).rowRange(300, 600)));
}

TEST(VisualizeOptimalResults, LeavesItsInputsAlone) {
    const cv::Mat segments = twoRooms(6, 4);
    const auto found = GraphProcessor::extractCommonBorders(segments, 9);
    const cv::Mat borders = found.borders_map.clone();
    const OptimalBorderRectifier rectifier(segments, found.borders_map, found.border_ids);
    rectifier.visualizeOptimalResults(quietLines(rectifier));
    EXPECT_THAT(segments, MatEq(twoRooms(6, 4)));
    EXPECT_THAT(found.borders_map, MatEq(borders));
}

TEST(VisualizeOptimalResults, TakesLinesOutsideTheImageAndASinglePixel) {
    const cv::Mat picture = withoutBorders(labels("4"))
                                .visualizeOptimalResults({{1, line({-1e4F, 5}, {1e4F, 5}, 1.0F)},
                                                          {2, line({50, 50}, {60, 60}, 1.0F)}});
    EXPECT_EQ(picture.size(), cv::Size(1, 1));
    EXPECT_EQ(picture.type(), CV_8UC3);
}

// Agreement with the plain version

TEST(OptimalBorderRectifierAgreement, HoldsOnRoomsAndLines) {
    RandomImages random(52);
    std::size_t found_lines = 0;
    std::set<float> angles;
    for (int i = 0; i < 220; ++i) {
        SCOPED_TRACE(i);
        const cv::Mat image = roomImage(random, random.size(36), 1 + random.below(8));
        const cv::Mat segments = i % 2 == 0 ? image : asView(image);
        const auto found = GraphProcessor::extractCommonBorders(segments, 255);
        const PlainCapture printed;
        const Lines lines = GraphProcessor::processOptimalBorderRectification(
                                found.borders_map, found.border_ids, segments, "")
                                .second;
        EXPECT_EQ(printed.text(),
                  reference::rectificationReport(segments, found.borders_map, found.border_ids));
        const Lines expected =
            reference::optimalLines(segments, found.borders_map, found.border_ids);
        ASSERT_EQ(lines.size(), expected.size());
        for (const auto& [id, line] : expected) {
            ASSERT_EQ(lines.count(id), 1U) << id;
            EXPECT_TRUE(sameLine(lines.at(id), line))
                << text(lines.at(id)) << " instead of " << text(line);
            angles.insert(line.angle);
        }
        found_lines += lines.size();
        if (HasFailure()) return;
    }
    EXPECT_GT(found_lines, 200U) << "the images are too simple to show anything";
    EXPECT_GT(angles.size(), 9U) << "the images are too simple to show anything";
}

TEST(OptimalBorderRectifier, KeepsEachCutInsideItsTwoRooms) {
    RandomImages random(53);
    for (int i = 0; i < 40; ++i) {
        const cv::Mat segments = roomImage(random, random.size(60), 8);
        const auto found = GraphProcessor::extractCommonBorders(segments, 255);
        const OptimalBorderRectifier rectifier(segments, found.borders_map, found.border_ids);
        const Lines lines = quietLines(rectifier);
        for (const auto& [edge, id] : found.border_ids) {
            if (lines.count(id) == 0) continue;
            const OptimalLine& line = lines.at(id);
            EXPECT_TRUE(
                rectifier.isValidSegmentation(line.start, line.end, edge.first, edge.second));
            EXPECT_GE(line.effective_length, 5.0F);
            EXPECT_LE(line.effective_length, 400.1F);
            EXPECT_NEAR(line.score * line.direction_weight, line.effective_length, 1e-3F);
            EXPECT_NEAR(cv::norm(line.start - line.end), line.effective_length, 1e-3);
        }
    }
}

TEST(OptimalBorderRectifier, GivesTheSameOnASecondRun) {
    RandomImages random(54);
    const cv::Mat segments = roomImage(random, cv::Size(60, 50), 12);
    OptimalBorderRectifier rectifier = ::vorund::test::rectifier(segments, 255);
    const std::string printed = printedBy(rectifier);
    EXPECT_EQ(printedBy(rectifier), printed);
    const Lines first = quietLines(rectifier);
    const Lines second = quietLines(rectifier);
    ASSERT_EQ(first.size(), second.size());
    for (const auto& [id, line] : first) EXPECT_TRUE(sameLine(second.at(id), line)) << id;
}

TEST(OptimalBorderRectifier, RefusesImagesOfOtherTypesOrSizes) {
    const cv::Mat bytes = cv::Mat::zeros(4, 4, CV_8UC1);
    const cv::Mat wide = cv::Mat::zeros(4, 4, CV_32SC1);
    const cv::Mat smaller = cv::Mat::zeros(4, 3, CV_8UC1);
    for (const auto& [segments, borders] :
         {std::pair(wide, bytes), {bytes, wide}, {bytes, smaller}, {smaller, bytes}}) {
        EXPECT_THAT([&] { GraphProcessor::OptimalBorderRectifier(segments, borders, {}); },
                    ::testing::ThrowsMessage<std::runtime_error>(
                        "OptimalBorderRectifier: Images must be CV_8UC1 of the same size."));
    }
}

TEST(VisualizeOptimalResults, WritesTheLegend) {
    const cv::Mat segments = cv::Mat(120, 400, CV_8UC1, cv::Scalar(255));  // Black: all line.
    const cv::Mat picture = GraphProcessor::OptimalBorderRectifier(
                                segments, cv::Mat::zeros(segments.size(), CV_8UC1), {})
                                .visualizeOptimalResults({});
    cv::Mat expected = cv::Mat::zeros(segments.size(), CV_8UC3);
    const auto write = [&](const char* text, int baseline, const cv::Scalar& colour) {
        cv::putText(expected, text, cv::Point(10, baseline), cv::FONT_HERSHEY_SIMPLEX, 0.5, colour);
    };
    write("Red: Original borders", 20, {0, 0, 255});
    write("Green: H/V aligned (weight>=0.9)", 40, {0, 255, 0});
    write("Yellow: Near H/V (weight>=0.7)", 60, {0, 255, 255});
    write("Orange: Other angles", 80, {0, 165, 255});
    write("White dots: Center points", 100, {255, 255, 255});
    EXPECT_THAT(picture, test::MatEq(expected));
}

}  // namespace
}  // namespace vorund::test
