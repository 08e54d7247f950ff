#include "families/mapper.h"

#include <cstdlib>

#include "families/lidar.h"
#include "plan_generator.h"

namespace vorund::test::families {
namespace {

struct Cell {
    std::uint32_t hits = 0, passes = 0;
    std::uint16_t room = 0;  // Who leads the vote (Boyer and Moore 1981) of the rays through it.
    std::uint32_t lead = 0;
};

class Grid {
 public:
    explicit Grid(const Canvas& site)
        : site_(site),
          rows_(site.material.rows / 2),
          cols_(site.material.cols / 2),
          cells_(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(cols_)) {}

    // A ray and its end; where it really went tells whose floor it saw.
    void add(Place believed, const Direction& seen, Place real, const Direction& went,
             int range_mm) {
        const std::int64_t pixel_mm = site_.frame.pixel_um / 500;
        const std::int64_t longer =
            std::max(std::abs(std::int64_t{seen.x}), std::abs(std::int64_t{seen.y}));
        const std::int64_t steps = range_mm * longer / Turn::kOne / pixel_mm;
        const Place step = per(seen, longer, 1), real_step = per(went, longer, 2);
        believed.x /= 2;
        believed.y /= 2;
        for (std::int64_t i = 0; i < steps; ++i) {
            if (!pass(believed, real)) return;
            believed = {believed.x + step.x, believed.y + step.y};
            real = {real.x + real_step.x, real.y + real_step.y};
        }
        if (holds(believed)) ++cellAt(believed).hits;
    }

    MappedSite finished(const LidarOptions& options) const {
        MappedSite result{cv::Mat(rows_, cols_, CV_8UC1, cv::Scalar(kMapUnknown)),
                          cv::Mat::zeros(rows_, cols_, CV_16UC1)};
        for (int row = 0; row < rows_; ++row) {
            for (int col = 0; col < cols_; ++col) {
                const Cell& cell = cells_[indexOf(row, col)];
                const auto rays = static_cast<int>(cell.hits + cell.passes);
                if (rays < options.least_rays || rays == 0) continue;
                const bool occupied =
                    static_cast<int>(cell.hits) * 100 > rays * options.hit_percent;
                result.map.at<std::uint8_t>(row, col) = occupied ? kMapOccupied : kMapFree;
                if (!occupied) result.ground.at<std::uint16_t>(row, col) = cell.room;
            }
        }
        return result;
    }

 private:
    // One pixel of the grid along its longer side is `pixels` pixels.
    static Place per(const Direction& direction, std::int64_t longer, std::int64_t pixels) {
        return {direction.x * pixels * Place::kSub / longer,
                direction.y * pixels * Place::kSub / longer};
    }
    std::size_t indexOf(int row, int col) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(cols_) +
               static_cast<std::size_t>(col);
    }
    bool holds(const Place& at) const {
        return at.row() >= 0 && at.col() >= 0 && at.row() < rows_ && at.col() < cols_;
    }
    Cell& cellAt(const Place& at) { return cells_[indexOf(at.row(), at.col())]; }

    bool pass(const Place& believed, const Place& real) {
        if (!holds(believed)) return false;
        Cell& cell = cellAt(believed);
        ++cell.passes;
        const bool inside = insidePicture(site_.ground, real.row(), real.col());
        const std::uint16_t room =
            inside ? site_.ground.at<std::uint16_t>(real.row(), real.col()) : std::uint16_t{0};
        if (cell.lead == 0) cell.room = room;
        cell.lead = cell.room == room ? cell.lead + 1 : cell.lead - 1;
        return true;
    }

    const Canvas& site_;
    int rows_, cols_;
    std::vector<Cell> cells_;
};

Place shifted(const Place& place, const PoseError& error, std::int64_t pixel_um) {
    return {place.x + 1000 * error.x_mm * Place::kSub / pixel_um,
            place.y + 1000 * error.y_mm * Place::kSub / pixel_um};
}

}  // namespace

MappedSite mapSite(const RayField& field, const std::vector<Station>& stations,
                   const LidarOptions& options, Random& random) {
    Grid grid(field.canvas());
    Lidar lidar(field, options, random);
    const std::vector<PoseError> drift = driftOver(stations.size(), options, random);
    const std::vector<Person> people = stations.empty()
                                           ? std::vector<Person>()
                                           : invitePeople(field, stations, options.people, random);
    for (std::size_t scan = 0; scan < stations.size(); ++scan) {
        const Station& station = stations[scan];
        const Place believed = shifted(station.place, drift[scan], field.canvas().frame.pixel_um);
        const std::vector<Place> legs = legsAt(field, people, static_cast<int>(scan));
        const int first = station.heading - options.field_of_view / 2;
        for (int beam = 0; beam < options.beams; ++beam) {
            const int angle = first + options.field_of_view * beam / options.beams;
            const Direction went = directionOf(angle);
            const Lidar::Echo echo = lidar.listen(station.place, went, legs);
            if (!echo.found) continue;
            grid.add(believed, directionOf(angle + drift[scan].hundredths), station.place, went,
                     echo.range_mm);
        }
    }
    return grid.finished(options);
}

}  // namespace vorund::test::families
