#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "seed_inheritance.h"
#include "vorund/config.h"

namespace vorund::internal {

/// A seed of one scale, by which a region starts to grow.
struct ChosenSeed {
    std::size_t scale;
    int local;  ///< Its label there.
};

/// One seed for every global label that lives long enough, by the configured method.
/// @throws std::runtime_error  for an unknown method, if a label needs one.
std::map<int, ChosenSeed> chooseSeeds(const std::map<int, std::pair<int, int>>& lifespans,
                                      const std::vector<LabelMap>& mappers,
                                      const Config::GenerateMapInitialSeedsConfig& config);

}  // namespace vorund::internal
