#include "vorund/watershed_segmenter.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "reference/watershed_segmenter.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"

namespace vorund::test {
namespace {

using ::testing::ThrowsMessage;

constexpr bool kWithLines = true;
constexpr bool kWithoutLines = false;

cv::Mat flood(const cv::Mat& image, const cv::Mat& markers, int connectivity, bool lines) {
    cv::Mat same_markers = markers;
    return WatershedSegmenter::executeSkimageWatershed(image, same_markers, connectivity, lines);
}

/// On a flat image.
cv::Mat flood(const cv::Mat& markers, int connectivity, bool lines) {
    return flood(cv::Mat::zeros(markers.size(), CV_32FC1), markers, connectivity, lines);
}

cv::Mat segment(const cv::Mat& image, const cv::Mat& markers, int connectivity = 4) {
    Config::CreateWatershedSegmentSkimageConfig config;
    config.connectivity = connectivity;
    cv::Mat same_markers = markers;
    return WatershedSegmenter::createWatershedSegmentSkimage(image, same_markers, config);
}

cv::Mat segment(const cv::Mat& markers) {
    return segment(cv::Mat::zeros(markers.size(), CV_32FC1), markers);
}

// executeSkimageWatershed

TEST(ExecuteWatershed, SplitsAFlatBasinByALine) {
    EXPECT_THAT(flood(labels32(". . . . . . .\n"
                               ". . . . . . .\n"
                               ". 1 . . . 2 .\n"
                               ". . . . . . .\n"
                               ". . . . . . ."),
                      4, kWithLines),
                MatEq(labels32(". . . . . . .\n"
                               ". 1 1 . 2 2 .\n"
                               ". 1 1 . 2 2 .\n"
                               ". 1 1 . 2 2 .\n"
                               ". . . . . . .")));
}

TEST(ExecuteWatershed, SplitsAFlatBasinWithoutAGapIfNoLinesAreAskedFor) {
    EXPECT_THAT(flood(labels32(". . . . . . .\n"
                               ". . . . . . .\n"
                               ". 1 . . . 2 .\n"
                               ". . . . . . .\n"
                               ". . . . . . ."),
                      4, kWithoutLines),
                MatEq(labels32(". . . . . . .\n"
                               ". 1 1 1 2 2 .\n"
                               ". 1 1 1 2 2 .\n"
                               ". 1 1 1 2 2 .\n"
                               ". . . . . . .")));
}

TEST(ExecuteWatershed, GivesAPixelAtEqualDistanceToTheSeedThatComesFirst) {
    // (1, 1) and (2, 2) lie beside both seeds, and 1 leaves the heap first.
    EXPECT_THAT(flood(labels32(". . . . .\n"
                               ". . 1 . .\n"
                               ". 2 . . .\n"
                               ". . . . .\n"
                               ". . . . ."),
                      4, kWithoutLines),
                MatEq(labels32(". . . . .\n"
                               ". 1 1 1 .\n"
                               ". 2 1 1 .\n"
                               ". 2 1 1 .\n"
                               ". . . . .")));
}

TEST(ExecuteWatershed, TakesSeedsOfEqualCostInTheOrderOfTheHeap) {
    // Once 1 is out, the last seed moves to the root and stays there, as its child is not smaller:
    // 3 goes before 2 and takes the pixel between them.
    EXPECT_THAT(flood(labels32(". . . . . . .\n"
                               ". 1 . 2 . 3 .\n"
                               ". . . . . . ."),
                      4, kWithoutLines),
                MatEq(labels32(". . . . . . .\n"
                               ". 1 1 2 3 3 .\n"
                               ". . . . . . .")));
}

TEST(ExecuteWatershed, FloodsLowCostsFirst) {
    // 2 is cheaper, so it takes all the floor between before 1 may start.
    EXPECT_THAT(flood(values(". . . . . . .\n"
                             ". 5 1 1 1 . .\n"
                             ". . . . . . ."),
                      labels32(". . . . . . .\n"
                               ". 1 . . . 2 .\n"
                               ". . . . . . ."),
                      4, kWithoutLines),
                MatEq(labels32(". . . . . . .\n"
                               ". 1 2 2 2 2 .\n"
                               ". . . . . . .")));
}

TEST(ExecuteWatershed, NeverLowersTheFloodBehindARidge) {
    // Both floods pass a ridge of 5 and share the valley behind; had the first one gone down again
    // behind its ridge, it would have taken the whole valley.
    EXPECT_THAT(flood(values(". . . . . . . . . .\n"
                             ". . 5 . . . . 5 5 .\n"
                             ". . . . . . . . . ."),
                      labels32(". . . . . . . . . .\n"
                               ". 1 . . . . . . 2 .\n"
                               ". . . . . . . . . ."),
                      4, kWithoutLines),
                MatEq(labels32(". . . . . . . . . .\n"
                               ". 1 1 1 1 2 2 2 2 .\n"
                               ". . . . . . . . . .")));
}

TEST(ExecuteWatershed, HandsTheLabelOnAcrossALine) {
    // The line pixel between the seeds gives the pixel below it to 1, before either seed can reach
    // it over the ridges of 9. There 2 meets 1 again.
    EXPECT_THAT(flood(values(". . . . .\n"
                             ". . . . .\n"
                             ". 9 . 9 .\n"
                             ". . . . ."),
                      labels32(". . . . .\n"
                               ". 1 . 2 .\n"
                               ". . . . .\n"
                               ". . . . ."),
                      4, kWithLines),
                MatEq(labels32(". . . . .\n"
                               ". 1 . 2 .\n"
                               ". 1 1 . .\n"
                               ". . . . .")));
}

TEST(ExecuteWatershed, CrossesADiagonalWithEightNeighboursOnly) {
    // The cheap pixels form a diagonal. With 8 neighbours 1 runs down it at level 0; with 4 it has
    // to climb first, and 2 with its cost of 3 is earlier.
    const cv::Mat cost = values(
        ". . . . .\n"
        ". . 7 7 .\n"
        ". 7 . 7 .\n"
        ". 7 3 . .\n"
        ". . . . .");
    const cv::Mat markers = labels32(
        ". . . . .\n"
        ". 1 . . .\n"
        ". . . . .\n"
        ". . 2 . .\n"
        ". . . . .");
    EXPECT_EQ(flood(cost, markers, 8, kWithoutLines).at<int>(3, 3), 1);
    EXPECT_EQ(flood(cost, markers, 8, kWithoutLines).at<int>(2, 2), 1);
    EXPECT_EQ(flood(cost, markers, 4, kWithoutLines).at<int>(3, 3), 2);
    EXPECT_EQ(flood(cost, markers, 4, kWithoutLines).at<int>(2, 2), 2);
}

TEST(ExecuteWatershed, DrawsALineWhereLabelsTouchDiagonallyWithEightNeighboursOnly) {
    const cv::Mat markers = labels32(
        ". . . . .\n"
        ". 1 . . .\n"
        ". . . 2 .\n"
        ". . . . .");
    EXPECT_THAT(flood(markers, 4, kWithLines), MatEq(labels32(". . . . .\n"
                                                              ". 1 1 . .\n"
                                                              ". 1 . 2 .\n"
                                                              ". . . . .")));
    EXPECT_THAT(flood(markers, 8, kWithLines), MatEq(labels32(". . . . .\n"
                                                              ". 1 . 2 .\n"
                                                              ". 1 . 2 .\n"
                                                              ". . . . .")));
}

TEST(ExecuteWatershed, KeepsSeedsThatTouchAndDrawsNoLineBetweenThem) {
    EXPECT_THAT(flood(labels32(". . . . . .\n"
                               ". . 1 2 . .\n"
                               ". . . . . ."),
                      4, kWithLines),
                MatEq(labels32(". . . . . .\n"
                               ". 1 1 2 2 .\n"
                               ". . . . . .")));
}

TEST(ExecuteWatershed, NeverFloodsTheFrame) {
    EXPECT_THAT(flood(labels32("8 . . . .\n"
                               ". . . . .\n"
                               ". . 3 . .\n"
                               ". . . . .\n"
                               ". . . . 9"),
                      4, kWithoutLines),
                MatEq(labels32("8 . . . .\n"
                               ". 3 3 3 .\n"
                               ". 3 3 3 .\n"
                               ". 3 3 3 .\n"
                               ". . . . 9")));
}

TEST(ExecuteWatershed, FloodsFromSeedsOnTheFrame) {
    EXPECT_THAT(flood(labels32(". . 4 . .\n"
                               ". . . . .\n"
                               ". . . . .\n"
                               ". . . . ."),
                      4, kWithLines),
                MatEq(labels32(". . 4 . .\n"
                               ". 4 4 4 .\n"
                               ". 4 4 4 .\n"
                               ". . . . .")));
}

TEST(ExecuteWatershed, LetsAPixelTouchAFrameSeedOfAnotherLabel) {
    // The frame seed 1 comes first and reaches the pixel below it, which touches 2 and becomes a
    // line; the line hands 1 on to the right, where 1 touches only the frame seed and the line.
    EXPECT_THAT(flood(labels32(". . 1 . .\n"
                               ". 2 . . .\n"
                               ". . . . ."),
                      4, kWithLines),
                MatEq(labels32(". . 1 . .\n"
                               ". 2 . 1 .\n"
                               ". . . . .")));
    // A lone inner pixel under a frame seed of another label is no line.
    EXPECT_THAT(flood(labels32(". 1 . .\n"
                               ". 2 . .\n"
                               ". . . ."),
                      4, kWithLines),
                MatEq(labels32(". 1 . .\n"
                               ". 2 2 .\n"
                               ". . . .")));
}

TEST(ExecuteWatershed, GivesTheMarkersBackIfThereIsNoSeed) {
    const cv::Mat markers = labels32(
        ". . -3 .\n"
        ". -1 . .\n"
        ". . . -255");
    EXPECT_THAT(flood(markers, 4, kWithLines), MatEq(markers));
    EXPECT_THAT(flood(markers, 8, kWithoutLines), MatEq(markers));
}

TEST(ExecuteWatershed, FloodsOverNegativeMarkers) {
    const cv::Mat markers = labels32(
        "-1 . -2 . .\n"
        ". 5 -2 . -9\n"
        ". -2 -2 -300 .\n"
        ". . . . .");
    const cv::Mat expected = labels32(
        "-1 . -2 . .\n"
        ". 5 5 5 -9\n"
        ". 5 5 5 .\n"
        ". . . . .");
    EXPECT_THAT(flood(markers, 4, kWithoutLines), MatEq(expected));
    EXPECT_THAT(flood(markers, 4, kWithLines), MatEq(expected));
}

TEST(ExecuteWatershed, LeavesANegativeMarkerOnALine) {
    EXPECT_THAT(flood(labels32(". . . . .\n"
                               ". 1 -6 2 .\n"
                               ". . . . ."),
                      4, kWithLines),
                MatEq(labels32(". . . . .\n"
                               ". 1 -6 2 .\n"
                               ". . . . .")));
}

TEST(ExecuteWatershed, LeavesAnImageThatIsAllFrameAsItIs) {
    for (const char* grid :
         {"7", "1 . 2 .", "1\n.\n.\n2", "1 .\n. 2", "1 . 2\n. . .", ". 1\n. .\n. 2"}) {
        const cv::Mat markers = labels32(grid);
        for (const int connectivity : {4, 8}) {
            EXPECT_THAT(flood(markers, connectivity, kWithLines), MatEq(markers));
            EXPECT_THAT(flood(markers, connectivity, kWithoutLines), MatEq(markers));
        }
    }
}

TEST(ExecuteWatershed, TakesCostsOfAnyDepth) {
    RandomImages random(64);
    const cv::Mat cost = random.bytes(cv::Size(15, 11), 5);
    const cv::Mat markers = random.markers(cost.size(), 3, 15);
    const cv::Mat expected = reference::watershed(cost, markers, 4, kWithLines);
    for (const int depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F}) {
        cv::Mat converted;
        cost.convertTo(converted, depth);
        EXPECT_THAT(flood(converted, markers, 4, kWithLines), MatEq(expected))
            << cv::depthToString(depth);
    }
}

TEST(ExecuteWatershed, TellsCostsApartThatDifferOnlyInDoublePrecision) {
    // Above 2^24 floats would merge the odd cost with its neighbour.
    cv::Mat cost(3, 7, CV_32SC1, cv::Scalar(0));
    cost.at<int>(1, 1) = (1 << 24) + 1;
    cost.at<int>(1, 5) = 1 << 24;
    EXPECT_THAT(flood(cost,
                      labels32(". . . . . . .\n"
                               ". 1 . . . 2 .\n"
                               ". . . . . . ."),
                      4, kWithoutLines),
                MatEq(labels32(". . . . . . .\n"
                               ". 1 2 2 2 2 .\n"
                               ". . . . . . .")));
}

TEST(ExecuteWatershed, LeavesItsInputsAsTheyAreAndAcceptsViews) {
    RandomImages random(65);
    const cv::Mat cost = random.floats(cv::Size(17, 13), 4);
    const cv::Mat markers = random.markers(cost.size(), 4, 10);
    const cv::Mat cost_view = asView(cost);
    cv::Mat marker_view = asView(markers);
    const cv::Mat result =
        WatershedSegmenter::executeSkimageWatershed(cost_view, marker_view, 8, kWithLines);
    EXPECT_THAT(result, MatEq(reference::watershed(cost, markers, 8, kWithLines)));
    EXPECT_THAT(cost_view, MatEq(cost));
    EXPECT_THAT(marker_view, MatEq(markers));
    EXPECT_NE(result.data, marker_view.data);
}

TEST(ExecuteWatershed, RejectsAnyOtherConnectivity) {
    const cv::Mat markers = labels32("1 . .\n. . .\n. . .");
    for (const int connectivity : {0, 1, 2, 6, -4, 84}) {
        EXPECT_THAT([&] { flood(markers, connectivity, kWithLines); },
                    ThrowsMessage<std::runtime_error>(
                        "executeSkimageWatershed: Connectivity must be 4 or 8."))
            << connectivity;
    }
}

void expectAgreement(const cv::Mat& cost, const cv::Mat& markers, const std::string& what) {
    for (const int connectivity : {4, 8}) {
        for (const bool lines : {kWithLines, kWithoutLines}) {
            ASSERT_THAT(flood(cost, markers, connectivity, lines),
                        MatEq(reference::watershed(cost, markers, connectivity, lines)))
                << what << ", connectivity " << connectivity << ", lines " << lines << "\ncost "
                << cost << "\nmarkers " << markers;
        }
    }
}

TEST(ExecuteWatershed, AgreesWithThePlainVersionOnRandomImages) {
    RandomImages random(66);
    for (int run = 0; run < 400; ++run) {
        const cv::Size size = random.size(11);
        const cv::Mat cost = random.bytes(size, 1 + random.below(6));
        const cv::Mat markers = random.markers(size, 1 + random.below(6), 1 + random.below(20));
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cost, markers, "run " + std::to_string(run)));
    }
}

TEST(ExecuteWatershed, AgreesWithThePlainVersionAmongManySeedsOfFewCosts) {
    // Seeds that wait in the heap for long show every difference in its layout.
    RandomImages random(67);
    for (int run = 0; run < 40; ++run) {
        const cv::Size size(20 + random.below(20), 20 + random.below(20));
        const cv::Mat cost = random.bytes(size, 2 + run % 3);
        const cv::Mat markers = random.markers(size, 200, 4 + random.below(12));
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cost, markers, "run " + std::to_string(run)));
    }
}

TEST(ExecuteWatershed, AgreesWithThePlainVersionOnALargerImage) {
    RandomImages random(68);
    const cv::Size size(230, 170);
    cv::Mat cost;
    cv::GaussianBlur(random.floats(size, 2), cost, cv::Size(), 2.0);
    const cv::Mat markers = random.markers(size, 60, 300);
    expectAgreement(cost, markers, "blurred noise");
    EXPECT_THAT(flood(cost, markers, 4, kWithLines), MatEq(flood(cost, markers, 4, kWithLines)));
}

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VORUND_TEST_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VORUND_TEST_ADDRESS_SANITIZER
#endif

/// Makes allocations fail once the process holds so many bytes, so that a queue without bounds
/// fails the test and not the machine. Not with the address sanitizer, which holds far more.
class MemoryLimit {
 public:
    explicit MemoryLimit(rlim_t bytes) {
        getrlimit(RLIMIT_DATA, &former_);
#ifndef VORUND_TEST_ADDRESS_SANITIZER
        rlimit limit = former_;
        limit.rlim_cur = std::min(former_.rlim_cur, bytes);
        setrlimit(RLIMIT_DATA, &limit);
#else
        static_cast<void>(bytes);
#endif
    }
    ~MemoryLimit() {
        setrlimit(RLIMIT_DATA, &former_);
    }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

 private:
    rlimit former_;
};

TEST(ExecuteWatershed, KeepsItsQueueBoundedWhereLinesLieSideBySide) {
    // Every pixel without a seed touches both labels and becomes part of a line, later the further
    // right. If each entry of such a pixel put one into each neighbour, the middle row would hold
    // three times as many entries with every second column: 3^99 at the end.
    //
    //     1 . 2 . 1 . 2 .
    //     . . . . . . . .
    //     2 . 1 . 2 . 1 .
    const int cols = 201;
    cv::Mat markers = cv::Mat::zeros(5, cols, CV_32SC1);
    cv::Mat cost(5, cols, CV_32FC1);
    for (int col = 0; col < cols; ++col) {
        cost.col(col) = col;
        if (col % 2 == 0) continue;
        markers.at<int>(1, col) = col % 4 == 1 ? 1 : 2;
        markers.at<int>(3, col) = col % 4 == 1 ? 2 : 1;
    }
    const MemoryLimit limit(rlim_t{1} << 30);
    EXPECT_THAT(flood(cost, markers, 8, kWithLines), MatEq(markers));
    EXPECT_THAT(reference::watershed(cost, markers, 8, kWithLines), MatEq(markers));
}

// createWatershedSegmentSkimage

TEST(CreateWatershedSegment, SwapsBackgroundAndLines) {
    EXPECT_THAT(segment(labels32(". . . . . . .\n"
                                 ". . . . . . .\n"
                                 ". 1 . . . 255 .\n"
                                 ". . . . . . .\n"
                                 ". . . . . . .")),
                MatEq(labels("255 255 255 255 255 255 255\n"
                             "255 1 1 255 . . 255\n"
                             "255 1 1 255 . . 255\n"
                             "255 1 1 255 . . 255\n"
                             "255 255 255 255 255 255 255")));
}

TEST(CreateWatershedSegment, Gives255EverywhereWithoutASeed) {
    EXPECT_THAT(segment(labels32(". . .\n. . .\n. . .")),
                MatEq(labels("255 255 255\n255 255 255\n255 255 255")));
    EXPECT_THAT(segment(labels32(".")), MatEq(labels("255")));
}

TEST(CreateWatershedSegment, KeepsTheSeedsOfARowOrColumn) {
    EXPECT_THAT(segment(labels32("1 . 255 254")), MatEq(labels("1 255 . 254")));
    EXPECT_THAT(segment(labels32("1\n.\n255")), MatEq(labels("1\n255\n.")));
}

TEST(CreateWatershedSegment, RejectsEmptyImagesFirst) {
    const auto message =
        ThrowsMessage<std::runtime_error>("createWatershedSegmentSkimage: Input images are empty.");
    const cv::Mat wrong_type = cv::Mat::zeros(3, 3, CV_8UC1);
    EXPECT_THAT([&] { segment(cv::Mat(), cv::Mat()); }, message);
    EXPECT_THAT([&] { segment(cv::Mat(), wrong_type); }, message);
    EXPECT_THAT([&] { segment(wrong_type, cv::Mat()); }, message);
}

TEST(CreateWatershedSegment, RejectsSizesThatDifferBeforeTypes) {
    const auto message = ThrowsMessage<std::runtime_error>(
        "createWatershedSegmentSkimage: Image and markers must have same size.");
    EXPECT_THAT([] { segment(cv::Mat::zeros(3, 4, CV_32FC1), cv::Mat::zeros(4, 3, CV_32SC1)); },
                message);
    EXPECT_THAT([] { segment(cv::Mat::zeros(3, 4, CV_32FC1), cv::Mat::zeros(3, 5, CV_32SC1)); },
                message);
    EXPECT_THAT([] { segment(cv::Mat::zeros(3, 4, CV_8UC1), cv::Mat::zeros(2, 4, CV_8UC1)); },
                message);
}

TEST(CreateWatershedSegment, RejectsOtherTypesBeforeTheConnectivity) {
    const auto message = ThrowsMessage<std::runtime_error>(
        "createWatershedSegmentSkimage: Unsupported src_image or markers format. Expected CV_32FC1 "
        "or CV_32S.");
    const cv::Mat cost = cv::Mat::zeros(3, 3, CV_32FC1);
    const cv::Mat markers = cv::Mat::zeros(3, 3, CV_32SC1);
    for (const int type : {CV_8UC1, CV_64FC1, CV_32SC1, CV_32FC3}) {
        EXPECT_THAT([&] { segment(cv::Mat::zeros(3, 3, type), markers, 6); }, message);
    }
    for (const int type : {CV_8UC1, CV_32FC1, CV_16SC1, CV_32SC2}) {
        EXPECT_THAT([&] { segment(cost, cv::Mat::zeros(3, 3, type), 6); }, message);
    }
}

TEST(CreateWatershedSegment, RejectsAnyOtherConnectivity) {
    EXPECT_THAT(
        [] { segment(cv::Mat::zeros(3, 3, CV_32FC1), cv::Mat::zeros(3, 3, CV_32SC1), 6); },
        ThrowsMessage<std::runtime_error>("executeSkimageWatershed: Connectivity must be 4 or 8."));
}

TEST(CreateWatershedSegment, RejectsLabelsOutsideTheBytes) {
    const auto message = ThrowsMessage<std::runtime_error>(
        "createWatershedSegmentSkimage: Label values exceed uint8 range.");
    EXPECT_THAT([] { segment(labels32("256 . .")); }, message);
    EXPECT_THAT([] { segment(labels32("1 . -1")); }, message);
    EXPECT_THAT([] { segment(labels32(". . .\n. 70000 .\n. . .")); }, message);
}

TEST(CreateWatershedSegment, AcceptsNegativeMarkersThatAreFlooded) {
    EXPECT_THAT(segment(labels32(". . . .\n"
                                 ". 9 -9 .\n"
                                 ". . . .")),
                MatEq(labels("255 255 255 255\n"
                             "255 9 9 255\n"
                             "255 255 255 255")));
}

TEST(CreateWatershedSegment, LeavesItsInputsAsTheyAreAndAcceptsViews) {
    RandomImages random(69);
    const cv::Mat cost = random.floats(cv::Size(17, 13), 4);
    const cv::Mat markers = random.markers(cost.size(), 4, 10);
    const cv::Mat cost_view = asView(cost);
    const cv::Mat marker_view = asView(markers);
    EXPECT_THAT(segment(cost_view, marker_view, 8),
                MatEq(reference::watershedSegment(cost, markers, 8)));
    EXPECT_THAT(cost_view, MatEq(cost));
    EXPECT_THAT(marker_view, MatEq(markers));
}

TEST(CreateWatershedSegment, AgreesWithThePlainVersionOnRandomImages) {
    RandomImages random(70);
    for (int run = 0; run < 200; ++run) {
        const cv::Size size = random.size(14);
        const cv::Mat cost = random.floats(size, 1 + random.below(5));
        cv::Mat markers = random.markers(size, 3, 8);
        markers.setTo(255, markers == 3);
        for (const int connectivity : {4, 8}) {
            ASSERT_THAT(segment(cost, markers, connectivity),
                        MatEq(reference::watershedSegment(cost, markers, connectivity)))
                << "run " << run << ", connectivity " << connectivity;
        }
    }
}

}  // namespace
}  // namespace vorund::test
