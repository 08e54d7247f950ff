#include "support/label_grid.h"

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace vorund::test {
namespace {

constexpr int kMargin = 3;

double parsePixel(const std::string& word) {
    if (word == ".") return 0.0;
    std::size_t used = 0;
    double value = 0.0;
    try {
        value = std::stod(word, &used);
    } catch (const std::logic_error&) {
        used = 0;
    }
    if (used != word.size()) throw std::invalid_argument("grid: not a number: " + word);
    return value;
}

std::vector<double> parseRow(const std::string& line) {
    std::istringstream words(line);
    std::vector<double> row;
    for (std::string word; words >> word;) row.push_back(parsePixel(word));
    return row;
}

template <class T>
cv::Mat parseGrid(const std::string& grid) {
    cv::Mat image;
    std::istringstream lines(grid);
    for (std::string line; std::getline(lines, line);) {
        const std::vector<double> row = parseRow(line);
        if (row.empty()) continue;
        cv::Mat_<T> pixels(1, static_cast<int>(row.size()));
        for (int col = 0; col < pixels.cols; ++col) {
            const double value = row[static_cast<std::size_t>(col)];
            pixels(0, col) = cv::saturate_cast<T>(value);
            if (cv::DataType<T>::depth != CV_32F && static_cast<double>(pixels(0, col)) != value) {
                throw std::invalid_argument("grid: out of range: " + std::to_string(value));
            }
        }
        if (!image.empty() && image.cols != pixels.cols) {
            throw std::invalid_argument("grid: rows of different lengths: " + line);
        }
        image.push_back(pixels);
    }
    return image;
}

}  // namespace

cv::Mat labels(const std::string& grid) {
    return parseGrid<std::uint8_t>(grid);
}

cv::Mat labels32(const std::string& grid) {
    return parseGrid<int>(grid);
}

cv::Mat values(const std::string& grid) {
    return parseGrid<float>(grid);
}

cv::Mat asView(const cv::Mat& image) {
    cv::Mat garbage(image.rows + 2 * kMargin, image.cols + 2 * kMargin,
                    CV_MAKETYPE(CV_8U, image.channels()));
    for (int row = 0; row < garbage.rows; ++row) {
        std::uint8_t* const bytes = garbage.ptr<std::uint8_t>(row);
        const int count = garbage.cols * garbage.channels();
        // Small numbers: as labels, costs, walls or masks they would all be taken for real pixels.
        for (int i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(1 + (row + i) % 7);
    }
    cv::Mat larger;
    garbage.convertTo(larger, image.depth());
    cv::Mat view = larger(cv::Rect(kMargin, kMargin, image.cols, image.rows));
    image.copyTo(view);
    return view;
}

}  // namespace vorund::test
