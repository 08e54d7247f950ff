#pragma once

#include <cstdint>
#include <map>

#include "flow/regions.h"

namespace vorund::rooms {

/// Where two regions meet.
struct Passage {
    std::int64_t clearance = 0;  ///< The largest squared distance to a wall on it. [pixels^2]
    double length = 0.0;         ///< Of the border. [m]
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
    /// @param floor  `CV_8UC1`: 0 = wall, too, although a region may hold it.
    RegionTable(const Regions& regions, const cv::Mat& floor);

    const std::map<int, Region>& regions() const { return regions_; }

    /// Makes two neighbours one. The larger keeps its label; of equal ones the smaller label does.
    void merge(int a, int b);

    /// What a label has become.
    int survivor(int label) const;

    /// Renames labels, gives the borders within regions to them and joins ids, edges and nodes.
    void apply(Regions& regions) const;

 private:
    void renameLabels(Regions& regions) const;
    void mergeBorders(Regions& regions) const;

    std::map<int, Region> regions_;
    std::map<int, int> merged_into_;
};

}  // namespace vorund::rooms
