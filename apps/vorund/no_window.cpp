// In the place of window.cpp where VORUND_WITH_WINDOWS is OFF.
#include "window.h"

namespace vorund::app {

std::string whyNothingCanBeShown() {
    return "this program is built without windows";
}

void showUntilKey(const cv::Mat&) {
    // Without a window there is no key to wait for.
}

}  // namespace vorund::app
