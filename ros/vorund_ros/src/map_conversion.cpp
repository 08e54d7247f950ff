#include "map_conversion.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <locale>
#include <sstream>

#include "vorund/rooms/map_reader.h"

namespace vorund_ros {
namespace {

namespace rooms = vorund::rooms;

constexpr double kFurthestOrigin = 1e8;  // [m]; beyond it pixels are no longer told apart.
constexpr double kPi = 3.14159265358979323846;

std::string sizeText(const nav_msgs::MapMetaData& info) {
    return std::to_string(info.width) + " x " + std::to_string(info.height) + " cells";
}

void requireCells(const nav_msgs::OccupancyGrid& map) {
    const std::uint64_t cells = static_cast<std::uint64_t>(map.info.width) * map.info.height;
    if (cells == 0) throw rooms::MapError("the map is empty (" + sizeText(map.info) + ")");
    if (cells != map.data.size()) {
        throw rooms::MapError("the map says " + sizeText(map.info) + ", but holds " +
                              std::to_string(map.data.size()));
    }
}

double decimalOf(float value) {
    if (!std::isfinite(value)) return value;  // Refused by the library.
    constexpr int kEnoughDigits = 9;
    double decimal = value;
    for (int digits = 1; digits <= kEnoughDigits; ++digits) {
        std::ostringstream writer;
        writer.imbue(std::locale::classic());
        writer.precision(digits);
        writer << value;
        std::istringstream reader(writer.str());
        reader.imbue(std::locale::classic());
        reader >> decimal;
        const float back = static_cast<float>(decimal);
        if (!(back < value) && !(back > value)) break;
    }
    return decimal;
}

double yawOf(const geometry_msgs::Quaternion& turn) {
    const double norm =
        std::sqrt(turn.x * turn.x + turn.y * turn.y + turn.z * turn.z + turn.w * turn.w);
    if (!std::isfinite(norm)) throw rooms::MapError("the map's origin is not finite");
    if (!(norm > 0.0)) return 0.0;
    constexpr double kMostTilt = 1e-3;  // Half the angle, about. [radian]
    if (std::hypot(turn.x, turn.y) > kMostTilt * norm) {
        throw rooms::MapError("the map's origin is tilted: it may be turned about the z axis only");
    }
    return std::remainder(2.0 * std::atan2(turn.z, turn.w), 2.0 * kPi);
}

rooms::Origin originOf(const geometry_msgs::Pose& pose) {
    const geometry_msgs::Point& place = pose.position;
    if (!std::isfinite(place.x) || !std::isfinite(place.y)) {
        throw rooms::MapError("the map's origin is not finite");
    }
    if (std::abs(place.x) > kFurthestOrigin || std::abs(place.y) > kFurthestOrigin) {
        throw rooms::MapError("the map's origin is more than 1e8 m away");
    }
    return {place.x, place.y, yawOf(pose.orientation)};
}

/// FNV-1a, 64 bits.
class Hash {
 public:
    void add(const void* bytes, std::size_t count) {
        const auto* byte = static_cast<const unsigned char*>(bytes);
        for (std::size_t i = 0; i < count; ++i) value_ = (value_ ^ byte[i]) * kPrime;
    }
    template <class Number>
    void add(Number number) {
        add(&number, sizeof number);
    }
    std::string text() const {
        constexpr char kDigits[] = "0123456789abcdef";
        std::string digits;
        for (int shift = 60; shift >= 0; shift -= 4) digits += kDigits[(value_ >> shift) & 0xFU];
        return digits;
    }

 private:
    static constexpr std::uint64_t kPrime = 1099511628211U;
    std::uint64_t value_ = 14695981039346656037U;
};

}  // namespace

rooms::GridMap toGridMap(const nav_msgs::OccupancyGrid& map, int occupied_threshold) {
    requireCells(map);
    const cv::Mat cells(static_cast<int>(map.info.height), static_cast<int>(map.info.width),
                        CV_8SC1,
                        const_cast<std::int8_t*>(map.data.data()));  // Only read.
    rooms::GridMap result = frameOf(map.info);
    result.values = cv::Mat(cells.size(), CV_32FC1);
    for (int row = 0; row < cells.rows; ++row) {
        const auto* cell = cells.ptr<std::int8_t>(cells.rows - 1 - row);
        auto* value = result.values.ptr<float>(row);
        for (int col = 0; col < cells.cols; ++col) {
            const bool is_floor = cell[col] >= 0 && cell[col] < occupied_threshold;
            value[col] = is_floor ? 0.0F : 1.0F;
        }
    }
    return result;
}

rooms::GridMap frameOf(const nav_msgs::MapMetaData& info) {
    rooms::GridMap frame;
    frame.values = cv::Mat::zeros(static_cast<int>(info.height), 1, CV_8UC1);
    frame.resolution = decimalOf(info.resolution);
    frame.origin = originOf(info.origin);
    return frame;
}

std::string mapHash(const nav_msgs::OccupancyGrid& map) {
    Hash hash;
    hash.add(map.info.width);
    hash.add(map.info.height);
    hash.add(map.info.resolution);
    const geometry_msgs::Pose& origin = map.info.origin;
    for (const double number : {origin.position.x, origin.position.y, origin.orientation.x,
                                origin.orientation.y, origin.orientation.z, origin.orientation.w}) {
        hash.add(number);
    }
    hash.add(map.header.frame_id.size());
    hash.add(map.header.frame_id.data(), map.header.frame_id.size());
    hash.add(map.data.data(), map.data.size());
    return hash.text();
}

}  // namespace vorund_ros
