#include "families/rays.h"

namespace vorund::test::families {
namespace {

// Linear between tenths of a degree, where turnOf is exact enough.
std::vector<Direction> allDirections() {
    std::vector<Direction> directions;
    directions.reserve(36000);
    for (int tenths = 0; tenths < 3600; ++tenths) {
        const Turn low = turnOf(tenths), high = turnOf(tenths + 1);
        for (std::int64_t part = 0; part < 10; ++part) {
            const std::int64_t x = low.cosine * (10 - part) + high.cosine * part;
            const std::int64_t y = low.sine * (10 - part) + high.sine * part;
            directions.push_back(
                {static_cast<std::int32_t>(x / 10), static_cast<std::int32_t>(y / 10)});
        }
    }
    return directions;
}

std::uint8_t next(int nearest) {
    return static_cast<std::uint8_t>(std::min(254, nearest) + 1);
}

// One sweep of the two that a chessboard distance takes; beyond the picture nothing stops a ray.
void sweep(cv::Mat& clearance, int step) {
    const int rows = clearance.rows, cols = clearance.cols;
    const int first_row = step > 0 ? 0 : rows - 1, first_col = step > 0 ? 0 : cols - 1;
    for (int row = first_row; row >= 0 && row < rows; row += step) {
        std::uint8_t* own = clearance.ptr<std::uint8_t>(row);
        const bool has_before = row - step >= 0 && row - step < rows;
        const std::uint8_t* before = clearance.ptr<std::uint8_t>(has_before ? row - step : row);
        for (int col = first_col; col >= 0 && col < cols; col += step) {
            if (own[col] == 0) continue;
            const int left = std::max(0, col - 1), right = std::min(cols - 1, col + 1);
            int nearest = std::min({before[left], before[col], before[right]});
            if (col - step >= 0 && col - step < cols) {
                nearest = std::min<int>(nearest, own[col - step]);
            }
            own[col] = std::min(own[col], next(nearest));
        }
    }
}

}  // namespace

Direction directionOf(int hundredths) {
    static const std::vector<Direction> directions = allDirections();
    return directions[static_cast<std::size_t>((hundredths % 36000 + 36000) % 36000)];
}

Place middleOf(int row, int col) {
    return {col * Place::kSub + Place::kSub / 2, row * Place::kSub + Place::kSub / 2};
}

RayField::RayField(const Canvas& canvas)
    : canvas_(canvas), clearance_(canvas.material.size(), CV_8UC1, cv::Scalar(255)) {
    clearance_.setTo(cv::Scalar(0), canvas.material > kFloor);
    sweep(clearance_, 1);
    sweep(clearance_, -1);
}

}  // namespace vorund::test::families
