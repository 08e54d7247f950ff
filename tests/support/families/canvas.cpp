#include "families/canvas.h"

#include <cstdlib>

namespace vorund::test::families {
namespace {

struct Extent {
    std::int64_t low_x, high_x, low_y, high_y;
};

Extent extentOf(const Site& site, int tenths_deg) {
    Extent extent{INT64_MAX, INT64_MIN, INT64_MAX, INT64_MIN};
    for (const Stroke& stroke : site.strokes) {
        const Turn turn = turnOf(stroke.shape.tenths_deg + tenths_deg);
        const SitePoint middle = turned(stroke.shape.middle, turnOf(tenths_deg));
        const std::int64_t cosine = std::abs(turn.cosine), sine = std::abs(turn.sine);
        const std::int64_t x =
            (stroke.shape.half_x * cosine + stroke.shape.half_y * sine) / Turn::kOne;
        const std::int64_t y =
            (stroke.shape.half_x * sine + stroke.shape.half_y * cosine) / Turn::kOne;
        extent.low_x = std::min(extent.low_x, middle.x - x);
        extent.high_x = std::max(extent.high_x, middle.x + x);
        extent.low_y = std::min(extent.low_y, middle.y - y);
        extent.high_y = std::max(extent.high_y, middle.y + y);
    }
    return extent;
}

class Painter {
 public:
    explicit Painter(Canvas& canvas) : canvas_(canvas) {}

    void paint(const Stroke& stroke) {
        switch (stroke.brush) {
            case Brush::kFloor:
                return layFloor(stroke);
            case Brush::kWall:
                return raise(stroke, kWall);
            case Brush::kGlass:
                return raise(stroke, glassOf(stroke.shape));
            case Brush::kOpen:
                return open(stroke);
        }
    }

    void keepFloor() {
        canvas_.ground.copyTo(canvas_.floor);
        canvas_.floor.setTo(cv::Scalar(0), canvas_.material != kFloor);
    }

    void place(const Thing& thing) {
        const std::uint8_t beneath = thing.outdoors ? kNothing : kFloor;
        const std::int64_t line = closedLine(canvas_.frame, thing.shape);
        forEachPixel(canvas_.frame, thing.shape, line, [&](int row, int col) {
            if (material(row, col) == beneath) material(row, col) = kThing;
        });
        if (!thing.hollow) return;
        Shape inside = thing.shape;
        inside.half_x -= line;
        inside.half_y -= line;
        if (inside.half_x <= 0 || inside.half_y <= 0) return;
        forEachPixel(canvas_.frame, inside, 0, [&](int row, int col) {
            if (material(row, col) == kThing) material(row, col) = kInside;
        });
    }

 private:
    std::uint8_t& material(int row, int col) { return canvas_.material.at<std::uint8_t>(row, col); }
    std::uint16_t& ground(int row, int col) { return canvas_.ground.at<std::uint16_t>(row, col); }

    void layFloor(const Stroke& stroke) {
        forEachPixel(canvas_.frame, stroke.shape, 0, [&](int row, int col) {
            ground(row, col) = static_cast<std::uint16_t>(stroke.room);
            material(row, col) = kFloor;
        });
    }

    void raise(const Stroke& stroke, std::uint8_t value) {
        const std::int64_t line = closedLine(canvas_.frame, stroke.shape);
        Shape shape = stroke.shape;
        // Walls thinner than a line reach past each other at corners, so that none leaks.
        if (shape.half_x * 2 < line) shape.half_y += line / 2;
        if (shape.half_y * 2 < line) shape.half_x += line / 2;
        forEachPixel(canvas_.frame, shape, line,
                     [&](int row, int col) { material(row, col) = value; });
    }

    void open(const Stroke& stroke) {
        forEachPixel(canvas_.frame, stroke.shape, 0, [&](int row, int col) {
            if (ground(row, col) > 0) material(row, col) = kFloor;
        });
    }

    // Equal directions share a number.
    std::uint8_t glassOf(const Shape& shape) {
        const bool upright = shape.half_y > shape.half_x;
        const int turn = shape.tenths_deg + canvas_.frame.tenths_deg + (upright ? 900 : 0);
        const int direction = (turn % 1800 + 1800) % 1800;
        std::vector<int>& turns = canvas_.glass_turns;
        const auto known = std::find(turns.begin(), turns.end(), direction);
        const auto index = static_cast<std::size_t>(known - turns.begin());
        if (known == turns.end()) turns.push_back(direction);
        return static_cast<std::uint8_t>(kGlass + index);
    }

    Canvas& canvas_;
};

}  // namespace

SitePoint CanvasFrame::inPicture(const SitePoint& point) const {
    const SitePoint there = turned(point, turnOf(tenths_deg));
    return {there.x - left, there.y - top};
}

cv::Point CanvasFrame::pixelOf(const SitePoint& point) const {
    const SitePoint there = inPicture(point);
    return {static_cast<int>(floorDivided(there.x, pixel_um)),
            static_cast<int>(floorDivided(there.y, pixel_um))};
}

CanvasFrame frameOf(const Site& site, int tenths_deg, std::int64_t pixel_um, int margin_mm,
                    std::int64_t phase_um) {
    const Extent extent = extentOf(site, tenths_deg);
    const std::int64_t margin = std::int64_t{1000} * margin_mm;
    CanvasFrame frame{
        tenths_deg, pixel_um, extent.low_x - margin - phase_um, extent.low_y - margin - phase_um,
        0,          0};
    frame.columns = static_cast<int>((extent.high_x + margin - frame.left) / pixel_um) + 1;
    frame.rows = static_cast<int>((extent.high_y + margin - frame.top) / pixel_um) + 1;
    return frame;
}

CanvasFrame halved(CanvasFrame frame) {
    frame.pixel_um /= 2;
    frame.columns *= 2;
    frame.rows *= 2;
    return frame;
}

std::int64_t closedLine(const CanvasFrame& frame, const Shape& shape) {
    const Turn turn = turnOf(shape.tenths_deg + frame.tenths_deg);
    return frame.pixel_um * (std::abs(turn.sine) + std::abs(turn.cosine)) / Turn::kOne + 1;
}

Canvas paintSite(const Site& site, const CanvasFrame& frame) {
    const cv::Size size(frame.columns, frame.rows);
    Canvas canvas{frame,
                  cv::Mat::zeros(size, CV_16UC1),
                  cv::Mat::zeros(size, CV_8UC1),
                  cv::Mat::zeros(size, CV_16UC1),
                  {}};
    Painter painter(canvas);
    for (const Stroke& stroke : site.strokes) painter.paint(stroke);
    painter.keepFloor();
    for (const Thing& thing : site.things) painter.place(thing);
    return canvas;
}

}  // namespace vorund::test::families
