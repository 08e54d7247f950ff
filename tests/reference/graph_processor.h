#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <ostream>
#include <set>

#include "vorund/graph.h"
#include "vorund/graph_processor.h"

/// Plain versions of the region graph: one scan of the image for each question, a padded copy of
/// the image for each neighbourhood. Slow, and independent of the library.
namespace vorund::reference {

/// A region graph as nothing but its three containers.
struct RegionGraph {
    std::map<int, NodeData> nodes;
    std::map<int, std::set<int>> adjacency;
    std::map<Edge, EdgeData> edges;
};

/// The library's graph in that form.
RegionGraph regionGraph(const Graph& graph);

/// Bit for bit.
bool operator==(const RegionGraph& a, const RegionGraph& b);
std::ostream& operator<<(std::ostream& stream, const RegionGraph& graph);

/// The 3 x 3 cell around a point, 0 outside the image.
cv::Mat cellAround(const cv::Mat& map, const cv::Point& point);

/// The values around the centre of a cell, without 0 and the centre's.
std::set<int> neighborsInCell(const cv::Mat& cell, int connectivity);

cv::Mat endPoints(const cv::Mat& map, bool keep_them);
cv::Mat regionBorders(const cv::Mat& map, int u, int v);
GraphProcessor::CommonBordersResult commonBorders(const cv::Mat& map, int border_value);

double area(const cv::Mat& segments, int label, double resolution);
double length(const cv::Mat& borders_map, int id, double resolution);
cv::Point position(const cv::Mat& segments, int label);

RegionGraph createGraph(const cv::Mat& segments, const cv::Mat& borders_map,
                        const BorderIds& border_ids, int border_value);

cv::Mat segmentsPicture(const cv::Mat& segments, int border_value);
cv::Mat bordersPicture(const cv::Mat& borders_map, const cv::Mat& segments);
cv::Mat graphPicture(const RegionGraph& graph, const cv::Size& size, const cv::Mat& background);

}  // namespace vorund::reference

namespace vorund {

/// How GoogleTest prints an edge.
void PrintTo(const Edge& edge, std::ostream* stream);

}  // namespace vorund
