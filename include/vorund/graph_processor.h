#pragma once

#include <iosfwd>
#include <map>
#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vorund/export.h"
#include "vorund/graph.h"

namespace vorund {

/// From a finished label image to the graph of rooms and borders, its pictures, and a straight cut
/// for every border.
///
/// The functions are stateless and leave their inputs untouched. Points are
/// cv::Point(x = column, y = row); outside the image counts as background (0). Metres are at 0.05 m
/// per pixel.
namespace GraphProcessor {

/// Where each pair of adjacent rooms touches.
struct CommonBordersResult {
    cv::Mat borders_map;   ///< `CV_8UC1`, size of the input: 0 = no border, else the border's id.
    BorderIds border_ids;  ///< Pair of room labels -> id; ids are 1, 2, 3, ... without gaps.
};

/// A label image as a graph.
struct GraphRepresentation {
    BorderIds border_ids;
    cv::Mat borders_map;  ///< As in `CommonBordersResult`.
    Graph graph;
};

/// The 3 x 3 cell around a point of the map, with 0 outside the image; same type as the map.
/// @throws std::runtime_error  if the map is empty.
VORUND_EXPORT cv::Mat extractCellAndPad(const cv::Mat& map, const cv::Point& point);

/// The distinct values around the centre of a cell that are neither 0 nor the centre's.
/// @param cell          3 x 3, one channel of 8, 16 or signed 32 bits.
/// @param connectivity  4 or 8.
/// @throws std::runtime_error  for a cell of another size, another connectivity, another type.
VORUND_EXPORT std::set<int> allCellNeighbors(const cv::Mat& cell, int connectivity);

/// `allCellNeighbors` for a known element type: int, short or unsigned short. Checks nothing.
template <class T>
std::set<int> allCellNeighborsImpl(const cv::Mat& cell, int connectivity);

extern template VORUND_EXPORT std::set<int> allCellNeighborsImpl<int>(const cv::Mat&, int);
extern template VORUND_EXPORT std::set<int> allCellNeighborsImpl<short>(const cv::Mat&, int);
extern template VORUND_EXPORT std::set<int> allCellNeighborsImpl<unsigned short>(const cv::Mat&,
                                                                                 int);

/// The ends of thin lines: non-zero pixels with exactly one non-zero pixel among their four
/// neighbours. With `flag` only those are kept, without it they are removed.
/// @param map  `CV_8UC1`, not empty.
/// @throws std::runtime_error  otherwise.
VORUND_EXPORT cv::Mat excludeEndPoints(const cv::Mat& map, bool flag);

/// The pixels of region `v` that have a pixel of `u` among their eight neighbours.
/// @param map  `CV_8UC1`, not empty.
/// @return `CV_8UC1`: 255 on those pixels, 0 elsewhere.
/// @throws std::runtime_error  for an empty map or another type.
VORUND_EXPORT cv::Mat extractRegionBorders(const cv::Mat& map, int u, int v);

/// Finds the pixels that separate exactly two rooms and numbers each pair of rooms.
///
///     map, border_value 9           borders_map          border_ids
///       1 1 9 2 2                     . . 1 . .            {1,2} -> 1
///       1 1 9 2 2                     . . 1 . .
///
/// Ids follow the raster order of each pair's first border pixel, so equal inputs give equal ids.
/// A pixel with three or more rooms around it (a T-junction) belongs to no border.
///
/// @param map           `CV_8UC1`, not empty; 0 = background.
/// @param border_value  Value of the separating lines; if absent from `map`, nothing is found.
/// @throws std::runtime_error  for an empty map or another type.
/// @note From the 256th border on `borders_map` wraps (8 bits); `border_ids` stays exact.
VORUND_EXPORT CommonBordersResult extractCommonBorders(const cv::Mat& map, int border_value);

/// Number of pixels of the label times the resolution squared; 0 for an empty image.
VORUND_EXPORT double getArea(const cv::Mat& segments, int label, double resolution);

/// Number of pixels of the border times the resolution; 0 for an empty image.
VORUND_EXPORT double getLength(const cv::Mat& borders_map, int border_id, double resolution);

/// Centroid of the label's pixels, halves rounded up; (-1, -1) if there are none.
VORUND_EXPORT cv::Point getPosition(const cv::Mat& segments, int label);

/// The graph of a label image: a node per value other than 0 and `border_value`, an edge per border
/// whose two labels are nodes.
/// @param segments     `CV_32SC1` or `CV_8UC1`.
/// @param borders_map  `CV_8UC1`, with its ids.
/// @throws std::runtime_error  for another type of either image.
VORUND_EXPORT Graph createGraph(const cv::Mat& segments, const cv::Mat& borders_map,
                                const BorderIds& border_ids, int border_value);

/// `extractCommonBorders` and `createGraph` on a finished label image.
/// @param segments  `CV_8UC1`, not empty.
/// @throws std::runtime_error  as `extractCommonBorders`.
VORUND_EXPORT GraphRepresentation findGraphRepresentation(const cv::Mat& segments,
                                                          int border_value);

/// A label image in colours (`CV_8UC3`, blue, green, red): 0 white, the border value black.
/// @param segments      `CV_8UC1` or `CV_32SC1`, not empty.
/// @param border_value  -1 stands for the largest value.
/// @throws std::runtime_error  otherwise.
VORUND_EXPORT cv::Mat visualizeSegments(const cv::Mat& segments, int border_value);

/// The borders in colours over the darkened label image, or over black if `segments` is empty.
/// @param borders_map  `CV_8UC1`, not empty.
/// @param segments     Of the same size, as for `visualizeSegments`.
/// @throws std::runtime_error  for other types.
VORUND_EXPORT cv::Mat visualizeBorders(const cv::Mat& borders_map, const cv::Mat& segments);

/// The graph drawn over the darkened label image, or over black if `background` is empty: larger
/// rooms as larger discs, longer borders as thicker lines.
/// @throws std::runtime_error  as `visualizeSegments` for the background.
/// @throws std::out_of_range   if an edge names a label that is no node.
VORUND_EXPORT cv::Mat visualizeGraph(const Graph& graph, const cv::Size& size,
                                     const cv::Mat& background);

/// A straight cut through a border. [pixels, degrees]
struct OptimalLine {
    cv::Point2f center;
    cv::Point2f start;
    cv::Point2f end;
    float angle;             ///< 0 to 170, clockwise from the x axis, since y points down.
    float effective_length;  ///< From start to end.
    float direction_weight;  ///< 1.5 for horizontal and vertical cuts, else 1.
    float score;             ///< Length / weight; the smallest wins.
};

/// Finds for every border the best straight cut through its centre, from wall to wall across the
/// two rooms: the shortest of the angles 0, 10, ..., 170 degrees, horizontal and vertical ones
/// favoured.
///
/// It keeps copies (sharing pixels) of its images, which must not change while it is used. It may
/// be used from one thread at a time.
class VORUND_EXPORT OptimalBorderRectifier {
 public:
    /// @param segments     `CV_8UC1` label image with separating lines of its largest value.
    /// @param borders_map  `CV_8UC1` of the same size, with its ids.
    /// @throws std::runtime_error  for images of other types or sizes.
    OptimalBorderRectifier(const cv::Mat& segments, const cv::Mat& borders_map,
                           const BorderIds& border_ids);

    /// The largest value of the label image, computed anew at every call.
    int findBorderLabelInSegments() const;

    /// 1.5 within 0.001 of 0, 90 or 180 degrees, else 1; any angle is brought into [0, 180).
    float getDirectionWeight(float angle) const;

    /// Whether the rounded point lies in the image, on background, on `a`, `b` or a line.
    bool isValidSegmentationPoint(const cv::Point2f& point, int a, int b) const;

    /// Whether both ends of a cut are valid points.
    bool isValidSegmentation(const cv::Point2f& p1, const cv::Point2f& p2, int a, int b) const;

    /// Walks from `start` while on `a`, `b` or a line, at most 200 pixels; the last position.
    /// @param max_steps  Not used.
    cv::Point2f extendToValidBoundary(const cv::Point2f& start, const cv::Point2f& direction, int a,
                                      int b, int max_steps = 200) const;

    /// The pixels of a border in raster order.
    std::vector<cv::Point> extractBorderPixels(int border_id) const;

    /// Mean of the pixels; a negative x if there are none.
    cv::Point2f getBorderCenterPoint(const std::vector<cv::Point>& pixels) const;

    /// Length of the cut at that angle; 0 for an unknown border or ends that are not valid.
    float calculateEffectiveLength(const cv::Point2f& center, float angle, int border_id) const;

    /// The best cut of each border that has one, by border id. Prints its progress on the plain
    /// output.
    std::map<int, OptimalLine> processOptimalRectification();

    /// The label image with borders in red, cuts in green, centres in white (`CV_8UC3`).
    cv::Mat visualizeOptimalResults(const std::map<int, OptimalLine>& lines) const;

 private:
    int labelAt(const cv::Point& pixel) const;
    bool inside(const cv::Point& pixel) const;
    bool roundInto(const cv::Point2f& point, cv::Point& pixel) const;
    std::pair<cv::Point2f, cv::Point2f> cutAt(const cv::Point2f& center, float angle,
                                              const Edge& rooms) const;
    bool findOptimalLine(int id, const Edge& rooms, OptimalLine& best, std::ostream& out) const;

    cv::Mat segments_;
    cv::Mat borders_map_;
    BorderIds border_ids_;
    std::map<int, Edge> border_regions_;
    /// Where the largest possible value was last seen.
    mutable cv::Point last_line_pixel_{0, 0};
};

/// Runs the rectifier over a label image and prints statistics on the plain output.
/// @param borders_map  `CV_8UC1`, with its ids.
/// @param segments     `CV_8UC1` label image with its lines.
/// @param name         Not used.
/// @return The picture of `visualizeOptimalResults`, and the lines by border id.
/// @throws std::runtime_error  for images of other types or sizes, and if they are empty.
VORUND_EXPORT std::pair<cv::Mat, std::map<int, OptimalLine>> processOptimalBorderRectification(
    const cv::Mat& borders_map, const BorderIds& border_ids, const cv::Mat& segments,
    const std::string& name);

}  // namespace GraphProcessor
}  // namespace vorund
