// In the place of windows.cpp and display.cpp where VORUND_WITH_WINDOWS is OFF.
#include "debugger/windows.h"
#include "vorund/debugger.h"

namespace vorund {

std::string internal::showInWindow(const std::string&, const cv::Mat&) {
    return "the library is built without windows";
}

bool displayAvailable() {
    return false;
}

}  // namespace vorund
