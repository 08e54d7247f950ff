#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "vorund/export.h"
#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {

/// A map that cannot be used: what() is one line that names the file and the cause.
class VORUND_EXPORT MapError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Which end of the grey scale is free floor.
enum class FreeColour { kWhite, kBlack };

/// How the pixels of a map image become values.
enum class PixelValues {
    kMap,  ///< By the map's thresholds: free -> 0, occupied and unknown -> 1.
    kRaw,  ///< Pixel / full range of its type, unchanged: the map has walls high already.
};

struct MapReadOptions {
    std::optional<FreeColour> free;  ///< Overrides `negate` of a YAML file; white if neither says.
    PixelValues values = PixelValues::kMap;
};

/// Reads a map: an image (any format that OpenCV reads), or a map_server YAML file (by its ending,
/// .yaml or .yml) with `image`, `resolution`, `origin`, `negate`, `occupied_thresh`,
/// `free_thresh`, `mode`. A bare image has 0.05 m per pixel, origin 0 and map_server's thresholds
/// (occupied 0.65, free 0.196).
///
/// Colours are averaged to grey, alpha is ignored except in mode `scale`, where a pixel that is
/// not opaque is unknown. In mode `raw` a pixel is an occupancy in percent and above 100 unknown.
/// 16-bit images are scaled by their own range, 0 to 65535.
/// @throws MapError  if a file cannot be read, or says something that cannot be used.
VORUND_EXPORT GridMap readMap(const std::string& path, const MapReadOptions& options = {});

}  // namespace vorund::rooms
