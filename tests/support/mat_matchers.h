#pragma once

#include <gmock/gmock.h>

#include <opencv2/core.hpp>
#include <ostream>

namespace vorund::test {

/// Matches an image of the same type and size with the same bytes. A failure prints both images,
/// if they are small, and the first pixel that differs.
::testing::Matcher<const cv::Mat&> MatEq(const cv::Mat& expected);

}  // namespace vorund::test

namespace cv {

/// How GoogleTest prints an image: type, size and, if it is small, its pixels as in a drawn grid.
/// It stands in this namespace because GoogleTest looks it up by the type of its argument.
void PrintTo(const Mat& image, std::ostream* out);

}  // namespace cv
