#include "window.h"

#include <opencv2/highgui.hpp>

#include "interrupts.h"
#include "vorund/debugger.h"

namespace vorund::app {
namespace {

constexpr char kWindow[] = "vorund: rooms";

}  // namespace

std::string whyNothingCanBeShown() {
    return displayAvailable() ? "" : "no display can be had";
}

void showUntilKey(const cv::Mat& picture) {
    constexpr int kPollMs = 100;  // An interrupt does not end the wait of a window.
    cv::imshow(kWindow, picture);
    while (cv::waitKey(kPollMs) < 0 && notedInterrupt() == 0) {
        if (cv::getWindowProperty(kWindow, cv::WND_PROP_VISIBLE) < 1.0) return;
    }
}

}  // namespace vorund::app
