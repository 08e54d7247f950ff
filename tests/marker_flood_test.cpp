#include "marker_flood/marker_flood.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "internal/watershed_queue.h"
#include "marker_flood/flood.h"
#include "marker_flood/flood_queue.h"
#include "marker_flood/level_queue.h"
#include "marker_flood/pixel_label_set.h"
#include "marker_flood/seed_heap.h"
#include "marker_flood/tie_guard.h"
#include "reference/watershed_segmenter.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/plan_generator.h"
#include "support/random_images.h"
#include "vorund/vorund.h"

namespace vorund::test {
namespace {

using internal::FloodQueue;
using internal::LevelQueue;
using internal::PixelLabelSet;
using internal::SeedHeap;
using internal::TieGuard;
using ::testing::ElementsAre;

constexpr bool kWithLines = true;
constexpr bool kWithoutLines = false;

// SeedHeap

/// The heap that says in which order equal seeds leave; seeds are numbered from 1 by `index`, other
/// items from -1 down.
class OrderOfSeeds {
 public:
    void push(unsigned level, int age, std::int64_t number) {
        queue_.push({static_cast<double>(level), age, number, 0});
    }
    bool empty() const { return queue_.empty(); }
    WatershedQueueItem pop() { return queue_.pop(); }

 private:
    internal::WatershedQueue queue_;
};

constexpr std::uint64_t kSeedMask = 1023;

std::uint64_t keyOf(unsigned level, std::uint64_t number) {
    return std::uint64_t{level} << 32 | number;
}

TEST(SeedHeap, GivesEqualSeedsInTheOrderOfTheHeap) {
    // The last one comes to the top and stays there, as none below it is smaller.
    SeedHeap<std::uint32_t> heap;
    heap.open(4, 7);
    for (std::uint32_t seed = 1; seed <= 4; ++seed) heap.push(seed);
    std::vector<std::uint32_t> order;
    while (!heap.done()) order.push_back(heap.pop());
    EXPECT_THAT(order, ElementsAre(1, 4, 3, 2));
}

TEST(SeedHeap, LetsSeedsRiseAlongTheLeftWhereSomethingLargerIsLast) {
    // 1 at the top, 2 and 3 below it, 4 and 5 below 2; the larger ones at the end sink below.
    SeedHeap<std::uint32_t> heap;
    heap.open(10, 7);
    for (std::uint32_t seed = 1; seed <= 5; ++seed) heap.push(seed);
    for (int i = 0; i < 5; ++i) heap.push(heap.kBeyond);
    std::vector<std::uint32_t> order;
    while (!heap.done()) order.push_back(heap.pop());
    EXPECT_THAT(order, ElementsAre(1, 2, 4, 5, 3));
}

TEST(SeedHeap, AgreesWithTheWholeHeapUpToALevel) {
    RandomImages random(71);
    for (int run = 0; run < 3000; ++run) {
        const auto level_count = 1 + random.below(5);
        const auto last = static_cast<unsigned>(random.below(level_count));
        const int seed_count = 1 + random.below(run % 20 == 0 ? 400 : 40);
        const int most_pushes = random.below(4);
        OrderOfSeeds expected;
        SeedHeap<std::uint64_t> heap;
        heap.open(static_cast<std::size_t>(seed_count), kSeedMask);
        for (int seed = 1; seed <= seed_count; ++seed) {
            const auto level =
                random.below(2) == 0 ? 0U : static_cast<unsigned>(random.below(level_count));
            expected.push(level, 0, seed);
            heap.push(level > last ? heap.kBeyond : keyOf(level, static_cast<std::uint64_t>(seed)));
        }
        int age = 0;
        while (!heap.done()) {
            const WatershedQueueItem item = expected.pop();
            const auto number = static_cast<std::uint64_t>(
                item.age == 0 ? item.index : static_cast<std::int64_t>(kSeedMask) + item.age);
            const auto level = static_cast<unsigned>(item.value);
            ASSERT_EQ(heap.pop(), keyOf(level, number)) << "run " << run;
            for (int i = 0; i < most_pushes && age < 1000; ++i) {
                const unsigned next = level + static_cast<unsigned>(random.below(3));
                ++age;
                expected.push(next, age, 0);
                heap.push(next < last ? keyOf(next, kSeedMask + static_cast<std::uint64_t>(age))
                                      : heap.kBeyond);
            }
        }
        // What the heap does not give lies above its last level, or at it and is no seed.
        if (!expected.empty()) {
            const WatershedQueueItem next = expected.pop();
            EXPECT_TRUE(next.value > last || (next.value == last && next.age > 0)) << "run " << run;
        }
    }
}

// LevelQueue

TEST(LevelQueue, GivesTheLowestLevelFirstAndTheOldestOfEqualOnes) {
    RandomImages random(72);
    for (int run = 0; run < 300; ++run) {
        LevelQueue queue;
        std::set<std::pair<std::uint32_t, std::uint32_t>> expected;  // Level, number.
        const int shift = random.below(32);
        std::uint32_t level = static_cast<std::uint32_t>(random.below(1000)) << shift;
        std::uint32_t number = 0;
        for (int step = 0; step < 400; ++step) {
            for (int i = random.below(4); i > 0; --i) {
                const auto above = static_cast<std::uint32_t>(random.below(1 << 20)) >>
                                   static_cast<unsigned>(random.below(21));
                const std::uint32_t next = std::max(level, level + above);  // Never wraps.
                expected.emplace(next, number);
                queue.push(next, number, 3, 4U);
                ++number;
            }
            ASSERT_EQ(queue.pop(), !expected.empty());
            if (expected.empty()) continue;
            const LevelQueue::Entry& entry = queue.now()[queue.poppedCount() - 1];
            level = entry.level;
            ASSERT_EQ(std::make_pair(entry.level, entry.pixel), *expected.begin()) << "run " << run;
            ASSERT_EQ(entry.label, 3);
            ASSERT_EQ(entry.group, 4U);
            expected.erase(expected.begin());
        }
    }
}

// PixelLabelSet

TEST(PixelLabelSet, TakesEachPairOnce) {
    RandomImages random(73);
    PixelLabelSet pairs;
    std::set<std::pair<int, int>> expected;
    for (int i = 0; i < 20000; ++i) {
        const int pixel = random.below(3000);
        const int label = 1 + random.below(5);
        ASSERT_EQ(pairs.insert(static_cast<std::uint64_t>(pixel), label),
                  expected.emplace(pixel, label).second);
    }
}

// TieGuard

/// In a row of pixels.
class Row {
 public:
    /// Passes entries of one level, as "pixel label group"; false if one of them is refused.
    bool pass(const std::vector<std::array<int, 3>>& entries) {
        LevelQueue::List list;
        for (const auto& [pixel, label, group] : entries) {
            list.emplace_back(0U, static_cast<std::uint32_t>(pixel), label,
                              static_cast<std::uint32_t>(group));
        }
        bool apart = true;
        for (std::size_t count = 1; count <= list.size(); ++count) {
            apart = guard_.pass(list, count) && apart;
        }
        return apart;
    }

 private:
    TieGuard guard_{{-1, 1}, 20};
};

TEST(TieGuard, LetsPixelsOfOneLabelPassWhereverTheyAre) {
    EXPECT_TRUE(Row().pass({{4, 1, 7}, {5, 1, 7}, {5, 1, 7}, {6, 1, 7}}));
}

TEST(TieGuard, LetsSeveralLabelsPassThatShareNoNeighbour) {
    EXPECT_TRUE(Row().pass({{4, 1, 7}, {5, 1, 7}, {8, 2, 7}, {0, 3, 7}, {19, 2, 7}}));
}

TEST(TieGuard, RefusesSeveralLabelsThatShareANeighbour) {
    EXPECT_FALSE(Row().pass({{4, 1, 7}, {6, 2, 7}}));
    EXPECT_FALSE(Row().pass({{4, 1, 7}, {5, 2, 7}}));
    EXPECT_FALSE(Row().pass({{4, 1, 7}, {4, 2, 7}}));
    EXPECT_FALSE(Row().pass({{4, 1, 7}, {12, 1, 7}, {18, 2, 7}, {10, 2, 7}}));
    EXPECT_FALSE(Row().pass({{0, 1, 7}, {18, 2, 7}, {19, 3, 7}}));
}

TEST(TieGuard, KnowsTheOrderBetweenGroups) {
    EXPECT_TRUE(Row().pass({{4, 1, 7}, {5, 2, 8}, {6, 3, 9}}));
    Row row;
    EXPECT_TRUE(row.pass({{4, 1, 7}, {9, 2, 7}}));
    EXPECT_TRUE(row.pass({{5, 3, 7}, {11, 4, 7}}));  // Another level.
}

TEST(TieGuard, GivesEachGroupThatLeavesANumber) {
    TieGuard guard({-1, 1}, 9);
    guard.passAlone();
    const std::uint32_t first = guard.group();
    guard.passAlone();
    EXPECT_NE(guard.group(), first);
    const LevelQueue::List list{{5U, 1U, 1, 3U}, {5U, 2U, 1, 3U}, {5U, 3U, 1, 4U}};
    guard.pass(list, 1);
    const std::uint32_t second = guard.group();
    guard.pass(list, 2);
    EXPECT_EQ(guard.group(), second);
    guard.pass(list, 3);
    EXPECT_NE(guard.group(), second);
}

// FloodQueue

/// Floods with the heap at the lowest level only; false if the order may matter elsewhere.
bool floodsInOrder(const cv::Mat& cost, const cv::Mat& markers) {
    FloodQueue<std::uint32_t> queue(TieGuard({-markers.cols, -1, 1, markers.cols}, markers.total()),
                                    0);
    cv::Mat labels = markers.clone();
    const bool in_order =
        internal::Flood<FloodQueue<std::uint32_t>, std::int16_t, 4>(cost, markers, true, queue)
            .run(labels);
    EXPECT_THAT(labels,
                MatEq(in_order ? reference::watershed(cost, markers, 4, kWithLines) : markers));
    return in_order;
}

TEST(FloodQueue, DoesWithoutTheHeapWhereSeedsOfALevelHaveOneLabel) {
    const cv::Mat cost = values(
        ". . . . . . . . .\n"
        ". 2 3 4 5 4 3 2 .\n"
        ". . . . . . . . .");
    EXPECT_TRUE(floodsInOrder(cost, labels32(". . . . . . . . .\n"
                                             ". 7 . . . . . 7 .\n"
                                             ". . . . . . . . .")));
    EXPECT_TRUE(floodsInOrder(cost, labels32(". . . . . . . . .\n"
                                             ". 7 . . . . 8 . .\n"
                                             ". . . . . . . . .")));
}

TEST(FloodQueue, SeesThatTheOrderMattersAboveTheLowestLevel) {
    // Both seeds have level 2 and reach the middle at level 5. The seed 9 is the lowest.
    const cv::Mat cost = values(
        ". . . . . . . . .\n"
        ". 2 3 4 5 4 3 2 .\n"
        ". . . . . . . . .");
    EXPECT_FALSE(floodsInOrder(cost, labels32("9 . . . . . . . .\n"
                                              ". 7 . . . . . 8 .\n"
                                              ". . . . . . . . .")));
    // At the lowest level the heap knows the order.
    EXPECT_TRUE(floodsInOrder(cost, labels32(". . . . . . . . .\n"
                                             ". 7 . . . . . 8 .\n"
                                             ". . . . . . . . .")));
}

TEST(FloodQueue, SeesThatTheOrderDoesNotMatterBehindARidge) {
    // The ridge belongs to a seed of its own, so the two never meet.
    const cv::Mat cost = values(
        ". . . . . . . . .\n"
        ". 2 3 4 5 4 3 2 .\n"
        ". . . . . . . . .");
    EXPECT_TRUE(floodsInOrder(cost, labels32("9 . . . . . . . .\n"
                                             ". 7 . 6 6 6 . 8 .\n"
                                             ". . . . . . . . .")));
}

// floodFromMarkers

void expectAgreement(const cv::Mat& cost, const cv::Mat& markers, const std::string& what) {
    for (const int connectivity : {4, 8}) {
        for (const bool lines : {kWithLines, kWithoutLines}) {
            ASSERT_THAT(internal::floodFromMarkers(cost, markers, connectivity, lines),
                        MatEq(reference::watershed(cost, markers, connectivity, lines)))
                << what << ", connectivity " << connectivity << ", lines " << lines << "\ncost "
                << cost << "\nmarkers " << markers;
        }
    }
}

/// The right half becomes the left one seen in a mirror.
void mirror(cv::Mat& image) {
    for (int col = 0; col < image.cols / 2; ++col) {
        image.col(col).copyTo(image.col(image.cols - 1 - col));
    }
}

void renumberRightHalf(cv::Mat& markers) {
    for (int row = 0; row < markers.rows; ++row) {
        for (int col = (markers.cols + 1) / 2; col < markers.cols; ++col) {
            int& marker = markers.at<int>(row, col);
            if (marker > 0 && marker < 255) marker += 10;
        }
    }
}

/// Values of which each occurs about once, or few values, as floats or as doubles.
cv::Mat randomCosts(RandomImages& random, const cv::Size& size) {
    cv::Mat costs = random.floats(size, random.below(3) == 0 ? 100000 : 2 + random.below(7));
    if (random.below(4) == 0) costs -= 0.5;
    if (random.below(5) == 0) costs.convertTo(costs, CV_64F, 1.0 / 3.0);
    return costs;
}

cv::Mat randomMarkers(RandomImages& random, const cv::Size& size) {
    const int count = 1 + random.below(6);
    cv::Mat markers;
    switch (random.below(3)) {
        case 0:
            markers = random.markers(size, count, 1 + random.below(20));
            break;
        case 1:
            random.patches(size, count, 0).convertTo(markers, CV_32S);
            break;
        default:
            // Few gaps in one label: walls with floor between them.
            markers = random.markers(size, 2, 30);
            markers.setTo(255, random.bytes(size, 3) > 0);
    }
    if (random.below(6) == 0) markers.setTo(-3, random.bytes(size, 4) == 0);
    if (random.below(12) == 0) markers.setTo(70000, markers == 2);
    return markers;
}

TEST(FloodFromMarkers, AgreesWithThePlainVersionOnTenThousandSmallImages) {
    RandomImages random(74);
    for (int run = 0; run < 10000; ++run) {
        const cv::Size size = random.size(12);
        cv::Mat cost = randomCosts(random, size);
        cv::Mat markers = randomMarkers(random, size);
        if (random.below(3) == 0) {
            // Rooms that mirror each other: seeds of several labels at the same levels.
            mirror(cost);
            mirror(markers);
            if (random.below(2) == 0) renumberRightHalf(markers);
        }
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cost, markers, "run " + std::to_string(run)));
    }
}

TEST(FloodFromMarkers, AgreesWithThePlainVersionOnMirroredRooms) {
    RandomImages random(75);
    for (int run = 0; run < 60; ++run) {
        const cv::Size size(20 + random.below(40), 20 + random.below(40));
        cv::Mat cost;
        cv::GaussianBlur(random.floats(size, 2), cost, cv::Size(), 1.0 + 0.1 * (run % 20));
        mirror(cost);
        cv::Mat markers = random.markers(size, 3, 40);
        mirror(markers);
        renumberRightHalf(markers);
        markers.at<int>(0, 0) = 1;
        cost.at<float>(0, 0) = -1.0F;  // The lowest level is none of those that are mirrored.
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cost, markers, "run " + std::to_string(run)));
    }
}

TEST(FloodFromMarkers, TakesZerosOfBothSignsForEqual) {
    RandomImages random(76);
    for (int run = 0; run < 100; ++run) {
        const cv::Size size = random.size(12);
        cv::Mat cost = random.floats(size, 2);
        cost.setTo(-0.0, random.bytes(size, 3) == 0);
        ASSERT_NO_FATAL_FAILURE(
            expectAgreement(cost, random.markers(size, 4, 6), "run " + std::to_string(run)));
    }
}

TEST(FloodFromMarkers, TakesTiesAsTheHeapDoesOrInTheOrderOfPixels) {
    // The heap gives the first seed, then the last one; both in the middle reach the gap at once.
    const cv::Mat flat = cv::Mat::zeros(3, 6, CV_32FC1);
    const cv::Mat markers = labels32(". . . . . .\n"
                                     ". 3 1 . 2 .\n"
                                     ". . . . . .");
    EXPECT_THAT(internal::floodFromMarkers(flat, markers, 4, kWithoutLines),
                MatEq(labels32(". . . . . .\n"
                               ". 3 1 2 2 .\n"
                               ". . . . . .")));
    EXPECT_THAT(internal::floodFromMarkers(flat, markers, 4, kWithoutLines,
                                           internal::Ties::kPixelOrder),
                MatEq(labels32(". . . . . .\n"
                               ". 3 1 1 2 .\n"
                               ". . . . . .")));
}

TEST(FloodFromMarkers, GivesTheSameWhateverTheOrderOfTiesIfThereAreNone) {
    RandomImages random(75);
    for (int run = 0; run < 500; ++run) {
        const cv::Size size = random.size(20);
        cv::Mat costs(size, CV_32FC1);
        std::vector<float> different(costs.total());
        std::iota(different.begin(), different.end(), 0.0F);
        for (std::size_t i = different.size(); i > 1; --i) {
            std::swap(different[i - 1],
                      different[static_cast<std::size_t>(random.below(static_cast<int>(i)))]);
        }
        std::copy(different.begin(), different.end(), costs.begin<float>());
        const cv::Mat markers = random.markers(size, 4, 5);
        for (const int connectivity : {4, 8}) {
            for (const bool lines : {kWithLines, kWithoutLines}) {
                ASSERT_THAT(internal::floodFromMarkers(costs, markers, connectivity, lines,
                                                       internal::Ties::kPixelOrder),
                            MatEq(internal::floodFromMarkers(costs, markers, connectivity, lines)));
            }
        }
    }
}

TEST(FloodFromMarkers, TakesInfiniteCosts) {
    RandomImages random(77);
    const double infinity = std::numeric_limits<double>::infinity();
    for (int run = 0; run < 100; ++run) {
        const cv::Size size = random.size(12);
        cv::Mat cost = random.floats(size, 3);
        cost.setTo(infinity, random.bytes(size, 3) == 0);
        cost.setTo(-infinity, random.bytes(size, 3) == 0);
        ASSERT_NO_FATAL_FAILURE(
            expectAgreement(cost, random.markers(size, 4, 6), "run " + std::to_string(run)));
    }
}

TEST(FloodFromMarkers, DoesWithCostsThatAreNoNumbersWhatTheHeapDoes) {
    RandomImages random(78);
    for (int run = 0; run < 500; ++run) {
        const cv::Size size = random.size(12);
        cv::Mat cost = random.floats(size, 5);
        cost.setTo(std::nan(""), random.bytes(size, 5) == 0);
        if (run % 2 == 0) cost.convertTo(cost, CV_64F);
        const cv::Mat markers = random.markers(size, 4, 6);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cost, markers, "run " + std::to_string(run)));
    }
}

TEST(FloodFromMarkers, AgreesWithThePlainVersionOnGeneratedPlans) {
    for (const std::uint64_t seed : {1U, 2U, 3U}) {
        PlanOptions options;
        options.seed = seed;
        options.width_mm = 12000;
        options.height_mm = 9000;
        options.furniture_percent = seed == 3 ? 60 : 0;
        const cv::Mat walls = makePlan(options).map != kMapFree;
        cv::Mat map;
        walls.convertTo(map, CV_32F, 1.0 / 255.0);
        Config config;
        const cv::Mat ridges =
            RidgeFilter::generateRidgeMapMeijering(map, config.generate_ridge_map_meijering);
        cv::Mat near_walls;
        cv::distanceTransform(walls == 0, near_walls, cv::DIST_L2, cv::DIST_MASK_3);
        cv::Mat markers;
        cv::connectedComponents(near_walls > 14.0, markers, 4, CV_32S);
        markers.setTo(255, walls);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(ridges, markers, "ridges"));
        const cv::Mat boundary = RidgeFilter::generateBoundaryFromDilated(map);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(boundary, markers, "boundary"));
    }
}

}  // namespace
}  // namespace vorund::test
