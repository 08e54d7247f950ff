#include "blocks/joining.h"

#include <gmock/gmock.h>

#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::labels32;
using test::MatEq;

/// A map of 12 x 3 pixels in two blocks: cores of 6 columns each, both seen from 4 further columns,
/// of which the nearer two count.
const Block kLeft{{0, 0, 6, 3}, {0, 0, 10, 3}};
const Block kRight{{6, 0, 6, 3}, {2, 0, 10, 3}};
const cv::Size kSize(12, 3);

TEST(JoinSeeds, MakesOneOfASeedThatTwoBlocksSee) {
    const SeededBlock left{kLeft,
                           {labels("255 255 255 255 255 255 255 255 255 255\n"
                                   "255   1   1   .   2   2   2   2   .   .\n"
                                   "255 255 255 255 255 255 255 255 255 255"),
                            {{1, {9, {1, 1}}}, {2, {8, {4, 1}}}}}};
    const SeededBlock right{kRight,
                            {labels("255 255 255 255 255 255 255 255 255 255\n"
                                    "  .   .   1   1   1   1   .   2   2 255\n"
                                    "255 255 255 255 255 255 255 255 255 255"),
                             {{1, {8, {2, 1}}}, {2, {7, {7, 1}}}}}};
    EXPECT_THAT(joinSeeds({left, right}, kSize),
                MatEq(labels32("255 255 255 255 255 255 255 255 255 255 255 255\n"
                               "255   1   1   .   2   2   2   2   .   3   3 255\n"
                               "255 255 255 255 255 255 255 255 255 255 255 255")));
}

TEST(JoinSeeds, KeepsSeedsApartThatOnlyTouchAtTheCut) {
    const SeededBlock left{kLeft,
                           {labels("1 1 1 1 1 1 2 2 2 2\n"
                                   "1 1 1 1 1 1 2 2 2 2\n"
                                   "1 1 1 1 1 1 2 2 2 2"),
                            {{1, {5, {0, 0}}}, {2, {4, {6, 0}}}}}};
    const SeededBlock right{kRight,
                            {labels("1 1 1 1 2 2 2 2 2 2\n"
                                    "1 1 1 1 2 2 2 2 2 2\n"
                                    "1 1 1 1 2 2 2 2 2 2"),
                             {{1, {5, {0, 0}}}, {2, {4, {4, 0}}}}}};
    EXPECT_THAT(joinSeeds({left, right}, kSize), MatEq(labels32("1 1 1 1 1 1 2 2 2 2 2 2\n"
                                                                "1 1 1 1 1 1 2 2 2 2 2 2\n"
                                                                "1 1 1 1 1 1 2 2 2 2 2 2")));
}

TEST(JoinSeeds, MakesOneOfTwoSeedsThatAreOneForTheOtherBlock) {
    // The seam of a room is worse than a line less in it.
    const SeededBlock left{kLeft,
                           {labels(". . . 1 1 1 1 1 . .\n"
                                   ". . . . . . . . . .\n"
                                   ". . . 2 2 2 2 2 . ."),
                            {{1, {5, {3, 0}}}, {2, {4, {3, 2}}}}}};
    const SeededBlock right{kRight,
                            {labels(". . 1 1 1 1 1 1 1 .\n"
                                    ". . 1 1 1 1 1 1 1 .\n"
                                    ". . 1 1 1 1 1 1 1 ."),
                             {{1, {3, {2, 0}}}}}};
    EXPECT_THAT(joinSeeds({left, right}, kSize), MatEq(labels32(". . . 1 1 1 1 1 1 1 1 .\n"
                                                                ". . . . . . 1 1 1 1 1 .\n"
                                                                ". . . 1 1 1 1 1 1 1 1 .")));
}

TEST(JoinSeeds, NumbersByScaleAndThenInReadingOrderOfTheWholeMap) {
    const SeededBlock left{kLeft,
                           {labels("1 . . . . . . . . .\n"
                                   "2 . . . . . . . . .\n"
                                   "3 . . . . . . . . ."),
                            {{1, {2, {0, 0}}}, {2, {7, {0, 1}}}, {3, {7, {0, 2}}}}}};
    const SeededBlock right{kRight,
                            {labels(". . . . . . . . . 1\n"
                                    ". . . . . . . . . 2\n"
                                    ". . . . . . . . . 3"),
                             {{1, {7, {9, 0}}}, {2, {9, {9, 1}}}, {3, {7, {9, 2}}}}}};
    // Scale 9: (11, 1). Scale 7: (11, 0), (0, 1), (0, 2), (11, 2). Scale 2: (0, 0).
    EXPECT_THAT(joinSeeds({left, right}, kSize), MatEq(labels32("6 . . . . . . . . . . 2\n"
                                                                "3 . . . . . . . . . . 1\n"
                                                                "4 . . . . . . . . . . 5")));
}

TEST(JoinSeeds, IsWallWhereNoBlockIs) {
    const SeededBlock block{{{1, 1, 2, 1}, {1, 1, 2, 1}}, {labels("1 ."), {{1, {4, {0, 0}}}}}};
    EXPECT_THAT(joinSeeds({block}, {4, 2}), MatEq(labels32("255 255 255 255\n"
                                                           "255   1   . 255")));
    EXPECT_THAT(joinSeeds({}, {2, 1}), MatEq(labels32("255 255")));
}

TEST(JoinSeeds, GivesNoSeedTheNumberOfWalls) {
    // 200 seeds each, all of one scale: numbered in reading order of the map.
    std::vector<SeededBlock> blocks;
    for (int i = 0; i < 2; ++i) {
        SeededBlock block{{{0, i, 200, 1}, {0, i, 200, 1}}, {cv::Mat(1, 200, CV_8UC1), {}}};
        for (int col = 0; col < 200; ++col) {
            block.seeds.labels.at<std::uint8_t>(0, col) = static_cast<std::uint8_t>(col + 1);
            block.seeds.births.emplace(col + 1, Birth{3, {col, 0}});
        }
        blocks.push_back(block);
    }
    const cv::Mat joined = joinSeeds(blocks, {200, 2});
    EXPECT_EQ(joined.at<std::int32_t>(1, 53), 254);
    EXPECT_EQ(joined.at<std::int32_t>(1, 54), 256);
    EXPECT_EQ(joined.at<std::int32_t>(1, 199), 401);
    EXPECT_EQ(cv::countNonZero(joined == 255), 0);
}

}  // namespace
}  // namespace vorund::rooms
