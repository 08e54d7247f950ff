#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

/// For each label, what it becomes.
using LabelTable = std::vector<std::int32_t>;

/// A room so thin that all of it became line, and so no node of the graph.
struct ThinRoom {
    int label;
    int goes_with;  ///< The smallest label beside its first pixel, which made that a line.
};

/// The rooms of a map between the steps of the flow, at the working resolution.
///
/// What becomes of a pixel as rooms are merged depends on its label and its border alone. So the
/// steps work on `table`, whose images have a single row with one pixel for each label and border
/// there may be, and the images of the map stay as they were separated.
struct Regions {
    cv::Mat labels;   ///< `CV_32SC1`: 0 = no room, 255 = line or unreached, other values = rooms.
    cv::Mat borders;  ///< `CV_32SC1`: 0 = no border, else a border's id.
    /// Graph and ids in force, and what labels and borders have become: first all labels without a
    /// border, then a line of every border.
    RoomGraph table;
    int label_count;                   ///< Labels in the table, 0 among them.
    std::vector<ThinRoom> thin_rooms;  ///< By ascending label.
};

/// Finds rooms and borders in a label image that has lines between its rooms.
/// @param separated  `CV_32SC1`; shared, and changed by the steps.
Regions regionsOf(const cv::Mat& separated);

/// `regionsOf` on a segmentation after lines are drawn into it.
/// @param segmented  `CV_32SC1`, 255 = unreached.
Regions separate(const cv::Mat& segmented);

/// Writes what the table says into the images.
void writeTable(Regions& regions);

/// The regions with images of the map in the form in which observers see them.
RoomGraph wholeRoomGraph(const Regions& regions);

/// What has become of the labels of the segmentation, lines included; 0 = no room.
LabelTable successorsOf(const Regions& regions);

/// Gives a label image other labels.
void rename(cv::Mat& labels, const LabelTable& table);

}  // namespace vorund::rooms
