#include "flow/regions.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "flow/room_graph.h"
#include "flow/separators.h"
#include "internal/runs.h"

namespace vorund::rooms {
namespace {

std::size_t indexOf(std::int32_t value) {
    return static_cast<std::size_t>(value);
}

LabelTable unchanged(std::size_t count) {
    LabelTable table(count);
    for (std::size_t i = 0; i < count; ++i) table[i] = static_cast<std::int32_t>(i);
    return table;
}

/// The table before anything was merged.
RoomGraph newTable(int label_count, BorderIds ids, Graph graph) {
    const LabelTable labels = unchanged(indexOf(label_count));
    const LabelTable borders = unchanged(ids.size() + 1);
    const int cols = static_cast<int>(labels.size() + borders.size());
    RoomGraph table{cv::Mat(1, cols, CV_32SC1, cv::Scalar(kLine)),
                    cv::Mat::zeros(1, cols, CV_32SC1), std::move(ids), std::move(graph)};
    std::copy(labels.begin(), labels.end(), table.labels.ptr<std::int32_t>(0));
    std::copy(borders.begin(), borders.end(), table.borders.ptr<std::int32_t>(0) + label_count);
    return table;
}

/// The table in the form in which images are changed by it.
struct Becomes {
    LabelTable room;             ///< By label, where no border is.
    LabelTable label_of_border;  ///< By a border's id.
    LabelTable border;           ///< By a border's id.

    explicit Becomes(const Regions& regions)
        : room(part(regions.table.labels, 0, regions.label_count)),
          label_of_border(
              part(regions.table.labels, regions.label_count, regions.table.labels.cols)),
          border(part(regions.table.borders, regions.label_count, regions.table.borders.cols)) {}

    static LabelTable part(const cv::Mat& row, int begin, int end) {
        const std::int32_t* const values = row.ptr<std::int32_t>(0);
        return {values + begin, values + end};
    }
};

/// The smallest label of a room among the four neighbours, or `kLine` if there is none.
int smallestBeside(const cv::Mat& segmented, int row, int col) {
    constexpr int kNone = std::numeric_limits<int>::max();
    int smallest = kNone;
    const auto look = [&](int r, int c) {
        if (r < 0 || r >= segmented.rows || c < 0 || c >= segmented.cols) return;
        const int label = segmented.ptr<std::int32_t>(r)[c];
        if (label != 0 && label != kLine) smallest = std::min(smallest, label);
    };
    look(row - 1, col);
    look(row, col - 1);
    look(row, col + 1);
    look(row + 1, col);
    return smallest == kNone ? kLine : smallest;
}

std::vector<ThinRoom> findThinRooms(const cv::Mat& segmented, const Regions& regions) {
    std::vector<bool> is_known(indexOf(regions.label_count));
    is_known[0] = true;
    is_known[kLine] = true;
    for (const auto& node : regions.table.graph.nodes()) is_known[indexOf(node.first)] = true;
    std::vector<ThinRoom> rooms;
    for (int row = 0; row < segmented.rows; ++row) {
        internal::forEachRun(segmented.ptr<std::int32_t>(row), segmented.cols,
                             [&](int col, int, std::int32_t label) {
                                 if (is_known[indexOf(label)]) return;
                                 is_known[indexOf(label)] = true;
                                 rooms.push_back({label, smallestBeside(segmented, row, col)});
                             });
    }
    std::sort(rooms.begin(), rooms.end(),
              [](const ThinRoom& a, const ThinRoom& b) { return a.label < b.label; });
    return rooms;
}

int labelCountOf(const cv::Mat& labels) {
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    return std::max(static_cast<int>(largest), kLine) + 1;
}

Regions regionsOf(const cv::Mat& separated, int label_count) {
    FoundGraph found = findGraph(separated, label_count);
    return {separated,
            found.borders,
            newTable(label_count, std::move(found.border_ids), std::move(found.graph)),
            label_count,
            {}};
}

}  // namespace

Regions regionsOf(const cv::Mat& separated) {
    return regionsOf(separated, labelCountOf(separated));
}

Regions separate(const cv::Mat& segmented) {
    Regions regions = regionsOf(drawSeparators(segmented), labelCountOf(segmented));
    regions.thin_rooms = findThinRooms(segmented, regions);
    return regions;
}

void writeTable(Regions& regions) {
    const Becomes becomes(regions);
    rename(regions.labels, becomes.room);
    for (int row = 0; row < regions.labels.rows; ++row) {
        std::int32_t* const label = regions.labels.ptr<std::int32_t>(row);
        std::int32_t* const border = regions.borders.ptr<std::int32_t>(row);
        internal::forEachRun(
            border, regions.borders.cols, [&](int begin, int end, std::int32_t id) {
                if (id == 0) return;
                std::fill(label + begin, label + end, becomes.label_of_border[indexOf(id)]);
                std::fill(border + begin, border + end, becomes.border[indexOf(id)]);
            });
    }
}

RoomGraph wholeRoomGraph(const Regions& regions) {
    Regions written{
        regions.labels.clone(), regions.borders.clone(), regions.table, regions.label_count, {}};
    writeTable(written);
    return {written.labels, written.borders, regions.table.border_ids, regions.table.graph};
}

LabelTable successorsOf(const Regions& regions) {
    LabelTable successors = Becomes(regions).room;
    successors[kLine] = 0;
    for (const ThinRoom& room : regions.thin_rooms) {
        // Its label is greater, so that of two thin rooms the one that is followed comes first.
        successors[indexOf(room.label)] = successors[indexOf(room.goes_with)];
    }
    return successors;
}

void rename(cv::Mat& labels, const LabelTable& table) {
    for (int row = 0; row < labels.rows; ++row) {
        std::int32_t* const label = labels.ptr<std::int32_t>(row);
        internal::forEachRun(label, labels.cols, [&](int begin, int end, std::int32_t former) {
            const std::int32_t now = table[indexOf(former)];
            if (now != former) std::fill(label + begin, label + end, now);
        });
    }
}

}  // namespace vorund::rooms
