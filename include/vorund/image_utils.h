#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "vorund/config.h"
#include "vorund/export.h"

namespace vorund {

/// How much of an image is cut off on each side. `right` and `bottom` are margins, not
/// coordinates: the kept rectangle is `left`, `top`, cols - `left` - `right`,
/// rows - `top` - `bottom`. [pixels]
struct CropInfo {
    int left;
    int top;
    int right;
    int bottom;
};

/// Loading of map images and conversions between their pixel representations.
///
/// A working map is `CV_32FC1` with values 0 to 1. A binary map is a working map of two values, 0
/// and 1. All functions are stateless, leave their input untouched and, unless said otherwise,
/// return a new image. What OpenCV throws passes through.
class VORUND_EXPORT ImageUtils {
 public:
    /// The image as decoded: its own depth (a 16-bit file stays 16-bit) and channels, save that
    /// an alpha channel is dropped.
    /// @throws std::runtime_error  if the file cannot be read as an image.
    static cv::Mat loadMapFromFileUint8(const std::string& path);

    /// The image as `CV_32F`, scaled by 1/255 whatever its depth (a 16-bit file gives values up
    /// to 257); the number of channels is kept, without alpha.
    /// @throws std::runtime_error  if the file cannot be read as an image.
    static cv::Mat loadMapFromFile(const std::string& path);

    /// As `loadMapFromFile`, from the bytes of an encoded image.
    /// @throws std::runtime_error  if the bytes cannot be decoded.
    static cv::Mat loadMapFromBuffer(const std::vector<std::uint8_t>& buffer);

    /// One grey channel of an image with one or three (blue, green, red) channels, same depth.
    /// @throws std::runtime_error  for any other number of channels.
    static cv::Mat makeGray(const cv::Mat& image);

    /// `loadMapFromFile`, then `makeGray`.
    static cv::Mat loadGrayMapFromFile(const std::string& path);

    /// `loadMapFromBuffer`, then `makeGray`.
    static cv::Mat loadGrayMapFromBuffer(const std::vector<std::uint8_t>& buffer);

    /// `max_value` where the pixel is greater than `threshold`, else 0.
    /// @param image  `CV_32FC1`.
    /// @throws std::runtime_error  for any other type.
    static cv::Mat makeBinary(const cv::Mat& image, double threshold, double max_value);

    /// 1 - pixel for `CV_32FC1` (not clamped), 255 - pixel for `CV_8UC1`.
    /// @throws std::runtime_error  for any other type.
    static cv::Mat makeInvert(const cv::Mat& image);

    /// Dilation with a square of `kernel_size` pixels a side, `iterations` times. What lies beyond
    /// the edge of the image never spreads into it, also where the image is a view of a larger one.
    /// @param kernel_size  >= 1, else OpenCV throws.
    /// @param iterations   0 copies.
    static cv::Mat dilateBinary(const cv::Mat& image, int kernel_size, int iterations);

    /// Margins around the content of a map, widened by `padding` pixels on each side. Content is
    /// every pixel that differs from the top left one. Negative padding shrinks the rectangle.
    /// @param image  `CV_32FC1`, compared as bytes: values times 255 that round to the same byte
    ///               count as equal.
    /// @throws std::runtime_error  if the image is empty, uniform, or of another type.
    static CropInfo cropSingleInfo(const cv::Mat& image, int padding);

    /// The kept rectangle as a view that shares its pixels with `image` (any type).
    /// @throws std::runtime_error  if the image is empty or nothing is kept.
    /// @throws cv::Exception  if a negative margin reaches beyond the image.
    static cv::Mat cropBackground(const cv::Mat& image, const CropInfo& crop);

    /// The image put back into one of the full size that holds `fill` elsewhere. A full size that
    /// is empty gives a 0 x 0 image.
    static cv::Mat uncropBackground(const cv::Mat& image, const CropInfo& crop,
                                    const cv::Scalar& fill);

    /// A copy in which `from_value` is replaced by `to_value`. `CV_8UC1` stays, and the low 8 bits
    /// of both values count; any other image becomes `CV_32S`, rounded.
    /// @param from_value  -1 stands for the largest value of the image, truncated.
    static cv::Mat remapBorder(const cv::Mat& image, int from_value, int to_value);

    /// Keeps the connected regions of non-zero pixels (value times 255, rounded) whose area reaches
    /// a threshold: `min_size`
    /// ("fixed"), or the mean or median area of the regions present. Prints the threshold on the
    /// plain output.
    /// @param image  Binary map, `CV_32FC1` with 0 and 1 or `CV_8UC1` with 0 and 255.
    /// @return `CV_32FC1`: 1 on the kept regions, 0 elsewhere.
    /// @throws std::runtime_error  if there is no region at all, or for an unknown method.
    static cv::Mat removeSmallConnectedComponents(
        const cv::Mat& image, const Config::RemoveSmallConnectedComponentsConfig& config);
};

}  // namespace vorund
