#include "seed_selection.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace vorund::internal {
namespace {

int weightOf(const std::map<std::string, int>& weights, const char* name) {
    const auto found = weights.find(name);
    return found == weights.end() ? 1 : found->second;
}

/// In 64 bits, since weights may be any integers.
std::int64_t weightedScale(std::int64_t start, std::int64_t end,
                           const std::map<std::string, int>& weights) {
    std::int64_t weight_of_start = weightOf(weights, "start");
    const std::int64_t weight_of_end = weightOf(weights, "end");
    if (weight_of_start + weight_of_end == 0) weight_of_start = 1;
    const std::int64_t sum = weight_of_start + weight_of_end;
    return sum == 0 ? 0 : (start * weight_of_start + end * weight_of_end) / sum;
}

std::int64_t chosenScale(const std::pair<int, int>& lifespan,
                         const Config::GenerateMapInitialSeedsConfig& config) {
    const auto [start, end] = lifespan;
    if (config.method == "start") return start;
    if (config.method == "end") return end;
    if (config.method == "middle") return (std::int64_t{start} + end) / 2;
    if (config.method == "weighted") return weightedScale(start, end, config.weights);
    throw std::runtime_error("generateMapInitialSeeds: Unknown method: " + config.method);
}

/// The smallest local label with that global label, or -1.
int localLabelOf(const LabelMap& mapper, int global) {
    for (const auto& [local, its_global] : mapper) {
        if (its_global == global) return local;
    }
    return -1;
}

}  // namespace

std::map<int, ChosenSeed> chooseSeeds(const std::map<int, std::pair<int, int>>& lifespans,
                                      const std::vector<LabelMap>& mappers,
                                      const Config::GenerateMapInitialSeedsConfig& config) {
    std::map<int, ChosenSeed> seeds;
    if (mappers.empty()) return seeds;
    const std::int64_t last_scale = static_cast<std::int64_t>(mappers.size()) - 1;
    for (const auto& [global, lifespan] : lifespans) {
        if (std::int64_t{lifespan.second} - lifespan.first < config.filter_threshold) continue;
        const auto scale = static_cast<std::size_t>(
            std::clamp(chosenScale(lifespan, config), std::int64_t{0}, last_scale));
        const int local = localLabelOf(mappers[scale], global);
        if (local != -1) seeds[global] = {scale, local};
    }
    return seeds;
}

}  // namespace vorund::internal
