#include "debugger/windows.h"

#include <opencv2/highgui.hpp>

#include "vorund/debugger.h"

namespace vorund::internal {
namespace {

/// Windows do not take 32-bit integers; labels fit into 8 bits, as in the files.
cv::Mat showable(const cv::Mat& image) {
    if (image.depth() != CV_32S) return image;
    cv::Mat bytes;
    image.convertTo(bytes, CV_8U);
    return bytes;
}

}  // namespace

std::string showInWindow(const std::string& window_name, const cv::Mat& image) {
    if (!displayAvailable()) return "no display can be had";
    try {
        cv::imshow(window_name, showable(image));
        cv::waitKey(1);
    } catch (const cv::Exception& error) {
        // OpenCV may be built without windows, or with ones that fail: no reason to end a run.
        return error.what();
    }
    return "";
}

}  // namespace vorund::internal
