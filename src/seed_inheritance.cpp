#include "seed_inheritance.h"

#include <cstddef>
#include <cstdint>

#include "internal/plain_output.h"
#include "internal/require.h"
#include "internal/text.h"

namespace vorund::internal {
ValueTable valuesUnderFirstPixels(const cv::Mat& coarser, const cv::Mat& finer) {
    ValueTable under(256, 0);
    for (int row = 0; row < coarser.rows; ++row) {
        const std::uint8_t* const above = coarser.ptr<std::uint8_t>(row);
        const std::uint8_t* const below = finer.ptr<std::uint8_t>(row);
        for (int col = 0; col < coarser.cols; ++col) {
            int& value = under[static_cast<std::size_t>(above[col])];
            if (value == 0) value = below[col];
        }
    }
    return under;
}

std::map<int, std::vector<int>> findParents(const std::vector<int>& coarser_labels,
                                            const ValueTable& under) {
    std::map<int, std::vector<int>> parents;
    for (const int label : coarser_labels) {
        const int child = under[static_cast<std::size_t>(label)];
        require(child != 0, "findConsistentGlobalLabels: new_m == 0");
        parents[child].push_back(label);
    }
    return parents;
}

LabelMap globalLabels(const std::vector<int>& labels,
                      const std::map<int, std::vector<int>>& parents,
                      const LabelMap& global_of_parent, int& counter, bool any_number) {
    LabelMap global;
    for (const int label : labels) {
        const auto found = parents.find(label);
        if (found == parents.end()) {
            if (any_number && counter + 1 == kAmbiguous) ++counter;
            global[label] = ++counter;
        } else if (found->second.size() > 1) {
            global[label] = kAmbiguous;
        } else {
            const auto inherited = global_of_parent.find(found->second.front());
            require(inherited != global_of_parent.end(),
                    "findConsistentGlobalLabels: prev label have no global label");
            global[label] = inherited->second;
        }
    }
    return global;
}

void printMappers(const std::vector<LabelMap>& mappers) {
    TextStream text;
    text << "Debug: mappers contents:\n";
    for (std::size_t i = 0; i < mappers.size(); ++i) {
        text << "  mapper[" << i << "]:\n";
        for (const auto& [local, global] : mappers[i]) {
            text << "    local_label " << local << " -> global_label " << global << '\n';
        }
    }
    printPlain(text.str());
}

}  // namespace vorund::internal
