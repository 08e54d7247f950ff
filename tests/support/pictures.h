#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "support/captures.h"
#include "vorund/debugger.h"

namespace vorund::test {

/// A debugger that writes every picture into the folder, which must outlive it.
inline std::shared_ptr<Debugger> savingDebugger(const TempDir& folder) {
    DebuggerConfig config;
    config.save_images = true;
    config.output_dir = folder.path();
    return Debugger::create(config);
}

/// A debugger that would write into the folder, but is not told to write pictures.
inline std::shared_ptr<Debugger> idleDebugger(const TempDir& folder) {
    DebuggerConfig config;
    config.output_dir = folder.path();
    return Debugger::create(config);
}

/// A picture of the folder as it was written, or an empty image.
inline cv::Mat readPicture(const TempDir& folder, const std::string& name) {
    return cv::imread(folder.file(name), cv::IMREAD_UNCHANGED);
}

/// Of a coloured picture, 255 where any channel is not 0.
inline cv::Mat drawnPixels(const cv::Mat& picture) {
    cv::Mat black;
    cv::inRange(picture, cv::Scalar::all(0), cv::Scalar::all(0), black);
    return ~black;
}

inline bool hasPixel(const cv::Mat& picture, const cv::Vec3b& colour) {
    cv::Mat same;
    cv::inRange(picture, colour, colour, same);
    return cv::countNonZero(same) > 0;
}

}  // namespace vorund::test
