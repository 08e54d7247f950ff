#include "maps/map_yaml.h"

#include <yaml-cpp/yaml.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "maps/image_file.h"
#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

/// A value as a message quotes it: one line, not too long.
std::string quoted(const YAML::Node& node) {
    constexpr std::size_t kMostShown = 60;
    if (!node.IsScalar()) return node.IsNull() ? "nothing" : "a list or a group";
    std::string shown = node.Scalar().substr(0, kMostShown);
    for (char& c : shown) {
        const bool is_control = static_cast<unsigned char>(c) < ' ' || c == '\x7F';
        if (is_control) c = '?';
    }
    if (node.Scalar().size() > kMostShown) shown += "...";
    return "'" + shown + "'";
}

/// Only finite ones.
std::optional<double> number(const YAML::Node& node) {
    double value = 0.0;
    if (!node.IsScalar() || !YAML::convert<double>::decode(node, value)) return {};
    if (!std::isfinite(value)) return {};
    return value;
}

double readResolution(const YAML::Node& node) {
    const std::optional<double> resolution = number(node);
    if (!resolution || *resolution <= 0.0) {
        throw MapError("resolution must be a positive number (metres per pixel), not " +
                       quoted(node));
    }
    return *resolution;
}

Origin readOrigin(const YAML::Node& node) {
    std::array<double, 3> numbers{};
    bool usable = node.IsSequence() && node.size() == numbers.size();
    for (std::size_t i = 0; usable && i < numbers.size(); ++i) {
        const std::optional<double> value = number(node[i]);
        usable = value.has_value();
        numbers[i] = value.value_or(0.0);
    }
    if (!usable) throw MapError("origin must be three finite numbers [x, y, yaw]");
    // Further out micrometres are lost, to which results are written.
    constexpr double kFurthest = 1e8;  // [m]
    if (std::abs(numbers[0]) > kFurthest || std::abs(numbers[1]) > kFurthest) {
        throw MapError("origin is more than 1e8 m away");
    }
    return {numbers[0], numbers[1], numbers[2]};
}

double readThreshold(const std::string& key, const YAML::Node& node) {
    const std::optional<double> threshold = number(node);
    if (!threshold || *threshold < 0.0 || *threshold > 1.0) {
        throw MapError(key + " must be a number from 0 to 1, not " + quoted(node));
    }
    return *threshold;
}

bool readNegate(const YAML::Node& node) {
    const std::string text = node.IsScalar() ? node.Scalar() : "";
    if (text == "1" || text == "true" || text == "True" || text == "TRUE") return true;
    if (text == "0" || text == "false" || text == "False" || text == "FALSE") return false;
    throw MapError("negate must be 0, 1, true or false, not " + quoted(node));
}

MapMode readMode(const YAML::Node& node) {
    const std::string text = node.IsScalar() ? node.Scalar() : "";
    if (text == "trinary") return MapMode::kTrinary;
    if (text == "scale") return MapMode::kScale;
    if (text == "raw") return MapMode::kRaw;
    throw MapError("mode must be trinary, scale or raw, not " + quoted(node));
}

std::string readImagePath(const YAML::Node& node, const std::string& yaml_path) {
    const std::string image = node.IsScalar() ? node.Scalar() : "";
    if (image.empty() || image.find('\0') != std::string::npos) {
        throw MapError("image must be a file name, not " + quoted(node));
    }
    return (std::filesystem::path(yaml_path).parent_path() / image).string();
}

YAML::Node required(const YAML::Node& root, const char* key) {
    const YAML::Node node = root[key];
    if (!node) throw MapError(std::string("the key '") + key + "' is missing");
    return node;
}

MapYaml readRoot(const YAML::Node& root, const std::string& path) {
    if (!root.IsMap()) throw MapError("it is no map_server YAML file: it has no keys");
    MapYaml yaml;
    yaml.image = readImagePath(required(root, "image"), path);
    yaml.resolution = readResolution(required(root, "resolution"));
    if (const YAML::Node node = root["origin"]) yaml.origin = readOrigin(node);
    if (const YAML::Node node = root["negate"]) yaml.negate = readNegate(node);
    if (const YAML::Node node = root["occupied_thresh"]) {
        yaml.occupied_thresh = readThreshold("occupied_thresh", node);
    }
    if (const YAML::Node node = root["free_thresh"]) {
        yaml.free_thresh = readThreshold("free_thresh", node);
    }
    if (const YAML::Node node = root["mode"]) yaml.mode = readMode(node);
    if (yaml.free_thresh >= yaml.occupied_thresh) {
        throw MapError("free_thresh must be smaller than occupied_thresh");
    }
    return yaml;
}

}  // namespace

MapYaml readMapYaml(const std::string& path) {
    const std::vector<std::uint8_t> bytes = readBytes(path);
    try {
        return readRoot(YAML::Load(std::string(bytes.begin(), bytes.end())), path);
    } catch (const YAML::Exception& error) {
        const std::string line =
            error.mark.is_null() ? "" : " in line " + std::to_string(error.mark.line + 1);
        throw MapError(path + ": it is no YAML file: " + error.msg + line);
    } catch (const MapError& error) {
        throw MapError(path + ": " + error.what());
    }
}

}  // namespace vorund::rooms
