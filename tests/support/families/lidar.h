// What a lidar hears on a drive, and how far the robot errs. Private to the families of plans.
#pragma once

#include <vector>

#include "families/mapper.h"

namespace vorund::test::families {

struct PoseError {
    int x_mm = 0, y_mm = 0, hundredths = 0;
};

/// The error of the believed place at each scan: straight from one random error to the next.
std::vector<PoseError> driftOver(std::size_t scans, const LidarOptions& options, Random& random);

/// Somebody who walks or stands about.
struct Person {
    int first_scan, scans;
    Place from, to;
};

/// People who come near the robot at some time.
std::vector<Person> invitePeople(const RayField& field, const std::vector<Station>& stations,
                                 int count, Random& random);

/// The legs of those who are there at this scan, as places on the floor.
std::vector<Place> legsAt(const RayField& field, const std::vector<Person>& people, int scan);

class Lidar {
 public:
    Lidar(const RayField& field, const LidarOptions& options, Random& random);

    struct Echo {
        bool found = false;
        int range_mm = 0;
    };
    Echo listen(const Place& from, const Direction& direction, const std::vector<Place>& legs);

 private:
    bool echoes(std::uint8_t material, int row, int col, const Direction& direction);

    const RayField& field_;
    const LidarOptions& options_;
    Random& random_;
    std::uint64_t salt_;
    std::vector<Direction> panes_;
    int pixel_mm_ = 0;
};

}  // namespace vorund::test::families
