// What stands free in rooms makes no difference to them.

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "flow/flow_run.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"
#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using test::MatEq;
using ::testing::SizeIs;

class FurnishedPlans : public FindRooms, public ::testing::WithParamInterface<int> {};

test::PlanOptions optionsOf(int seed) {
    test::PlanOptions options;
    options.seed = static_cast<std::uint64_t>(seed);
    options.width_mm = 11000;
    options.height_mm = 9000;
    options.rotation_tenths_deg = seed % 3 == 0 ? 250 : 0;
    return options;
}

/// Blocks, outlines and specks up to 2 m, none of them drawn out, so that none continues a wall, at
/// least two pixels from all that is no floor and from each other.
int furnish(cv::Mat& walls, std::uint32_t seed) {
    test::RandomImages random(seed);
    int count = 0;
    for (int attempt = 0; attempt < 300; ++attempt) {
        const int side = 2 + random.below(39);
        const cv::Size size(side, side - random.below(side / 4 + 1));
        const cv::Point corner(3 + random.below(walls.cols - size.width - 6),
                               3 + random.below(walls.rows - size.height - 6));
        const cv::Mat around = walls(cv::Rect(corner - cv::Point(2, 2), size + cv::Size(4, 4)));
        if (cv::countNonZero(around) > 0) continue;
        walls(cv::Rect(corner, size)) = 255;
        const bool is_outline = random.below(2) == 0 && size.height > 8;
        if (is_outline) {
            walls(cv::Rect(corner + cv::Point(2, 2), size - cv::Size(4, 4))) = 0;
        }
        ++count;
    }
    return count;
}

TEST_P(FurnishedPlans, HaveTheRoomsOfBareOnes) {
    const cv::Mat bare = test::makePlan(optionsOf(GetParam())).map != test::kMapFree;
    cv::Mat furnished = bare.clone();
    ASSERT_GE(furnish(furnished, static_cast<std::uint32_t>(GetParam())), 5);
    const Rooms expected = find(mapOf(bare));
    const Rooms rooms = find(mapOf(furnished));
    EXPECT_GE(expected.rooms.size(), 2U);
    EXPECT_THAT(rooms.rooms, SizeIs(expected.rooms.size()));
    EXPECT_THAT(rooms.labels, MatEq(expected.labels));
    EXPECT_THAT(rooms.lines, MatEq(expected.lines));
}

INSTANTIATE_TEST_SUITE_P(Seeds, FurnishedPlans, ::testing::Range(1, 9));

/// Two rooms of 4 m by 4 m, a door of 0.8 m, in the left room a table and the outline of a desk.
struct Flat {
    explicit Flat(double resolution) : pixels_per_metre(std::lround(1.0 / resolution)) {
        walls = cv::Mat(at(5.6), at(10.0), CV_8UC1, cv::Scalar(255));
        paint({0.8, 0.8, 4.0, 4.0}, 0);
        paint({5.2, 0.8, 4.0, 4.0}, 0);
        paint({4.8, 2.4, 0.4, 0.8}, 0);
        paint({1.6, 1.6, 1.2, 0.8}, 255);
        paint({2.8, 3.2, 1.2, 0.8}, 255);
        paint({3.0, 3.4, 0.8, 0.4}, 0);
        map = mapOf(walls, resolution);
    }
    int at(double metres) const {
        return static_cast<int>(std::lround(metres * static_cast<double>(pixels_per_metre)));
    }
    void paint(const cv::Rect2d& box, int value) {
        walls(cv::Rect(cv::Point(at(box.x), at(box.y)), cv::Point(at(box.br().x), at(box.br().y))))
            .setTo(value);
    }

    long pixels_per_metre;
    cv::Mat walls;
    GridMap map;
};

class FurnishedFlat : public FindRooms, public ::testing::WithParamInterface<double> {};

TEST_P(FurnishedFlat, HasItsFurnitureInItsRooms) {
    const Flat flat(GetParam());
    const Rooms rooms = find(flat.map);
    ASSERT_THAT(rooms.rooms, SizeIs(2));
    const cv::Rect left(cv::Point(flat.at(0.8), flat.at(0.8)),
                        cv::Point(flat.at(4.8), flat.at(4.8)));
    const cv::Rect right = left + cv::Point(flat.at(4.4), 0);
    EXPECT_EQ(cv::countNonZero(rooms.labels(left) != 1), 0) << "table and desk are of the room";
    EXPECT_EQ(cv::countNonZero(rooms.labels(right) != 2), 0);
}

TEST_P(FurnishedFlat, HasNoRoomUnderItsFurnitureIfNothingIsTakenOut) {
    const Flat flat(GetParam());
    Settings settings;
    settings.rooms.clear_clutter = false;
    const Rooms rooms = find(flat.map, settings);
    EXPECT_EQ(rooms.labels.at<std::int32_t>(flat.at(2.0), flat.at(2.2)), 0);
}

INSTANTIATE_TEST_SUITE_P(Resolutions, FurnishedFlat, ::testing::Values(0.025, 0.05, 0.1),
                         [](const auto& test) {
                             return std::to_string(std::lround(test.param * 1000.0)) + "mm";
                         });

}  // namespace
}  // namespace vorund::rooms
