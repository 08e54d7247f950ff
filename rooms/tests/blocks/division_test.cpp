#include "blocks/division.h"

#include <gmock/gmock.h>

#include <opencv2/core.hpp>
#include <vector>

#include "support/random_images.h"

namespace vorund::rooms {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr int kNoLimit = 64'000'000;

cv::Mat walls(int width, int height) {
    return cv::Mat::zeros(height, width, CV_8UC1);
}

TEST(Divide, MakesOneBlockOfWhatFits) {
    cv::Mat floor = walls(400, 300);
    floor(cv::Rect(30, 40, 200, 100)) = 1;
    const std::vector<Block> blocks = divide(floor, kNoLimit);
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_EQ(blocks[0].core, cv::Rect(30, 40, 200, 100)) << "nothing but the floor";
    // Half of the longer side is less than what would be seen around a large block.
    EXPECT_EQ(blocks[0].view, cv::Rect(0, 0, 330, 240)) << "100 pixels around, within the map";
}

TEST(Divide, SeesNoFurtherThanTheContextAroundALargeBlock) {
    cv::Mat floor = walls(3000, 2500);
    floor(cv::Rect(700, 600, 1000, 900)) = 1;
    const std::vector<Block> blocks = divide(floor, kNoLimit);
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_EQ(blocks[0].view,
              cv::Rect(700 - kContext, 600 - kContext, 1000 + 2 * kContext, 900 + 2 * kContext));
}

TEST(Divide, HasNoBlockWhereNoFloorIs) {
    EXPECT_THAT(divide(walls(300, 200), 10'000), IsEmpty());
}

TEST(Divide, CutsAlongTheWallWithTheLeastFloor) {
    // Three rooms. Both walls lie in the middle third; that at 130 has a wide opening, that at 170
    // a narrow one.
    cv::Mat floor = walls(300, 100);
    floor = 1;
    floor(cv::Rect(130, 0, 4, 100)) = 0;
    floor(cv::Rect(130, 20, 4, 40)) = 1;
    floor(cv::Rect(170, 0, 4, 100)) = 0;
    floor(cv::Rect(170, 20, 4, 18)) = 1;
    const std::vector<Block> blocks = divide(floor, 300 * 100 - 1);
    ASSERT_THAT(blocks, SizeIs(2));
    EXPECT_EQ(blocks[0].core, cv::Rect(0, 0, 170, 100))
        << "the pixel of the wall nearest the middle";
    EXPECT_EQ(blocks[1].core, cv::Rect(170, 0, 130, 100));
}

TEST(Divide, CutsOpenFloorInTheMiddleOfItsLongerSide) {
    const cv::Mat floor(300, 100, CV_8UC1, cv::Scalar(1));
    const std::vector<Block> blocks = divide(floor, 300 * 100 - 1);
    ASSERT_THAT(blocks, SizeIs(2));
    EXPECT_EQ(blocks[0].core, cv::Rect(0, 0, 100, 150));
    EXPECT_EQ(blocks[1].core, cv::Rect(0, 150, 100, 150));
}

TEST(Divide, DoesNotCutWhatIsTooSmallToHoldARoom) {
    const cv::Mat floor(99, 99, CV_8UC1, cv::Scalar(1));
    EXPECT_THAT(divide(floor, 1), SizeIs(1)) << "although it is larger than asked for";
    const cv::Mat longer(99, 100, CV_8UC1, cv::Scalar(1));
    EXPECT_THAT(divide(longer, 1), SizeIs(2));
}

TEST(Divide, LeavesOutWhatHasNoFloorOnceItIsCutOff) {
    // Two rooms far apart: the cut lies between them, and neither block holds what is there.
    cv::Mat floor = walls(2000, 300);
    floor(cv::Rect(0, 100, 100, 100)) = 1;
    floor(cv::Rect(1900, 50, 100, 100)) = 1;
    const std::vector<Block> blocks = divide(floor, 40'000);
    ASSERT_THAT(blocks, SizeIs(2));
    EXPECT_EQ(blocks[0].core, cv::Rect(0, 100, 100, 100));
    EXPECT_EQ(blocks[1].core, cv::Rect(1900, 50, 100, 100));
}

class DivideRandomFloor : public ::testing::TestWithParam<int> {};

TEST_P(DivideRandomFloor, CoversAllFloorOnceInBlocksOfBoundedSize) {
    constexpr int kMostPixels = 40'000;  // The least that the settings permit.
    test::RandomImages random(static_cast<std::uint32_t>(GetParam()));
    const cv::Mat floor = random.patches({400 + random.below(400), 400 + random.below(400)}, 1, 0);
    const cv::Rect whole({0, 0}, floor.size());
    cv::Mat covered = cv::Mat::zeros(floor.size(), CV_8UC1);
    for (const Block& block : divide(floor, kMostPixels)) {
        EXPECT_EQ(block.view & whole, block.view);
        EXPECT_EQ(block.core & block.view, block.core);
        EXPECT_LE(block.view.area(), kMostPixels);
        EXPECT_EQ(cv::countNonZero(covered(block.core)), 0) << "cores do not overlap";
        covered(block.core) = 1;
    }
    EXPECT_EQ(cv::countNonZero(floor & (covered == 0)), 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DivideRandomFloor, ::testing::Range(1, 11));

}  // namespace
}  // namespace vorund::rooms
