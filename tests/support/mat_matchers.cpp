#include "support/mat_matchers.h"

#include <cstring>
#include <limits>
#include <opencv2/core/check.hpp>
#include <sstream>
#include <string>

namespace vorund::test {
namespace {

constexpr int kLargestPrintedSide = 40;

template <class T>
std::string channelText(const cv::Mat& image, int row, int col, int channel) {
    std::ostringstream text;
    // Enough digits that two floats which differ look different.
    text.precision(std::numeric_limits<double>::max_digits10);
    if (image.depth() == CV_32F) text.precision(std::numeric_limits<float>::max_digits10);
    // The sum makes numbers of the 8-bit types, which would be printed as characters.
    text << T{} + image.ptr<T>(row)[col * image.channels() + channel];
    return text.str();
}

std::string channelText(const cv::Mat& image, int row, int col, int channel) {
    switch (image.depth()) {
        case CV_8U:
            return channelText<uchar>(image, row, col, channel);
        case CV_8S:
            return channelText<schar>(image, row, col, channel);
        case CV_16U:
            return channelText<ushort>(image, row, col, channel);
        case CV_16S:
            return channelText<short>(image, row, col, channel);
        case CV_32S:
            return channelText<int>(image, row, col, channel);
        case CV_32F:
            return channelText<float>(image, row, col, channel);
        case CV_64F:
            return channelText<double>(image, row, col, channel);
        default:
            return "?";
    }
}

std::string pixelText(const cv::Mat& image, int row, int col) {
    if (image.channels() == 1) {
        const std::string text = channelText(image, row, col, 0);
        return text == "0" ? "." : text;
    }
    std::string text;
    for (int channel = 0; channel < image.channels(); ++channel) {
        text += (channel == 0 ? "(" : ",") + channelText(image, row, col, channel);
    }
    return text + ")";
}

void printHeading(const cv::Mat& image, std::ostream& out) {
    out << cv::typeToString(image.type()) << ", " << image.rows << " rows, " << image.cols
        << " columns";
}

void printImage(const cv::Mat& image, std::ostream& out) {
    printHeading(image, out);
    if (image.dims > 2 || image.rows > kLargestPrintedSide || image.cols > kLargestPrintedSide) {
        return;
    }
    for (int row = 0; row < image.rows; ++row) {
        out << "\n   ";
        for (int col = 0; col < image.cols; ++col) out << ' ' << pixelText(image, row, col);
    }
    if (!image.empty()) out << '\n';
}

bool samePixel(const cv::Mat& a, const cv::Mat& b, int row, int col) {
    return std::memcmp(a.ptr(row, col), b.ptr(row, col), a.elemSize()) == 0;
}

class MatEqMatcher : public ::testing::MatcherInterface<const cv::Mat&> {
 public:
    explicit MatEqMatcher(const cv::Mat& expected) : expected_(expected.clone()) {}

    bool MatchAndExplain(const cv::Mat& actual,
                         ::testing::MatchResultListener* listener) const override {
        if (actual.dims > 2 || expected_.dims > 2) {
            *listener << "which has more than two dimensions";
            return false;
        }
        if (actual.type() != expected_.type() || actual.size() != expected_.size()) {
            *listener << "which is of another type or size";
            return false;
        }
        for (int row = 0; row < actual.rows; ++row) {
            for (int col = 0; col < actual.cols; ++col) {
                if (samePixel(actual, expected_, row, col)) continue;
                *listener << "which differs first at row " << row << ", column " << col << ": "
                          << pixelText(actual, row, col) << " instead of "
                          << pixelText(expected_, row, col);
                return false;
            }
        }
        return true;
    }

    void DescribeTo(std::ostream* out) const override {
        *out << "is ";
        printImage(expected_, *out);
    }

    void DescribeNegationTo(std::ostream* out) const override {
        *out << "is not ";
        printImage(expected_, *out);
    }

 private:
    cv::Mat expected_;
};

}  // namespace

::testing::Matcher<const cv::Mat&> MatEq(const cv::Mat& expected) {
    return ::testing::MakeMatcher(new MatEqMatcher(expected));
}

}  // namespace vorund::test

void cv::PrintTo(const cv::Mat& image, std::ostream* out) {
    vorund::test::printImage(image, *out);
}
