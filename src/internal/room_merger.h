#pragma once

#include <opencv2/core.hpp>
#include <set>
#include <unordered_map>

#include "internal/image_merges.h"
#include "vorund/graph.h"

namespace vorund::internal {

/// `MergeProcessor::mergeNodes` in place.
/// @throws std::invalid_argument  likewise, with nothing changed.
void mergeInGraph(Graph& graph, int u, int v);

/// `MergeProcessor::mergeSegmentsMapInPlace` for many merges, whose pixels are written at once.
class MapMerger {
 public:
    /// The arguments must outlive it, and nobody else may change the ids meanwhile.
    MapMerger(cv::Mat& segments, cv::Mat& borders, BorderIds& border_ids)
        : segments_(segments), borders_(borders), border_ids_(border_ids) {}

    /// @throws std::invalid_argument  as `mergeSegmentsMapInPlace`, with nothing changed.
    void merge(int u, int v);

    void writeImages() { merges_.apply(segments_, borders_); }

 private:
    void indexIds();
    void addId(const Edge& edge, int id);
    void removeId(const Edge& edge);
    void handOn(int u, int v);

    cv::Mat& segments_;
    cv::Mat& borders_;
    BorderIds& border_ids_;
    ImageMerges merges_;
    /// By room the rooms with which it shares a border, to find a room's borders by.
    std::unordered_map<int, std::set<int>> neighbours_;
    bool is_indexed_ = false;
};

}  // namespace vorund::internal
