#include "vorund/rooms/map_reader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "maps/image_file.h"
#include "maps/map_yaml.h"

namespace vorund::rooms {
namespace {

constexpr std::uint8_t kPaintedUnknown = 205;  // As map_server paints it.

/// What a pixel stands for.
struct Shade {
    float value;
    std::uint8_t painted;
};

constexpr Shade kUnknown{1.0F, kPaintedUnknown};

/// How a level of grey becomes a shade.
struct Reading {
    MapMode mode = MapMode::kTrinary;
    PixelValues values = PixelValues::kMap;
    bool light_is_wall = false;
    double free_thresh = 0.196;
};

/// A level of grey as a sum over the colour channels, so that nothing is rounded.
struct Grey {
    int sum;
    int full;  ///< The sum of white.
    int channels;
};

std::uint8_t toByte(int sum, int full) {
    return static_cast<std::uint8_t>((255LL * sum + full / 2) / full);
}

Shade rawShade(const Grey& grey) {
    // Multiplied, not divided, so that it equals what the core's own loader gives.
    const float value =
        static_cast<float>(grey.sum) * static_cast<float>(1.0 / static_cast<double>(grey.full));
    return {value, toByte(grey.full - grey.sum, grey.full)};
}

Shade percentShade(const Grey& grey, const Reading& reading) {
    const int percent_sum = reading.light_is_wall ? grey.sum : grey.full - grey.sum;
    const int hundred = 100 * grey.channels;
    if (percent_sum > hundred) return kUnknown;
    const bool is_free = percent_sum / static_cast<double>(hundred) < reading.free_thresh;
    return {is_free ? 0.0F : 1.0F, toByte(hundred - percent_sum, hundred)};
}

Shade shadeOf(const Grey& grey, const Reading& reading) {
    if (reading.values == PixelValues::kRaw) return rawShade(grey);
    if (reading.mode == MapMode::kRaw) return percentShade(grey, reading);
    const int dark = reading.light_is_wall ? grey.sum : grey.full - grey.sum;
    const bool is_free = dark / static_cast<double>(grey.full) < reading.free_thresh;
    return {is_free ? 0.0F : 1.0F, toByte(grey.full - dark, grey.full)};
}

/// The shades of all levels of grey, by their sum.
std::vector<Shade> allShades(int channels, int full_range, const Reading& reading) {
    const int full = channels * full_range;
    std::vector<Shade> shades;
    shades.reserve(static_cast<std::size_t>(full) + 1);
    for (int sum = 0; sum <= full; ++sum) shades.push_back(shadeOf({sum, full, channels}, reading));
    return shades;
}

/// @tparam T  Type of a channel.
template <class T>
void paint(const ImageFile& image, const Reading& reading, GridMap& map) {
    const int channels = image.pixels.channels();
    const int colours = std::min(channels, 3);
    const bool alpha_counts =
        channels == 4 && reading.mode == MapMode::kScale && reading.values == PixelValues::kMap;
    const std::vector<Shade> shades = allShades(colours, image.full_range, reading);
    for (int row = 0; row < image.pixels.rows; ++row) {
        const T* pixel = image.pixels.ptr<T>(row);
        for (int col = 0; col < image.pixels.cols; ++col, pixel += channels) {
            int sum = 0;
            for (int i = 0; i < colours; ++i) sum += std::min<int>(pixel[i], image.full_range);
            const bool is_opaque = !alpha_counts || pixel[3] >= image.full_range;
            const Shade shade = is_opaque ? shades[static_cast<std::size_t>(sum)] : kUnknown;
            map.values.at<float>(row, col) = shade.value;
            map.picture.at<std::uint8_t>(row, col) = shade.painted;
        }
    }
}

bool isYaml(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending == ".yaml" || ending == ".yml";
}

/// An error names both files.
ImageFile readImageOf(const std::string& yaml_path, const std::string& image_path) {
    try {
        return readImageFile(image_path);
    } catch (const MapError& error) {
        throw MapError(yaml_path + ": image " + error.what());
    }
}

bool lightIsWall(const MapYaml& yaml, const MapReadOptions& options) {
    if (options.free) return *options.free == FreeColour::kBlack;
    // A percentage of occupancy is higher where the pixel is lighter.
    return yaml.mode == MapMode::kRaw ? !yaml.negate : yaml.negate;
}

}  // namespace

GridMap readMap(const std::string& path, const MapReadOptions& options) {
    MapYaml yaml;
    ImageFile image;
    if (isYaml(path)) {
        yaml = readMapYaml(path);
        image = readImageOf(path, yaml.image);
    } else {
        image = readImageFile(path);
    }
    const Reading reading{yaml.mode, options.values, lightIsWall(yaml, options), yaml.free_thresh};
    GridMap map;
    map.resolution = yaml.resolution;
    map.origin = yaml.origin;
    map.raw = options.values == PixelValues::kRaw;
    map.values.create(image.pixels.size(), CV_32FC1);
    map.picture.create(image.pixels.size(), CV_8UC1);
    if (image.pixels.depth() == CV_8U) {
        paint<std::uint8_t>(image, reading, map);
    } else {
        paint<std::uint16_t>(image, reading, map);
    }
    return map;
}

}  // namespace vorund::rooms
