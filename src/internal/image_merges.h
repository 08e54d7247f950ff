#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <unordered_map>
#include <vector>

namespace vorund::internal {

/// Merges of rooms in a label image and a border image, gathered first and written in one pass:
/// what becomes of a pixel depends on nothing but its label and its border.
class ImageMerges {
 public:
    /// The pixels of room `from` become room `to`. Nothing becomes `from` afterwards.
    void renameRoom(int from, int to);

    /// The pixels of a border become part of a room.
    void giveToRoom(int border, int room);

    /// The pixels of border `from` become border `to`.
    void renameBorder(int from, int to);

    /// Writes what was gathered, and forgets it.
    /// @param segments, borders  `CV_32SC1` of the same size.
    void apply(cv::Mat& segments, cv::Mat& borders);

 private:
    /// What becomes of the pixels that had a border's id at first.
    struct Fate {
        int border;
        bool in_room;
        int room;
    };

    std::vector<int>& formerIds(int border);
    /// What a label is in the end.
    int roomOf(int label);
    std::unordered_map<int, Fate> fates();

    std::unordered_map<int, int> rooms_;  ///< Renamed rooms, by their former labels.
    /// Ids that the pixels of a border had at first, by the present id. All ids that were touched.
    std::map<int, std::vector<int>> former_ids_;
    std::unordered_map<int, int> given_;  ///< Rooms, by the ids that their pixels had at first.
};

}  // namespace vorund::internal
