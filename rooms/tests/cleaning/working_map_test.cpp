#include "maps/working_map.h"

#include <gmock/gmock.h>

#include <cmath>

#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::MatEq;

/// Parts of a plan. [m]
using Box = cv::Rect2d;

/// A map of 10 m by 8 m with a wall of 0.6 m all around.
class PlanInMetres {
 public:
    explicit PlanInMetres(double resolution) {
        map_.resolution = resolution;
        map_.values = cv::Mat(pixels(8.0), pixels(10.0), CV_32FC1, cv::Scalar(1.0));
        paint({0.6, 0.6, 8.8, 6.8}, 0.0);
    }

    PlanInMetres& paint(const Box& box, double value) {
        pixelsOf(box).setTo(value);
        return *this;
    }
    const GridMap& map() const { return map_; }

 private:
    int pixels(double metres) const {
        return static_cast<int>(std::lround(metres / map_.resolution));
    }
    cv::Mat pixelsOf(const Box& box) const {
        return map_.values(cv::Rect(cv::Point(pixels(box.x), pixels(box.y)),
                                    cv::Point(pixels(box.br().x), pixels(box.br().y))));
    }

    GridMap map_;
};

class WorkingMapAt : public ::testing::TestWithParam<double> {
 protected:
    PlanInMetres bare() const { return PlanInMetres(GetParam()); }
    /// A block, one with a corner to the next, the outline of a desk and a long wall.
    PlanInMetres furnished() const {
        return bare()
            .paint({2.0, 2.0, 0.8, 0.8}, 1.0)
            .paint({2.8, 2.8, 0.4, 0.6}, 0.75)
            .paint({5.0, 2.0, 1.6, 0.8}, 1.0)
            .paint({5.2, 2.2, 1.2, 0.4}, 0.0)
            .paint({4.0, 4.6, 3.0, 0.2}, 1.0);
    }
    PlanInMetres cleared() const { return bare().paint({4.0, 4.6, 3.0, 0.2}, 1.0); }
};

TEST_P(WorkingMapAt, TakesFurnitureOutOfItsOwnValuesToo) {
    const GridMap map = furnished().map();
    const cv::Mat before = map.values.clone();
    const WorkingMap working(map, Settings{});
    EXPECT_THAT(working.ownValues(), MatEq(cleared().map().values));
    EXPECT_THAT(working.floor(), MatEq(WorkingMap(cleared().map()).floor()));
    EXPECT_THAT(map.values, MatEq(before)) << "the map is left as it was";
}

TEST_P(WorkingMapAt, TakesNothingOutIfNotAsked) {
    Settings settings;
    settings.rooms.clear_clutter = false;
    const GridMap map = furnished().map();
    for (const WorkingMap& working : {WorkingMap(map, settings), WorkingMap(map)}) {
        EXPECT_THAT(working.ownValues(), MatEq(map.values));
        EXPECT_THAT(working.floor(),
                    MatEq(WorkingMap(map).resampling().isIdentity()
                              ? cv::Mat(map.values <= 0.5)
                              : cv::Mat(working.resampling().toWorking(map.values) <= 0.5)));
    }
}

TEST_P(WorkingMapAt, ClosesSmallFloorForTheCoreAlone) {
    // A cupboard of 1 m^2 in the thickness of a wall: no room, and yet floor of the map.
    const GridMap map =
        bare().paint({0.6, 0.6, 2.0, 2.0}, 1.0).paint({1.0, 1.0, 1.0, 1.0}, 0.0).map();
    const WorkingMap working(map, Settings{});
    const GridMap closed = bare().paint({0.6, 0.6, 2.0, 2.0}, 1.0).map();
    EXPECT_THAT(working.floor(), MatEq(WorkingMap(closed).floor()));
    if (working.resampling().isIdentity()) return;
    EXPECT_THAT(working.ownValues(), MatEq(map.values));
}

TEST_P(WorkingMapAt, IsAllFloorWhereNothingButFurnitureStood) {
    GridMap map = bare().map();
    map.values.setTo(0.0);
    map.values(cv::Rect(10, 10, 8, 8)) = 1.0;
    EXPECT_TRUE(WorkingMap(map, Settings{}).isAllFloor());
    EXPECT_FALSE(WorkingMap(map).isAllFloor());
}

INSTANTIATE_TEST_SUITE_P(Resolutions, WorkingMapAt, ::testing::Values(0.025, 0.05, 0.1),
                         [](const auto& test) {
                             return std::to_string(std::lround(test.param * 1000.0)) + "mm";
                         });

TEST(WorkingMap, TakesTheCoresThresholdForWall) {
    const GridMap map = PlanInMetres(0.05).paint({2.0, 2.0, 0.8, 0.8}, 0.4).map();
    Settings settings;
    auto& threshold = settings.core.generate_denoised_alone.binary_make_binary.threshold;
    threshold = 0.45;
    EXPECT_THAT(WorkingMap(map, settings).ownValues(), MatEq(map.values)) << "floor";
    EXPECT_EQ(WorkingMap(map, settings).floor().at<std::uint8_t>(50, 50), 255);
    threshold = 0.35;
    EXPECT_THAT(WorkingMap(map, settings).ownValues(), MatEq(PlanInMetres(0.05).map().values));
    settings.rooms.clear_clutter = false;
    EXPECT_EQ(WorkingMap(map, settings).floor().at<std::uint8_t>(50, 50), 0);
}

/// A single room in a wall of 0.2 m.
GridMap cell(double side) {
    GridMap map;
    const int pixels = static_cast<int>(std::lround(side / map.resolution));
    map.values = cv::Mat(pixels, pixels, CV_32FC1, cv::Scalar(1.0));
    map.values(cv::Rect(4, 4, pixels - 8, pixels - 8)).setTo(0.0);
    return map;
}

TEST(WorkingMap, KeepsTheOnlyRoomHoweverSmall) {
    for (const double side : {1.2, 2.0, 2.3, 2.4, 2.5, 3.0}) {
        const GridMap map = cell(side);
        const WorkingMap working(map, Settings{});
        EXPECT_FALSE(working.isAllFloor()) << side;
        EXPECT_THAT(working.ownValues(), MatEq(map.values)) << side;
    }
}

TEST(WorkingMap, KeepsTheWallAroundASmallMapWithFurniture) {
    GridMap map = cell(2.0);
    map.values(cv::Rect(10, 10, 8, 8)) = 1.0;
    EXPECT_THAT(WorkingMap(map, Settings{}).ownValues(), MatEq(cell(2.0).values));
}

TEST(WorkingMap, KeepsTheOnlyRoomInAThickWall) {
    GridMap map = PlanInMetres(0.05).paint({0.0, 0.0, 10.0, 8.0}, 1.0).map();
    map.values(cv::Rect(60, 60, 30, 30)) = 0.0;
    EXPECT_THAT(WorkingMap(map, Settings{}).ownValues(), MatEq(map.values)) << "2.25 m^2";
}

TEST(WorkingMap, TakesNoRimForFloorAtTheEdgeThatIsClosed) {
    const GridMap bare = PlanInMetres(0.05).map();
    const GridMap map = PlanInMetres(0.05).paint({0.0, 3.0, 0.3, 0.6}, 0.0).map();
    EXPECT_THAT(WorkingMap(map).framed().own, cv::Rect(8, 8, 200, 160));
    EXPECT_THAT(WorkingMap(map, Settings{}).framed().own, cv::Rect(0, 0, 200, 160));
    EXPECT_THAT(WorkingMap(map, Settings{}).framed().values, MatEq(bare.values));
}

}  // namespace
}  // namespace vorund::rooms
