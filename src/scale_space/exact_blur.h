#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "scale_space/binary_edges.h"

namespace vorund::internal {

/// Says of single pixels whether `cv::GaussianBlur` of a whole binary map leaves them at or below
/// a threshold: the same answers, bit for bit, for the price of a few pixels.
class ExactBlur {
 public:
    /// @param edges  Of a map with at least two rows and two columns, since along a single one
    ///               OpenCV does not blur. It must outlive this object.
    ExactBlur(const BinaryEdges& edges, double sigma, float threshold);

    bool isAtMostThreshold(int row, int col);

    /// What the answers so far have cost, in pixels of a blur of the whole map.
    double cost() const { return cost_; }

 private:
    double sumOverEdges(int row, int col) const;
    double sumOverSteps(const int* step, const int* end, bool wall, int left, int first) const;
    float sumAsOpenCv(int row, int col) const;

    const BinaryEdges& edges_;
    cv::Mat kernel_;
    float threshold_;
    int radius_;
    std::vector<double> rest_;  ///< The sum of the kernel's weights from the i-th on.
    double rounding_;
    double cost_ = 0.0;
};

/// The side of the kernel that `cv::GaussianBlur` chooses for float images. [pixels]
int gaussianKernelSize(double sigma);

/// `cv::GaussianBlur` with the kernel's size by `sigma`; edge pixels count as repeated.
void gaussianBlur(const cv::Mat& image, cv::Mat& blurred, double sigma);

}  // namespace vorund::internal
