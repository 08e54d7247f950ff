// Where the turned building lies in the picture. Private to the plan generator.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "plan_building.h"
#include "plan_generator.h"

namespace vorund::test {

/// A box of the building in micrometres, from the building's middle; half open like Box.
struct FineBox {
    std::int64_t x0, y0, x1, y1;
};

/// A turn, as sine and cosine times kOne.
struct Turn {
    static constexpr std::int64_t kOne = std::int64_t{1} << 30;
    std::int64_t sine, cosine;
};

/// Exact at multiples of 90 degrees, elsewhere to 2^-27; in integers only.
Turn turnOf(int tenths_deg);

/// Turns between building and picture about their common middle.
class PlanFrame {
public:
    explicit PlanFrame(const PlanOptions& options);

    std::int64_t columns() const { return columns_; }
    std::int64_t rows() const { return rows_; }

    /// The thickness at which a line at this turn is closed: one pixel wide, no step diagonal.
    std::int64_t closedLine() const { return closed_line_; }

    FineBox fine(const Box& box) const;

    /// The pixel with this point of the building. [mm]
    cv::Point pixelOf(int x, int y) const;

    /// Calls visit(row, col) for each pixel of the picture whose centre lies in the box.
    template <typename Visit>
    void forEachPixel(const FineBox& box, const Visit& visit) const {
        const cv::Rect around = pixelsAround(box);
        const Twice low = twice(box.x0, box.y0), high = twice(box.x1, box.y1);
        for (int row = around.y; row < around.y + around.height; ++row) {
            for (int col = around.x; col < around.x + around.width; ++col) {
                const Twice at = buildingOf(row, col);
                if (at.x >= low.x && at.x < high.x && at.y >= low.y && at.y < high.y) {
                    visit(row, col);
                }
            }
        }
    }

private:
    struct Twice {
        std::int64_t x, y;  // In 2^-31 micrometres: half ones, for pixel centres, times kOne.
    };
    static Twice twice(std::int64_t x, std::int64_t y) {
        return {x * 2 * Turn::kOne, y * 2 * Turn::kOne};
    }
    Twice buildingOf(int row, int col) const {
        const std::int64_t right = (2 * std::int64_t{col} + 1 - columns_) * resolution_;
        const std::int64_t down = (2 * std::int64_t{row} + 1 - rows_) * resolution_;
        return {turn_.cosine * right - turn_.sine * down, turn_.sine * right + turn_.cosine * down};
    }
    cv::Rect pixelsAround(const FineBox& box) const;
    cv::Point pixelOfFine(std::int64_t x, std::int64_t y) const;

    std::int64_t width_mm_, height_mm_, resolution_;
    Turn turn_;
    std::int64_t columns_ = 0, rows_ = 0, closed_line_ = 0;
};

}  // namespace vorund::test
