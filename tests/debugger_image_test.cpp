#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/debugger.h"

namespace vorund {
namespace {

using test::asView;
using test::ConsoleCapture;
using test::ConsoleLine;
using test::labels;
using test::labels32;
using test::MatEq;
using test::readFile;
using test::TempDir;
using test::values;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::shared_ptr<Debugger> debuggerIn(const std::string& dir, bool save_images) {
    DebuggerConfig config;
    config.output_dir = dir;
    config.save_images = save_images;
    config.log_level = LogLevel::DEBUG;
    return Debugger::create(config);
}

std::string encoded(const std::string& extension, const cv::Mat& image) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(cv::imencode(extension, image, bytes));
    return {bytes.begin(), bytes.end()};
}

cv::Mat readBack(const std::string& path) {
    return cv::imread(path, cv::IMREAD_UNCHANGED);
}

/// Images without pixels, one of them with three dimensions.
std::vector<cv::Mat> emptyImages() {
    const int sizes[] = {2, 0, 3};
    return {cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_32FC1), cv::Mat(3, sizes, CV_8UC1)};
}

TEST(DebuggerWrite, WritesTheFileAndTellsItsPath) {
    const TempDir dir;
    const ConsoleCapture console;
    const cv::Mat image = labels("1 2 3\n4 5 255");
    debuggerIn(dir.path(), true)->write("53cpp_picture.png", image);
    EXPECT_EQ(readFile(dir.file("53cpp_picture.png")), encoded(".png", image));
    EXPECT_THAT(console.lines(), ElementsAre(ConsoleLine{"DEBUG", "Image saved: " + dir.path() +
                                                                      "/53cpp_picture.png"}));
}

TEST(DebuggerWrite, TellsThePathInTheSessionLogWhateverTheConsoleShows) {
    const TempDir dir;
    const ConsoleCapture console;
    DebuggerConfig config;
    config.output_dir = dir.path();
    config.save_images = true;
    const std::shared_ptr<Debugger> debugger = Debugger::create(config);
    debugger->initLog();
    debugger->write("a.png", labels("1 2"));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(readFile(dir.file("vorund.log")),
                testing::HasSubstr("] [DEBUG] Image saved: " + dir.path() + "/a.png\n"));
}

TEST(DebuggerWrite, WritesNothingUnlessImagesAreSaved) {
    const TempDir dir;
    const ConsoleCapture console;
    debuggerIn(dir.path(), false)->write("a.png", labels("1 2"));
    EXPECT_THAT(dir.names(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST(DebuggerWrite, WritesWhenForced) {
    const TempDir dir;
    const ConsoleCapture console;
    debuggerIn(dir.path(), false)->write("a.png", labels("1 2"), true);
    EXPECT_THAT(readBack(dir.file("a.png")), MatEq(labels("1 2")));
    EXPECT_THAT(console.lines(),
                ElementsAre(ConsoleLine{"DEBUG", "Image saved: " + dir.path() + "/a.png"}));
}

TEST(DebuggerWrite, ReplacesAnExistingFile) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = debuggerIn(dir.path(), true);
    debugger->write("a.png", labels("1 2"));
    debugger->write("a.png", labels("3"));
    EXPECT_THAT(readBack(dir.file("a.png")), MatEq(labels("3")));
    EXPECT_THAT(dir.names(), ElementsAre("a.png"));
}

TEST(DebuggerWrite, ScalesFloatsToBytes) {
    const TempDir dir;
    const ConsoleCapture console;
    const cv::Mat image = values("0 0.5 1 -3 7");
    debuggerIn(dir.path(), true)->write("a.png", image);
    EXPECT_THAT(readBack(dir.file("a.png")), MatEq(labels("0 128 255 0 255")));
    EXPECT_THAT(image, MatEq(values("0 0.5 1 -3 7")));
}

TEST(DebuggerWrite, FollowsTheExtension) {
    const TempDir dir;
    const ConsoleCapture console;
    const cv::Mat image(8, 8, CV_8UC1, cv::Scalar(100));
    debuggerIn(dir.path(), true)->write("a.jpg", image);
    debuggerIn(dir.path(), true)->write("a.pgm", image);
    EXPECT_EQ(readFile(dir.file("a.jpg")), encoded(".jpg", image));
    EXPECT_EQ(readFile(dir.file("a.pgm")), encoded(".pgm", image));
}

TEST(DebuggerWrite, WritesAViewLikeItsCopy) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = debuggerIn(dir.path(), true);
    debugger->write("a.png", asView(labels("1 2\n3 4")));
    debugger->write("b.png", asView(values("0 1\n0.5 0")));
    EXPECT_EQ(readFile(dir.file("a.png")), encoded(".png", labels("1 2\n3 4")));
    EXPECT_EQ(readFile(dir.file("b.png")), encoded(".png", labels("0 255\n128 0")));
}

TEST(DebuggerWrite, LeavesOtherDepthsToTheEncoder) {
    const TempDir dir;
    const ConsoleCapture console;
    const cv::Mat image = labels32("0 7 255");
    debuggerIn(dir.path(), true)->write("a.png", image);
    ASSERT_TRUE(cv::imwrite(dir.file("plain.png"), image));
    EXPECT_EQ(readFile(dir.file("a.png")), readFile(dir.file("plain.png")));
}

TEST(DebuggerWrite, TellsAFailure) {
    const TempDir dir;
    const ConsoleCapture console;
    debuggerIn(dir.path(), true)->write("missing/a.png", labels("1 2"));
    EXPECT_THAT(console.lines(),
                ElementsAre(ConsoleLine{
                    "ERROR", "Failed to write image: " + dir.path() + "/missing/a.png"}));
}

TEST(DebuggerWrite, TellsEachFailureWhereTheOutputDirectoryIsAFile) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::string file = dir.write("file", "content");
    const std::shared_ptr<Debugger> debugger = debuggerIn(file, true);
    debugger->write("a.png", labels("1 2"));
    debugger->showAndWrite("b", labels("1 2"));
    EXPECT_THAT(console.lines(),
                ElementsAre(ConsoleLine{"ERROR", "Failed to write image: " + file + "/a.png"},
                            ConsoleLine{"ERROR", "Failed to write image: " + file + "/b.png"}));
    EXPECT_EQ(readFile(file), "content");
}

TEST(DebuggerWrite, LetsTheEncodersExceptionPass) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = debuggerIn(dir.path(), true);
    EXPECT_THROW(debugger->write("a.unknown", labels("1 2")), cv::Exception);
    EXPECT_THROW(debugger->write("without_extension", labels("1 2")), cv::Exception);
    EXPECT_THAT(console.lines(), IsEmpty());
    // It stays usable.
    debugger->write("a.png", labels("1 2"));
    EXPECT_THAT(dir.names(), ElementsAre("a.png"));
}

TEST(DebuggerWrite, DoesNothingWithAnEmptyImage) {
    const TempDir dir;
    const ConsoleCapture console;
    for (const bool save_images : {false, true}) {
        const std::shared_ptr<Debugger> debugger = debuggerIn(dir.path(), save_images);
        for (const cv::Mat& image : emptyImages()) {
            debugger->show("a", image);
            debugger->write("a.png", image);
            debugger->write("a.unknown", image, true);
            debugger->showAndWrite("a", image);
            debugger->showAndWrite("a", image, "b.png", true);
        }
    }
    EXPECT_THAT(dir.names(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST(DebuggerShowAndWrite, NamesTheFileAfterTheStageOrAsAsked) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = debuggerIn(dir.path(), true);
    debugger->showAndWrite("30cpp_x", labels("1 2"));
    debugger->showAndWrite("30cpp_x", labels("3 4"), "y.jpg");
    debugger->showAndWrite("30cpp_x", labels("5 6"), "z.png", false);
    EXPECT_THAT(dir.names(), ElementsAre("30cpp_x.png", "y.jpg", "z.png"));
    EXPECT_THAT(readBack(dir.file("30cpp_x.png")), MatEq(labels("1 2")));
    EXPECT_EQ(readFile(dir.file("y.jpg")), encoded(".jpg", labels("3 4")));
    EXPECT_THAT(readBack(dir.file("z.png")), MatEq(labels("5 6")));
}

TEST(DebuggerShowAndWrite, HandsTheForceFlagOn) {
    const TempDir dir;
    const ConsoleCapture console;
    const std::shared_ptr<Debugger> debugger = debuggerIn(dir.path(), false);
    debugger->showAndWrite("a", labels("1 2"));
    debugger->showAndWrite("b", labels("1 2"), "", true);
    debugger->showAndWrite("c", labels("1 2"), "d.png", true);
    EXPECT_THAT(dir.names(), ElementsAre("b.png", "d.png"));
}

TEST(DebuggerShow, DoesNothingUnlessImagesAreShown) {
    const TempDir dir;
    const ConsoleCapture console;
    debuggerIn(dir.path(), true)->show("window", labels("1 2"));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(dir.names(), IsEmpty());
}

TEST(PrepareImageForSaving, ScalesFloatsOfOneOrThreeChannels) {
    EXPECT_THAT(Debugger::prepareImageForSaving(values("0 0.5 1\n-0.1 1.5 0.2")),
                MatEq(labels("0 128 255\n0 255 51")));
    EXPECT_THAT(Debugger::prepareImageForSaving(asView(values("0 0.5\n1 0.2"))),
                MatEq(labels("0 128\n255 51")));
    EXPECT_THAT(
        Debugger::prepareImageForSaving(cv::Mat(2, 3, CV_32FC3, cv::Scalar(0.5, -1.0, 2.0))),
        MatEq(cv::Mat(2, 3, CV_8UC3, cv::Scalar(128, 0, 255))));
}

TEST(PrepareImageForSaving, SharesThePixelsOfEveryOtherType) {
    for (const int type : {CV_8UC1, CV_8UC3, CV_16UC1, CV_32SC1, CV_64FC1, CV_32FC2, CV_32FC4}) {
        const cv::Mat image = cv::Mat::ones(2, 3, type);
        const cv::Mat prepared = Debugger::prepareImageForSaving(image);
        EXPECT_EQ(prepared.type(), type);
        EXPECT_EQ(prepared.size(), image.size());
        EXPECT_EQ(prepared.data, image.data);
    }
}

TEST(PrepareImageForSaving, LeavesItsInputAsItIs) {
    const cv::Mat image = values("0 0.5 1.5");
    Debugger::prepareImageForSaving(image);
    EXPECT_THAT(image, MatEq(values("0 0.5 1.5")));
}

}  // namespace
}  // namespace vorund
