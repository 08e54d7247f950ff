#include "flow/merging.h"

#include "flow/separators.h"
#include "vorund/merge_processor.h"

namespace vorund::rooms {

void mergeBySizeAndBorderLength(RoomGraph& rooms, const Config& config,
                                const PassObserver& after_pass) {
    MergeProcessor::mergeNodesInPlace(rooms.graph, rooms.labels, rooms.borders, rooms.border_ids,
                                      kLine, config.merge_nodes_in_place);
    after_pass(kStepMergeNodes);
    MergeProcessor::mergeEdgesInPlace(rooms.graph, rooms.labels, rooms.borders, rooms.border_ids,
                                      kLine, config.merge_edges_in_place);
    after_pass(kStepMergeEdges);
}

}  // namespace vorund::rooms
