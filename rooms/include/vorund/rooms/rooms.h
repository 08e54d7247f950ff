#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "vorund/export.h"
#include "vorund/graph.h"
#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// A point of the map, both ways: x = column, y = row, the centre of a pixel at whole numbers; and
/// metres in the map's frame, y up.
struct Place {
    cv::Point2d pixel;
    cv::Point2d metres;
};

struct Room {
    int label;                    ///< 1 to N, in reading order of the rooms' first pixels.
    std::int64_t pixel_count;     ///< Of the map's own pixels.
    double area_m2;               ///< `pixel_count` times the resolution squared.
    Place position;               ///< The pixel of the room with most space around it.
    cv::Rect box;                 ///< Smallest upright rectangle that holds the room. [pixels]
    std::vector<int> neighbours;  ///< Labels of the rooms that share a border, ascending.
};

/// The straight cut of a border, from wall to wall through the border's centre: a doorway's sill.
struct Door {
    Place center;
    Place start;
    Place end;
    double angle;     ///< Clockwise from the x axis of the image, 0 to 170. [degrees]
    double length_m;  ///< From start to end. [m]
    double weight;    ///< 1.5 for horizontal and vertical cuts, else 1.
    double score_m;   ///< Length / weight: the smallest of all angles. [m]
};

struct Border {
    int first;  ///< The smaller of the two rooms' labels.
    int second;
    double length_m;           ///< Number of its pixels times their side. [m]
    std::optional<Door> door;  ///< None if no straight cut of the two rooms was found.
};

/// A gap in a wall that leads from one room to another. Two rooms may have several.
struct Doorway {
    int first;  ///< The smaller of the two rooms' labels.
    int second;
    Place center;
    Place start;  ///< At one jamb.
    Place end;    ///< At the other.
    double width_m;
    /// The part that is wall of the line through the doorway, from 3 m before to 3 m behind it, where
    /// floor lies on both sides or a corridor on one: above 0, up to 1. Near 1 it is a gap in a long
    /// wall; furniture that stands like a wall makes short ones.
    double certainty;
};

/// Rooms that nothing joins to the rest of the map and that are too small to be kept.
struct Island {
    double area_m2;
    Place position;  ///< A pixel of it.
};

/// The rooms of a map. Nothing in it is limited to 8 bits.
struct VORUND_EXPORT Rooms {
    /// `CV_32SC1`, the map's size: 0 = no room, 1 to N = rooms.
    cv::Mat labels;
    /// `CV_8UC1`, the map's size: 255 on the one-pixel lines along which rooms touch. Their pixels
    /// belong to rooms in `labels`.
    cv::Mat lines;
    /// `CV_8UC1`, the map's size: 255 on floor that no room reached.
    cv::Mat unreached;

    std::vector<Room> rooms;      ///< By label: the room of label n is rooms[n - 1].
    std::vector<Border> borders;  ///< By first, then second label.
    /// By first, then second label, then from the narrowest on; none with `merging: passes`.
    std::vector<Doorway> doorways;
    std::vector<Island> islands;  ///< What was removed, in the order of their smallest labels.
    std::int64_t unreached_pixels = 0;
    int blocks = 1;  ///< In how many parts the map was segmented.

    Graph graph;  ///< Rooms and borders as a graph; positions in pixels of the map.

    double resolution = kWorkingResolution;  ///< Of the map. [m per pixel]
    Origin origin;                           ///< Of the map.
    Settings settings;                       ///< That gave these rooms.

    /// The label of the room that holds a pixel or a point of the map frame [m]; 0 outside of all
    /// rooms and of the map. In constant time. (A `cv::Point` is a pixel, a `cv::Point2d` metres:
    /// for a `Place` pass `metres`.)
    int roomAt(const cv::Point& pixel) const;
    int roomAt(const cv::Point2d& metres) const;
};

}  // namespace vorund::rooms
