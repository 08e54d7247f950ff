#include "vorund/rooms/resampling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>

#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

constexpr std::int64_t kWorkingNanometres = 50'000'000;
constexpr double kNanometresPerMetre = 1e9;

void require(bool condition, const char* message) {
    if (!condition) throw std::invalid_argument(message);
}

std::string text(double number) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << number;
    return stream.str();
}

std::string describe(const cv::Size& size, double resolution) {
    return "the map has " + std::to_string(size.width) + " x " + std::to_string(size.height) +
           " pixels of " + text(resolution) + " m";
}

std::int64_t toNanometres(const cv::Size& size, double resolution) {
    if (!(resolution > 0.0) || !std::isfinite(resolution)) {
        throw MapError("the resolution must be positive and finite, not " + text(resolution));
    }
    // Roughly and in floating point, so that the exact numbers below fit into 64 bits.
    const double scale = resolution / kWorkingResolution;
    if (size.width * scale * size.height * scale > 2.0 * Resampling::kMostPixels) {
        throw MapError(describe(size, resolution) + ": too large to be worked on");
    }
    const auto nanometres =
        static_cast<std::int64_t>(std::llround(resolution * kNanometresPerMetre));
    const double width = static_cast<double>(size.width * nanometres);
    const double height = static_cast<double>(size.height * nanometres);
    if (width * height < kNanometresPerMetre * kNanometresPerMetre) {
        throw MapError(describe(size, resolution) + ": it is smaller than 1 m^2");
    }
    return nanometres;
}

/// Index of the cell of width `cell` that holds the centre of cell `index` of width `own`.
/// In half nanometres, where every centre is a whole number.
std::int64_t cellOfCentre(std::int64_t index, std::int64_t own, std::int64_t cell) {
    return (2 * index + 1) * own / (2 * cell);
}

/// A finer map ends with the last working pixel that holds a centre of it, a coarser one with the
/// last working pixel whose centre it holds; so either kind of pixel always has one of the other.
std::int64_t workingLength(std::int64_t length, std::int64_t own) {
    if (own <= kWorkingNanometres) return cellOfCentre(length - 1, own, kWorkingNanometres) + 1;
    return (2 * length * own - 1 + kWorkingNanometres) / (2 * kWorkingNanometres);
}

std::vector<int> cellsOfCentres(int length, std::int64_t own, std::int64_t cell) {
    std::vector<int> cells;
    cells.reserve(static_cast<std::size_t>(length));
    for (int index = 0; index < length; ++index) {
        cells.push_back(static_cast<int>(cellOfCentre(index, own, cell)));
    }
    return cells;
}

int at(const std::vector<int>& cells, int index) {
    return cells[static_cast<std::size_t>(index)];
}

/// Whether one of the four neighbours is open.
bool isBesideOpen(const cv::Mat& open, int row, int col) {
    const auto isOpen = [&](int r, int c) { return open.ptr<std::uint8_t>(r)[c] != 0; };
    return (row > 0 && isOpen(row - 1, col)) || (row + 1 < open.rows && isOpen(row + 1, col)) ||
           (col > 0 && isOpen(row, col - 1)) || (col + 1 < open.cols && isOpen(row, col + 1));
}

/// Whether the row or one beside it has open pixels.
bool isRowBesideOpen(const cv::Mat& open, int row) {
    const cv::Range rows(std::max(row - 1, 0), std::min(row + 2, open.rows));
    return cv::countNonZero(open.rowRange(rows)) > 0;
}

/// Spreads labels over the pixels of `open`, breadth first. First come, first served: the queue
/// starts in raster order and keeps it among equal distances.
template <class T>
void floodInPlace(cv::Mat& labels, const cv::Mat& open) {
    const std::array<cv::Point, 4> steps{{{0, -1}, {-1, 0}, {1, 0}, {0, 1}}};
    const cv::Rect inside({0, 0}, labels.size());
    std::vector<cv::Point> queue;
    const auto growFrom = [&](const cv::Point& from) {
        for (const cv::Point& step : steps) {
            const cv::Point to = from + step;
            if (!inside.contains(to) || open.at<std::uint8_t>(to) == 0) continue;
            if (labels.at<T>(to) != 0) continue;
            labels.at<T>(to) = labels.at<T>(from);
            queue.push_back(to);
        }
    };
    if (cv::countNonZero(open) == 0) return;
    const cv::Mat first = labels.clone();
    for (int row = 0; row < first.rows; ++row) {
        if (!isRowBesideOpen(open, row)) continue;
        const T* const label = first.ptr<T>(row);
        for (int col = 0; col < first.cols; ++col) {
            if (label[col] != 0 && isBesideOpen(open, row, col)) growFrom({col, row});
        }
    }
    for (std::size_t next = 0; next < queue.size(); ++next) growFrom(cv::Point(queue[next]));
}

}  // namespace

Resampling::Resampling(const cv::Size& size, double resolution) : size_(size) {
    const std::int64_t own = toNanometres(size, resolution);
    const std::int64_t longest = std::max(size.width, size.height);
    identity_ = 2 * longest * std::abs(own - kWorkingNanometres) < kWorkingNanometres;
    finer_ = own <= kWorkingNanometres;
    const std::int64_t width = identity_ ? size.width : workingLength(size.width, own);
    const std::int64_t height = identity_ ? size.height : workingLength(size.height, own);
    if (width > kMostPixels / height) {
        throw MapError(describe(size, resolution) + ", at 0.05 m " + std::to_string(width) + " x " +
                       std::to_string(height) + ": too large to be worked on");
    }
    working_size_ = cv::Size(static_cast<int>(width), static_cast<int>(height));
    if (identity_) return;
    working_col_of_ = cellsOfCentres(size.width, own, kWorkingNanometres);
    working_row_of_ = cellsOfCentres(size.height, own, kWorkingNanometres);
    if (finer_) return;
    own_col_of_ = cellsOfCentres(working_size_.width, kWorkingNanometres, own);
    own_row_of_ = cellsOfCentres(working_size_.height, kWorkingNanometres, own);
}

cv::Mat Resampling::toWorking(const cv::Mat& values) const {
    require(values.type() == CV_32FC1 && values.size() == size_,
            "Resampling::toWorking: The values must be CV_32FC1 and of the map's size.");
    if (identity_) return values.clone();
    cv::Mat working(working_size_, CV_32FC1, cv::Scalar(0.0));
    if (finer_) {
        for (int row = 0; row < values.rows; ++row) {
            const float* const own = values.ptr<float>(row);
            float* const highest = working.ptr<float>(at(working_row_of_, row));
            for (int col = 0; col < values.cols; ++col) {
                float& value = highest[at(working_col_of_, col)];
                value = std::max(value, own[col]);
            }
        }
        return working;
    }
    for (int row = 0; row < working.rows; ++row) {
        const float* const own = values.ptr<float>(at(own_row_of_, row));
        float* const value = working.ptr<float>(row);
        for (int col = 0; col < working.cols; ++col) value[col] = own[at(own_col_of_, col)];
    }
    return working;
}

template <class T>
cv::Mat Resampling::anyLabelsToMap(const cv::Mat& labels, const cv::Mat& values) const {
    const cv::Mat working = toWorking(values);
    cv::Mat own(size_, labels.type(), cv::Scalar(0));
    cv::Mat lost(size_, CV_8UC1, cv::Scalar(0));
    for (int row = 0; row < own.rows; ++row) {
        const int working_row = at(working_row_of_, row);
        const float* const value = values.ptr<float>(row);
        const float* const there = working.ptr<float>(working_row);
        const T* const label = labels.ptr<T>(working_row);
        for (int col = 0; col < own.cols; ++col) {
            if (value[col] > kWallThreshold) continue;
            const int working_col = at(working_col_of_, col);
            own.ptr<T>(row)[col] = label[working_col];
            if (there[working_col] > kWallThreshold) lost.ptr<std::uint8_t>(row)[col] = 1;
        }
    }
    floodInPlace<T>(own, lost);
    return own;
}

cv::Mat Resampling::labelsToMap(const cv::Mat& labels, const cv::Mat& values) const {
    require(
        (labels.type() == CV_8UC1 || labels.type() == CV_32SC1) && labels.size() == working_size_,
        "Resampling::labelsToMap: The labels must be CV_8UC1 or CV_32SC1 and of the working "
        "size.");
    require(values.type() == CV_32FC1 && values.size() == size_,
            "Resampling::labelsToMap: The values must be CV_32FC1 and of the map's size.");
    if (identity_) return labels.clone();
    return labels.type() == CV_8UC1 ? anyLabelsToMap<std::uint8_t>(labels, values)
                                    : anyLabelsToMap<std::int32_t>(labels, values);
}

cv::Mat Resampling::maskToMap(const cv::Mat& mask, const cv::Mat& values) const {
    require(mask.type() == CV_8UC1 && mask.size() == working_size_,
            "Resampling::maskToMap: The mask must be CV_8UC1 and of the working size.");
    require(values.type() == CV_32FC1 && values.size() == size_,
            "Resampling::maskToMap: The values must be CV_32FC1 and of the map's size.");
    if (identity_) return mask.clone();
    cv::Mat own(size_, CV_8UC1);
    for (int row = 0; row < own.rows; ++row) {
        const std::uint8_t* const there = mask.ptr<std::uint8_t>(at(working_row_of_, row));
        std::uint8_t* const pixel = own.ptr<std::uint8_t>(row);
        for (int col = 0; col < own.cols; ++col) pixel[col] = there[at(working_col_of_, col)];
    }
    own.setTo(0, values > static_cast<double>(kWallThreshold));
    return own;
}

}  // namespace vorund::rooms
