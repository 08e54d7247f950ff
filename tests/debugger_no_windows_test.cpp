#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "support/captures.h"
#include "support/mat_matchers.h"
#include "vorund/debugger.h"

// Of a library that is built without windows.
namespace vorund {
namespace {

using ::testing::ElementsAre;

constexpr char kWarning[] = "Images are not shown: the library is built without windows";

TEST(DebuggerWithoutWindows, SaysOncePerDebuggerThatNothingIsShown) {
    const test::ConsoleCapture console;
    DebuggerConfig config;
    config.show_images = true;
    const cv::Mat image(20, 30, CV_8UC1, cv::Scalar(5));
    for (int i = 0; i < 2; ++i) {
        const std::shared_ptr<Debugger> debugger = Debugger::create(config);
        debugger->show("empty", cv::Mat());
        debugger->show("rooms", image);
        debugger->show("doors", image);
    }
    EXPECT_THAT(console.texts("WARN"), ElementsAre(kWarning, kWarning));
    EXPECT_EQ(console.lines().size(), 2U);
}

TEST(DebuggerWithoutWindows, HasNoDisplayWhateverTheSurroundings) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    EXPECT_FALSE(displayAvailable());
    unsetenv("QT_QPA_PLATFORM");
}

TEST(DebuggerWithoutWindows, StillWritesImages) {
    const test::ConsoleCapture console;
    const test::TempDir folder;
    DebuggerConfig config;
    config.show_images = true;
    config.save_images = true;
    config.output_dir = folder.path();
    const cv::Mat image(20, 30, CV_8UC1, cv::Scalar(5));
    Debugger::create(config)->showAndWrite("rooms", image);
    const cv::Mat written = cv::imread(folder.path() + "/rooms.png", cv::IMREAD_UNCHANGED);
    EXPECT_THAT(written, test::MatEq(image));
    EXPECT_THAT(console.texts("WARN"), ElementsAre(kWarning));
}

}  // namespace
}  // namespace vorund
