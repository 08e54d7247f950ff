#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vorund/export.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/polygons.h"

namespace vorund::rooms {

/// A room with its outline and what else is said of it.
struct RoomFeature {
    RoomPolygons outline;  ///< With the room's label. Not empty.
    double area_m2 = 0.0;
    std::optional<cv::Point2d> position;  ///< In the map frame, for example to write the name. [m]
    std::vector<int> neighbours;          ///< Labels.
};

/// A corner of the lattice between a map's pixels (see polygons.h) in the map frame. [m], y up
VORUND_EXPORT cv::Point2d cornerToMetres(const GridMap& map, const cv::Point& corner);

/// Rooms as GeoJSON (RFC 7946): a FeatureCollection with a Feature for each room, in the given
/// order.
///
///     {"type": "FeatureCollection", "coordinate_frame": "map", "units": "m", "features": [
///       {"type": "Feature", "id": 1,
///        "properties": {"label": 1, "area_m2": 12.5, "position": [2.5, 1.25], "neighbours": [2]},
///        "geometry": {"type": "Polygon", "coordinates": [[[0.0, 0.0], ...]]}}]}
///
/// RFC 7946 knows longitude and latitude alone, unless those who exchange the text have agreed on
/// something else: here coordinates are metres in the map frame, y up, and the first two members,
/// which are foreign to it, say so. A room in one piece is a Polygon, one in several is a
/// MultiPolygon. `position` is left out where there is none. schemas/rooms.geojson.schema.json
/// describes the text.
///
/// Numbers are rounded to 1e-6, and the members stand in this order, so that equal rooms give the
/// same bytes on every machine. The text is one line.
/// @param map  Its size, resolution and origin count.
/// @throws std::invalid_argument  if the resolution is not positive; if a number is not finite or
/// so
///         large that it cannot be given to 1e-6; if a room has no outline.
VORUND_EXPORT std::string roomsAsGeoJson(const GridMap& map, const std::vector<RoomFeature>& rooms);

}  // namespace vorund::rooms
