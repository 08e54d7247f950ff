#include "cleaning/clutter.h"

#include <gmock/gmock.h>

#include "drawn_floor.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::MatEq;

constexpr double kThreshold = 0.5;

cv::Mat cleaned(const cv::Mat& values, const RoomsConfig& config = {}) {
    return withoutClutter(values, kThreshold, config);
}

/// Whether all that was drawn into the room is gone, and nothing else.
bool isEmptied(const DrawnFloor& drawn, const RoomsConfig& config = {}) {
    return cv::norm(cleaned(drawn.values(), config), DrawnFloor().values(), cv::NORM_L1) == 0.0;
}

bool isLeft(const DrawnFloor& drawn, const RoomsConfig& config = {}) {
    return cv::norm(cleaned(drawn.values(), config), drawn.values(), cv::NORM_L1) == 0.0;
}

/// A cross of bars two pixels thick.
DrawnFloor cross(const cv::Size& size) {
    const cv::Point corner = DrawnFloor::middle() - cv::Point(size / 2);
    return DrawnFloor()
        .wall({corner.x, corner.y + size.height / 2, size.width, 2})
        .wall({corner.x + size.width / 2, corner.y, 2, size.height});
}

DrawnFloor block(const cv::Size& size) {
    return DrawnFloor().wall({DrawnFloor::middle() - cv::Point(size / 2), size});
}

TEST(WithoutClutter, TakesOutWhatIsAtMostAsLargeAsALoosePart) {
    EXPECT_TRUE(isEmptied(cross({40, 40}))) << "2 m";
    EXPECT_TRUE(isEmptied(cross({40, 10})));
    EXPECT_TRUE(isLeft(cross({41, 10})));
    EXPECT_TRUE(isLeft(cross({10, 41})));
    RoomsConfig config;
    config.loose_part = 0.3;
    EXPECT_TRUE(isEmptied(cross({6, 6}), config));
    EXPECT_TRUE(isLeft(cross({7, 6}), config));
}

TEST(WithoutClutter, TakesOutThickBlocksUpToALargerSize) {
    EXPECT_TRUE(isEmptied(block({50, 50}))) << "2.5 m";
    EXPECT_TRUE(isEmptied(block({50, 10}))) << "0.5 m thick";
    EXPECT_TRUE(isEmptied(block({10, 50})));
    EXPECT_TRUE(isLeft(block({50, 9})));
    EXPECT_TRUE(isLeft(block({9, 50})));
    EXPECT_TRUE(isLeft(block({51, 30})));
    EXPECT_TRUE(isLeft(block({30, 51})));
}

TEST(WithoutClutter, TakesAPartForABlockThatIsThickSomewhere) {
    const auto withBar = [](int thick) {
        return cross({50, 50}).wall({DrawnFloor::middle().x, DrawnFloor::middle().y, thick, 10});
    };
    EXPECT_TRUE(isEmptied(withBar(10)));
    // The cross's own bars, two pixels thick, start where this one does.
    EXPECT_TRUE(isLeft(withBar(9)));
}

TEST(WithoutClutter, TakesABlockWithinAnOutlineForItsOwn) {
    // The outline, 2.2 m, is thin whatever stands in it.
    RoomsConfig config;
    config.closed_floor = 0.0;
    const auto outline = DrawnFloor().outline({150, 150, 40, 40});
    EXPECT_TRUE(isLeft(outline, config));
    EXPECT_THAT(cleaned(DrawnFloor(outline).wall({160, 160, 20, 20}).values(), config),
                MatEq(outline.values()));
}

TEST(WithoutClutter, KeepsWhatIsJoinedToAWall) {
    EXPECT_TRUE(isLeft(DrawnFloor().wall({100, 150, 20, 20}))) << "along a side";
    EXPECT_TRUE(isLeft(DrawnFloor().wall({100, 150, 12, 12}).wall({112, 162, 12, 12})))
        << "by a corner, one of them";
    EXPECT_TRUE(isEmptied(DrawnFloor().wall({101, 150, 20, 20}))) << "one pixel off";
}

TEST(WithoutClutter, TakesPartsThatTouchByACornerForOne) {
    EXPECT_TRUE(isEmptied(DrawnFloor().wall({150, 150, 25, 25}).wall({175, 175, 25, 25})));
    EXPECT_TRUE(isLeft(DrawnFloor().wall({150, 150, 26, 25}).wall({176, 175, 25, 25})))
        << "2.55 m together";
    EXPECT_TRUE(isEmptied(DrawnFloor().wall({150, 150, 26, 25}).wall({177, 175, 25, 25})))
        << "a pixel apart";
}

TEST(WithoutClutter, TakesOutLoosePartsAtTheEdgeOfTheMap) {
    cv::Mat values = cv::Mat::zeros(120, 140, CV_32FC1);
    values(cv::Rect(0, 30, 10, 10)) = 1.0;
    values(cv::Rect(130, 0, 10, 10)) = 1.0;
    values(cv::Rect(60, 119, 30, 1)) = 1.0;
    EXPECT_THAT(cleaned(values), MatEq(cv::Mat::zeros(120, 140, CV_32FC1)));
}

TEST(WithoutClutter, ClosesSmallFloorThatWallsEnclose) {
    // Behind a wall that goes on, so that it stays.
    const auto cupboard = [](int width) {
        return DrawnFloor().wall({100, 100, 50, 50}).floor({104, 104, width, 40});
    };
    const auto closed = DrawnFloor().wall({100, 100, 50, 50});
    EXPECT_THAT(cleaned(cupboard(39).values()), MatEq(closed.values())) << "3.9 m^2";
    EXPECT_TRUE(isLeft(cupboard(40))) << "4 m^2";
    EXPECT_THAT(cleaned(cupboard(40).wall({104, 104, 1, 1}).values()), MatEq(closed.values()))
        << "a pixel less";
    RoomsConfig config;
    config.closed_floor = 1.0;
    const auto locker = [](int height) {
        return DrawnFloor().wall({100, 100, 50, 50}).floor({104, 104, 20, height});
    };
    EXPECT_TRUE(isLeft(locker(20), config)) << "1 m^2";
    EXPECT_THAT(cleaned(locker(19).values(), config), MatEq(closed.values()));
}

TEST(WithoutClutter, ClosesFloorThatIsEnclosedButForCorners) {
    // The cupboard touches the room by a corner alone.
    const auto drawn = DrawnFloor().wall({100, 100, 50, 50}).floor({120, 120, 30, 29});
    EXPECT_TRUE(isLeft(drawn)) << "open to the room";
    const auto enclosed = DrawnFloor()
                              .wall({100, 100, 50, 50})
                              .floor({120, 120, 30, 30})
                              .wall({149, 120, 1, 29})
                              .wall({120, 149, 29, 1});
    EXPECT_THAT(cleaned(enclosed.values()),
                MatEq(DrawnFloor().wall({100, 100, 50, 50}).floor({149, 149, 1, 1}).values()));
}

TEST(WithoutClutter, ClosesFloorBetweenWallsAndTheEdgeOfTheMap) {
    cv::Mat values(100, 100, CV_32FC1, cv::Scalar(1.0));
    values(cv::Rect(0, 0, 30, 30)) = 0.0;
    values(cv::Rect(40, 40, 50, 50)) = 0.0;
    cv::Mat expected = values.clone();
    expected(cv::Rect(0, 0, 30, 30)) = 1.0;
    EXPECT_THAT(cleaned(values), MatEq(expected));
}

TEST(WithoutClutter, TakesOutTheOutlineOfADeskWithItsFloor) {
    EXPECT_TRUE(isEmptied(DrawnFloor().outline({150, 150, 28, 14})));
    // Closed it is a block of 2.2 m; open, with 4 m^2 of floor, a thin wall of that size.
    EXPECT_TRUE(isEmptied(DrawnFloor().outline({150, 150, 40, 39})));
    EXPECT_TRUE(isLeft(DrawnFloor().outline({150, 150, 40, 40})));
    // Too large to go, but too small for a room.
    EXPECT_THAT(cleaned(DrawnFloor().outline({150, 150, 50, 20}).values()),
                MatEq(DrawnFloor().wall({148, 148, 54, 24}).values()));
}

TEST(WithoutClutter, TakesOutWhatStandsWithinAnotherOutline) {
    // A table in a room of its own.
    const auto cabin = DrawnFloor().outline({140, 140, 60, 60});
    EXPECT_THAT(cleaned(DrawnFloor(cabin).wall({160, 160, 20, 20}).values()),
                MatEq(cabin.values()));
}

class BrokenWall : public ::testing::TestWithParam<int> {};

/// The value of the piece in the middle, 0 if it was taken out.
float middleOf(const cv::Mat& broken, const RoomsConfig& config = {}) {
    EXPECT_EQ(broken.at<float>(DrawnFloor::middle()), 1.0F);
    return cleaned(broken, config).at<float>(DrawnFloor::middle());
}

TEST_P(BrokenWall, KeepsItsPieces) {
    // Four fifths of it are there.
    for (const double thickness : {1.5, 2.0, 4.0}) {
        const cv::Mat broken = brokenWall(GetParam(), thickness, 24.0, 6.0);
        EXPECT_THAT(cleaned(broken), MatEq(broken)) << thickness;
    }
}

TEST_P(BrokenWall, LosesPiecesWithTooMuchBetweenThem) {
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 3.0, 20.0, 30.0)), 0.0F) << "two fifths of it";
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 3.0, 36.0, 500.0)), 0.0F) << "one piece";
    RoomsConfig config;
    config.wall_line = 0.3;
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 3.0, 20.0, 30.0), config), 1.0F);
    config.wall_line = 0.4;
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 3.0, 36.0, 500.0), config), 0.0F);
}

TEST_P(BrokenWall, KeepsWhatIsLeftBetweenTwoDoors) {
    // Doors of 1 m on both sides of a piece of 1 m: half of the line is wall.
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 3.0, 20.0, 20.0)), 1.0F);
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 8.0, 20.0, 20.0)), 0.0F) << "too thick for a board";
}

TEST_P(BrokenWall, LosesPiecesWithoutADirection) {
    EXPECT_EQ(middleOf(brokenWall(GetParam(), 18.0, 24.0, 6.0)), 0.0F);
}

INSTANTIATE_TEST_SUITE_P(Degrees, BrokenWall,
                         ::testing::Values(0, 8, 17, 30, 45, 60, 73, 90, 107, 135, 171));

TEST(WithoutClutter, TakesOutSpecksAlongAWall) {
    // Beams of 0.25 m and 0.3 m in the gaps of a wall that is there else.
    const auto beam = [](int length) {
        return DrawnFloor()
            .wall({100, 179, 95, 2})
            .wall({205, 179, 95, 2})
            .wall({198, 179, length, 2});
    };
    const auto gap = DrawnFloor().wall({100, 179, 95, 2}).wall({205, 179, 95, 2});
    EXPECT_THAT(cleaned(beam(5).values()), MatEq(gap.values()));
    EXPECT_TRUE(isLeft(beam(6)));
}

TEST(WithoutClutter, TakesNothingOutWhereItsLimitsAreZero) {
    RoomsConfig config;
    config.loose_part = 0.0;
    config.loose_block = 0.0;
    config.closed_floor = 0.0;
    EXPECT_TRUE(isLeft(block({30, 30}), config));
    EXPECT_TRUE(isLeft(block({1, 1}), config));
    EXPECT_TRUE(isLeft(DrawnFloor().outline({150, 150, 28, 14}), config));
    config.closed_floor = 4.0;
    EXPECT_THAT(cleaned(DrawnFloor().outline({150, 150, 28, 14}).values(), config),
                MatEq(DrawnFloor().wall({148, 148, 32, 18}).values()))
        << "closed but left";
}

TEST(WithoutClutter, KeepsAllOtherValues) {
    test::RandomImages random(3);
    // Floor below the threshold, a frame above it.
    cv::Mat values = random.floats({120, 100}, 11) * 0.5;
    cv::Mat frame(values.size(), CV_8UC1, cv::Scalar(255));
    frame(cv::Rect(20, 20, 80, 60)) = 0;
    cv::add(values, 0.51, values, frame);
    cv::min(values, 1.0, values);
    cv::Mat with_part = values.clone();
    with_part(cv::Rect(40, 40, 20, 10)) = 0.75;
    cv::Mat expected = values.clone();
    expected(cv::Rect(40, 40, 20, 10)) = 0.0;
    EXPECT_THAT(cleaned(with_part), MatEq(expected));
}

TEST(WithoutClutter, TakesValuesAboveTheThresholdForWall) {
    cv::Mat values = DrawnFloor().values().clone();
    values(cv::Rect(150, 150, 20, 20)) = 0.3;
    EXPECT_THAT(withoutClutter(values, 0.3F, {}), MatEq(values)) << "floor";
    EXPECT_THAT(withoutClutter(values, 0.25, {}), MatEq(DrawnFloor().values()));
}

TEST(WithoutClutter, LeavesItsInputAndTakesViews) {
    const DrawnFloor drawn = block({30, 30});
    const cv::Mat before = drawn.values().clone();
    EXPECT_THAT(cleaned(test::asView(drawn.values())), MatEq(DrawnFloor().values()));
    EXPECT_TRUE(isEmptied(drawn));
    EXPECT_THAT(drawn.values(), MatEq(before));
}

}  // namespace
}  // namespace vorund::rooms
