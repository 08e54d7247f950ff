#pragma once

#include <string>

#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {

/// How the pixels of a map_server image are meant.
enum class MapMode { kTrinary, kScale, kRaw };

/// What a map_server YAML file says, with map_server's defaults.
struct MapYaml {
    std::string image;  ///< Path, resolved against the file's own folder.
    double resolution = kWorkingResolution;
    Origin origin;
    bool negate = false;
    double occupied_thresh = 0.65;
    double free_thresh = 0.196;
    MapMode mode = MapMode::kTrinary;
};

/// @throws MapError  "PATH: cause" if the file cannot be read, is no such YAML file, lacks `image`
///         or `resolution`, or holds a value that cannot be used.
MapYaml readMapYaml(const std::string& path);

}  // namespace vorund::rooms
