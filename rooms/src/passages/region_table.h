#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "doorways/find_doorways.h"
#include "flow/regions.h"

namespace vorund::rooms {

/// Where two regions meet.
struct Passage {
    /// The largest squared distance to a wall on it, where a doorway counts as wall. [pixels^2]
    std::int64_t clearance = 0;
    /// Of its doorways, half the widest one's width, squared. [pixels^2]
    std::int64_t doorway = 0;
    double length = 0.0;  ///< Of the border. [m]

    /// All the same, through a doorway or not.
    std::int64_t widest() const { return std::max(clearance, doorway); }
};

/// What merging needs to know of a region, in whole numbers: sums of areas are rounded, so that
/// equal regions might not be.
struct Region {
    std::int64_t pixels = 0;          ///< Lines that it took in left out, as in the graph.
    std::int64_t clearance = 0;       ///< The largest squared distance to a wall in it. [pixels^2]
    std::map<int, Passage> passages;  ///< By the label of the region on the other side.

    double area() const;   ///< [m^2]
    double width() const;  ///< Of the widest place. [m]
};

/// How wide regions and the passages between them are: the saliency of a passage is how much
/// narrower it is than what lies on both sides of it (as in the dynamics of watershed basins: M.
/// Grimaud, "A new measure of contrast: the dynamics", 1992). Merging works on this table; `apply`
/// brings the graph and what labels and borders have become in line.
class RegionTable {
 public:
    /// @param floor     `CV_8UC1`: 0 = wall, too, although a region may hold it.
    /// @param doorways  Are shut while widths are measured: a room does not get wider by an open
    ///                  door, and nothing is open through one.
    RegionTable(const Regions& regions, const cv::Mat& floor,
                const std::vector<FoundDoorway>& doorways);

    const std::map<int, Region>& regions() const { return regions_; }

    /// Makes two neighbours one. The larger keeps its label; of equal ones the smaller label does.
    void merge(int a, int b);

    /// What a label has become.
    int survivor(int label) const;

    /// Renames labels, gives the borders within regions to them and joins ids, edges and nodes.
    void apply(Regions& regions) const;

 private:
    using ByIndex = std::vector<std::int64_t>;
    static ByIndex widestDoorways(const Regions& regions, const cv::Mat& floor,
                                  const std::vector<FoundDoorway>& doorways);

    void renameLabels(Regions& regions) const;
    void mergeBorders(Regions& regions) const;

    std::map<int, Region> regions_;
    std::map<int, int> merged_into_;
};

}  // namespace vorund::rooms
