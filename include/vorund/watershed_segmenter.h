#pragma once

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>

#include "vorund/config.h"
#include "vorund/debugger.h"
#include "vorund/export.h"

namespace vorund {

/// One entry of the flooding queue.
struct WatershedQueueItem {
    double value;         ///< Flood level at which the pixel is reached.
    std::int32_t age;     ///< Counts the insertions; the older of two equal levels goes first.
    std::int64_t index;   ///< Pixel, as row * cols + column.
    std::int64_t source;  ///< Seed pixel whose label the entry carries.
};

/// Seeds of one Gaussian scale.
struct GaussianSeedsResult {
    /// `CV_8UC1`: 0 = above the threshold, 1 to 254 = seed, 255 = background by the mask, and also
    /// every seed from the 255th on.
    cv::Mat labels;
    int ncc;  ///< Number of seeds; not limited by the 8 bits of `labels`.
};

/// Seeds from a blurred map, and the flooding of an image from seeds. Stateless.
class VORUND_EXPORT WatershedSegmenter {
 public:
    /// Blurs a map with a Gaussian and numbers the 4-connected regions of values up to the
    /// threshold. Beyond its edge the map counts as repeating its edge pixels, also where it is a
    /// view of a larger one.
    /// @param image     `CV_32FC1`, values 0 to 1, walls high.
    /// @param mask      `CV_8UC1` of the same size; where it is not 0 the labels become 255.
    /// @param sigma     Standard deviation of the Gaussian, > 0. [pixels]
    /// @param debugger  Gets a picture of the four steps; may be empty.
    /// @throws std::runtime_error  if the map is a float image but not `CV_32FC1`.
    /// @throws cv::Exception       for types that OpenCV does not blur, for an empty map, and for a
    ///         mask that is smaller than the map.
    static GaussianSeedsResult generateGaussianSeedsSkimage(
        const cv::Mat& image, const cv::Mat& mask, double sigma,
        const Config::GenerateGaussianSeedsSkimageConfig& config,
        std::shared_ptr<Debugger> debugger);

    /// Floods an image from its markers, lowest values first, older entries first among equal
    /// values (S. Beucher and F. Meyer, "The morphological approach to segmentation", 1993). The
    /// outermost frame of pixels is never flooded and keeps its markers.
    ///
    /// Seeds all have age 0; among seeds of equal value the order is that of the binary heap.
    /// With lines, a pixel that touches two labels stays unlabelled but hands its label on; with
    /// 8-connectivity it hands each label on only once, which bounds the queue. (With 4 it hands on
    /// at every pop; lines seldom lie side by side then.)
    ///
    /// @param image           One channel of any depth: the cost.
    /// @param markers         `CV_32S` of the same size: > 0 = seed, else to be flooded. Left as it
    ///                        is.
    /// @param connectivity    4 or 8.
    /// @param watershed_line  Leave one-pixel lines between labels.
    /// @return `CV_32S`: labels; pixels on lines or out of reach keep their marker.
    /// @throws std::runtime_error  for any other connectivity, for other markers, and if the queue
    ///         takes 2^31 items.
    static cv::Mat executeSkimageWatershed(const cv::Mat& image, cv::Mat& markers, int connectivity,
                                           bool watershed_line);

    /// Floods with lines, checks, and swaps 0 and 255: the background (seed 255) becomes 0, lines
    /// and pixels out of reach become 255.
    /// @param src_image  `CV_32FC1`, not empty: the cost.
    /// @param markers    `CV_32S` of the same size; left as it is.
    /// @return `CV_8UC1`.
    /// @throws std::runtime_error  for empty images, other types, sizes that differ, another
    ///         connectivity, and labels outside 0 to 255.
    static cv::Mat createWatershedSegmentSkimage(
        const cv::Mat& src_image, cv::Mat& markers,
        const Config::CreateWatershedSegmentSkimageConfig& config);
};

}  // namespace vorund
