#pragma once

#include <string>
#include <vector>

namespace vorund::app {

struct NamedMap {
    std::string name;  ///< The file's name without folder and ending.
    std::string path;
};

/// Whether what the user gave is more than a single map: several files, or a folder.
bool isBatch(const std::vector<std::string>& given);

/// The maps that the user gave, by name. Of a folder those are images, and YAML files that name an
/// image. An image that a YAML file among them names is no map of its own; a file with
/// "_gt_segmentation" in its name holds true rooms and is left out.
/// @throws UsageError          if two maps have the same name.
/// @throws std::runtime_error  if a folder cannot be read, or if there is no map.
std::vector<NamedMap> findMaps(const std::vector<std::string>& given);

}  // namespace vorund::app
