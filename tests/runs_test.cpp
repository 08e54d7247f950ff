#include "internal/runs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vorund::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <class T>
class Runs : public ::testing::Test {};
using PixelTypes = ::testing::Types<std::uint8_t, std::int32_t>;
TYPED_TEST_SUITE(Runs, PixelTypes);

template <class T>
std::vector<int> endsOf(const std::vector<T>& row) {
    std::vector<int> ends;
    forEachRun(row.data(), static_cast<int>(row.size()), [&](int begin, int end, T value) {
        EXPECT_EQ(begin, ends.empty() ? 0 : ends.back());
        EXPECT_EQ(value, row[static_cast<std::size_t>(begin)]);
        ends.push_back(end);
    });
    return ends;
}

TYPED_TEST(Runs, EndWhereTheValueChanges) {
    EXPECT_THAT(endsOf<TypeParam>({7, 7, 0, 7}), ElementsAre(2, 3, 4));
    EXPECT_THAT(endsOf<TypeParam>({7}), ElementsAre(1));
    EXPECT_THAT(endsOf<TypeParam>({}), IsEmpty());
}

TYPED_TEST(Runs, EndAtAnyPixelOfAnyBlock) {
    constexpr int kSize = 100;
    for (int first = 0; first < kSize; ++first) {
        for (const int length : {1, 2, 7, 8, 9, 31, 32, 33, 64}) {
            if (first + length >= kSize) continue;
            std::vector<TypeParam> row(kSize, 3);
            std::fill_n(row.begin() + first, length, TypeParam{4});
            const std::vector<int> ends = endsOf(row);
            if (first == 0) {
                EXPECT_THAT(ends, ElementsAre(length, kSize));
            } else {
                EXPECT_THAT(ends, ElementsAre(first, first + length, kSize));
            }
        }
    }
}

TEST(RunsOfWideLabels, DifferInAnyByte) {
    EXPECT_THAT(endsOf<std::int32_t>({1 << 24, 1 << 25, 1, -1, -1}), ElementsAre(1, 2, 3, 5));
}

TEST(ForEachByte, FindsAllThatAreEqual) {
    std::vector<std::uint8_t> row(50, 1);
    row[0] = row[17] = row[18] = row[49] = 255;
    std::vector<int> found;
    forEachByte(row.data(), 50, 255, [&](int col) { found.push_back(col); });
    EXPECT_THAT(found, ElementsAre(0, 17, 18, 49));
    found.clear();
    forEachByte(row.data(), 49, 2, [&](int col) { found.push_back(col); });
    EXPECT_THAT(found, IsEmpty());
}

}  // namespace
}  // namespace vorund::internal
