// A site as pixels. Private to the families of plans.
#pragma once

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "families/site.h"

namespace vorund::test::families {

/// What a pixel is made of.
enum Material : std::uint8_t {
    kNothing,  ///< Outdoors.
    kFloor,
    kWall,
    kThing,
    kInside,      ///< Of a hollow thing.
    kGlass = 16,  ///< And above: Canvas::glass_turns tells which way it faces.
};

/// Where a turned site lies in a picture.
struct CanvasFrame {
    int tenths_deg = 0;  ///< The site's turn, counterclockwise.
    std::int64_t pixel_um = 50000;
    std::int64_t left = 0, top = 0;  ///< Of the picture's corner, seen after the turn. [um]
    int columns = 0, rows = 0;

    SitePoint inPicture(const SitePoint& point) const;  ///< [um] from the picture's corner.
    cv::Point pixelOf(const SitePoint& point) const;
};

/// The picture around all strokes. `phase_um` shifts the pixels' raster against the walls.
CanvasFrame frameOf(const Site& site, int tenths_deg, std::int64_t pixel_um, int margin_mm,
                    std::int64_t phase_um);

/// The same picture in pixels of half the side.
CanvasFrame halved(CanvasFrame frame);

/// Calls visit(row, col) for each pixel whose centre is in the shape, which is made at least as
/// thick as `least_um`.
template <typename Visit>
void forEachPixel(const CanvasFrame& frame, Shape shape, std::int64_t least_um,
                  const Visit& visit) {
    shape.half_x = std::max(shape.half_x, (least_um + 1) / 2);
    shape.half_y = std::max(shape.half_y, (least_um + 1) / 2);
    const Turn turn = turnOf(shape.tenths_deg + frame.tenths_deg);
    const SitePoint middle = frame.inPicture(shape.middle);
    const std::int64_t cosine = std::abs(turn.cosine), sine = std::abs(turn.sine);
    const std::int64_t reach_x = (shape.half_x * cosine + shape.half_y * sine) / Turn::kOne;
    const std::int64_t reach_y = (shape.half_x * sine + shape.half_y * cosine) / Turn::kOne;
    const auto clamped = [&](std::int64_t um, int most) {
        return static_cast<int>(
            std::clamp<std::int64_t>(floorDivided(um, frame.pixel_um), 0, most));
    };
    const int row0 = clamped(middle.y - reach_y, frame.rows);
    const int row1 = clamped(middle.y + reach_y + 2 * frame.pixel_um, frame.rows);
    const int col0 = clamped(middle.x - reach_x, frame.columns);
    const int col1 = clamped(middle.x + reach_x + 2 * frame.pixel_um, frame.columns);
    constexpr std::int64_t kRoundingUm = 2;  // Two boxes that touch leave no gap.
    const std::int64_t most_x = (shape.half_x + kRoundingUm) * Turn::kOne;
    const std::int64_t most_y = (shape.half_y + kRoundingUm) * Turn::kOne;
    for (int row = row0; row < row1; ++row) {
        const std::int64_t down = row * frame.pixel_um + frame.pixel_um / 2 - middle.y;
        for (int col = col0; col < col1; ++col) {
            const std::int64_t right = col * frame.pixel_um + frame.pixel_um / 2 - middle.x;
            const std::int64_t x = turn.cosine * right - turn.sine * down;
            const std::int64_t y = turn.sine * right + turn.cosine * down;
            if (x > most_x || x < -most_x || y > most_y || y < -most_y) continue;
            if (shape.round) {
                const std::int64_t near_x = x / Turn::kOne, near_y = y / Turn::kOne;
                if (near_x * near_x + near_y * near_y > shape.half_x * shape.half_x) continue;
            }
            visit(row, col);
        }
    }
}

struct Canvas {
    CanvasFrame frame;
    cv::Mat ground;    ///< CV_16UC1: the room up to the middle of its walls; 0 outdoors.
    cv::Mat material;  ///< CV_8UC1, of Material.
    cv::Mat floor;     ///< CV_16UC1: the room of each pixel of floor, before things stood on it.
    std::vector<int> glass_turns;  ///< Which way the walls of glass run in the picture. [0.1 deg]
};

Canvas paintSite(const Site& site, const CanvasFrame& frame);

/// The thickness at which a line of the shape's turn is closed: no ray slips through.
std::int64_t closedLine(const CanvasFrame& frame, const Shape& shape);

inline bool insidePicture(const cv::Mat& picture, int row, int col) {
    return row >= 0 && col >= 0 && row < picture.rows && col < picture.cols;
}

}  // namespace vorund::test::families
