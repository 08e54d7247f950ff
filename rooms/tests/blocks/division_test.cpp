#include "blocks/division.h"

#include <gmock/gmock.h>

#include <opencv2/core.hpp>

#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr int kNoLimit = 64'000'000;

cv::Mat walls(int width, int height) {
    return cv::Mat::zeros(height, width, CV_8UC1);
}

TEST(Division, MakesOneBlockOfWhatFits) {
    cv::Mat floor = walls(400, 300);
    floor(cv::Rect(30, 40, 200, 100)) = 1;
    const std::vector<Block> blocks = Division(floor, kNoLimit).blocks();
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_EQ(blocks[0].core, cv::Rect(30, 40, 200, 100)) << "nothing but the floor";
    // Half of the longer side is less than what would be seen around a large block.
    EXPECT_EQ(blocks[0].view, cv::Rect(0, 0, 330, 240)) << "100 pixels around, within the map";
}

TEST(Division, SeesNoFurtherThanTheContextAroundALargeBlock) {
    cv::Mat floor = walls(2000, 2000);
    floor(cv::Rect(700, 600, 500, 400)) = 1;
    const std::vector<Block> blocks = Division(floor, kNoLimit).blocks();
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_EQ(blocks[0].view,
              cv::Rect(700 - kContext, 600 - kContext, 500 + 2 * kContext, 400 + 2 * kContext));
}

TEST(Division, HasNoBlockWhereNoFloorIs) {
    EXPECT_THAT(Division(walls(300, 200), 10'000).blocks(), IsEmpty());
}

TEST(Division, CutsAlongTheWallWithTheLeastFloor) {
    // Three rooms. Both walls lie in the middle third; that at 130 has a wide opening, that at 170
    // a narrow one.
    cv::Mat floor = walls(300, 100);
    floor = 1;
    floor(cv::Rect(130, 0, 4, 100)) = 0;
    floor(cv::Rect(130, 20, 4, 40)) = 1;
    floor(cv::Rect(170, 0, 4, 100)) = 0;
    floor(cv::Rect(170, 20, 4, 18)) = 1;
    const Division division(floor, kNoLimit);
    const std::vector<Block> halves = division.halves({{0, 0, 300, 100}, {0, 0, 300, 100}});
    ASSERT_THAT(halves, SizeIs(2));
    EXPECT_EQ(halves[0].core, cv::Rect(0, 0, 170, 100))
        << "the pixel of the wall nearest the middle";
    EXPECT_EQ(halves[1].core, cv::Rect(170, 0, 130, 100));
}

TEST(Division, CutsOpenFloorInTheMiddleOfItsLongerSide) {
    const cv::Mat floor(300, 100, CV_8UC1, cv::Scalar(1));
    const std::vector<Block> halves =
        Division(floor, kNoLimit).halves({{0, 0, 100, 300}, {0, 0, 100, 300}});
    ASSERT_THAT(halves, SizeIs(2));
    EXPECT_EQ(halves[0].core, cv::Rect(0, 0, 100, 150));
    EXPECT_EQ(halves[1].core, cv::Rect(0, 150, 100, 150));
}

TEST(Division, DoesNotCutWhatIsTooSmallToHoldARoom) {
    const cv::Mat floor(99, 99, CV_8UC1, cv::Scalar(1));
    EXPECT_THAT(Division(floor, kNoLimit).halves({{0, 0, 99, 99}, {0, 0, 99, 99}}), IsEmpty());
    const std::vector<Block> blocks = Division(floor, 1).blocks();
    EXPECT_THAT(blocks, SizeIs(1)) << "although it is larger than asked for";
}

TEST(Division, CutsMapsOfManySmallRoomsThoughTheyHaveFewPixels) {
    // 196 rooms of 1.3 m, each a compartment of its own.
    cv::Mat floor = walls(14 * 30, 14 * 30);
    for (int row = 0; row < 14; ++row) {
        for (int col = 0; col < 14; ++col) {
            floor(cv::Rect(30 * col, 30 * row, 26, 26)) = 1;
        }
    }
    EXPECT_GT(Division(floor, kNoLimit).blocks().size(), 1U);
}

class DivisionOfRandomFloor : public ::testing::TestWithParam<int> {};

TEST_P(DivisionOfRandomFloor, CoversAllFloorOnceInBlocksOfBoundedSize) {
    constexpr int kMostPixels = 40'000;  // The least that the settings permit.
    test::RandomImages random(static_cast<std::uint32_t>(GetParam()));
    const cv::Mat floor = random.patches({400 + random.below(400), 400 + random.below(400)}, 1, 0);
    const cv::Rect whole({0, 0}, floor.size());
    cv::Mat covered = cv::Mat::zeros(floor.size(), CV_8UC1);
    for (const Block& block : Division(floor, kMostPixels).blocks()) {
        EXPECT_EQ(block.view & whole, block.view);
        EXPECT_EQ(block.core & block.view, block.core);
        EXPECT_LE(block.view.area(), kMostPixels);
        EXPECT_EQ(cv::countNonZero(covered(block.core)), 0) << "cores do not overlap";
        covered(block.core) = 1;
    }
    EXPECT_EQ(cv::countNonZero(floor & (covered == 0)), 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DivisionOfRandomFloor, ::testing::Range(1, 11));

}  // namespace
}  // namespace vorund::rooms
