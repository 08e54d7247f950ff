#include <gmock/gmock.h>
#include <cmath>

#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/graph_processor.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "support/room_images.h"
#include "vorund/graph_processor.h"

namespace vorund::test {
namespace {

using GraphProcessor::visualizeBorders;
using GraphProcessor::visualizeGraph;
using GraphProcessor::visualizeSegments;
using ::testing::ThrowsMessage;

const cv::Vec3b kBlack(0, 0, 0);
const cv::Vec3b kWhite(255, 255, 255);
const cv::Size kCanvas(120, 80);

/// The colours of rooms: hues of 0, 69, 138, 206 (= 26) and, from the fifth room on, 255 (= 75) out
/// of 180, with 200 as the greatest of blue, green and red.
const cv::Vec3b kFirstRoom(0, 0, 200);
const cv::Vec3b kSecondRoom(60, 200, 0);
const cv::Vec3b kThirdRoom(200, 0, 120);
const cv::Vec3b kFourthRoom(0, 173, 200);
const cv::Vec3b kLaterRoom(100, 200, 0);

cv::Vec3b colourAt(const cv::Mat& picture, int row, int col) {
    return picture.at<cv::Vec3b>(row, col);
}

cv::Mat blackCanvas() {
    return cv::Mat::zeros(kCanvas, CV_8UC3);
}

void drawNode(cv::Mat& canvas, const cv::Point& at, int radius, const std::string& text) {
    const cv::Scalar white(255, 255, 255);
    cv::circle(canvas, at, radius, cv::Scalar(0, 0, 255), -1, cv::LINE_8);
    cv::circle(canvas, at, radius, white, 2, cv::LINE_8);
    int baseline = 0;
    const cv::Size extent = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 0.5, 1, &baseline);
    cv::putText(canvas, text, cv::Point(at.x - extent.width / 2, at.y + extent.height / 2),
                cv::FONT_HERSHEY_SIMPLEX, 0.5, white, 1, cv::LINE_8);
}

void drawEdge(cv::Mat& canvas, const cv::Point& from, const cv::Point& to, int thickness) {
    cv::line(canvas, from, to, cv::Scalar(0, 255, 255), thickness, cv::LINE_8);
}

Graph oneNode(int label, double area, const cv::Point& position) {
    Graph graph;
    graph.addNode(label, {area, position});
    return graph;
}

Graph twoNodes(double border_length) {
    Graph graph;
    graph.addNode(1, {1.0, cv::Point(20, 20)});
    graph.addNode(2, {1.0, cv::Point(90, 60)});
    graph.addEdge(1, 2, {border_length});
    return graph;
}

// visualizeSegments

TEST(VisualizeSegments, ColoursRoomsInAscendingOrder) {
    const cv::Mat picture = visualizeSegments(labels(". 9 255 3"), -1);
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), cv::Size(4, 1));
    EXPECT_EQ(colourAt(picture, 0, 0), kWhite);
    EXPECT_EQ(colourAt(picture, 0, 1), kSecondRoom);
    EXPECT_EQ(colourAt(picture, 0, 2), kBlack);
    EXPECT_EQ(colourAt(picture, 0, 3), kFirstRoom);
}

TEST(VisualizeSegments, GivesAllRoomsFromTheFifthOnOneColour) {
    const cv::Mat picture = visualizeSegments(labels("1 2 3 4 5 6 7 99"), -1);
    EXPECT_EQ(colourAt(picture, 0, 0), kFirstRoom);
    EXPECT_EQ(colourAt(picture, 0, 1), kSecondRoom);
    EXPECT_EQ(colourAt(picture, 0, 2), kThirdRoom);
    EXPECT_EQ(colourAt(picture, 0, 3), kFourthRoom);
    for (int col = 4; col < 7; ++col) EXPECT_EQ(colourAt(picture, 0, col), kLaterRoom);
    EXPECT_EQ(colourAt(picture, 0, 7), kBlack);
}

TEST(VisualizeSegments, SpendsNoColourOnBackgroundAndLines) {
    const cv::Mat picture = visualizeSegments(labels("5 . 2 9 3"), 3);
    EXPECT_EQ(colourAt(picture, 0, 2), kFirstRoom);
    EXPECT_EQ(colourAt(picture, 0, 4), kBlack);
    EXPECT_EQ(colourAt(picture, 0, 0), kSecondRoom);
    EXPECT_EQ(colourAt(picture, 0, 3), kThirdRoom);
}

TEST(VisualizeSegments, TakesALineValueThatDoesNotOccur) {
    // 257 has the low bits of 1.
    const cv::Mat picture = visualizeSegments(labels("1 9"), 257);
    EXPECT_EQ(colourAt(picture, 0, 0), kFirstRoom);
    EXPECT_EQ(colourAt(picture, 0, 1), kSecondRoom);
}

TEST(VisualizeSegments, LeavesBackgroundWhiteEvenAsTheLineValue) {
    EXPECT_EQ(colourAt(visualizeSegments(labels(". 1"), 0), 0, 0), kWhite);
    // 0 is the largest value.
    EXPECT_EQ(colourAt(visualizeSegments(labels(". ."), -1), 0, 0), kWhite);
}

TEST(VisualizeSegments, TakesNegativeLabelsForRooms) {
    const cv::Mat picture = visualizeSegments(labels32("100000 -7 . 300 -2"), -1);
    EXPECT_EQ(colourAt(picture, 0, 0), kBlack);
    EXPECT_EQ(colourAt(picture, 0, 1), kFirstRoom);
    EXPECT_EQ(colourAt(picture, 0, 2), kWhite);
    EXPECT_EQ(colourAt(picture, 0, 3), kThirdRoom);
    EXPECT_EQ(colourAt(picture, 0, 4), kSecondRoom);
}

TEST(VisualizeSegments, DrawsOnePixelAndOneColumn) {
    EXPECT_EQ(colourAt(visualizeSegments(labels("4"), 255), 0, 0), kFirstRoom);
    const cv::Mat picture = visualizeSegments(labels("4\n.\n255"), 255);
    ASSERT_EQ(picture.size(), cv::Size(1, 3));
    EXPECT_EQ(colourAt(picture, 0, 0), kFirstRoom);
    EXPECT_EQ(colourAt(picture, 1, 0), kWhite);
    EXPECT_EQ(colourAt(picture, 2, 0), kBlack);
}

TEST(VisualizeSegments, LeavesItsInputAloneAndReadsViews) {
    const cv::Mat image = labels("1 . 2\n9 1 5");
    const cv::Mat view = asView(image);
    const cv::Mat view32 = asView(labels32("1 . 2\n9 1 5"));
    EXPECT_THAT(visualizeSegments(view, -1), MatEq(visualizeSegments(image, -1)));
    EXPECT_THAT(visualizeSegments(view32, -1), MatEq(visualizeSegments(image, -1)));
    EXPECT_THAT(view, MatEq(image));
    EXPECT_THAT(view32, MatEq(labels32("1 . 2\n9 1 5")));
}

TEST(VisualizeSegments, RejectsWhatItCannotRead) {
    const std::string message =
        "visualizeSegments: Input must be a non-empty CV_32S or CV_8UC1 image";
    EXPECT_THAT([] { visualizeSegments(cv::Mat(), -1); },
                ThrowsMessage<std::runtime_error>(message));
    for (const int type : {CV_8SC1, CV_16UC1, CV_32FC1, CV_8UC3, CV_32SC2}) {
        EXPECT_THAT([=] { visualizeSegments(cv::Mat::zeros(2, 2, type), -1); },
                    ThrowsMessage<std::runtime_error>(message));
    }
}

// visualizeBorders

TEST(VisualizeBorders, ColoursBordersInAscendingOrderOfTheirIds) {
    const cv::Mat picture = visualizeBorders(labels("7 . 2 200 . 90"), cv::Mat());
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), cv::Size(6, 1));
    // As for rooms, but with 255 as the greatest channel.
    EXPECT_EQ(colourAt(picture, 0, 2), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(colourAt(picture, 0, 5), cv::Vec3b(255, 0, 153));
    EXPECT_EQ(colourAt(picture, 0, 3), cv::Vec3b(0, 221, 255));
    EXPECT_EQ(colourAt(picture, 0, 0)[1], 255);
    EXPECT_EQ(colourAt(picture, 0, 0)[2], 0);
    EXPECT_EQ(colourAt(picture, 0, 1), kBlack);
    EXPECT_EQ(colourAt(picture, 0, 4), kBlack);
}

TEST(VisualizeBorders, ShowsTheRoomsDarkened) {
    const cv::Mat picture = visualizeBorders(labels(". . 1 ."), labels("3 7 255 255"));
    EXPECT_EQ(colourAt(picture, 0, 0), cv::Vec3b(0, 0, 60));
    EXPECT_EQ(colourAt(picture, 0, 1), cv::Vec3b(18, 60, 0));
    EXPECT_EQ(colourAt(picture, 0, 2), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(colourAt(picture, 0, 3), kBlack);
}

TEST(VisualizeBorders, ReadsRoomsOfThirtyTwoBits) {
    EXPECT_THAT(visualizeBorders(labels(". 1 ."), labels32("3 9 7")),
                MatEq(visualizeBorders(labels(". 1 ."), labels("3 9 7"))));
}

TEST(VisualizeBorders, ShowsOnlyTheRoomsWhereThereAreNoBorders) {
    const cv::Mat segments = labels("3 . 9\n3 7 9");
    EXPECT_THAT(visualizeBorders(cv::Mat::zeros(2, 3, CV_8UC1), segments),
                MatEq(cv::Mat(visualizeSegments(segments, -1) * 0.3)));
}

TEST(VisualizeBorders, LeavesItsInputsAloneAndReadsViews) {
    const cv::Mat borders = asView(labels(". 1 .\n. 2 ."));
    const cv::Mat segments = asView(labels("3 9 7\n3 9 8"));
    EXPECT_THAT(visualizeBorders(borders, segments),
                MatEq(visualizeBorders(labels(". 1 .\n. 2 ."), labels("3 9 7\n3 9 8"))));
    EXPECT_THAT(borders, MatEq(labels(". 1 .\n. 2 .")));
    EXPECT_THAT(segments, MatEq(labels("3 9 7\n3 9 8")));
}

TEST(VisualizeBorders, RejectsWhatIsNoBordersMap) {
    const std::string message = "visualizeBorders: borders_map must be a non-empty CV_8UC1 image";
    EXPECT_THAT([] { visualizeBorders(cv::Mat(), labels("1 2")); },
                ThrowsMessage<std::runtime_error>(message));
    for (const int type : {CV_32SC1, CV_8UC3, CV_8SC1}) {
        EXPECT_THAT([=] { visualizeBorders(cv::Mat::zeros(2, 2, type), cv::Mat()); },
                    ThrowsMessage<std::runtime_error>(message));
    }
}

TEST(VisualizeBorders, RejectsRoomsThatCannotBeShown) {
    EXPECT_THAT([] { visualizeBorders(labels("1 2"), values("1 2")); },
                ThrowsMessage<std::runtime_error>(
                    "visualizeSegments: Input must be a non-empty CV_32S or CV_8UC1 image"));
}

// visualizeGraph

TEST(VisualizeGraph, DrawsNothingOfAnEmptyGraph) {
    EXPECT_THAT(visualizeGraph(Graph(), kCanvas, cv::Mat()), MatEq(blackCanvas()));
}

TEST(VisualizeGraph, DrawsADiscWithALabel) {
    cv::Mat expected = blackCanvas();
    drawNode(expected, cv::Point(60, 40), 10, "17");  // 2 * sqrt(25)
    EXPECT_THAT(visualizeGraph(oneNode(17, 25.0, cv::Point(60, 40)), kCanvas, cv::Mat()),
                MatEq(expected));
}

TEST(VisualizeGraph, DrawsAWhiteRingAroundARedDisc) {
    // A label of one digit leaves most of a disc of 20 pixels free.
    const cv::Mat picture = visualizeGraph(oneNode(1, 100.0, cv::Point(60, 40)), kCanvas, {});
    EXPECT_EQ(colourAt(picture, 40, 60 - 15), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(colourAt(picture, 40 + 15, 60), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(colourAt(picture, 40, 60 - 20), kWhite);
    EXPECT_EQ(colourAt(picture, 40 + 20, 60), kWhite);
    EXPECT_EQ(colourAt(picture, 40, 60 - 23), kBlack);
}

TEST(VisualizeGraph, KeepsRadiiBetween3And20) {
    const std::vector<std::pair<double, int>> radii{{0.0, 3},    {0.5, 3},  {2.25, 3},  {3.99, 3},
                                                    {4.0, 4},    {6.24, 4}, {99.9, 19}, {100.0, 20},
                                                    {200.0, 20}, {1e12, 20}};
    for (const auto& [area, radius] : radii) {
        cv::Mat expected = blackCanvas();
        drawNode(expected, cv::Point(50, 30), radius, "1");
        EXPECT_THAT(visualizeGraph(oneNode(1, area, cv::Point(50, 30)), kCanvas, cv::Mat()),
                    MatEq(expected))
            << area;
    }
}

TEST(VisualizeGraph, WritesTheSignOfANegativeLabel) {
    cv::Mat expected = blackCanvas();
    drawNode(expected, cv::Point(50, 30), 3, "-12");
    EXPECT_THAT(visualizeGraph(oneNode(-12, 1.0, cv::Point(50, 30)), kCanvas, cv::Mat()),
                MatEq(expected));
}

TEST(VisualizeGraph, DrawsLongerBordersAsThickerLinesUnderTheNodes) {
    const std::vector<std::pair<double, int>> thicknesses{
        {0.0, 1}, {0.2, 1}, {0.99, 1}, {1.0, 2}, {1.6, 3}, {2.4, 4}, {2.5, 5}, {4.0, 5}, {1e12, 5}};
    for (const auto& [length, thickness] : thicknesses) {
        cv::Mat expected = blackCanvas();
        drawEdge(expected, cv::Point(20, 20), cv::Point(90, 60), thickness);
        drawNode(expected, cv::Point(20, 20), 3, "1");
        drawNode(expected, cv::Point(90, 60), 3, "2");
        EXPECT_THAT(visualizeGraph(twoNodes(length), kCanvas, cv::Mat()), MatEq(expected))
            << length;
    }
}

TEST(VisualizeGraph, DrawsEachNodeCompletelyBeforeTheNext) {
    Graph graph;
    graph.addNode(5, {50.0, cv::Point(50, 40)});
    graph.addNode(3, {50.0, cv::Point(56, 40)});
    cv::Mat expected = blackCanvas();
    drawNode(expected, cv::Point(56, 40), 14, "3");
    drawNode(expected, cv::Point(50, 40), 14, "5");
    EXPECT_THAT(visualizeGraph(graph, kCanvas, cv::Mat()), MatEq(expected));
}

TEST(VisualizeGraph, DrawsANodeOutsideTheImageOnItsNearestEdge) {
    const std::vector<std::pair<cv::Point, cv::Point>> clamped{
        {cv::Point(-10, 40), cv::Point(0, 40)},
        {cv::Point(60, 500), cv::Point(60, 79)},
        {cv::Point(120, -1), cv::Point(119, 0)}};
    for (const auto& [position, drawn] : clamped) {
        cv::Mat expected = blackCanvas();
        drawNode(expected, drawn, 6, "8");
        EXPECT_THAT(visualizeGraph(oneNode(8, 9.0, position), kCanvas, cv::Mat()), MatEq(expected));
    }
}

TEST(VisualizeGraph, DrawsALineToANodeOutsideTheImageToItsNearestEdge) {
    Graph graph = twoNodes(1.0);
    graph.addNode(2, {1.0, cv::Point(1000, 1000)});
    cv::Mat expected = blackCanvas();
    drawEdge(expected, cv::Point(20, 20), cv::Point(119, 79), 2);
    drawNode(expected, cv::Point(20, 20), 3, "1");
    drawNode(expected, cv::Point(119, 79), 3, "2");
    EXPECT_THAT(visualizeGraph(graph, kCanvas, cv::Mat()), MatEq(expected));
}

TEST(VisualizeGraph, ShowsTheRoomsDarkened) {
    const cv::Mat picture = visualizeGraph(Graph(), cv::Size(3, 1), labels("4 6 255"));
    EXPECT_EQ(colourAt(picture, 0, 0), cv::Vec3b(0, 0, 100));
    EXPECT_EQ(colourAt(picture, 0, 1), cv::Vec3b(30, 100, 0));
    EXPECT_EQ(colourAt(picture, 0, 2), kBlack);
}

TEST(VisualizeGraph, ResizesTheRoomsButNotThePositions) {
    const cv::Mat rooms = labels("4 4 255 6\n4 . 255 6");
    cv::Mat resized;
    cv::resize(visualizeSegments(rooms, -1), resized, kCanvas, 0.0, 0.0, cv::INTER_LINEAR);
    cv::Mat expected = resized * 0.5;
    drawNode(expected, cv::Point(2, 1), 3, "4");
    EXPECT_THAT(visualizeGraph(oneNode(4, 1.0, cv::Point(2, 1)), kCanvas, rooms), MatEq(expected));
}

TEST(VisualizeGraph, LeavesItsInputsAloneAndReadsViews) {
    const cv::Mat rooms = labels("4 4 255 6\n4 . 255 6");
    const cv::Mat view = asView(rooms);
    const Graph graph = twoNodes(1.0);
    EXPECT_THAT(visualizeGraph(graph, kCanvas, view), MatEq(visualizeGraph(graph, kCanvas, rooms)));
    EXPECT_THAT(view, MatEq(rooms));
}

TEST(VisualizeGraph, DrawsOnASinglePixel) {
    const cv::Mat picture = visualizeGraph(twoNodes(1.0), cv::Size(1, 1), labels("4"));
    ASSERT_EQ(picture.size(), cv::Size(1, 1));
    cv::Mat expected(1, 1, CV_8UC3, cv::Scalar(0, 0, 0));
    drawNode(expected, cv::Point(0, 0), 3, "1");
    drawNode(expected, cv::Point(0, 0), 3, "2");
    EXPECT_THAT(picture, MatEq(expected));
}

TEST(VisualizeGraph, RejectsABackgroundThatCannotBeShown) {
    EXPECT_THAT([] { visualizeGraph(Graph(), kCanvas, values("1 2")); },
                ThrowsMessage<std::runtime_error>(
                    "visualizeSegments: Input must be a non-empty CV_32S or CV_8UC1 image"));
}

// Agreement with the plain versions

TEST(GraphPicturesAgreement, HoldsOnRoomsAndLines) {
    RandomImages random(11);
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        const cv::Mat image = roomImage(random, random.size(50), 1 + random.below(20));
        const auto found = GraphProcessor::findGraphRepresentation(image, 255);
        const int border_value = i % 3 == 0 ? 1 + random.below(255) : -1;
        EXPECT_THAT(visualizeSegments(image, border_value),
                    MatEq(reference::segmentsPicture(image, border_value)));
        EXPECT_THAT(visualizeBorders(found.borders_map, image),
                    MatEq(reference::bordersPicture(found.borders_map, image)));
        const cv::Size size = random.size(120);
        EXPECT_THAT(
            visualizeGraph(found.graph, size, image),
            MatEq(reference::graphPicture(reference::regionGraph(found.graph), size, image)));
        if (HasFailure()) return;
    }
}

TEST(GraphPictures, AreTheSameOnASecondRun) {
    RandomImages random(12);
    const cv::Mat image = roomImage(random, cv::Size(60, 50), 20);
    const auto found = GraphProcessor::findGraphRepresentation(image, 255);
    EXPECT_THAT(visualizeSegments(image, -1), MatEq(visualizeSegments(image, -1)));
    EXPECT_THAT(visualizeBorders(found.borders_map, image),
                MatEq(visualizeBorders(found.borders_map, image)));
    EXPECT_THAT(visualizeGraph(found.graph, kCanvas, image),
                MatEq(visualizeGraph(found.graph, kCanvas, image)));
}

TEST(VisualizeGraph, DrawsAreasAndLengthsThatAreNoNumbersAsTheSmallest) {
    const auto draw = [](double area, double length) {
        Graph graph;
        graph.addNode(1, {area, cv::Point(20, 20)});
        graph.addNode(2, {area, cv::Point(60, 20)});
        graph.addEdge(1, 2, {length});
        return GraphProcessor::visualizeGraph(graph, cv::Size(80, 40), cv::Mat());
    };
    EXPECT_THAT(draw(std::nan(""), std::nan("")), test::MatEq(draw(0.1, 0.1)));
    EXPECT_THAT(draw(-1.0, -1.0), test::MatEq(draw(0.1, 0.1)));
}

}  // namespace
}  // namespace vorund::test
