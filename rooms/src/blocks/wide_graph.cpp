#include "blocks/wide_graph.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include "flow/separators.h"

namespace vorund::rooms {
namespace {

/// Sums over the pixels of a region.
struct PixelSums {
    std::int64_t count = 0;
    std::int64_t x = 0;
    std::int64_t y = 0;

    cv::Point centroid() const {
        const auto mean = [this](std::int64_t sum) {
            return static_cast<int>(
                std::round(static_cast<double>(sum) / static_cast<double>(count)));
        };
        return {mean(x), mean(y)};
    }
};

/// The one or two labels around a pixel; a third makes it a junction.
class LabelsAround {
 public:
    void add(std::int32_t label) {
        if (label == 0 || label == kLine || label == first_ || label == second_) return;
        if (first_ == 0) {
            first_ = label;
        } else if (second_ == 0) {
            second_ = label;
        } else {
            is_junction_ = true;
        }
    }

    bool isBorder() const { return second_ != 0 && !is_junction_; }
    Edge edge() const { return {first_, second_}; }

 private:
    std::int32_t first_ = 0;
    std::int32_t second_ = 0;
    bool is_junction_ = false;
};

LabelsAround labelsAround(const cv::Mat& labels, int row, int col) {
    LabelsAround around;
    for (int r = std::max(row - 1, 0); r <= std::min(row + 1, labels.rows - 1); ++r) {
        const std::int32_t* const label = labels.ptr<std::int32_t>(r);
        for (int c = std::max(col - 1, 0); c <= std::min(col + 1, labels.cols - 1); ++c) {
            around.add(label[c]);
        }
    }
    return around;
}

/// Fills in borders and ids; gives the number of pixels of each id.
std::vector<std::int64_t> findBorders(RoomGraph& rooms) {
    std::vector<std::int64_t> pixels(1, 0);
    rooms.borders = cv::Mat::zeros(rooms.labels.size(), CV_32SC1);
    for (int row = 0; row < rooms.labels.rows; ++row) {
        const std::int32_t* const label = rooms.labels.ptr<std::int32_t>(row);
        std::int32_t* const border = rooms.borders.ptr<std::int32_t>(row);
        for (int col = 0; col < rooms.labels.cols; ++col) {
            if (label[col] != kLine) continue;
            const LabelsAround around = labelsAround(rooms.labels, row, col);
            if (!around.isBorder()) continue;
            const int next_id = static_cast<int>(pixels.size());
            const auto [entry, is_new] = rooms.border_ids.emplace(around.edge(), next_id);
            if (is_new) pixels.push_back(0);
            border[col] = entry->second;
            ++pixels[static_cast<std::size_t>(entry->second)];
        }
    }
    return pixels;
}

/// By label.
std::vector<PixelSums> sumRegions(const cv::Mat& labels) {
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    std::vector<PixelSums> sums(static_cast<std::size_t>(largest) + 1);
    for (int row = 0; row < labels.rows; ++row) {
        const std::int32_t* const label = labels.ptr<std::int32_t>(row);
        for (int col = 0; col < labels.cols; ++col) {
            PixelSums& sum = sums[static_cast<std::size_t>(label[col])];
            ++sum.count;
            sum.x += col;
            sum.y += row;
        }
    }
    return sums;
}

}  // namespace

cv::Mat drawWideSeparators(const cv::Mat& regions) {
    cv::Mat rooms = regions.clone();
    rooms.setTo(0, rooms == kLine);
    const cv::Mat lines = linesBetween(rooms);
    cv::Mat separated = regions.clone();
    separated.setTo(kLine, lines);
    return separated;
}

RoomGraph findWideGraph(const cv::Mat& separated) {
    RoomGraph rooms;
    rooms.labels = separated;
    const std::vector<std::int64_t> border_pixels = findBorders(rooms);
    const std::vector<PixelSums> sums = sumRegions(separated);
    for (std::size_t label = 1; label < sums.size(); ++label) {
        if (label == kLine || sums[label].count == 0) continue;
        const auto pixels = static_cast<double>(sums[label].count);
        rooms.graph.addNode(
            static_cast<int>(label),
            {pixels * kWorkingResolution * kWorkingResolution, sums[label].centroid()});
    }
    for (const auto& [edge, id] : rooms.border_ids) {
        const auto pixels = static_cast<double>(border_pixels[static_cast<std::size_t>(id)]);
        rooms.graph.addEdge(edge.first, edge.second, {pixels * kWorkingResolution});
    }
    return rooms;
}

}  // namespace vorund::rooms
