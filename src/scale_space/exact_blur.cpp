#include "scale_space/exact_blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace vorund::internal {
namespace {

/// Measured, in pixels of a blur of the whole map with a kernel of as many weights.
constexpr double kCostOfEdges = 15.0;
constexpr double kCostOfBlur = 100.0;

/// The corners' weights, up to some thousands of them, cancel in double precision.
constexpr double kRoundingOfEdges = 1e-12;

}  // namespace

int gaussianKernelSize(double sigma) {
    return cvRound(sigma * 8.0 + 1.0) | 1;
}

void gaussianBlur(const cv::Mat& image, cv::Mat& blurred, double sigma) {
    // Isolated: as if the image were no part of a larger one.
    cv::GaussianBlur(image, blurred, cv::Size(0, 0), sigma, 0.0,
                     cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
}

ExactBlur::ExactBlur(const BinaryEdges& edges, double sigma, float threshold)
    : edges_(edges),
      kernel_(cv::getGaussianKernel(gaussianKernelSize(sigma), sigma, CV_32F)),
      threshold_(threshold),
      radius_(kernel_.rows / 2),
      rest_(static_cast<std::size_t>(kernel_.rows) + 1, 0.0),
      // No term is negative, so that the sums along rows and along columns are each off by no more
      // than their number of roundings times half an epsilon (N. J. Higham, "Accuracy and Stability
      // of Numerical Algorithms", 2002, section 4.2).
      rounding_((kernel_.rows + 4) * static_cast<double>(std::numeric_limits<float>::epsilon())) {
    for (int i = kernel_.rows; i-- > 0;) {
        const auto index = static_cast<std::size_t>(i);
        rest_[index] = rest_[index + 1] + static_cast<double>(kernel_.at<float>(i));
    }
}

bool ExactBlur::isAtMostThreshold(int row, int col) {
    cost_ += kCostOfEdges;
    const double threshold = static_cast<double>(threshold_);
    const double about = sumOverEdges(row, col);
    const double slack = rounding_ * std::abs(threshold) + kRoundingOfEdges;
    if (about <= threshold - slack) return true;
    if (about > threshold + slack) return false;
    cost_ += kCostOfBlur;
    return sumAsOpenCv(row, col) <= threshold_;
}

/// The weights of a line of the window where it is wall. `wall` is what the line is at `first`, its
/// first pixel on the map; `left` is where the window starts.
double ExactBlur::sumOverSteps(const int* step, const int* end, bool wall, int left,
                               int first) const {
    double sum = wall ? rest_.front() : 0.0;
    const int right = left + kernel_.rows;
    for (step = std::upper_bound(step, end, first); step != end && *step < right; ++step) {
        const double rest = rest_[static_cast<std::size_t>(*step - left)];
        sum += wall ? -rest : rest;
        wall = !wall;
    }
    return sum;
}

/// The map in the window is its first row, and the changes of its first column, and what each
/// corner changes in everything below and right of it.
double ExactBlur::sumOverEdges(int row, int col) const {
    const int top = row - radius_;
    const int left = col - radius_;
    const int first_row = std::max(top, 0);
    const int first_col = std::max(left, 0);
    const bool wall = edges_.pixels.at<std::uint8_t>(first_row, first_col) != 0;
    const RowSteps& rows = edges_.along_rows;
    const RowSteps& columns = edges_.along_columns;
    const double all = rest_.front();
    double sum =
        all * sumOverSteps(rows.begin(first_row), rows.end(first_row), wall, left, first_col);
    sum += all *
           (sumOverSteps(columns.begin(first_col), columns.end(first_col), wall, top, first_row) -
            (wall ? all : 0.0));

    const int end_row = std::min(row + radius_ + 1, edges_.pixels.rows);
    const int end_col = std::min(col + radius_ + 1, edges_.pixels.cols);
    const cv::Rect window(cv::Point(first_col, first_row), cv::Point(end_col, end_row));
    edges_.corners.visitTiles(window, [&](const Corner& corner) {
        // The first row and column hold no corners of the window's own.
        if (corner.row <= first_row || corner.row >= end_row || corner.col <= first_col ||
            corner.col >= end_col) {
            return;
        }
        sum += corner.change * rest_[static_cast<std::size_t>(corner.row - top)] *
               rest_[static_cast<std::size_t>(corner.col - left)];
    });
    return sum;
}

/// By OpenCV's own filters, along the rows of the window and then down its middle column, as in a
/// blur of the whole map. Of equal rows one is enough.
float ExactBlur::sumAsOpenCv(int row, int col) const {
    const cv::Mat& pixels = edges_.pixels;
    const int begin = std::max(col - radius_, 0);
    const int end = std::min(col + radius_ + 1, pixels.cols);
    std::vector<int> distinct;
    cv::Mat index_of_row(kernel_.rows, 1, CV_32SC1);
    for (int i = 0; i < kernel_.rows; ++i) {
        const int inside = std::clamp(row - radius_ + i, 0, pixels.rows - 1);
        const auto size = static_cast<std::size_t>(end - begin);
        if (distinct.empty() ||
            std::memcmp(pixels.ptr<std::uint8_t>(inside, begin),
                        pixels.ptr<std::uint8_t>(distinct.back(), begin), size) != 0) {
            distinct.push_back(inside);
        }
        index_of_row.at<int>(i) = static_cast<int>(distinct.size()) - 1;
    }
    cv::Mat rows(static_cast<int>(distinct.size()), kernel_.rows, CV_32FC1);
    for (int i = 0; i < rows.rows; ++i) {
        const std::uint8_t* const from =
            pixels.ptr<std::uint8_t>(distinct[static_cast<std::size_t>(i)]);
        float* const to = rows.ptr<float>(i);
        const int before = begin - (col - radius_);
        std::fill(to, to + before, static_cast<float>(from[begin]));
        std::copy(from + begin, from + end, to + before);
        std::fill(to + before + end - begin, to + rows.cols, static_cast<float>(from[end - 1]));
    }

    const cv::Mat identity = cv::Mat::ones(1, 1, CV_32F);
    const cv::Point centre(-1, -1);
    cv::Mat sums;
    cv::sepFilter2D(rows.col(radius_), sums, CV_32F, kernel_, identity, centre, 0.0,
                    cv::BORDER_REPLICATE);
    cv::Mat column(kernel_.rows, 1, CV_32FC1);
    for (int i = 0; i < column.rows; ++i)
        column.at<float>(i) = sums.at<float>(index_of_row.at<int>(i));
    cv::Mat pixel;
    cv::sepFilter2D(column.row(radius_), pixel, CV_32F, identity, kernel_, centre, 0.0,
                    cv::BORDER_REPLICATE);
    return pixel.at<float>(0);
}

}  // namespace vorund::internal
