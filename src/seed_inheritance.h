#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <vector>

namespace vorund::internal {

/// Local label -> global label of one seed map.
using LabelMap = std::map<int, int>;

/// Global label of a region that several coarser ones run into.
inline constexpr int kAmbiguous = 255;

/// One entry per value of a seed map.
using ValueTable = std::vector<int>;

/// For every value of the coarser map, what lies under the first of its pixels, in raster order,
/// that is not over a zero of the finer one; 0 if there is none.
ValueTable valuesUnderFirstPixels(const cv::Mat& coarser, const cv::Mat& finer);

/// For every label of the finer seed map, the labels of the coarser one that run into it: those
/// that have it in `under`, the values under their first pixels.
/// @throws std::runtime_error  if a label lies over zeros alone.
std::map<int, std::vector<int>> findParents(const std::vector<int>& coarser_labels,
                                            const ValueTable& under);

/// Global labels for the labels of a seed map, ascending: the parent's for a label with one parent,
/// 255 for one with several, and a new one, counted by `counter`, for one without.
/// @param any_number  Whether the counter leaves 255 out, so that it has no end there.
/// @throws std::runtime_error  if a parent has no global label.
LabelMap globalLabels(const std::vector<int>& labels,
                      const std::map<int, std::vector<int>>& parents,
                      const LabelMap& global_of_parent, int& counter, bool any_number = false);

/// Prints all maps on the plain output.
void printMappers(const std::vector<LabelMap>& mappers);

}  // namespace vorund::internal
