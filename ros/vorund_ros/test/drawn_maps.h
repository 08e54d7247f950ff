// Maps and rooms for the tests.
#pragma once

#include <nav_msgs/OccupancyGrid.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "room_messages.h"

namespace vorund_ros::test {

/// A map from its cells, the lowest row first as in the message.
inline nav_msgs::OccupancyGrid mapOf(std::uint32_t width, std::uint32_t height,
                                     const std::vector<std::int8_t>& cells,
                                     float resolution = 0.05F) {
    nav_msgs::OccupancyGrid map;
    map.header.frame_id = "map";
    map.info.width = width;
    map.info.height = height;
    map.info.resolution = resolution;
    map.info.origin.orientation.w = 1.0;
    map.data.assign(cells.begin(), cells.end());
    return map;
}

inline void turn(nav_msgs::OccupancyGrid& map, double x, double y, double yaw) {
    map.info.origin.position.x = x;
    map.info.origin.position.y = y;
    map.info.origin.orientation.z = std::sin(yaw / 2.0);
    map.info.origin.orientation.w = std::cos(yaw / 2.0);
}

/// Two rooms of 3 m by 3 m with a door of 0.9 m in the wall of 0.2 m between them; 5 cm per cell.
inline nav_msgs::OccupancyGrid twoRooms() {
    constexpr std::uint32_t kWidth = 144;
    constexpr std::uint32_t kHeight = 80;
    nav_msgs::OccupancyGrid map =
        mapOf(kWidth, kHeight, std::vector<std::int8_t>(kWidth * kHeight, 100));
    const auto clear = [&](std::uint32_t left, std::uint32_t right, std::uint32_t bottom,
                           std::uint32_t top) {
        for (std::uint32_t row = bottom; row < top; ++row) {
            for (std::uint32_t col = left; col < right; ++col) map.data[row * kWidth + col] = 0;
        }
    };
    clear(10, 70, 10, 70);
    clear(74, 134, 10, 70);
    clear(70, 74, 31, 49);
    return map;
}

/// Rooms from a drawing, rows from the top; neither borders nor outlines.
inline vorund::rooms::Rooms roomsOf(const cv::Mat& labels, double resolution) {
    vorund::rooms::Rooms rooms;
    rooms.labels = labels;
    rooms.resolution = resolution;
    for (const std::int32_t label : cv::Mat_<std::int32_t>(labels)) {
        while (static_cast<int>(rooms.rooms.size()) < label) {
            vorund::rooms::Room room{};
            room.label = static_cast<int>(rooms.rooms.size()) + 1;
            rooms.rooms.push_back(room);
        }
        if (label == 0) continue;
        vorund::rooms::Room& room = rooms.rooms[static_cast<std::size_t>(label - 1)];
        ++room.pixel_count;
        room.area_m2 += resolution * resolution;
    }
    return rooms;
}

/// The map that such rooms belong to.
inline nav_msgs::OccupancyGrid mapFor(const vorund::rooms::Rooms& rooms) {
    const auto width = static_cast<std::uint32_t>(rooms.labels.cols);
    const auto height = static_cast<std::uint32_t>(rooms.labels.rows);
    return mapOf(width, height, std::vector<std::int8_t>(rooms.labels.total(), 0),
                 static_cast<float>(rooms.resolution));
}

inline FoundRooms foundOf(const cv::Mat& labels, double resolution = 1.0) {
    const vorund::rooms::Rooms rooms = roomsOf(labels, resolution);
    return toMessages(rooms, mapFor(rooms), "hash");
}

/// A folder that goes with the test.
class TempDir {
 public:
    TempDir() {
        std::string name = (std::filesystem::temp_directory_path() / "vorund_ros_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
    std::string path_;
};

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace vorund_ros::test
