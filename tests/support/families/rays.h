// Rays through a canvas, in fixed point. Private to the families of plans.
#pragma once

#include <cstdint>

#include "families/canvas.h"

namespace vorund::test::families {

/// A direction as (cosine, sine) times Turn::kOne; x right, y down, so clockwise.
struct Direction {
    std::int32_t x, y;
};

/// In hundredths of a degree, any number; to 2^-20.
Direction directionOf(int hundredths);

/// A place on a canvas, in pixels times kSub.
struct Place {
    static constexpr int kShift = 16;
    static constexpr std::int64_t kSub = std::int64_t{1} << kShift;
    std::int64_t x = 0, y = 0;
    int col() const { return static_cast<int>(x >> kShift); }
    int row() const { return static_cast<int>(y >> kShift); }
    Place moved(const Direction& direction, std::int64_t pixels) const {
        return {x + ((direction.x * pixels) >> (30 - kShift)),
                y + ((direction.y * pixels) >> (30 - kShift))};
    }
};

Place middleOf(int row, int col);

/// What may stop a ray: everything but outdoors and floor.
class RayField {
 public:
    explicit RayField(const Canvas& canvas);

    struct Hit {
        bool found = false;
        int pixels = 0;  ///< From the start, along the ray.
        Place place;
    };

    /// Follows the ray over `most` pixels. Where something is, asks stops(material, row, col).
    template <typename Stops>
    Hit cast(const Place& from, const Direction& direction, int most, const Stops& stops) const {
        for (int walked = 0; walked <= most;) {
            const Place at = from.moved(direction, walked);
            const int row = at.row(), col = at.col();
            if (!insidePicture(clearance_, row, col)) return {};
            const int clear = clearance_.at<std::uint8_t>(row, col);
            if (clear == 0 && stops(canvas_.material.at<std::uint8_t>(row, col), row, col)) {
                return {true, walked, at};
            }
            walked += std::max(1, clear - 1);
        }
        return {};
    }

    /// Per pixel, how many steps (diagonal ones too) it is to the nearest thing or wall; at most
    /// 255.
    const cv::Mat& clearance() const { return clearance_; }
    const Canvas& canvas() const { return canvas_; }

 private:
    const Canvas& canvas_;
    cv::Mat clearance_;
};

}  // namespace vorund::test::families
