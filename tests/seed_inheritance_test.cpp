#include "seed_inheritance.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/label_grid.h"

namespace vorund::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::ThrowsMessage;

TEST(FindParents, TakesTheFirstPixelThatIsNotOverAZero) {
    const ValueTable under = valuesUnderFirstPixels(test::labels("1 1 1\n"
                                                                 "2 2 2"),
                                                    test::labels(". 4 3\n"
                                                                 ". . 4"));
    const auto parents = findParents({1, 2}, under);
    EXPECT_THAT(parents, ElementsAre(Pair(4, ElementsAre(1, 2))));
}

TEST(FindParents, RefusesALabelThatLiesOverZerosAlone) {
    EXPECT_THAT(
        [] {
            findParents({1, 2}, valuesUnderFirstPixels(test::labels("1 2"), test::labels("3 .")));
        },
        ThrowsMessage<std::runtime_error>("findConsistentGlobalLabels: new_m == 0"));
}

TEST(GlobalLabels, AreInheritedAmbiguousOrNew) {
    int counter = 6;
    const LabelMap global =
        globalLabels({1, 2, 3}, {{1, {8}}, {2, {8, 9}}}, {{8, 5}, {9, 6}}, counter);
    EXPECT_THAT(global, ElementsAre(Pair(1, 5), Pair(2, kAmbiguous), Pair(3, 7)));
    EXPECT_EQ(counter, 7);
}

TEST(GlobalLabels, RefuseAParentThatHasNone) {
    int counter = 0;
    EXPECT_THAT(
        [&] {
            globalLabels({1}, {{1, {8}}}, {}, counter);
        },
        ThrowsMessage<std::runtime_error>(
            "findConsistentGlobalLabels: prev label have no global label"));
}

}  // namespace
}  // namespace vorund::internal
