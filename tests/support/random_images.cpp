#include "support/random_images.h"

#include <algorithm>

namespace vorund::test {

int RandomImages::below(int count) {
    return static_cast<int>(generator_() % static_cast<std::uint32_t>(count));
}

cv::Size RandomImages::size(int max_side) {
    const int rows = 1 + below(max_side);
    return cv::Size(1 + below(max_side), rows);
}

cv::Mat RandomImages::bytes(const cv::Size& size, int count) {
    cv::Mat_<uchar> image(size);
    for (uchar& pixel : image) pixel = static_cast<uchar>(below(count));
    return image;
}

cv::Mat RandomImages::floats(const cv::Size& size, int count) {
    cv::Mat_<float> image(size);
    const auto largest = static_cast<float>(std::max(count - 1, 1));
    for (float& pixel : image) pixel = static_cast<float>(below(count)) / largest;
    return image;
}

cv::Mat RandomImages::markers(const cv::Size& size, int count, int spacing) {
    cv::Mat_<int> image(size);
    for (int& pixel : image) pixel = below(spacing) == 0 ? 1 + below(count) : 0;
    return image;
}

cv::Mat RandomImages::patches(const cv::Size& size, int count, int background) {
    cv::Mat image(size, CV_8UC1, cv::Scalar(background));
    for (int label = 1; label <= count; ++label) {
        const cv::Point corner(below(size.width), below(size.height));
        const cv::Size patch(1 + below(size.width - corner.x), 1 + below(size.height - corner.y));
        image(cv::Rect(corner, patch)) = label;
    }
    return image;
}

}  // namespace vorund::test
