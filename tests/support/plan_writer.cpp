// Writes a plan as a robot's map and its truth. Numbers are put together from integers: the same
// digits on every machine and in every locale.
#include "plan_writer.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <system_error>

namespace vorund::test {
namespace {

constexpr char kWho[] = "writePlan";

std::string causeOf(int error) {
    return std::generic_category().message(error);
}

// Micrometres as metres without needless zeros: 50000 -> "0.05".
std::string metres(std::int64_t micrometres) {
    const bool negative = micrometres < 0;
    const std::string digits =
        std::to_string(1000000 + (negative ? -micrometres : micrometres) % 1000000).substr(1);
    const std::string whole = std::to_string((negative ? -micrometres : micrometres) / 1000000);
    const std::string text = whole + "." + digits.substr(0, digits.find_last_not_of('0') + 1);
    return (negative ? "-" : "") + (text.back() == '.' ? text + "0" : text);
}

// Of the map's lower left corner, so that the world's origin is at the picture's middle.
std::int64_t originX(const Plan& plan) {
    return -std::int64_t{plan.map.cols / 2} * plan.options.resolution_um;
}
std::int64_t originY(const Plan& plan) {
    return -std::int64_t{plan.map.rows / 2} * plan.options.resolution_um;
}

std::string pgmOf(const cv::Mat& map) {
    std::string bytes =
        "P5\n" + std::to_string(map.cols) + " " + std::to_string(map.rows) + "\n255\n";
    bytes.reserve(bytes.size() + map.total());
    for (int row = 0; row < map.rows; ++row) {
        const std::uint8_t* pixels = map.ptr<std::uint8_t>(row);
        bytes.append(pixels, pixels + map.cols);
    }
    return bytes;
}

std::string pixelOf(const cv::Point& point) {
    return "[" + std::to_string(point.x) + ", " + std::to_string(point.y) + "]";
}

// The middle of the pixel in the world. [m]
std::string placeOf(const Plan& plan, const cv::Point& point) {
    const std::int64_t side = plan.options.resolution_um;
    const std::int64_t x = originX(plan) + side * point.x + side / 2;
    const std::int64_t y = originY(plan) + side * (plan.map.rows - 1 - point.y) + side / 2;
    return "[" + metres(x) + ", " + metres(y) + "]";
}

}  // namespace

void checkFileName(const std::string& who, const std::string& name) {
    if (name.empty() || name.find('/') != std::string::npos) {
        throw std::invalid_argument(who + ": \"" + name + "\" is no file name.");
    }
}

void writeFile(const std::string& who, const std::string& path, const std::string& bytes) {
    const std::string temporary = path + ".part";
    errno = 0;
    std::ofstream file(temporary, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file.fail()) {
        const int error = errno;
        std::remove(temporary.c_str());
        throw std::runtime_error(who + ": Cannot write " + path + ": " + causeOf(error) + ".");
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        std::remove(temporary.c_str());
        throw std::runtime_error(who + ": Cannot write " + path + ": " + causeOf(error) + ".");
    }
}

std::string yamlOf(const Plan& plan, const std::string& image) {
    return "image: " + image +
           "\nmode: trinary\nresolution: " + metres(plan.options.resolution_um) + "\norigin: [" +
           metres(originX(plan)) + ", " + metres(originY(plan)) +
           ", 0.0]\nnegate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.196\n";
}

std::string pngOf(const std::string& who, const cv::Mat& image, const std::string& path) {
    std::vector<std::uint8_t> bytes;
    if (!cv::imencode(".png", image, bytes)) {
        throw std::runtime_error(who + ": Cannot write " + path + ": PNG encoding failed.");
    }
    return {bytes.begin(), bytes.end()};
}

std::string doorsOf(const Plan& plan) {
    std::string text =
        "{\n  \"resolution_m\": " + metres(plan.options.resolution_um) + ",\n  \"doors\": [";
    const char* separator = "\n";
    for (const Door& door : plan.doors) {
        text += separator;
        text += "    {\"rooms\": [" + std::to_string(door.room_a) + ", " +
                std::to_string(door.room_b) +
                "], \"width_m\": " + metres(std::int64_t{1000} * door.width_mm) +
                ", \"a_px\": " + pixelOf(door.a) + ", \"b_px\": " + pixelOf(door.b) +
                ", \"a_m\": " + placeOf(plan, door.a) + ", \"b_m\": " + placeOf(plan, door.b) + "}";
        separator = ",\n";
    }
    return text + (plan.doors.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

void writePlan(const Plan& plan, const std::string& directory, const std::string& name) {
    checkFileName(kWho, name);
    const std::string stem = directory + "/" + name;
    writeFile(kWho, stem + ".pgm", pgmOf(plan.map));
    writeFile(kWho, stem + ".yaml", yamlOf(plan, name + ".pgm"));
    writeFile(kWho, stem + "_rooms.png", pngOf(kWho, plan.rooms, stem + "_rooms.png"));
    writeFile(kWho, stem + "_doors.json", doorsOf(plan));
}

}  // namespace vorund::test
